// SPDX-License-Identifier: Apache-2.0
// The quick ways of writing numbers produce the same text as the general one.
#include "report_numbers.h"

#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <random>

namespace {

std::string general_text(float value) {
    char text[64];
    const auto end =
        std::to_chars(text, text + sizeof text, static_cast<double>(value), std::chars_format::general, 7)
            .ptr;
    return std::string(text, end);
}

template <std::integral T>
std::string general_text(T value) {
    char text[64];
    return std::string(text, std::to_chars(text, text + sizeof text, value).ptr);
}

template <class T>
bool is_general(T value) {
    const std::string written = report_text(value);
    const std::string expected = general_text(value);
    EXPECT_EQ(written, expected);
    return written == expected;
}

TEST(ReportNumbers, FloatsOfEachExponent) {
    std::mt19937 random(1);
    for (std::uint32_t exponent = 0; exponent < 256; ++exponent) {
        for (int i = 0; i < 8'000; ++i) {
            const auto bits = (random() & 0x807F'FFFF) | exponent << 23;
            ASSERT_TRUE(is_general(std::bit_cast<float>(static_cast<std::uint32_t>(bits))));
        }
    }
}

TEST(ReportNumbers, FloatsOfFewDecimals) {
    for (int i = 0; i < 1'000'000; ++i) {
        ASSERT_TRUE(is_general(static_cast<float>(i * 7) / 10.0f));
        ASSERT_TRUE(is_general(static_cast<float>(i) / 100.0f));
    }
}

// Where the number of digits in front of the point changes, and the form of the whole text.
TEST(ReportNumbers, FloatsNextToPowersOfTen) {
    for (int power = -16; power <= 17; ++power) {
        float value = static_cast<float>(std::pow(10.0, power));
        for (int i = 0; i < 1'000; ++i)
            value = std::nextafter(value, 0.0f);
        for (int i = 0; i < 2'000; ++i) {
            ASSERT_TRUE(is_general(value));
            ASSERT_TRUE(is_general(-value));
            value = std::nextafter(value, std::numeric_limits<float>::infinity());
        }
    }
}

TEST(ReportNumbers, TextsOfFloats) {
    EXPECT_EQ(report_text(0.0f), "0");
    EXPECT_EQ(report_text(-0.0f), "-0");
    EXPECT_EQ(report_text(0.5f), "0.5");
    EXPECT_EQ(report_text(-12800.0f), "-12800");
    EXPECT_EQ(report_text(1234567.0f), "1234567");
    EXPECT_EQ(report_text(0.000125f), "0.000125");
    EXPECT_EQ(report_text(16777216.0f), "1.677722e+07"); // 2^24
    EXPECT_EQ(report_text(9999999.5f), "1e+07");         // no float: the next one is 10^7
    EXPECT_EQ(report_text(524288.125f), "524288.1");     // a tie goes to the even digit
    EXPECT_EQ(report_text(524288.375f), "524288.4");
}

// Each in the form that a float below 10^-4 has, with the digits that its 24 bits are.
TEST(ReportNumbers, TextsOfSmallFloats) {
    EXPECT_EQ(report_text(std::ldexp(1.0f, -14)), "6.103516e-05");   // 6.103515625e-05
    EXPECT_EQ(report_text(std::ldexp(1.0f, -20)), "9.536743e-07");   // 9.5367431640625e-07
    EXPECT_EQ(report_text(std::ldexp(-5.0f, -40)), "-4.547474e-12"); // 4.547473508864641189575e-12
    EXPECT_EQ(report_text(std::ldexp(1.0f, -43)), "1.136868e-13");   // 1.136868377216160297393798828125e-13
    EXPECT_EQ(report_text(1e-7f), "1e-07");
    EXPECT_EQ(report_text(0.00009999999f), "9.999999e-05");
}

TEST(ReportNumbers, RandomSmallFloats) {
    std::mt19937 random(2);
    for (int i = 0; i < 500'000; ++i) {
        const float value = static_cast<float>(1 + random() % 1'000'000) /
                            static_cast<float>(1'000'000 + random() % 1'000'000'000);
        ASSERT_TRUE(is_general(value));
        ASSERT_TRUE(is_general(-value * 1e-5f));
    }
}

TEST(ReportNumbers, IntegersOfEachLength) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 2'000'000; ++i) {
        const auto number = static_cast<long long>(random() >> (i % 64));
        ASSERT_TRUE(is_general(number));
        ASSERT_TRUE(is_general(static_cast<int>(number)));
    }
}

TEST(ReportNumbers, IntegersNextToPowersOfTen) {
    long long power = 1;
    for (int digits = 1; digits <= 18; ++digits, power *= 10) {
        for (const long long value : {power - 1, power, power + 1, -power, 1 - power})
            ASSERT_TRUE(is_general(value));
    }
    ASSERT_TRUE(is_general(std::numeric_limits<long long>::min()));
    ASSERT_TRUE(is_general(std::numeric_limits<long long>::max()));
    ASSERT_TRUE(is_general(std::numeric_limits<unsigned long>::max()));
}

} // namespace
