// SPDX-License-Identifier: Apache-2.0
#include "comparison.h"

#include <gtest/gtest.h>

#include "source_place.h"
#include "two_runs.h"

using namespace zan::profile;

namespace {

using Lines = std::vector<std::string>;

std::string number_of(const Value& value) {
    std::string text = value ? std::to_string(*value) : "-";
    return text.substr(0, text.find('.'));
}

// "writer/store: stall 28 -> 35 worse" for each change; "writer: appeared" for what is in one run alone.
Lines lines_of(const ProfileSummary& before, const ProfileSummary& after, MatchBy match = MatchBy::name) {
    constexpr const char* verdicts[] = {"worse", "better", "neither"};
    Lines lines;
    for (const SubjectComparison& subject : compare(before, after, match).subjects) {
        if (!subject.is_in_both())
            lines.push_back(label_of(subject) + ": " + (subject.after ? "appeared" : "disappeared"));
        for (const MetricChange& change : subject.changes)
            lines.push_back(label_of(subject) + ": " + std::string(row_of(change.metric).name) + " " +
                            number_of(change.before) + " -> " + number_of(change.after) + " " +
                            verdicts[static_cast<int>(change.verdict)]);
    }
    return lines;
}

TEST(Comparison, WhetherMoreIsBetterIsTheMetrics) {
    const auto run = [](double stall, double valid, double idle, double time) {
        return run_of(
            {kernel_of(
                "writer", {{Metric::kernel_time, time}},
                {block_of("store", {{Metric::stall, stall}, {Metric::valid, valid}, {Metric::idle, idle}})})},
            {memory_of("DDR", {{Metric::memory_full, stall}})}, {{Metric::span, time}});
    };
    EXPECT_EQ(lines_of(run(28, 68, 4, 8000), run(35, 60, 10, 9000)),
              (Lines{"run: span 8000 -> 9000 worse", "writer: kernel_time 8000 -> 9000 worse",
                     "writer/store: stall 28 -> 35 worse", "writer/store: valid 68 -> 60 worse",
                     "writer/store: idle 4 -> 10 neither", "DDR: memory_full 28 -> 35 worse"}));
    EXPECT_EQ(lines_of(run(35, 60, 10, 9000), run(28, 60, 10, 9000)),
              (Lines{"writer/store: stall 35 -> 28 better", "DDR: memory_full 35 -> 28 better"}));
}

TEST(Comparison, TheSameRunTwiceHasNoChanges) {
    const ProfileSummary run =
        run_of({kernel_of("a", {{Metric::kernel_time, 5}}, {block_of("b", {{Metric::stall, 9}}, 3)})});
    EXPECT_EQ(lines_of(run, run), Lines{});
}

// Percent by points, all others by a share of the old value.
TEST(Comparison, SmallChangesAreNone) {
    const auto run = [](double stall, double bandwidth) {
        return run_of(
            {kernel_of("k", {}, {block_of("b", {{Metric::stall, stall}, {Metric::bandwidth, bandwidth}})})});
    };
    EXPECT_EQ(lines_of(run(2.0, 12'000), run(2.99, 12'239)), Lines{});
    EXPECT_EQ(lines_of(run(2.0, 12'000), run(3.0, 12'240)),
              (Lines{"k/b: stall 2 -> 3 worse", "k/b: bandwidth 12000 -> 12240 better"}));
    EXPECT_EQ(lines_of(run(2.0, 0), run(2.0, 1)), Lines{"k/b: bandwidth 0 -> 1 better"});
}

TEST(Comparison, WhatOneRunDidNotMeasureIsNoVerdict) {
    const ProfileSummary with = run_of({kernel_of("k", {}, {block_of("b", {{Metric::stall, 40}})})});
    const ProfileSummary without = run_of({kernel_of("k", {}, {block_of("b", {})})});
    EXPECT_EQ(lines_of(with, without), Lines{"k/b: stall 40 -> - neither"});
    EXPECT_EQ(lines_of(without, with), Lines{"k/b: stall - -> 40 neither"});
}

TEST(Comparison, WhatIsInOneRunAloneAppearedOrDisappeared) {
    const ProfileSummary before =
        run_of({kernel_of("old", {}, {block_of("x", {})}), kernel_of("k", {}, {block_of("a", {})})},
               {memory_of("DDR", {})});
    const ProfileSummary after =
        run_of({kernel_of("k", {}, {block_of("b", {})}), kernel_of("new", {})}, {memory_of("HBM", {})});
    EXPECT_EQ(lines_of(before, after), (Lines{"k/b: appeared", "k/a: disappeared", "new: appeared",
                                              "old: disappeared", "HBM: appeared", "DDR: disappeared"}));
}

TEST(Comparison, ComputeUnitsAreKernelsOfTheirOwn) {
    const auto unit = [](int number, double time) {
        KernelSummary kernel = kernel_of("aggregate", {{Metric::kernel_time, time}});
        kernel.compute_unit = number;
        return kernel;
    };
    EXPECT_EQ(lines_of(run_of({unit(0, 10), unit(1, 20)}), run_of({unit(1, 30), unit(0, 10)})),
              Lines{"aggregate#1: kernel_time 20 -> 30 worse"});
}

TEST(Comparison, BlocksThatMovedKeepBothPlaces) {
    const ProfileSummary before = run_of({kernel_of("k", {}, {block_of("b", {}, 34), block_of("c", {}, 9)})});
    const ProfileSummary after = run_of({kernel_of("k", {}, {block_of("b", {}, 36), block_of("c", {}, 9)})});
    const RunComparison comparison = compare(before, after);
    ASSERT_EQ(comparison.subjects.size(), 4u); // the run, the kernel, two blocks
    EXPECT_TRUE(comparison.subjects[2].has_moved());
    EXPECT_EQ(source_place_text(comparison.subjects[2].old_place), "image.cl:34");
    EXPECT_EQ(source_place_text(comparison.subjects[2].new_place), "image.cl:36");
    EXPECT_FALSE(comparison.subjects[3].has_moved());
    EXPECT_FALSE(comparison.subjects[1].has_moved()); // nothing is known of the kernel's place
}

// Generated names: the loads of lines 9 and 12 have each other's names in the new run.
TEST(Comparison, BlocksCanBeMatchedByTheirSource) {
    const ProfileSummary before = run_of({kernel_of(
        "k", {},
        {block_of("load_1", {{Metric::stall, 10}}, 9), block_of("load_2", {{Metric::stall, 50}}, 12)})});
    const ProfileSummary after = run_of({kernel_of(
        "k", {},
        {block_of("load_1", {{Metric::stall, 50}}, 12), block_of("load_2", {{Metric::stall, 20}}, 9)})});
    EXPECT_EQ(lines_of(before, after, MatchBy::source), Lines{"k/load_2: stall 10 -> 20 worse"});
    EXPECT_EQ(lines_of(before, after),
              (Lines{"k/load_1: stall 10 -> 50 worse", "k/load_2: stall 50 -> 20 better"}));
    const RunComparison comparison = compare(before, after, MatchBy::source);
    EXPECT_EQ(comparison.subjects[2].old_name, "load_2");
    EXPECT_EQ(comparison.subjects[3].old_name, "load_1");
}

TEST(Comparison, AtOnePlaceTheSameNameIsMatchedFirst) {
    const ProfileSummary before = run_of({kernel_of(
        "k", {}, {block_of("a", {{Metric::stall, 10}}, 9), block_of("b", {{Metric::stall, 50}}, 9)})});
    const ProfileSummary after = run_of({kernel_of(
        "k", {}, {block_of("b", {{Metric::stall, 50}}, 9), block_of("a", {{Metric::stall, 10}}, 9)})});
    EXPECT_EQ(lines_of(before, after, MatchBy::source), Lines{});
}

TEST(Comparison, WithoutASourceTheNameCounts) {
    const ProfileSummary before = run_of({kernel_of("k", {}, {block_of("b", {{Metric::stall, 10}})})});
    const ProfileSummary after = run_of({kernel_of("k", {}, {block_of("b", {{Metric::stall, 20}}, 9)})});
    EXPECT_EQ(lines_of(before, after, MatchBy::source), Lines{"k/b: stall 10 -> 20 worse"});
}

TEST(Comparison, KernelsCanBeMatchedByTheirSource) {
    KernelSummary before = kernel_of("main_7f3a", {{Metric::kernel_time, 10}});
    KernelSummary after = kernel_of("main_90c1", {{Metric::kernel_time, 20}});
    before.source = after.source = {"main.cpp", 40, 0};
    EXPECT_EQ(lines_of(run_of({before}), run_of({after}), MatchBy::source),
              Lines{"main_90c1: kernel_time 10 -> 20 worse"});
    EXPECT_EQ(lines_of(run_of({before}), run_of({after})),
              (Lines{"main_90c1: appeared", "main_7f3a: disappeared"}));
    after.compute_unit = 1; // of the same source, but another unit
    EXPECT_EQ(lines_of(run_of({before}), run_of({after}), MatchBy::source),
              (Lines{"main_90c1#1: appeared", "main_7f3a: disappeared"}));
}

KernelSummary timed(double median, double low, double high, std::uint64_t count = 10) {
    KernelSummary kernel = kernel_of("k", {{Metric::kernel_time, median},
                                           {Metric::kernel_total, median * static_cast<double>(count)},
                                           {Metric::kernel_p95, high}});
    kernel.num_invocations = count;
    kernel.median_low = low;
    kernel.median_high = high;
    return kernel;
}

TEST(Comparison, TimesOfAKernelChangedOnlyIfTheMediansIntervalsAreApart) {
    EXPECT_EQ(lines_of(run_of({timed(100, 90, 110)}), run_of({timed(120, 110, 130)})), Lines{});
    EXPECT_EQ(lines_of(run_of({timed(120, 110, 130)}), run_of({timed(100, 90, 110)})), Lines{});
    EXPECT_EQ(lines_of(run_of({timed(100, 90, 110)}), run_of({timed(120, 111, 130)})),
              (Lines{"k: kernel_time 100 -> 120 worse", "k: kernel_total 1000 -> 1200 worse",
                     "k: kernel_p95 110 -> 130 worse"}));
    EXPECT_EQ(lines_of(run_of({timed(120, 111, 130)}), run_of({timed(100, 90, 110)})).size(), 3u);
}

TEST(Comparison, TheTotalAlsoChangesWithTheNumberOfInvocations) {
    EXPECT_EQ(lines_of(run_of({timed(100, 90, 110, 10)}), run_of({timed(100, 90, 110, 12)})),
              Lines{"k: kernel_total 1000 -> 1200 worse"});
}

TEST(Comparison, BelowFiveInvocationsTimesAreComparedAsTheyAre) {
    KernelSummary few = timed(120, 0, 0, 4);
    few.median_low = few.median_high = {};
    const Lines lines = lines_of(run_of({timed(100, 90, 200)}), run_of({few}));
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines[0], "k: kernel_time 100 -> 120 worse");
}

TEST(Comparison, TimesOfDifferentUnitsAreNotCompared) {
    ProfileSummary before = run_of({kernel_of("k", {{Metric::kernel_time, 100}, {Metric::busy, 50}})});
    ProfileSummary after = run_of({kernel_of("k", {{Metric::kernel_time, 900}, {Metric::busy, 60}})});
    before.nanoseconds = {};
    EXPECT_EQ(lines_of(before, after), Lines{"k: busy 50 -> 60 neither"});
    EXPECT_FALSE(compare(before, after).has_same_time_unit);
    after.nanoseconds = {};
    EXPECT_EQ(lines_of(before, after).size(), 2u);
}

TEST(Comparison, TransfersAreMatchedByKindAndQueue) {
    ProfileSummary before;
    ProfileSummary after;
    before.transfers = {{".mem_transfer_read", 0, 2, 100, 50, 10}, {".mem_transfer_read", 1, 1, 10, 10, 1}};
    after.transfers = {{".mem_transfer_write", 0, 1, 30, 30, 3}, {".mem_transfer_read", 0, 4, 200, 50, 10}};
    const RunComparison comparison = compare(before, after);
    ASSERT_EQ(comparison.transfers.size(), 3u);
    EXPECT_EQ(comparison.transfers[0].type, ".mem_transfer_write");
    EXPECT_EQ(comparison.transfers[0].before, nullptr);
    EXPECT_EQ(comparison.transfers[1].before->num, 2u);
    EXPECT_EQ(comparison.transfers[1].after->num, 4u);
    EXPECT_EQ(comparison.transfers[2].queue, 1);
    EXPECT_EQ(comparison.transfers[2].after, nullptr);
}

// An inlined call may be all that is known of a block, or nothing of it.
TEST(Comparison, ABlockWithoutAPlaceIsMatchedByItsName) {
    BlockSummary before = block_of("b", {{Metric::stall, 10}});
    BlockSummary after = block_of("b", {{Metric::stall, 20}}, 9);
    for (const std::vector<CallChain>& unknown :
         {std::vector<CallChain>{}, std::vector<CallChain>{{}}, std::vector<CallChain>{{{"", 9, 5}}}}) {
        before.sources = unknown;
        const ProfileSummary old_run = run_of({kernel_of("k", {}, {before})});
        const ProfileSummary new_run = run_of({kernel_of("k", {}, {after})});
        EXPECT_EQ(lines_of(old_run, new_run, MatchBy::source), Lines{"k/b: stall 10 -> 20 worse"});
        EXPECT_FALSE(compare(old_run, new_run).subjects.at(2).has_moved());
        EXPECT_FALSE(compare(new_run, old_run).subjects.at(2).has_moved());
    }
}

TEST(Comparison, ABlockHasMovedToAnotherFileOnTheSameLine) {
    BlockSummary before = block_of("b", {}, 9);
    BlockSummary after = before;
    after.sources[0][0].column = 40;
    const auto moved = [&] {
        return compare(run_of({kernel_of("k", {}, {before})}), run_of({kernel_of("k", {}, {after})}))
            .subjects.at(2)
            .has_moved();
    };
    EXPECT_FALSE(moved());
    after.sources[0][0].file = "other.cl";
    EXPECT_TRUE(moved());
}

// As a saved summary may have it.
TEST(Comparison, AnIntervalWithOneEndSaysNothing) {
    const ProfileSummary whole = run_of({timed(100, 90, 110)});
    ProfileSummary half = run_of({timed(100, 90, 110)});
    half.kernels[0].metrics[Metric::kernel_time] = 120;
    const Lines changed = {"k: kernel_time 100 -> 120 worse"};
    EXPECT_EQ(lines_of(whole, half), Lines{});
    half.kernels[0].median_high = {};
    EXPECT_EQ(lines_of(whole, half), changed);
    half.kernels[0].median_low = {};
    EXPECT_EQ(lines_of(whole, half), changed);
    half.kernels[0].median_high = 110;
    EXPECT_EQ(lines_of(whole, half), changed);
    EXPECT_EQ(lines_of(half, whole), Lines{"k: kernel_time 120 -> 100 better"});
    half.kernels[0].median_low = 90;
    half.kernels[0].median_high = {};
    EXPECT_EQ(lines_of(half, whole), Lines{"k: kernel_time 120 -> 100 better"});
}

} // namespace
