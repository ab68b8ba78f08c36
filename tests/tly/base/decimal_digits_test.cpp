// SPDX-License-Identifier: Apache-2.0
#include "decimal_digits.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

// Numbers on both sides of each power of ten, and random ones.
std::vector<std::uint32_t> numbers() {
    std::vector<std::uint32_t> result{0};
    for (std::uint32_t power = 1; power <= 100'000'000; power *= 10) {
        result.push_back(power - 1);
        if (power < 100'000'000)
            result.push_back(power);
    }
    std::mt19937 random(5);
    for (int i = 0; i < 100'000; ++i)
        result.push_back(static_cast<std::uint32_t>(random() % 100'000'000) >> random() % 27);
    return result;
}

TEST(DecimalDigits, AreThoseOfTheNumber) {
    for (const std::uint32_t number : numbers()) {
        std::uint64_t digits = digits_of(number);
        std::uint64_t back = 0;
        for (int i = 0; i < 8; ++i, digits >>= 8) {
            ASSERT_LT(digits & 0xFF, 10u) << number;
            back = back * 10 + (digits & 0xFF);
        }
        ASSERT_EQ(back, number);
    }
}

TEST(DecimalDigits, AreWrittenWithoutLeadingZeros) {
    for (const std::uint32_t number : numbers()) {
        char text[8];
        const char* const end = write_up_to_8_digits(text, number);
        ASSERT_EQ(std::string_view(text, end), std::to_string(number));
    }
}

TEST(DecimalDigits, AreWrittenWithLeadingZeros) {
    char text[8];
    EXPECT_EQ(write_8_digits(text, 1'234), text + 8);
    EXPECT_EQ(std::string(text, 8), "00001234");
    write_8_digits(text, 99'999'999);
    EXPECT_EQ(std::string(text, 8), "99999999");
    write_8_digits(text, 0);
    EXPECT_EQ(std::string(text, 8), "00000000");
}

DigitRun run_of(const std::string& text) {
    std::uint64_t characters = 0;
    std::memcpy(&characters, text.data(), 8);
    return read_digits(characters);
}

TEST(DecimalDigits, AreReadUpToTheFirstOtherByte) {
    for (int other = 0; other < 256; ++other) {
        if (other >= '0' && other <= '9')
            continue;
        for (unsigned length = 0; length < 8; ++length) {
            std::string text = "98765432";
            text[length] = static_cast<char>(other);
            const DigitRun run = run_of(text);
            EXPECT_EQ(run.length, length) << other;
            const std::uint32_t expected =
                length == 0 ? 0 : static_cast<std::uint32_t>(std::stoul(text.substr(0, length)));
            EXPECT_EQ(run.value, expected) << other;
        }
    }
}

TEST(DecimalDigits, AreReadAsTheyAreWritten) {
    for (const std::uint32_t number : numbers()) {
        std::string text(8, ',');
        const char* const end = write_up_to_8_digits(text.data(), number);
        const auto length = static_cast<unsigned>(end - text.data());
        std::fill(text.begin() + length, text.end(), ',');
        const DigitRun run = run_of(text);
        ASSERT_EQ(run.length, length) << number;
        ASSERT_EQ(run.value, number);
    }
}

} // namespace
