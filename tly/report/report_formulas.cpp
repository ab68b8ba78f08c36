#include "report_formulas.h"

#include <cmath>

#include "wrapping.h"

float megabytesPerSecond(float bytes, float seconds) {
    return std::ceil(bytes / seconds / 100000.0f) / 10.0f;
}

float averageChannelDepth(long long totalFill, long long requests, long long stalls) {
    const long long cycles = wrappingSum(requests, stalls);
    if (cycles == 0)
        return 0.0f;
    return std::ceil(static_cast<float>(totalFill) / static_cast<float>(cycles) * 100.0f) / 100.0f;
}
