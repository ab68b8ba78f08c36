// SPDX-License-Identifier: Apache-2.0
#include "timed_amounts.h"

#include <gtest/gtest.h>

#include <vector>

using namespace zan::profile;

namespace {

std::vector<double> values_of(const TimeBins& bins) {
    return {bins.values().begin(), bins.values().end()};
}

TEST(TimedAmounts, AreEvenInTheTimeOfEachSample) {
    TimedAmounts amounts;
    EXPECT_TRUE(amounts.empty());
    amounts.add_sample(10, 14, 8.0);
    amounts.add_sample(12, 13, 1.0);
    amounts.add_sample(15, 15, 5.0);
    EXPECT_FALSE(amounts.empty());
    EXPECT_EQ(amounts.total(), 14.0);
    const TimeBins bins = amounts.bins();
    EXPECT_EQ(bins.first(), 10);
    EXPECT_EQ(values_of(bins), (std::vector<double>{2.0, 2.0, 3.0, 2.0, 0.0, 5.0}));
    EXPECT_EQ(values_of(amounts.bins()), values_of(bins));
}

TEST(TimedAmounts, OfNothingHaveNoBins) {
    const TimedAmounts amounts;
    EXPECT_TRUE(amounts.bins().empty());
    EXPECT_EQ(amounts.total(), 0.0);
}

// 16 bins: four samples are held as they are, the fifth one makes bins. Samples of 4 units of time with 4
// times their number: 5 samples take 20 units, which are 10 bins of width 2, and with the sixth one 12.
TEST(TimedAmounts, AreTheSameInBinsWhenTheyGetMany) {
    TimedAmounts amounts(16);
    std::vector<double> expected;
    for (int i = 0; i < 6; ++i) {
        amounts.add_sample(4 * i, 4 * i + 4, 4.0 * i);
        expected.insert(expected.end(), 2, 2.0 * i);
        if (i < 4)
            continue;
        EXPECT_EQ(amounts.bins().shift(), 1);
        EXPECT_EQ(values_of(amounts.bins()), expected);
    }
    EXPECT_EQ(amounts.total(), 60.0);
    EXPECT_FALSE(amounts.empty());
}

// 20,000 units of time need 15 bits, 6 more than the 9 of the first sample's bins.
TEST(TimedAmounts, BeginAtAWidthThatFitsTheFirstSample) {
    TimedAmounts amounts;
    amounts.add_sample(0, 20'000, 1.0);
    amounts.add_sample(20'000, 20'001, 1.0);
    EXPECT_EQ(amounts.bins().shift(), 6);
}

// 100 samples of one unit of time: 8 bins of 16 would do for 128, and 7 are covered.
TEST(TimedAmounts, KeepTheSumWhenTheirBinsGetFewer) {
    for (const std::size_t num_before : {64U, 65'536U}) { // bins; more samples than may be held, and fewer
        TimedAmounts amounts(num_before);
        for (int i = 0; i < 100; ++i)
            amounts.add_sample(i, i + 1, i);
        amounts.limit(8);
        const TimeBins bins = amounts.bins();
        EXPECT_EQ(bins.shift(), 4);
        EXPECT_EQ(bins.values().size(), 7U);
        EXPECT_EQ(bins.at(0), 120.0); // 0 to 15
        EXPECT_EQ(bins.at(6), 390.0); // 96 to 99
        EXPECT_EQ(bins.total(), 4950.0);
        EXPECT_EQ(amounts.total(), 4950.0);
    }
}

// A limit alone, without a further sample, makes bins of two samples, which is one more than 4 bins may hold.
TEST(TimedAmounts, GoOnInBinsAfterALimit) {
    TimedAmounts amounts;
    amounts.add_sample(0, 1, 3.0);
    amounts.add_sample(1, 2, 4.0);
    amounts.limit(4);
    amounts.add_sample(7, 8, 5.0); // eight units of time in four bins
    EXPECT_EQ(values_of(amounts.bins()), (std::vector<double>{7.0, 0.0, 0.0, 5.0}));
}

// Two bins are fewer than one sample would take.
TEST(TimedAmounts, AreInBinsFromTheFirstIfTheseAreFew) {
    TimedAmounts amounts(2);
    amounts.add_sample(0, 1, 3.0);
    amounts.add_sample(1, 2, 4.0);
    EXPECT_EQ(values_of(amounts.bins()), (std::vector<double>{3.0, 4.0}));
}

TEST(TimedAmounts, TakeTimesThatGoBackwards) {
    TimedAmounts amounts;
    amounts.add_sample(6, 8, 2.0);
    amounts.add_sample(2, 4, 6.0);
    amounts.add_sample(9, 1, 4.0); // ends before it begins: all of it is at the end
    const TimeBins bins = amounts.bins();
    EXPECT_EQ(bins.first(), 0); // room for as many as there were: two
    EXPECT_EQ(values_of(bins), (std::vector<double>{0.0, 4.0, 3.0, 3.0, 0.0, 0.0, 1.0, 1.0}));
}

} // namespace
