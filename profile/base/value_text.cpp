// SPDX-License-Identifier: Apache-2.0
#include "value_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <iterator>
#include <limits>
#include <system_error>

namespace zan::profile {

namespace {

// The longest text: all digits of the greatest double, a point and the decimals.
constexpr std::size_t longest_fixed = std::numeric_limits<double>::max_exponent10 + 16;

// to_chars rounds what stands exactly halfway to an even digit, the page's toFixed away from zero. Halfway
// with d decimals is an odd number of 2^-(d+1), and no other value.
double rounds_away(double value, int decimals) {
    const double halves = std::ldexp(std::abs(value), decimals + 1);
    const bool halfway = std::fmod(halves, 2.0) == 1.0;
    return halfway ? std::nextafter(value, value * 2) : value;
}

void insert_commas(std::string& digits) {
    const std::size_t first = digits.starts_with('-') ? 1 : 0;
    std::size_t place = std::min(digits.find('.'), digits.size());
    while (place > first + 3) {
        place -= 3;
        digits.insert(place, 1, ',');
    }
}

// Decimals that make `digits` digits of a value, as it is once it has been rounded to them.
int decimals_for(double value, int digits) {
    int decimals = digits - 1;
    double limit = 10;
    while (decimals > 0 && std::abs(value) >= limit - 0.5 * std::pow(10.0, -decimals)) {
        decimals--;
        limit *= 10;
    }
    return decimals;
}

struct PrintedUnit {
    double nanoseconds;
    const char* name;
};
constexpr PrintedUnit time_units[] = {{1, "ns"}, {1e3, "us"}, {1e6, "ms"}, {1e9, "s"}};

std::string time_of_digits(double nanoseconds, int digits) {
    if (!std::isfinite(nanoseconds))
        return "-";
    const PrintedUnit* unit = time_units;
    while (unit + 1 != std::end(time_units) && std::abs(nanoseconds) / unit->nanoseconds >= 999.5)
        unit++;
    const double value = nanoseconds / unit->nanoseconds;
    const int decimals = unit == time_units ? 0 : decimals_for(value, digits);
    const std::string text = decimals == 0 ? count_text(value) : fixed_text(value, decimals);
    return text + " " + unit->name;
}

} // namespace

std::string fixed_text(double value, int decimals) {
    if (!std::isfinite(value))
        return "-";
    std::array<char, longest_fixed> text;
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(),
                                            rounds_away(value, decimals), std::chars_format::fixed, decimals);
    if (error != std::errc())
        return "-";
    std::string result(text.data(), end);
    // A value that rounds to 0 has no sign.
    if (result.starts_with('-') && result.find_first_not_of("-0.") == std::string::npos)
        result.erase(0, 1);
    return result;
}

std::string trimmed_text(double value, int decimals) {
    std::string text = fixed_text(value, decimals);
    if (text.find('.') == std::string::npos)
        return text;
    text.erase(text.find_last_not_of('0') + 1);
    if (text.ends_with('.'))
        text.pop_back();
    return text;
}

std::string count_text(double value) {
    std::string text = fixed_text(value, 0);
    insert_commas(text);
    return text;
}

std::string number_text(double value) {
    if (std::abs(value) >= 999.5)
        return count_text(value);
    if (std::abs(value) >= 0.9995 || value == 0)
        return trimmed_text(value, decimals_for(value, 3));
    int decimals = 3;
    double shown = std::abs(value);
    while (shown < 0.09995 && decimals < 9) {
        shown *= 10;
        decimals++;
    }
    return trimmed_text(value, decimals);
}

std::string exact_text(double value) {
    if (!std::isfinite(value))
        return "-";
    std::array<char, 64> text;
    const double size = std::abs(value);
    const bool is_plain = value == 0 || (size >= 1e-6 && size < 1e15);
    const auto written =
        is_plain ? std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed)
                 : std::to_chars(text.data(), text.data() + text.size(), value);
    return {text.data(), written.ptr};
}

std::string percent_text(double percent) {
    return fixed_text(percent, decimals_for(percent, 2)) + (std::isfinite(percent) ? "%" : "");
}

std::string time_text(double nanoseconds) {
    return time_of_digits(nanoseconds, 3);
}

std::string short_time_text(double nanoseconds) {
    return time_of_digits(nanoseconds, 2);
}

} // namespace zan::profile
