// SPDX-License-Identifier: Apache-2.0
#include "time_option.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "failure.h"
#include "printable.h"

namespace zan::tool {

profile::Value nanoseconds_of_unit(const std::string& unit) {
    constexpr std::pair<const char*, double> units[] = {{"ns", 1}, {"us", 1e3}, {"ms", 1e6}, {"s", 1e9}};
    if (unit.empty())
        return {};
    const auto* found = std::ranges::find(units, unit, &std::pair<const char*, double>::first);
    if (found == std::end(units))
        throw Failure("--time-unit takes ns, us, ms or s, not " + in_quotes(unit));
    return found->second;
}

} // namespace zan::tool
