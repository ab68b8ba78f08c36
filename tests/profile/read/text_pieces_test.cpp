// SPDX-License-Identifier: Apache-2.0
#include "text_pieces.h"

#include <gtest/gtest.h>

#include <system_error>

using namespace zan::profile;

namespace {

constexpr std::size_t no_limit = std::string::npos;

TEST(TextPieces, CharactersComeOneAfterTheOtherOverAllPieces) {
    MemorySource source("abc", 2);
    TextPieces text(source, no_limit);
    EXPECT_EQ(text.Tell(), 0u);
    EXPECT_EQ(text.Take(), 'a');
    EXPECT_EQ(text.Peek(), 'b');
    EXPECT_EQ(text.Take(), 'b');
    EXPECT_FALSE(text.at_end());
    EXPECT_EQ(text.Tell(), 2u);
    EXPECT_EQ(text.Take(), 'c');
    EXPECT_TRUE(text.at_end());
}

TEST(TextPieces, AfterTheEndThereAreZerosThatAreNotCounted) {
    MemorySource source("a");
    TextPieces text(source, no_limit);
    text.Take();
    EXPECT_EQ(text.Take(), '\0');
    EXPECT_EQ(text.Take(), '\0');
    EXPECT_EQ(text.Tell(), 1u);
}

TEST(TextPieces, AZeroByteOfTheTextIsNotItsEnd) {
    MemorySource source(std::string_view("\0b", 2));
    TextPieces text(source, no_limit);
    EXPECT_EQ(text.Peek(), '\0');
    EXPECT_FALSE(text.at_end());
    EXPECT_EQ(text.Take(), '\0');
    EXPECT_EQ(text.Take(), 'b');
    EXPECT_TRUE(text.at_end());
}

TEST(TextPieces, BlanksAreSkippedOverAllPieces) {
    MemorySource source(" \n\t\r          x", 3);
    TextPieces text(source, no_limit);
    text.skip_blanks();
    EXPECT_EQ(text.Tell(), 14u);
    EXPECT_EQ(text.Peek(), 'x');
}

TEST(TextPieces, BytesCanBeTakenFromThePiece) {
    MemorySource source("abcdef", 4);
    TextPieces text(source, no_limit);
    text.Take();
    EXPECT_EQ(std::string(text.position()), "bcd"); // a zero byte is after the piece
    text.advance(text.position() + 3);
    EXPECT_EQ(text.Tell(), 4u);
    EXPECT_EQ(text.Take(), 'e');
}

TEST(TextPieces, ATextOverTheLimitEnds) {
    const std::string bytes(10, 'a');
    MemorySource source(bytes, 1);
    TextPieces text(source, 4);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(text.Take(), 'a');
    EXPECT_EQ(text.Take(), '\0');
    EXPECT_TRUE(text.is_over_limit());
}

TEST(TextPieces, AMarkBeginsTheLimitAgain) {
    const std::string bytes(10, 'a');
    MemorySource source(bytes, 1);
    TextPieces text(source, 4);
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(text.Take(), 'a');
        text.mark();
    }
    EXPECT_TRUE(text.at_end());
    EXPECT_FALSE(text.is_over_limit());
}

class FailingSource final : public ByteSource {
  public:
    std::size_t read(char*, std::size_t) override { throw std::system_error(EIO, std::generic_category()); }
};

TEST(TextPieces, AFailureEndsTheText) {
    FailingSource source;
    TextPieces text(source, no_limit);
    EXPECT_EQ(text.Take(), '\0');
    EXPECT_TRUE(text.at_end());
    EXPECT_EQ(text.failure(), "Input/output error");
}

} // namespace
