// SPDX-License-Identifier: Apache-2.0
// Texts that stand for a value.
#include "BaseWordTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zan::test {
namespace {

using xml::booleans;
using xml::booleans_or_digits;
using xml::find_word;
using xml::Word;

TEST(FindWord, ComparesTheWholeText) {
    static constexpr Word<int> words[] = {{"ab", 1}, {"abc", 2}, {"", 3}};
    ASSERT_TRUE(find_word(words, "ab"));
    EXPECT_EQ(find_word(words, "ab")->value, 1);
    EXPECT_EQ(find_word(words, "abc")->value, 2);
    EXPECT_EQ(find_word(words, "")->value, 3);
    for (const char* text : {"a", "abcd", "AB", " ab", "ab "})
        EXPECT_FALSE(find_word(words, text)) << text;
}

TEST(FindWord, TakesTheFirstOfTwoEqualTexts) {
    static constexpr Word<int> words[] = {{"a", 1}, {"a", 2}};
    EXPECT_EQ(find_word(words, "a")->value, 1);
}

TEST(Booleans, AreTwoWordsInLowerCase) {
    EXPECT_TRUE(find_word(booleans, "true")->value);
    EXPECT_FALSE(find_word(booleans, "false")->value);
    for (const char* text : {"1", "0", "TRUE", "False", "yes", ""})
        EXPECT_FALSE(find_word(booleans, text)) << text;
}

TEST(Booleans, OfSomeAttributesMayBeDigits) {
    EXPECT_TRUE(find_word(booleans_or_digits, "true")->value);
    EXPECT_TRUE(find_word(booleans_or_digits, "1")->value);
    EXPECT_FALSE(find_word(booleans_or_digits, "false")->value);
    EXPECT_FALSE(find_word(booleans_or_digits, "0")->value);
    for (const char* text : {"2", "01", "True", "no", ""})
        EXPECT_FALSE(find_word(booleans_or_digits, text)) << text;
}

} // namespace
} // namespace zan::test
