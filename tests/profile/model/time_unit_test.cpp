// SPDX-License-Identifier: Apache-2.0
#include "time_unit.h"

#include <gtest/gtest.h>

using namespace zan::profile;

namespace {

TEST(TimeUnit, TheClockIsANumberAboveZero) {
    EXPECT_EQ(clock_of("250.0"), 250.0);
    EXPECT_EQ(clock_of(" 300 "), 300.0);
    EXPECT_EQ(clock_of("0.0"), std::nullopt);
    EXPECT_EQ(clock_of("fast"), std::nullopt);
    EXPECT_EQ(clock_of("250 MHz"), std::nullopt);
    EXPECT_EQ(clock_of(""), std::nullopt);
    EXPECT_EQ(clock_of("inf"), std::nullopt);
    EXPECT_EQ(clock_of("-1"), std::nullopt);
}

// 500 cycles at 250 MHz are 2000 ns.
TEST(TimeUnit, IsThePowerOfTenThatFitsTheCycles) {
    EXPECT_EQ(find_time_unit(500, 2000, 250.0, {}).nanoseconds, 1.0);
    EXPECT_EQ(find_time_unit(500, 2, 250.0, {}).nanoseconds, 1000.0);
    EXPECT_DOUBLE_EQ(*find_time_unit(500, 2'000'000, 250.0, {}).nanoseconds, 0.001);
}

TEST(TimeUnit, IsKnownWithin20Percent) {
    const TimeUnit unit = find_time_unit(590, 2000, 250.0, {}); // 2360 ns: 18% more
    EXPECT_EQ(unit.nanoseconds, 1.0);
    EXPECT_NEAR(*unit.deviation, 0.18, 1e-12);
    EXPECT_EQ(find_time_unit(610, 2000, 250.0, {}).nanoseconds, std::nullopt); // 22% more
    EXPECT_EQ(find_time_unit(390, 2000, 250.0, {}).nanoseconds, std::nullopt); // 22% less
}

TEST(TimeUnit, IsWhatTheUserSays) {
    const TimeUnit unit = find_time_unit(500, 2000, 250.0, 1000.0);
    EXPECT_EQ(unit.nanoseconds, 1000.0);
    EXPECT_NEAR(*unit.deviation, 0.999, 1e-12);
    EXPECT_EQ(find_time_unit(0, 0, std::nullopt, 10.0).nanoseconds, 10.0);
}

TEST(TimeUnit, IsUnknownWithoutClockOrCycles) {
    EXPECT_EQ(find_time_unit(500, 2000, std::nullopt, {}).nanoseconds, std::nullopt);
    EXPECT_EQ(find_time_unit(0, 2000, 250.0, {}).nanoseconds, std::nullopt);
    EXPECT_EQ(find_time_unit(500, 0, 250.0, {}).nanoseconds, std::nullopt);
}

} // namespace
