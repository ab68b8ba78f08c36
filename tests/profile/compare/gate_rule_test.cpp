// SPDX-License-Identifier: Apache-2.0
#include "gate_rule.h"

#include <gtest/gtest.h>

#include "two_runs.h"

using namespace zan::profile;

namespace {

using Lines = std::vector<std::string>;

GateRule rule_of(const std::string& text) {
    const auto parsed = parse_gate_rule(text);
    EXPECT_TRUE(std::holds_alternative<GateRule>(parsed)) << text;
    const auto* const rule = std::get_if<GateRule>(&parsed);
    return rule ? *rule : GateRule{};
}

GateRuleFault fault_of_rule(const std::string& text) {
    const auto parsed = parse_gate_rule(text);
    EXPECT_TRUE(std::holds_alternative<GateRuleFault>(parsed)) << text;
    const auto* const fault = std::get_if<GateRuleFault>(&parsed);
    return fault ? *fault : GateRuleFault{};
}

TEST(GateRule, HasAMetricADirectionAndALimit) {
    const GateRule time = rule_of("kernel_time:+3%");
    EXPECT_EQ(time.text, "kernel_time:+3%");
    EXPECT_EQ(time.metric, Metric::kernel_time);
    EXPECT_TRUE(time.is_rise);
    EXPECT_TRUE(time.is_share);
    EXPECT_EQ(time.limit, 3);
    const GateRule stall = rule_of("stall:+5");
    EXPECT_FALSE(stall.is_share);
    EXPECT_EQ(stall.limit, 5);
    const GateRule bandwidth = rule_of("bandwidth:-1.5e2");
    EXPECT_FALSE(bandwidth.is_rise);
    EXPECT_EQ(bandwidth.limit, 150);
    EXPECT_EQ(rule_of("kernel_time:+0%").limit, 0);
}

TEST(GateRule, LimitsOfTimesHaveAUnit) {
    EXPECT_EQ(rule_of("lost:+2ns").limit, 2);
    EXPECT_EQ(rule_of("lost:+2us").limit, 2'000);
    EXPECT_EQ(rule_of("lost:+0.5ms").limit, 500'000);
    EXPECT_EQ(rule_of("lost:+1s").limit, 1'000'000'000);
}

TEST(GateRule, OtherTextsAreRefused) {
    for (const char* text : {"stall", "stall:", "stall:5", "stall:+", "stall:+x", "stall:+5%", "stall:+5 ",
                             "stall:++5", "stall:+-5", "stall:+inf", "stall:+nan", "kernel_time:+3",
                             "kernel_time:+3m", "kernel_time:+3 %", "bandwidth:+3MB"}) {
        const GateRuleFault fault = fault_of_rule(text);
        EXPECT_NE(fault.text.find(std::string("'") + text + "'"), std::string::npos) << fault.text;
        EXPECT_EQ(fault.unknown_metric, "");
    }
    EXPECT_EQ(fault_of_rule("stall:+5%").text,
              "'stall:+5%' is no rule: the limit is a number of points, as in '+5'");
}

TEST(GateRule, AnUnknownMetricIsNamed) {
    EXPECT_EQ(fault_of_rule("stal:+5").unknown_metric, "stal");
    EXPECT_EQ(fault_of_rule(":+5").text, "there is no metric ''");
}

// Failures as "writer/store 28 -> 35", with numbers cut to integers; then how many were compared and not.
Lines check(const std::string& text, const ProfileSummary& before, const ProfileSummary& after,
            const SubjectFilter& filter = {}) {
    const GateRule rule = rule_of(text);
    const RunComparison comparison = compare(before, after);
    const GateResult result = check_rule(rule, comparison, filter);
    Lines lines;
    for (const GateFailure& failure : result.failures)
        lines.push_back(label_of(*failure.subject) + " " + std::to_string(static_cast<int>(failure.before)) +
                        " -> " + std::to_string(static_cast<int>(failure.after)));
    lines.push_back(std::to_string(result.num_compared) + " compared, " + std::to_string(result.num_missing) +
                    " missing");
    return lines;
}

ProfileSummary run_with(double stall, double bandwidth, double time) {
    return run_of(
        {kernel_of("writer", {{Metric::kernel_time, time}},
                   {block_of("store", {{Metric::stall, stall}, {Metric::bandwidth, bandwidth}}),
                    block_of("load", {{Metric::stall, 10}})}),
         kernel_of("reader", {{Metric::kernel_time, 50}}, {block_of("load", {{Metric::stall, stall}})})});
}

TEST(GateRule, PointsAreComparedWithTheDifference) {
    EXPECT_EQ(check("stall:+5", run_with(28, 1, 1), run_with(33.1, 1, 1)),
              (Lines{"writer/store 28 -> 33", "reader/load 28 -> 33", "3 compared, 0 missing"}));
    EXPECT_EQ(check("stall:+5", run_with(28, 1, 1), run_with(33, 1, 1)), Lines{"3 compared, 0 missing"});
    EXPECT_EQ(check("stall:+5", run_with(33.1, 1, 1), run_with(28, 1, 1)), Lines{"3 compared, 0 missing"});
    EXPECT_EQ(check("stall:-5", run_with(33.1, 1, 1), run_with(28, 1, 1)).size(), 3u);
}

// 3% of 100 are exactly at the limit, which is no failure.
TEST(GateRule, SharesAreComparedWithTheOldValue) {
    EXPECT_EQ(check("kernel_time:+3%", run_with(1, 1, 100), run_with(1, 1, 103)),
              Lines{"2 compared, 0 missing"});
    EXPECT_EQ(check("kernel_time:+3%", run_with(1, 1, 100), run_with(1, 1, 103.1)),
              (Lines{"writer 100 -> 103", "2 compared, 0 missing"}));
    EXPECT_EQ(check("bandwidth:-10%", run_with(1, 1000, 1), run_with(1, 899, 1)),
              (Lines{"writer/store 1000 -> 899", "1 compared, 0 missing"}));
    EXPECT_EQ(check("bandwidth:+10%", run_with(1, 0, 1), run_with(1, 1, 1)),
              (Lines{"writer/store 0 -> 1", "1 compared, 0 missing"}));
}

TEST(GateRule, ALimitOfZeroFailsForAnyRise) {
    EXPECT_EQ(check("kernel_time:+0%", run_with(1, 1, 100), run_with(1, 1, 100)),
              Lines{"2 compared, 0 missing"});
    EXPECT_EQ(check("kernel_time:+0%", run_with(1, 1, 100), run_with(1, 1, 101)),
              (Lines{"writer 100 -> 101", "2 compared, 0 missing"}));
}

TEST(GateRule, WhatIsInOneRunAloneIsMissing) {
    EXPECT_EQ(check("bandwidth:-10%", run_with(1, 1, 1),
                    run_of({kernel_of("writer", {}, {block_of("store", {})})})),
              Lines{"0 compared, 1 missing"});
    EXPECT_EQ(check("kernel_time:+3%", run_with(1, 1, 1), run_of({})), Lines{"0 compared, 2 missing"});
    EXPECT_EQ(check("fill:+3", run_with(1, 1, 1), run_with(1, 1, 1)), Lines{"0 compared, 0 missing"});
}

TEST(GateRule, KernelsAndBlocksCanBeChosen) {
    const ProfileSummary before = run_with(10, 1, 1);
    const ProfileSummary after = run_with(30, 1, 1);
    EXPECT_EQ(check("stall:+5", before, after, {{"reader"}, {}}),
              (Lines{"reader/load 10 -> 30", "1 compared, 0 missing"}));
    EXPECT_EQ(check("stall:+5", before, after, {{}, {"load"}}),
              (Lines{"reader/load 10 -> 30", "2 compared, 0 missing"}));
    EXPECT_EQ(check("stall:+5", before, after, {{}, {"writer/store"}}),
              (Lines{"writer/store 10 -> 30", "1 compared, 0 missing"}));
    EXPECT_EQ(check("stall:+5", before, after, {{"writer"}, {"reader/load"}}),
              Lines{"0 compared, 0 missing"});
    EXPECT_EQ(check("kernel_time:+5%", before, after, {{"writer"}, {"load"}}),
              Lines{"1 compared, 0 missing"});
}

TEST(GateRule, AKernelWithAnotherNameIsChosenByEither) {
    SubjectComparison renamed;
    renamed.scope = MetricScope::kernel;
    renamed.kernel = "writer_v2";
    renamed.old_kernel = "writer";
    EXPECT_TRUE((SubjectFilter{{"writer_v2"}, {}}.takes(renamed)));
    EXPECT_TRUE((SubjectFilter{{"writer"}, {}}.takes(renamed)));
    EXPECT_FALSE((SubjectFilter{{"reader"}, {}}.takes(renamed)));
}

TEST(GateRule, RunAndMemoriesAreAlwaysChosen) {
    const ProfileSummary before =
        run_of({}, {memory_of("DDR", {{Metric::memory_full, 10}})}, {{Metric::span, 100}});
    const ProfileSummary after =
        run_of({}, {memory_of("DDR", {{Metric::memory_full, 30}})}, {{Metric::span, 200}});
    EXPECT_EQ(check("memory_full:+5", before, after, {{"x"}, {"y"}}),
              (Lines{"DDR 10 -> 30", "1 compared, 0 missing"}));
    EXPECT_EQ(check("span:+5%", before, after, {{"x"}, {"y"}}),
              (Lines{"run 100 -> 200", "1 compared, 0 missing"}));
}

TEST(GateRule, ATimeThatTheTestFindsUnchangedDoesNotFail) {
    const auto run = [](double median, double low, double high) {
        KernelSummary kernel = kernel_of("k", {{Metric::kernel_time, median}});
        kernel.median_low = low;
        kernel.median_high = high;
        return run_of({kernel});
    };
    EXPECT_EQ(check("kernel_time:+3%", run(100, 90, 110), run(120, 110, 130)),
              Lines{"1 compared, 0 missing"});
    EXPECT_EQ(check("kernel_time:+3%", run(100, 90, 110), run(120, 111, 130)),
              (Lines{"k 100 -> 120", "1 compared, 0 missing"}));
}

TEST(GateRule, TimesWithoutAUnitAreOnlyComparedByTheirShare) {
    ProfileSummary before = run_with(1, 1, 100);
    ProfileSummary after = run_with(1, 1, 200);
    before.nanoseconds = {};
    EXPECT_EQ(check("kernel_time:+3%", before, after), Lines{"0 compared, 2 missing"});
    after.nanoseconds = {};
    EXPECT_EQ(check("kernel_time:+3%", before, after), (Lines{"writer 100 -> 200", "2 compared, 0 missing"}));
    EXPECT_EQ(check("kernel_time:+3ns", before, after), Lines{"0 compared, 2 missing"});
}

TEST(GateRule, ABlockWithAnotherNameIsChosenByEither) {
    SubjectComparison renamed;
    renamed.scope = MetricScope::block;
    renamed.kernel = "writer_v2#1";
    renamed.old_kernel = "writer#1";
    renamed.name = "store_2";
    renamed.old_name = "store_1";
    for (const char* name : {"store_1", "store_2", "writer#1/store_1", "writer_v2#1/store_2"})
        EXPECT_TRUE((SubjectFilter{{}, {name}}.takes(renamed))) << name;
    // The old kernel has the old block, and the new one the new.
    for (const char* name : {"store", "writer#1/store_2", "writer_v2#1/store_1", "writer/store_1"})
        EXPECT_FALSE((SubjectFilter{{}, {name}}.takes(renamed))) << name;
    EXPECT_TRUE((SubjectFilter{{"writer"}, {"store_2"}}.takes(renamed)));
    EXPECT_TRUE((SubjectFilter{{"other", "writer_v2#1"}, {"other", "store_2"}}.takes(renamed)));
    EXPECT_FALSE((SubjectFilter{{"reader"}, {"store_2"}}.takes(renamed)));
}

TEST(GateRule, WhatOnlyTheNewRunMeasuredIsMissing) {
    const ProfileSummary before = run_of({kernel_of("k", {}, {block_of("b", {})})});
    const ProfileSummary after = run_of({kernel_of("k", {}, {block_of("b", {{Metric::stall, 90}})})});
    EXPECT_EQ(check("stall:+5", before, after), Lines{"0 compared, 1 missing"});
    EXPECT_EQ(check("stall:+5", after, before), Lines{"0 compared, 1 missing"});
}

TEST(GateRule, ALimitInATimeIsComparedWithTheDifference) {
    ProfileSummary before = run_with(1, 1, 5'000);
    ProfileSummary after = run_with(1, 1, 8'001);
    EXPECT_EQ(check("kernel_time:+3us", before, after),
              (Lines{"writer 5000 -> 8001", "2 compared, 0 missing"}));
    EXPECT_EQ(check("kernel_time:+3.001us", before, after), Lines{"2 compared, 0 missing"});
    EXPECT_EQ(check("kernel_time:-3us", before, after), Lines{"2 compared, 0 missing"});
    EXPECT_EQ(check("kernel_time:-3us", after, before),
              (Lines{"writer 8001 -> 5000", "2 compared, 0 missing"}));
}

} // namespace
