// SPDX-License-Identifier: Apache-2.0
#include "sample_block.h"

#include <gtest/gtest.h>

using namespace zan::profile;

namespace {

NodeArrays arrays_of(std::vector<long long> stamps, std::vector<long long> cycles) {
    NodeArrays arrays;
    arrays[Counts::timestamps] = SampleList<long long>(stamps);
    arrays[Counts::cycles] = SampleList<long long>(cycles);
    return arrays;
}

TEST(SampleBlock, SamplesLastFromTheOneBefore) {
    const NodeArrays arrays = arrays_of({10, 30, 25}, {5, 0, -1});
    TimesReader reader(arrays, 4, nullptr);
    SampleTimes times;
    ASSERT_TRUE(reader.next(times));
    EXPECT_EQ(times.size, 3U);
    EXPECT_EQ(times.begin[0], 4);
    EXPECT_EQ(times.end[0], 10);
    EXPECT_EQ(times.begin[1], 10);
    EXPECT_EQ(times.begin[2], 30);
    EXPECT_EQ(times.end[2], 25);
    EXPECT_EQ(times.cycles[0], 5.0);
    EXPECT_FALSE(is_known(times.cycles[1]));
    EXPECT_FALSE(is_known(times.cycles[2]));
    EXPECT_FALSE(reader.next(times));
}

TEST(SampleBlock, CyclesOfMoreThanTheSamplesAreUnknown) {
    const NodeArrays arrays = arrays_of({10, 30}, {5, 5, 5});
    TimesReader reader(arrays, 0, nullptr);
    SampleTimes times;
    ASSERT_TRUE(reader.next(times));
    EXPECT_FALSE(is_known(times.cycles[0]));
}

// 700 samples come in three pieces, and each value stands beside its sample.
TEST(SampleBlock, LongListsComeInPieces) {
    std::vector<long long> stamps;
    BlockNode block;
    for (long long i = 0; i < 700; ++i) {
        stamps.push_back(i + 1);
        block.arrays[Counts::valid].push_back(i);
        block.arrays[Rates::bandwidth].push_back(static_cast<float>(i) + 0.5f);
    }
    const NodeArrays arrays = arrays_of(stamps, stamps);
    TimesReader times_reader(arrays, 0, nullptr);
    BlockReader reader(block, SharedType::none, 700);
    SampleTimes times;
    SampleBlock samples;
    long long count = 0;
    int num_pieces = 0;
    for (; times_reader.next(times); ++num_pieces) {
        reader.next(times, samples);
        for (std::size_t i = 0; i < times.size; ++i, ++count) {
            ASSERT_EQ(samples.valid[i], static_cast<double>(count));
            ASSERT_EQ(samples.bandwidth[i], static_cast<double>(count) + 0.5);
            ASSERT_FALSE(is_known(samples.stall[i]));
        }
    }
    EXPECT_EQ(count, 700);
    EXPECT_EQ(num_pieces, 3);
}

SampleBlock read_one(const BlockNode& block, SharedType shared,
                     const std::vector<unsigned char>* active = nullptr) {
    const NodeArrays arrays = arrays_of({10, 20}, {10, 10});
    TimesReader times_reader(arrays, 0, active);
    BlockReader reader(block, shared, 2);
    SampleTimes times;
    SampleBlock samples;
    times_reader.next(times);
    reader.next(times, samples);
    return samples;
}

BlockNode full_block(const std::string& memory_type) {
    BlockNode block;
    block.memory_type = memory_type;
    for (const Counts counts : {Counts::valid, Counts::stall, Counts::idle, Counts::requests, Counts::hits,
                                Counts::unaligned, Counts::max_fill})
        block.arrays[counts] = SampleList<long long>{1, 2};
    for (const Rates rates : {Rates::fill, Rates::bandwidth, Rates::efficiency, Rates::burst})
        block.arrays[rates] = SampleList<float>{1.0f, 2.0f};
    return block;
}

// Of valid, stall, idle, requests, efficiency, bandwidth and hits: 1 if the second sample has 2, 0 if it is
// missing.
std::string known_in(const SampleBlock& samples) {
    std::string text;
    for (const SampleValues* values : {&samples.valid, &samples.stall, &samples.idle, &samples.requests,
                                       &samples.efficiency, &samples.bandwidth, &samples.hits})
        text += (*values)[1] == 2.0 ? '1' : is_known((*values)[1]) ? '?' : '0';
    return text;
}

TEST(SampleBlock, SharedCountersMeasureOneOfFour) {
    const BlockNode global = full_block("__global");
    EXPECT_EQ(known_in(read_one(global, SharedType::none)), "1111111");
    EXPECT_EQ(known_in(read_one(global, SharedType::valid)), "1000011");
    EXPECT_EQ(known_in(read_one(global, SharedType::stall)), "0100011");
    EXPECT_EQ(known_in(read_one(global, SharedType::idle)), "0010011");
    EXPECT_EQ(known_in(read_one(global, SharedType::requests)), "0001111");
    const BlockNode channel = full_block("");
    EXPECT_EQ(known_in(read_one(channel, SharedType::stall)), "0100001");
    EXPECT_EQ(known_in(read_one(channel, SharedType::requests)), "0001111");
}

TEST(SampleBlock, SamplesWithoutWorkAreMissing) {
    const std::vector<unsigned char> active = {1, 0};
    const SampleBlock samples = read_one(full_block("__global"), SharedType::none, &active);
    EXPECT_EQ(samples.valid[0], 1.0);
    EXPECT_EQ(known_in(samples), "0000000");
    EXPECT_EQ(samples.num_left_out, 0U);
}

TEST(SampleBlock, ABurstArrayWithoutAnEntryForEachSampleDoesntLineUp) {
    BlockNode block = full_block("__global");
    EXPECT_EQ(read_one(block, SharedType::none).burst[1], 2.0);
    block.arrays[Rates::burst] = SampleList<float>{1.0f};
    EXPECT_FALSE(is_known(read_one(block, SharedType::none).burst[0]));
}

TEST(SampleBlock, InfiniteBandwidthsAreLeftOut) {
    BlockNode block = full_block("__global");
    block.arrays[Rates::bandwidth] = SampleList<float>{std::numeric_limits<float>::infinity(), 3.0f};
    const SampleBlock samples = read_one(block, SharedType::none);
    EXPECT_FALSE(is_known(samples.bandwidth[0]));
    EXPECT_EQ(samples.bandwidth[1], 3.0);
    EXPECT_EQ(samples.num_left_out, 1U);
}

TEST(SampleBlock, PortsCountInAllSamples) {
    NodeArrays arrays = arrays_of({10, 20}, {10, 10});
    arrays[Rates::bandwidth] = SampleList<float>{4.0f};
    const std::vector<unsigned char> active = {0, 0};
    TimesReader times_reader(arrays, 0, &active);
    SampleTimes times;
    times_reader.next(times);
    const PortReader reader(arrays);
    SampleValues bandwidth;
    reader.next(times, Rates::bandwidth, bandwidth);
    EXPECT_EQ(bandwidth[0], 4.0);
    EXPECT_FALSE(is_known(bandwidth[1])); // a shorter array
    SampleValues burst;
    reader.next(times, Rates::read_burst, burst);
    EXPECT_FALSE(is_known(burst[0]));
}

} // namespace
