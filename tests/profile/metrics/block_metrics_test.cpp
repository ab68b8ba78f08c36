// SPDX-License-Identifier: Apache-2.0
// Each formula of docs/metrics.md for a block, with values worked out by hand. A cycle is a nanosecond unless
// a test has another clock.
#include "block_metrics.h"

#include <gtest/gtest.h>

#include <limits>

#include "stream_report.h"

using namespace zan::profile;

namespace {

const std::vector<long long> two_samples = {100, 300};

BlockSummary summarized_block(const StreamBlock& block, const std::vector<long long>& cycles,
                              const std::string& clock = "1000.0") {
    return summary_of_block(block, cycles, clock).kernels.at(0).blocks.at(0);
}

Value metric_of(const StreamBlock& block, const std::vector<long long>& cycles, Metric metric) {
    return summarized_block(block, cycles).metrics[metric];
}

TEST(BlockMetrics, SharesAreOfTheCycles) {
    const StreamBlock block{.valid = {50, 150}, .stall = {20, 100}, .idle = {30, 40}};
    EXPECT_DOUBLE_EQ(known(metric_of(block, two_samples, Metric::valid)), 50.0); // 200 of 400
    EXPECT_DOUBLE_EQ(known(metric_of(block, two_samples, Metric::stall)), 30.0); // 120 of 400
    EXPECT_DOUBLE_EQ(known(metric_of(block, two_samples, Metric::idle)), 17.5);  // 70 of 400
    EXPECT_DOUBLE_EQ(known(summarized_block(block, two_samples).max_valid), 50.0);
    EXPECT_EQ(summarized_block(block, two_samples).cycles, 400.0);
}

// 30% of 400 cycles at 500 MHz, 2 ns each.
TEST(BlockMetrics, LostTimeIsThatOfTheStalledCycles) {
    const StreamBlock block{.valid = {50, 150}, .stall = {20, 100}, .idle = {30, 50}};
    StreamKernel kernel{.stamps = {200, 800}, .cycles = two_samples, .blocks = {block}};
    EXPECT_DOUBLE_EQ(
        known(summary_of({.kernels = {kernel}, .clock = "500.0"}).kernels[0].blocks[0].metrics[Metric::lost]),
        240.0);
}

// Without a clock, 20% of a sample that lasts 7 and a third of one that lasts 30.
TEST(BlockMetrics, LostTimeIsThatOfTheSamplesWithoutAClock) {
    const StreamBlock block{.valid = {50, 150}, .stall = {20, 100}, .idle = {30, 50}};
    StreamKernel kernel{.stamps = {7, 37}, .cycles = two_samples, .blocks = {block}};
    const ProfileSummary summary = summary_of({.kernels = {kernel}, .clock = "0.0"});
    EXPECT_NEAR(known(summary.kernels[0].blocks[0].metrics[Metric::lost]), 1.4 + 10.0, 1e-12);
}

TEST(BlockMetrics, BandwidthIsTheMeanOverTheCycles) {
    const StreamBlock block{.bandwidth = {800.0f, 400.0f}};
    EXPECT_DOUBLE_EQ(known(metric_of(block, two_samples, Metric::bandwidth)), 500.0); // (80 + 120) / 400
    EXPECT_DOUBLE_EQ(known(metric_of(block, two_samples, Metric::bandwidth_max)), 800.0);
}

// 12 cycles at 240.5 MHz are 49.9 ns, which the report has cut to 49. The 128 bytes then make 2612.3 MB/s,
// rounded up; with 49.9 ns these would be 130.3 bytes.
TEST(BlockMetrics, MovedBytesAreThoseOfWholeNanoseconds) {
    const BlockSummary block = summarized_block({.requests = {2}, .bandwidth = {2612.3f}}, {12}, "240.5");
    EXPECT_NEAR(known(block.metrics[Metric::moved]), 128.0, 0.01);
}

// (1 · 800 · 100 + 0.5 · 400 · 300) / (800 · 100 + 400 · 300): a rare sample of few bytes counts little.
TEST(BlockMetrics, EfficiencyIsWeightedByTheBytesMoved) {
    const StreamBlock block{.bandwidth = {800.0f, 400.0f}, .efficiency = {1.0f, 0.5f}};
    EXPECT_DOUBLE_EQ(known(metric_of(block, two_samples, Metric::efficiency)), 70.0);
}

TEST(BlockMetrics, HitsAndUnalignedAreSharesOfTheRequests) {
    const StreamBlock block{.requests = {10, 30}, .hits = {4, 8}, .unaligned = {1, 0}};
    EXPECT_DOUBLE_EQ(known(metric_of(block, two_samples, Metric::hits)), 30.0);
    EXPECT_DOUBLE_EQ(known(metric_of(block, two_samples, Metric::unaligned)), 2.5);
    EXPECT_EQ(metric_of({.hits = {4, 8}}, two_samples, Metric::hits), std::nullopt);
}

// In stalls an empty channel has depth 0, so the depth outside stalls is (4 · 50 + 2 · 200) / (30 + 70).
TEST(BlockMetrics, FillOfAReadEndIsTheDepthOutsideStalls) {
    const StreamBlock block{.mem_type = "",
                            .stall = {20, 130},
                            .requests = {30, 70},
                            .bandwidth = {1.0f, 1.0f},
                            .fill = {4.0f, 2.0f},
                            .max_fill = {8, 12}};
    EXPECT_DOUBLE_EQ(known(metric_of(block, two_samples, Metric::fill)), 6.0);
    EXPECT_DOUBLE_EQ(known(metric_of(block, two_samples, Metric::fill_share)), 50.0);
    EXPECT_DOUBLE_EQ(known(metric_of(block, two_samples, Metric::max_fill)), 12.0);
}

// In stalls a full channel has depth 12: (10 · 50 + 11 · 200 - 150 · 12) / 100 = (2700 - 1800) / 100.
TEST(BlockMetrics, FillOfAWriteEndLeavesOutTheFullChannelOfStalls) {
    StreamBlock block{.mem_type = "",
                      .operation = "write",
                      .stall = {20, 130},
                      .requests = {30, 70},
                      .bandwidth = {1.0f, 1.0f},
                      .fill = {10.0f, 11.0f},
                      .max_fill = {8, 12}};
    EXPECT_DOUBLE_EQ(known(metric_of(block, two_samples, Metric::fill)), 9.0);
    block.fill = {1.0f, 1.0f}; // which can't be, with so many stalls
    EXPECT_EQ(metric_of(block, two_samples, Metric::fill), 0.0);
}

// How deep a full channel is isn't known.
TEST(BlockMetrics, FillOfAWriteEndIsUnknownWithoutItsGreatest) {
    StreamBlock block{.mem_type = "",
                      .operation = "write",
                      .stall = {50, 100},
                      .requests = {30, 70},
                      .bandwidth = {1.0f, 1.0f},
                      .fill = {10.0f, 11.0f}};
    EXPECT_EQ(metric_of(block, two_samples, Metric::fill), std::nullopt);
    EXPECT_EQ(metric_of(block, two_samples, Metric::fill_share), std::nullopt);
    block.max_fill = {12, 12};
    // (10 · 80 + 11 · 170 - 150 · 12) / 100, as above.
    EXPECT_DOUBLE_EQ(known(metric_of(block, two_samples, Metric::fill)), 8.7);
}

// Of two samples the second one counts; that something is wrong with the first is counted.
TEST(BlockMetrics, RatesThatAreNoneAreLeftOut) {
    for (const float odd :
         {-1.0f, std::numeric_limits<float>::infinity(), -std::numeric_limits<float>::infinity()}) {
        const BlockSummary block = summarized_block({.bandwidth = {odd, 400.0f}}, two_samples);
        EXPECT_EQ(block.metrics[Metric::bandwidth], 400.0) << odd;
        EXPECT_EQ(block.metrics[Metric::bandwidth_max], 400.0) << odd;
        EXPECT_EQ(block.num_left_out, 1U) << odd;
        // Of three bursts, which don't line up with the samples, two count.
        const StreamBlock bursts{.bandwidth = {1.0f, 1.0f}, .burst = {odd, 7.0f, 50.0f}};
        EXPECT_EQ(metric_of(bursts, two_samples, Metric::burst), 28.5) << odd;
    }
}

TEST(BlockMetrics, FillShareOfAShallowReadEndIsUnknown) {
    StreamBlock block{.mem_type = "",
                      .stall = {0, 0},
                      .requests = {30, 70},
                      .bandwidth = {1.0f, 1.0f},
                      .fill = {1.0f, 1.0f},
                      .max_fill = {2, 2}};
    EXPECT_EQ(metric_of(block, two_samples, Metric::fill), 1.0);
    EXPECT_EQ(metric_of(block, two_samples, Metric::fill_share), std::nullopt);
    block.max_fill = {2, 4};
    EXPECT_EQ(metric_of(block, two_samples, Metric::fill_share), 25.0);
    block.operation = "write";
    block.max_fill = {2, 2};
    EXPECT_EQ(metric_of(block, two_samples, Metric::fill_share), 50.0);
}

// 700 words in 100 bursts and 450 words in 9: 1150 / 109 = 10.55 words, where the mean of the entries
// is 28.5.
TEST(BlockMetrics, BurstsAreWeightedByTheirNumber) {
    StreamBlock block{.memory = "DDR", .bandwidth = {700.0f, 450.0f}, .burst = {7.0f, 50.0f}};
    EXPECT_NEAR(known(metric_of(block, {1, 1}, Metric::burst)), 1150.0 / 109.0, 1e-9);
    block.burst = {7.0f, 50.0f, 0.0f}; // lines up with three samples, not with two
    EXPECT_DOUBLE_EQ(known(metric_of(block, {1, 1}, Metric::burst)), 28.5);
    block.bandwidth = {700.0f, 450.0f, 100.0f};
    EXPECT_NEAR(known(metric_of(block, {1, 1, 1}, Metric::burst)), 1150.0 / 109.0, 1e-9);
    EXPECT_EQ(metric_of({.burst = {0.0f, 0.0f}}, {1, 1}, Metric::burst), std::nullopt);
}

// The memory's largest burst is 16 words: up to 17.6 they are the same words.
TEST(BlockMetrics, BurstShareIsUnknownIfWordsDiffer) {
    StreamBlock block{.memory = "DDR", .bandwidth = {100.0f}, .burst = {4.0f}};
    EXPECT_DOUBLE_EQ(known(metric_of(block, {1}, Metric::burst_share)), 25.0);
    EXPECT_EQ(summarized_block(block, {1}).max_burst, 16.0);
    block.burst = {17.5f};
    EXPECT_NEAR(known(metric_of(block, {1}, Metric::burst_share)), 109.4, 0.1);
    block.burst = {17.7f};
    EXPECT_EQ(metric_of(block, {1}, Metric::burst_share), std::nullopt);
}

// 32,000 bytes in 1,000 requests.
TEST(BlockMetrics, AccessesHaveTheWidthOfWhatWasRequested) {
    const StreamBlock block{.requests = {1000}, .bandwidth = {640.0f}, .efficiency = {0.5f}};
    EXPECT_DOUBLE_EQ(known(summarized_block(block, {100'000}).access_bytes), 32.0);
}

StreamBlock loop_of(std::vector<long long> valid) {
    return {.name = "loop", .mem_type = "__loop", .operation = "", .valid = std::move(valid)};
}

std::vector<BlockSummary> blocks_of(std::vector<StreamBlock> blocks) {
    StreamKernel kernel{.stamps = {1000}, .cycles = {1000}, .blocks = std::move(blocks)};
    return summary_of({.kernels = {kernel}}).kernels[0].blocks;
}

// A loop at 22% beside a store that stalls 12%: an iteration takes 4.5 cycles, and 4.0 without the stalls.
TEST(BlockMetrics, IterationsTakeLessWithoutTheStallsOfTheKernel) {
    const auto blocks = blocks_of({loop_of({220}), {.name = "store", .valid = {880}, .stall = {120}}});
    EXPECT_NEAR(known(blocks[0].metrics[Metric::iteration]), 4.545, 0.001);
    EXPECT_DOUBLE_EQ(known(blocks[0].metrics[Metric::net]), 4.0);
    EXPECT_DOUBLE_EQ(known(blocks[0].iterations), 220.0);
    EXPECT_EQ(blocks[1].metrics[Metric::iteration], std::nullopt);
}

TEST(BlockMetrics, NetIsNotBelowOneAndUnknownWithUnknownStalls) {
    EXPECT_EQ(blocks_of({loop_of({900}), {.valid = {400}, .stall = {600}}})[0].metrics[Metric::net], 1.0);
    EXPECT_EQ(blocks_of({loop_of({300}), {.valid = {400}}})[0].metrics[Metric::net], std::nullopt);
    EXPECT_EQ(blocks_of({loop_of({300}), {.valid = {400}, .stall = {0}}})[0].metrics[Metric::net],
              std::nullopt);
    EXPECT_EQ(blocks_of({loop_of({0})})[0].metrics[Metric::iteration], std::nullopt);
    EXPECT_EQ(blocks_of({loop_of({0})})[0].metrics[Metric::valid], 0.0);
}

// Rule of what isn't counted: valid, stalled and idle cycles are below 95% of all.
TEST(BlockMetrics, StallsThatAreAllZeroAreNotCountedIfCyclesAreMissing) {
    const BlockSummary block =
        summarized_block({.valid = {35, 105}, .stall = {0, 0}, .idle = {0, 0}}, two_samples);
    EXPECT_DOUBLE_EQ(known(block.metrics[Metric::valid]), 35.0);
    EXPECT_EQ(block.metrics[Metric::stall], std::nullopt);
    EXPECT_EQ(block.metrics[Metric::idle], std::nullopt);
    EXPECT_EQ(block.metrics[Metric::lost], std::nullopt);
    EXPECT_FALSE(block.stall_counted);
}

TEST(BlockMetrics, StallsThatAreAllZeroAreCountedIfTheCyclesAreComplete) {
    const BlockSummary block =
        summarized_block({.valid = {35, 105}, .stall = {0, 0}, .idle = {65, 180}}, two_samples);
    EXPECT_EQ(block.metrics[Metric::stall], 0.0); // 385 of 400 cycles are valid or idle: 96%
    EXPECT_EQ(block.metrics[Metric::lost], 0.0);
    EXPECT_TRUE(block.stall_counted);
}

TEST(BlockMetrics, OneStallIsEnoughToBeCounted) {
    const BlockSummary block =
        summarized_block({.valid = {35, 105}, .stall = {0, 1}, .idle = {0, 0}}, two_samples);
    EXPECT_EQ(block.metrics[Metric::stall], 0.25);
    EXPECT_EQ(block.metrics[Metric::idle], std::nullopt);
}

TEST(BlockMetrics, BandwidthThatIsZeroDespiteRequestsIsNotCounted) {
    StreamBlock block{.requests = {10, 10}, .bandwidth = {0.0f, 0.0f}, .efficiency = {0.0f, 0.0f}};
    for (const Metric metric : {Metric::bandwidth, Metric::bandwidth_max, Metric::moved, Metric::efficiency})
        EXPECT_EQ(metric_of(block, two_samples, metric), std::nullopt);
    block.hits = {10, 9}; // which are answered without the memory
    EXPECT_EQ(metric_of(block, two_samples, Metric::bandwidth), 0.0);
    EXPECT_EQ(metric_of(block, two_samples, Metric::efficiency), std::nullopt);
    EXPECT_EQ(metric_of({.requests = {0, 0}, .bandwidth = {0.0f, 0.0f}}, two_samples, Metric::bandwidth),
              0.0);
}

// One sample of ten with use 95% and 90% stalls, nine with 20% and 2%: (90 · 95 + 9 · 2 · 20) / (90 + 18)
// = 82.5, where the mean use is 27.5.
TEST(BlockMetrics, MemoryUseIsThatDuringTheStalls) {
    StreamBlock block{.memory = "DDR",
                      .valid = each(10, 5LL),
                      .stall = each(10, 2LL),
                      .idle = each(10, 93LL),
                      .bandwidth = each(10, 200.0f)};
    block.stall[4] = 90;
    block.idle[4] = 5;
    block.bandwidth[4] = 950.0f;
    EXPECT_NEAR(known(metric_of(block, each(10, 100LL), Metric::memory_use)), 82.5, 1e-9);
    block.stall = each(10, 0LL);
    block.idle = each(10, 95LL);
    EXPECT_NEAR(known(metric_of(block, each(10, 100LL), Metric::memory_use)), 27.5, 1e-9);
}

TEST(BlockMetrics, MemoryUseOfAnUnnamedMemoryIsUnknown) {
    const StreamBlock block{.valid = {50}, .stall = {50}, .bandwidth = {100.0f}};
    EXPECT_EQ(metric_of(block, {100}, Metric::memory_use), std::nullopt);
    EXPECT_EQ(metric_of({.memory = "HBM", .stall = {50}, .bandwidth = {100.0f}}, {100}, Metric::memory_use),
              std::nullopt); // the board of the tests has no such memory
}

// Eleven samples of 100 cycles, one of them with most of the stalls.
TEST(BlockMetrics, TheShortestStretchWithHalfOfTheStallsIsFound) {
    StreamBlock block{.valid = each(11, 5LL), .stall = each(11, 1LL), .idle = each(11, 94LL)};
    block.stall[6] = 80;
    const BlockSummary summary = summarized_block(block, each(11, 100LL));
    EXPECT_GE(known(summary.stalled_from), 600.0);
    EXPECT_LE(known(summary.stalled_to), 700.0);
    EXPECT_NEAR(known(summary.stalled_part), 100.0 * 45.0 / 80.0 * 100.0 / 1100.0, 0.2); // 45 of 90 stalls
}

TEST(BlockMetrics, CountsBelowZeroAreLeftOutAndCounted) {
    const BlockSummary block =
        summarized_block({.valid = {50, -1}, .stall = {50, 30}, .idle = {0, 5}}, two_samples);
    EXPECT_EQ(block.metrics[Metric::valid], 50.0);
    EXPECT_EQ(block.metrics[Metric::stall], 20.0); // (50 + 30) / 400
    EXPECT_EQ(block.num_left_out, 1U);
    EXPECT_EQ(summarized_block({.valid = {-1, -1}}, two_samples).metrics[Metric::valid], std::nullopt);
}

TEST(BlockMetrics, BandwidthOfSamplesWithBadRequestsOrStallsIsLeftOut) {
    const StreamBlock block{.stall = {0, 0, -1},
                            .requests = {5, -1, 5},
                            .bandwidth = {100.0f, 700.0f, 900.0f},
                            .efficiency = {1.0f, 0.1f, 0.1f}};
    const BlockSummary summary = summarized_block(block, {100, 100, 100});
    EXPECT_EQ(summary.metrics[Metric::bandwidth], 100.0);
    EXPECT_EQ(summary.metrics[Metric::bandwidth_max], 100.0);
    EXPECT_EQ(summary.metrics[Metric::efficiency], 100.0);
    EXPECT_EQ(summary.num_left_out, 2U);
}

TEST(BlockMetrics, SamplesWithoutCyclesAreLeftOut) {
    const BlockSummary block = summarized_block({.valid = {50, 7}, .bandwidth = {100.0f, 900.0f}}, {100, 0});
    EXPECT_EQ(block.metrics[Metric::valid], 50.0);
    EXPECT_EQ(block.metrics[Metric::bandwidth], 100.0);
    EXPECT_EQ(block.num_left_out, 1U);
}

TEST(BlockMetrics, AShorterArrayIsMissingForTheRest) {
    const BlockSummary block = summarized_block({.valid = {50}, .stall = {20, 100}}, two_samples);
    EXPECT_EQ(block.metrics[Metric::valid], 50.0); // of the first sample alone
    EXPECT_EQ(block.metrics[Metric::stall], 30.0);
    EXPECT_EQ(block.metrics[Metric::idle], std::nullopt);
    EXPECT_EQ(block.num_left_out, 0U);
}

} // namespace
