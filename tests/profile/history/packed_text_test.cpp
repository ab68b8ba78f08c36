// SPDX-License-Identifier: Apache-2.0
#include "packed_text.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace zan::profile;

TEST(PackedText, TextsComeBack) {
    const std::string texts[] = {"", "a", std::string("\0\xff\n", 3), std::string(100'000, 'x'),
                                 R"({"a":1,"b":1,"c":1,"d":1,"e":1,"a":1,"b":1,"c":1,"d":1,"e":1})"};
    for (const std::string& text : texts)
        EXPECT_EQ(unpack_text(pack_text(text), static_cast<std::int64_t>(text.size())), text);
}

TEST(PackedText, ATextThatDoesNotGetShorterStaysAsItIs) {
    EXPECT_EQ(pack_text(""), "");
    EXPECT_EQ(pack_text("abc"), "abc");
    EXPECT_LT(pack_text(std::string(100'000, 'x')).size(), 200u);
}

TEST(PackedText, BytesThatAreNoSuchTextAreNone) {
    const std::string text(1000, 'x');
    const std::string packed = pack_text(text);
    EXPECT_EQ(unpack_text(packed, 999), std::nullopt);
    EXPECT_EQ(unpack_text(packed, 1001), std::nullopt);
    EXPECT_EQ(unpack_text(packed, 0), std::nullopt);
    EXPECT_EQ(unpack_text(packed, -1), std::nullopt);
    EXPECT_EQ(unpack_text("", 5), std::nullopt);
    EXPECT_EQ(unpack_text("no stream", 5), std::nullopt);
    EXPECT_EQ(unpack_text(packed.substr(0, packed.size() - 1), 1000), std::nullopt);
    std::string wrong = packed;
    wrong.back() = static_cast<char>(wrong.back() ^ 1); // of the checksum
    EXPECT_EQ(unpack_text(wrong, 1000), std::nullopt);
}

// A length takes memory, so it is believed no further than the bytes can go.
TEST(PackedText, ALengthThatNoSuchBytesHaveTakesNoMemory) {
    EXPECT_EQ(unpack_text("123", std::numeric_limits<std::int64_t>::max()), std::nullopt);
    EXPECT_EQ(unpack_text("123", std::int64_t(1) << 40), std::nullopt);
    const std::string text(10'000'000, '\0'); // the most that packing saves
    EXPECT_EQ(unpack_text(pack_text(text), 10'000'000), text);
}

} // namespace
