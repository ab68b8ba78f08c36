// SPDX-License-Identifier: Apache-2.0
#include "BaseVisitor.h"

#include <algorithm>

#include "contract.h"

namespace zan::xml {

namespace {

// Replaces `path`, whose memory is kept: a path is joined for each element of a document.
template <typename Names>
void join_names(const Names& names, std::string& path) {
    path.clear();
    for (size_t i = 0; i < names.size(); ++i) {
        if (i > 0)
            path += '/';
        path += names[i];
    }
}

// Checks the parent before the first field is taken from it.
const BaseVisitor* checked_parent(const BaseVisitor* parent) {
    ZAN_CONTRACT(parent != nullptr, "parent != 0");
    return parent;
}

} // namespace

BaseVisitor::BaseVisitor(VisitorCallbacks* callbacks, bool debug)
    : m_debug_mode(debug), m_callbacks(callbacks) {
}

BaseVisitor::BaseVisitor(BaseVisitor* parent)
    : m_debug_mode(checked_parent(parent)->m_debug_mode), m_callbacks(parent->m_callbacks) {
}

BaseVisitor::~BaseVisitor() = default;

bool BaseVisitor::VisitEnter(const XMLDocument&) {
    debug("[xml] entering document\n");
    return !m_has_error;
}

bool BaseVisitor::VisitExit(const XMLDocument&) {
    m_current_elem = nullptr;
    debug("[xml] exiting document\n");
    return !m_has_error;
}

// After an error the stack and the counts stay as they are: elements are neither entered nor left any more.
bool BaseVisitor::VisitEnter(const XMLElement& elem, const XMLAttribute*) {
    if (m_has_error)
        return false;
    m_current_elem = &elem;
    m_elem_stack.emplace_back(elem.Value());
    ++get_elem_stack_count_entry();
    if (m_debug_mode) // asked here too, so that the path is joined only where it is printed
        debug("[xml] entering " + get_elem_stack_key() + "\n");
    return !m_has_error;
}

bool BaseVisitor::VisitExit(const XMLElement& elem) {
    // After an error elements are left that were never pushed, so the stack can't be checked any more.
    if (m_has_error)
        return false;
    ZAN_CONTRACT(!m_elem_stack.empty(), "m_elem_stack.size() > 0");
    ZAN_CONTRACT(m_elem_stack.back() == elem.Value(), "m_elem_stack.back() == elem.Value()");
    if (m_debug_mode)
        debug("[xml] exiting " + get_elem_stack_key() + "\n");
    m_elem_stack.pop_back();
    return !m_has_error;
}

bool BaseVisitor::Visit(const XMLDeclaration&) {
    return !m_has_error;
}

bool BaseVisitor::Visit(const XMLText&) {
    return !m_has_error;
}

bool BaseVisitor::Visit(const XMLComment&) {
    return !m_has_error;
}

bool BaseVisitor::Visit(const XMLUnknown&) {
    return !m_has_error;
}

// An empty attribute exists, so it is not the same as a missing one.
bool BaseVisitor::attribute_exists(const XMLElement& elem, const char* name) {
    return elem.Attribute(name, nullptr) != nullptr;
}

const char* BaseVisitor::get_source_name() const {
    ZAN_CONTRACT(m_callbacks != nullptr, "m_callbacks != 0");
    return m_callbacks->get_source_name();
}

std::string BaseVisitor::get_elem_stack_key() const {
    std::string path;
    join_names(m_elem_stack, path);
    return path;
}

unsigned int& BaseVisitor::get_elem_stack_count_entry() {
    join_names(m_elem_stack, m_path);
    return m_elem_counts[m_path];
}

// All names are taken before any is compared, so that a null name stops the process on every document.
BaseVisitor::Names BaseVisitor::take_names(unsigned int n, va_list names) {
    Names taken;
    for (unsigned int i = 0; i < n; ++i) {
        const char* elem_name = va_arg(names, const char*);
        ZAN_CONTRACT(elem_name != nullptr, "elem_name != 0");
        taken.emplace_back(elem_name);
    }
    return taken;
}

bool BaseVisitor::check_element_stack_va(unsigned int n, va_list names) const {
    const Names ancestors = take_names(n, names);
    return !m_elem_stack.empty() &&
           std::equal(ancestors.begin(), ancestors.end(), m_elem_stack.begin(), m_elem_stack.end() - 1);
}

bool BaseVisitor::check_element_stack(unsigned int n, ...) const {
    va_list names;
    va_start(names, n);
    const bool holds = check_element_stack_va(n, names);
    va_end(names);
    return holds;
}

bool BaseVisitor::check_element_stack_with_top_va(unsigned int n, va_list names) const {
    const Names elements = take_names(n, names);
    return std::equal(elements.begin(), elements.end(), m_elem_stack.begin(), m_elem_stack.end());
}

bool BaseVisitor::check_element_stack_with_top(unsigned int n, ...) const {
    va_list names;
    va_start(names, n);
    const bool holds = check_element_stack_with_top_va(n, names);
    va_end(names);
    return holds;
}

unsigned int BaseVisitor::get_element_count_va(unsigned int n, va_list names) const {
    std::string path;
    join_names(take_names(n, names), path);
    const auto entry = m_elem_counts.find(path);
    return entry == m_elem_counts.end() ? 0 : entry->second;
}

unsigned int BaseVisitor::get_element_count(unsigned int n, ...) const {
    va_list names;
    va_start(names, n);
    const unsigned int count = get_element_count_va(n, names);
    va_end(names);
    return count;
}

void BaseVisitor::debug(const std::string& text) {
    if (m_debug_mode && m_callbacks)
        m_callbacks->debug(text);
}

// Only the result of the child's whole walk shows that it failed: the parser drops the result of a
// VisitEnter, and the messages have gone to the callbacks already.
bool BaseVisitor::hand_over(const XMLElement& elem, BaseVisitor* child) {
    m_has_error |= !elem.Accept(child);
    return false;
}

} // namespace zan::xml
