// SPDX-License-Identifier: Apache-2.0
#include "json_characters.h"

#include <gtest/gtest.h>

#include <string>

using namespace zan::profile;

namespace {

// With the readable bytes that the functions ask for.
std::string padded(const std::string& text) {
    return text + std::string(16, '\0');
}

TEST(JsonCharacters, TheFirstOfEightIsInTheLowestByte) {
    EXPECT_EQ(next_characters("abcdefgh"), 0x68'67'66'65'64'63'62'61u);
}

TEST(JsonCharacters, BlanksEndAtAnythingElse) {
    for (const std::size_t count : std::initializer_list<std::size_t>{0, 1, 7, 8, 9, 30}) {
        const std::string text = padded(std::string(count, ' ') + "\n\t\r \"");
        EXPECT_EQ(skip_json_blanks(text.data()) - text.data(), static_cast<std::ptrdiff_t>(count) + 4);
        const std::string end = padded(std::string(count, ' '));
        EXPECT_EQ(skip_json_blanks(end.data()) - end.data(), static_cast<std::ptrdiff_t>(count));
    }
}

// Each byte, at each place of a word, with others that end a plain text after it.
TEST(JsonCharacters, PlainAreAllOfASCIIButQuotesBackslashesAndControls) {
    for (int byte = 0; byte < 256; ++byte) {
        const bool is_plain = byte >= 0x20 && byte < 0x80 && byte != '"' && byte != '\\';
        for (std::size_t before = 0; before < 17; ++before) {
            const std::string text =
                padded(std::string(before, 'a') + static_cast<char>(byte) + "b\"\\\x01\x80");
            EXPECT_EQ(plain_length(text.data()), before + (is_plain ? 2 : 0)) << byte;
        }
    }
}

} // namespace
