// SPDX-License-Identifier: Apache-2.0
#include "timeline.h"

#include <gtest/gtest.h>

using namespace zan::profile;

namespace {

using Spans = std::vector<TimeSpan>;

TEST(Timeline, JoinsSpansThatOverlapOrTouch) {
    EXPECT_EQ(union_of({{5, 8}, {0, 2}, {2, 3}, {6, 7}, {9, 9}}), (Spans{{0, 3}, {5, 8}}));
    EXPECT_EQ(union_of({{5, 8}, {0, 3}}, 2.5), (Spans{{0, 8}})); // 2 between them
    EXPECT_EQ(total_time(Spans{{0, 3}, {5, 8}}), 6.0);
}

TEST(Timeline, IntersectsTwoSeries) {
    EXPECT_EQ(intersection_of(Spans{{0, 10}, {20, 30}}, Spans{{5, 7}, {8, 25}, {30, 40}}),
              (Spans{{5, 7}, {8, 10}, {20, 25}}));
    EXPECT_EQ(intersection_of(Spans{{0, 10}}, Spans{}), Spans{});
}

TEST(Timeline, CoversBinsInPart) {
    const TimeBins bins = covered_bins(Spans{{1, 6}}, 2);
    EXPECT_EQ(bins.at(0), 3.0);
    EXPECT_EQ(bins.at(1), 2.0);
    EXPECT_EQ(covered_bins(Spans{{5, 5}}, 2).total(), 0.0);
    EXPECT_TRUE(covered_bins(Spans{}, 2).empty());
}

// From 1 to 6 and from 9 to 10, in bins of width 4, of width 1, and again of width 4.
TEST(Timeline, CoversBinsOfAnyWidth) {
    const Spans spans = {{1, 6}, {9, 10}};
    CoveredBins covered(spans);
    for (const int shift : {2, 0, 2, 2}) {
        const TimeBins& bins = covered.of(shift);
        EXPECT_EQ(bins.shift(), shift);
        EXPECT_EQ(bins.at(1), shift == 2 ? 2.0 : 1.0); // 4 to 6, or 1 to 2
        EXPECT_EQ(bins.at(2), 1.0);                    // 9 to 10, or 2 to 3
        EXPECT_EQ(bins.at(9), shift == 2 ? 0.0 : 1.0);
        EXPECT_EQ(covered.total(), 6.0);
    }
    CoveredBins none({});
    EXPECT_TRUE(none.of(0).empty());
    EXPECT_EQ(none.total(), 0.0);
}

// A runs from 0 to 10 and from 20 to 25, B from 5 to 15.
TEST(Timeline, WalksThroughWhatRunsWhen) {
    const std::vector<Spans> series = {{{0, 10}, {20, 25}}, {{5, 15}}};
    std::vector<std::tuple<std::int64_t, std::int64_t, std::size_t>> pieces;
    double alone[2] = {};
    walk_timeline(series, [&](const TimelinePiece& piece) {
        pieces.emplace_back(piece.time.begin, piece.time.end, piece.num_running);
        if (piece.num_running == 1)
            alone[piece.only] += time_between(piece.time.begin, piece.time.end);
    });
    EXPECT_EQ(pieces, (std::vector<std::tuple<std::int64_t, std::int64_t, std::size_t>>{
                          {0, 5, 1}, {5, 10, 2}, {10, 15, 1}, {20, 25, 1}}));
    EXPECT_EQ(alone[0], 10.0);
    EXPECT_EQ(alone[1], 5.0);
}

TEST(Timeline, KnowsTheIdleTimesBetween) {
    const Spans busy = {{10, 20}, {25, 30}, {40, 50}};
    const IdleTimes idle(busy);
    EXPECT_EQ(idle.between(10, 50), 15.0);
    EXPECT_EQ(idle.between(10, 30), 5.0);
    EXPECT_EQ(idle.between(25, 35), 5.0); // half of what is between 30 and 40
    EXPECT_EQ(idle.between(0, 20), 0.0);
    EXPECT_EQ(idle.between(45, 90), 0.0);
    EXPECT_EQ(idle.between(5, 5), 0.0);
}

} // namespace
