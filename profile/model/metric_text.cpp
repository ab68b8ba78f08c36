// SPDX-License-Identifier: Apache-2.0
#include "metric_text.h"

#include <cmath>
#include <iterator>

#include "value_text.h"

namespace zan::profile {

namespace {

std::string bytes_text(double bytes) {
    constexpr const char* units[] = {" B", " kB", " MB", " GB"};
    std::size_t unit = 0;
    while (unit + 1 < std::size(units) && std::abs(bytes) >= 999.5) {
        bytes /= 1000;
        ++unit;
    }
    return number_text(bytes) + units[unit];
}

std::string with_sign(double change, const std::string& text) {
    return change > 0 ? "+" + text : text;
}

} // namespace

std::string metric_text(MetricUnit unit, const Value& value, bool time_unit) {
    if (!value || !std::isfinite(*value))
        return "-";
    switch (unit) {
        case MetricUnit::percent:
            return fixed_text(*value, 1) + "%";
        case MetricUnit::time:
            return time_unit ? time_text(*value) : number_text(*value);
        case MetricUnit::cycles:
            return number_text(*value) + " cycles";
        case MetricUnit::megabytes_per_second:
            return number_text(*value) + " MB/s";
        case MetricUnit::bytes:
            return bytes_text(*value);
        case MetricUnit::words:
            return number_text(*value) + " words";
    }
    return "-";
}

std::string delta_text(MetricUnit unit, const Value& before, const Value& after, bool time_unit) {
    if (!before || !after || !std::isfinite(*before) || !std::isfinite(*after))
        return "-";
    const double change = *after - *before;
    if (unit == MetricUnit::percent)
        return with_sign(change, fixed_text(change, 1) + " points");
    if (*before == 0)
        return with_sign(change, metric_text(unit, change, time_unit));
    return with_sign(change, fixed_text(change / *before * 100, 1) + "%");
}

} // namespace zan::profile
