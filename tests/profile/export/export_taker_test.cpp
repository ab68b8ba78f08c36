// SPDX-License-Identifier: Apache-2.0
#include "export_taker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "export_records.h"
#include "made_export.h"
#include "node_reader.h"
#include "stream_report.h"

namespace {

using namespace zan::profile;
using testing::ElementsAre;
using testing::IsSupersetOf;

std::vector<std::string> exported(const StreamReport& report) {
    Totals totals;
    RecordedExport writer;
    ExportTaker taker(totals, writer);
    NodeReader reader(taker);
    write_stream(reader, report);
    return writer.lines;
}

TEST(ExportTaker, NumbersCountFromOneThroughTheRun) {
    StreamKernel a{.name = "a", .start = 0, .stamps = {10, 20}, .cycles = {10, 10}};
    a.blocks = {{.name = "load", .stall = {1, 2}}};
    StreamKernel b = a;
    b.name = "b";
    b.start = 5;
    EXPECT_THAT(exported({.kernels = {a, b}}),
                ElementsAre("sample 1 0 cycles: 0@10=10 1@20=10", "block 1 of 1 load",
                            "sample 1 1 stall: 0@10=1 1@20=2", "sample 2 0 cycles: 0@10=10 1@20=10",
                            "block 2 of 2 load", "sample 2 2 stall: 0@10=1 1@20=2"));
}

// Two nodes with one start are one invocation, whose samples go on counting.
TEST(ExportTaker, NodesOfOneStartAreOneInvocation) {
    const StreamKernel first{.start = 3, .stamps = {10, 20}, .cycles = {7, 10}};
    const StreamKernel other{.start = 50, .stamps = {60}, .cycles = {10}};
    const StreamKernel more{.start = 3, .stamps = {30}, .cycles = {9}};
    EXPECT_THAT(exported({.kernels = {first, other, more}}),
                ElementsAre("sample 1 0 cycles: 0@10=7 1@20=10", "sample 2 0 cycles: 0@60=10",
                            "sample 1 0 cycles: 2@30=9"));
}

// The totals take no span from a node without samples.
TEST(ExportTaker, ANodeWithoutSamplesIsNoInvocation) {
    StreamKernel kernel{.start = 3};
    kernel.blocks = {{.name = "load", .stall = {4}}};
    const StreamKernel next{.start = 9, .stamps = {10}, .cycles = {1}};
    EXPECT_THAT(exported({.kernels = {kernel, next}}),
                ElementsAre("block 1 of 1 load", "sample 0 1 stall: 0@-=4", "sample 1 0 cycles: 0@10=1"));
}

// Ports of it are left out, as the totals do.
TEST(ExportTaker, ANodeWithoutAStartIsNoInvocation) {
    RecordedExport writer;
    export_text(R"({"json_type": "Corvane Profiler JSON", "versions": {"profiler_json_version": "1"},
        "kernels": {"nodes": [{"name": "k", "sample_timestamps": ["10"],
            "total_cycles_between_samples": ["7"], "children": [{"type": "extmem", "name": "DDR",
            "interface": "ddr_0", "port": "port_0", "global_used_bw": ["5.0"]}]}]}})",
                writer);
    EXPECT_THAT(writer.lines, ElementsAre("sample 0 0 cycles: 0@10=7", "end"));
}

// Type 1 counts stalls. Efficiency is computed from requests, and so is the bandwidth of a channel.
TEST(ExportTaker, WhatSharedCountersDidNotCountIsNull) {
    StreamKernel kernel{.stamps = {10}, .cycles = {10}, .shared = 1};
    kernel.blocks = {{.name = "load",
                      .valid = {0},
                      .stall = {4},
                      .idle = {0},
                      .requests = {0},
                      .bandwidth = {8.0f},
                      .efficiency = {0.0f}},
                     {.name = "send", .mem_type = "", .bandwidth = {0.0f}}};
    EXPECT_THAT(
        exported({.kernels = {kernel}}),
        IsSupersetOf({"sample 1 1 valid: 0@10=-", "sample 1 1 stall: 0@10=4", "sample 1 1 idle: 0@10=-",
                      "sample 1 1 requests: 0@10=-", "sample 1 1 bandwidth: 0@10=8",
                      "sample 1 1 efficiency: 0@10=-", "sample 1 2 bandwidth: 0@10=-"}));
}

// One average for three samples: its time isn't known.
TEST(ExportTaker, BurstsThatDoNotLineUpHaveNoTimes) {
    StreamKernel kernel{.stamps = {10, 20, 30}, .cycles = {10, 10, 10}};
    kernel.blocks = {{.name = "load", .stall = {1}, .burst = {6.0f}}};
    EXPECT_THAT(exported({.kernels = {kernel}}),
                IsSupersetOf({"sample 1 1 stall: 0@10=1 1@20=- 2@30=-", "sample 1 1 burst: 0@-=6"}));
}

TEST(ExportTaker, PortsAndTransfersHaveNumbers) {
    StreamKernel kernel{.stamps = {10}, .cycles = {10}};
    kernel.ports = {{.bandwidth = {100.0f}, .read_burst = {4.0f}}, {.port = "port_1", .bandwidth = {50.0f}}};
    EXPECT_THAT(
        exported({.kernels = {kernel}, .transfers = {{.start = 1, .end = 2}}}),
        ElementsAre("sample 1 0 cycles: 0@10=10", "port 1 of 1 port_0", "port_sample 1 1 bandwidth: 0@10=100",
                    "port_sample 1 1 read_burst: 0@10=4", "port 2 of 1 port_1",
                    "port_sample 1 2 bandwidth: 0@10=50", "transfer 1 .mem_transfer_read"));
}

// In the second node the port of number 1 is missing, and others differ from number 2 in one of their names.
TEST(ExportTaker, PortsAreKnownByAllTheirNames) {
    StreamKernel kernel{.stamps = {10}, .cycles = {10}};
    kernel.ports = {{.bandwidth = {1.0f}}, {.port = "port_1", .bandwidth = {2.0f}}};
    StreamKernel next{.start = 20, .stamps = {30}};
    next.ports = {{.port = "port_1", .bandwidth = {3.0f}},
                  {.interface = "ddr_1", .port = "port_1", .bandwidth = {4.0f}},
                  {.memory = "HBM", .port = "port_1", .bandwidth = {5.0f}}};
    EXPECT_THAT(exported({.kernels = {kernel, next}}),
                ElementsAre("sample 1 0 cycles: 0@10=10", "port 1 of 1 port_0",
                            "port_sample 1 1 bandwidth: 0@10=1", "port 2 of 1 port_1",
                            "port_sample 1 2 bandwidth: 0@10=2", "port_sample 2 2 bandwidth: 0@30=3",
                            "port 3 of 1 port_1", "port_sample 2 3 bandwidth: 0@30=4", "port 4 of 1 port_1",
                            "port_sample 2 4 bandwidth: 0@30=5"));
}

TEST(ExportTaker, BlocksMayBeMissingOrInAnotherOrder) {
    StreamKernel kernel{.stamps = {10}};
    kernel.blocks = {{.name = "a", .stall = {1}}, {.name = "b", .stall = {2}}, {.name = "c", .stall = {3}}};
    StreamKernel next{.start = 20, .stamps = {30}};
    next.blocks = {{.name = "c", .stall = {4}}, {.name = "a", .stall = {5}}, {.name = "d", .stall = {6}}};
    EXPECT_THAT(exported({.kernels = {kernel, next}}),
                ElementsAre("block 1 of 1 a", "sample 1 1 stall: 0@10=1", "block 2 of 1 b",
                            "sample 1 2 stall: 0@10=2", "block 3 of 1 c", "sample 1 3 stall: 0@10=3",
                            "sample 2 3 stall: 0@30=4", "sample 2 1 stall: 0@30=5", "block 4 of 1 d",
                            "sample 2 4 stall: 0@30=6"));
}

// As in the totals, the second block of a name is another block, in each node.
TEST(ExportTaker, BlocksOfOneNameStayApart) {
    StreamKernel kernel{.stamps = {10}, .cycles = {10}};
    kernel.blocks = {{.name = "x", .stall = {1}}, {.name = "x", .stall = {2}}};
    StreamKernel next = kernel;
    next.start = 20;
    next.stamps = {30};
    EXPECT_THAT(exported({.kernels = {kernel, next}}),
                ElementsAre("sample 1 0 cycles: 0@10=10", "block 1 of 1 x", "sample 1 1 stall: 0@10=1",
                            "block 2 of 1 x", "sample 1 2 stall: 0@10=2", "sample 2 0 cycles: 0@30=10",
                            "sample 2 1 stall: 0@30=1", "sample 2 2 stall: 0@30=2"));
}

} // namespace
