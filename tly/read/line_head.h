// SPDX-License-Identifier: Apache-2.0
// The head of a monitor line: the fields before the counters, and the name among them.
//
// A line is read in one of two ways. Nearly all lines are plain, which means that each field but the name is
// a number of few digits: such a head is read from the front, without a list of fields. All other lines are
// split first, and a fault in them gets its message. Both ways use one table of fields, and a head that can
// be read in both ways is the same in both.
#pragma once

#include <string_view>

#include "mon_line.h"
#include "tly_constants.h"

// What the fixed fields of a line say.
struct LineHead {
    int device_id = 0;
    int queue_id = 0;
    long long start_time = 0;
    long long sample_time = 0;
    SharedCounterTypes shared_type = SHARED_NONE;
    int num_counters = 0;

    friend bool operator==(const LineHead&, const LineHead&) = default;
};

// Which lines may end before the first counter: a transfer's with the sample time, and if the design isn't
// described, any with the number of counters.
struct LineForm {
    bool is_transfer = false;
    bool is_described = true;
};

// The name in a line, found by its shape: it starts with the first character that is neither a digit nor a
// comma, and ends before the next comma. Throws std::out_of_range if there is no such character.
std::string_view name_in_line(std::string_view line);

bool is_transfer_name(std::string_view name);

// Reads the head of a line that was split. A field that is no number of its type, and a wrong number of
// fields, get a message with the line's number, and the result is false.
bool read_split_head(const MonLine& line, LineForm form, int line_number, LineHead& head);

// Reads the name and the head of a plain line that has counters, and leaves `fields` at the first of them.
// Returns false, without a message, for any other line; it has to be split then.
bool read_plain_head(PlainFields& fields, std::string_view& name, LineHead& head);
