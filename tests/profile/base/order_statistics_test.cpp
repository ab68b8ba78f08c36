// SPDX-License-Identifier: Apache-2.0
#include "order_statistics.h"

#include <gtest/gtest.h>

#include <vector>

using namespace zan::profile;

namespace {

using Places = std::pair<std::size_t, std::size_t>;

TEST(OrderStatistics, TakeTheNearestRank) {
    const std::vector<double> four = {1.0, 2.0, 3.0, 4.0};
    EXPECT_EQ(quantile(four, 0.5), 2.0); // rank 2 of 4
    EXPECT_EQ(quantile(four, 0.95), 4.0);
    EXPECT_EQ(quantile(std::vector<double>{1.0, 2.0, 9.0}, 0.5), 2.0);
    EXPECT_EQ(quantile(std::vector<double>{7.0}, 0.95), 7.0);
    std::vector<double> twenty;
    for (int i = 1; i <= 20; ++i)
        twenty.push_back(i);
    EXPECT_EQ(quantile(twenty, 0.95), 19.0); // rank 19 of 20, as 0.95 · 20 is 19
    EXPECT_EQ(quantile(twenty, 0.0), 1.0);
}

// With B, how many of n values lie below the median: P(B = 0) is 3.1% for 5 and 1.6% for 6 values, so that
// the least and the greatest have to do; of 10 values P(B <= 1) = 11/1024 = 1.1% and P(B <= 2) = 56/1024
// = 5.5%.
TEST(OrderStatistics, AMedianLiesBetweenTwoOfTheValues) {
    EXPECT_EQ(median_interval(4), std::nullopt);
    EXPECT_EQ(median_interval(5), (Places{0, 4}));
    EXPECT_EQ(median_interval(6), (Places{0, 5}));
    EXPECT_EQ(median_interval(10), (Places{1, 8}));
}

// P(B <= 39) is 1.8% and P(B <= 40) 2.8% of 100 values, as tables of the sign test have it.
TEST(OrderStatistics, AMedianOfManyValuesIsSure) {
    EXPECT_EQ(median_interval(100), (Places{39, 60}));
    const Places exact = *median_interval(1000);
    const Places about = *median_interval(1001);
    EXPECT_LE(about.first, exact.first + 1);
    EXPECT_NEAR(static_cast<double>(about.first), static_cast<double>(exact.first), 3.0);
    EXPECT_EQ(about.first + about.second, 1000U);
}

} // namespace
