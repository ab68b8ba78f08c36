// SPDX-License-Identifier: Apache-2.0
#include "utf8_text.h"

#include "gtest/gtest.h"

using zan::profile::valid_utf8_text;

namespace {

// U+FFFD as often as there are bytes that are no UTF-8.
std::string replacements(int times) {
    std::string text;
    for (int i = 0; i < times; i++)
        text += "\xEF\xBF\xBD";
    return text;
}

} // namespace

TEST(Utf8Text, WholeCharactersStay) {
    // The first and last of each length, and those beside the surrogates.
    for (const char* text : {"", "a\x7F", "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xEF\xBF\xBF",
                             "\xED\x9F\xBF", "\xEE\x80\x80", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"})
        EXPECT_EQ(valid_utf8_text(text), text);
}

TEST(Utf8Text, EachByteThatIsNoneIsReplaced) {
    EXPECT_EQ(valid_utf8_text("a\x80z"), "a" + replacements(1) + "z");        // continues nothing
    EXPECT_EQ(valid_utf8_text("\xC1\xBF"), replacements(2));                  // overlong, two bytes
    EXPECT_EQ(valid_utf8_text("\xE0\x9F\xBF"), replacements(3));              // overlong, three
    EXPECT_EQ(valid_utf8_text("\xF0\x8F\xBF\xBF"), replacements(4));          // overlong, four
    EXPECT_EQ(valid_utf8_text("\xED\xA0\x80"), replacements(3));              // a surrogate
    EXPECT_EQ(valid_utf8_text("\xF4\x90\x80\x80"), replacements(4));          // above U+10FFFF
    EXPECT_EQ(valid_utf8_text("\xF5\xFF"), replacements(2));                  // begin nothing
    EXPECT_EQ(valid_utf8_text("\xC3"), replacements(1));                      // cut at the end
    EXPECT_EQ(valid_utf8_text("\xE2\x82"), replacements(2));                  // the same
    EXPECT_EQ(valid_utf8_text("\xE2\x82z"), replacements(2) + "z");           // cut before another
    EXPECT_EQ(valid_utf8_text("\xC3\xC3\xBC"), replacements(1) + "\xC3\xBC"); // the second one is whole
}
