// SPDX-License-Identifier: Apache-2.0
#include "summary_json.h"

#include <limits>
#include <typeinfo>

#include "diagnosis.h"
#include "gmock/gmock.h"
#include "gtest/gtest.h"
#include "made_summary.h"
#include "rules_reader.h"

using namespace zan::profile;
using testing::HasSubstr;
using testing::Not;

namespace {

// A summary in which every member has a value of its own that isn't its usual one.
ProfileSummary full() {
    double next = 0.1; // 0.1, 1.1, ... have no short binary form, so a rounded digit would show
    const auto value = [&next] { return next++; };
    const auto all_metrics = [&](MetricValues& metrics) {
        for (const MetricRow& row : metric_table())
            metrics[row.metric] = value();
    };
    BlockSummary block;
    block.name = "load \"a\" \\ \xC3\xBC \n";
    block.kind = BlockKind::channel;
    block.direction = Direction::write;
    block.memory = "DDR";
    block.port = "ddr_port";
    block.coalesced = true;
    block.sources = {{{"a.cl", 3, 4}, {"b.h", 5, 6}}, {{"c.cl", 7, 8}}};
    block.num_samples = 11;
    block.num_left_out = std::numeric_limits<std::uint64_t>::max();
    block.stall_counted = false;
    for (Value* member :
         {&block.cycles, &block.iterations, &block.own_share, &block.block_share, &block.read_share,
          &block.write_share, &block.max_burst, &block.access_bytes, &block.port_limit, &block.max_valid,
          &block.stalled_part, &block.stalled_from, &block.stalled_to})
        *member = value();
    block.rivals = {"x", "y"};
    block.innermost = true;
    all_metrics(block.metrics);
    block.sentence = {"latency", "cause", "Waits"};

    KernelSummary kernel;
    kernel.name = "k";
    kernel.compute_unit = 2;
    kernel.num_units = 3;
    kernel.device = 0; // which isn't the same as no device
    kernel.source = {"k.cl", 1, 2};
    kernel.autorun = true;
    kernel.shared_types = 15;
    kernel.num_invocations = 12;
    kernel.num_samples = 13;
    for (Value* member : {&kernel.shortest, &kernel.longest, &kernel.median_low, &kernel.median_high,
                          &kernel.gaps, &kernel.union_time})
        *member = value();
    kernel.team = {"l", "m"};
    kernel.culprit = "load";
    all_metrics(kernel.metrics);
    kernel.blocks = {block, BlockSummary()};
    kernel.ports = {{"DDR", "i", "p", true, true, value(), value(), value(), value(), value()},
                    PortSummary()};

    ProfileSummary summary;
    summary.input = "run.json";
    summary.program_version = "2026.1";
    summary.zanx_version = "4.2.0";
    summary.board = "vela";
    summary.clock_text = "250.0";
    summary.clock_mhz = value();
    summary.nanoseconds = 1000;
    summary.start = "9223372036854775807";
    summary.kernel_time = value();
    summary.transfer_only = value();
    summary.num_invocations = 14;
    summary.num_samples = 15;
    all_metrics(summary.metrics);
    summary.kernels = {kernel, KernelSummary()};
    MemorySummary memory;
    memory.name = "DDR";
    memory.peak = value();
    memory.max_burst = value();
    memory.from_ports = memory.lower_bound = true;
    memory.read_share = value();
    memory.write_share = value();
    memory.interfaces = {{"i", value(), value()}, InterfaceSummary()};
    all_metrics(memory.metrics);
    summary.memories = {memory};
    summary.transfers = {{".reprogram", -1, 3, value(), value(), value()}};
    summary.notes = {{"clock-mismatch", "times differ"}};
    summary.answers = {"a", "b", "c", "d", "e", "f", "g"};
    return summary;
}

ProfileSummary read_back(const ProfileSummary& summary) {
    auto read = summary_from_json(summary_to_json(summary));
    if (const auto* fault = std::get_if<SummaryFault>(&read))
        ADD_FAILURE() << describe(*fault);
    return std::holds_alternative<ProfileSummary>(read) ? std::get<ProfileSummary>(read) : ProfileSummary();
}

// Puts each of these members of a part of the full summary back to its usual value, one at a time: the
// summary is another one then, and is read back as that.
template <class Find, class Part, class... Types>
void expect_members_count(Find find, Types Part::*... members) {
    const ProfileSummary summary = full();
    int number = 0;
    const auto expect_counts = [&](auto member) {
        SCOPED_TRACE(std::string(typeid(Part).name()) + ", member " + std::to_string(++number));
        ProfileSummary changed = summary;
        find(changed).*member = Part().*member;
        EXPECT_NE(changed, summary);
        EXPECT_EQ(read_back(changed), changed);
    };
    (expect_counts(members), ...);
}

std::string fault_of(const std::string& json) {
    const auto read = summary_from_json(json);
    return std::holds_alternative<SummaryFault>(read) ? describe(std::get<SummaryFault>(read)) : "read";
}

// The head of a summary, 50 bytes, and these members.
std::string document(const std::string& members) {
    return R"({"schema":"zanl-profile/summary","schema_version":1)" + members + "}";
}

} // namespace

TEST(SummaryJson, ReadsBackWhatWasWritten) {
    const ProfileSummary summary = full();
    EXPECT_EQ(read_back(summary), summary);
    EXPECT_EQ(summary_to_json(read_back(summary)), summary_to_json(summary));
}

TEST(SummaryJson, ReadsBackWithoutAUnitOfTime) {
    ProfileSummary summary = full();
    summary.nanoseconds.reset();
    EXPECT_EQ(read_back(summary), summary);
    EXPECT_THAT(summary_to_json(summary), HasSubstr("\"lost_ticks\":"));
    EXPECT_THAT(summary_to_json(summary), Not(HasSubstr("_ns\"")));
}

TEST(SummaryJson, ReadsBackASummaryOfNothing) {
    EXPECT_EQ(read_back(ProfileSummary()), ProfileSummary());
    EXPECT_EQ(summary_to_json(ProfileSummary()), document("") + "\n");
}

TEST(SummaryJson, EachMemberOfARunCounts) {
    expect_members_count([](ProfileSummary& run) -> ProfileSummary& { return run; }, &ProfileSummary::input,
                         &ProfileSummary::program_version, &ProfileSummary::zanx_version,
                         &ProfileSummary::board, &ProfileSummary::clock_text, &ProfileSummary::clock_mhz,
                         &ProfileSummary::nanoseconds, &ProfileSummary::start, &ProfileSummary::kernel_time,
                         &ProfileSummary::transfer_only, &ProfileSummary::num_invocations,
                         &ProfileSummary::num_samples, &ProfileSummary::metrics, &ProfileSummary::kernels,
                         &ProfileSummary::memories, &ProfileSummary::transfers, &ProfileSummary::notes,
                         &ProfileSummary::answers);
    expect_members_count([](ProfileSummary& run) -> Answers& { return run.answers; }, &Answers::kernel,
                         &Answers::block, &Answers::source, &Answers::memory, &Answers::leading_kernel,
                         &Answers::culprit_kernel, &Answers::culprit_block);
    expect_members_count([](ProfileSummary& run) -> Note& { return run.notes[0]; }, &Note::code, &Note::text);
    expect_members_count([](ProfileSummary& run) -> TransferSummary& { return run.transfers[0]; },
                         &TransferSummary::type, &TransferSummary::queue, &TransferSummary::num,
                         &TransferSummary::total, &TransferSummary::median, &TransferSummary::busy);
}

TEST(SummaryJson, EachMemberOfAMemoryCounts) {
    expect_members_count([](ProfileSummary& run) -> MemorySummary& { return run.memories[0]; },
                         &MemorySummary::name, &MemorySummary::peak, &MemorySummary::max_burst,
                         &MemorySummary::from_ports, &MemorySummary::lower_bound, &MemorySummary::read_share,
                         &MemorySummary::write_share, &MemorySummary::interfaces, &MemorySummary::metrics);
    expect_members_count(
        [](ProfileSummary& run) -> InterfaceSummary& { return run.memories[0].interfaces[0]; },
        &InterfaceSummary::name, &InterfaceSummary::bytes, &InterfaceSummary::use);
    expect_members_count([](ProfileSummary& run) -> PortSummary& { return run.kernels[0].ports[0]; },
                         &PortSummary::memory, &PortSummary::interface, &PortSummary::port,
                         &PortSummary::reads, &PortSummary::writes, &PortSummary::mean, &PortSummary::max,
                         &PortSummary::bytes, &PortSummary::read_burst, &PortSummary::write_burst);
}

TEST(SummaryJson, EachMemberOfAKernelCounts) {
    expect_members_count([](ProfileSummary& run) -> KernelSummary& { return run.kernels[0]; },
                         &KernelSummary::name, &KernelSummary::compute_unit, &KernelSummary::num_units,
                         &KernelSummary::device, &KernelSummary::source, &KernelSummary::autorun,
                         &KernelSummary::shared_types, &KernelSummary::num_invocations,
                         &KernelSummary::num_samples, &KernelSummary::shortest, &KernelSummary::longest,
                         &KernelSummary::median_low, &KernelSummary::median_high, &KernelSummary::gaps,
                         &KernelSummary::union_time, &KernelSummary::team, &KernelSummary::culprit,
                         &KernelSummary::metrics, &KernelSummary::blocks, &KernelSummary::ports);
    expect_members_count(
        [](ProfileSummary& run) -> BlockSummary& { return run.kernels[0].blocks[0]; }, &BlockSummary::name,
        &BlockSummary::kind, &BlockSummary::direction, &BlockSummary::memory, &BlockSummary::coalesced,
        &BlockSummary::sources, &BlockSummary::num_samples, &BlockSummary::num_left_out,
        &BlockSummary::stall_counted, &BlockSummary::cycles, &BlockSummary::iterations, &BlockSummary::port,
        &BlockSummary::own_share, &BlockSummary::block_share, &BlockSummary::read_share,
        &BlockSummary::write_share, &BlockSummary::rivals, &BlockSummary::max_burst,
        &BlockSummary::access_bytes, &BlockSummary::port_limit, &BlockSummary::max_valid,
        &BlockSummary::stalled_part, &BlockSummary::stalled_from, &BlockSummary::stalled_to,
        &BlockSummary::metrics, &BlockSummary::innermost, &BlockSummary::sentence);
    expect_members_count([](ProfileSummary& run) -> Sentence& { return run.kernels[0].blocks[0].sentence; },
                         &Sentence::rule, &Sentence::tone, &Sentence::text);
    expect_members_count(
        [](ProfileSummary& run) -> SourcePlace& { return run.kernels[0].blocks[0].sources[0][1]; },
        &SourcePlace::file, &SourcePlace::line, &SourcePlace::column);
}

TEST(SummaryJson, NumbersKeepAllTheirBits) {
    ProfileSummary summary;
    for (const double number :
         {0.0, -0.0, 1.0 / 3, 5e-324, std::numeric_limits<double>::max(), 9007199254740993.0, -1e-300}) {
        summary.clock_mhz = number;
        const double read = read_back(summary).clock_mhz.value();
        EXPECT_EQ(std::signbit(read), std::signbit(number));
        EXPECT_EQ(read, number);
    }
    summary.clock_mhz = std::numeric_limits<double>::infinity();
    EXPECT_EQ(read_back(summary).clock_mhz, Value());
}

TEST(SummaryJson, MissingValuesHaveNoKey) {
    const std::string json = summary_to_json(made::run({made::kernel("k", {made::global_read()})}));
    EXPECT_THAT(json, HasSubstr("\"stall_percent\":40,"));
    EXPECT_THAT(json, HasSubstr("\"lost_ns\":40000,"));
    EXPECT_THAT(json, Not(HasSubstr("net_cycles")));
    EXPECT_THAT(json, Not(HasSubstr("null")));
}

TEST(SummaryJson, AKernelWithTenBlocksTakesAFewKilobytes) {
    std::vector<BlockSummary> blocks(10, made::global_read("some_block_name"));
    ProfileSummary summary = made::run({made::kernel("some_kernel", blocks)});
    diagnose(summary, built_in_rules());
    EXPECT_LT(summary_to_json(summary).size(), 10'000u);
}

TEST(SummaryJson, BytesThatAreNoUtf8AreReplaced) {
    ProfileSummary summary;
    summary.board = "v\xFF";
    EXPECT_EQ(read_back(summary).board, "v\xEF\xBF\xBD");
}

TEST(SummaryJson, UnknownKeysAreIgnored) {
    const auto read =
        summary_from_json(document(R"(,"new":{"a":[1,null]},"board":"vela","kernels":[{"newer":1}])"));
    ASSERT_TRUE(std::holds_alternative<ProfileSummary>(read));
    EXPECT_EQ(std::get<ProfileSummary>(read).board, "vela");
    EXPECT_EQ(std::get<ProfileSummary>(read).kernels.size(), 1u);
}

TEST(SummaryJson, AnotherSchemaOrVersionIsRefused) {
    EXPECT_EQ(fault_of("{}"), "byte 0: this is no summary: its schema isn't 'zanl-profile/summary'");
    EXPECT_EQ(fault_of(R"({"schema":"zanl-profile/rules"})"),
              "byte 0: this is no summary: its schema isn't 'zanl-profile/summary'");
    EXPECT_EQ(fault_of(R"({"schema":"zanl-profile/summary","schema_version":2})"),
              "byte 0: its schema_version is 2, and only 1 can be read");
    EXPECT_EQ(fault_of(R"({"schema":"zanl-profile/summary"})"),
              "byte 0: its schema_version is 0, and only 1 can be read");
}

TEST(SummaryJson, FaultsNameTheByteOfTheKey) {
    // The head and the comma take 52 bytes, so the key's first letter is byte 53.
    EXPECT_EQ(document("").size(), 52u);
    EXPECT_EQ(fault_of(document(R"(,"board":3)")), "byte 53: expected a text for 'board'");
    EXPECT_EQ(fault_of(document(R"(,"clock_mhz":"3")")), "byte 53: expected a number for 'clock_mhz'");
    EXPECT_EQ(fault_of(document(R"(,"samples":-1)")), "byte 53: expected a whole number for 'samples'");
    EXPECT_EQ(fault_of(document(R"(,"samples":1.5)")), "byte 53: expected a whole number for 'samples'");
    EXPECT_EQ(fault_of(document(R"(,"answers":[])")), "byte 53: expected an object for 'answers'");
    EXPECT_EQ(fault_of(document(R"(,"kernels":{})")), "byte 53: expected a list for 'kernels'");
    EXPECT_EQ(fault_of(document(R"(,"kernels":[3])")), "byte 53: expected an object for 'kernels'");
    // "kernels":[{"  is 13 bytes more.
    EXPECT_EQ(fault_of(document(R"(,"kernels":[{"device":4294967296}])")),
              "byte 65: expected a whole number for 'device'");
    EXPECT_EQ(fault_of(document(R"(,"kernels":[{"autorun":1}])")),
              "byte 65: expected true or false for 'autorun'");
    EXPECT_EQ(fault_of(document(R"(,"kernels":[{"team":[1]}])")), "byte 65: expected a text for 'team'");
    EXPECT_EQ(fault_of(document(R"(,"kernels":[{"compute_units":4294967296}])")),
              "byte 65: expected a whole number for 'compute_units'");
    EXPECT_EQ(fault_of(document(R"(,"kernels":[{"shared_counter_types":-1}])")),
              "byte 65: expected a whole number for 'shared_counter_types'");
    // "blocks":[{"  is 12 bytes more.
    EXPECT_EQ(fault_of(document(R"(,"kernels":[{"blocks":[{"kind":"globe"}]}])")),
              "byte 76: unknown word for 'kind'");
    EXPECT_EQ(fault_of(document(R"(,"kernels":[{"blocks":[{"direction":"up"}]}])")),
              "byte 76: unknown word for 'direction'");
    EXPECT_EQ(fault_of(document(R"(,"kernels":[{"blocks":[{"sources":[3]}]}])")),
              "byte 76: expected a list for 'sources'");
    EXPECT_EQ(fault_of(document(R"(,"kernels":[{"blocks":[{"sources":[[3]]}]}])")),
              "byte 76: expected an object for 'sources'");
}

TEST(SummaryJson, EachListAndEachOfItsItemsIsOne) {
    for (const std::string name : {"kernels", "memories", "transfers", "notes"}) {
        EXPECT_EQ(fault_of(document(",\"" + name + "\":3")), "byte 53: expected a list for '" + name + "'");
        EXPECT_EQ(fault_of(document(",\"" + name + "\":[[]]")),
                  "byte 53: expected an object for '" + name + "'");
    }
    for (const std::string name : {"blocks", "ports", "team"}) {
        EXPECT_EQ(fault_of(document(",\"kernels\":[{\"" + name + "\":{}}]")),
                  "byte 65: expected a list for '" + name + "'");
        EXPECT_EQ(fault_of(document(",\"kernels\":[{\"" + name + "\":[3]}]")),
                  "byte 65: expected " + std::string(name == "team" ? "a text" : "an object") + " for '" +
                      name + "'");
    }
    EXPECT_EQ(fault_of(document(R"(,"kernels":[{"source":[]}])")),
              "byte 65: expected an object for 'source'");
    // "memories" has a letter more than "kernels".
    EXPECT_EQ(fault_of(document(R"(,"memories":[{"interfaces":3}])")),
              "byte 66: expected a list for 'interfaces'");
    EXPECT_EQ(fault_of(document(R"(,"memories":[{"interfaces":[3]}])")),
              "byte 66: expected an object for 'interfaces'");
}

TEST(SummaryJson, WhatIsNoJsonIsRefused) {
    EXPECT_THAT(fault_of(""), HasSubstr("byte 0: "));
    EXPECT_THAT(fault_of("[]"), HasSubstr("byte 0: expected an object"));
    EXPECT_THAT(fault_of("3"), HasSubstr("byte 0: expected an object"));
    EXPECT_THAT(fault_of(R"({"schema" 3})"), HasSubstr("byte 10: "));
    EXPECT_EQ(fault_of(std::string("{\0}", 3)), "byte 1: a zero byte");
    EXPECT_THAT(fault_of(document(R"(,"clock_mhz":1e999)")), HasSubstr("Number too big"));
    EXPECT_THAT(fault_of(document(",\"board\":\"\xFF\"")), HasSubstr("Invalid encoding"));
}

TEST(SummaryJson, ACutSummaryIsRefusedWhereverItIsCut) {
    const std::string whole = summary_to_json(full());
    for (std::size_t size = 0; size + 1 < whole.size(); size++)
        EXPECT_NE(fault_of(whole.substr(0, size)), "read") << size;
}

// The first bytes of characters of two, three and four bytes, and nothing after them. Texts that end so are
// of any length, as short ones have no room after them.
TEST(SummaryJson, ACharacterThatIsCutEndsTheText) {
    for (const std::string_view character : {"\xC3", "\xE2", "\xE2\x82", "\xF4", "\xF4\x8F\xBF"}) {
        for (std::size_t length = 0; length < 40; ++length) {
            const std::string text = "{\"" + std::string(length, 'a') + std::string(character);
            const auto read = summary_from_json(text);
            ASSERT_TRUE(std::holds_alternative<SummaryFault>(read));
            EXPECT_LE(std::get<SummaryFault>(read).offset, text.size());
        }
    }
}

TEST(SummaryJson, DeepNestingTakesNoStack) {
    EXPECT_NE(fault_of(std::string(1'000'000, '[')), "read");
    std::string deep = document(",\"new\":" + std::string(1'000'000, '[') + std::string(1'000'000, ']'));
    EXPECT_EQ(fault_of(deep), "read");
}

TEST(SummaryJson, ASummaryIsKnownByItsFirstKey) {
    EXPECT_TRUE(begins_as_summary(summary_to_json(full())));
    EXPECT_TRUE(begins_as_summary(" \n{ \t\"schema\" : "));
    EXPECT_FALSE(begins_as_summary("{\n    \"json_type\": "));
    EXPECT_FALSE(begins_as_summary("[\"schema\""));
    EXPECT_FALSE(begins_as_summary("{"));
    EXPECT_FALSE(begins_as_summary(""));
    EXPECT_FALSE(begins_as_summary("   "));
}
