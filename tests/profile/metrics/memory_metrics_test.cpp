// SPDX-License-Identifier: Apache-2.0
// Memories and ports, with values worked out by hand. A cycle is a nanosecond: at B MB/s a sample of c cycles
// moves B · c / 1000 bytes.
#include "memory_metrics.h"

#include <gtest/gtest.h>

#include "stream_report.h"

using namespace zan::profile;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

StreamKernel with_port(const std::string& name, long long start, long long end, float bandwidth,
                       const StreamPort& port = {}) {
    StreamKernel kernel{
        .name = name, .start = start, .stamps = {end}, .cycles = {end - start}, .ports = {port}};
    kernel.ports[0].bandwidth = {bandwidth};
    return kernel;
}

StreamBlock access(const std::string& operation, float bandwidth, const std::string& memory = "DDR") {
    return {.name = operation + memory,
            .operation = operation,
            .memory = memory,
            .valid = {50},
            .stall = {50},
            .idle = {0},
            .requests = {10},
            .bandwidth = {bandwidth},
            .efficiency = {1.0f}};
}

// 400 MB/s from 0 to 100 and 500 from 50 to 150: 900 in between, which is 90% of the peak. The span is 200.
TEST(MemoryMetrics, BandwidthsOfKernelsAddUpWhereTheyOverlap) {
    const StreamReport report{.kernels = {with_port("a", 0, 100, 400.0f), with_port("b", 50, 150, 500.0f),
                                          with_port("c", 190, 200, 0.0f)},
                              .memories = {{.name = "DDR", .peak = 1000.0f}}};
    const MemorySummary memory = summary_of(report).memories.at(0);
    EXPECT_TRUE(memory.from_ports);
    EXPECT_NEAR(known(memory.metrics[Metric::memory_mean]), (400.0 * 100 + 500.0 * 100) / 200, 1e-9);
    EXPECT_NEAR(known(memory.metrics[Metric::memory_max]), 900.0, 1e-9);
    EXPECT_NEAR(known(memory.metrics[Metric::memory_full]), 25.0, 1e-9); // 50 of 200
    EXPECT_EQ(memory.peak, 1000.0);
    EXPECT_EQ(memory.max_burst, 16.0);
}

// 7 MB/s of 10 are 70% of the peak, from 0 to 100; the span is 200.
TEST(MemoryMetrics, AMemoryIsFullFrom70PercentOfItsPeakOn) {
    const StreamReport report{.kernels = {with_port("a", 0, 100, 7.0f), with_port("b", 100, 150, 6.75f),
                                          with_port("c", 190, 200, 0.0f)},
                              .memories = {{.name = "DDR", .peak = 10.0f}}};
    EXPECT_NEAR(known(summary_of(report).memories.at(0).metrics[Metric::memory_full]), 50.0, 1e-9);
}

// Times that don't fit the cycles, in a unit that the user states: 7 MB/s for 50 cycles, and no time between
// start and end.
TEST(MemoryMetrics, InNoTimeThereIsNoMean) {
    StreamReport report{.kernels = {with_port("a", 100, 100, 7.0f)}, .memories = {{.name = "DDR"}}};
    report.kernels[0].cycles = {50};
    const ProfileSummary summary =
        summary_of(report, {.input = "", .nanoseconds = 1.0, .knows_units = false, .units = {}});
    EXPECT_EQ(summary.memories.at(0).metrics[Metric::memory_mean], std::nullopt);
    EXPECT_EQ(summary.memories.at(0).metrics[Metric::memory_full], std::nullopt);
}

TEST(MemoryMetrics, WithoutPortsTheAccessesThatNameItCount) {
    StreamKernel kernel{.stamps = {100}, .cycles = {100}};
    kernel.blocks = {access("read", 300.0f), access("write", 100.0f), access("read", 50.0f, "HBM")};
    const ProfileSummary summary = summary_of({.kernels = {kernel}, .memories = {{}, {.name = "HBM"}}});
    EXPECT_FALSE(summary.memories[0].from_ports);
    EXPECT_NEAR(known(summary.memories[0].metrics[Metric::memory_mean]), 400.0, 1e-9);
    EXPECT_NEAR(known(summary.memories[1].metrics[Metric::memory_mean]), 50.0, 1e-9);
    EXPECT_NEAR(known(summary.memories[0].read_share), 75.0, 1e-9);
    EXPECT_NEAR(known(summary.memories[0].write_share), 25.0, 1e-9);
    EXPECT_FALSE(summary.memories[0].lower_bound);
}

TEST(MemoryMetrics, PortsAndAccessesOfOneKernelArentCountedTwice) {
    StreamKernel kernel = with_port("k", 0, 100, 400.0f);
    kernel.blocks = {access("read", 390.0f)};
    const ProfileSummary summary = summary_of({.kernels = {kernel}, .memories = {{}}});
    EXPECT_NEAR(known(summary.memories[0].metrics[Metric::memory_mean]), 400.0, 1e-9);
}

TEST(MemoryMetrics, AnUnnamedAccessMakesALowerBound) {
    StreamKernel kernel{.stamps = {100}, .cycles = {100}};
    kernel.blocks = {access("read", 300.0f), access("read", 100.0f, "")};
    const ProfileSummary summary = summary_of({.kernels = {kernel}, .memories = {{}}});
    EXPECT_TRUE(summary.memories[0].lower_bound);
    EXPECT_EQ(summary.kernels[0].blocks[0].own_share, std::nullopt);
}

TEST(MemoryMetrics, SeveralComputeUnitsMakeALowerBound) {
    StreamKernel kernel{.stamps = {100}, .cycles = {100}};
    kernel.blocks = {access("read", 300.0f)};
    const StreamReport report{.kernels = {kernel}, .memories = {{}, {.name = "HBM"}}};
    SummaryOptions options{.input = "", .nanoseconds = {}, .knows_units = true, .units = {{"k", 3U}}};
    ProfileSummary summary = summary_of(report, options);
    EXPECT_EQ(summary.kernels[0].num_units, 3U);
    EXPECT_TRUE(summary.memories[0].lower_bound);
    EXPECT_FALSE(summary.memories[1].lower_bound); // which the kernel doesn't use
    options.units.clear();
    summary = summary_of(report, options);
    EXPECT_EQ(summary.kernels[0].num_units, 1U);
    EXPECT_FALSE(summary.memories[0].lower_bound);
    EXPECT_EQ(summary_of(report).kernels[0].num_units, std::nullopt);
}

TEST(MemoryMetrics, AMemoryThatNothingUsesHasNoMeasurements) {
    const ProfileSummary summary =
        summary_of({.kernels = {{.stamps = {100}, .cycles = {100}}}, .memories = {{}}});
    EXPECT_EQ(summary.memories[0].metrics[Metric::memory_mean], std::nullopt);
    EXPECT_EQ(summary.memories[0].metrics[Metric::memory_full], std::nullopt);
}

// Half of the peak each: 300 of 500, and 100 of 500.
TEST(MemoryMetrics, InterfacesHaveSharesOfThePeak) {
    StreamKernel kernel = with_port("k", 0, 100, 300.0f);
    kernel.ports.push_back({.interface = "ddr_1", .bandwidth = {100.0f}});
    const ProfileSummary summary = summary_of({.kernels = {kernel}, .memories = {{}}});
    const auto& interfaces = summary.memories[0].interfaces;
    ASSERT_EQ(interfaces.size(), 2U);
    EXPECT_EQ(interfaces[0].name, "ddr_0");
    EXPECT_NEAR(known(interfaces[0].bytes), 30.0, 1e-9);
    EXPECT_NEAR(known(interfaces[0].use), 60.0, 1e-9);
    EXPECT_NEAR(known(interfaces[1].use), 20.0, 1e-9);
}

TEST(MemoryMetrics, PortsHaveMeansAndBurstsByTheirNumber) {
    StreamKernel kernel{.stamps = {100, 400}, .cycles = {100, 300}};
    kernel.ports = {{.only = "read_only",
                     .bandwidth = {800.0f, 400.0f},
                     .write_burst = {0.0f, 0.0f},
                     .read_burst = {8.0f, 2.0f}}};
    const PortSummary port = summary_of({.kernels = {kernel}, .memories = {{}}}).kernels[0].ports.at(0);
    EXPECT_TRUE(port.reads);
    EXPECT_FALSE(port.writes);
    EXPECT_NEAR(known(port.mean), 500.0, 1e-9);
    EXPECT_EQ(port.max, 800.0);
    EXPECT_NEAR(known(port.bytes), 80.0 + 120.0, 1e-9);
    EXPECT_NEAR(known(port.read_burst), 200.0 / (10.0 + 60.0), 1e-9);
    EXPECT_EQ(port.write_burst, std::nullopt); // 0 is unknown
}

// 64 bytes at 250 MHz are 16,000 MB/s, so a port with 12,533 is busy 78% of the cycles.
ProfileSummary with_port_use(float port_bandwidth, int num_ports) {
    StreamKernel kernel{.stamps = {4000}, .cycles = {1000}};
    StreamBlock load = access("read", 6400.0f);
    load.requests = {400}; // 25,600 bytes: 64 each
    kernel.blocks = {load};
    for (int i = 0; i < num_ports; ++i)
        kernel.ports.push_back({.port = "port_" + std::to_string(i), .bandwidth = {port_bandwidth}});
    return summary_of({.kernels = {kernel}, .memories = {{.peak = 38400.0f}}, .clock = "250.0"});
}

TEST(MemoryMetrics, PortUseIsOfTheClockAndTheWidestAccess) {
    const BlockSummary block = with_port_use(12533.0f, 1).kernels[0].blocks[0];
    EXPECT_NEAR(known(block.metrics[Metric::port_use]), 78.33, 0.01);
    EXPECT_NEAR(known(block.port_limit), 16'000.0, 1e-6);
    EXPECT_NEAR(known(block.metrics[Metric::memory_use]), 32.64, 0.01); // 67% are free
    EXPECT_EQ(block.port, "port_0");
}

TEST(MemoryMetrics, PortUseOfSeveralPortsIsKnownIfTheyAgree) {
    const ProfileSummary summary = with_port_use(4000.0f, 2);
    EXPECT_EQ(summary.kernels[0].blocks[0].port, "");
    EXPECT_NEAR(known(summary.kernels[0].blocks[0].metrics[Metric::port_use]), 25.0, 1e-6);
}

// 12,000 and 14,000 of 16,000 MB/s are 75% and 87.5%: both ports are full, and the least is known. With one
// at 25% it isn't known which one the block takes; nor with one that nothing measured.
TEST(MemoryMetrics, PortUseOfSeveralPortsIsKnownIfAllAreFull) {
    const auto use_of_ports = [](const std::vector<std::vector<float>>& bandwidths) {
        StreamKernel kernel{.stamps = {4000}, .cycles = {1000}};
        StreamBlock load = access("read", 6400.0f);
        load.requests = {400}; // 25,600 bytes: 64 each
        kernel.blocks = {load};
        for (const auto& bandwidth : bandwidths)
            kernel.ports.push_back(
                {.port = "port_" + std::to_string(kernel.ports.size()), .bandwidth = bandwidth});
        return summary_of({.kernels = {kernel}, .memories = {{.peak = 38400.0f}}, .clock = "250.0"})
            .kernels[0]
            .blocks[0]
            .metrics[Metric::port_use];
    };
    EXPECT_NEAR(known(use_of_ports({{12'000.0f}, {14'000.0f}})), 75.0, 1e-6);
    EXPECT_NEAR(known(use_of_ports({{14'000.0f}, {12'000.0f}})), 75.0, 1e-6);
    EXPECT_NEAR(known(use_of_ports({{4'000.0f}, {8'000.0f}})), 50.0, 1e-6);
    EXPECT_EQ(use_of_ports({{4'000.0f}, {14'000.0f}}), std::nullopt);
    EXPECT_EQ(use_of_ports({{4'000.0f}, {}}), std::nullopt);
    EXPECT_EQ(use_of_ports({}), std::nullopt);
}

TEST(MemoryMetrics, ABlockTakesAPortOfItsDirectionAndItsMemory) {
    StreamKernel kernel{.stamps = {4000}, .cycles = {1000}};
    kernel.blocks = {access("read", 6400.0f), access("write", 3200.0f)};
    kernel.blocks[0].requests = kernel.blocks[1].requests = {400};
    kernel.ports = {{.port = "in", .only = "read_only", .bandwidth = {8000.0f}},
                    {.port = "out", .only = "write_only", .bandwidth = {4000.0f}},
                    {.memory = "HBM", .port = "other", .bandwidth = {2000.0f}}};
    const KernelSummary summary =
        summary_of({.kernels = {kernel}, .memories = {{.peak = 38400.0f}}, .clock = "250.0"}).kernels[0];
    EXPECT_EQ(summary.blocks[0].port, "in");
    EXPECT_NEAR(known(summary.blocks[0].metrics[Metric::port_use]), 50.0, 1e-6);
    EXPECT_EQ(summary.blocks[1].port, "out");
    EXPECT_NEAR(known(summary.blocks[1].metrics[Metric::port_use]), 25.0, 1e-6);
}

// Ports are known by all three names. The second run has a port of its own, and of the others samples that
// add up: 400 MB/s for 100 cycles and 100 for 300.
TEST(MemoryMetrics, PortsOfRunsThatAreMergedAreKnownByTheirNames) {
    StreamKernel kernel{.stamps = {100}, .cycles = {100}};
    kernel.ports = {{.port = "p", .bandwidth = {400.0f}},
                    {.interface = "ddr_1", .port = "p", .bandwidth = {10.0f}},
                    {.memory = "HBM", .port = "p", .bandwidth = {20.0f}}};
    StreamKernel other{.stamps = {300}, .cycles = {300}};
    other.ports = {{.port = "p", .bandwidth = {100.0f}}, {.port = "q", .bandwidth = {30.0f}}};
    const auto first_run = totals_of({.kernels = {kernel}});
    const auto second_run = totals_of({.kernels = {other}});
    const std::vector<const Totals*> runs = {first_run.get(), second_run.get()};
    const std::vector<PortSummary> ports = summarize(runs).kernels.at(0).ports;
    ASSERT_EQ(ports.size(), 4U);
    EXPECT_EQ(ports[0].port + ports[0].interface, "pddr_0");
    EXPECT_NEAR(known(ports[0].mean), (400.0 * 100 + 100.0 * 300) / 400, 1e-9);
    EXPECT_EQ(ports[0].max, 400.0);
    EXPECT_NEAR(known(ports[0].bytes), 40.0 + 30.0, 1e-9);
    EXPECT_EQ(ports[1].port, "q");
    EXPECT_EQ(ports[2].interface, "ddr_1");
    EXPECT_EQ(ports[3].memory, "HBM");
}

// Accesses that are narrower than the port say nothing of how busy it is.
TEST(MemoryMetrics, APortThatCarriesMoreThanItsAccessesCanIsWider) {
    const BlockSummary block = with_port_use(25600.0f, 1).kernels[0].blocks[0];
    EXPECT_EQ(block.metrics[Metric::port_use], std::nullopt);
    EXPECT_EQ(block.port, "port_0");
    EXPECT_NEAR(known(with_port_use(16500.0f, 1).kernels[0].blocks[0].metrics[Metric::port_use]), 103.1, 0.1);
}

TEST(MemoryMetrics, WithoutAKnownUnitOfTimeThereAreNoBandwidthsOfMemories) {
    StreamKernel kernel = with_port("k", 0, 150, 400.0f); // 100 cycles don't last 150 ns, nor 15 or 1500
    kernel.cycles = {100};
    const ProfileSummary summary = summary_of({.kernels = {kernel}, .memories = {{}}});
    EXPECT_EQ(summary.nanoseconds, std::nullopt);
    EXPECT_EQ(summary.memories[0].metrics[Metric::memory_mean], std::nullopt);
    EXPECT_EQ(summary.kernels[0].ports[0].mean, 400.0);
}

// The last of four samples counts: of the others the bandwidth is none, or there are no cycles.
TEST(MemoryMetrics, BandwidthsOfPortsThatAreNoneAreLeftOut) {
    StreamKernel kernel{.stamps = {100, 200, 300, 400}, .cycles = {100, 100, 0, 100}};
    kernel.ports = {
        {.only = "read_only", .bandwidth = {std::numeric_limits<float>::infinity(), -5.0f, 700.0f, 400.0f}}};
    const ProfileSummary summary = summary_of({.kernels = {kernel}, .memories = {{}}});
    const PortSummary port = summary.kernels[0].ports.at(0);
    EXPECT_EQ(port.mean, 400.0);
    EXPECT_EQ(port.max, 400.0);
    EXPECT_EQ(summary.memories[0].metrics[Metric::memory_max], 400.0);
}

// As a port of which nothing was measured has: names, and no numbers.
TEST(MemoryMetrics, APortWithoutBandwidthsHasNoNumbers) {
    StreamKernel kernel{.stamps = {100}, .cycles = {100}};
    kernel.ports = {{}};
    const PortSummary port = summary_of({.kernels = {kernel}, .memories = {{}}}).kernels[0].ports.at(0);
    EXPECT_EQ(port.port, "port_0");
    EXPECT_EQ(port.mean, std::nullopt);
    EXPECT_EQ(port.max, std::nullopt);
    EXPECT_EQ(port.bytes, std::nullopt);
}

} // namespace
