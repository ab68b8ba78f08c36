// SPDX-License-Identifier: Apache-2.0
// Values of metrics, and what they changed by, as people read them.
#pragma once

#include <string>

#include "metric_table.h"

namespace zan::profile {

// With its unit: "28.0%", "8.70 us", "12,267 MB/s", "1.28 MB", "3.2 words"; "-" if it is missing. Times are
// nanoseconds; without a `time_unit` they are the numbers of the report.
std::string metric_text(MetricUnit unit, const Value& value, bool time_unit);

// By how much a value changed: "+7.1 points" for percent, "+15.0%" of the old value for all others; an old
// value of 0 has the new one with its sign, "+3.2 words". "-" if either is missing.
std::string delta_text(MetricUnit unit, const Value& before, const Value& after, bool time_unit);

} // namespace zan::profile
