// SPDX-License-Identifier: Apache-2.0
#include "time_option.h"

#include <charconv>
#include <cmath>
#include <string_view>
#include <system_error>
#include <utility>

#include "failure.h"
#include "printable.h"

namespace zan::tool {

namespace {

profile::Value known_unit(std::string_view unit) {
    constexpr std::pair<std::string_view, double> units[] = {{"ns", 1}, {"us", 1e3}, {"ms", 1e6}, {"s", 1e9}};
    for (const auto& [name, nanoseconds] : units) {
        if (name == unit)
            return nanoseconds;
    }
    return {};
}

} // namespace

profile::Value nanoseconds_of_unit(const std::string& unit) {
    const profile::Value nanoseconds = known_unit(unit);
    if (!nanoseconds && !unit.empty())
        throw Failure("--time-unit takes ns, us, ms or s, not " + in_quotes(unit));
    return nanoseconds;
}

profile::Value nanoseconds_of_time(const std::string& time, const std::string& option) {
    if (time.empty())
        return {};
    double number = 0.0;
    const char* const end = time.data() + time.size();
    const auto read = std::from_chars(time.data(), end, number, std::chars_format::fixed);
    const profile::Value unit = known_unit({read.ptr, end});
    if (read.ec != std::errc() || !unit || !std::isfinite(number))
        throw Failure(option + " takes a time with its unit, such as 12ms, not " + in_quotes(time));
    return number * *unit;
}

} // namespace zan::tool
