// SPDX-License-Identifier: Apache-2.0
#include "trend.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace zan::profile;

TrendVerdict verdict(const std::vector<double>& values, double percent, Better better = Better::less) {
    return judge(statistics_of(values), better, percent);
}

// Sorted: 4.29, 4.30, 4.30, 4.31, 4.32. Distances from 4.30: 0, 0, 0.01, 0.01, 0.02.
TEST(Trend, HasTheMedianOfTheRunsBeforeAndTheirMedianDistance) {
    const auto statistics = statistics_of(std::vector{4.29, 4.31, 4.30, 4.32, 4.30, 5.07});
    ASSERT_TRUE(statistics);
    EXPECT_EQ(statistics->num_before, 5u);
    EXPECT_EQ(statistics->newest, 5.07);
    EXPECT_EQ(statistics->median, 4.30);
    EXPECT_NEAR(statistics->deviation, 0.01, 1e-12);
    EXPECT_FALSE(statistics_of(std::vector{1.0}));
    EXPECT_FALSE(statistics_of(std::vector<double>()));
}

// Of an even number of values the median is the lower one of the two in the middle, as all medians are here.
TEST(Trend, TheMedianIsOneOfTheValues) {
    const auto statistics = statistics_of(std::vector{1.0, 2.0, 4.0, 8.0, 0.0});
    ASSERT_TRUE(statistics);
    EXPECT_EQ(statistics->median, 2);
    EXPECT_EQ(statistics->deviation, 1); // of 1, 0, 2, 6
}

TEST(Trend, FailsBeyondBothLimitsOnly) {
    const std::vector<double> calm = {100, 101, 99, 100,
                                      100}; // median 100, distances 0, 1, 1, 0, 0: deviation 0
    const std::vector<double> wild = {100, 110, 90, 120, 80}; // median 100, distances 0, 10, 10, 20, 20: 10
    const auto with = [](std::vector<double> values, double newest) {
        values.push_back(newest);
        return values;
    };
    EXPECT_EQ(verdict(with(calm, 105), 5), TrendVerdict::holds) << "not more than 5%";
    EXPECT_EQ(verdict(with(calm, 105.1), 5), TrendVerdict::fails);
    EXPECT_EQ(verdict(with(calm, 50), 5), TrendVerdict::holds) << "less is better";
    EXPECT_EQ(verdict(with(wild, 130), 5), TrendVerdict::holds) << "three deviations";
    EXPECT_EQ(verdict(with(wild, 131), 5), TrendVerdict::fails);
    EXPECT_EQ(verdict(with(wild, 131), 31), TrendVerdict::holds) << "31% of 100";
}

TEST(Trend, TheMetricSaysWhichWayIsWorse) {
    const std::vector<double> down = {100, 100, 100, 100, 100, 80};
    const std::vector<double> up = {100, 100, 100, 100, 100, 120};
    EXPECT_EQ(verdict(down, 5, Better::more), TrendVerdict::fails);
    EXPECT_EQ(verdict(up, 5, Better::more), TrendVerdict::holds);
    EXPECT_EQ(verdict(up, 5, Better::less), TrendVerdict::fails);
    EXPECT_EQ(verdict(up, 5, Better::neither), TrendVerdict::holds);
}

TEST(Trend, ARiseFromZeroFails) {
    EXPECT_EQ(verdict({0, 0, 0, 0, 0, 0.1}, 5), TrendVerdict::fails);
    EXPECT_EQ(verdict({0, 0, 0, 0, 0, 0}, 5), TrendVerdict::holds);
}

TEST(Trend, FourRunsBeforeAreTooFew) {
    EXPECT_EQ(verdict({1, 1, 1, 1, 9}, 5), TrendVerdict::too_few);
    EXPECT_EQ(verdict({1, 1, 1, 1, 1, 9}, 5), TrendVerdict::fails);
    EXPECT_EQ(verdict({}, 5), TrendVerdict::too_few);
}

TEST(Trend, ALimitIsAShareWithItsSign) {
    EXPECT_EQ(percent_of_limit("+5%"), 5);
    EXPECT_EQ(percent_of_limit("+0.5%"), 0.5);
    EXPECT_EQ(percent_of_limit("+0%"), 0);
    for (const char* const bad :
         {"", "5%", "-5%", "10%", "+5", "+10", "+%", "+-5%", "+5 %", "+nan%", "+inf%", "+1e999%", "+5%%"})
        EXPECT_EQ(percent_of_limit(bad), std::nullopt) << bad;
}

} // namespace
