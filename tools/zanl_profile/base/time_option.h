// SPDX-License-Identifier: Apache-2.0
// The option of commands that says what the times of a report are.
#pragma once

#include <string>

#include "metric_table.h"

namespace zan::tool {

// The nanoseconds of "ns", "us", "ms" or "s"; nothing for an empty text. Throws Failure for any other.
profile::Value nanoseconds_of_unit(const std::string& unit);

} // namespace zan::tool
