// SPDX-License-Identifier: Apache-2.0
#include "time_bins.h"

#include <gtest/gtest.h>

#include <limits>

using namespace zan::profile;

namespace {

constexpr std::int64_t least_time = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t greatest_time = std::numeric_limits<std::int64_t>::max();

TEST(TimeBins, SpreadAnAmountEvenlyWhileTheirWidthIsOne) {
    TimeBins bins;
    bins.add(10, 14, 8.0);
    bins.add(12, 13, 1.0);
    EXPECT_EQ(bins.width(), 1.0);
    EXPECT_EQ(bins.first(), 10);
    EXPECT_EQ(bins.last(), 14);
    EXPECT_EQ(std::vector<double>(bins.values().begin(), bins.values().end()),
              (std::vector<double>{2.0, 2.0, 3.0, 2.0}));
    EXPECT_EQ(bins.at(9), 0.0);
    EXPECT_EQ(bins.at(14), 0.0);
}

TEST(TimeBins, DoubleTheirWidthAsTimeGrows) {
    TimeBins bins(4);
    bins.add(0, 4, 4.0);
    EXPECT_EQ(bins.shift(), 0);
    bins.add(4, 8, 8.0); // eight units of time in four bins
    EXPECT_EQ(bins.shift(), 1);
    EXPECT_EQ(std::vector<double>(bins.values().begin(), bins.values().end()),
              (std::vector<double>{2.0, 2.0, 4.0, 4.0}));
    EXPECT_EQ(bins.total(), 12.0);
}

// From 5 to 9 in bins of 4: three quarters in the bin of 4 to 8, a quarter in the next one.
TEST(TimeBins, SplitAnAmountWhereItCrossesWideBins) {
    TimeBins bins;
    bins.widen(2);
    bins.add(5, 9, 4.0);
    EXPECT_EQ(bins.at(1), 3.0);
    EXPECT_EQ(bins.at(2), 1.0);
}

// Bins of width 1 at -5 to 6 hold 1 to 12. In bins of width 2 the first one, of -6 and -5, holds 1 alone, as
// does that of width 4, of -8 to -5.
TEST(TimeBins, MergeFromTheMiddleOfAWiderBin) {
    TimeBins bins;
    for (int i = 0; i < 12; ++i)
        bins.add(i - 5, i - 4, i + 1.0);
    TimeBins twice = bins;
    twice.widen(1);
    EXPECT_EQ(twice.first(), -3);
    EXPECT_EQ(std::vector<double>(twice.values().begin(), twice.values().end()),
              (std::vector<double>{1.0, 5.0, 9.0, 13.0, 17.0, 21.0, 12.0}));
    bins.widen(2);
    EXPECT_EQ(bins.first(), -2);
    EXPECT_EQ(std::vector<double>(bins.values().begin(), bins.values().end()),
              (std::vector<double>{1.0, 14.0, 30.0, 33.0}));
}

TEST(TimeBins, TakeTimesThatGoBackwardsAndBelowZero) {
    TimeBins bins(1024);
    for (std::int64_t time = 500; time > -500; --time)
        bins.add(time - 1, time, 1.0);
    EXPECT_EQ(bins.total(), 1000.0);
    EXPECT_EQ(bins.at(-500), 1.0);
    EXPECT_EQ(bins.at(499), 1.0);
    EXPECT_EQ(bins.at(500), 0.0);
    EXPECT_EQ(bins.shift(), 0);
}

// 20,000 units of time need 15 bits, 6 more than the 9 of the first sample's bins.
TEST(TimeBins, BeginAtAWidthThatFitsTheFirstSample) {
    TimeBins bins;
    bins.add_sample(0, 20'000, 1.0);
    EXPECT_EQ(bins.shift(), 6);
    EXPECT_NEAR(bins.total(), 1.0, 1e-12);
    TimeBins narrow;
    narrow.add_sample(0, 500, 1.0);
    EXPECT_EQ(narrow.shift(), 0);
}

TEST(TimeBins, PutAnAmountWithoutLengthWhereItIs) {
    TimeBins bins;
    bins.add(7, 7, 3.0);
    bins.add(9, 2, 4.0); // a time that goes back
    EXPECT_EQ(bins.at(7), 3.0);
    EXPECT_EQ(bins.at(2), 4.0);
}

TEST(TimeBins, HoldTheWholeRangeOfTimes) {
    TimeBins bins(2);
    bins.add(least_time, least_time + 1, 1.0);
    bins.add(greatest_time - 1, greatest_time, 2.0);
    EXPECT_EQ(bins.at(-1), 1.0);
    EXPECT_EQ(bins.at(0), 2.0);
    bins.add(least_time, greatest_time, 2.0);
    EXPECT_NEAR(bins.total(), 5.0, 1e-9);
    EXPECT_NEAR(time_between(least_time, greatest_time), 18446744073709551615.0, 1.0);
    EXPECT_EQ(time_between(3, 2), 0.0);
}

TEST(TimeBins, KeepTheSumWhenTheyGetFewer) {
    TimeBins bins;
    for (int i = 0; i < 100; ++i)
        bins.add(i, i + 1, i);
    bins.limit(8);
    EXPECT_LE(bins.values().size(), 8U);
    EXPECT_EQ(bins.total(), 4950.0);
}

TEST(TimeBins, AddAnotherSeriesOfAnyWidth) {
    TimeBins narrow;
    narrow.add(0, 4, 4.0);
    TimeBins wide;
    wide.widen(1);
    wide.add(2, 6, 4.0);
    narrow.add(wide);
    EXPECT_EQ(narrow.shift(), 1);
    EXPECT_EQ(std::vector<double>(narrow.values().begin(), narrow.values().end()),
              (std::vector<double>{2.0, 4.0, 2.0}));
    TimeBins other;
    other.add(0, 1, 1.0);
    align(other, narrow);
    EXPECT_EQ(other.shift(), narrow.shift());
}

// Three series of a budget of 1,024 get 341 bins each, cut to a power of two.
TEST(TimeBins, ShareABudget) {
    EXPECT_EQ(bins_for_each(1024, 3), 256U);
    EXPECT_EQ(bins_for_each(std::size_t{1} << 30, 1), max_time_bins);
    EXPECT_EQ(bins_for_each(1024, 0), 1024U);
    EXPECT_EQ(bins_for_each(1024, 1'000'000), 64U);
}

// Bins may cover more than they have amounts in: everywhere, or at both ends.
TEST(TimeBins, TakeFromOthersOnlyWhatHasAmounts) {
    TimeBins other;
    other.cover(0, 99);
    TimeBins sum;
    sum.add(other);
    EXPECT_TRUE(sum.empty());
    other.add(40, 50, 10.0);
    sum.add(other);
    EXPECT_EQ(sum.first(), 40);
    EXPECT_EQ(sum.last(), 50);
    EXPECT_EQ(sum.total(), 10.0);
}

} // namespace
