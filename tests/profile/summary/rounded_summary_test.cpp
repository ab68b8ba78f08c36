// SPDX-License-Identifier: Apache-2.0
#include "rounded_summary.h"

#include <limits>

#include "gtest/gtest.h"

using namespace zan::profile;

TEST(RoundedSummary, NumbersHaveFiveDigits) {
    EXPECT_EQ(rounded_value(1.0 / 3), 0.33333);
    EXPECT_EQ(rounded_value(88.69565414345783), 88.696);
    EXPECT_EQ(rounded_value(88.69565284770468), 88.696);
    EXPECT_EQ(rounded_value(-1234567.5), -1234600.0);
    EXPECT_EQ(rounded_value(1.5e-310), 1.5e-310);
}

TEST(RoundedSummary, WholeNumbersStay) {
    EXPECT_EQ(rounded_value(0), 0);
    EXPECT_EQ(rounded_value(306123457), 306123457);
    EXPECT_EQ(rounded_value(std::numeric_limits<double>::max()), std::numeric_limits<double>::max());
    EXPECT_EQ(rounded_value(std::numeric_limits<double>::infinity()),
              std::numeric_limits<double>::infinity());
}

TEST(RoundedSummary, AllMembersAreRounded) {
    ProfileSummary summary;
    summary.clock_mhz = 1.0 / 3;
    summary.metrics[Metric::span] = 1.0 / 3;
    summary.transfers.push_back({".reprogram", 0, 1, 1.0 / 3, 1.0 / 3, 1.0 / 3});
    KernelSummary kernel;
    kernel.gaps = 1.0 / 3;
    BlockSummary block;
    block.stalled_from = block.own_share = block.metrics[Metric::stall] = 1.0 / 3;
    kernel.blocks.push_back(block);
    summary.kernels.push_back(kernel);
    round_values(summary);
    EXPECT_EQ(summary.clock_mhz, 0.33333);
    EXPECT_EQ(summary.metrics[Metric::span], 0.33333);
    EXPECT_EQ(summary.transfers[0].total, 0.33333);
    EXPECT_EQ(summary.transfers[0].busy, 0.33333);
    EXPECT_EQ(summary.kernels[0].gaps, 0.33333);
    const BlockSummary& rounded = summary.kernels[0].blocks[0];
    EXPECT_EQ(rounded.stalled_from, 0.33333);
    EXPECT_EQ(rounded.own_share, 0.33333);
    EXPECT_EQ(rounded.metrics[Metric::stall], 0.33333);
    EXPECT_EQ(rounded.metrics[Metric::valid], Value());
}
