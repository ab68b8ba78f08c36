#include "mon_line.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "number_text.h"

namespace {

std::vector<std::string> textsOf(const MonLine& line) {
    std::vector<std::string> texts;
    for (const MonField& field : line.fields())
        texts.emplace_back(field.text);
    return texts;
}

using Texts = std::vector<std::string>;

TEST(MonLine, CommasEndFieldsAndTheLastFieldNeedsNone) {
    MonLine line;
    line.split("0,1,k,1000");
    EXPECT_EQ(textsOf(line), (Texts{"0", "1", "k", "1000"}));
    EXPECT_EQ(line.num_commas(), 3u);
}

TEST(MonLine, ATrailingCommaIsFollowedByAnEmptyField) {
    MonLine line;
    line.split("7,");
    EXPECT_EQ(textsOf(line), (Texts{"7", ""}));
    EXPECT_TRUE(line.fields()[0].is_number);
    EXPECT_FALSE(line.fields()[1].is_number);
}

TEST(MonLine, AnEmptyLineIsOneEmptyField) {
    MonLine line;
    line.split("");
    EXPECT_EQ(textsOf(line), (Texts{""}));
    EXPECT_EQ(line.num_commas(), 0u);
}

TEST(MonLine, ALineReplacesTheOneBefore) {
    MonLine line;
    line.split("1,2,3");
    line.split("4");
    EXPECT_EQ(textsOf(line), (Texts{"4"}));
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
        for (const MonField& field : line.fields()) {
            ASSERT_EQ(field.number(), parseLongLong(field.text)) << text;
            joined += std::string(field.text) + ",";
        }
        ASSERT_EQ(joined, text + ",");
    }
}

} // namespace
