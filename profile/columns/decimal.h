// SPDX-License-Identifier: Apache-2.0
// Numbers of the report in whole units of a power of ten, without any loss.
#pragma once

#include <cstdint>

namespace zan::profile {

// Units stay at or below that, also when they get more decimals.
inline constexpr std::int64_t most_units = 9'000'000'000'000'000'000;

// units · 10^-digits
struct Decimal {
    std::int64_t units = 0;
    int digits = 0;
    bool operator==(const Decimal&) const = default;
};

// More decimals than that are rounded off, away from zero at a half.
inline constexpr int max_decimals = 9;

// What the report's text of a finite number says. A number of more than 18 digits before the point becomes
// 9 · 10^18, with its sign.
Decimal decimal_of(float value);

// Modulo 2^64: times of a hostile report may be as far apart as numbers can be.
inline std::int64_t wrapped_sum(std::int64_t a, std::int64_t b) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) + static_cast<std::uint64_t>(b));
}
inline std::int64_t wrapped_difference(std::int64_t a, std::int64_t b) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) - static_cast<std::uint64_t>(b));
}

// 10^exponent for 0 to 18.
std::int64_t power_of_ten(int exponent);

} // namespace zan::profile
