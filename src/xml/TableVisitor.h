// SPDX-License-Identifier: Apache-2.0
// The base of the visitors of descriptions, which know the elements of their subtree as a table.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "BaseVisitor.h"

namespace zan::xml {

class TableVisitor;

// How often an element may be entered by its path in one walk.
enum class Occurrence { once, any };

// An element that the visitor knows. The first row that has its name decides, so an element that stands in
// another place than its row says is unexpected.
struct ElementRow {
    const char* name; // or any_name
    const char*
        parents; // the elements around it, outermost first, joined with "/"; or outermost, or anywhere
    Occurrence occurrence;
    // Handles the element; true if the walk shall go on with its children. False is no fault unless one was
    // reported.
    bool (*enter)(TableVisitor& visitor, const XMLElement& elem);
    // Checks the element once its children have been walked; false ends the walk if a fault was reported. It
    // isn't called after an error. May be null.
    bool (*leave)(TableVisitor& visitor, const XMLElement& elem) = nullptr;
};

// The row holds for each element in its place that no earlier row names.
inline constexpr const char* any_name = nullptr;
// The element that the walk began at.
inline constexpr const char* outermost = "";
// In any place.
inline constexpr const char* anywhere = nullptr;

// Walks an element and its subtree as its table says: an element is looked up, then its place is checked,
// then how often it was entered, and then its row's handler is called. What the table doesn't have is
// unexpected.
class TableVisitor : public BaseVisitor {
  public:
    using BaseVisitor::VisitEnter;
    using BaseVisitor::VisitExit;
    bool VisitEnter(const XMLElement& elem, const XMLAttribute* first_attribute) override;
    bool VisitExit(const XMLElement& elem) override;

  protected:
    using Rows = std::span<const ElementRow>;

    // `rows` must outlive the visitor. For the rest see BaseVisitor.
    TableVisitor(Rows rows, VisitorCallbacks* callbacks, bool debug);
    TableVisitor(Rows rows, BaseVisitor* parent);

    // What VisitEnter does after BaseVisitor's.
    bool enter_by_table(const XMLElement& elem);

    // Reports each attribute of an element that may have none; false if there is one.
    bool expect_no_attributes(const XMLElement& elem);

    // How often the elements of this path were entered.
    unsigned int count_of(std::string_view path) const;
    // Whether they were entered exactly once. The message names `elem`, not the path.
    bool expect_once(const XMLElement& elem, std::string_view path);

  private:
    const ElementRow* find_row(const XMLElement& elem) const;
    bool stands_in(const char* parents) const;

    Rows m_rows;
};

namespace detail {

// Only declared, for its type: the class of a handler.
template <typename Visitor>
Visitor& class_of(bool (Visitor::*)(const XMLElement&));

} // namespace detail

// Handlers of a row. The table of a visitor has handlers of its own class only, so the cast is safe. It is
// static as g++ 12 would make one function of those for two classes of one name in unnamed namespaces.
template <auto method>
static bool call(TableVisitor& visitor, const XMLElement& elem) {
    using Visitor = decltype(detail::class_of(method));
    return (static_cast<Visitor>(visitor).*method)(elem);
}

// There is nothing to read on the element itself, but its children are walked.
bool descend(TableVisitor& visitor, const XMLElement& elem);

// Another visitor has read the element already.
bool skip(TableVisitor& visitor, const XMLElement& elem);

} // namespace zan::xml
