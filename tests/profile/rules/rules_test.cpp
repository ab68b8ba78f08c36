// SPDX-License-Identifier: Apache-2.0
// Each rule with a case where it holds, and one as near as possible where it must not.
#include "rules.h"

#include <functional>
#include <set>

#include "block_facts.h"
#include "diagnosis.h"
#include "gtest/gtest.h"
#include "made_summary.h"
#include "rules_reader.h"

using namespace zan::profile;

namespace {

// A run whose first kernel's first block is looked at.
using Change = std::function<void(ProfileSummary&)>;

BlockSummary& first_block(ProfileSummary& summary) {
    return summary.kernels[0].blocks[0];
}

Value& metric(ProfileSummary& summary, Metric which) {
    return first_block(summary).metrics[which];
}

Change set(Metric which, Value value) {
    return [=](ProfileSummary& summary) { metric(summary, which) = value; };
}

Change all_of(std::vector<Change> changes) {
    return [changes = std::move(changes)](ProfileSummary& summary) {
        for (const Change& change : changes)
            change(summary);
    };
}

Change block_field(Value BlockSummary::*field, Value value) {
    return [=](ProfileSummary& summary) { first_block(summary).*field = value; };
}

ProfileSummary run_of(BlockSummary block) {
    return made::run({made::kernel("k", {std::move(block)})});
}

ProfileSummary global_run() {
    return run_of(made::global_read());
}

ProfileSummary global_write_run() {
    ProfileSummary summary = global_run();
    first_block(summary).direction = Direction::write;
    return summary;
}

ProfileSummary channel_run(Direction direction) {
    return run_of(made::block("ch", BlockKind::channel, direction));
}

ProfileSummary write_run() {
    return channel_run(Direction::write);
}

ProfileSummary read_run() {
    return channel_run(Direction::read);
}

// A loop, and a store beside it that stalls 4%.
ProfileSummary loop_run() {
    BlockSummary store = made::block("store", BlockKind::global, Direction::write);
    store.metrics[Metric::stall] = 4;
    store.metrics[Metric::valid] = 20;
    return made::run({made::kernel("k", {made::loop(), store})});
}

Change second_block(Metric which, Value value) {
    return [=](ProfileSummary& summary) { summary.kernels[0].blocks[1].metrics[which] = value; };
}

void share_counters(ProfileSummary& summary) {
    summary.kernels[0].shared_types = 1u << 0 | 1u << 3;
    metric(summary, Metric::stall).reset();
}

// A second block on the same port, and a port that is busy.
void share_port(ProfileSummary& summary) {
    BlockSummary other = made::global_read("load_b");
    other.block_share = 20;
    first_block(summary).block_share = 80;
    summary.kernels[0].blocks.push_back(other);
    metric(summary, Metric::port_use) = 78.3;
}

void use_banks(ProfileSummary& summary) {
    // 90% of the bytes on one of two interfaces, which is used to 75% of its half of the peak.
    summary.memories[0].interfaces = {{"ddr_0", 900.0, 75.0}, {"ddr_1", 100.0, 8.0}};
}

// A second kernel whose channel stalls 3%.
void add_free_stage(ProfileSummary& summary) {
    BlockSummary channel = made::block("out", BlockKind::channel, Direction::write);
    channel.metrics[Metric::stall] = 3;
    summary.kernels.push_back(made::kernel("slow", {channel}));
    summary.kernels[0].team = {"slow"};
}

struct RuleCase {
    const char* rule;
    ProfileSummary (*base)();
    Change holds;        // from the base to where the rule holds
    const char* text;    // what it says
    Change fails;        // from there to where it doesn't
    const char* instead; // the rule that holds then
};

const std::vector<RuleCase>& cases() {
    static const std::vector<RuleCase> all = {
        {"unmeasured", global_run, share_counters,
         "Stalls weren't measured: this run's shared counters counted valid cycles and requests",
         all_of({[](ProfileSummary& s) { s.kernels[0].shared_types |= 1u << 1; }, set(Metric::stall, 40)}),
         "latency"},
        {"port-arbitration", global_run, share_port,
         "Shares its port to DDR with load_b: the port is busy 78% of the cycles",
         [](ProfileSummary& s) { s.kernels[0].blocks[1].block_share = 19.9; }, "port-full"},
        {"port-full", global_run, set(Metric::port_use, 70),
         "Waits for port ddr_port, busy 70% of the cycles; DDR itself has 70% left",
         set(Metric::port_use, 69.9), "latency"},
        {"mem-shared", global_run,
         all_of({set(Metric::memory_use, 86), block_field(&BlockSummary::own_share, 49),
                 [](ProfileSummary& s) {
                     first_block(s).rivals = {"denoise", "align"};
                 }}),
         "Waits for DDR, at 86% of its peak, most of it by denoise and align",
         block_field(&BlockSummary::own_share, 50), "mem-full"},
        {"mem-full-waste", global_run, all_of({set(Metric::memory_use, 86), set(Metric::efficiency, 59)}),
         "Waits for DDR, at 86% of its peak, but 59% of the bytes moved were requested",
         set(Metric::efficiency, 60), "mem-full"},
        {"mem-full", global_run, set(Metric::memory_use, 70), "Waits for DDR, which runs at 70% of its peak",
         set(Metric::memory_use, 69.9), "latency"},
        {"turnaround", global_run,
         all_of({set(Metric::memory_use, 55), block_field(&BlockSummary::read_share, 75),
                 block_field(&BlockSummary::write_share, 25)}),
         "Waits for DDR, at 55% of its peak with reads and writes mixed: turning between them costs",
         block_field(&BlockSummary::write_share, 24.9), "latency"},
        {"one-bank", global_run, use_banks, "One bank of DDR carries 90% of its bytes: spread the buffers",
         [](ProfileSummary& s) { s.memories[0].interfaces[0].use = 69.9; }, "latency"},
        {"unaligned", global_run, all_of({set(Metric::unaligned, 61), set(Metric::efficiency, 40)}),
         "Waits for DDR, though that is 60% free: 61% of accesses unaligned, 40% of bytes requested",
         all_of({set(Metric::unaligned, 19.9), set(Metric::efficiency, 100)}), "latency"},
        {"waste", global_run, set(Metric::efficiency, 59.9),
         "Waits for DDR, though that is 60% free: only 60% of the bytes moved were requested",
         set(Metric::efficiency, 60), "latency"},
        {"short-bursts", global_run, all_of({set(Metric::burst_share, 24.9), set(Metric::burst, 3.984)}),
         "Waits for DDR, though that is 60% free: bursts of 3.98 words, 16 would fit",
         set(Metric::burst_share, 25), "latency"},
        {"latency", global_run, set(Metric::stall, 10),
         "Waits for answers of DDR, which is 60% free: too few requests are under way",
         set(Metric::stall, 9.9), "little"},
        {"latency-write", global_write_run, set(Metric::stall, 10),
         "Waits to hand its writes on to DDR, which is 60% free", set(Metric::stall, 9.9), "little"},
        {"port-unknown", global_run, set(Metric::port_use, {}),
         "Waits for DDR; the report doesn't say how busy its port is", set(Metric::memory_use, {}),
         "mem-unknown"},
        {"mem-unknown", global_run, all_of({set(Metric::memory_use, {}), set(Metric::port_use, {})}),
         "Waits for global memory; the report doesn't say how busy that is", set(Metric::stall, 1.9), "fine"},
        {"backpressure", write_run, add_free_stage,
         "Waits for the reader of its channel; look at slow, which doesn't wait",
         [](ProfileSummary& s) { s.kernels[1].blocks[0].metrics[Metric::stall] = 5; }, "slow-reader"},
        {"channel-full", write_run,
         all_of({set(Metric::fill_share, 60), set(Metric::fill, 9.6), set(Metric::max_fill, 16)}),
         "Its channel is full (9.6 of 16 words): its reader is slower", set(Metric::fill_share, 59.9),
         "write-bursts"},
        {"write-bursts", write_run,
         all_of({set(Metric::fill_share, 12.5), set(Metric::fill, 2), set(Metric::max_fill, 16)}),
         "Stalls though its channel is mostly empty (2 of 16 words): the reader stops at times; a deeper "
         "channel may do",
         set(Metric::fill_share, {}), "slow-reader"},
        {"slow-reader", write_run, set(Metric::stall, 10), "Waits for the reader of its channel",
         set(Metric::stall, 9.9), "little"},
        {"waits-for-work", read_run, [](ProfileSummary& s) { s.kernels[0].autorun = true; },
         "Waits for work: its channel is empty 40% of the time",
         [](ProfileSummary& s) { s.kernels[0].autorun = false; }, "slow-writer"},
        {"channel-empty", read_run,
         all_of({set(Metric::fill_share, 10), set(Metric::fill, 1), set(Metric::max_fill, 10)}),
         "Its channel is empty (1 of 10 words): its writer is slower", set(Metric::fill_share, 25),
         "read-bursts"},
        {"read-bursts", read_run, all_of({set(Metric::fill_share, 25), set(Metric::fill, 4)}),
         "Stalls though its channel holds 4 words on average: the writer delivers in bursts",
         set(Metric::fill_share, 24.9), "slow-writer"}, // without max_fill its sentence lacks a value
        {"slow-writer", read_run, set(Metric::stall, 10), "Waits for the writer of its channel",
         set(Metric::stall, 9.9), "little"},
        {"loop-interval", loop_run, set(Metric::net, 4.8),
         "Begins an iteration every 5 cycles, 4.8 even without all stalls: look for a dependence between "
         "iterations, or a short inner loop that drains",
         set(Metric::net, 1.9), "fine"},
        {"loop-short", loop_run, block_field(&BlockSummary::iterations, 999),
         "999 iterations in 25,000 cycles: filling the pipeline may dominate",
         block_field(&BlockSummary::iterations, 1000), "loop-interval"},
        {"loop-behind-stall", loop_run, all_of({set(Metric::net, 1.5), second_block(Metric::stall, 10)}),
         "Begins an iteration every 5 cycles; store stalls 10% in the same kernel",
         second_block(Metric::stall, 9.9), "fine"},
        {"loop-full", loop_run, set(Metric::valid, 80),
         "Begins an iteration nearly every cycle: only more work a cycle, or a faster clock, helps",
         all_of({set(Metric::valid, 79.9), block_field(&BlockSummary::max_valid, 79.9)}), "fine"},
        {"loop-outer", loop_run,
         [](ProfileSummary& s) {
             s.kernels[0].blocks.push_back(made::loop("inner"));
             s.kernels[0].blocks.back().metrics[Metric::valid] = 20.1;
         },
         "Begins an iteration every 5 cycles: an outer loop, or one that runs part of the time",
         set(Metric::valid, 0), "fine"},
        {"cached", global_run, all_of({set(Metric::stall, 9.9), set(Metric::hits, 80)}),
         "80% of the reads hit the cache", set(Metric::hits, 79.9), "little"},
        {"working", global_run, all_of({set(Metric::stall, 9.9), set(Metric::valid, 80)}),
         "Works 80% of the time: no stall to remove here", set(Metric::valid, 79.9), "little"},
        {"little", global_run, set(Metric::stall, 2), "Stalls little: 2.0%", set(Metric::stall, 1.9), "fine"},
        {"mostly-idle", global_run, all_of({set(Metric::stall, 0), set(Metric::idle, 90)}),
         "Has little to do: 90% idle", set(Metric::idle, 89.9), "fine"},
        {"uncounted", global_run, [](ProfileSummary& s) { first_block(s).stall_counted = false; },
         "Stalls weren't counted", [](ProfileSummary& s) { first_block(s).stall_counted = true; }, "latency"},
        {"fine", global_run, set(Metric::stall, 1.9), "Nothing stands out", set(Metric::stall, 2), "little"},
    };
    return all;
}

Sentence sentence_of(ProfileSummary summary) {
    diagnose(summary, built_in_rules());
    return first_block(summary).sentence;
}

} // namespace

TEST(Rules, EachRuleSaysItsSentenceWhereItHolds) {
    for (const RuleCase& rule_case : cases()) {
        ProfileSummary summary = rule_case.base();
        rule_case.holds(summary);
        const Sentence sentence = sentence_of(summary);
        EXPECT_EQ(sentence.rule, rule_case.rule);
        EXPECT_EQ(sentence.text, rule_case.text) << rule_case.rule;
    }
}

TEST(Rules, NoRuleHoldsJustOutsideOfItsConditions) {
    for (const RuleCase& rule_case : cases()) {
        ProfileSummary summary = rule_case.base();
        rule_case.holds(summary);
        rule_case.fails(summary);
        EXPECT_EQ(sentence_of(summary).rule, rule_case.instead) << "beside " << rule_case.rule;
    }
}

TEST(Rules, EachRuleHasACase) {
    std::set<std::string> with_case = {"low-clock", "phase"}; // added ones have tests of their own
    for (const RuleCase& rule_case : cases())
        with_case.insert(rule_case.rule);
    for (const Rule& rule : built_in_rules().blocks)
        EXPECT_TRUE(with_case.contains(rule.name)) << rule.name;
}

TEST(Rules, AClockTooLowForTheMemoryIsAddedToAFullPort) {
    ProfileSummary summary = global_run();
    metric(summary, Metric::port_use) = 75;
    first_block(summary).port_limit = 13'900; // 69.5% of 20,000 MB/s
    EXPECT_EQ(
        sentence_of(summary).text,
        "Waits for port ddr_port, busy 75% of the cycles; DDR itself has 70% left; at 250 MHz the port can't "
        "reach the memory's peak");
    first_block(summary).port_limit = 14'000; // 70%
    EXPECT_EQ(sentence_of(summary).text,
              "Waits for port ddr_port, busy 75% of the cycles; DDR itself has 70% left");
}

TEST(Rules, StallsInOnePhaseAreAddedToTheirReason) {
    ProfileSummary summary = global_run();
    BlockSummary& block = first_block(summary);
    block.num_samples = 10;
    block.stalled_part = 20;
    block.stalled_from = 12e6;
    block.stalled_to = 14.5e6;
    EXPECT_EQ(sentence_of(summary).text,
              "Waits for answers of DDR, which is 60% free: too few requests are under "
              "way; most of it between 12.0 ms and 14.5 ms");
    const std::string without = "Waits for answers of DDR, which is 60% free: too few requests are under way";
    block.stalled_part = 20.1;
    EXPECT_EQ(sentence_of(summary).text, without);
    block.stalled_part = 20;
    block.num_samples = 9;
    EXPECT_EQ(sentence_of(summary).text, without);
}

TEST(Rules, PartsInBracketsAreLeftOutWithoutTheirValues) {
    ProfileSummary summary = global_run();
    metric(summary, Metric::unaligned) = 61;
    metric(summary, Metric::efficiency).reset();
    EXPECT_EQ(sentence_of(summary).text, "Waits for DDR, though that is 60% free: 61% of accesses unaligned");
    metric(summary, Metric::memory_use).reset();
    EXPECT_EQ(sentence_of(summary).text, "Waits for DDR: 61% of accesses unaligned");
}

TEST(Rules, AChannelThatIsHalfFullIsNotMostlyEmpty) {
    ProfileSummary summary = write_run();
    metric(summary, Metric::fill_share) = 50;
    metric(summary, Metric::fill) = 8;
    metric(summary, Metric::max_fill) = 16;
    EXPECT_EQ(sentence_of(summary).text,
              "Stalls though its channel is not full (8 of 16 words): the reader stops at "
              "times; a deeper channel may do");
}

TEST(Rules, CacheHitsMakeTheRequestedPartAnUpperLimit) {
    ProfileSummary summary = global_run();
    metric(summary, Metric::efficiency) = 25;
    metric(summary, Metric::hits) = 1;
    EXPECT_EQ(sentence_of(summary).text,
              "Waits for DDR, though that is 60% free: at most 25% of the bytes moved were requested");
    metric(summary, Metric::memory_use) = 90;
    EXPECT_EQ(sentence_of(summary).text,
              "Waits for DDR, at 90% of its peak, but at most 25% of the bytes moved were requested");
}

TEST(Rules, ALowerBoundOfUseIsSaidToBeOne) {
    ProfileSummary summary = global_run();
    summary.memories[0].lower_bound = true;
    metric(summary, Metric::memory_use) = 80;
    EXPECT_EQ(sentence_of(summary).text, "Waits for DDR, which runs at 80% or more of its peak");
    // How much of the memory is free isn't known, and so not whether it answers late.
    metric(summary, Metric::memory_use) = 30;
    EXPECT_EQ(sentence_of(summary).text, "Waits for global memory; the report doesn't say how busy that is");
}

TEST(Rules, AMemoryWithoutANameIsGlobalMemory) {
    ProfileSummary summary = global_run();
    first_block(summary).memory.clear();
    for (const Metric unknown : {Metric::memory_use, Metric::port_use})
        metric(summary, unknown).reset();
    metric(summary, Metric::efficiency) = 25;
    EXPECT_EQ(sentence_of(summary).text,
              "Waits for global memory: only 25% of the bytes moved were requested");
}

TEST(Rules, WorkIsNoReasonToOverlookStalls) {
    // A block that is neither memory nor channel has no rule for stalls, and 15% of them are worth some time.
    ProfileSummary summary = run_of(made::block("other", BlockKind::other, Direction::none));
    metric(summary, Metric::valid) = 85;
    metric(summary, Metric::stall) = 15;
    EXPECT_EQ(sentence_of(summary).rule, "fine");
    metric(summary, Metric::stall) = 9;
    EXPECT_EQ(sentence_of(summary).rule, "working");
    // Stalls that weren't counted may be there.
    metric(summary, Metric::stall).reset();
    EXPECT_EQ(sentence_of(summary).rule, "uncounted");
}

TEST(Rules, LoopsOneAfterTheOtherHaveNoFault) {
    // Three loops with an iteration in each of their cycles have a third of the cycles each.
    ProfileSummary summary = loop_run();
    const auto third = [](const char* name, double valid) {
        BlockSummary loop = made::loop(name);
        loop.metrics[Metric::valid] = valid;
        loop.metrics[Metric::iteration] = 100 / valid;
        loop.metrics[Metric::net] = 96 / valid; // the store stalls 4%
        return loop;
    };
    summary.kernels[0].blocks = {third("a", 33.4), third("b", 33.3), third("c", 33.3),
                                 summary.kernels[0].blocks[1]};
    EXPECT_EQ(sentence_of(summary).rule, "fine");
    // Nor if the samples are short enough to show a loop at work.
    ProfileSummary sampled = loop_run();
    first_block(sampled).max_valid = 50;
    EXPECT_EQ(sentence_of(sampled).rule, "fine");
    first_block(sampled).max_valid = 49.9;
    EXPECT_EQ(sentence_of(sampled).rule, "loop-interval");
}

TEST(Rules, ALoopBesideAStoreThatStallsLessHasADependence) {
    // 22% valid, a store stalls 12%: (100 - 12) / 22 = 4.0.
    ProfileSummary summary = loop_run();
    metric(summary, Metric::valid) = 22;
    metric(summary, Metric::iteration) = 100.0 / 22;
    metric(summary, Metric::net) = 4.0;
    summary.kernels[0].blocks[1].metrics[Metric::stall] = 12;
    EXPECT_EQ(
        sentence_of(summary).text,
        "Begins an iteration every 4.55 cycles, 4 even without all stalls: look for a dependence between "
        "iterations, or a short inner loop that drains");
}

TEST(Rules, NoLoopIsACauseBesideABlockThatWorks) {
    ProfileSummary summary = loop_run();
    summary.kernels[0].blocks[1].metrics[Metric::valid] = 50;
    EXPECT_EQ(sentence_of(summary).rule, "fine");
    // Nor where stalls weren't counted.
    summary = loop_run();
    summary.kernels[0].blocks[1].stall_counted = false;
    EXPECT_EQ(sentence_of(summary).rule, "uncounted");
}

TEST(Rules, MissingValuesFulfilOnlyUnknown) {
    const auto number = *find_number("stall");
    const Facts none;
    using enum Comparison;
    for (const Comparison comparison : {at_least, above, below, equal})
        EXPECT_FALSE(holds({{number, comparison, 0}}, none));
    EXPECT_TRUE(holds({{number, unknown, 0}}, none));
    Facts some;
    some[Metric::stall] = 10;
    EXPECT_FALSE(holds({{number, unknown, 0}}, some));
    EXPECT_TRUE(holds({{number, at_least, 10}, {number, equal, 10}}, some));
    EXPECT_FALSE(holds({{number, above, 10}}, some));
    EXPECT_FALSE(holds({{number, below, 10}}, some));
    EXPECT_TRUE(holds({{number, above, 9.9}, {number, below, 10.1}}, some));
}

TEST(Rules, AKindIsForAllItsDirections) {
    EXPECT_TRUE(is_for_kind("all", "loop"));
    EXPECT_TRUE(is_for_kind("global", "global read"));
    EXPECT_TRUE(is_for_kind("global", "global"));
    EXPECT_TRUE(is_for_kind("global read", "global read"));
    EXPECT_FALSE(is_for_kind("global read", "global"));
    EXPECT_FALSE(is_for_kind("global read", "global write"));
    EXPECT_FALSE(is_for_kind("channel", "global read"));
    EXPECT_FALSE(is_for_kind("glob", "global"));
}

TEST(Rules, TimesWithoutAUnitArePlainNumbers) {
    ProfileSummary summary = global_run();
    summary.nanoseconds.reset();
    BlockSummary& block = first_block(summary);
    block.num_samples = 10;
    block.stalled_part = 5;
    block.stalled_from = 12000;
    block.stalled_to = 14500;
    EXPECT_TRUE(sentence_of(summary).text.ends_with("; most of it between 12,000 and 14,500"));
}
