// SPDX-License-Identifier: Apache-2.0
#include "BaseXmlLoader.h"

#include <cstring>
#include <iostream>
#include <utility>

#include "contract.h"

namespace zan::xml {

namespace {

constexpr const char* memory_source_name = "[mem]";
constexpr size_t nul_terminated = static_cast<size_t>(-1);

// White space is kept, as debug output shows the document as it was written.
std::unique_ptr<XMLDocument> new_document() {
    return std::make_unique<XMLDocument>(true, tinyxml2::PRESERVE_WHITESPACE);
}

} // namespace

XMLDocument* BaseXmlLoader::parse_file(const char* filename) {
    ZAN_CONTRACT(filename != nullptr, "filename != __null");
    m_source_name = filename;
    reset_errors();
    std::unique_ptr<XMLDocument> doc = new_document();
    if (doc->LoadFile(filename) == tinyxml2::XML_SUCCESS && !doc->Error())
        return doc.release();
    std::printf("ERROR FOUND: %s\n", doc->ErrorName());
    // The line has to be seen even if the caller ends the process abnormally.
    std::fflush(stdout);
    set_last_error(doc.get());
    return nullptr;
}

// Unlike parse_file it prints nothing: the text comes from a package, whose reader has its own message.
XMLDocument* BaseXmlLoader::parse_xml(const char* xml) {
    ZAN_CONTRACT(xml != nullptr, "xml != __null");
    begin_text();
    std::unique_ptr<XMLDocument> doc = new_document();
    doc->Parse(xml, nul_terminated);
    if (!doc->Error()) {
        note_text(xml, *doc);
        return doc.release();
    }
    set_last_error(doc.get());
    return nullptr;
}

void BaseXmlLoader::begin_text() {
    m_source_name = memory_source_name;
    reset_errors();
}

// The parser takes a text apart where it has copied it to, so that two names are as far from each other there
// as in the text itself. The first node begins at the first bracket.
void BaseXmlLoader::note_text(const char* xml, const XMLDocument& doc) {
    const tinyxml2::XMLNode* first = doc.FirstChild();
    const char* bracket = std::strchr(xml, '<');
    m_known_name = nullptr;
    if (!first || !bracket)
        return;
    const char* opening = first->ToDeclaration() ? "<?"
                          : first->ToComment()   ? "<!--"
                          : first->ToUnknown()   ? "<!"
                                                 : "<";
    m_known_name = first->Value();
    m_known_offset = static_cast<std::size_t>(bracket - xml) + std::strlen(opening);
}

void BaseXmlLoader::report_place(const MessagePlace& place) {
    m_next_place = {.line = place.line};
    if (place.name && m_known_name)
        m_next_place.offset = m_known_offset + static_cast<std::size_t>(place.name - m_known_name);
}

void BaseXmlLoader::report_error(const std::string& text) {
    m_errors.push_back(text);
    m_places.push_back(std::exchange(m_next_place, {}));
}

void BaseXmlLoader::report_warning(const std::string& text) {
    m_warnings.push_back(text);
}

const char* BaseXmlLoader::get_source_name() const {
    return m_source_name;
}

void BaseXmlLoader::debug(const std::string& text) {
    std::cerr << text;
}

const std::string& BaseXmlLoader::get_error(unsigned int index) const {
    ZAN_CONTRACT(index < m_errors.size(), "index < m_errors.size()");
    return m_errors[index];
}

const ErrorPlace& BaseXmlLoader::get_error_place(unsigned int index) const {
    ZAN_CONTRACT(index < m_places.size(), "index < m_errors.size()");
    return m_places[index];
}

const std::string& BaseXmlLoader::get_warning(unsigned int index) const {
    ZAN_CONTRACT(index < m_warnings.size(), "index < m_warnings.size()");
    return m_warnings[index];
}

void BaseXmlLoader::reset_errors() {
    m_errors.clear();
    m_warnings.clear();
    m_places.clear();
    m_next_place = {};
    m_known_name = nullptr;
}

void BaseXmlLoader::set_last_error(XMLDocument* doc) {
    m_next_place = {.line = doc->ErrorLineNum(), .is_syntax = true};
    report_error(std::string("XML error: ") + doc->ErrorName() + ", " + doc->ErrorStr() + "\n");
}

std::string BaseXmlLoader::doc_to_string(XMLDocument* doc) {
    ZAN_CONTRACT(doc != nullptr, "doc != __null");
    PrettyPrinter printer;
    doc->Accept(&printer);
    return printer.CStr();
}

// It always prints to memory: doc_to_string takes its text from there.
PrettyPrinter::PrettyPrinter(FILE*, bool, int) : XMLPrinter(nullptr, false, 0) {
}

void PrettyPrinter::PrintSpace(int depth) {
    for (int level = 0; level < depth; ++level)
        Write("  ");
}

} // namespace zan::xml
