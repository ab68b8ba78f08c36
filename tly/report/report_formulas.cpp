// SPDX-License-Identifier: Apache-2.0
#include "report_formulas.h"

#include <cmath>

#include "wrapping.h"

float megabytes_per_second(float bytes, float seconds) {
    return std::ceil(bytes / seconds / 100000.0f) / 10.0f;
}

float average_channel_depth(long long total_fill, long long requests, long long stalls) {
    const long long cycles = wrapping_sum(requests, stalls);
    if (cycles == 0)
        return 0.0f;
    return std::ceil(static_cast<float>(total_fill) / static_cast<float>(cycles) * 100.0f) / 100.0f;
}
