// SPDX-License-Identifier: Apache-2.0
#include "packed_numbers.h"

#include <gtest/gtest.h>

#include <bit>
#include <random>

#include "node_events.h"

using namespace zan::profile;

namespace {

// What the numbers are written as, for a list of texts of which each must be added.
std::vector<std::string> written(const std::vector<std::string>& texts) {
    PackedNumbers numbers;
    for (const std::string& text : texts)
        EXPECT_TRUE(numbers.add(text)) << text;
    NodeEventList events;
    numbers.write(events, "key");
    return events.list;
}

bool is_taken(const std::string& text, const std::vector<std::string>& before = {}) {
    PackedNumbers numbers;
    for (const std::string& number : before)
        EXPECT_TRUE(numbers.add(number)) << number;
    return numbers.add(text);
}

using Events = std::vector<std::string>;

TEST(PackedNumbers, IntegersStayIntegers) {
    EXPECT_EQ(
        written({"0", "-1", "12345678", "1234567890123456", "9223372036854775807", "-9223372036854775808"}),
        Events{"key integers 0 -1 12345678 1234567890123456 9223372036854775807 -9223372036854775808"});
}

TEST(PackedNumbers, AFractionMakesFloatsOfAllNumbers) {
    EXPECT_EQ(written({"0", "-9999999", "12.5", "3"}), Events{"key floats 0 -9999999 12.5 3"});
}

TEST(PackedNumbers, WhatNoIntegerIsMakesFloatsToo) {
    for (const char* text :
         {"-0", "1e+07", "1.234568e+15", "1e-05", "1.5e-07", "inf", "-inf", "nan", "-nan", "0.0001",
          "0.0001234567", "1.898961", "9999.999", "3.402823e+38", "1.401298e-45"})
        EXPECT_EQ(written({text}), Events{std::string("key floats ") + text});
}

TEST(PackedNumbers, NoOtherTextOfANumberIsTaken) {
    for (const char* text : {"",
                             "-",
                             "+1",
                             "01",
                             "-01",
                             "00",
                             "1.",
                             ".5",
                             "1.0",
                             "0.50",
                             "1e5",
                             "1E+07",
                             "1e+7",
                             "0.00001",
                             " 1",
                             "1 ",
                             "1,5",
                             "0x10",
                             "12a",
                             "abc",
                             "infinity",
                             "nan(1)",
                             "1.2345678",
                             "9223372036854775808",
                             "-9223372036854775809",
                             "12345678901234567890",
                             "123456789012345678901234567890",
                             "1.5.5",
                             "--1",
                             "0.1234567890123",
                             "10000000.5",
                             "\xC3\xA4"})
        EXPECT_FALSE(is_taken(text)) << text;
}

TEST(PackedNumbers, AnIntegerOfMoreThanSevenDigitsIsNoFloat) {
    EXPECT_TRUE(is_taken("9999999", {"0.5"}));
    EXPECT_FALSE(is_taken("10000000", {"0.5"}));
    EXPECT_FALSE(is_taken("-10000000", {"0.5"}));
    EXPECT_FALSE(is_taken("0.5", {"10000000"}));
    EXPECT_FALSE(is_taken("-0", {"10000000"}));
}

// Floats above 2^-10 = 0.0009765625 are 1.164e-10 apart. In units of the last digit they are
// 0, 1.16, 2.33, 3.49 and 4.66 above it, and written as 0, 1, 2, 3 and 5.
TEST(PackedNumbers, AFractionThatNoFloatIsWrittenAsIsNotTaken) {
    for (const char* text : {"0.0009765626", "0.0009765627", "0.0009765628", "0.000976563"})
        EXPECT_TRUE(is_taken(text)) << text;
    EXPECT_FALSE(is_taken("0.0009765629"));
}

TEST(PackedNumbers, ATextThatIsRefusedLeavesNoTrace) {
    PackedNumbers numbers;
    EXPECT_TRUE(numbers.add("7"));
    EXPECT_FALSE(numbers.add("x"));
    EXPECT_TRUE(numbers.add("8"));
    NodeEventList events;
    numbers.write_texts(events);
    EXPECT_EQ(events.list, (Events{"text 7", "text 8"}));
    numbers.clear();
    EXPECT_TRUE(numbers.add("0.5"));
    numbers.write_texts(events);
    EXPECT_EQ(events.list, (Events{"text 7", "text 8", "text 0.5"}));
}

// Whatever float a report was written from, its text is taken and comes back.
TEST(PackedNumbers, EveryTextOfAFloatComesBack) {
    std::mt19937 random(7);
    PackedNumbers numbers;
    for (int i = 0; i < 200'000; ++i) {
        const auto bits = static_cast<std::uint32_t>(random());
        // Half of them from 10^-5 to 10^8, in eighths, or with all bits.
        const float value = i % 4 == 0   ? static_cast<float>(bits % 1'000'000) / 10.0f
                            : i % 4 == 1 ? std::bit_cast<float>(0x3727'0000u + bits % 0x1580'0000u)
                                         : std::bit_cast<float>(bits);
        const std::string text = report_text(value);
        numbers.clear();
        ASSERT_TRUE(numbers.add(text)) << text;
        NodeEventList events;
        numbers.write_texts(events);
        ASSERT_EQ(events.list, Events{"text " + text});
    }
}

TEST(PackedNumbers, EveryTextOfAnIntegerComesBack) {
    std::mt19937_64 random(7);
    PackedNumbers numbers;
    for (int i = 0; i < 100'000; ++i) {
        const std::string text = report_text(static_cast<long long>(random()) >> (i % 64));
        numbers.clear();
        ASSERT_TRUE(numbers.add(text)) << text;
        NodeEventList events;
        numbers.write_texts(events);
        ASSERT_EQ(events.list, Events{"text " + text});
    }
}

// What is left of the elements, with what was added before them.
struct Rest {
    std::string text;
    Events events;
    bool operator==(const Rest&) const = default;
};
Rest rest_after(const std::string& elements, std::size_t most = 100) {
    const std::string padded = elements + std::string(PackedNumbers::num_readable + 1, '\0');
    PackedNumbers numbers;
    EXPECT_TRUE(numbers.add("0"));
    const char* const end = numbers.add_elements(padded.data(), most);
    Rest rest{std::string(end, padded.data() + elements.size()), {}};
    NodeEventList events;
    numbers.write(events, "key");
    rest.events = events.list;
    return rest;
}

TEST(PackedNumbers, ElementsAreTakenUpToTheFirstThatIsNoNumber) {
    EXPECT_EQ(rest_after(R"(,"1", "2")"
                         "\n\t\r,\n        \"3\", \"x\", \"4\""),
              (Rest{"\n\t\r,\n        \"3\", \"x\", \"4\"", {"key integers 0 1 2"}}));
    EXPECT_EQ(rest_after(R"(, "1", "2", "x", "4"])"), (Rest{R"(, "x", "4"])", {"key integers 0 1 2"}}));
    EXPECT_EQ(rest_after(R"(, "1", 2)"), (Rest{", 2", {"key integers 0 1"}}));
    EXPECT_EQ(rest_after(R"(])"), (Rest{"]", {"key integers 0"}}));
}

TEST(PackedNumbers, NoMoreElementsAreTakenThanAskedFor) {
    EXPECT_EQ(rest_after(R"(,"1","2","3")", 2), (Rest{R"(,"3")", {"key integers 0 1 2"}}));
}

TEST(PackedNumbers, AnElementThatIsCutIsNotTaken) {
    const std::string elements = ",\n                    \"1\",\n                    \"12345678.5\"";
    for (std::size_t size = 0; size < elements.size(); ++size) {
        const std::size_t first = elements.find("\"1\"") + 3;
        EXPECT_EQ(rest_after(elements.substr(0, size)).text,
                  size < first ? elements.substr(0, size) : elements.substr(first, size - first));
    }
}

// What stands between two numbers is compared with what stood there before, eight bytes at a time.
TEST(PackedNumbers, ASeparatorThatDiffersInOneByteIsNoSeparator) {
    const std::string separator = ",                      \""; // 24 bytes
    for (std::size_t i = 0; i < separator.size(); ++i) {
        std::string other = separator;
        other[i] = 'x';
        const std::string rest = other + "2\"";
        EXPECT_EQ(rest_after(separator + "1\"" + rest), (Rest{rest, {"key integers 0 1"}})) << i;
    }
}

TEST(PackedNumbers, ASeparatorOfAnyLengthIsTaken) {
    for (const std::size_t blanks :
         std::initializer_list<std::size_t>{0, 1, 5, 6, 7, 8, 50, 61, 62, 63, 64, 200}) {
        const std::string separator = "," + std::string(blanks, ' ') + '"';
        EXPECT_EQ(rest_after(separator + "1\"" + separator + "2\"" + separator + "3\""),
                  (Rest{"", {"key integers 0 1 2 3"}}))
            << blanks;
    }
}

} // namespace
