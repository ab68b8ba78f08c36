// SPDX-License-Identifier: Apache-2.0
// Pieces that a buffer joins.
#include "text_buffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

// Keeps the bytes, and refuses all calls after the first `limit`.
class KeptBytes final : public ByteTarget {
  public:
    explicit KeptBytes(std::size_t limit = 1000) : m_limit(limit) {}
    bool write(const char* bytes, std::size_t size) override {
        writes.emplace_back(bytes, size);
        return writes.size() <= m_limit;
    }

    std::vector<std::string> writes;

  private:
    std::size_t m_limit;
};

void append(TextBuffer& buffer, const std::string& text) {
    buffer.advance(std::copy(text.begin(), text.end(), buffer.reserve(text.size())));
}

TEST(TextBuffer, PiecesAreOneWrite) {
    KeptBytes target;
    TextBuffer buffer(target);
    buffer.append("{\n");
    append(buffer, "text");
    buffer.append_blanks(3);
    buffer.append("}");
    EXPECT_TRUE(target.writes.empty());
    buffer.flush();
    EXPECT_EQ(target.writes, std::vector<std::string>{"{\ntext   }"});
    EXPECT_TRUE(buffer.good());
}

TEST(TextBuffer, BlanksAreAsManyAsWanted) {
    for (const std::size_t count : {0u, 1u, 63u, 64u, 65u, 128u, 1000u}) {
        KeptBytes target;
        TextBuffer buffer(target);
        buffer.append_blanks(count);
        buffer.append("|");
        buffer.flush();
        EXPECT_EQ(target.writes, std::vector<std::string>{std::string(count, ' ') + "|"});
    }
}

TEST(TextBuffer, WhatHasNoRoomComesAfterAFlush) {
    KeptBytes target;
    TextBuffer buffer(target);
    const std::string most(TextBuffer::capacity - 1, 'a');
    append(buffer, most);
    append(buffer, "b");
    EXPECT_TRUE(target.writes.empty());
    buffer.append("cd");
    buffer.flush();
    EXPECT_EQ(target.writes, (std::vector<std::string>{most + "b", "cd"}));
}

TEST(TextBuffer, WhatWasWrittenSinceAMarkIsThereUntilAFlush) {
    KeptBytes target;
    TextBuffer buffer(target);
    append(buffer, "before");
    const TextBuffer::Mark mark = buffer.mark();
    EXPECT_EQ(buffer.since(mark), "");
    append(buffer, "since");
    EXPECT_EQ(buffer.since(mark), "since");
    buffer.flush();
    append(buffer, "since, and as long");
    EXPECT_EQ(buffer.since(mark), "");
}

TEST(TextBuffer, AfterARefusalNothingIsWritten) {
    KeptBytes target(1);
    TextBuffer buffer(target);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(buffer.good(), i < 2);
        buffer.append("x");
        buffer.flush();
    }
    EXPECT_EQ(target.writes.size(), 2u);
}

} // namespace
