// SPDX-License-Identifier: Apache-2.0
#include "number_text.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

template <class Convert>
auto value_or_nothing(Convert convert, const std::string& text) -> std::optional<decltype(convert(text))> {
    try {
        return convert(text);
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

std::optional<long long> standard_long_long(const std::string& text) {
    return value_or_nothing([](const std::string& t) { return std::stoll(t); }, text);
}

std::optional<int> standard_int(const std::string& text) {
    return value_or_nothing([](const std::string& t) { return std::stoi(t); }, text);
}

TEST(NumberText, AcceptsAndRefusesWhatTheStandardFunctionsDo) {
    const std::string texts[] = {
        "0",
        "-0",
        "5",
        "-5",
        "+5",
        "007",
        "010",
        " 5",
        "\t\n\v\f\r5",
        "5x",
        "5\r",
        "5,6",
        "1.9",
        "1e3",
        "0x10",
        "",
        " ",
        "abc",
        "+",
        "-",
        "--5",
        "+-5",
        "-+5",
        "++5",
        "- 5",
        "+ 5",
        "\xA0"
        "5",
        ".5",
        "2147483647",
        "2147483648",
        "-2147483648",
        "-2147483649",
        "4294967296",
        "9223372036854775807",
        "9223372036854775808",
        "-9223372036854775808",
        "-9223372036854775809",
        "999999999999999999",
        "9999999999999999999",
        "18446744073709551616",
        "00000000000000000000000001",
        "99999999999999999999999999999999",
        std::string("5\0006", 3),
        std::string("\0005", 2),
    };
    for (const std::string& text : texts) {
        EXPECT_EQ(parse_long_long(text), standard_long_long(text)) << '"' << text << '"';
        EXPECT_EQ(parse_int(text), standard_int(text)) << '"' << text << '"';
    }
}

TEST(NumberText, AgreesWithTheStandardFunctionsOnRandomTexts) {
    std::mt19937 random(1);
    constexpr std::string_view alphabet = "0123456789+- \tx,.";
    for (int i = 0; i < 200000; ++i) {
        std::string text(random() % 24, ' ');
        const std::size_t letters = random() % 2 ? 10 : alphabet.size();
        for (char& c : text)
            c = alphabet[random() % letters];
        ASSERT_EQ(parse_long_long(text), standard_long_long(text)) << '"' << text << '"';
        ASSERT_EQ(parse_int(text), standard_int(text)) << '"' << text << '"';
    }
}

TEST(NumberText, ReadsNothingPastTheView) {
    const std::string text = "12345";
    EXPECT_EQ(parse_long_long(std::string_view(text).substr(0, 2)), 12);
    EXPECT_EQ(parse_long_long(std::string_view(text).substr(5)), std::nullopt);
}

} // namespace
