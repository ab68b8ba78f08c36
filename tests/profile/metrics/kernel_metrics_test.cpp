// SPDX-License-Identifier: Apache-2.0
#include "kernel_metrics.h"

#include <gtest/gtest.h>

#include "stream_report.h"

using namespace zan::profile;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

StreamKernel ran(const std::string& name, long long start, long long end) {
    return {.name = name, .start = start, .stamps = {end}, .cycles = {end - start}};
}

const KernelSummary& kernel_named(const ProfileSummary& summary, std::string_view name) {
    for (const KernelSummary& kernel : summary.kernels) {
        if (kernel.name == name)
            return kernel;
    }
    throw std::runtime_error("no such kernel");
}

// Times of 10, 20, 30 and 40: by nearest rank the median is the second of four.
TEST(KernelMetrics, TimesAreThoseOfInvocations) {
    const ProfileSummary summary = summary_of(
        {.kernels = {ran("k", 0, 30), ran("k", 100, 110), ran("k", 200, 240), ran("k", 300, 320)}});
    const KernelSummary& kernel = summary.kernels.at(0);
    EXPECT_EQ(kernel.num_invocations, 4U);
    EXPECT_EQ(kernel.metrics[Metric::kernel_time], 20.0);
    EXPECT_EQ(kernel.metrics[Metric::kernel_total], 100.0);
    EXPECT_EQ(kernel.metrics[Metric::kernel_p95], 40.0);
    EXPECT_EQ(kernel.shortest, 10.0);
    EXPECT_EQ(kernel.longest, 40.0);
    EXPECT_EQ(kernel.median_low, std::nullopt); // below five invocations
}

TEST(KernelMetrics, FiveInvocationsBoundTheirMedian) {
    StreamReport report;
    for (long long i = 0; i < 5; ++i)
        report.kernels.push_back(ran("k", 100 * i, 100 * i + 10 + i));
    const KernelSummary kernel = summary_of(report).kernels.at(0);
    EXPECT_EQ(kernel.median_low, 10.0);
    EXPECT_EQ(kernel.median_high, 14.0);
}

// Two queues take turns: the later node of start 0 begins where the one before it ended.
TEST(KernelMetrics, NodesOfOneStartAreOneInvocation) {
    StreamKernel first = ran("k", 0, 100);
    first.blocks = {{.valid = {50}, .stall = {40}, .idle = {10}}};
    StreamKernel other = ran("k", 50, 150);
    other.blocks = first.blocks;
    StreamKernel rest = first;
    rest.stamps = {200};
    const ProfileSummary summary = summary_of({.kernels = {first, other, rest}});
    const KernelSummary& kernel = summary.kernels.at(0);
    EXPECT_EQ(kernel.num_invocations, 2U);
    EXPECT_EQ(kernel.longest, 200.0);
    EXPECT_EQ(kernel.shortest, 100.0);
    EXPECT_EQ(summary.nanoseconds, 1.0); // 300 cycles in three lengths of 100
}

// a: 0 to 50, b: 40 to 60, then nothing, a: 80 to 100. The span is 100.
TEST(KernelMetrics, BusyIsTheUnionAndAloneWhatNoOtherSharesIt) {
    const ProfileSummary summary =
        summary_of({.kernels = {ran("a", 0, 50), ran("b", 40, 60), ran("a", 80, 100)}});
    const KernelSummary& a = kernel_named(summary, "a");
    EXPECT_EQ(a.metrics[Metric::busy], 70.0);
    EXPECT_EQ(a.metrics[Metric::alone], 60.0);
    EXPECT_EQ(a.union_time, 70.0);
    EXPECT_EQ(a.gaps, 20.0); // from 60 to 80; before that b ran
    const KernelSummary& b = kernel_named(summary, "b");
    EXPECT_EQ(b.metrics[Metric::busy], 20.0);
    EXPECT_EQ(b.metrics[Metric::alone], 10.0);
    EXPECT_EQ(b.gaps, 0.0);
}

TEST(KernelMetrics, InvocationsThatOverlapAreBusyOnce) {
    const ProfileSummary summary = summary_of({.kernels = {ran("k", 0, 60), ran("k", 20, 80)}});
    EXPECT_EQ(summary.kernels[0].metrics[Metric::busy], 100.0);
    EXPECT_EQ(summary.kernels[0].metrics[Metric::kernel_total], 120.0);
}

TEST(KernelMetrics, ATransferFillsAGap) {
    StreamReport report{.kernels = {ran("k", 0, 10), ran("k", 50, 60)}};
    report.transfers = {{.start = 15, .end = 45}};
    EXPECT_EQ(summary_of(report).kernels[0].gaps, 10.0); // 10 to 15 and 45 to 50
}

// The stage works in 2 of 8 samples, and stalls 35% of these: of all samples it would be 8.75%.
TEST(KernelMetrics, AutorunKernelsAreJudgedOverTheSamplesWithWork) {
    StreamKernel stage{.name = "stage", .autorun = true};
    StreamBlock send{.name = "send", .mem_type = "", .operation = "write"};
    StreamBlock recv{.name = "recv", .mem_type = ""};
    for (int i = 0; i < 8; ++i) {
        const bool works = i == 3 || i == 4;
        stage.stamps.push_back(1000 * (i + 1));
        stage.cycles.push_back(1000);
        send.valid.push_back(works ? 440 : 0);
        send.stall.push_back(works ? 350 : 0);
        send.idle.push_back(works ? 210 : 1000);
        recv.valid.push_back(works ? 430 : 9); // 0.9% are no work
        recv.stall.push_back(works ? 4 : 980);
        recv.idle.push_back(works ? 566 : 11);
    }
    stage.blocks = {recv, send};
    const ProfileSummary summary = summary_of({.kernels = {stage, ran("k", 3000, 5000)}});
    const KernelSummary& kernel = summary.kernels.at(1); // autorun kernels come last
    EXPECT_EQ(kernel.name, "stage");
    EXPECT_EQ(kernel.metrics[Metric::waiting], 75.0);
    EXPECT_DOUBLE_EQ(known(kernel.blocks[1].metrics[Metric::stall]), 35.0);
    EXPECT_DOUBLE_EQ(known(kernel.blocks[0].metrics[Metric::stall]), 0.4);
    EXPECT_DOUBLE_EQ(known(kernel.blocks[1].metrics[Metric::lost]), 700.0);
    EXPECT_EQ(kernel.union_time, 2000.0);
    EXPECT_EQ(kernel.metrics[Metric::busy], 100.0);
    EXPECT_EQ(kernel.metrics[Metric::alone], std::nullopt);
    EXPECT_THAT(kernel.team, ElementsAre("k")); // which ran while it worked
}

TEST(KernelMetrics, AnAutorunKernelOfWhichNothingCountsWorkNeverWaits) {
    StreamKernel stage{.stamps = {100, 200}, .cycles = {100, 100}, .autorun = true};
    stage.blocks = {{.mem_type = "", .stall = {10, 90}, .idle = {90, 10}}};
    const KernelSummary kernel = summary_of({.kernels = {stage}}).kernels.at(0);
    EXPECT_EQ(kernel.metrics[Metric::waiting], 0.0);
    EXPECT_EQ(kernel.blocks[0].metrics[Metric::stall], 50.0);
}

// a and b overlap by 60 of their 100 each; c has 100 of its 100 with both, who have only 10 of 100 with it.
TEST(KernelMetrics, ATeamRanTogetherForHalfOfBothTimes) {
    const ProfileSummary summary =
        summary_of({.kernels = {ran("a", 0, 100), ran("b", 40, 140), ran("c", 50, 60)}});
    EXPECT_THAT(kernel_named(summary, "a").team, ElementsAre("b"));
    EXPECT_THAT(kernel_named(summary, "b").team, ElementsAre("a"));
    EXPECT_THAT(kernel_named(summary, "c").team, IsEmpty());
}

TEST(KernelMetrics, KernelsThatTakeTurnsAreNoTeam) {
    StreamReport report;
    for (long long i = 0; i < 1000; ++i) {
        report.kernels.push_back(ran("a", 1'000'000 * i, 1'000'000 * i + 10));
        report.kernels.push_back(ran("b", 1'000'000 * i + 10, 1'000'000 * i + 20));
    }
    EXPECT_THAT(summary_of(report).kernels[0].team, IsEmpty());
}

TEST(KernelMetrics, AKernelWithoutSamplesHasNoTimes) {
    const KernelSummary kernel = summary_of({.kernels = {{.name = "k", .start = 5}}}).kernels.at(0);
    EXPECT_EQ(kernel.num_invocations, 0U);
    for (const Metric metric : {Metric::kernel_time, Metric::kernel_total, Metric::busy, Metric::alone})
        EXPECT_EQ(kernel.metrics[metric], std::nullopt);
    EXPECT_EQ(kernel.device, std::nullopt);
}

TEST(KernelMetrics, KernelsOfSeveralDevicesAreSeveral) {
    StreamKernel other = ran("k", 0, 10);
    other.device = 1;
    const ProfileSummary summary = summary_of({.kernels = {ran("k", 0, 20), other, ran("k", 30, 40)}});
    ASSERT_EQ(summary.kernels.size(), 2U);
    EXPECT_EQ(summary.kernels[0].device, 0);
    EXPECT_EQ(summary.kernels[0].num_invocations, 2U);
    EXPECT_EQ(summary.kernels[1].device, 1);
}

} // namespace
