// SPDX-License-Identifier: Apache-2.0
// Options of commands that are times, or units of them.
#pragma once

#include <string>

#include "metric_table.h"

namespace zan::tool {

// The nanoseconds of "ns", "us", "ms" or "s"; nothing for an empty text. Throws Failure for any other.
profile::Value nanoseconds_of_unit(const std::string& unit);

// The nanoseconds of a time with its unit, such as "12ms" or "1.5s"; nothing for an empty text. Throws
// Failure, which names the option, for any other.
profile::Value nanoseconds_of_time(const std::string& time, const std::string& option);

} // namespace zan::tool
