// SPDX-License-Identifier: Apache-2.0
// A float has 24 bits, and 10^12 is 5^12 · 2^12 with 28: their product is exact in a double, and is rounded
// as the text is, halves to even.
#include "seven_digits.h"

#include <cmath>
#include <iterator>

namespace zan::profile {

namespace {

// Powers of ten from 10^-5, where the scale is 10^11, to 10^8.
constexpr double decades[] = {1e-5, 1e-4, 1e-3, 1e-2, 1e-1, 1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};
constexpr double scales[] = {1e11, 1e10, 1e9, 1e8, 1e7, 1e6, 1e5, 1e4, 1e3, 1e2, 1e1, 1e0};

} // namespace

float with_seven_digits(float value) {
    const double number = static_cast<double>(value);
    const double size = std::fabs(number);
    if (number == std::nearbyint(number) && size < 1e7) // most values are whole
        return value;
    if (!(size >= decades[0] && size < decades[std::size(decades) - 1]))
        return value;
    std::size_t decade = size < 1.0 ? 0 : 5;
    while (size >= decades[decade + 1])
        ++decade;
    if (decade < std::size(scales))
        return static_cast<float>(std::nearbyint(number * scales[decade]) / scales[decade]);
    const double unit = decades[decade - 6]; // above 7 digits: whole tens or hundreds
    return static_cast<float>(std::nearbyint(number / unit) * unit);
}

} // namespace zan::profile
