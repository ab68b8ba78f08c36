// SPDX-License-Identifier: Apache-2.0
#include "memory_shares.h"

#include <gtest/gtest.h>

#include "stream_report.h"

using namespace zan::profile;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// A kernel that reads and writes the memory at these MB/s, from `start` to `end` in as many cycles.
StreamKernel mover(const std::string& name, long long start, long long end, float read, float write) {
    StreamKernel kernel{.name = name, .start = start, .stamps = {end}, .cycles = {end - start}};
    kernel.ports = {{.bandwidth = {read + write}}};
    const std::pair<const char*, float> accesses[] = {{"read", read}, {"write", write}};
    for (const auto& [operation, bandwidth] : accesses) {
        if (bandwidth > 0.0f)
            kernel.blocks.push_back({.name = operation,
                                     .operation = operation,
                                     .memory = "DDR",
                                     .valid = {50},
                                     .stall = {50},
                                     .idle = {0},
                                     .requests = {10},
                                     .bandwidth = {bandwidth},
                                     .efficiency = {1.0f}});
    }
    return kernel;
}

// While a runs (0 to 100), it moves 200 · 100, b 600 · 50 and c 100 · 100: 60,000 in all.
TEST(MemoryShares, SharesAreOfTheTimeInWhichTheKernelRan) {
    const ProfileSummary summary =
        summary_of({.kernels = {mover("a", 0, 100, 150.0f, 50.0f), mover("b", 50, 150, 600.0f, 0.0f),
                                mover("c", 0, 200, 0.0f, 100.0f)},
                    .memories = {{}}});
    const BlockSummary& read = summary.kernels[0].blocks[0];
    EXPECT_NEAR(known(read.own_share), 100.0 * 20'000 / 60'000, 1e-9);
    EXPECT_NEAR(known(read.block_share), 100.0 * 15'000 / 60'000, 1e-9);
    EXPECT_NEAR(known(read.read_share), 100.0 * 45'000 / 60'000, 1e-9);
    EXPECT_NEAR(known(read.write_share), 100.0 * 15'000 / 60'000, 1e-9);
    EXPECT_THAT(read.rivals, ElementsAre("b", "c")); // b alone has half, not more
    EXPECT_NEAR(known(summary.kernels[1].blocks[0].own_share), 100.0 * 60'000 / 80'000, 1e-9);
    EXPECT_THAT(summary.kernels[1].blocks[0].rivals, IsEmpty());
}

// Over many invocations with pauses, so many that a bin holds several: a moves as much as b while both run.
TEST(MemoryShares, HoldWhereBinsAreWiderThanInvocations) {
    StreamReport report{.kernels = {}, .memories = {{}}};
    for (long long i = 0; i < 2000; ++i) {
        const long long start = 1'000'003 * i;
        report.kernels.push_back(mover("a", start, start + 1000, 300.0f, 0.0f));
        report.kernels.push_back(mover("b", start + 500, start + 1500, 300.0f, 0.0f));
    }
    const ProfileSummary summary = summary_of(report);
    // b is there in half of the time of a: 300 of it, 150 of b.
    EXPECT_NEAR(known(summary.kernels[0].blocks[0].own_share), 100.0 * 300 / 450, 0.1);
    EXPECT_NEAR(known(summary.kernels[0].blocks[0].read_share), 100.0, 1e-9);
}

TEST(MemoryShares, OfALowerBoundAreMissing) {
    StreamKernel kernel = mover("a", 0, 100, 200.0f, 0.0f);
    kernel.ports.clear();
    kernel.blocks.push_back(kernel.blocks[0]);
    kernel.blocks[1].memory = "";
    kernel.blocks[1].name = "unnamed";
    const ProfileSummary summary = summary_of({.kernels = {kernel}, .memories = {{}}});
    EXPECT_EQ(summary.kernels[0].blocks[0].own_share, std::nullopt);
    EXPECT_THAT(summary.kernels[0].blocks[0].rivals, IsEmpty());
}

} // namespace
