// SPDX-License-Identifier: Apache-2.0
// Sums of counter values.
#pragma once

// The sum modulo 2^64. Counters are read from a file, so a sum can leave the range of long long.
constexpr long long wrapping_sum(long long a, long long b) {
    return static_cast<long long>(static_cast<unsigned long long>(a) + static_cast<unsigned long long>(b));
}
