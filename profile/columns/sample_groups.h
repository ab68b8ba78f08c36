// SPDX-License-Identifier: Apache-2.0
// Which samples of a kernel stay in a page, and how many of them become one.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

namespace zan::profile {

// The samples of an invocation; those from `keep_begin` to before `keep_end` stay.
struct InvocationPart {
    std::uint64_t begin = 0;
    std::uint64_t keep_begin = 0;
    std::uint64_t keep_end = 0;
};

// Samples that become one. Those that are left out before the first one that stays become one without values,
// which says when the first one begins.
struct SampleGroup {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
    bool is_left_out = false;
};

// Calls `take` with each group of an invocation; `size` is that of all groups but the last one.
template <typename Take>
void for_each_group(const InvocationPart& part, std::uint64_t size, Take take) {
    if (part.keep_begin >= part.keep_end)
        return;
    if (part.begin < part.keep_begin)
        take(SampleGroup{part.begin, part.keep_begin, true});
    for (std::uint64_t begin = part.keep_begin; begin < part.keep_end; begin += size)
        take(SampleGroup{begin, std::min(begin + size, part.keep_end), false});
}

// How many groups there are.
inline std::uint64_t num_groups(const std::vector<InvocationPart>& parts, std::uint64_t size) {
    std::uint64_t count = 0;
    for (const InvocationPart& part : parts) {
        if (part.keep_begin < part.keep_end)
            count +=
                (part.begin < part.keep_begin ? 1 : 0) + (part.keep_end - part.keep_begin + size - 1) / size;
    }
    return count;
}

} // namespace zan::profile
