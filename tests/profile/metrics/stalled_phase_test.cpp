// SPDX-License-Identifier: Apache-2.0
#include "stalled_phase.h"

#include <gtest/gtest.h>

#include <vector>

using namespace zan::profile;

namespace {

std::optional<StalledPhase> phase_of(TimeBins stalls, const std::vector<TimeSpan>& spans) {
    CoveredBins ran(spans);
    return find_stalled_phase(stalls, ran);
}

// 100 units of time; of 30 stalls 20 are in the ten from 40 on.
TEST(StalledPhase, IsTheShortestStretchWithHalfOfTheStalls) {
    TimeBins stalls;
    stalls.add(0, 100, 10.0);
    stalls.add(40, 50, 20.0);
    const auto phase = phase_of(stalls, {{0, 100}});
    ASSERT_TRUE(phase);
    // 2.1 stalls in each of them: 15 take eight.
    EXPECT_EQ(phase->time.end - phase->time.begin, 8);
    EXPECT_GE(phase->time.begin, 40);
    EXPECT_LE(phase->time.end, 50);
    EXPECT_NEAR(phase->part, 0.08, 1e-12);
}

TEST(StalledPhase, OfEvenStallsIsHalfOfTheTime) {
    TimeBins stalls;
    stalls.add(1000, 1100, 50.0);
    const auto phase = phase_of(stalls, {{1000, 1100}});
    ASSERT_TRUE(phase);
    EXPECT_NEAR(phase->part, 0.5, 0.011);
}

// Between its invocations the kernel does not run: of its 20 units of time the stretch has 2.
TEST(StalledPhase, CountsTheTimeThatTheKernelRan) {
    TimeBins stalls;
    stalls.add(9, 10, 5.0);
    stalls.add(990, 991, 5.0);
    stalls.add(0, 1, 1.0);
    const auto phase = phase_of(stalls, {{0, 10}, {990, 1000}});
    ASSERT_TRUE(phase);
    EXPECT_EQ(phase->time, (TimeSpan{9, 991}));
    EXPECT_NEAR(phase->part, 0.1, 1e-12);
}

// Half of the stalls are at the beginning, half at the end.
TEST(StalledPhase, IsTheFirstOfThoseOfOneLength) {
    TimeBins stalls;
    stalls.add(0, 1, 5.0);
    stalls.add(90, 91, 5.0);
    const auto phase = phase_of(stalls, {{0, 100}});
    ASSERT_TRUE(phase);
    EXPECT_EQ(phase->time, (TimeSpan{0, 1}));
}

TEST(StalledPhase, IsNoneWithoutStalls) {
    EXPECT_FALSE(phase_of(TimeBins(), {{0, 10}}));
}

TEST(StalledPhase, IsNoneWithoutTime) {
    TimeBins stalls;
    stalls.add(0, 100, 10.0);
    EXPECT_FALSE(phase_of(stalls, {}));
    EXPECT_TRUE(phase_of(stalls, {{0, 100}}));
}

} // namespace
