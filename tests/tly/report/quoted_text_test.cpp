// SPDX-License-Identifier: Apache-2.0
// Texts in quotes, against the slow way of the tests.
#include "quoted_text.h"

#include <gtest/gtest.h>

#include <sstream>

#include "slow_report.h"

namespace {

std::string in_quotes(const std::string& text) {
    std::ostringstream stream;
    StreamTarget target(stream);
    TextBuffer buffer(target);
    append_quoted(buffer, text);
    buffer.flush();
    return stream.str();
}

TEST(QuotedText, SlashesAndControlBytesAndHighBytesAreEscaped) {
    EXPECT_EQ(in_quotes(""), R"("")");
    EXPECT_EQ(in_quotes("/a/b.cl"), R"("\/a\/b.cl")");
    EXPECT_EQ(in_quotes("\"\\\b\f\n\r\t\x1F ~"), R"("\"\\\b\f\n\r\u0009\u001F ~")");
    EXPECT_EQ(in_quotes("\x7F\x80\xFF"), "\"\x7F\\u0080\\u00FF\"");
    EXPECT_EQ(in_quotes(std::string(1, '\0')), R"("\u0000")");
}

// Texts are looked at in blocks of eight or four bytes, or byte by byte: each byte at each place of each
// length.
TEST(QuotedText, EachByteAtEachPlace) {
    for (std::size_t length = 1; length <= 18; ++length) {
        for (std::size_t place = 0; place < length; ++place) {
            for (int byte = 0; byte < 256; ++byte) {
                std::string text(length, 'x');
                text[place] = static_cast<char>(byte);
                ASSERT_EQ(in_quotes(text), slow_quoted(text));
            }
        }
    }
}

TEST(QuotedText, TextsLongerThanAPieceAndTheBuffer) {
    for (const std::size_t length : {4095u, 4096u, 4097u, 8192u, 300'000u}) {
        std::string text(length, 'x');
        EXPECT_TRUE(in_quotes(text) == slow_quoted(text)) << length;
        text.back() = '/';
        EXPECT_TRUE(in_quotes(text) == slow_quoted(text)) << length;
    }
    const std::string escaped(100'000, '\x01'); // six bytes each
    EXPECT_TRUE(in_quotes(escaped) == slow_quoted(escaped));
}

} // namespace
