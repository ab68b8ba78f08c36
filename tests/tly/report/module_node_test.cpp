// SPDX-License-Identifier: Apache-2.0
// Nodes of module instances: which keys they have, and their samples.
#include <gtest/gtest.h>

#include "capture.h"
#include "inst_builder.h"
#include "node_text.h"
#include "tly_json.h"

namespace {

// The node's text after its name, without "moduleinst".
std::string node_of(TlyModuleInst& inst, const SampleList<long long>& cycles = {}) {
    std::string text = node_text(getModuleJSON(&inst, cycles));
    const std::string head = "type=moduleinst name=" + inst.getName() + " ";
    EXPECT_EQ(text.substr(0, head.size()), head);
    return text.substr(head.size());
}

// The details of an instance without source locations, and the messages.
struct Details {
    std::string text;
    std::string messages;
};

Details details_of(TlyModuleInst& inst, const SampleList<long long>& cycles) {
    Details result;
    result.messages = stderr_of([&] { result.text = node_of(inst, cycles); });
    const std::string head = "sourcefiles= module_inst_details=";
    EXPECT_EQ(result.text.substr(0, head.size()), head);
    result.text.erase(0, head.size());
    return result;
}

TEST(ModuleNode, WithoutSamplesHasOnlyTheCoalescedFlag) {
    const auto inst = InstBuilder{.function = "bare"}.make();
    const Details details = details_of(*inst, {});
    EXPECT_EQ(details.text, "{coalesced_memory=false}");
    EXPECT_EQ(details.messages, "");
}

TEST(ModuleNode, APlainInstanceHasActivityButNoBandwidth) {
    const auto inst = InstBuilder{.function = "plain", .tags = {"ivalid", "memorystalls", "idle"}}.make();
    add_sample(*inst, {"5", "2", "1"});
    add_sample(*inst, {"6", "3", "0"});
    EXPECT_EQ(details_of(*inst, {100, 100}).text,
              "{occupancy_samples=[5 6] stall_samples=[2 3] idle_samples=[1 0] activity_samples=[5 6] "
              "coalesced_memory=false}");
}

TEST(ModuleNode, ALoopEndsWithItsOccupancy) {
    // Not even the byte width is looked at, which would be warned of.
    const auto inst = InstBuilder{.function = "loop",
                                  .memory_type = "__loop",
                                  .rw = "read",
                                  .byte_width = "",
                                  .tags = {"loop_ivalid", "memorystalls", "readwritecount"}}
                          .make();
    add_sample(*inst, {"5", "2", "1"});
    const Details details = details_of(*inst, {100});
    EXPECT_EQ(details.text, "{mem_type=__loop operation_type=read occupancy_samples=[5]}");
    EXPECT_EQ(details.messages, "");
}

TEST(ModuleNode, RequestsReplaceValidCyclesOnceTheyAreCounted) {
    const auto inst = InstBuilder{.function = "requests", .tags = {"ivalid", "totalreq"}}.make();
    add_sample(*inst, {"5", "9"});
    EXPECT_EQ(details_of(*inst, {100}).text,
              "{occupancy_samples=[5] stall_samples=[0] idle_samples=[0] activity_samples=[9] "
              "coalesced_memory=false}");
}

// 2400 cycles at 240 MHz are 10000 ns, 1e-5 s. 1000 requests of 512 bits are 64000 bytes, 6.4e9 bytes a
// second: 6400. On the bus 128000 bytes are 12800; the efficiency is 0.5.
InstBuilder global_read(const std::string& function, const std::string& lsu_type) {
    return {
        .function = function,
        .memory_type = "__global",
        .rw = "read",
        .lsu_type = lsu_type,
        .global_mem_name = "DDR",
        .byte_width = "512",
        .memory_opt = "x_coalesced_y",
        .fmax = 240.0f,
        .tags = {"totalreq", "bandwidth", "cachehit", "unalignedrequests", "burstcount", "readwritecount"}};
}

const std::string global_head =
    "{mem_type=__global operation_type=read occupancy_samples=[0] stall_samples=[0] idle_samples=[0] "
    "activity_samples=[1000] bandwidth_samples=[6400] bandwidth_eff_samples=[";
const std::string global_tail = "coalesced_memory=true global_mem_name=DDR average_burst_size=[8]}";

TEST(ModuleNode, AGlobalReadOfEachBurstKindHasItsOwnKeys) {
    const std::pair<const char*, const char*> rows[] = {
        {"BURST-NON-ALIGNED", "cache_hit_samples=[7] non_aligned_access_samples=[3] "},
        {"BURST-COALESCED", "cache_hit_samples=[7] "},
        {"SEMI-STREAMING", "cache_hit_samples=[7] "},
        {"PIPELINED", ""},
    };
    for (const auto& [lsu_type, keys] : rows) {
        const auto inst = global_read("global_read", lsu_type).make();
        add_sample(*inst, {"1000", "64000", "7", "3", "80", "10"});
        EXPECT_EQ(details_of(*inst, {2400}).text, global_head + "1] " + keys + global_tail) << lsu_type;
    }
}

TEST(ModuleNode, AGlobalWriteHasNoCacheHits) {
    InstBuilder builder = global_read("global_write", "BURST-NON-ALIGNED");
    builder.rw = "write";
    const auto inst = builder.make();
    add_sample(*inst, {"1000", "128000", "7", "3", "80", "10"});
    EXPECT_EQ(
        details_of(*inst, {2400}).text,
        "{mem_type=__global operation_type=write occupancy_samples=[0] stall_samples=[0] idle_samples=[0] "
        "activity_samples=[1000] bandwidth_samples=[12800] bandwidth_eff_samples=[0.5] " +
            global_tail);
}

TEST(ModuleNode, AnEfficiencyMayExceedOne) {
    const auto inst = global_read("exceeds", "").make();
    add_sample(*inst, {"1000", "32000", "0", "0", "0", "0"}); // 3200 megabytes a second on the bus
    EXPECT_NE(details_of(*inst, {2400}).text.find("bandwidth_samples=[3200] bandwidth_eff_samples=[2]"),
              std::string::npos);
}

TEST(ModuleNode, AChannelHasTheBandwidthOfItsRequestsAndNoEfficiency) {
    for (const char* module : {"kdl_iowr", "kdl_iord"}) {
        const auto inst = InstBuilder{.function = "channel",
                                      .module = module,
                                      .byte_width = "512",
                                      .fmax = 240.0f,
                                      .tags = {"ivalid", "bandwidth"}}
                              .make();
        add_sample(*inst, {"1000", "5"});
        EXPECT_EQ(details_of(*inst, {2400}).text,
                  "{occupancy_samples=[1000] stall_samples=[0] idle_samples=[0] activity_samples=[1000] "
                  "bandwidth_samples=[6400] coalesced_memory=false}");
    }
}

TEST(ModuleNode, AGlobalChannelIsAChannel) {
    InstBuilder builder = global_read("global_channel", "");
    builder.module = "kdl_iord";
    const auto inst = builder.make();
    add_sample(*inst, {"1000", "128000", "0", "0", "80", "10"});
    EXPECT_EQ(
        details_of(*inst, {2400}).text,
        "{mem_type=__global operation_type=read occupancy_samples=[0] stall_samples=[0] idle_samples=[0] "
        "activity_samples=[1000] bandwidth_samples=[6400] " +
            global_tail);
}

TEST(ModuleNode, AnIdleSampleHasNoBandwidthAndNoEfficiency) {
    const auto inst = global_read("idle", "").make();
    add_sample(*inst, {"0", "0", "0", "0", "0", "0"});
    EXPECT_NE(details_of(*inst, {2400}).text.find("bandwidth_samples=[0] bandwidth_eff_samples=[0]"),
              std::string::npos);
}

TEST(ModuleNode, WithoutAClockBandwidthsAreNegativeZeros) {
    InstBuilder builder = global_read("no_clock", "");
    builder.fmax = 0.0f;
    const auto inst = builder.make();
    add_sample(*inst, {"1000", "64000", "0", "0", "0", "0"});
    add_sample(*inst, {"0", "0", "0", "0", "0", "0"});
    EXPECT_NE(details_of(*inst, {2400, 0}).text.find("bandwidth_samples=[-0 -0] bandwidth_eff_samples=[0 0]"),
              std::string::npos);
}

TEST(ModuleNode, AnIntervalWithoutCyclesHasNoBandwidth) {
    const auto inst = global_read("no_interval", "").make();
    add_sample(*inst, {"1000", "64000", "0", "0", "0", "0"});
    EXPECT_NE(details_of(*inst, {0}).text.find("bandwidth_samples=[0] bandwidth_eff_samples=[0]"),
              std::string::npos);
}

// 1000000 cycles at 1000 MHz are a millisecond. 2500 requests of 4 bytes are 10000 bytes: 10.1, and 10 in
// double.
TEST(ModuleNode, BandwidthsAreWorkedOutInFloat) {
    const auto inst =
        InstBuilder{.function = "in_float", .module = "kdl_iord", .fmax = 1000.0f, .tags = {"ivalid"}}.make();
    add_sample(*inst, {"2500"});
    EXPECT_NE(details_of(*inst, {1000000}).text.find("bandwidth_samples=[10.1]"), std::string::npos);
}

TEST(ModuleNode, AnInvalidRequestCountIsReportedForEachSampleAndStays) {
    const auto inst =
        InstBuilder{.function = "minus_one", .module = "kdl_iord", .fmax = 1000.0f, .tags = {"ivalid"}}
            .make();
    for (const char* value : {"-1", "5", "-1"})
        add_sample(*inst, {value});
    const Details details = details_of(*inst, {1000000, 1000000, 1000000});
    const std::string message = "Warning: Invalid request count. Bandwidth measurement might be incorrect.\n";
    EXPECT_EQ(details.messages, message + message);
    EXPECT_NE(details.text.find("activity_samples=[-1 5 -1]"), std::string::npos);
    // -4 bytes in a millisecond are -0.04 units, rounded up -0. 20 bytes are 0.2 units, rounded up 1.
    EXPECT_NE(details.text.find("bandwidth_samples=[-0 0.1 -0]"), std::string::npos);
}

TEST(ModuleNode, TheShorterOfCyclesAndRequestsWins) {
    const auto inst = InstBuilder{.function = "shorter", .tags = {"ivalid"}}.make();
    add_sample(*inst, {"5"});
    add_sample(*inst, {"6"});
    const std::string message = "Warning: number of cycle samples is not equal to number of valid cycles\n";
    const Details fewer = details_of(*inst, {100});
    EXPECT_EQ(fewer.messages, message);
    EXPECT_NE(fewer.text.find("activity_samples=[5] "), std::string::npos);
    const Details more = details_of(*inst, {100, 100, 100});
    EXPECT_EQ(more.messages, message);
    EXPECT_NE(more.text.find("activity_samples=[5 6] "), std::string::npos);
    const Details none = details_of(*inst, {});
    EXPECT_EQ(none.messages, message);
    EXPECT_EQ(none.text.find("activity_samples"), std::string::npos);
}

TEST(ModuleNode, AByteWidthThatIsNoNumberIsReportedAndCountsAsOneByte) {
    for (const std::string width : {"", "wide", "99999999999"}) {
        const auto inst = InstBuilder{
            .function = "width",
            .module = "kdl_iord",
            .byte_width = width,
            .fmax = 1000.0f,
            .tags = {
                "ivalid"}}.make();
        add_sample(*inst, {"1000000"});
        const Details details = details_of(*inst, {1000});
        EXPECT_EQ(details.messages,
                  "Warning: value for byte width for moduleinst block was invalid: " + width +
                      "\nWarning: unable to parse the byte width. Setting byte width to 1.\n");
        // 1000000 bytes in a microsecond are 1e12 bytes a second.
        EXPECT_NE(details.text.find("bandwidth_samples=[1000000]"), std::string::npos) << details.text;
    }
}

TEST(ModuleNode, AByteWidthIsInBitsAndTruncated) {
    const std::pair<const char*, const char*> rows[] = {
        {"4", "0"},        // no whole byte
        {"15", "1000000"}, // one byte
        {"-15", "-1000000"},
        {"16 bits", "2000000"},
    };
    for (const auto& [width, bandwidth] : rows) {
        const auto inst = InstBuilder{
            .function = "bits",
            .module = "kdl_iord",
            .byte_width = width,
            .fmax = 1000.0f,
            .tags = {
                "ivalid"}}.make();
        add_sample(*inst, {"1000000"});
        const Details details = details_of(*inst, {1000});
        EXPECT_EQ(details.messages, "");
        EXPECT_NE(details.text.find("bandwidth_samples=[" + std::string(bandwidth) + "]"), std::string::npos)
            << details.text;
    }
}

TEST(ModuleNode, CoalescedLooksAtTheTextAlone) {
    const auto inst = InstBuilder{.function = "coalesced", .memory_opt = "_coalesced"}.make();
    EXPECT_EQ(details_of(*inst, {}).text, "{coalesced_memory=true}");
}

TEST(ModuleNode, SamplesWithoutBurstsAreLeftOutOfTheAverages) {
    InstBuilder builder{.function = "gaps",
                        .memory_type = "__global",
                        .global_mem_name = "DDR",
                        .tags = {"burstcount", "readwritecount"}};
    const auto inst = builder.make();
    add_sample(*inst, {"80", "10"});
    add_sample(*inst, {"80", "0"});          // no bursts
    add_sample(*inst, {"-80", "10"});        // a negative average
    add_sample(*inst, {"80", "-10"});        // negative bursts
    add_sample(*inst, {"0", "10"});          // an average of 0 is one
    add_sample(*inst, {"80", "4294967306"}); // 2^32 + 10 bursts are 10 in 32 bits
    EXPECT_NE(
        details_of(*inst, {1, 1, 1, 1, 1, 1}).text.find("global_mem_name=DDR average_burst_size=[8 0 8]}"),
        std::string::npos);
}

// 100000001 words are 100000000 as a float; by 12 that is 8333333.5 as a float, and 8333334 with 7 digits. In
// double it would be 8333333.4.
TEST(ModuleNode, BurstAveragesAreWorkedOutInFloat) {
    const auto inst =
        InstBuilder{
            .function = "burst_float", .memory_type = "__global", .tags = {"burstcount", "readwritecount"}}
            .make();
    add_sample(*inst, {"100000001", "12"});
    EXPECT_NE(details_of(*inst, {1}).text.find("global_mem_name= average_burst_size=[8333334]"),
              std::string::npos);
}

TEST(ModuleNode, BurstAveragesOfOtherInstancesAreDropped) {
    const auto inst = InstBuilder{.function = "dropped", .tags = {"burstcount", "readwritecount"}}.make();
    add_sample(*inst, {"80", "10"});
    EXPECT_EQ(details_of(*inst, {1}).text.find("burst"), std::string::npos);
}

} // namespace
