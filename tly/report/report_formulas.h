// SPDX-License-Identifier: Apache-2.0
// Formulas of the report. Which steps are done in float and which in double is part of them: rounded values
// reach the report.
#pragma once

#include <limits>

// The number truncated towards zero; the smallest long long for NaN and for what long long can't hold.
inline long long truncated(double value) {
    constexpr double limit = 9223372036854775808.0; // 2^63
    if (!(value >= -limit && value < limit))
        return std::numeric_limits<long long>::min();
    return static_cast<long long>(value);
}

// The nanoseconds that `cycles` take at a clock of `fmax` MHz.
inline long long cycles_to_nanoseconds(long long cycles, float fmax) {
    const float gigahertz = fmax / 1000.0f;
    return truncated(static_cast<double>(cycles) / static_cast<double>(gigahertz));
}

inline float nanoseconds_to_seconds(long long nanoseconds) {
    return 1e-9f * static_cast<float>(nanoseconds);
}

// Megabytes a second, rounded up at one decimal.
float megabytes_per_second(float bytes, float seconds);

// The mean fill of a channel in each request or stall cycle, rounded up at two decimals; 0 without any such
// cycle.
float average_channel_depth(long long total_fill, long long requests, long long stalls);
