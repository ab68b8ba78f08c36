// SPDX-License-Identifier: Apache-2.0
// The formulas, at values where another precision would show in the report.
#include "report_formulas.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>

#include "report_numbers.h"

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();

TEST(ReportFormulas, TruncationGoesTowardsZero) {
    EXPECT_EQ(truncated(2.9), 2);
    EXPECT_EQ(truncated(-2.9), -2);
    EXPECT_EQ(truncated(-0.5), 0);
}

TEST(ReportFormulas, WhatLongLongCannotHoldIsTheSmallest) {
    for (const double value : {HUGE_VAL, -HUGE_VAL, std::nan(""), 1e300, -1e300, 9223372036854775808.0})
        EXPECT_EQ(truncated(value), LLONG_MIN);
    EXPECT_EQ(truncated(-9223372036854775808.0), LLONG_MIN); // -2^63 itself fits
    EXPECT_EQ(truncated(9223372036854774784.0),
              9223372036854774784LL); // 2^63 - 1024, the greatest double below
}

// 300 MHz is 0.3 GHz, as a float 0.30000001192. In double 3 / 0.30000001192 is 9.9999996, so 9; in float it
// would be rounded to 10.
TEST(ReportFormulas, NanosecondsAreDividedInDouble) {
    EXPECT_EQ(cycles_to_nanoseconds(3, 300.0f), 9);
}

TEST(ReportFormulas, AClockOfZeroMakesTheSmallestTime) {
    EXPECT_EQ(cycles_to_nanoseconds(5, 0.0f), LLONG_MIN);
    EXPECT_EQ(cycles_to_nanoseconds(-5, 0.0f), LLONG_MIN);
    EXPECT_EQ(cycles_to_nanoseconds(0, 0.0f), LLONG_MIN); // 0 / 0
    EXPECT_EQ(cycles_to_nanoseconds(0, 240.0f), 0);
}

// A millisecond is 1e-9f * 1e6f = 0.00099999993 as a float. 10000 bytes in it are 10000001 bytes a second,
// and 100.00001 units of 100000, rounded up 101: 10.1. In double it would be 100 units: 10.
TEST(ReportFormulas, BandwidthIsWorkedOutInFloat) {
    EXPECT_EQ(report_text(megabytes_per_second(10000.0f, nanoseconds_to_seconds(1000000))), "10.1");
}

TEST(ReportFormulas, BandwidthIsRoundedUpAtOneDecimal) {
    EXPECT_EQ(megabytes_per_second(100001.0f, 1.0f), 0.2f);
    EXPECT_EQ(megabytes_per_second(100000.0f, 1.0f), 0.1f);
    EXPECT_EQ(megabytes_per_second(1.0f, 1.0f), 0.1f);
    EXPECT_EQ(megabytes_per_second(0.0f, 1.0f), 0.0f);
}

TEST(ReportFormulas, SmallNegativeBandwidthsRoundUpToNegativeZero) {
    EXPECT_EQ(report_text(megabytes_per_second(-1.0f, 1.0f)), "-0");
    EXPECT_EQ(report_text(megabytes_per_second(64.0f, nanoseconds_to_seconds(LLONG_MIN))), "-0");
    EXPECT_EQ(report_text(megabytes_per_second(0.0f, -1.0f)), "-0");
    EXPECT_EQ(report_text(megabytes_per_second(-100001.0f, 1.0f)), "-0.1"); // -1.00001 rounds up to -1
}

TEST(ReportFormulas, NoTimeMakesAnInfinity) {
    EXPECT_EQ(megabytes_per_second(64.0f, 0.0f), infinity);
    EXPECT_EQ(report_text(megabytes_per_second(-64.0f, 0.0f)), "-inf");
}

// In float 7 / 100 is 0.0700000003 and times 100 is 7: 0.07. In double 0.07 * 100 is 7.000000000000001,
// rounded up 8.
TEST(ReportFormulas, ChannelDepthIsWorkedOutInFloat) {
    EXPECT_EQ(report_text(average_channel_depth(7, 60, 40)), "0.07");
}

TEST(ReportFormulas, ChannelDepthIsRoundedUpAtTwoDecimals) {
    EXPECT_EQ(report_text(average_channel_depth(1, 2, 1)), "0.34"); // 0.333
    EXPECT_EQ(report_text(average_channel_depth(10, 3, 1)), "2.5");
    EXPECT_EQ(report_text(average_channel_depth(-1, 2, 1)), "-0.33"); // -33.3 rounds up to -33
}

TEST(ReportFormulas, ChannelDepthWithoutCyclesIsZero) {
    EXPECT_EQ(report_text(average_channel_depth(5, 0, 0)), "0");
    EXPECT_EQ(report_text(average_channel_depth(5, -3, 3)), "0");
}

TEST(ReportFormulas, TheCyclesOfAChannelWrap) {
    // 2^63 - 1 + 1 wraps to -2^63: 2^62 / -2^63 = -0.5.
    EXPECT_EQ(average_channel_depth(1LL << 62, LLONG_MAX, 1), -0.5f);
}

} // namespace
