// SPDX-License-Identifier: Apache-2.0
// Numbers from texts and texts from numbers, each rule on its own.
#pragma once

#include <climits>
#include <cmath>
#include <cstdio>
#include <optional>
#include <string>

namespace slow {

// The number at the start of a text: blanks, a sign, digits. What follows is skipped. Unset if there is
// none, or if it is out of range.
inline std::optional<long long> leading_number(const std::string& text, long long smallest,
                                               long long largest) {
    std::size_t i = 0;
    while (i < text.size() && std::string(" \t\n\v\f\r").find(text[i]) != std::string::npos)
        ++i;
    const bool negative = i < text.size() && text[i] == '-';
    if (i < text.size() && (text[i] == '-' || text[i] == '+'))
        ++i;
    const std::size_t first_digit = i;
    __extension__ __int128 value = 0;
    for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
        value = value * 10 + (text[i] - '0');
        if (value > (static_cast<decltype(value)>(1) << 100))
            return std::nullopt; // far out of range, and the next digits would overflow
    }
    value = negative ? -value : value;
    if (i == first_digit || value < smallest || value > largest)
        return std::nullopt;
    return static_cast<long long>(value);
}

inline std::optional<long long> to_int64(const std::string& text) {
    return leading_number(text, LLONG_MIN, LLONG_MAX);
}

inline std::optional<int> to_int(const std::string& text) {
    const auto value = leading_number(text, INT_MIN, INT_MAX);
    return value ? std::optional(static_cast<int>(*value)) : std::nullopt;
}

inline std::string float_text(float value) {
    char text[64];
    std::snprintf(text, sizeof text, "%.7g", static_cast<double>(value));
    return text;
}

// Sums of counters wrap.
inline long long sum(long long a, long long b) {
    return static_cast<long long>(static_cast<unsigned long long>(a) + static_cast<unsigned long long>(b));
}

// Towards zero. What fits no 64-bit number, a NaN too, becomes the smallest one.
inline long long truncated(double value) {
    const double limit = 9223372036854775808.0;
    if (std::isnan(value) || value >= limit || value < -limit)
        return LLONG_MIN;
    return static_cast<long long>(value);
}

// Up to the next whole number, then by 1/10 or 1/100 of it.
inline float rounded_up(float value, float parts) {
    return std::ceil(value) / parts;
}

} // namespace slow
