// SPDX-License-Identifier: Apache-2.0
// Which unit the times of a report have.
#pragma once

#include <string_view>

#include "metric_table.h"

namespace zan::profile {

// The clock in MHz; nothing for "0.0", and for a text that isn't a number above 0.
Value clock_of(std::string_view text);

struct TimeUnit {
    Value nanoseconds; // of one unit; missing if it isn't known
    Value deviation;   // how far the cycles at the clock are from the times in that unit: 0.05 is 5%
};

// Finds the unit, a power of ten of nanoseconds, in which `cycles` at the clock last within 20% of `length`.
// With `stated` nanoseconds it is that unit, whatever the cycles say.
TimeUnit find_time_unit(double cycles, double length, Value clock_mhz, Value stated);

} // namespace zan::profile
