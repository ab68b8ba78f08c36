// SPDX-License-Identifier: Apache-2.0
#include "time_unit.h"

#include <charconv>
#include <cmath>

namespace zan::profile {

Value clock_of(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(" \t");
    if (begin == std::string_view::npos)
        return std::nullopt;
    float mhz = 0.0f; // the report's times and bandwidths were computed with a float
    const auto [end, error] = std::from_chars(text.data() + begin, text.data() + text.size(), mhz);
    const bool is_whole = text.find_first_not_of(" \t\r", static_cast<std::size_t>(end - text.data())) ==
                          std::string_view::npos;
    if (error != std::errc() || !is_whole || !(mhz > 0.0f) || !std::isfinite(mhz))
        return std::nullopt;
    return static_cast<double>(mhz);
}

TimeUnit find_time_unit(double cycles, double length, Value clock_mhz, Value stated) {
    constexpr double most_deviation = 0.2;
    constexpr int least_power = -6; // femtoseconds
    constexpr int greatest_power = 12;
    TimeUnit unit{stated, std::nullopt};
    if (!clock_mhz || !(cycles > 0.0) || !(length > 0.0))
        return unit;
    const double measured = cycles * 1000.0 / *clock_mhz / length; // nanoseconds of one unit
    if (stated) {
        unit.deviation = std::abs(measured / *stated - 1.0);
        return unit;
    }
    for (int power = least_power; power <= greatest_power; ++power) {
        const double nanoseconds = std::pow(10.0, power);
        const double deviation = std::abs(measured / nanoseconds - 1.0);
        if (deviation <= most_deviation)
            return {nanoseconds, deviation};
    }
    return unit;
}

} // namespace zan::profile
