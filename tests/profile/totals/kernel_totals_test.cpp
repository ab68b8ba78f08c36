// SPDX-License-Identifier: Apache-2.0
#include "kernel_totals.h"

#include <gtest/gtest.h>

#include "timeline.h"

using namespace zan::profile;

namespace {

TEST(KernelTotals, FindAPortByAllOfItsNames) {
    KernelTotals kernel;
    PortNode node{.memory = "DDR",
                  .interface = "a",
                  .port = "p",
                  .read_only = false,
                  .write_only = false,
                  .arrays = {}};
    kernel.port_of(node).max_bandwidth = 7.0;
    EXPECT_EQ(kernel.port_of(node).max_bandwidth, 7.0);
    node.interface = "b";
    EXPECT_EQ(kernel.port_of(node).max_bandwidth, -1.0);
    EXPECT_EQ(kernel.ports.size(), 2U);
}

TEST(KernelTotals, HaveAnAccessForEachMemory) {
    KernelTotals kernel;
    kernel.access_of("DDR").reads.add_sample(0, 1, 5.0);
    EXPECT_EQ(kernel.access_of("DDR").reads.total(), 5.0);
    EXPECT_EQ(kernel.access_of("HBM").reads.total(), 0.0);
    EXPECT_EQ(kernel.accesses.size(), 2U);
}

TEST(WorkSpans, AreKeptAsTheyAre) {
    WorkSpans work;
    work.add({0, 10});
    work.add({20, 30});
    EXPECT_EQ(work.spans(), (std::vector<TimeSpan>{{0, 10}, {20, 30}}));
}

// 100,000 stretches of 10 with pauses of 10, and one pause of 1,000: the long pause is kept.
TEST(WorkSpans, ThatAreTooManyAreJoinedOverShortPauses) {
    WorkSpans work;
    std::int64_t time = 0;
    for (int i = 0; i < 100'000; ++i) {
        time += i == 50'000 ? 1'000 : 10;
        work.add({time, time + 10});
        time += 10;
    }
    EXPECT_LE(work.spans().size(), 4096U);
    const double worked = total_time(union_of(work.spans()));
    EXPECT_GE(worked, 100'000 * 10.0);
    EXPECT_LE(worked, 100'000 * 20.0);
    const TimeBins pause = covered_bins(union_of(work.spans()), 0);
    EXPECT_LT(pause.total(), static_cast<double>(time) - 900.0);
}

} // namespace
