// SPDX-License-Identifier: Apache-2.0
#include "wrapping.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

TEST(WrappingSum, IsTheSumWhereItFits) {
    EXPECT_EQ(wrapping_sum(0, 0), 0);
    EXPECT_EQ(wrapping_sum(-5, 3), -2);
    EXPECT_EQ(wrapping_sum(LLONG_MAX, LLONG_MIN), -1);
}

TEST(WrappingSum, GoesOnAtTheOtherEndOfTheRange) {
    EXPECT_EQ(wrapping_sum(LLONG_MAX, 1), LLONG_MIN);
    EXPECT_EQ(wrapping_sum(LLONG_MIN, -1), LLONG_MAX);
    EXPECT_EQ(wrapping_sum(LLONG_MAX, LLONG_MAX), -2); // 2^64 - 2
    EXPECT_EQ(wrapping_sum(LLONG_MIN, LLONG_MIN), 0);  // -2^64
}

TEST(WrappingSum, IsKnownToTheCompiler) {
    static_assert(wrapping_sum(LLONG_MAX, 2) == LLONG_MIN + 1);
}

} // namespace
