// SPDX-License-Identifier: Apache-2.0
#include "slice_lanes.h"

#include <algorithm>
#include <cstdint>
#include <tuple>

namespace zan::profile {

std::vector<LaneSlice> slice_lanes(std::span<const TimeSpan> spans) {
    std::vector<LaneSlice> slices(spans.size());
    for (std::size_t i = 0; i < spans.size(); ++i)
        slices[i].place = i;
    std::sort(slices.begin(), slices.end(), [&](const LaneSlice& a, const LaneSlice& b) {
        return std::tuple(spans[a.place].begin, a.place) < std::tuple(spans[b.place].begin, b.place);
    });
    std::vector<std::int64_t> ends; // of the lanes
    for (LaneSlice& slice : slices) {
        const TimeSpan& span = spans[slice.place];
        const auto free =
            std::find_if(ends.begin(), ends.end(), [&](std::int64_t end) { return end <= span.begin; });
        slice.lane = static_cast<std::size_t>(free - ends.begin());
        if (free == ends.end())
            ends.push_back(span.end);
        else
            *free = span.end;
    }
    return slices;
}

} // namespace zan::profile
