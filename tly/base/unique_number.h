// SPDX-License-Identifier: Apache-2.0
// Numbers that are given once.
#pragma once

#include <atomic>
#include <cstdint>

// A number above 0 that nothing else in the process has or had.
inline std::uint64_t unique_number() {
    static std::atomic<std::uint64_t> last = 0;
    return last.fetch_add(1, std::memory_order_relaxed) + 1;
}
