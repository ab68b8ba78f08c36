// SPDX-License-Identifier: Apache-2.0
#include "mon_line.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <random>
#include <string>

#include "number_text.h"

namespace {

std::vector<std::string> texts_of(const MonLine& line) {
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < line.fields().size(); ++i)
        texts.emplace_back(line.fields()[i].text);
    return texts;
}

using Texts = std::vector<std::string>;

TEST(MonLine, CommasEndFieldsAndTheLastFieldNeedsNone) {
    MonLine line;
    line.split("0,1,k,1000");
    EXPECT_EQ(texts_of(line), (Texts{"0", "1", "k", "1000"}));
    EXPECT_EQ(line.num_commas(), 3u);
}

// Numbers of any length, some with what makes them no plain ones.
std::string random_fields(std::mt19937_64& random, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        if (i != 0)
            text += ',';
        if (random() % 8 == 0)
            text += '-';
        const auto digits = 1 + random() % (random() % 10 == 0 ? 20 : 9);
        for (std::size_t digit = 0; digit < digits; ++digit)
            text += static_cast<char>('0' + random() % 10);
        if (random() % 200 == 0)
            text[random() % text.size()] = static_cast<char>(random() % 256);
    }
    return text;
}

struct LongNumber {
    const char* text;
    std::optional<long long> value; // none if it is left to std::stoll
};

TEST(PlainFields, NumbersHaveUpToNineteenDigits) {
    constexpr LongNumber numbers[] = {
        {"12345678", 12345678},
        {"123456789", 123456789},
        {"1234567890123456", 1234567890123456},
        {"12345678901234567", 12345678901234567},
        {"-123456789012345678", -123456789012345678},
        {"1700000000000040000", 1700000000000040000},
        {"-1700000000000040000", -1700000000000040000},
        {"9223372036854775807", 9223372036854775807},
        {"-9223372036854775807", -9223372036854775807},
        {"0000000000000000001", 1},
        {"-9223372036854775808", std::nullopt}, // fits, but not without its sign
        {"9223372036854775808", std::nullopt},
        {"9999999999999999999", std::nullopt},
        {"10000000000000000000", std::nullopt},
        {"00000000000000000001", std::nullopt},
    };
    for (const auto& [text, value] : numbers) {
        // At the end of the line and before other fields digits are read in other ways.
        for (const char* rest : {"", ",1", ",12345678,1"}) {
            const std::string line = std::string(text) + rest;
            long long last[3] = {};
            const std::size_t count = 1 + static_cast<std::size_t>(std::count(line.begin(), line.end(), ','));
            EXPECT_EQ(PlainFields(line).last_numbers(last, count), value.has_value()) << line;
            long long next = 0;
            EXPECT_EQ(PlainFields(line).number(next), value.has_value() && count > 1) << line;
            if (value) {
                EXPECT_EQ(last[0], *value) << line;
                if (count > 1) {
                    EXPECT_EQ(next, *value) << line;
                }
            }
            MonLine split;
            split.split(line);
            const auto number = split.fields()[0].number();
            EXPECT_EQ(number, parse_long_long(text)) << line;
            if (value) {
                EXPECT_EQ(number, value) << line;
            }
        }
    }
}

TEST(PlainFields, AreReadAsTheSplitLineHasThem) {
    std::mt19937_64 random(4);
    int num_plain = 0;
    for (int i = 0; i < 20000; ++i) {
        const std::size_t count = 1 + random() % 12;
        const std::string text = random_fields(random, count);
        std::vector<long long> values(count);
        if (!PlainFields(text).last_numbers(values.data(), count))
            continue;
        ++num_plain;
        MonLine line;
        line.split(text);
        ASSERT_EQ(line.fields().size(), count) << text;
        for (std::size_t k = 0; k < count; ++k) {
            ASSERT_TRUE(line.fields()[k].is_number) << text;
            ASSERT_EQ(values[k], line.fields()[k].value) << text;
        }
    }
    EXPECT_GT(num_plain, 10000);
}

// Long lines are read in windows, which end anywhere in a number. The fields of the split line say what has
// to be read; text that isn't in a buffer of its own would hide a read past its end.
TEST(PlainFields, LongLinesAreReadWhereverTheirNumbersEnd) {
    std::mt19937_64 random(5);
    int num_plain = 0;
    int num_others = 0;
    for (int i = 0; i < 20000; ++i) {
        const std::size_t count = 20 + random() % 60;
        std::string text = std::to_string(random() % 100);
        for (std::size_t k = 1; k < count; ++k) {
            const int shift = random() % 10 == 0 ? 1 : 34; // up to 19 digits, or 9
            text += (random() % 40 == 0 ? ",-" : ",") + std::to_string(random() >> shift >> random() % 30);
        }
        if (i % 2 == 0)
            text[random() % text.size()] = "/:,- x\x80"[random() % 7];
        MonLine line;
        line.split(text);
        bool is_plain = line.fields().size() == count;
        for (std::size_t k = 0; is_plain && k < count; ++k) {
            const std::string_view field = line.fields()[k].text;
            is_plain = line.fields()[k].is_number &&
                       field.find_first_not_of("0123456789", field[0] == '-') == std::string_view::npos;
        }
        std::vector<long long> values(count);
        const std::vector<char> bytes(text.begin(), text.end());
        PlainFields fields(std::string_view(bytes.data(), bytes.size()));
        ASSERT_EQ(fields.last_numbers(values.data(), count), is_plain) << text;
        ++(is_plain ? num_plain : num_others);
        for (std::size_t k = 0; is_plain && k < count; ++k)
            ASSERT_EQ(values[k], line.fields()[k].value) << text;
    }
    EXPECT_GT(num_plain, 9000);
    EXPECT_GT(num_others, 3000);
}

TEST(PlainFields, EndWhereSomethingElseStands) {
    long long value = 0;
    std::string_view text;
    for (const char* line : {"", ",1", "-,1", "x,1", " 1,1", "+1,1", "1", "1x,1", "9223372036854775808,1"})
        EXPECT_FALSE(PlainFields(line).number(value)) << line;
    EXPECT_FALSE(PlainFields("name").text(text));
    for (const char* line : {"1", "1,2,", "1,2,3", "1,,2", "1,2\r"})
        EXPECT_FALSE(PlainFields(line).last_numbers(std::vector<long long>(2).data(), 2)) << line;
}

TEST(PlainFields, GoFromPieceToPiece) {
    PlainFields fields("12,-3,k l,4,567890123456789012");
    long long first = 0;
    long long second = 0;
    std::string_view name;
    std::vector<long long> rest(2);
    EXPECT_TRUE(fields.number(first));
    EXPECT_TRUE(fields.at_sign());
    EXPECT_TRUE(fields.number(second));
    EXPECT_TRUE(fields.text(name));
    EXPECT_TRUE(fields.last_numbers(rest.data(), 2));
    EXPECT_EQ(first, 12);
    EXPECT_EQ(second, -3);
    EXPECT_EQ(name, "k l");
    EXPECT_EQ(rest, (std::vector<long long>{4, 567890123456789012}));
}

TEST(MonLine, ATrailingCommaIsFollowedByAnEmptyField) {
    MonLine line;
    line.split("7,");
    EXPECT_EQ(texts_of(line), (Texts{"7", ""}));
    EXPECT_TRUE(line.fields()[0].is_number);
    EXPECT_FALSE(line.fields()[1].is_number);
}

TEST(MonLine, AnEmptyLineIsOneEmptyField) {
    MonLine line;
    line.split("");
    EXPECT_EQ(texts_of(line), (Texts{""}));
    EXPECT_EQ(line.num_commas(), 0u);
}

TEST(MonLine, ALineReplacesTheOneBefore) {
    MonLine line;
    line.split("1,2,3");
    line.split("4");
    EXPECT_EQ(texts_of(line), (Texts{"4"}));
}

TEST(MonLine, NumbersAreReadWithTheirSigns) {
    MonLine line;
    line.split("12,-34,+5, 6,7x,x,-,-9223372036854775808");
    const std::optional<long long> expected[] = {
        12, -34, 5, 6, 7, std::nullopt, std::nullopt, -9223372036854775807LL - 1};
    ASSERT_EQ(line.fields().size(), std::size(expected));
    for (std::size_t i = 0; i < std::size(expected); ++i)
        EXPECT_EQ(line.fields()[i].number(), expected[i]) << "field " << i;
}

TEST(MonLine, ACarriageReturnStaysInTheTextAndIsIgnoredByTheNumber) {
    MonLine line;
    line.split("1,2\r");
    EXPECT_EQ(line.fields()[1].text, "2\r");
    EXPECT_EQ(line.fields()[1].number(), 2);
}

TEST(MonLine, EachNumberIsThatOfItsText) {
    std::mt19937 random(2);
    constexpr std::string_view alphabet = "0123456789,,- +x/:"; // the last two stand beside the digits
    MonLine line;
    for (int i = 0; i < 50000; ++i) {
        std::string text(random() % 60, ' ');
        const std::size_t letters = random() % 2 ? 12 : alphabet.size();
        for (char& c : text)
            c = alphabet[random() % letters];
        line.split(text);
        std::string joined;
        for (std::size_t k = 0; k < line.fields().size(); ++k) {
            const MonField field = line.fields()[k];
            ASSERT_EQ(field.number(), parse_long_long(field.text)) << text;
            joined += std::string(field.text) + ",";
        }
        ASSERT_EQ(joined, text + ",");
    }
}

// Fields of no, few or many letters, so that lines have marks at every distance.
std::vector<std::string> random_texts(std::mt19937& random, std::size_t count) {
    std::vector<std::string> texts(count);
    for (std::string& text : texts) {
        const std::size_t size = random() % 50 == 0 ? random() % 400 : random() % 3;
        for (std::size_t i = 0; i < size; ++i)
            text += "0123456789-x"[random() % 12];
    }
    return texts;
}

// 4096 fields are held, and those after them are found from marks.
TEST(MonLine, TheFieldsOfALongLineAreThoseOfItsText) {
    std::mt19937 random(3);
    MonLine line;
    for (const std::size_t count : {4095u, 4096u, 4097u, 4098u, 5000u, 20000u, 4096u}) {
        const std::vector<std::string> texts = random_texts(random, count);
        std::string joined = texts[0];
        for (std::size_t i = 1; i < count; ++i)
            joined += "," + texts[i];
        line.split(joined);
        ASSERT_EQ(line.fields().size(), count);
        ASSERT_EQ(line.num_commas(), count - 1);
        MonField room;
        for (std::size_t i = 0; i < count; ++i) {
            const MonField field = line.fields()[i];
            ASSERT_EQ(field.text, texts[i]) << i << " of " << count;
            ASSERT_EQ(field.number(), parse_long_long(texts[i])) << i << " of " << count;
            ASSERT_EQ(line.fields().get(i, room).text, texts[i]) << i << " of " << count;
        }
    }
}

TEST(MonLine, AFieldBeyondTheEndHasNoText) {
    MonLine line;
    MonField room{"left", 1, true};
    for (const std::string& text : {std::string("1,2"), std::string(6000, ',')}) {
        line.split(text);
        for (const std::size_t beyond : {line.fields().size(), static_cast<std::size_t>(-1)}) {
            const MonField& field = line.fields().get(beyond, room);
            EXPECT_EQ(field.text, "");
            EXPECT_EQ(field.number(), std::nullopt);
        }
    }
}

// These bytes are digits plus 160, and would be digits if only their lower bits counted.
TEST(MonLine, BytesThatResembleDigitsAreNoNumber) {
    MonLine line;
    for (int digit = 0; digit < 10; ++digit) {
        const std::string text(1, static_cast<char>(0xD0 + digit));
        line.split(text + ",1" + text + "," + text + "1");
        EXPECT_EQ(line.fields()[0].number(), std::nullopt) << digit;
        EXPECT_EQ(line.fields()[1].number(), 1) << digit; // std::stoll reads the digits in front
        EXPECT_EQ(line.fields()[2].number(), std::nullopt) << digit;
        long long value = 0;
        EXPECT_FALSE(PlainFields(text + ",").number(value)) << digit;
        EXPECT_FALSE(PlainFields(text + ",1234567").number(value)) << digit; // eight bytes are read at once
        EXPECT_FALSE(PlainFields("1" + text + ",123456").number(value)) << digit;
    }
}

} // namespace
