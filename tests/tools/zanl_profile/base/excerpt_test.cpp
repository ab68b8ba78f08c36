// SPDX-License-Identifier: Apache-2.0
#include "excerpt.h"

#include <gtest/gtest.h>

namespace {

using zan::tool::excerpt;
using zan::tool::indented;

TEST(Excerpt, AShortLineIsWhole) {
    EXPECT_EQ(excerpt("0,0,k", 0, 40), "0,0,k");
    EXPECT_EQ(excerpt("", 0, 40), "");
    EXPECT_EQ(excerpt("<a b='1'>", 4, 40), "<a b='1'>\n   ^");
    EXPECT_EQ(excerpt("ab", 3, 40), "ab\n  ^") << "the end of the line";
    EXPECT_EQ(excerpt("ab", 9, 40), "ab\n  ^");
}

TEST(Excerpt, ALongLineIsCutAtItsEnd) {
    // 16 columns leave 10 beside the two marks.
    EXPECT_EQ(excerpt("0123456789abcdef", 0, 16), "0123456789...");
    EXPECT_EQ(excerpt("0123456789", 0, 16), "0123456789");
    EXPECT_EQ(excerpt("01234", 0, 16, false, true), "01234...");
}

TEST(Excerpt, ThePartWithTheCaretIsShown) {
    // Two thirds of 10 columns are 6: they stand before the caret.
    EXPECT_EQ(excerpt("0123456789abcdefghijk", 17, 16), "...abcdefghij...\n         ^");
    EXPECT_EQ(excerpt("0123456789abcdefg", 17, 16), "...abcdefg\n         ^");
    EXPECT_EQ(excerpt("abc", 2, 40, true, false), "...abc\n    ^");
}

TEST(Excerpt, TheCaretStandsBelowWhatIsShownOfAByte) {
    EXPECT_EQ(excerpt("\x1b[2J<", 5, 40), "⟨U+001B⟩[2J<\n           ^");
    EXPECT_EQ(excerpt("ü<", 3, 40), "ü<\n ^") << "two bytes, one column";
    EXPECT_EQ(excerpt("\xff<", 2, 40), "\\xFF<\n    ^");
}

TEST(Excerpt, EachLineIsIndented) {
    EXPECT_EQ(indented("a\n ^", 2), "  a\n   ^");
    EXPECT_EQ(indented("a", 2), "  a");
    EXPECT_EQ(indented("", 2), "  ");
}

} // namespace
