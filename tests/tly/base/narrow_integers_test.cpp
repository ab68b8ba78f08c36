// SPDX-License-Identifier: Apache-2.0
#include "narrow_integers.h"

#include <gtest/gtest.h>

#include <array>
#include <type_traits>

namespace {

template <class T>
std::size_t bytes_for(T value) {
    return bytes_needed(&value, 1);
}

// Two's complement: n bytes hold -2^(8n - 1) to 2^(8n - 1) - 1.
TEST(NarrowIntegers, EachWidthEndsWhereTheNextOneBegins) {
    EXPECT_EQ(bytes_for(0LL), 1u);
    EXPECT_EQ(bytes_for(127LL), 1u);
    EXPECT_EQ(bytes_for(-128LL), 1u);
    EXPECT_EQ(bytes_for(128LL), 2u);
    EXPECT_EQ(bytes_for(-129LL), 2u);
    EXPECT_EQ(bytes_for(32'767LL), 2u);
    EXPECT_EQ(bytes_for(-32'768LL), 2u);
    EXPECT_EQ(bytes_for(32'768LL), 4u);
    EXPECT_EQ(bytes_for(-32'769LL), 4u);
    EXPECT_EQ(bytes_for(2'147'483'647LL), 4u);
    EXPECT_EQ(bytes_for(-2'147'483'648LL), 4u);
    EXPECT_EQ(bytes_for(2'147'483'648LL), 8u);
    EXPECT_EQ(bytes_for(-2'147'483'649LL), 8u);
    EXPECT_EQ(bytes_for(std::numeric_limits<long long>::max()), 8u);
    EXPECT_EQ(bytes_for(std::numeric_limits<long long>::min()), 8u);
    EXPECT_EQ(bytes_for(std::numeric_limits<int>::min()), 4u);
    EXPECT_EQ(bytes_for(-128), 1u);
}

TEST(NarrowIntegers, TheWidestOfAllCounts) {
    constexpr std::array values = {1LL, -300LL, 5LL}; // -300 takes two bytes
    EXPECT_EQ(bytes_needed(values.data(), 3), 2u);
    EXPECT_EQ(bytes_needed(values.data(), 1), 1u);
    EXPECT_EQ(bytes_needed(values.data(), 0), 1u);
}

TEST(NarrowIntegers, ThereIsATypeOfEachWidth) {
    for (const std::size_t width : {1u, 2u, 4u, 8u}) {
        with_integer_of(width, [&](auto zero) {
            EXPECT_TRUE(std::is_signed_v<decltype(zero)>);
            EXPECT_EQ(sizeof zero, width);
            EXPECT_EQ(zero, 0);
        });
    }
}

} // namespace
