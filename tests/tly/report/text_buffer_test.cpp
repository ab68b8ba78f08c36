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

// 288 KiB have no room for more: 256 leave. The next 200 have room after the other 32 and 2 bytes, but 200
// more only if all of those leave, as none is past the next multiple.
TEST(TextBuffer, WritesEndAtMultiplesOfTheirSize) {
    constexpr std::size_t kib = 1024;
    KeptBytes target;
    TextBuffer buffer(target);
    std::string text(288 * kib, 'a');
    append(buffer, text);
    EXPECT_TRUE(target.writes.empty());
    buffer.append("bc");
    ASSERT_EQ(target.writes.size(), 1u);
    EXPECT_EQ(target.writes[0].size(), 256 * kib);
    const std::string more(200 * kib, 'd');
    append(buffer, more);
    append(buffer, more);
    buffer.flush();
    std::vector<std::size_t> sizes;
    std::string joined;
    for (const std::string& written : target.writes) {
        sizes.push_back(written.size());
        joined += written;
    }
    EXPECT_EQ(sizes, (std::vector<std::size_t>{256 * kib, 232 * kib + 2, 200 * kib}));
    EXPECT_EQ(joined, text + "bc" + more + more);
}

// 255 KiB end before the first multiple, so all of them leave; then one KiB is up to it.
TEST(TextBuffer, AWriteBeforeTheFirstMultipleIsMadeUpForByTheNext) {
    constexpr std::size_t kib = 1024;
    KeptBytes target;
    TextBuffer buffer(target);
    append(buffer, std::string(255 * kib, 'a'));
    append(buffer, std::string(100 * kib, 'b'));
    append(buffer, std::string(250 * kib, 'c'));
    ASSERT_EQ(target.writes.size(), 2u);
    EXPECT_EQ(target.writes[0], std::string(255 * kib, 'a'));
    EXPECT_EQ(target.writes[1], std::string(100 * kib, 'b'));
    append(buffer, std::string(38 * kib, 'd'));
    append(buffer, std::string(1, 'e'));
    ASSERT_EQ(target.writes.size(), 3u);
    EXPECT_EQ(target.writes[2].size(), 157 * kib); // 255 + 100 + 157 are 512
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
