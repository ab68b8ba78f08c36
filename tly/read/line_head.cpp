// SPDX-License-Identifier: Apache-2.0
#include "line_head.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <utility>

#include "diagnostics.h"
#include "input_names.h"

namespace {

// Indices of the fields. The first counter comes after them.
enum FieldIndex : std::size_t {
    device_id_field,
    queue_id_field,
    name_field,
    start_time_field,
    sample_time_field,
    shared_type_field,
    num_counters_field,
    num_head_fields,
};
static_assert(num_head_fields == first_counter_field);

// Sets a field of the head; false if the number isn't one of the field's type.
template <auto member>
bool set_int(LineHead& head, long long number) {
    if (!std::in_range<int>(number))
        return false;
    head.*member = static_cast<int>(number);
    return true;
}

template <auto member>
bool set_long_long(LineHead& head, long long number) {
    head.*member = number;
    return true;
}

bool set_shared_type(LineHead& head, long long number) {
    if (!std::in_range<int>(number))
        return false;
    const bool is_known = number >= SHARED_IVALID && number <= SHARED_TOTAL_REQ;
    head.shared_type = is_known ? static_cast<SharedCounterTypes>(number) : SHARED_NONE;
    return true;
}

struct HeadField {
    std::size_t index;
    std::string_view name; // as the message about a bad number has it
    bool (*set)(LineHead& head, long long number);
};

// All fields but the name, in the order in which they are on a line.
constexpr HeadField head_fields[] = {
    {device_id_field, "device id", set_int<&LineHead::device_id>},
    {queue_id_field, "command queue id", set_int<&LineHead::queue_id>},
    {start_time_field, "kernel start time", set_long_long<&LineHead::start_time>},
    {sample_time_field, "sample time", set_long_long<&LineHead::sample_time>},
    {shared_type_field, "shared counter type", set_shared_type},
    {num_counters_field, "number of counters", set_int<&LineHead::num_counters>},
};

// Reads a name that name_in_line would find, too: after two numbers without a sign it is this field, unless
// that starts with a digit or is empty.
bool read_plain_name(PlainFields& fields, std::string_view& name) {
    return fields.text(name) && !name.empty() && (name[0] < '0' || name[0] > '9');
}

// One row of the table, and the name before the first row after it. The row is known when this is compiled,
// so that the loop over all rows costs what code written out for each field would.
template <std::size_t row>
bool read_plain_field(PlainFields& fields, std::string_view& name, LineHead& head) {
    constexpr const HeadField& field = head_fields[row];
    if constexpr (field.index < name_field) {
        if (fields.at_sign()) // name_in_line would take it for the start of the name
            return false;
    }
    if constexpr (field.index == name_field + 1) {
        if (!read_plain_name(fields, name))
            return false;
    }
    long long number = 0;
    return fields.number(number) && field.set(head, number);
}

template <std::size_t... rows>
bool read_plain_fields(PlainFields& fields, std::string_view& name, LineHead& head,
                       std::index_sequence<rows...>) {
    return (read_plain_field<rows>(fields, name, head) && ...);
}

bool read_split_field(const HeadField& field, const MonLine& line, int line_number, LineHead& head) {
    const MonField text = line.fields()[field.index];
    if (text.is_number && field.set(head, text.value))
        return true;
    diagnose(Message::bad_number, {.line = line_number, .subject = field.name});
    return false;
}

// Whether the field, as the last one of a line, makes a whole line.
bool may_be_last(std::size_t field, LineForm form) {
    return (field == sample_time_field && form.is_transfer) ||
           (field == num_counters_field && !form.is_described);
}

} // namespace

std::string_view name_in_line(std::string_view line) {
    const std::size_t begin = line.find_first_not_of("0123456789,");
    if (begin == std::string_view::npos)
        throw std::out_of_range("monitor line of digits and commas only");
    return line.substr(begin, line.find(',', begin) - begin);
}

bool is_transfer_name(std::string_view name) {
    return name.starts_with('.') && std::any_of(std::begin(transfer_names), std::end(transfer_names),
                                                [&](const auto* known) { return name == *known; });
}

bool read_split_head(const MonLine& line, LineForm form, int line_number, LineHead& head) {
    const std::size_t last = line.num_commas();
    const bool is_whole = last >= num_head_fields || may_be_last(last, form);
    for (const HeadField& field : head_fields) {
        // The last field of a line with a wrong number of them isn't looked at.
        if ((field.index < last || (field.index == last && is_whole)) &&
            !read_split_field(field, line, line_number, head))
            return false;
    }
    if (!is_whole)
        diagnose(Message::wrong_field_count, {.line = line_number});
    return is_whole;
}

bool read_plain_head(PlainFields& fields, std::string_view& name, LineHead& head) {
    return read_plain_fields(fields, name, head, std::make_index_sequence<std::size(head_fields)>());
}
