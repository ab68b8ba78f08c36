// SPDX-License-Identifier: Apache-2.0
// Attributes of an element as a table: their names, in the order of reading, and where their values go.
#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "BaseVisitor.h"
#include "BaseWordTable.h"

namespace zan::xml {

enum class AttributeNeed { required, optional };

// How the reading of an attribute ended: `unreadable` is one that is missing or isn't of its type, `refused`
// one whose value isn't allowed. Both have been reported.
enum class AttributeState { good, unreadable, refused };

// One attribute, whose value goes to a `Record`. `Visitor` is the class of the visitor that reads, or a base
// of it.
template <typename Visitor, typename Record>
struct AttributeRow {
    // `attr` is null if the element doesn't have the attribute.
    using Reader = AttributeState(Visitor& visitor, const XMLElement& elem, const XMLAttribute* attr,
                                  const AttributeRow& row, Record& record);

    const char* name;
    AttributeNeed need;
    Reader* read;                  // one of the functions below, or one that reads this attribute alone
    const char* message = nullptr; // see the reader
    // What else must hold of the values read so far; reports what doesn't. May be null.
    bool (Visitor::*check)(const XMLElement& elem, const Record& record) = nullptr;
    // The message is reported at the line of the attribute of this name, where it isn't the row's own.
    const char* reported_name = nullptr;
};

namespace detail {

template <typename Target>
struct TargetTraits;

template <typename Record, typename Member>
struct TargetTraits<Member Record::*> {
    using Value = Member;
};

template <typename Record, typename Argument>
struct TargetTraits<void (Record::*)(Argument)> {
    using Value = std::decay_t<Argument>;
};

template <typename Record, typename Argument>
struct TargetTraits<void (*)(Record&, Argument)> {
    using Value = std::decay_t<Argument>;
};

template <auto target, typename Record, typename Value>
static void store(Record& record, Value value) {
    if constexpr (std::is_member_object_pointer_v<decltype(target)>)
        record.*target = std::move(value);
    else
        std::invoke(target, record, std::move(value));
}

} // namespace detail

// The type that a target takes. A target is a field, a setter, or a function of a record and a value.
template <auto target>
using TargetValue = typename detail::TargetTraits<std::remove_const_t<decltype(target)>>::Value;

// `message` with `value` in the place of its "{}", if it has one.
std::string with_value(std::string message, std::string_view value);

// The readers. They are static as g++ 12 would make one function of those for two targets of one name in
// unnamed namespaces.

// Reads any value of its type. A row's message is reported besides the one for an unreadable attribute.
template <auto target, typename Value = TargetValue<target>, typename Visitor, typename Record>
static AttributeState read_to(Visitor& visitor, const XMLElement& elem, const XMLAttribute* attr,
                              const AttributeRow<Visitor, Record>& row, Record& record) {
    Value value{};
    if (!visitor.query_attribute(elem, attr, row.name, &value, true, true)) {
        if (row.message)
            visitor.report_attr_error(elem, row.reported_name ? row.reported_name : row.name, row.message);
        return AttributeState::unreadable;
    }
    detail::store<target>(record, std::move(value));
    return AttributeState::good;
}

// Conditions for read_if. A NaN meets neither.
inline constexpr auto is_positive = [](auto value) { return value > 0; };
inline constexpr auto is_not_negative = [](auto value) { return value >= 0; };

// Reads a number of which `condition` has to hold; the row's message is reported where it doesn't.
template <auto condition, auto target, typename Value = TargetValue<target>, typename Visitor,
          typename Record>
static AttributeState read_if(Visitor& visitor, const XMLElement& elem, const XMLAttribute* attr,
                              const AttributeRow<Visitor, Record>& row, Record& record) {
    Value value{};
    if (!visitor.query_attribute(elem, attr, row.name, &value, true, true))
        return AttributeState::unreadable;
    if (!condition(value)) {
        visitor.report_attr_error(elem, row.name, row.message);
        return AttributeState::refused;
    }
    detail::store<target>(record, value);
    return AttributeState::good;
}

// Reads a text that must be one of `words`; the row's message, with the text for its "{}", is reported where
// it isn't.
template <const auto& words, auto target, typename Visitor, typename Record>
static AttributeState read_word(Visitor& visitor, const XMLElement& elem, const XMLAttribute* attr,
                                const AttributeRow<Visitor, Record>& row, Record& record) {
    std::string_view text;
    if (!visitor.query_attribute(elem, attr, row.name, &text, true, true))
        return AttributeState::unreadable;
    const auto* word = find_word(words, text);
    if (!word) {
        visitor.report_attr_error(elem, row.name, with_value(row.message, text));
        return AttributeState::refused;
    }
    detail::store<target>(record, word->value);
    return AttributeState::good;
}

// Reports each attribute of the element that neither a row nor `others` names; false if there is one.
template <typename Rows>
bool check_attributes(BaseVisitor& visitor, const XMLElement& elem, const Rows& rows,
                      std::initializer_list<const char*> others = {}) {
    std::vector<const char*> names;
    names.reserve(std::size(rows) + others.size());
    names.assign(others);
    for (const auto& row : rows)
        names.push_back(row.name);
    return visitor.report_unexpected_attrs(elem, static_cast<unsigned int>(names.size()), names.data());
}

namespace detail {

// What read_rows does with the attribute of each row, which `find` looks up by the row's index.
template <typename Visitor, typename Rows, typename Record, typename Find>
AttributeState read_found(Visitor& visitor, const XMLElement& elem, const Rows& rows, Record& record,
                          Find find) {
    std::size_t index = 0;
    for (const auto& row : rows) {
        const XMLAttribute* attr = find(index++);
        if (!attr && row.need == AttributeNeed::optional)
            continue;
        const AttributeState state = row.read(visitor, elem, attr, row, record);
        if (state != AttributeState::good)
            return state;
        if (row.check && !(visitor.*row.check)(elem, record))
            return AttributeState::refused;
    }
    return AttributeState::good;
}

// The row of that name, or the number of rows. The search begins at `first`: writers of descriptions mostly
// have the order of the table, so that one comparison is enough.
template <typename Rows>
std::size_t row_of(const Rows& rows, const char* name, std::size_t first) {
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        const std::size_t index = first + i < std::size(rows) ? first + i : first + i - std::size(rows);
        if (std::strcmp(std::data(rows)[index].name, name) == 0)
            return index;
    }
    return std::size(rows);
}

} // namespace detail

// Reads the attributes into `record`, which keeps what it holds where an optional one is missing. The first
// fault ends the reading.
template <typename Visitor, typename Rows, typename Record>
AttributeState read_rows(Visitor& visitor, const XMLElement& elem, const Rows& rows, Record& record) {
    return detail::read_found(visitor, elem, rows, record, [&](std::size_t index) {
        return elem.FindAttribute(std::data(rows)[index].name);
    });
}

// Both: the element has no other attributes than those of the table, and all of them are good. The rows are
// an array. The attributes are gone over once, as most of the time of a large description is theirs: with a
// look-up for each row, and a list of the names that are allowed, the elements of a wide design took 71
// million instructions in place of 39.
template <typename Visitor, typename Row, std::size_t num_rows, typename Record>
bool read_attributes(Visitor& visitor, const XMLElement& elem, const Row (&rows)[num_rows], Record& record) {
    std::array<const XMLAttribute*, num_rows> found{};
    std::size_t next = 0;
    for (const XMLAttribute* attr = elem.FirstAttribute(); attr; attr = attr->Next()) {
        const std::size_t row = detail::row_of(rows, attr->Name(), next);
        if (row == num_rows) {
            visitor.report_unexpected_attr(*attr);
            continue;
        }
        if (!found[row]) // the first one of a name counts, as for read_rows
            found[row] = attr;
        next = row + 1;
    }
    if (visitor.has_error())
        return false;
    const auto find = [&](std::size_t index) { return found[index]; };
    return detail::read_found(visitor, elem, rows, record, find) == AttributeState::good;
}

} // namespace zan::xml
