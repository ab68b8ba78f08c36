// SPDX-License-Identifier: Apache-2.0
#include "block_facts.h"

#include "gmock/gmock.h"
#include "gtest/gtest.h"
#include "made_summary.h"
#include "rules_reader.h"

using namespace zan::profile;

namespace {

Facts facts_of_first(const ProfileSummary& summary) {
    return facts_of(summary, summary.kernels[0], summary.kernels[0].blocks[0], built_in_rules());
}

BlockSummary channel(const char* name, Value stall) {
    BlockSummary made = made::block(name, BlockKind::channel, Direction::write);
    made.metrics[Metric::stall] = stall;
    return made;
}

} // namespace

TEST(BlockFacts, FreeIsWhatTheBusierOfMemoryAndPortLeaves) {
    ProfileSummary summary = made::run({made::kernel("k", {made::global_read()})});
    Facts facts = facts_of_first(summary); // memory 30%, port 40%
    EXPECT_EQ(facts[Fact::free], 60.0);
    EXPECT_EQ(facts[Fact::free_memory], 70.0);
    summary.kernels[0].blocks[0].metrics[Metric::memory_use] = 120;
    facts = facts_of_first(summary);
    EXPECT_EQ(facts[Fact::free], 0.0);
    EXPECT_EQ(facts[Fact::free_memory], 0.0);
    summary.kernels[0].blocks[0].metrics[Metric::port_use].reset();
    summary.kernels[0].blocks[0].metrics[Metric::memory_use] = 15;
    EXPECT_EQ(facts_of_first(summary)[Fact::free], 85.0);
    summary.memories[0].lower_bound = true;
    EXPECT_EQ(facts_of_first(summary)[Fact::free_memory], Value());
}

TEST(BlockFacts, TheClockReachesAPartOfTheMemorysPeak) {
    ProfileSummary summary = made::run({made::kernel("k", {made::global_read()})});
    EXPECT_EQ(facts_of_first(summary)[Fact::clock_reach], 80.0); // 16,000 of 20,000 MB/s
    for (const Value& peak : {Value(0.0), Value()}) {
        summary.memories[0].peak = peak;
        EXPECT_EQ(facts_of_first(summary)[Fact::clock_reach], Value());
    }
    summary.memories[0].peak = 20'000;
    summary.kernels[0].blocks[0].port_limit.reset();
    EXPECT_EQ(facts_of_first(summary)[Fact::clock_reach], Value());
    summary.memories.clear();
    EXPECT_EQ(facts_of_first(summary)[Fact::clock_reach], Value());
}

TEST(BlockFacts, APortThatCarriedMoreThanItCanIsWiderThanSeen) {
    ProfileSummary summary = made::run({made::kernel("k", {made::global_read()})});
    Value& use = summary.kernels[0].blocks[0].metrics[Metric::port_use];
    use = 160;
    EXPECT_EQ(facts_of_first(summary)[Metric::port_use], Value());
    EXPECT_EQ(facts_of_first(summary)[Fact::clock_reach], Value());
    EXPECT_EQ(facts_of_first(summary)[Fact::free], 70.0);
    use = 100.4; // by rounding alone
    EXPECT_EQ(facts_of_first(summary)[Metric::port_use], 100.0);
    EXPECT_EQ(facts_of_first(summary)[Fact::clock_reach], 80.0);
}

TEST(BlockFacts, BanksAreComparedByTheirBytes) {
    ProfileSummary summary = made::run({made::kernel("k", {made::global_read()})});
    EXPECT_EQ(facts_of_first(summary)[Fact::interfaces], 0.0);
    summary.memories[0].interfaces = {{"a", 100.0, 10.0}, {"b", 300.0, 30.0}};
    const Facts facts = facts_of_first(summary);
    EXPECT_EQ(facts[Fact::interfaces], 2.0);
    EXPECT_EQ(facts[Fact::bank_share], 75.0);
    EXPECT_EQ(facts[Fact::bank_use], 30.0);
    summary.memories[0].interfaces[0].bytes.reset();
    EXPECT_EQ(facts_of_first(summary)[Fact::bank_share], Value());
}

TEST(BlockFacts, OnlyBlocksOnTheSamePortShareIt) {
    BlockSummary other = made::global_read("other");
    other.block_share = 40;
    BlockSummary elsewhere = made::global_read("elsewhere");
    elsewhere.port = "second_port";
    ProfileSummary summary = made::run({made::kernel("k", {made::global_read(), other, elsewhere})});
    Facts facts = facts_of_first(summary);
    EXPECT_EQ(facts[Fact::port_sharers], 2.0);
    EXPECT_EQ(facts[FactText::sharer], "other");
    summary.kernels[0].blocks[0].port.clear();
    EXPECT_EQ(facts_of_first(summary)[Fact::port_sharers], Value());
}

TEST(BlockFacts, AStageIsFreeIfItWorksAndItsChannelsHardlyStall) {
    ProfileSummary summary = made::run({made::kernel("k", {channel("out", 40.0)}),
                                        made::kernel("a", {channel("in", 4.9), channel("out", 1.0)}),
                                        made::kernel("b", {channel("in", 0.0), channel("out", 5.0)}),
                                        made::kernel("c", {channel("in", 2.0)})});
    Facts facts = facts_of_first(summary);
    EXPECT_EQ(facts[Fact::free_stages], 2.0); // a and c
    EXPECT_EQ(facts[FactText::stage], "c");   // 98 us without stalls, a 95.1 us
    summary.kernels[3].blocks[0].metrics[Metric::valid] = 0;
    facts = facts_of_first(summary);
    EXPECT_EQ(facts[Fact::free_stages], 1.0);
    EXPECT_EQ(facts[FactText::stage], "a");
    // A started kernel is named before one that runs by itself.
    summary.kernels[3].blocks[0].metrics[Metric::valid] = 50;
    summary.kernels[3].autorun = true;
    EXPECT_EQ(facts_of_first(summary)[FactText::stage], "a");
    summary.kernels[3].blocks[0].metrics[Metric::valid] = 0;
    // On another device it is another kernel.
    summary.kernels[1].device = 1;
    EXPECT_EQ(facts_of_first(summary)[Fact::free_stages], 0.0);
}

// In whatever order they stand: the longest of the started ones, though an autorun kernel worked for longer.
TEST(BlockFacts, AStartedStageIsNamedBeforeAnAutorunOne) {
    ProfileSummary summary =
        made::run({made::kernel("k", {channel("out", 40.0)}), made::kernel("forever", {channel("in", 0.0)}),
                   made::kernel("short", {channel("in", 3.0)}), made::kernel("long", {channel("in", 2.0)}),
                   made::kernel("shorter", {channel("in", 4.0)})});
    summary.kernels[1].autorun = true;
    EXPECT_EQ(facts_of_first(summary)[Fact::free_stages], 4.0);
    EXPECT_EQ(facts_of_first(summary)[FactText::stage], "long");
}

TEST(BlockFacts, TheGreatestChannelStallIsUnknownIfOneIs) {
    EXPECT_EQ(greatest_channel_stall(made::kernel("k", {channel("in", 3.0), channel("out", 7.0)})), 7.0);
    EXPECT_EQ(greatest_channel_stall(made::kernel("k", {channel("in", 3.0), channel("out", {})})), Value());
    EXPECT_EQ(greatest_channel_stall(made::kernel("k", {made::global_read()})), Value());
}

TEST(BlockFacts, OfALoopAllOtherBlocksStallsMustBeCounted) {
    ProfileSummary summary = made::run({made::kernel("k", {made::loop(), made::global_read()})});
    EXPECT_EQ(facts_of_first(summary)[Fact::counted], 1.0);
    summary.kernels[0].blocks[1].stall_counted = false;
    EXPECT_EQ(facts_of_first(summary)[Fact::counted], 0.0);
    summary.kernels[0].blocks.pop_back();
    EXPECT_EQ(facts_of_first(summary)[Fact::counted], 0.0);
}

TEST(BlockFacts, NeighboursOfALoopAreSummedUp) {
    BlockSummary store = made::global_read("store");
    store.metrics[Metric::stall] = 55;
    store.metrics[Metric::valid] = 30;
    ProfileSummary summary =
        made::run({made::kernel("k", {made::loop("a"), made::loop("b"), made::global_read(), store})});
    const Facts facts = facts_of_first(summary);
    EXPECT_EQ(facts[Fact::kernel_valid], 50.0);
    EXPECT_EQ(facts[Fact::kernel_stall], 55.0);
    EXPECT_EQ(facts[FactText::stalling_block], "store");
    EXPECT_EQ(facts[Fact::loops_valid], 40.0);
}

TEST(BlockFacts, CyclesOfAnInvocationAreAMean) {
    ProfileSummary summary = made::run({made::kernel("k", {made::loop()})});
    summary.kernels[0].num_invocations = 10;
    EXPECT_EQ(facts_of_first(summary)[Fact::invocation_cycles], 2500.0);
    summary.kernels[0].num_invocations = 0;
    EXPECT_EQ(facts_of_first(summary)[Fact::invocation_cycles], Value());
    summary.kernels[0].num_invocations = 10;
    summary.kernels[0].blocks[0].cycles.reset();
    EXPECT_EQ(facts_of_first(summary)[Fact::invocation_cycles], Value());
}

TEST(BlockFacts, NamesAreListedAsASentenceDoes) {
    EXPECT_EQ(listed({}), "");
    EXPECT_EQ(listed({"a"}), "a");
    EXPECT_EQ(listed({"a", "b"}), "a and b");
    EXPECT_EQ(listed({"a", "b", "c"}), "a, b and c");
}

TEST(BlockFacts, KindsHaveADirectionWhereThereIsOne) {
    EXPECT_EQ(kind_text(made::global_read()), "global read");
    EXPECT_EQ(kind_text(made::block("c", BlockKind::channel, Direction::write)), "channel write");
    EXPECT_EQ(kind_text(made::block("c", BlockKind::global, Direction::none)), "global");
    EXPECT_EQ(kind_text(made::block("l", BlockKind::loop, Direction::read)), "loop");
    EXPECT_EQ(kind_text(made::block("o", BlockKind::other, Direction::read)), "other");
}
