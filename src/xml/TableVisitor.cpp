// SPDX-License-Identifier: Apache-2.0
#include "TableVisitor.h"

#include <algorithm>

namespace zan::xml {

TableVisitor::TableVisitor(Rows rows, VisitorCallbacks* callbacks, bool debug)
    : BaseVisitor(callbacks, debug), m_rows(rows) {
}

TableVisitor::TableVisitor(Rows rows, BaseVisitor* parent) : BaseVisitor(parent), m_rows(rows) {
}

bool TableVisitor::VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) {
    BaseVisitor::VisitEnter(elem, first_attribute);
    return enter_by_table(elem);
}

bool TableVisitor::VisitExit(const XMLElement& elem) {
    if (!m_has_error)
        m_current_elem = &elem;
    const ElementRow* row = m_has_error ? nullptr : find_row(elem);
    if (row && row->leave && !row->leave(*this, elem))
        return !m_has_error;
    return BaseVisitor::VisitExit(elem);
}

bool TableVisitor::enter_by_table(const XMLElement& elem) {
    const ElementRow* row = find_row(elem);
    if (!row || !stands_in(row->parents))
        return report_unexpected_elem(elem, "");
    if (row->occurrence == Occurrence::once && !report_unexpected_elem_stack_count(elem, 1))
        return false;
    return row->enter(*this, elem);
}

const ElementRow* TableVisitor::find_row(const XMLElement& elem) const {
    const std::string_view name = elem.Value();
    const auto found = std::find_if(m_rows.begin(), m_rows.end(), [&](const ElementRow& row) {
        return row.name == any_name ? stands_in(row.parents) : row.name == name;
    });
    return found == m_rows.end() ? nullptr : &*found;
}

// The elements around the current one are compared one by one, as joining their names would cost an
// allocation for each element of a document.
bool TableVisitor::stands_in(const char* parents) const {
    if (parents == anywhere)
        return true;
    if (m_elem_stack.empty())
        return false;
    std::string_view rest = parents;
    for (size_t i = 0; i + 1 < m_elem_stack.size(); ++i) {
        if (i > 0 && !rest.starts_with('/'))
            return false;
        rest.remove_prefix(i > 0 ? 1 : 0);
        if (!rest.starts_with(m_elem_stack[i]))
            return false;
        rest.remove_prefix(m_elem_stack[i].size());
    }
    return rest.empty();
}

bool TableVisitor::expect_no_attributes(const XMLElement& elem) {
    return report_unexpected_attrs(elem, std::vector<std::string>());
}

unsigned int TableVisitor::count_of(std::string_view path) const {
    const auto entry = m_elem_counts.find(std::string(path));
    return entry == m_elem_counts.end() ? 0 : entry->second;
}

bool TableVisitor::expect_once(const XMLElement& elem, std::string_view path) {
    return count_of(path) == 1 || report_unexpected_elem_count_error(elem, 1, 1);
}

bool descend(TableVisitor&, const XMLElement&) {
    return true;
}

bool skip(TableVisitor&, const XMLElement&) {
    return false;
}

} // namespace zan::xml
