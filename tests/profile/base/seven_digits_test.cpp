// SPDX-License-Identifier: Apache-2.0
#include "seven_digits.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <random>

#include "report_numbers.h"

using namespace zan::profile;

namespace {

// What the report's text of a number is read as.
float read_back(float value) {
    const std::string text = report_text(value);
    float number = 0.0f;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

TEST(SevenDigits, AreThoseOfTheReport) {
    EXPECT_EQ(with_seven_digits(6.0f / 7.0f), 0.8571429f);
    EXPECT_EQ(with_seven_digits(12533.4f), 12533.4f);
    EXPECT_EQ(with_seven_digits(0.0f), 0.0f);
    EXPECT_EQ(with_seven_digits(-1.0f / 3.0f), -0.3333333f);
    EXPECT_TRUE(std::isnan(with_seven_digits(NAN)));
    EXPECT_EQ(with_seven_digits(INFINITY), INFINITY);
}

TEST(SevenDigits, AreThoseOfTheReportOfAnyNumber) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> exponent(-4.9, 8.9);
    for (int i = 0; i < 100'000; ++i) {
        const auto value = static_cast<float>(std::pow(10.0, exponent(random)));
        ASSERT_EQ(with_seven_digits(value), read_back(value)) << report_text(value);
    }
}

TEST(SevenDigits, AreRoundedOnce) {
    std::mt19937 random(4);
    for (int i = 0; i < 100'000; ++i) {
        const float value = with_seven_digits(static_cast<float>(random()) / 3e6f);
        ASSERT_EQ(with_seven_digits(value), value);
    }
}

} // namespace
