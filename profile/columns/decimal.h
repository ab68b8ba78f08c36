// Numbers of the report in whole units of a power of ten, without any loss.
#pragma once

#include <cstdint>

namespace zan::profile {

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

// 10^exponent for 0 to 18.
std::int64_t power_of_ten(int exponent);

} // namespace zan::profile
