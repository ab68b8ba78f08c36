// SPDX-License-Identifier: Apache-2.0
// Numbers in groups have the texts that they have alone.
#include "separated_numbers.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "digit_groups.h"

namespace {

constexpr std::size_t longest_end = max_number_text + Separator::room;

Separator separator_of(const std::string& text) {
    Separator separator{};
    separator.text.fill(' ');
    std::copy(text.begin(), text.end(), separator.text.begin());
    separator.size = text.size();
    return separator;
}

template <class T>
std::string separated(const std::vector<T>& numbers, const std::string& between) {
    std::vector<char> out(numbers.size() * longest_end);
    const char* const end = write_separated(out.data(), std::span<const T>(numbers), separator_of(between));
    return std::string(static_cast<const char*>(out.data()), end);
}

template <class T>
std::string joined(const std::vector<T>& numbers, const std::string& between) {
    std::string text;
    for (const T number : numbers)
        text += report_text(number) + between;
    return text;
}

template <class T>
bool are_as_alone(const std::vector<T>& numbers) {
    const std::string text = separated(numbers, ",");
    const std::string expected = joined(numbers, ",");
    EXPECT_EQ(text, expected);
    return text == expected;
}

TEST(SeparatedNumbers, HaveWhatStandsBetweenThem) {
    EXPECT_EQ(separated<int>({}, ", "), "");
    EXPECT_EQ(separated<int>({0, 7, 12345678, 123456789, -1}, ", "), "0, 7, 12345678, 123456789, -1, ");
    EXPECT_EQ(
        separated<long long>({1, 20, 300, 4000, 50000, 600000, 7000000, 80000000, 900000000}, "\",\n\""),
        "1\",\n\"20\",\n\"300\",\n\"4000\",\n\"50000\",\n\"600000\",\n\"7000000\",\n\"80000000\",\n\"900000000"
        "\",\n\"");
    EXPECT_EQ(separated<float>({0.0f, 0.5f, 12.25f, 100.0f, 0.000125f, 9999999.0f, 1e7f, -2.5f}, ";"),
              "0;0.5;12.25;100;0.000125;9999999;1e+07;-2.5;");
    const std::string longest(Separator::room, 'x');
    EXPECT_EQ(separated<int>(std::vector<int>(9, 3), longest), joined<int>(std::vector<int>(9, 3), longest));
}

// A group ends where the next begins, and the rest of them is no group.
TEST(SeparatedNumbers, AreAsManyAsThereAre) {
    for (std::size_t count = 0; count < 40; ++count) {
        ASSERT_TRUE(are_as_alone(std::vector<int>(count, 10)));
        ASSERT_TRUE(are_as_alone(std::vector<long long>(count, 123456789)));
        ASSERT_TRUE(are_as_alone(std::vector<float>(count, 0.75f)));
    }
}

TEST(SeparatedNumbers, IntegersOfEachLength) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 20'000; ++i) {
        std::vector<long long> numbers;
        std::vector<int> ints;
        const int most_bits = i % 4 == 0 ? 64 : 30;
        for (std::size_t k = 0; k < 2 * group_size; ++k) {
            numbers.push_back(static_cast<long long>(random() >> (64 - most_bits) >> (random() % 30)));
            ints.push_back(static_cast<int>(numbers.back()));
        }
        ASSERT_TRUE(are_as_alone(numbers));
        ASSERT_TRUE(are_as_alone(ints));
    }
}

TEST(SeparatedNumbers, IntegersNextToPowersOfTen) {
    long long power = 1;
    for (int digits = 1; digits <= 18; ++digits, power *= 10) {
        for (const long long other : {0LL, power, -power, 4'294'967'296LL * 5})
            ASSERT_TRUE(are_as_alone<long long>({power - 1, 0, power, 1, power + 1, 2, 3, other}));
    }
    constexpr std::numeric_limits<long long> limits;
    ASSERT_TRUE(are_as_alone<long long>({limits.min(), limits.max(), 1, 2, 3, 4, 5, 6}));
}

TEST(SeparatedNumbers, FloatsOfEachExponent) {
    std::mt19937 random(1);
    for (std::uint32_t exponent = 0; exponent < 256; ++exponent) {
        for (int i = 0; i < 400; ++i) {
            std::vector<float> numbers;
            for (std::uint32_t k = 0; k < group_size; ++k) {
                const auto near = (exponent + (i % 2 == 0 ? 0 : k)) % 256;
                numbers.push_back(
                    std::bit_cast<float>(static_cast<std::uint32_t>((random() & 0x807F'FFFF) | near << 23)));
            }
            ASSERT_TRUE(are_as_alone(numbers));
        }
    }
}

TEST(SeparatedNumbers, FloatsOfFewDecimals) {
    for (int i = 0; i < 1'000'000; i += 8) {
        std::vector<float> tenths;
        std::vector<float> hundredths;
        for (int k = i; k < i + 8; ++k) {
            tenths.push_back(static_cast<float>(k * 7) / 10.0f);
            hundredths.push_back(static_cast<float>(k) / 100.0f);
        }
        ASSERT_TRUE(are_as_alone(tenths));
        ASSERT_TRUE(are_as_alone(hundredths));
    }
}

TEST(SeparatedNumbers, FloatsNextToPowersOfTen) {
    for (int power = -6; power <= 9; ++power) {
        float value = static_cast<float>(std::pow(10.0, power));
        for (int i = 0; i < 800; ++i)
            value = std::nextafter(value, 0.0f);
        for (int i = 0; i < 200; ++i) {
            std::vector<float> numbers;
            for (std::size_t k = 0; k < group_size; ++k) {
                numbers.push_back(value);
                value = std::nextafter(value, std::numeric_limits<float>::infinity());
            }
            ASSERT_TRUE(are_as_alone(numbers));
        }
    }
}

// Each half of four digits is divided on its own, so that these are all cases of the last eight digits.
TEST(DigitGroups, AreTheDigitsOfEachNumber) {
    for (std::uint32_t half = 0; half < 10'000; ++half) {
        const std::array<long long, group_size> numbers = {half,
                                                           half * 10'000LL,
                                                           half * 10'001LL,
                                                           half * 10'000LL + 9'999,
                                                           900'000'000LL + half,
                                                           100'000'000LL + half * 10'000LL,
                                                           99'990'000LL + half,
                                                           999'990'000LL + half};
        DigitGroup digits;
        ASSERT_TRUE(digits_of_group(numbers, digits));
        for (std::size_t i = 0; i < group_size; ++i) {
            ASSERT_EQ(digits.top[i], static_cast<std::uint64_t>(numbers[i] / 100'000'000));
            ASSERT_EQ(digits.low[i], digits_of(static_cast<std::uint32_t>(numbers[i] % 100'000'000)));
        }
        std::array<std::uint64_t, group_size> low;
        for (std::size_t i = 0; i < group_size; ++i)
            low[i] = static_cast<std::uint64_t>(numbers[i] % 100'000'000);
        digits_in_place(low);
        ASSERT_EQ(low, digits.low);
    }
}

TEST(DigitGroups, HaveNoNumberOfMoreDigitsOrWithASign) {
    for (const long long other : {-1LL, 1'000'000'000LL, 4'294'967'295LL, 4'294'967'296LL, 1LL << 62}) {
        for (std::size_t i = 0; i < group_size; ++i) {
            std::array<long long, group_size> numbers{};
            DigitGroup digits;
            EXPECT_TRUE(digits_of_group(numbers, digits));
            numbers[i] = other;
            EXPECT_FALSE(digits_of_group(numbers, digits)) << other;
        }
    }
}

} // namespace
