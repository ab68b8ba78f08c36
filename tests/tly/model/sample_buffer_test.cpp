// SPDX-License-Identifier: Apache-2.0
#include "sample_buffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <climits>

namespace {

using Buffer = SampleBuffer<long long>;
using Block = BufferBlock<long long>;
using Values = std::vector<long long>;

template <class Storage>
auto values_of(const Storage& buffer) {
    std::vector<decltype(buffer[0])> values(buffer.size());
    buffer.read(0, buffer.size(), values.data());
    for (std::size_t i = 0; i < values.size(); ++i)
        EXPECT_EQ(buffer[i], values[i]) << i;
    return values;
}

void append(Buffer& buffer, const Values& values) {
    buffer.append(values.data(), values.size());
}

void append(Block& block, const Values& values) {
    block.append(values.data(), values.size(), 4);
}

TEST(SampleBuffer, StartsEmpty) {
    const Buffer buffer;
    EXPECT_EQ(buffer.size(), 0u);
    EXPECT_EQ(values_of(buffer), Values());
}

TEST(BufferBlock, ValuesThatFit32BitsTakeFourBytes) {
    Block block;
    append(block, {1, INT_MAX, INT_MIN});
    const auto* const stored = static_cast<const std::int32_t*>(block.data());
    EXPECT_EQ(stored[1], INT_MAX);
    EXPECT_EQ(stored[2], INT_MIN);
    EXPECT_EQ(values_of(block), (Values{1, INT_MAX, INT_MIN}));
}

TEST(BufferBlock, ValuesThatFitFewBytesTakeAsFew) {
    Block block;
    append(block, {127, -128, 0});
    EXPECT_EQ(static_cast<const std::int8_t*>(block.data())[1], -128);
    EXPECT_EQ(values_of(block), (Values{127, -128, 0}));
    append(block, {128});
    EXPECT_EQ(static_cast<const std::int16_t*>(block.data())[1], -128);
    EXPECT_EQ(static_cast<const std::int16_t*>(block.data())[3], 128);
    append(block, {32767, -32768});
    EXPECT_EQ(static_cast<const std::int16_t*>(block.data())[5], -32768);
    append(block, {-32769});
    EXPECT_EQ(static_cast<const std::int32_t*>(block.data())[6], -32769);
    EXPECT_EQ(values_of(block), (Values{127, -128, 0, 128, 32767, -32768, -32769}));
}

// From each width to each wider one, with a length at which the storage grows along.
TEST(SampleBuffer, EachWidthBecomesEachOther) {
    for (int from = 0; from < 63; ++from) {
        for (int to = from + 1; to < 63; ++to) {
            for (const long long sign : {1, -1}) {
                Values values;
                for (long long i = 0; i < 8; ++i)
                    values.push_back(sign * (1LL << from) - i % 2);
                Buffer buffer;
                append(buffer, values);
                const Values more = {5, -sign * (1LL << to), -6};
                append(buffer, more);
                buffer.append_zeros(2);
                values.insert(values.end(), more.begin(), more.end());
                values.resize(values.size() + 2);
                ASSERT_EQ(values_of(buffer), values) << from << " to " << to;
            }
        }
    }
}

TEST(BufferBlock, TheFirstValueThatDoesNotFitWidensAll) {
    for (const long long wide : {INT_MAX + 1LL, INT_MIN - 1LL, LLONG_MAX, LLONG_MIN}) {
        Block block;
        append(block, {1, -2, 3});
        append(block, {4, wide, 5});
        EXPECT_EQ(values_of(block), (Values{1, -2, 3, 4, wide, 5}));
        EXPECT_EQ(static_cast<const long long*>(block.data())[4], wide);
        append(block, {6});
        EXPECT_EQ(values_of(block), (Values{1, -2, 3, 4, wide, 5, 6}));
    }
}

TEST(SampleBuffer, ZerosAreAppendedInTheWidthOfTheOthers) {
    Buffer narrow;
    append(narrow, {7});
    narrow.append_zeros(3);
    narrow.append_zeros(0);
    append(narrow, {8});
    EXPECT_EQ(values_of(narrow), (Values{7, 0, 0, 0, 8}));
    Buffer wide;
    append(wide, {LLONG_MAX});
    wide.append_zeros(2);
    append(wide, {8});
    EXPECT_EQ(values_of(wide), (Values{LLONG_MAX, 0, 0, 8}));
}

TEST(SampleBuffer, ValuesAreReadFromAnyPlace) {
    Buffer buffer;
    append(buffer, {1, 2, 3, 4});
    Values two(2);
    buffer.read(1, 2, two.data());
    EXPECT_EQ(two, (Values{2, 3}));
    append(buffer, {LLONG_MIN});
    buffer.read(3, 2, two.data());
    EXPECT_EQ(two, (Values{4, LLONG_MIN}));
    buffer.read(5, 0, nullptr);
}

TEST(SampleBuffer, ACutBufferGoesOnWithItsFirstValues) {
    Buffer buffer;
    append(buffer, {1, 2, LLONG_MAX});
    buffer.cut(1);
    append(buffer, {9});
    EXPECT_EQ(values_of(buffer), (Values{1, 9}));
    buffer.cut(0);
    EXPECT_EQ(buffer.size(), 0u);
}

TEST(SampleBuffer, FloatsAndIntsKeepTheirBits) {
    SampleBuffer<float> floats;
    floats.push_back(-0.0f);
    floats.push_back(1.5f);
    EXPECT_EQ(values_of(floats), (std::vector<float>{-0.0f, 1.5f}));
    EXPECT_EQ(std::bit_cast<std::uint32_t>(floats[0]), 0x8000'0000u);
    SampleBuffer<int> ints;
    ints.push_back(INT_MIN);
    EXPECT_EQ(values_of(ints), (std::vector<int>{INT_MIN}));
}

// A block that has begun with values of one byte goes on with wider ones, and the next one starts anew.
TEST(SampleBuffer, EachBlockHasItsOwnWidth) {
    constexpr std::size_t size = Block::max_size;
    for (const std::size_t piece : {std::size_t{1}, std::size_t{3}, std::size_t{64}, size, 3 * size}) {
        Values expected;
        for (std::size_t i = 0; i < 3 * size + 5; ++i)
            expected.push_back(i < size       ? static_cast<long long>(i % 100)
                               : i < 2 * size ? -40'000 - static_cast<long long>(i)
                                              : LLONG_MIN + static_cast<long long>(i));
        Buffer buffer;
        for (std::size_t begin = 0; begin < expected.size(); begin += piece)
            buffer.append(expected.data() + begin, std::min(piece, expected.size() - begin));
        ASSERT_EQ(values_of(buffer), expected);
        Values middle(size + 2);
        buffer.read(size - 1, middle.size(), middle.data());
        EXPECT_EQ(middle, Values(expected.begin() + size - 1, expected.begin() + 2 * size + 1));
    }
}

TEST(SampleBuffer, ZerosFillManyBlocks) {
    constexpr std::size_t size = Block::max_size;
    Buffer buffer;
    buffer.push_back(LLONG_MAX);
    buffer.append_zeros(2 * size);
    buffer.push_back(7);
    Values expected(2 * size + 2);
    expected.front() = LLONG_MAX;
    expected.back() = 7;
    EXPECT_EQ(values_of(buffer), expected);
}

// At the last value of a block, the first of the next, and in between.
TEST(SampleBuffer, IsCutInAnyBlock) {
    constexpr std::size_t size = Block::max_size;
    for (const std::size_t kept :
         {std::size_t{0}, std::size_t{1}, size - 1, size, size + 1, 2 * size, 2 * size + 9}) {
        Buffer buffer;
        Values expected;
        for (std::size_t i = 0; i < 2 * size + 9; ++i)
            expected.push_back(static_cast<long long>(i * i));
        append(buffer, expected);
        buffer.cut(kept);
        expected.resize(kept);
        ASSERT_EQ(values_of(buffer), expected);
        const Values more(size + 1, -3);
        append(buffer, more);
        expected.insert(expected.end(), more.begin(), more.end());
        ASSERT_EQ(values_of(buffer), expected) << kept;
    }
}

TEST(SampleBuffer, GrowsToManyValues) {
    Buffer buffer;
    Values expected;
    for (long long i = 0; i < 10'000; ++i) {
        expected.push_back(i == 5'000 ? LLONG_MAX : i * i);
        buffer.push_back(expected.back());
    }
    EXPECT_EQ(values_of(buffer), expected);
}

TEST(SampleBuffer, MoreThanMemoryHoldsIsRefusedAndChangesNothing) {
    SampleBuffer<int> buffer;
    buffer.push_back(1);
    EXPECT_THROW(buffer.append_zeros(std::numeric_limits<std::size_t>::max() / 2), std::bad_alloc);
    EXPECT_EQ(values_of(buffer), (std::vector<int>{1}));
}

} // namespace
