// SPDX-License-Identifier: Apache-2.0
#include "diagnosis.h"

#include "gmock/gmock.h"
#include "gtest/gtest.h"
#include "made_summary.h"
#include "rules_reader.h"

using namespace zan::profile;

namespace {

BlockSummary losing(const char* name, double stall, Value lost) {
    BlockSummary made = made::block(name, BlockKind::channel, Direction::read);
    made.metrics[Metric::stall] = stall;
    made.metrics[Metric::lost] = lost;
    return made;
}

ProfileSummary diagnosed(std::vector<KernelSummary> kernels) {
    ProfileSummary summary = made::run(std::move(kernels));
    diagnose(summary, built_in_rules());
    return summary;
}

std::vector<std::string> ranked_names(const ProfileSummary& summary) {
    std::vector<std::string> names;
    for (const RankedBlock& block : ranking(summary))
        names.push_back(summary.kernels[block.kernel].blocks[block.block].name);
    return names;
}

} // namespace

TEST(Diagnosis, BlocksAreRankedByTheTimeThatTheyLost) {
    const ProfileSummary summary =
        diagnosed({made::kernel("a", {losing("small", 10, 10.0), losing("unknown", 10, {})}),
                   made::kernel("b", {losing("great", 40, 40.0), losing("equal", 10, 10.0)})});
    EXPECT_THAT(ranked_names(summary), testing::ElementsAre("great", "small", "equal", "unknown"));
}

TEST(Diagnosis, ALoopWithGapsIsRankedByItsCyclesBesideWorkAndStalls) {
    // 25,000 cycles, 20% of them valid and 4% stalled: 76% of 100 us are 76 us.
    BlockSummary loop = made::loop();
    loop.metrics[Metric::net] = 96.0 / 20;
    BlockSummary store = losing("store", 4, 4'000.0);
    store.metrics[Metric::valid] = 20;
    ProfileSummary summary = diagnosed({made::kernel("k", {store, loop})});
    std::vector<RankedBlock> ranked = ranking(summary);
    ASSERT_EQ(ranked.size(), 2u);
    EXPECT_EQ(ranked[0].block, 1u);
    EXPECT_NEAR(ranked[0].time.value(), 76'000, 1e-6);
    // Without a clock, by the kernel's time.
    summary.clock_mhz.reset();
    summary.kernels[0].metrics[Metric::kernel_total] = 200'000;
    EXPECT_NEAR(ranking(summary)[0].time.value(), 152'000, 1e-6);
    // Also without a unit of the times, and without the cycles, which a saved summary may lack.
    summary.clock_mhz = 250;
    summary.nanoseconds.reset();
    EXPECT_NEAR(ranking(summary)[0].time.value(), 152'000, 1e-6);
    summary.nanoseconds = 1;
    summary.kernels[0].blocks[1].cycles.reset();
    EXPECT_NEAR(ranking(summary)[0].time.value(), 152'000, 1e-6);
    // Then without the kernel's time it isn't known, ...
    summary.kernels[0].metrics[Metric::kernel_total].reset();
    ranked = ranking(summary);
    EXPECT_EQ(ranked[1].block, 1u);
    EXPECT_EQ(ranked[1].time, Value());
    // ... and neither without the cycles of an iteration beside stalls, or the share of valid cycles.
    summary.kernels[0].metrics[Metric::kernel_total] = 200'000;
    summary.kernels[0].blocks[1].metrics[Metric::net].reset();
    EXPECT_EQ(ranking(summary)[1].time, Value());
    summary.kernels[0].blocks[1].metrics[Metric::net] = 96.0 / 20;
    summary.kernels[0].blocks[1].metrics[Metric::valid].reset();
    ranked = ranking(summary);
    EXPECT_EQ(ranked[1].block, 1u);
    EXPECT_EQ(ranked[1].time, Value());
    // Any other loop has no time.
    loop.metrics[Metric::net] = 1.5;
    ranked = ranking(diagnosed({made::kernel("k", {loop, store})}));
    EXPECT_EQ(ranked[0].block, 1u);
    EXPECT_EQ(ranked[1].time, Value());
}

TEST(Diagnosis, BlocksThatOnlyWaitForWorkRankLast) {
    KernelSummary autorun = made::kernel("forever", {losing("in", 90, 90'000.0)});
    autorun.autorun = true;
    BlockSummary unknown = losing("unknown", 10, {});
    EXPECT_THAT(ranked_names(diagnosed({autorun, made::kernel("k", {unknown})})),
                testing::ElementsAre("unknown", "in"));
}

TEST(Diagnosis, AKernelsCulpritIsTheFirstThatStallsATenth) {
    // "long" lost more, but only 9% of its cycles, which are many.
    const ProfileSummary summary =
        diagnosed({made::kernel("k", {losing("long", 9, 90.0), losing("worth", 10, 10.0)})});
    EXPECT_EQ(summary.kernels[0].culprit, "worth");
}

TEST(Diagnosis, WithoutStallsTheCulpritIsALoopWithGapsElseTheFirst) {
    BlockSummary loop = made::loop();
    BlockSummary store = losing("store", 4, 4'000.0);
    store.metrics[Metric::valid] = 20;
    EXPECT_EQ(diagnosed({made::kernel("k", {store, loop})}).kernels[0].culprit, "columns");
    loop.metrics[Metric::net] = 1.5;
    EXPECT_EQ(diagnosed({made::kernel("k", {loop, store})}).kernels[0].culprit, "store");
    EXPECT_EQ(diagnosed({made::kernel("k", {})}).kernels[0].culprit, "");
}

TEST(Diagnosis, TheInnermostLoopHasTheGreatestValidShare) {
    BlockSummary outer = made::loop("outer");
    outer.metrics[Metric::valid] = 1;
    BlockSummary unused = made::loop("unused");
    unused.metrics[Metric::valid] = 0;
    BlockSummary unknown = made::loop("unknown");
    unknown.metrics[Metric::valid].reset();
    const ProfileSummary summary =
        diagnosed({made::kernel("k", {outer, made::loop("inner")}), made::kernel("idle", {unused, unknown})});
    EXPECT_FALSE(summary.kernels[0].blocks[0].innermost);
    EXPECT_TRUE(summary.kernels[0].blocks[1].innermost);
    EXPECT_FALSE(summary.kernels[1].blocks[0].innermost); // none of its loops is known to have run
    EXPECT_FALSE(summary.kernels[1].blocks[1].innermost);
}

TEST(Diagnosis, ASecondDiagnosisChangesNothing) {
    ProfileSummary summary = diagnosed({made::kernel("a", {made::global_read(), made::loop()}),
                                        made::kernel("b", {losing("in", 20, 20.0)})});
    const ProfileSummary first = summary;
    diagnose(summary, built_in_rules());
    EXPECT_EQ(summary, first);
}

TEST(Diagnosis, ARunWithoutKernelsHasAnswersToo) {
    ProfileSummary summary = made::run({});
    summary.kernel_time = 0;
    diagnose(summary, built_in_rules());
    EXPECT_EQ(summary.answers.kernel, "The host: for 100% of the run nothing ran");
    ProfileSummary empty;
    diagnose(empty, built_in_rules());
    EXPECT_EQ(empty.answers.kernel, "No kernel ran");
    EXPECT_EQ(empty.answers.block, "Unknown: the profile has no counters of its blocks");
    EXPECT_EQ(empty.answers.source, "None");
    EXPECT_EQ(empty.answers.memory, "Unknown");
}

// All times of the run are the same, so no kernel has a share of it.
TEST(Diagnosis, ARunWithoutTimeHasNoLeaderButSaysSo) {
    ProfileSummary summary = made::run({made::kernel("k", {made::global_read()})});
    summary.metrics[Metric::span] = 0;
    summary.kernel_time = 0;
    summary.kernels[0].metrics[Metric::kernel_total] = 0;
    diagnose(summary, built_in_rules());
    EXPECT_EQ(summary.answers.kernel, "Unknown: the times of the run don't say");
}
