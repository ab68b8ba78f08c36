// SPDX-License-Identifier: Apache-2.0
#include "diff_view.h"

#include <gtest/gtest.h>

#include "diff_result.h"

namespace {

using namespace zan::tool;
using namespace zan::profile;
using Texts = std::vector<std::string>;
using Rows = std::vector<ChangeRow>;

TEST(DiffView, ChangesAreSortedByWhatTheyMean) {
    const TwoRuns runs = slower_writer();
    const DiffView view = make_view(runs.result());
    EXPECT_EQ(view.base, "base.json");
    EXPECT_EQ(view.new_run, "new.json");
    EXPECT_EQ(view.worse, (Rows{{"writer", "kernel_time", "8.00 us", "9.20 us", "+15.0%"},
                                {"writer/store", "stall", "28.0%", "35.1%", "+7.1 points"}}));
    EXPECT_EQ(view.better, (Rows{{"writer/load", "stall", "20.0%", "10.0%", "-10.0 points"}}));
    EXPECT_EQ(view.other, (Rows{{"writer", "busy", "50.0%", "60.0%", "+10.0 points"}}));
    EXPECT_EQ(view.appeared, Texts{"block writer/log (image.cl:40)"});
    EXPECT_EQ(view.disappeared, Texts{});
    EXPECT_EQ(view.moved, Texts{"writer/store: image.cl:34, now image.cl:36"});
    EXPECT_EQ(view.notes, Texts{});
    EXPECT_TRUE(view.has_changes());
}

TEST(DiffView, TheSameRunHasNoChanges) {
    TwoRuns runs = slower_writer();
    runs.after = runs.before;
    EXPECT_FALSE(make_view(runs.result()).has_changes());
}

TEST(DiffView, WhatIsNotAskedForIsLeftOut) {
    const TwoRuns runs = slower_writer();
    const DiffView view = make_view(runs.result({}, {{}, {"load"}}));
    EXPECT_EQ(view.worse.size(), 1u); // the kernel
    EXPECT_EQ(view.better.size(), 1u);
    EXPECT_EQ(view.appeared, Texts{});
    EXPECT_EQ(view.moved, Texts{});
}

TEST(DiffView, RulesSayHowManyTheyWereComparedFor) {
    const TwoRuns runs = slower_writer();
    const DiffView view =
        make_view(runs.result({"stall:+5", "stall:+8", "bandwidth:-10%", "memory_full:+1"}));
    EXPECT_EQ(view.failures, (Rows{{"writer/store", "stall:+5", "28.0%", "35.1%", "+7.1 points"}}));
    EXPECT_EQ(view.rule_results,
              (Texts{"stall:+5 fails for 1 of 2 blocks", "stall:+8 holds for 2 blocks",
                     "bandwidth:-10% holds for 1 block", "memory_full:+1 holds for 1 memory"}));
}

TEST(DiffView, ARuleSaysWhatItCouldNotCompare) {
    TwoRuns runs = slower_writer();
    runs.after.kernels[0].blocks[1].metrics[Metric::stall] = {};
    EXPECT_EQ(make_view(runs.result({"stall:+8"})).rule_results,
              Texts{"stall:+8 holds for 1 block; 1 can't be compared"});
}

TEST(DiffView, WhatMakesTheComparisonDoubtfulIsNoted) {
    TwoRuns runs = slower_writer();
    runs.before.board = "one";
    runs.after.board = "two";
    runs.before.clock_text = "250.0";
    runs.after.clock_text = "240.0";
    runs.before.notes = {{"clock-mismatch", "cycles and time stamps differ"}};
    runs.after.notes = {{"no-clock", "no clock is known"}};
    runs.before.nanoseconds = {};
    EXPECT_EQ(make_view(runs.result()).notes,
              (Texts{"the boards differ: one, now two", "the clocks differ: 250.0 MHz, now 240.0 MHz",
                     "times aren't compared: the unit of time is known of one run alone",
                     "base: cycles and time stamps differ", "new: no clock is known"}));
}

TEST(DiffView, TransfersAreComparedByCountAndTotal) {
    TwoRuns runs = slower_writer();
    runs.after = runs.before;
    runs.before.transfers = {{".read", 0, 2, 100'000, 50'000, 10}, {".read", 1, 1, 10, 10, 1}};
    runs.after.transfers = {{".write", 0, 1, 30, 30, 3}, {".read", 0, 1'500, 150'000, 50, 10}};
    const DiffView view = make_view(runs.result());
    EXPECT_EQ(view.other, (Rows{{".read, queue 0", "count", "2", "1,500", "+1,498"}}));
    EXPECT_EQ(view.worse, (Rows{{".read, queue 0", "total time", "100 us", "150 us", "+50.0%"}}));
    EXPECT_EQ(view.appeared, Texts{"transfers .write, queue 0"});
    EXPECT_EQ(view.disappeared, Texts{"transfers .read, queue 1"});
}

// From 3 with 100 ns to 1 with 60 ns; another queue has the same count.
TEST(DiffView, FewerTransfersAreNeitherAndLessOfTheirTimeIsBetter) {
    TwoRuns runs = slower_writer();
    runs.after = runs.before;
    runs.before.transfers = {{".read", 0, 3, 100, 50, 10}, {".read", 1, 2, 500, 50, 10}};
    runs.after.transfers = {{".read", 0, 1, 60, 60, 10}, {".read", 1, 2, 500, 50, 10}};
    const DiffView view = make_view(runs.result());
    EXPECT_EQ(view.other, (Rows{{".read, queue 0", "count", "3", "1", "-2"}}));
    EXPECT_EQ(view.better, (Rows{{".read, queue 0", "total time", "100 ns", "60 ns", "-40.0%"}}));
    EXPECT_EQ(view.worse, Rows());
}

TEST(DiffView, ARuleCountsWhatItIsOf) {
    TwoRuns runs;
    runs.before = runs.after =
        run_of({kernel_of("a", {{Metric::kernel_time, 5}}), kernel_of("b", {{Metric::kernel_time, 5}})},
               {memory_of("DDR", {{Metric::memory_full, 5}}), memory_of("HBM", {{Metric::memory_full, 5}})},
               {{Metric::span, 10}});
    EXPECT_EQ(make_view(runs.result({"span:+5%", "kernel_time:+5%", "memory_full:+1"})).rule_results,
              (Texts{"span:+5% holds for 1 run", "kernel_time:+5% holds for 2 kernels",
                     "memory_full:+1 holds for 2 memories"}));
}

TEST(DiffView, WhatIsGoneIsShownWhereItWas) {
    TwoRuns runs = slower_writer();
    runs.before.kernels.push_back(kernel_of("old", {}));
    runs.before.memories.push_back(memory_of("HBM", {}));
    runs.before.kernels[0].blocks.push_back(block_of("cache", {}, 12));
    EXPECT_EQ(make_view(runs.result()).disappeared,
              (Texts{"block writer/cache (image.cl:12)", "kernel old", "memory HBM"}));
}

TEST(DiffView, TransfersAreOfNoKernelAndOfNoBlock) {
    TwoRuns runs = slower_writer();
    runs.before.transfers = {{".read", 0, 2, 100, 50, 10}};
    EXPECT_EQ(make_view(runs.result()).disappeared, Texts{"transfers .read, queue 0"});
    EXPECT_EQ(make_view(runs.result({}, {{"writer"}, {}})).disappeared, Texts());
    EXPECT_EQ(make_view(runs.result({}, {{}, {"store"}})).disappeared, Texts());
}

TEST(DiffView, TimesOfTransfersInDifferentUnitsAreNotCompared) {
    TwoRuns runs;
    runs.before = runs.after = run_of({});
    runs.before.transfers = {{".read", 0, 2, 100, 50, 10}};
    runs.after.transfers = {{".read", 0, 3, 900, 300, 10}};
    runs.before.nanoseconds = {};
    const DiffView view = make_view(runs.result());
    EXPECT_EQ(view.other, (Rows{{".read, queue 0", "count", "2", "3", "+1"}}));
    EXPECT_EQ(view.worse, Rows());
}

TEST(DiffView, ARowOrALineOfAnyKindIsAChange) {
    for (const auto rows : {&DiffView::worse, &DiffView::better, &DiffView::other}) {
        DiffView view;
        view.*rows = {{"k", "m", "1", "2", "+1"}};
        EXPECT_TRUE(view.has_changes());
    }
    for (const auto lines : {&DiffView::appeared, &DiffView::disappeared, &DiffView::moved}) {
        DiffView view;
        view.*lines = {"kernel k"};
        EXPECT_TRUE(view.has_changes());
    }
    // What is said of both runs and of rules is none.
    DiffView view;
    view.notes = view.rule_results = {"a text"};
    view.failures = {{"k", "stall:+5", "1", "7", "+6"}};
    EXPECT_FALSE(view.has_changes());
}

} // namespace
