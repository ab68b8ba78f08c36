// SPDX-License-Identifier: Apache-2.0
#include "sample_buffer.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

using Buffer = SampleBuffer<long long>;
using Values = std::vector<long long>;

template <class T>
std::vector<T> values_of(const SampleBuffer<T>& buffer) {
    std::vector<T> values(buffer.size());
    buffer.read(0, buffer.size(), values.data());
    for (std::size_t i = 0; i < values.size(); ++i)
        EXPECT_EQ(buffer[i], values[i]) << i;
    return values;
}

void append(Buffer& buffer, const Values& values) {
    buffer.append(values.data(), values.size());
}

TEST(SampleBuffer, StartsEmpty) {
    const Buffer buffer;
    EXPECT_EQ(buffer.size(), 0u);
    EXPECT_EQ(values_of(buffer), Values());
}

TEST(SampleBuffer, ValuesThatFit32BitsTakeFourBytes) {
    Buffer buffer;
    append(buffer, {1, INT_MAX, INT_MIN});
    const auto* const stored = static_cast<const std::int32_t*>(buffer.data());
    EXPECT_EQ(stored[1], INT_MAX);
    EXPECT_EQ(stored[2], INT_MIN);
    EXPECT_EQ(values_of(buffer), (Values{1, INT_MAX, INT_MIN}));
}

TEST(SampleBuffer, ValuesThatFitFewBytesTakeAsFew) {
    Buffer buffer;
    append(buffer, {127, -128, 0});
    EXPECT_EQ(static_cast<const std::int8_t*>(buffer.data())[1], -128);
    EXPECT_EQ(values_of(buffer), (Values{127, -128, 0}));
    append(buffer, {128});
    EXPECT_EQ(static_cast<const std::int16_t*>(buffer.data())[1], -128);
    EXPECT_EQ(static_cast<const std::int16_t*>(buffer.data())[3], 128);
    append(buffer, {32767, -32768});
    EXPECT_EQ(static_cast<const std::int16_t*>(buffer.data())[5], -32768);
    buffer.push_back(-32769);
    EXPECT_EQ(static_cast<const std::int32_t*>(buffer.data())[6], -32769);
    EXPECT_EQ(values_of(buffer), (Values{127, -128, 0, 128, 32767, -32768, -32769}));
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

TEST(SampleBuffer, TheFirstValueThatDoesNotFitWidensAll) {
    for (const long long wide : {INT_MAX + 1LL, INT_MIN - 1LL, LLONG_MAX, LLONG_MIN}) {
        Buffer buffer;
        append(buffer, {1, -2, 3});
        append(buffer, {4, wide, 5});
        EXPECT_EQ(values_of(buffer), (Values{1, -2, 3, 4, wide, 5}));
        EXPECT_EQ(static_cast<const long long*>(buffer.data())[4], wide);
        buffer.push_back(6);
        EXPECT_EQ(values_of(buffer), (Values{1, -2, 3, 4, wide, 5, 6}));
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
    std::uint32_t bits = 0;
    std::memcpy(&bits, floats.data(), sizeof bits);
    EXPECT_EQ(bits, 0x8000'0000u);
    SampleBuffer<int> ints;
    ints.push_back(INT_MIN);
    EXPECT_EQ(values_of(ints), (std::vector<int>{INT_MIN}));
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
