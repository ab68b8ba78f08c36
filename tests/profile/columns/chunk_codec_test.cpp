// SPDX-License-Identifier: Apache-2.0
#include "chunk_codec.h"

#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "gtest/gtest.h"

using namespace zan::profile;

namespace {

std::vector<std::int64_t> unpacked(const PackedChunk& chunk, std::size_t count) {
    std::vector<std::int64_t> values(count);
    unpack_chunk(chunk.bytes, chunk.encoding, values);
    return values;
}

std::vector<std::int64_t> packed_and_unpacked(const std::vector<std::int64_t>& values) {
    ChunkPacker packer;
    return unpacked(packer.pack(values), values.size());
}

TEST(ChunkCodec, ZerosHaveNoBytes) {
    ChunkPacker packer;
    const PackedChunk chunk = packer.pack(std::vector<std::int64_t>(1000));
    EXPECT_EQ(chunk.encoding % 10, 0);
    EXPECT_EQ(chunk.bytes, "");
    EXPECT_EQ(unpacked(chunk, 1000), std::vector<std::int64_t>(1000));
}

TEST(ChunkCodec, StepsOfARampTakeAByte) {
    std::vector<std::int64_t> ramp;
    for (std::int64_t i = 0; i < 10'000; ++i)
        ramp.push_back(60 * i); // the difference 60 is 120 with the sign in its lowest bit: one byte
    ChunkPacker packer;
    const PackedChunk chunk = packer.pack(ramp);
    EXPECT_EQ(chunk.encoding, 1);
    EXPECT_LT(chunk.bytes.size(), 100u);
    EXPECT_EQ(unpacked(chunk, ramp.size()), ramp);
}

TEST(ChunkCodec, TwoLevelsInTurnArePlain) {
    // Plain, the bytes are 0 and 200; as differences they are three: 0, 200 and -200, two bytes each.
    std::vector<std::int64_t> values;
    std::mt19937 random(1);
    for (int i = 0; i < 10'000; ++i)
        values.push_back(random() % 2 == 0 ? 0 : 100);
    ChunkPacker packer;
    const PackedChunk chunk = packer.pack(values);
    EXPECT_EQ(chunk.encoding, 11);
    EXPECT_EQ(unpacked(chunk, values.size()), values);
}

TEST(ChunkCodec, NumbersThatABrowserCantSubtractArePlain) {
    const std::int64_t limit = std::int64_t{1} << 53;
    ChunkPacker packer;
    EXPECT_GE(packer.pack(std::vector<std::int64_t>{limit, limit + 1, limit + 2}).encoding, 10);
    EXPECT_GE(packer.pack(std::vector<std::int64_t>{-limit}).encoding, 10);
    std::vector<std::int64_t> ramp;
    for (std::int64_t i = 0; i < 1000; ++i)
        ramp.push_back(limit - 1 - 7 * i);
    EXPECT_LT(packer.pack(ramp).encoding, 10);
}

TEST(ChunkCodec, EachValueComesBack) {
    const std::int64_t least = std::numeric_limits<std::int64_t>::min();
    const std::int64_t most = std::numeric_limits<std::int64_t>::max();
    const std::vector<std::int64_t> edges{0, -1, 1, -128, 127, 128, 255, 256, least, most, 0, -1};
    EXPECT_EQ(packed_and_unpacked(edges), edges);
    std::mt19937_64 random(7);
    for (int bits = 1; bits <= 63; bits += 6) {
        std::vector<std::int64_t> values;
        for (int i = 0; i < 3000; ++i)
            values.push_back(static_cast<std::int64_t>(random()) >> (64 - bits));
        EXPECT_EQ(packed_and_unpacked(values), values) << bits;
    }
}

TEST(ChunkCodec, Base64IsThatOfTheStandard) {
    // RFC 4648, section 10.
    EXPECT_EQ(base64(""), "");
    EXPECT_EQ(base64("f"), "Zg==");
    EXPECT_EQ(base64("fo"), "Zm8=");
    EXPECT_EQ(base64("foo"), "Zm9v");
    EXPECT_EQ(base64("foobar"), "Zm9vYmFy");
    EXPECT_EQ(base64("\xff\xfe\xfd"), "//79");
}

// 400 values, the same eight over and over: the eight, and then matches of up to 258 values each. Without
// matches each value takes three bits, 150 bytes in all.
TEST(ChunkCodec, FewValuesThatRepeatArePackedAsRepeats) {
    constexpr std::int64_t period[] = {3, 99, 41, 7, 120, 64, 12, 85};
    std::vector<std::int64_t> values;
    for (std::size_t i = 0; i < 400; ++i)
        values.push_back(period[i % 8]);
    ChunkPacker packer;
    const PackedChunk chunk = packer.pack(values);
    EXPECT_LT(chunk.bytes.size(), 60u);
    EXPECT_EQ(unpacked(chunk, values.size()), values);
}

// The lowest bytes are noise, the ones above repeat every 1,000 values, the highest are 0: each is packed in
// its own way, as one stream.
TEST(ChunkCodec, PlanesOfEachKindComeBack) {
    std::mt19937_64 random(1);
    std::vector<std::int64_t> period(1000);
    for (std::int64_t& value : period)
        value = static_cast<std::int64_t>(random() % 256) << 8;
    std::vector<std::int64_t> values(100'000);
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = period[i % period.size()] + static_cast<std::int64_t>(random() % 128);
    ChunkPacker packer;
    const PackedChunk chunk = packer.pack(values);
    EXPECT_EQ(unpacked(chunk, values.size()), values);
    // The noise has 7 or 8 bits a value; the rest costs little.
    EXPECT_LT(chunk.bytes.size(), values.size() + values.size() / 10);
}

} // namespace
