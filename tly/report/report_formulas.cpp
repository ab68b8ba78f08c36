// SPDX-License-Identifier: Apache-2.0
#include "report_formulas.h"

#include <bit>
#include <cmath>
#include <cstdint>

#include "wrapping.h"

namespace {

// std::ceil without a call for usual numbers: it is a tenth of what a report's metrics take.
float rounded_up(float value) {
    constexpr float whole = 0x1p23F; // from here on all floats are
    // A negative zero stays one, so bits are compared.
    if (std::bit_cast<std::uint32_t>(value) >= std::bit_cast<std::uint32_t>(whole))
        return std::ceil(value);
    const auto truncated_value = static_cast<float>(static_cast<int>(value));
    return truncated_value + (truncated_value < value ? 1.0f : 0.0f);
}

} // namespace

float megabytes_per_second(float bytes, float seconds) {
    return rounded_up(bytes / seconds / 100000.0f) / 10.0f;
}

float average_channel_depth(long long total_fill, long long requests, long long stalls) {
    const long long cycles = wrapping_sum(requests, stalls);
    if (cycles == 0)
        return 0.0f;
    return rounded_up(static_cast<float>(total_fill) / static_cast<float>(cycles) * 100.0f) / 100.0f;
}
