// SPDX-License-Identifier: Apache-2.0
// A visitor and callbacks for tests of the visitor framework.
#pragma once

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "BaseVisitor.h"

namespace zan::test {

// Keeps all that a visitor sends.
struct RecordingCallbacks : xml::VisitorCallbacks {
    void report_error(const std::string& text) override { errors.push_back(text); }
    void report_warning(const std::string& text) override { warnings.push_back(text); }
    const char* get_source_name() const override { return source_name; }
    void debug(const std::string& text) override { debug_text += text; }

    const char* source_name = "a.xml";
    std::vector<std::string> errors;
    std::vector<std::string> warnings;
    std::string debug_text;
};

// Accepts every element, opens its state to the test and calls the test's function for each element entered,
// as a handler would be called.
struct ProbeVisitor : xml::BaseVisitor {
    using Handler = std::function<bool(ProbeVisitor& self, const tinyxml2::XMLElement& elem)>;

    // Without callbacks, so that nothing is delivered.
    explicit ProbeVisitor(Handler handler = {})
        : BaseVisitor(nullptr, false), m_handler(std::move(handler)) {}
    explicit ProbeVisitor(xml::VisitorCallbacks* callbacks, Handler handler = {}, bool debug = false)
        : BaseVisitor(callbacks, debug), m_handler(std::move(handler)) {}
    explicit ProbeVisitor(BaseVisitor* parent, Handler handler = {})
        : BaseVisitor(parent), m_handler(std::move(handler)) {}

    using BaseVisitor::get_elem_stack_count_entry;
    using BaseVisitor::hand_over;
    using BaseVisitor::m_callbacks;
    using BaseVisitor::m_debug_mode;
    using BaseVisitor::m_elem_counts;
    using BaseVisitor::m_elem_stack;
    using BaseVisitor::m_has_error;
    using BaseVisitor::VisitEnter;

    bool VisitEnter(const tinyxml2::XMLElement& elem, const tinyxml2::XMLAttribute* attr) override {
        BaseVisitor::VisitEnter(elem, attr);
        return m_handler ? m_handler(*this, elem) : !m_has_error;
    }

  private:
    Handler m_handler;
};

// Parses a text that has no parse error; it throws the library's error text otherwise.
inline std::unique_ptr<tinyxml2::XMLDocument> parsed(const std::string& xml) {
    auto doc = std::make_unique<tinyxml2::XMLDocument>();
    if (doc->Parse(xml.c_str(), xml.size()) != tinyxml2::XML_SUCCESS)
        throw std::runtime_error(doc->ErrorStr());
    return doc;
}

} // namespace zan::test
