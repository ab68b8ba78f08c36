// SPDX-License-Identifier: Apache-2.0
#include "slice_lanes.h"

#include <gtest/gtest.h>

namespace {

using namespace zan::profile;

TEST(SliceLanes, StretchesThatTouchShareALane) {
    const TimeSpan spans[] = {{10, 20}, {0, 10}, {20, 30}};
    EXPECT_EQ(slice_lanes(spans), (std::vector<LaneSlice>{{0, 1}, {0, 0}, {0, 2}}));
}

// The second overlaps the first; the third begins when the second has ended.
TEST(SliceLanes, OverlapsTakeTheFirstFreeLane) {
    const TimeSpan spans[] = {{0, 100}, {10, 20}, {20, 30}, {25, 40}, {100, 110}};
    EXPECT_EQ(slice_lanes(spans), (std::vector<LaneSlice>{{0, 0}, {1, 1}, {1, 2}, {2, 3}, {0, 4}}));
    EXPECT_TRUE(slice_lanes({}).empty());
}

} // namespace
