// SPDX-License-Identifier: Apache-2.0
#include "printable.h"

#include <gtest/gtest.h>
#include <utf8proc.h>

#include <set>

namespace {

using namespace zan::tool;

// A character as UTF-8.
std::string utf8_of(int code) {
    utf8proc_uint8_t bytes[4];
    const auto size = utf8proc_encode_char(code, bytes);
    return {reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size)};
}

bool controls_direction(int code) {
    static const std::set<int> marks = {0x061C, 0x200E, 0x200F}; // they have a direction like letters
    static const std::set<int> classes = {
        UTF8PROC_BIDI_CLASS_LRE, UTF8PROC_BIDI_CLASS_RLE, UTF8PROC_BIDI_CLASS_LRO,
        UTF8PROC_BIDI_CLASS_RLO, UTF8PROC_BIDI_CLASS_PDF, UTF8PROC_BIDI_CLASS_LRI,
        UTF8PROC_BIDI_CLASS_RLI, UTF8PROC_BIDI_CLASS_FSI, UTF8PROC_BIDI_CLASS_PDI};
    return marks.contains(code) || classes.contains(utf8proc_get_property(code)->bidi_class);
}

bool is_hidden(int code) {
    const auto category = utf8proc_category(code);
    return category == UTF8PROC_CATEGORY_CC || category == UTF8PROC_CATEGORY_ZL ||
           category == UTF8PROC_CATEGORY_ZP || controls_direction(code);
}

TEST(Printable, OrdinaryTextStaysAsItIs) {
    EXPECT_EQ(printable(""), "");
    EXPECT_EQ(printable("a b~\\"), "a b~\\");
    EXPECT_EQ(printable("Größe 帯域 😀 é"), "Größe 帯域 😀 é");
}

TEST(Printable, ControlCharactersAreShownByTheirNumber) {
    EXPECT_EQ(printable(std::string("\0\x1b\x1f\x7f\n", 5)), "⟨U+0000⟩⟨U+001B⟩⟨U+001F⟩⟨U+007F⟩⟨U+000A⟩");
    EXPECT_EQ(printable("\xC2\x9B"
                        "2J"),
              "⟨U+009B⟩2J"); // a C1 control that begins commands
    EXPECT_EQ(in_quotes("a\tb"), "'a⟨U+0009⟩b'");
}

TEST(Printable, CharactersThatTurnTheDirectionAreShownByTheirNumber) {
    EXPECT_EQ(printable("a\xE2\x80\xAE"
                        "b\xE2\x81\xA6"),
              "a⟨U+202E⟩b⟨U+2066⟩");
}

// All of Unicode, compared with the tables of libutf8proc.
TEST(Printable, ExactlyTheHiddenCharactersOfUnicodeAreShownByTheirNumber) {
    int hidden = 0;
    for (int code = 0; code <= 0x10FFFF; ++code) {
        if (code >= 0xD800 && code <= 0xDFFF)
            continue; // no characters
        const std::string text = utf8_of(code);
        ASSERT_EQ(printable(text) != text, is_hidden(code)) << std::hex << code;
        hidden += is_hidden(code) ? 1 : 0;
    }
    EXPECT_EQ(hidden, 32 + 1 + 32 + 2 + 12); // C0, DEL, C1, separators, directions
}

TEST(Printable, BytesThatAreNoUtf8AreShownByTheirNumber) {
    EXPECT_EQ(printable("a\xFF"
                        "b"),
              "a\\xFFb");
    EXPECT_EQ(printable("\xC3"), "\\xC3");                   // cut
    EXPECT_EQ(printable("\xC0\xAF"), "\\xC0\\xAF");          // "/" in more bytes than it takes
    EXPECT_EQ(printable("\xED\xA0\x80"), "\\xED\\xA0\\x80"); // a surrogate
    EXPECT_EQ(printable("\x9B"), "\\x9B"); // the byte alone, which some terminals take for C1
}

TEST(DisplayWidth, CountsColumnsOfATerminal) {
    EXPECT_EQ(display_width(""), 0u);
    EXPECT_EQ(display_width("abc"), 3u);
    EXPECT_EQ(display_width("Größe"), 5u);
    EXPECT_EQ(display_width("帯域"), 4u);      // wide
    EXPECT_EQ(display_width("e\xCC\x81"), 1u); // a letter and an accent
    EXPECT_EQ(display_width("⟨U+202E⟩"), 8u);
    EXPECT_EQ(display_width("a\xFF"), 2u);
}

TEST(DisplayWidth, ABeginningFitsInWholeCharacters) {
    EXPECT_EQ(fitting("abc", 2), "ab");
    EXPECT_EQ(fitting("abc", 3), "abc");
    EXPECT_EQ(fitting("abc", 9), "abc");
    EXPECT_EQ(fitting("abc", 0), "");
    EXPECT_EQ(fitting("帯域", 3), "帯");
    EXPECT_EQ(fitting("e\xCC\x81x", 1), "e\xCC\x81"); // the accent belongs to the letter
}

TEST(ValidUtf8, EachBrokenByteIsReplaced) {
    EXPECT_EQ(valid_utf8("a\xFFü\xC3"), "a\xEF\xBF\xBDü\xEF\xBF\xBD");
    EXPECT_EQ(valid_utf8("\x1b"), "\x1b");
}

} // namespace
