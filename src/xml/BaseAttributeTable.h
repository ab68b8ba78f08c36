// Attributes of an element as a table, read in its order.
#pragma once

#include <string>
#include <variant>

#include "BaseVisitor.h"

namespace zan::xml {

// Where a row puts an attribute's value in `Values`, the record of all of the element's.
template <typename Values>
using AttributeTarget = std::variant<std::string Values::*, unsigned int Values::*, unsigned_hex Values::*,
                                     unsigned64_hex Values::*, float Values::*>;

enum class AttributeNeed { required, optional };

// One attribute. `Visitor` is the reader's class.
template <typename Visitor, typename Values>
struct AttributeRow {
    const char* name;
    AttributeTarget<Values> target;
    AttributeNeed need;
    const char* message = nullptr; // what is reported, besides the reader's own words, if it can't be read
    // What else must hold of the values read so far; reports what is wrong. May be null.
    bool (Visitor::*check)(const XMLElement& elem, const Values& values) = nullptr;
    // The attribute at whose line the message is reported, where it isn't this one.
    const char* reported_name = nullptr;
};

// Reports each attribute of the element that has no row; false if there is one.
template <typename Visitor, typename Values, size_t N>
bool check_attributes(Visitor& visitor, const XMLElement& elem,
                      const AttributeRow<Visitor, Values> (&rows)[N]) {
    const char* names[N];
    for (size_t i = 0; i < N; ++i)
        names[i] = rows[i].name;
    return visitor.report_unexpected_attrs(elem, static_cast<unsigned int>(N), names);
}

// Reads the attributes into `values`, which keeps what it holds where an optional one is missing. The first
// failure ends the reading with false.
template <typename Visitor, typename Values, size_t N>
bool read_attributes(Visitor& visitor, const XMLElement& elem, const AttributeRow<Visitor, Values> (&rows)[N],
                     Values& values) {
    for (const AttributeRow<Visitor, Values>& row : rows) {
        if (row.need == AttributeNeed::optional && !BaseVisitor::attribute_exists(elem, row.name))
            continue;
        const bool read = std::visit(
            [&](auto target) {
                return visitor.query_attribute(elem, row.name, &(values.*target), true, true);
            },
            row.target);
        if (!read && row.message)
            visitor.report_attr_error(elem, row.reported_name ? row.reported_name : row.name, row.message);
        if (!read)
            return false;
        if (row.check && !(visitor.*row.check)(elem, values))
            return false;
    }
    return true;
}

} // namespace zan::xml
