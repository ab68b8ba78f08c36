// SPDX-License-Identifier: Apache-2.0
// JSON that commands print: one object with its schema's name and version first.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace zan::tool {

// Takes the pieces of a text, in their order.
using TextTarget = std::function<void(std::string_view)>;
// Standard output. Throws Failure if it can't be written.
TextTarget standard_output_target();

// Writes one JSON document, with four blanks for each level. It holds 64 KiB of text at most, whatever the
// length of the document. Keys carry their units: "span_ns", "size_bytes".
//
//     JsonOutput json("zanl-profile.package-list", 1, standard_output_target());
//     json.member("package", "design.zanx");
//     json.begin_array("sections");
//     ...
//     json.end_array();
//     json.finish();
class JsonOutput {
  public:
    // Begins the object, with the keys "schema" and "schema_version".
    JsonOutput(std::string_view schema, int version, TextTarget target);
    JsonOutput(const JsonOutput&) = delete;
    JsonOutput& operator=(const JsonOutput&) = delete;
    ~JsonOutput();

    // A member of the current object. Bytes of texts and keys that are no UTF-8 become U+FFFD; a number that
    // is infinite or not a number becomes null.
    template <typename Value>
    void member(std::string_view key, const Value& value) {
        write_key(key);
        element(value);
    }
    // An element of the current array.
    void element(std::string_view value);
    void element(const std::string& value) { element(std::string_view(value)); }
    void element(const char* value) { element(std::string_view(value)); }
    void element(std::uint64_t value);
    void element(std::int64_t value);
    void element(unsigned value) { element(std::uint64_t{value}); }
    void element(int value) { element(std::int64_t{value}); }
    void element(double value);
    void element(bool value);
    void element(std::nullptr_t);

    // As a member of the current object, or without a key as an element of the current array.
    void begin_object(std::string_view key);
    void begin_object();
    void end_object();
    void begin_array(std::string_view key);
    void begin_array();
    void end_array();

    // Ends the document with a newline, and hands on what is left. All arrays and objects must have ended.
    void finish();

  private:
    void write_key(std::string_view key);
    void hand_on_when_full();

    struct Writer;
    std::unique_ptr<Writer> m_writer;
};

} // namespace zan::tool
