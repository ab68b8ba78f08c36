// SPDX-License-Identifier: Apache-2.0
#include "decimal.h"

#include <limits>

#include "gtest/gtest.h"

using namespace zan::profile;

TEST(Decimal, HasTheDigitsOfTheReport) {
    EXPECT_EQ(decimal_of(0.0f), (Decimal{0, 0}));
    EXPECT_EQ(decimal_of(12.5f), (Decimal{125, 1}));
    EXPECT_EQ(decimal_of(-0.25f), (Decimal{-25, 2}));
    EXPECT_EQ(decimal_of(999999.0f), (Decimal{999999, 0}));
    // 0.1f is 0.100000001490116...; seven digits of it are 0.1000000, which the report writes as 0.1.
    EXPECT_EQ(decimal_of(0.1f), (Decimal{1, 1}));
    // 1/3 is written as 0.3333333.
    EXPECT_EQ(decimal_of(1.0f / 3.0f), (Decimal{3333333, 7}));
}

TEST(Decimal, MultipliesByAnExponent) {
    // Written as 1.234568e+07.
    EXPECT_EQ(decimal_of(12345678.0f), (Decimal{12345680, 0}));
    EXPECT_EQ(decimal_of(1e18f), (Decimal{1'000'000'000'000'000'000, 0}));
    // 1.5e-05 has six decimals.
    EXPECT_EQ(decimal_of(1.5e-5f), (Decimal{15, 6}));
}

TEST(Decimal, RoundsWhatPassesNineDecimals) {
    // 1.25e-09 has eleven decimals; 0.00000000125 is 1.25 billionths.
    EXPECT_EQ(decimal_of(1.25e-9f), (Decimal{1, 9}));
    EXPECT_EQ(decimal_of(1.75e-9f), (Decimal{2, 9}));
    EXPECT_EQ(decimal_of(-1.75e-9f), (Decimal{-2, 9}));
    EXPECT_EQ(decimal_of(std::numeric_limits<float>::denorm_min()), (Decimal{0, 0}));
}

TEST(Decimal, StopsAtTheLargestNumberThatHasRoom) {
    EXPECT_EQ(decimal_of(std::numeric_limits<float>::max()), (Decimal{9'000'000'000'000'000'000, 0}));
    EXPECT_EQ(decimal_of(9.5e18f), (Decimal{9'000'000'000'000'000'000, 0}));
    EXPECT_EQ(decimal_of(-1e20f), (Decimal{-9'000'000'000'000'000'000, 0}));
}
