// SPDX-License-Identifier: Apache-2.0
#include "answers.h"

#include "diagnosis.h"
#include "gtest/gtest.h"
#include "made_summary.h"
#include "rules_reader.h"

using namespace zan::profile;

namespace {

constexpr double ms = 1e6;

BlockSummary channel_end(const char* name, Direction direction, double stall, double lost) {
    BlockSummary made = made::block(name, BlockKind::channel, direction);
    made.metrics[Metric::stall] = stall;
    made.metrics[Metric::lost] = lost;
    return made;
}

KernelSummary stage(const char* name, double time, std::vector<BlockSummary> blocks) {
    KernelSummary made = made::kernel(name, std::move(blocks));
    made.union_time = time;
    made.metrics[Metric::kernel_total] = time;
    return made;
}

// A pipeline in 80 ms of a run of 306 ms. The stage between the others has channels that stall least.
ProfileSummary pipeline() {
    BlockSummary history = made::global_read("store_history");
    history.direction = Direction::write;
    history.metrics[Metric::stall] = 36;
    history.metrics[Metric::lost] = 29.2 * ms;
    history.metrics[Metric::memory_use] = 86;
    ProfileSummary summary = made::run(
        {stage("load_frames", 80.4 * ms, {channel_end("send_raw", Direction::write, 27, 22 * ms)}),
         stage("denoise", 80.9 * ms, {history, channel_end("recv_aligned", Direction::read, 1.0, 0.8 * ms)}),
         stage("store_frames", 80.4 * ms, {channel_end("recv_mapped", Direction::read, 49, 39.5 * ms)})});
    summary.metrics[Metric::span] = 306 * ms;
    summary.kernel_time = 256 * ms;
    summary.transfer_only = 34 * ms;
    return summary;
}

Answers answers(ProfileSummary summary) {
    diagnose(summary, built_in_rules());
    return summary.answers;
}

// The answers for one kernel of one block.
Answers of_block(BlockSummary block) {
    return answers(made::run({made::kernel("k", {std::move(block)})}));
}

Answers of_read(Metric metric, double value) {
    BlockSummary block = made::global_read();
    block.metrics[metric] = value;
    return of_block(block);
}

} // namespace

TEST(Answers, TheStageWhoseChannelsStallLeastLeads) {
    const Answers said = answers(pipeline());
    EXPECT_EQ(said.leading_kernel, "denoise"); // 80.9 · 0.99 = 80.1; load_frames has 58.7, store_frames 41.0
    EXPECT_EQ(said.kernel, "denoise: 26% of the run, 80.9 ms in 1 invocation");
}

TEST(Answers, ACauseComesBeforeASymptomThatCostMore) {
    const Answers said = answers(pipeline()); // 29.2 ms are more than a quarter of the symptom's 39.5 ms
    EXPECT_EQ(said.culprit_kernel, "denoise");
    EXPECT_EQ(said.culprit_block, "store_history");
    EXPECT_EQ(said.block, "denoise/store_history: 36% of its cycles stalled, at most 29.2 ms lost");
    EXPECT_EQ(said.source, "device/a.cl:9");
    EXPECT_EQ(said.memory, "Yes, DDR is at 86%");
}

TEST(Answers, ASmallCauseDoesNotComeFirst) {
    ProfileSummary summary = pipeline();
    Value& lost = summary.kernels[1].blocks[0].metrics[Metric::lost];
    lost = 9.9 * ms; // a quarter is 9.875 ms
    EXPECT_EQ(answers(summary).culprit_block, "store_history");
    lost = 9.8 * ms;
    const Answers said = answers(summary);
    EXPECT_EQ(said.culprit_block, "recv_mapped");
    EXPECT_EQ(said.memory, "No, a channel is");
}

TEST(Answers, KernelsOutsideOfTheTeamAreNoCulprits) {
    ProfileSummary summary = pipeline();
    BlockSummary search = made::global_read("load_reference");
    search.metrics[Metric::lost] = 82.1 * ms;
    KernelSummary alone = stage("motion_search", 50 * ms, {search});
    summary.kernels.push_back(alone);
    EXPECT_EQ(answers(summary).culprit_kernel, "denoise");
    summary.kernels.back().union_time = 150 * ms;
    EXPECT_EQ(answers(summary).culprit_kernel, "motion_search");
}

TEST(Answers, AutorunKernelsLeadOnlyWhereNoOtherRan) {
    KernelSummary filter = made::kernel("filter", {channel_end("in", Direction::read, 2, 1'000)});
    filter.autorun = true;
    KernelSummary reader = made::kernel("reader", {channel_end("out", Direction::write, 30, 30'000)});
    EXPECT_EQ(answers(made::run({filter, reader})).leading_kernel, "reader");
    ProfileSummary alone = made::run({filter});
    alone.kernel_time = 0;
    EXPECT_EQ(answers(alone).kernel, "filter, which runs by itself, worked for 100% of the run");
    EXPECT_EQ(answers(alone).block, "No block stalls much: filter/in loses most, 2.0% of its cycles");
}

TEST(Answers, TheHostIsNamedIfNothingRanForLonger) {
    ProfileSummary summary = made::run({made::kernel("k", {made::global_read()})});
    summary.kernels[0].union_time = 30'000;
    summary.kernel_time = 30'000;
    summary.transfer_only = 9'000; // nothing ran for 61 of 100 us
    EXPECT_EQ(answers(summary).kernel,
              "The host: for 61% of the run nothing ran; of the kernels k ran longest, 30%");
    summary.kernel_time = summary.kernels[0].union_time = 45'500;
    EXPECT_EQ(answers(summary).kernel, "k: 46% of the run, 100 us in 1 invocation"); // nothing for 45.5
}

TEST(Answers, TransfersAreNamedIfNothingElseRanForLonger) {
    ProfileSummary summary = made::run({made::kernel("k", {made::global_read()})});
    summary.kernels[0].union_time = summary.kernel_time = 39'000;
    summary.transfer_only = 40'000;
    summary.transfers = {{".mem_transfer_read", 1, 2, 38'000, 19'000, 38},
                         {".reprogram", 1, 1, 2'000, 2'000, 2}};
    EXPECT_EQ(answers(summary).kernel,
              "Transfers: for 40% of the run nothing else ran; overlap them; of the kernels "
              "k ran longest, 39%");
    std::swap(summary.transfers[0].type, summary.transfers[1].type);
    EXPECT_EQ(answers(summary).kernel,
              "Reprogramming: for 40% of the run nothing else ran; of the kernels k ran longest, 39%");
    summary.transfer_only = 39'000;
    EXPECT_EQ(answers(summary).leading_kernel, "k");
    EXPECT_EQ(answers(summary).kernel, "k: 39% of the run, 100 us in 1 invocation");
}

TEST(Answers, AutorunKernelsThatWorkAreNotNothing) {
    KernelSummary forever = made::kernel("forever", {channel_end("in", Direction::read, 5, 5'000)});
    forever.autorun = true;
    forever.union_time = 80'000;
    ProfileSummary summary = made::run({forever});
    summary.kernel_time = 0;
    EXPECT_EQ(answers(summary).kernel, "forever, which runs by itself, worked for 80% of the run");
}

TEST(Answers, GapsBetweenLaunchesAreNamed) {
    ProfileSummary summary = made::run({made::kernel("k", {made::global_read()})});
    KernelSummary& kernel = summary.kernels[0];
    kernel.num_invocations = 10;
    kernel.metrics[Metric::kernel_time] = 8'000;
    kernel.metrics[Metric::kernel_total] = 80'000;
    kernel.gaps = 9 * 3'100.0; // 27.9 of 80 us
    kernel.union_time = summary.kernel_time = 72'100;
    EXPECT_EQ(answers(summary).kernel,
              "k: 72% of the run, 80.0 us in 10 invocations; launch gaps: 3.1 us between "
              "invocations of 8.0 us");
    kernel.gaps = 19'900; // 24.9%
    EXPECT_EQ(answers(summary).kernel, "k: 72% of the run, 80.0 us in 10 invocations");
    kernel.gaps = 20'000;
    kernel.num_invocations = 9;
    EXPECT_EQ(answers(summary).kernel, "k: 72% of the run, 80.0 us in 9 invocations");
}

TEST(Answers, MemoryIsTheReasonByTheRuleOfTheCulprit) {
    EXPECT_EQ(of_read(Metric::memory_use, 75).memory, "Yes, DDR is at 75%");
    EXPECT_EQ(of_read(Metric::port_use, 75).memory, "Its port is, not the memory");
    EXPECT_EQ(of_read(Metric::unaligned, 20).memory, "How it is used, not its peak");
    EXPECT_EQ(of_read(Metric::efficiency, 59).memory, "How it is used, not its peak");
    EXPECT_EQ(of_read(Metric::burst_share, 24).memory, "How it is used, not its peak");
    EXPECT_EQ(of_read(Metric::stall, 40).memory, "No, DDR is 60% free");
    EXPECT_EQ(of_block(channel_end("in", Direction::read, 20, 20'000)).memory, "No, a channel is");
    EXPECT_EQ(of_read(Metric::stall, 9).memory, "No, no block stalls much");
    BlockSummary uncounted = made::global_read();
    uncounted.stall_counted = false;
    EXPECT_EQ(of_block(uncounted).memory, "Unknown");
    BlockSummary unknown = made::global_read();
    unknown.metrics[Metric::memory_use].reset();
    EXPECT_EQ(of_block(unknown).memory, "Unknown");
}

TEST(Answers, APortOfAFullMemoryIsNotTheOnlyReason) {
    BlockSummary block = made::global_read();
    block.metrics[Metric::port_use] = 90;
    block.metrics[Metric::memory_use] = 70;
    EXPECT_EQ(of_block(block).memory, "Its port is, and DDR is at 70%");
    block.metrics[Metric::memory_use].reset();
    EXPECT_EQ(of_block(block).memory, "Its port is");
}

TEST(Answers, ALoopCanBeTheReason) {
    BlockSummary store = made::global_read("store");
    store.metrics[Metric::stall] = 4;
    store.metrics[Metric::valid] = 20;
    const Answers said = answers(made::run({made::kernel("k", {store, made::loop()})}));
    EXPECT_EQ(said.block, "k/columns: begins an iteration every 5 cycles");
    EXPECT_EQ(said.source, "device/a.cl:9");
    EXPECT_EQ(said.memory, "No, a loop is");
}

TEST(Answers, PlacesNameTheirCallerAndHowManyMoreThereAre) {
    BlockSummary block = made::global_read();
    block.sources = {
        {{"device/include/sad.h", 6, 1}, {"device/include/b.h", 7, 1}, {"device/denoise.cl", 42, 1}},
        {{"device/denoise.cl", 50, 1}}};
    EXPECT_EQ(of_block(block).source,
              "device/include/sad.h:6, called from device/denoise.cl:42, and 1 more place");
    block.sources.resize(1);
    EXPECT_EQ(of_block(block).source, "device/include/sad.h:6, called from device/denoise.cl:42");
    block.sources = {{{"a.cl", 3, 0}}, {{"a.cl", 4, 0}}, {{"a.cl", 5, 0}}};
    EXPECT_EQ(of_block(block).source, "a.cl:3, and 2 more places");
    block.sources = {{{"a.cl", 0, 0}, {"b.cl", 0, 0}}};
    EXPECT_EQ(of_block(block).source, "a.cl, called from b.cl");
    for (const std::vector<CallChain>& unknown :
         {std::vector<CallChain>{}, std::vector<CallChain>{{}}, std::vector<CallChain>{{{"", 3, 0}}}}) {
        block.sources = unknown;
        EXPECT_EQ(of_block(block).source, "Unknown: the design doesn't name it");
    }
}

TEST(Answers, WithoutStallsNoBlockIsBlamed) {
    EXPECT_EQ(of_read(Metric::stall, 9).block, "No block stalls much: k/load loses most, 9.0% of its cycles");
    EXPECT_EQ(of_read(Metric::stall, 9).source, "None");
    EXPECT_EQ(of_read(Metric::stall, 0).block, "No block stalls");
    BlockSummary uncounted = made::global_read();
    uncounted.stall_counted = false;
    EXPECT_EQ(of_block(uncounted).block, "Unknown: stalls of 1 block weren't measured");
    EXPECT_EQ(of_block(uncounted).source, "Unknown");
    // Loops alone don't show stalls, unless they leave no time for any.
    BlockSummary loop = made::loop();
    loop.metrics[Metric::valid] = 89.9;
    EXPECT_EQ(of_block(loop).block, "Unknown: stalls of 1 block weren't measured");
    loop.metrics[Metric::valid] = 90;
    EXPECT_EQ(of_block(loop).block, "No block stalls");
}

TEST(Answers, AKernelWhoseTimeIsNotKnownDoesNotLead) {
    ProfileSummary summary =
        made::run({made::kernel("a", {made::global_read()}), made::kernel("b", {made::global_read()})});
    EXPECT_EQ(answers(summary).leading_kernel, "a"); // both the same
    summary.kernels[0].union_time.reset();
    EXPECT_EQ(answers(summary).leading_kernel, "b");
    summary.kernels[1].union_time.reset();
    EXPECT_EQ(answers(summary).leading_kernel, "");
}

TEST(Answers, TheLongestOfHostTransfersAndKernelIsNamed) {
    ProfileSummary summary = made::run({made::kernel("k", {made::global_read()})});
    summary.kernels[0].union_time = summary.kernel_time = 20'000; // of 100 us
    summary.transfer_only = 45'000;                               // nothing ran for 35
    EXPECT_EQ(answers(summary).kernel,
              "Transfers: for 45% of the run nothing else ran; overlap them; of the "
              "kernels k ran longest, 20%");
    summary.transfer_only = 35'000; // nothing ran for 45
    EXPECT_EQ(answers(summary).kernel,
              "The host: for 45% of the run nothing ran; of the kernels k ran longest, 20%");
    // Without the time of transfers that of nothing isn't known either.
    summary.transfer_only.reset();
    EXPECT_EQ(answers(summary).kernel, "k: 20% of the run, 100 us in 1 invocation");
}

TEST(Answers, GapsAreNoShareOfNoTime) {
    ProfileSummary summary = made::run({made::kernel("k", {made::global_read()})});
    KernelSummary& kernel = summary.kernels[0];
    kernel.num_invocations = 10;
    kernel.metrics[Metric::kernel_time] = kernel.metrics[Metric::kernel_total] = 0;
    kernel.gaps = 27'900;
    EXPECT_EQ(answers(summary).kernel, "k: 100% of the run, 0 ns in 10 invocations");
}

TEST(Answers, ACauseWhoseTimeIsNotKnownDoesNotComeFirst) {
    ProfileSummary summary = pipeline();
    summary.kernels[1].blocks[0].metrics[Metric::lost].reset();
    EXPECT_EQ(answers(summary).culprit_block, "recv_mapped");
}
