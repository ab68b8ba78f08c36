// SPDX-License-Identifier: Apache-2.0
// What a visitor knows of the loader it works for.
#pragma once

#include <string>

namespace zan::xml {

// What a message is about: the name of an element or of an attribute, where it stands in the text that the
// parser keeps.
struct MessagePlace {
    int line = 0;               // from 1; 0 if it is about the input as a whole
    const char* name = nullptr; // null if it isn't known
};

// Takes the messages of a walk. A visitor forms them and never stores or prints one itself.
class VisitorCallbacks {
  public:
    virtual ~VisitorCallbacks() = default;

    // One whole message each, ended by a newline.
    virtual void report_error(const std::string& text) = 0;
    virtual void report_warning(const std::string& text) = 0;

    // Where the message stands that comes next. The name holds as long as the document.
    virtual void report_place(const MessagePlace&) {}

    // The name of the input that messages show; owned by the callbacks or by their caller.
    virtual const char* get_source_name() const = 0;

    // Progress text of debug mode; newlines are the sender's.
    virtual void debug(const std::string& text) = 0;
};

} // namespace zan::xml
