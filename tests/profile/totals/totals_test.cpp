// SPDX-License-Identifier: Apache-2.0
#include "totals.h"

#include <gtest/gtest.h>

#include "stream_report.h"

using namespace zan::profile;

namespace {

std::size_t num_bins_of(const Totals& totals) {
    std::size_t count = 0;
    for (const KernelTotals& kernel : totals.kernels()) {
        for (const BlockTotals& block : kernel.blocks)
            count += block.stalls.bins().values().size();
        for (const AccessTotals& access : kernel.accesses)
            count += access.by_ports.bins().values().size() + access.reads.bins().values().size() +
                     access.writes.bins().values().size();
    }
    return count;
}

// 2,000 blocks with stalls in 50 kernels, over a second: 16 MB of bins for their stalls, 8 bytes each.
TEST(Totals, HoldBinsWithinABudget) {
    StreamReport report;
    for (int k = 0; k < 50; ++k) {
        StreamKernel kernel{.name = "k" + std::to_string(k)};
        for (long long i = 1; i <= 20; ++i) {
            kernel.stamps.push_back(50'000'000 * i);
            kernel.cycles.push_back(50'000'000);
        }
        for (int b = 0; b < 40; ++b)
            kernel.blocks.push_back({.name = "b" + std::to_string(b),
                                     .memory = "DDR",
                                     .stall = each(20, 1000LL),
                                     .bandwidth = each(20, 10.0f)});
        report.kernels.push_back(kernel);
    }
    const auto totals = totals_of(report);
    EXPECT_EQ(totals->kernels().size(), 50U);
    EXPECT_LE(num_bins_of(*totals) * sizeof(double), std::size_t{32} << 20);
    EXPECT_NEAR(totals->kernels()[49].blocks[39].stalls.total(), 20'000.0, 1e-6);
}

TEST(Totals, KeepABlockThatIsMissingInSomeNodes) {
    StreamKernel all{.stamps = {10}, .cycles = {10}};
    all.blocks = {{.name = "a", .valid = {1}}, {.name = "b", .valid = {2}}, {.name = "c", .valid = {3}}};
    StreamKernel some{.start = 20, .stamps = {30}, .cycles = {10}};
    some.blocks = {{.name = "c", .valid = {4}}, {.name = "a", .valid = {5}}};
    const auto totals = totals_of({.kernels = {all, some}});
    const auto& blocks = totals->kernels().at(0).blocks;
    ASSERT_EQ(blocks.size(), 3U);
    EXPECT_EQ(blocks[0].sums.valid.sum, 6.0);
    EXPECT_EQ(blocks[1].sums.valid.sum, 2.0);
    EXPECT_EQ(blocks[2].sums.valid.sum, 7.0);
}

TEST(Totals, KeepBlocksOfOneNameApart) {
    StreamKernel kernel{.stamps = {10}, .cycles = {10}};
    kernel.blocks = {{.name = "a", .valid = {1}}, {.name = "a", .valid = {2}}};
    const auto totals = totals_of({.kernels = {kernel, kernel}});
    const auto& blocks = totals->kernels().at(0).blocks;
    ASSERT_EQ(blocks.size(), 2U);
    EXPECT_EQ(blocks[0].sums.valid.sum, 2.0);
    EXPECT_EQ(blocks[1].sums.valid.sum, 4.0);
    EXPECT_EQ(blocks[1].sources.at(0).at(0), (SourcePlace{"a.cl", 7, 3}));
}

TEST(Totals, KnowWhatABlockIs) {
    StreamKernel kernel{.stamps = {10}, .cycles = {10}};
    kernel.blocks = {{.name = "global"},
                     {.name = "loop", .mem_type = "__loop", .operation = ""},
                     {.name = "channel", .mem_type = "", .operation = "write", .bandwidth = {1.0f}},
                     {.name = "local", .mem_type = "__local", .operation = "read"}};
    const auto totals = totals_of({.kernels = {kernel}});
    const auto& blocks = totals->kernels().at(0).blocks;
    EXPECT_EQ(blocks[0].kind, BlockKind::global);
    EXPECT_EQ(blocks[0].direction, Direction::read);
    EXPECT_TRUE(blocks[0].coalesced);
    EXPECT_EQ(blocks[1].kind, BlockKind::loop);
    EXPECT_EQ(blocks[1].direction, Direction::none);
    EXPECT_EQ(blocks[2].kind, BlockKind::channel);
    EXPECT_EQ(blocks[2].direction, Direction::write);
    EXPECT_EQ(blocks[3].kind, BlockKind::other);
}

// An autorun kernel of more values than are held: block "a" works in the first two samples, "b" in the last
// one. So "a" is judged by its own work, and "b" by that of both.
TEST(Totals, JudgeALongAutorunKernelByTheBlocksSoFar) {
    StreamKernel kernel{.stamps = {100, 200, 300, 400}, .cycles = each(4, 100LL), .autorun = true};
    kernel.blocks = {{.name = "a", .mem_type = "", .valid = {50, 50, 0, 0}, .stall = {1, 1, 1, 1}},
                     {.name = "b", .mem_type = "", .valid = {0, 0, 0, 50}, .stall = {1, 1, 1, 1}}};
    Totals in_part(5); // "a" alone has six values that are stored
    write_stream(in_part.sink(), {.kernels = {kernel}});
    const KernelTotals& summed = in_part.kernels().at(0);
    EXPECT_TRUE(summed.activity_in_part);
    EXPECT_EQ(summed.blocks[0].sums.valid.weight, 200.0);
    EXPECT_EQ(summed.blocks[1].sums.valid.weight, 300.0);
    EXPECT_EQ(summed.cycles, 300.0);
    EXPECT_EQ(summed.all_cycles, 400.0);

    // With four bandwidths it has ten.
    kernel.blocks[0].bandwidth = {1.0f, 2.0f, 3.0f, 4.0f};
    Totals with_rates(7);
    write_stream(with_rates.sink(), {.kernels = {kernel}});
    EXPECT_EQ(with_rates.kernels().at(0).blocks[0].sums.valid.weight, 200.0);

    const auto as_a_whole = totals_of({.kernels = {kernel}});
    EXPECT_FALSE(as_a_whole->kernels()[0].activity_in_part);
    EXPECT_EQ(as_a_whole->kernels()[0].blocks[0].sums.valid.weight, 300.0);
    EXPECT_EQ(as_a_whole->kernels()[0].blocks[1].sums.valid.weight, 300.0);
}

TEST(Totals, HoldWhatStandsAroundTheKernels) {
    const auto totals =
        totals_of({.transfers = {{.start = 5, .end = 3}}, .memories = {{.name = "HBM", .peak = 7.0f}}});
    EXPECT_EQ(totals->program_version(), "2026.1.0");
    EXPECT_EQ(totals->zanx_version(), "4.2");
    EXPECT_EQ(totals->board_name(), "a_board");
    EXPECT_EQ(totals->clock_text(), "1000.0");
    EXPECT_EQ(totals->memories().at(0).peak, 7.0);
    EXPECT_EQ(totals->transfers().begin()->second.at(0), (TimeSpan{5, 5})); // an end below the start
}

// Its times could be those of another invocation.
TEST(Totals, OfAKernelWithoutAStartOnlySamplesAreCounted) {
    StreamKernel kernel{.stamps = {100, 200}, .cycles = {100, 0}};
    kernel.blocks = {{.name = "a", .memory = "DDR", .valid = {50, 50}, .bandwidth = {1.0f, 1.0f}}};
    kernel.ports = {{.bandwidth = {1.0f, 1.0f}}};
    for (const bool has_start : {true, false}) {
        kernel.has_start = has_start;
        const auto totals = totals_of({.kernels = {kernel}});
        const KernelTotals& summed = totals->kernels().at(0);
        EXPECT_EQ(summed.num_samples, 2U);
        EXPECT_EQ(summed.num_nodes, 1U);
        EXPECT_EQ(summed.num_without_cycles, has_start ? 1U : 0U);
        EXPECT_EQ(summed.invocations.size(), has_start ? 1U : 0U);
        EXPECT_EQ(summed.cycles, has_start ? 100.0 : 0.0);
        ASSERT_EQ(summed.blocks.size(), 1U);
        EXPECT_EQ(summed.blocks[0].kind, BlockKind::global);
        EXPECT_EQ(summed.blocks[0].memory, "DDR");
        EXPECT_EQ(summed.blocks[0].sums.valid.sum, has_start ? 50.0 : 0.0);
        EXPECT_EQ(summed.ports.size(), has_start ? 1U : 0U);
    }
}

TEST(Totals, AreOfOneKernelWhereItsNameUnitSourceAndDeviceAreTheSame) {
    const StreamKernel kernel{.stamps = {10}, .cycles = {10}};
    StreamKernel of_unit = kernel;
    of_unit.compute_unit = 1;
    StreamKernel of_line = kernel;
    of_line.line = 2;
    StreamKernel of_device = kernel;
    of_device.device = 1;
    StreamKernel without_device = kernel; // as a node without samples is, which is of the first that fits
    without_device.stamps.clear();
    const auto totals = totals_of({.kernels = {kernel, of_unit, of_line, of_device, without_device, kernel}});
    std::vector<std::size_t> nodes;
    for (const KernelTotals& summed : totals->kernels())
        nodes.push_back(summed.num_nodes);
    EXPECT_EQ(nodes, (std::vector<std::size_t>{3, 1, 1, 1}));
}

// Valid cycles are counted in one of the four kinds of runs with shared counters; in others an autorun kernel
// is never known to wait, and all of its samples count.
TEST(Totals, KnowTheWorkOfAnAutorunKernelByItsValidCyclesAlone) {
    StreamKernel kernel{.stamps = {100, 200}, .cycles = {100, 100}, .autorun = true};
    kernel.blocks = {{.name = "a", .mem_type = "", .valid = {50, 0}, .stall = {10, 10}}};
    const auto cycles_of = [&](int shared) {
        kernel.shared = shared;
        return totals_of({.kernels = {kernel}})->kernels().at(0).cycles;
    };
    EXPECT_EQ(cycles_of(-1), 100.0);
    EXPECT_EQ(cycles_of(0), 100.0);
    for (const int stalls_idle_or_requests : {1, 2, 3})
        EXPECT_EQ(cycles_of(stalls_idle_or_requests), 200.0);
}

// 2 MB/s in a sample of 100 cycles, and in one that ends where it begins: nothing can be said of when that
// was.
TEST(Totals, TrafficHasATime) {
    StreamKernel kernel{.stamps = {100, 100}, .cycles = {100, 100}};
    kernel.blocks = {{.name = "a", .memory = "DDR", .bandwidth = {2.0f, 2.0f}}};
    kernel.ports = {{.memory = "HBM", .bandwidth = {2.0f, 2.0f}}};
    const auto totals = totals_of({.kernels = {kernel}});
    const auto& accesses = totals->kernels().at(0).accesses;
    ASSERT_EQ(accesses.size(), 2U);
    EXPECT_EQ(accesses[0].memory, "DDR");
    EXPECT_EQ(accesses[0].reads.total(), 200.0);
    EXPECT_EQ(accesses[1].memory, "HBM");
    EXPECT_EQ(accesses[1].by_ports.total(), 200.0);
}

} // namespace
