// SPDX-License-Identifier: Apache-2.0
// The messages of BaseVisitor. People and tools search for their words, so each stands here exactly once.
#include <algorithm>

#include "BaseVisitor.h"
#include "contract.h"

namespace zan::xml {

namespace {

std::string quoted(const std::string& name) {
    return "'" + name + "'";
}

std::string with_extra(const std::string& text, const std::string& extra) {
    return extra.empty() ? text : text + "\n" + extra;
}

// The frame of all messages. `where` follows the source: ":" for the input as a whole, else its line, if any.
std::string framed(const std::string& severity, const char* source, const std::string& where,
                   const std::string& msg) {
    // A loader that was handed a ready document has no source name.
    const std::string head = severity + " in " + quoted(source ? source : "") + where + "\n";
    return msg.empty() ? head : head + msg + "\n";
}

std::string at_line(int line) {
    return line > 0 ? ", line " + std::to_string(line) : std::string();
}

MessagePlace place_of(const XMLNode& node) {
    return {node.GetLineNum(), node.ToElement() ? node.Value() : nullptr};
}

std::string how_often(unsigned int min_count, unsigned int max_count) {
    if (min_count != max_count)
        return std::to_string(min_count) + "-" + std::to_string(max_count) + " times.";
    return min_count == 1 ? "exactly once." : "exactly " + std::to_string(min_count) + " times.";
}

} // namespace

// Without callbacks no text is formed: a caller that only asks whether a document is good pays for none.
bool BaseVisitor::report_error_where(const MessagePlace& place, const std::string& where,
                                     const std::string& msg) {
    if (m_callbacks) {
        m_callbacks->report_place(place);
        m_callbacks->report_error(framed("Error", get_source_name(), where, msg));
    }
    m_has_error = true;
    return false;
}

// The text has no line. Tools know it so.
bool BaseVisitor::report_error(const std::string& msg) {
    return report_error_where(m_current_elem ? place_of(*m_current_elem) : MessagePlace(), ":", msg);
}

bool BaseVisitor::report_error(const XMLNode& node, const std::string& msg) {
    return report_error_where(place_of(node), at_line(node.GetLineNum()), msg);
}

bool BaseVisitor::report_error(const XMLAttribute& attr, const std::string& msg) {
    return report_error_where({attr.GetLineNum(), attr.Name()}, at_line(attr.GetLineNum()), msg);
}

bool BaseVisitor::report_warning(const std::string& msg) {
    if (m_callbacks)
        m_callbacks->report_warning(framed("Warning", get_source_name(), ":", msg));
    return true;
}

bool BaseVisitor::report_missing_attr(const XMLElement& elem, const std::string& attr,
                                      const std::string& extra) {
    const std::string text =
        "Expected attribute " + quoted(attr) + " on element " + quoted(elem.Value()) + ".";
    return report_error(elem, with_extra(text, extra));
}

bool BaseVisitor::report_unexpected_elem(const XMLElement& elem, const std::string& extra) {
    return report_error(elem, with_extra("Unexpected element " + quoted(elem.Value()) + ".", extra));
}

bool BaseVisitor::report_unexpected_attr(const XMLAttribute& attr) {
    return report_error(attr, "Unexpected attribute " + quoted(attr.Name()) + ".");
}

bool BaseVisitor::report_attr_type_error(const XMLElement& elem, const std::string& attr_name,
                                         const std::string& extra) {
    const std::string text =
        "Incorrect type for attribute " + quoted(attr_name) + " on element " + quoted(elem.Value()) + ".";
    return report_attr_error(elem, attr_name, with_extra(text, extra));
}

// An attribute has a line of its own, as the attributes of an element may stand on several lines.
bool BaseVisitor::report_attr_error(const XMLElement& elem, const std::string& attr_name,
                                    const std::string& msg) {
    const XMLAttribute* attr = elem.FindAttribute(attr_name.c_str());
    return attr ? report_error(*attr, msg) : report_error(elem, msg);
}

bool BaseVisitor::report_unexpected_elem_stack(const XMLElement& elem, unsigned int n, ...) {
    va_list names;
    va_start(names, n);
    const bool holds = check_element_stack_va(n, names);
    va_end(names);
    return holds || report_unexpected_elem(elem, "");
}

bool BaseVisitor::report_unexpected_elem_stack_with_top(const XMLElement& elem, unsigned int n, ...) {
    va_list names;
    va_start(names, n);
    const bool holds = check_element_stack_with_top_va(n, names);
    va_end(names);
    return holds || report_unexpected_elem(elem, "");
}

bool BaseVisitor::report_unexpected_elem_stack_count(const XMLElement& elem, unsigned int exact) {
    return report_unexpected_elem_stack_count(elem, exact, exact);
}

bool BaseVisitor::report_unexpected_elem_stack_count(const XMLElement& elem, unsigned int min_count,
                                                     unsigned int max_count) {
    return report_count_outside(elem, get_elem_stack_count_entry(), min_count, max_count);
}

bool BaseVisitor::report_unexpected_elem_count(const XMLElement& elem, unsigned int exact, unsigned int n,
                                               ...) {
    va_list names;
    va_start(names, n);
    const unsigned int count = get_element_count_va(n, names);
    va_end(names);
    return report_count_outside(elem, count, exact, exact);
}

bool BaseVisitor::report_unexpected_elem_count(const XMLElement& elem, unsigned int min_count,
                                               unsigned int max_count, unsigned int n, ...) {
    va_list names;
    va_start(names, n);
    const unsigned int count = get_element_count_va(n, names);
    va_end(names);
    return report_count_outside(elem, count, min_count, max_count);
}

bool BaseVisitor::report_count_outside(const XMLElement& elem, unsigned int count, unsigned int min_count,
                                       unsigned int max_count) {
    ZAN_CONTRACT(min_count <= max_count, "min_count <= max_count");
    const bool in_range = min_count <= count && count <= max_count;
    return in_range || report_unexpected_elem_count_error(elem, min_count, max_count);
}

bool BaseVisitor::report_unexpected_elem_count_error(const XMLElement& elem, unsigned int min_count,
                                                     unsigned int max_count) {
    ZAN_CONTRACT(min_count <= max_count, "min_count <= max_count");
    if (max_count == 0)
        return report_unexpected_elem(elem, "");
    return report_error(elem, "Expected element <" + std::string(elem.Value()) + "> to appear " +
                                  how_often(min_count, max_count));
}

// Every stray attribute is reported, not only the first, so that an author can mend all of them at once.
bool BaseVisitor::report_attrs_not_in(const XMLElement& elem, const Names& names) {
    for (const XMLAttribute* attr = elem.FirstAttribute(); attr; attr = attr->Next()) {
        if (std::find(names.begin(), names.end(), attr->Name()) == names.end())
            report_unexpected_attr(*attr);
    }
    return !m_has_error;
}

bool BaseVisitor::report_unexpected_attrs(const XMLElement& elem, unsigned int n, const char* const* names) {
    ZAN_CONTRACT(n == 0 || names != nullptr, "names != 0");
    Names allowed;
    allowed.reserve(n);
    for (unsigned int i = 0; i < n; ++i) {
        ZAN_CONTRACT(names[i] != nullptr, "elem_name != 0");
        allowed.emplace_back(names[i]);
    }
    return report_attrs_not_in(elem, allowed);
}

bool BaseVisitor::report_unexpected_attrs(const XMLElement& elem, unsigned int n, ...) {
    va_list names;
    va_start(names, n);
    const Names allowed = take_names(n, names);
    va_end(names);
    return report_attrs_not_in(elem, allowed);
}

bool BaseVisitor::report_unexpected_attrs(const XMLElement& elem, const std::vector<std::string>& names) {
    return report_attrs_not_in(elem, Names(names.begin(), names.end()));
}

} // namespace zan::xml
