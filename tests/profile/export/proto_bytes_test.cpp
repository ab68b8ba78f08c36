// SPDX-License-Identifier: Apache-2.0
#include "proto_bytes.h"

#include <gtest/gtest.h>

namespace {

using namespace zan::profile;
using namespace std::string_literals;

// A tag is 8 · the field's number + the type of what follows: 0 a number, 1 eight bytes, 2 a length.
TEST(ProtoBytes, FieldsFollowTheirTags) {
    EXPECT_EQ(ProtoBytes().integer(1, 150).text(), "\x08\x96\x01"); // 150 is 22 + 128 · 1
    EXPECT_EQ(ProtoBytes().bytes(2, "abc").text(),
              "\x12\x03"
              "abc");
    EXPECT_EQ(ProtoBytes().real(3, 1.0).text(), "\x19\0\0\0\0\0\0\xf0\x3f"s);
    EXPECT_EQ(ProtoBytes().integer(16, 0).text(), "\x80\x01\0"s); // 8 · 16 is 128
}

TEST(ProtoBytes, MessagesAreTextsInFields) {
    const ProtoBytes inner = ProtoBytes().integer(1, 5);
    EXPECT_EQ(ProtoBytes().message(4, inner).text(), "\x22\x02\x08\x05");
    EXPECT_EQ(ProtoBytes().append(inner).text(), "\x08\x05");
}

TEST(ProtoBytes, NegativeNumbersHaveTenBytes) {
    EXPECT_EQ(ProtoBytes().integer(1, -1).text(), "\x08\xff\xff\xff\xff\xff\xff\xff\xff\xff\x01");
}

TEST(ProtoBytes, LongNumbersCanBeReplaced) {
    char bytes[long_varint];
    write_long_varint(bytes, 1000); // 1000 is 104 + 128 · 7
    EXPECT_EQ(std::string_view(bytes, sizeof bytes), "\xe8\x87\x80\x80\x80\x80\x80\x80\x80\0"s);
    write_long_varint(bytes, ~std::uint64_t{0});
    char usual[long_varint];
    EXPECT_EQ(write_varint(usual, ~std::uint64_t{0}) - usual, 10);
    EXPECT_EQ(std::string_view(bytes, sizeof bytes), std::string_view(usual, sizeof usual));
}

} // namespace
