// SPDX-License-Identifier: Apache-2.0
// Stretches of time on as few tracks as it takes for none to overlap another one of its track.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "timeline.h"

namespace zan::profile {

// A stretch by its place in the list.
struct LaneSlice {
    std::size_t lane = 0; // from 0
    std::size_t place = 0;
    bool operator==(const LaneSlice&) const = default;
};

// All stretches, by their begins. Each is on the first lane that is free then.
std::vector<LaneSlice> slice_lanes(std::span<const TimeSpan> spans);

} // namespace zan::profile
