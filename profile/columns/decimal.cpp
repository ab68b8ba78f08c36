// SPDX-License-Identifier: Apache-2.0
// The report writes seven digits at most, so that its texts fit with room to spare, but for large exponents.
#include "decimal.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string_view>

#include "report_numbers.h"

namespace zan::profile {

namespace {

constexpr auto make_powers() {
    std::array<std::int64_t, 19> result{};
    std::int64_t power = 1;
    for (std::size_t i = 0; i < result.size(); ++i) {
        result[i] = power;
        power = i + 1 < result.size() ? power * 10 : power;
    }
    return result;
}
constexpr auto powers = make_powers();

// A text of digits with at most one point, and an exponent: "1.234568e+07".
struct Scientific {
    std::int64_t digits = 0;
    int exponent = 0; // of ten, by which the digits are multiplied
};

Scientific parse(std::string_view text) {
    Scientific result;
    const std::size_t exponent_at = text.find('e');
    if (exponent_at != std::string_view::npos) {
        std::string_view exponent = text.substr(exponent_at + 1);
        if (exponent.starts_with('+'))
            exponent.remove_prefix(1);
        std::from_chars(exponent.data(), exponent.data() + exponent.size(), result.exponent);
    }
    bool after_point = false;
    for (const char c : text.substr(0, exponent_at)) {
        if (c == '.') {
            after_point = true;
            continue;
        }
        result.digits = result.digits * 10 + (c - '0');
        result.exponent -= after_point;
    }
    return result;
}

// The digits at `max_decimals` decimals or fewer.
Decimal shortened(const Scientific& number) {
    const int too_many = -number.exponent - max_decimals;
    if (too_many <= 0)
        return {number.digits, -number.exponent};
    if (too_many > 18)
        return {0, 0};
    const std::int64_t divisor = powers[static_cast<std::size_t>(too_many)];
    return {(number.digits + divisor / 2) / divisor, max_decimals};
}

} // namespace

std::int64_t power_of_ten(int exponent) {
    return powers[static_cast<std::size_t>(exponent)];
}

Decimal decimal_of(float value) {
    // Most numbers are small and whole.
    if (std::fabs(value) < 1e6f && value == std::trunc(value))
        return {static_cast<std::int64_t>(value), 0};
    char text[max_number_text];
    const std::string_view written(text, static_cast<std::size_t>(write_number(text, value) - text));
    const bool is_negative = written.starts_with('-');
    const Scientific number = parse(written.substr(is_negative ? 1 : 0));
    Decimal result;
    if (number.exponent <= 0)
        result = shortened(number);
    else if (number.exponent <= 18 && number.digits <= most_units / power_of_ten(number.exponent))
        result.units = number.digits * power_of_ten(number.exponent);
    else
        result.units = most_units;
    if (is_negative)
        result.units = -result.units;
    return result;
}

} // namespace zan::profile
