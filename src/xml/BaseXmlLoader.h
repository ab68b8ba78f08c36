// SPDX-License-Identifier: Apache-2.0
// The base of the loaders of description files: parses XML text and collects the messages of the walk over
// it.
#pragma once

#include <tinyxml2.h>

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "BaseVisitorCallbacks.h"

namespace zan::xml {

using tinyxml2::XMLDocument;

// Where the text of a load says what an error is about.
struct ErrorPlace {
    static constexpr std::size_t unknown = static_cast<std::size_t>(-1);
    int line = 0;                 // from 1; 0 if it is about the text as a whole
    std::size_t offset = unknown; // of the element's or attribute's name, in bytes; known for parse_xml only
    bool is_syntax = false;       // the text is no XML
    bool operator==(const ErrorPlace&) const = default;
};

// Parses documents for a concrete loader, which walks them with its own visitor. One loader serves any number
// of loads, one after the other; the lists of messages are those of the last.
class BaseXmlLoader : public VisitorCallbacks {
  public:
    // Each parses a document, which the caller owns; null on failure, with one entry in the error list. Both
    // empty the lists first. `filename` isn't copied: it has to live as long as messages of this load are
    // formed.
    XMLDocument* parse_file(const char* filename);
    XMLDocument* parse_xml(const char* xml);

    void report_error(const std::string& text) override;
    void report_warning(const std::string& text) override;
    void report_place(const MessagePlace& place) override;
    // The file name of the last parse_file, "[mem]" after parse_xml, null before either.
    const char* get_source_name() const override;
    // Writes the text to standard error as it stands.
    void debug(const std::string& text) override;

    // The messages of the last load in the order of their reports; `index` must be below the number of
    // entries.
    const std::string& get_error(unsigned int index) const;
    const std::string& get_warning(unsigned int index) const;
    const ErrorPlace& get_error_place(unsigned int index) const;
    unsigned int get_num_errors() const { return static_cast<unsigned int>(m_errors.size()); }
    unsigned int get_num_warnings() const { return static_cast<unsigned int>(m_warnings.size()); }
    void reset_errors();

    // Reports the parse error of a document (not null).
    void set_last_error(XMLDocument* doc);

    // The text of a document (not null), indented by two blanks a level.
    static std::string doc_to_string(XMLDocument* doc);

  protected:
    // Walks `doc`, which is deleted in any case, with a visitor built as Visitor(model, this, debug_mode,
    // options...). Returns the new model, owned by the caller, or null if `doc` is null or the walk failed.
    template <typename Model, typename Visitor, typename... Options>
    Model* load_model(XMLDocument* doc, bool debug_mode, Options... options);

    // What a load of a text in memory begins with: its source name, and no messages.
    void begin_text();

    const char* m_source_name = nullptr; // not owned
    std::vector<std::string> m_errors;
    std::vector<std::string> m_warnings;

  private:
    void note_text(const char* xml, const XMLDocument& doc);

    std::vector<ErrorPlace> m_places; // of the errors
    ErrorPlace m_next_place;
    const char* m_known_name = nullptr; // a name in the parser's text, and where it stands in the caller's
    std::size_t m_known_offset = 0;
};

// Prints a document to memory, indented by two blanks a level. The arguments exist for its callers' sake
// only: it never writes to a file, is never compact and begins at depth 0.
class PrettyPrinter : public tinyxml2::XMLPrinter {
  public:
    explicit PrettyPrinter(FILE* file = nullptr, bool compact = false, int depth = 0);

  protected:
    void PrintSpace(int depth) override;
};

template <typename Model, typename Visitor, typename... Options>
Model* BaseXmlLoader::load_model(XMLDocument* doc, bool debug_mode, Options... options) {
    const std::unique_ptr<XMLDocument> owned_doc(doc);
    if (!doc)
        return nullptr;
    if (debug_mode)
        debug(doc_to_string(doc));
    auto model = std::make_unique<Model>();
    Visitor visitor(model.get(), this, debug_mode, options...);
    return doc->Accept(&visitor) ? model.release() : nullptr;
}

} // namespace zan::xml
