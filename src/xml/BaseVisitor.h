// SPDX-License-Identifier: Apache-2.0
// The base of every element walker: a stack of open elements, counts by path, typed attributes, diagnostics.
#pragma once

#include <tinyxml2.h>

#include <cstdarg>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "BaseVisitorAttributes.h"
#include "BaseVisitorCallbacks.h"

namespace zan::xml {

using tinyxml2::XMLAttribute;
using tinyxml2::XMLComment;
using tinyxml2::XMLDeclaration;
using tinyxml2::XMLDocument;
using tinyxml2::XMLElement;
using tinyxml2::XMLNode;
using tinyxml2::XMLText;
using tinyxml2::XMLUnknown;

// Walks one document, or one element and its subtree, once. The first error sets a flag that is never
// cleared: from then on elements are neither entered nor left, and the walk ends with false.
//
// A path is the names of elements joined with "/", beginning at the element that this visitor was started on.
class BaseVisitor : public tinyxml2::XMLVisitor {
  public:
    // For the outermost visitor of a document. `callbacks` isn't owned; when it is null, reports only set the
    // flag.
    BaseVisitor(VisitorCallbacks* callbacks, bool debug);

    // For a child visitor, which takes over the callbacks and the debug mode of `parent` (not null) and
    // nothing else.
    explicit BaseVisitor(BaseVisitor* parent);

    ~BaseVisitor() override;

    bool VisitEnter(const XMLDocument& doc) override;
    bool VisitExit(const XMLDocument& doc) override;
    // Opens the element and counts its path. An overriding visitor calls this first and drops the result.
    bool VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) override;
    // Closes the element, which has to be the top of the stack.
    bool VisitExit(const XMLElement& elem) override;
    bool Visit(const XMLDeclaration& declaration) override;
    bool Visit(const XMLText& text) override;
    bool Visit(const XMLComment& comment) override;
    bool Visit(const XMLUnknown& unknown) override;

    static bool attribute_exists(const XMLElement& elem, const char* name);

    // The callbacks' source name; the callbacks must be set.
    const char* get_source_name() const;

    // The path of the open elements; empty when none is open.
    std::string get_elem_stack_key() const;

    // Passes `text` on to the callbacks in debug mode.
    void debug(const std::string& text);

    // Reads an attribute into `out`; false if it is missing, which is reported when it is `required`, or not
    // of the type. Nothing is reported unless `report` is set. A missing attribute leaves `out` as it was.
    template <AttributeValue T>
    bool query_attribute(const XMLElement& elem, const char* name, T* out, bool report, bool required);

    // The same of an attribute of that name which is known already; null if the element doesn't have it.
    template <AttributeValue T>
    bool query_attribute(const XMLElement& elem, const XMLAttribute* attr, const char* name, T* out,
                         bool report, bool required);

    // Whether an error was reported.
    bool has_error() const { return m_has_error; }

    // Reports an error, at a line where it has one, sets the error flag and returns false.
    bool report_error(const std::string& msg);
    bool report_error(const XMLNode& node, const std::string& msg);
    bool report_error(const XMLAttribute& attr, const std::string& msg);

    // Errors with a text of their own. `extra`, when not empty, is a further line of the message. All return
    // false.
    bool report_missing_attr(const XMLElement& elem, const std::string& attr, const std::string& extra);
    bool report_unexpected_elem(const XMLElement& elem, const std::string& extra);
    bool report_unexpected_attr(const XMLAttribute& attr);
    bool report_attr_type_error(const XMLElement& elem, const std::string& attr_name,
                                const std::string& extra);

    // Reports `msg` at the line of the attribute, or of the element if it has no such attribute.
    bool report_attr_error(const XMLElement& elem, const std::string& attr_name, const std::string& msg);

    // Checks on the count of the current path, the element being entered included. Bounds are inclusive.
    bool report_unexpected_elem_stack_count(const XMLElement& elem, unsigned int exact);
    bool report_unexpected_elem_stack_count(const XMLElement& elem, unsigned int min_count,
                                            unsigned int max_count);

    // The error of a count that isn't within its bounds.
    bool report_unexpected_elem_count_error(const XMLElement& elem, unsigned int min_count,
                                            unsigned int max_count);

    // Reports each attribute that is not among the names. Returns false too if the error flag was set before.
    bool report_unexpected_attrs(const XMLElement& elem, unsigned int n, const char* const* names);
    bool report_unexpected_attrs(const XMLElement& elem, const std::vector<std::string>& names);

    // For visitors outside this program; those within it have a table of their elements. Lists of names come
    // as a count and that many `const char*`, outermost element first; none may be null.

    // Whether the open elements below the top are exactly those named; the top may be any.
    bool check_element_stack(unsigned int n, ...) const;
    bool check_element_stack_va(unsigned int n, va_list names) const;

    // Whether the open elements, the top included, are exactly those named.
    bool check_element_stack_with_top(unsigned int n, ...) const;
    bool check_element_stack_with_top_va(unsigned int n, va_list names) const;

    // How many times the path of these names was entered, 0 if never.
    unsigned int get_element_count(unsigned int n, ...) const;
    unsigned int get_element_count_va(unsigned int n, va_list names) const;

    // Checks on nesting: true if check_element_stack or check_element_stack_with_top holds, else an error.
    bool report_unexpected_elem_stack(const XMLElement& elem, unsigned int n, ...);
    bool report_unexpected_elem_stack_with_top(const XMLElement& elem, unsigned int n, ...);

    // Checks on the count of the path of the `n` names. The error names `elem`, whatever the path.
    bool report_unexpected_elem_count(const XMLElement& elem, unsigned int exact, unsigned int n, ...);
    bool report_unexpected_elem_count(const XMLElement& elem, unsigned int min_count, unsigned int max_count,
                                      unsigned int n, ...);
    bool report_unexpected_attrs(const XMLElement& elem, unsigned int n, ...);

    // Returns true; the walk goes on.
    bool report_warning(const std::string& msg);

  protected:
    // Lets `child` walk the element and its subtree, and takes over its failure. Always returns false, as the
    // result of the own VisitEnter: the subtree has been walked already.
    bool hand_over(const XMLElement& elem, BaseVisitor* child);

    // The count of the current path, created as 0 if missing.
    unsigned int& get_elem_stack_count_entry();

    std::vector<std::string> m_elem_stack; // names of the open elements, outermost first
    bool m_has_error = false;
    bool m_debug_mode;
    std::map<std::string, unsigned int> m_elem_counts; // by path: how many times it was entered
    VisitorCallbacks* m_callbacks;                     // not owned, may be null
    // The element that is entered or left, null outside of the root. Messages about no node are about it.
    const XMLElement* m_current_elem = nullptr;

  private:
    using Names = std::vector<std::string_view>;

    static Names take_names(unsigned int n, va_list names);
    bool report_error_where(const MessagePlace& place, const std::string& where, const std::string& msg);
    bool report_count_outside(const XMLElement& elem, unsigned int count, unsigned int min_count,
                              unsigned int max_count);
    bool report_attrs_not_in(const XMLElement& elem, const Names& names);

    std::string m_path; // room for the path of an element that is entered
};

template <AttributeValue T>
bool BaseVisitor::query_attribute(const XMLElement& elem, const char* name, T* out, bool report,
                                  bool required) {
    return query_attribute(elem, elem.FindAttribute(name), name, out, report, required);
}

template <AttributeValue T>
bool BaseVisitor::query_attribute(const XMLElement& elem, const XMLAttribute* attr, const char* name, T* out,
                                  bool report, bool required) {
    if (!attr)
        return report && required && report_missing_attr(elem, name, "");
    if (convert_attribute(*attr, out))
        return true;
    return report && report_attr_type_error(elem, name, "");
}

} // namespace zan::xml
