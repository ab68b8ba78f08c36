// SPDX-License-Identifier: Apache-2.0
#include "value_text.h"

#include <limits>

#include "gtest/gtest.h"

using namespace zan::profile;

namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();
constexpr double no_number = std::numeric_limits<double>::quiet_NaN();

} // namespace

TEST(ValueText, PercentHasADecimalBelowTen) {
    EXPECT_EQ(percent_text(9.4), "9.4%");
    EXPECT_EQ(percent_text(9.94), "9.9%");
    EXPECT_EQ(percent_text(9.96), "10%"); // would be "10.0%" with a decimal
    EXPECT_EQ(percent_text(61.2), "61%");
    EXPECT_EQ(percent_text(101.6), "102%");
    EXPECT_EQ(percent_text(0), "0.0%");
    EXPECT_EQ(percent_text(-3.21), "-3.2%");
}

TEST(ValueText, TimesHaveThreeDigitsAndTheUnitThatFits) {
    EXPECT_EQ(time_text(0), "0 ns");
    EXPECT_EQ(time_text(250), "250 ns");
    EXPECT_EQ(time_text(999.4), "999 ns");
    EXPECT_EQ(time_text(999.6), "1.00 us"); // 1000 ns
    EXPECT_EQ(time_text(1680), "1.68 us");
    EXPECT_EQ(time_text(8700), "8.70 us");
    EXPECT_EQ(time_text(9996), "10.0 us"); // "10.00" would be four digits
    EXPECT_EQ(time_text(39.5e6), "39.5 ms");
    EXPECT_EQ(time_text(999.96e6), "1.00 s");
    EXPECT_EQ(time_text(306e6), "306 ms");
    EXPECT_EQ(time_text(12345e9), "12,345 s");
    EXPECT_EQ(time_text(-1680), "-1.68 us");
}

TEST(ValueText, ShortTimesHaveTwoDigits) {
    EXPECT_EQ(short_time_text(3100), "3.1 us");
    EXPECT_EQ(short_time_text(8000), "8.0 us");
    EXPECT_EQ(short_time_text(9960), "10 us");
    EXPECT_EQ(short_time_text(123e3), "123 us");
}

TEST(ValueText, NumbersHaveThreeDigitsWithoutZerosAtTheEnd) {
    EXPECT_EQ(number_text(6.449), "6.45");
    EXPECT_EQ(number_text(4.0), "4");
    EXPECT_EQ(number_text(56.94), "56.9");
    EXPECT_EQ(number_text(999.4), "999");
    EXPECT_EQ(number_text(1234.5), "1,235");
    EXPECT_EQ(number_text(0), "0");
    EXPECT_EQ(number_text(0.9953), "0.995");
    EXPECT_EQ(number_text(0.9996), "1");
    EXPECT_EQ(number_text(0.1234), "0.123");
    EXPECT_EQ(number_text(0.09994), "0.0999");
    EXPECT_EQ(number_text(0.001234), "0.00123");
    EXPECT_EQ(number_text(1234567), "1,234,567");
    EXPECT_EQ(number_text(-1234), "-1,234");
}

TEST(ValueText, ExactNumbersHaveAllTheirDigits) {
    EXPECT_EQ(exact_text(100'000), "100000");
    EXPECT_EQ(exact_text(0), "0");
    EXPECT_EQ(exact_text(1.0 / 3), "0.3333333333333333");
    EXPECT_EQ(exact_text(0.00025), "0.00025");
    EXPECT_EQ(exact_text(999'999'999'999'999), "999999999999999");
    EXPECT_EQ(exact_text(1e15), "1e+15");
    EXPECT_EQ(exact_text(-1e-7), "-1e-07");
    EXPECT_EQ(exact_text(no_number), "-");
}

TEST(ValueText, HalfwayIsRoundedAwayFromZero) {
    EXPECT_EQ(fixed_text(0.5, 0), "1");
    EXPECT_EQ(fixed_text(2.5, 0), "3");
    EXPECT_EQ(fixed_text(-2.5, 0), "-3");
    EXPECT_EQ(fixed_text(0.25, 1), "0.3");
    EXPECT_EQ(fixed_text(0.125, 2), "0.13");
    EXPECT_EQ(fixed_text(1.15, 1), "1.1"); // the nearest double is 1.149999999999999911
    EXPECT_EQ(fixed_text(2.4999, 0), "2");
}

TEST(ValueText, TrimmedNumbersHaveNoZerosAtTheEnd) {
    EXPECT_EQ(trimmed_text(240.5, 2), "240.5");
    EXPECT_EQ(trimmed_text(250, 2), "250");
    EXPECT_EQ(trimmed_text(100, 0), "100");
}

TEST(ValueText, ANumberThatRoundsToZeroHasNoSign) {
    EXPECT_EQ(fixed_text(-0.01, 1), "0.0");
    EXPECT_EQ(fixed_text(-0.0, 0), "0");
}

TEST(ValueText, WhatIsNoNumberIsADash) {
    for (const double value : {infinite, -infinite, no_number}) {
        EXPECT_EQ(fixed_text(value, 2), "-");
        EXPECT_EQ(percent_text(value), "-");
        EXPECT_EQ(time_text(value), "-");
        EXPECT_EQ(number_text(value), "-");
        EXPECT_EQ(count_text(value), "-");
    }
}

TEST(ValueText, TheGreatestNumbersHaveRoom) {
    EXPECT_EQ(fixed_text(std::numeric_limits<double>::max(), 9).size(), 309u + 10u);
    EXPECT_EQ(fixed_text(std::numeric_limits<double>::lowest(), 9).size(), 310u + 10u);
    // 309 digits, and a comma for each three of them but the first: (309 - 1) / 3 = 102.
    EXPECT_EQ(count_text(std::numeric_limits<double>::max()).size(), 309u + 102u);
}
