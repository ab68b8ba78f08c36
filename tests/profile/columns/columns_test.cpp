// SPDX-License-Identifier: Apache-2.0
#include "columns.h"

#include <gtest/gtest.h>

#include <limits>

#include "node_reader.h"
#include "series_units.h"
#include "stream_report.h"
#include "temp_dir.h"

using namespace zan::profile;

namespace {

// The columns of a report with one kernel.
class ColumnsOfReport final : public NodeTaker {
  public:
    explicit ColumnsOfReport(const StreamReport& report) {
        NodeReader reader(*this);
        write_stream(reader, report);
    }
    void begin_kernel(const KernelNode& node) override { m_columns.begin_kernel(node, 0); }
    bool needs_sources(std::string_view) override { return false; }
    void block(const BlockNode& node) override { m_columns.block(node); }
    void port(const PortNode& node) override { m_columns.port(node); }
    void end_kernel() override { m_columns.end_kernel(); }
    void transfer(const TransferNode& node) override { m_columns.transfer(node); }
    void board(const std::string&) override {}
    void board_memory(const BoardMemoryNode&) override {}
    void clock(const std::string&) override {}
    void versions(const std::string&, const std::string&) override {}

    KernelColumns& kernel() { return *m_columns.kernels().at(0); }
    const SeriesSums& sums(std::size_t block, BlockSeries which) {
        return kernel().blocks.at(block).columns[static_cast<std::size_t>(which)]->sums;
    }
    std::vector<std::int64_t> bandwidths(std::size_t port) {
        return units_of(kernel().ports.at(port)->bandwidth.series, m_store);
    }

  private:
    const TempDir m_dir;
    ChunkStore m_store{m_dir.path()};
    Columns m_columns{m_store};
};

// Two samples, of 100 and 200 cycles.
TEST(Columns, SumsHaveTheWeightsOfTheirSeries) {
    StreamKernel kernel{.stamps = {100, 300}, .cycles = {100, 200}};
    kernel.blocks = {
        {.name = "recv", .mem_type = "", .stall = {5, 0}, .requests = {10, 20}, .fill = {2.0f, 4.0f}},
        {.name = "load", .bandwidth = {3.0f, 6.0f}, .efficiency = {0.5f, 1.0f}}};
    ColumnsOfReport columns({.kernels = {kernel}});
    const SeriesSums& stall = columns.sums(0, BlockSeries::stall);
    EXPECT_EQ(stall.products, 5.0);
    EXPECT_EQ(stall.weights, 2.0);
    EXPECT_EQ(stall.cycles, 300.0);
    const SeriesSums& fill = columns.sums(0, BlockSeries::fill);
    EXPECT_EQ(fill.weights, 10.0 + 5.0 + 20.0);
    EXPECT_EQ(fill.products, 2.0 * 15.0 + 4.0 * 20.0);
    const SeriesSums& bandwidth = columns.sums(1, BlockSeries::bandwidth);
    EXPECT_EQ(bandwidth.weights, 300.0);
    EXPECT_EQ(bandwidth.products, 3.0 * 100.0 + 6.0 * 200.0);
    const SeriesSums& efficiency = columns.sums(1, BlockSeries::efficiency);
    EXPECT_EQ(efficiency.weights, 1500.0);
    EXPECT_EQ(efficiency.products, 0.5 * 300.0 + 1.0 * 1200.0);
}

// Two invocations have them in another order.
TEST(Columns, PortsAreKnownByTheirNames) {
    StreamKernel first{.stamps = {100}, .cycles = {100}};
    first.ports = {{.port = "port_0", .bandwidth = {1.0f}}, {.port = "port_1", .bandwidth = {2.0f}}};
    StreamKernel second{.start = 200, .stamps = {300}, .cycles = {100}};
    second.ports = {{.port = "port_1", .bandwidth = {3.0f}}, {.port = "port_0", .bandwidth = {4.0f}}};
    ColumnsOfReport columns({.kernels = {first, second}});
    ASSERT_EQ(columns.kernel().ports.size(), 2u);
    EXPECT_EQ(columns.kernel().ports[0]->port, "port_0");
    EXPECT_EQ(columns.bandwidths(0), (std::vector<std::int64_t>{1, 4}));
    EXPECT_EQ(columns.bandwidths(1), (std::vector<std::int64_t>{2, 3}));
}

// Two invocations have them in another order.
TEST(Columns, BlocksAreKnownByTheirNames) {
    StreamKernel first{.stamps = {100}, .cycles = {100}};
    first.blocks = {{.name = "a", .stall = {1}}, {.name = "b", .stall = {2}}};
    StreamKernel second{.start = 200, .stamps = {300}, .cycles = {100}};
    second.blocks = {{.name = "b", .stall = {3}}, {.name = "a", .stall = {4}}};
    ColumnsOfReport columns({.kernels = {first, second}});
    ASSERT_EQ(columns.kernel().blocks.size(), 2u);
    EXPECT_EQ(columns.kernel().blocks[0].name, "a");
    EXPECT_EQ(columns.sums(0, BlockSeries::stall).products, 1.0 + 4.0);
    EXPECT_EQ(columns.sums(1, BlockSeries::stall).products, 2.0 + 3.0);
}

TEST(Columns, APortIsThatOfItsInterface) {
    StreamKernel kernel{.stamps = {100}, .cycles = {100}};
    kernel.ports = {{.interface = "ddr_0", .bandwidth = {1.0f}}, {.interface = "ddr_1", .bandwidth = {2.0f}}};
    StreamKernel swapped{.start = 200, .stamps = {300}, .cycles = {100}};
    swapped.ports = {kernel.ports[1], kernel.ports[0]};
    ColumnsOfReport columns({.kernels = {kernel, swapped}});
    ASSERT_EQ(columns.kernel().ports.size(), 2u);
    EXPECT_EQ(columns.bandwidths(0), (std::vector<std::int64_t>{1, 1}));
    EXPECT_EQ(columns.bandwidths(1), (std::vector<std::int64_t>{2, 2}));
}

TEST(Columns, NodesOfOneStartAreOneInvocation) {
    const StreamKernel first{.start = 10, .stamps = {100}, .cycles = {90}};
    const StreamKernel second{.start = 10, .stamps = {300}, .cycles = {200}};
    const StreamKernel third{.start = 400, .stamps = {500}, .cycles = {100}};
    ColumnsOfReport columns({.kernels = {first, second, third}});
    const auto& invocations = columns.kernel().invocations;
    ASSERT_EQ(invocations.size(), 2u); // times count from the first start
    EXPECT_EQ(invocations[0].start, 0);
    EXPECT_EQ(invocations[0].end, 290);
    EXPECT_EQ(invocations[1].start, 390);
    EXPECT_EQ(invocations[1].first, 2u);
}

TEST(Columns, WithMoreCyclesThanSamplesNoCyclesAreKnown) {
    const StreamKernel first{.stamps = {100}, .cycles = {50, 50}};
    const StreamKernel second{.start = 200, .stamps = {300}, .cycles = {70}};
    ColumnsOfReport columns({.kernels = {first, second}});
    Column& cycles = columns.kernel().cycles;
    EXPECT_EQ(cycles.sums.products, 70.0);
    EXPECT_EQ(cycles.series.marks(), (std::vector<MarkRun>{{0, 1, Mark::missing}}));
}

// 100 cycles each: the second and the third rate can't count, nor the cycles of the fourth.
TEST(Columns, OnlyRatesOfKnownCyclesCountInThePyramidOfAPort) {
    StreamKernel kernel{.stamps = {100, 200, 300, 400}, .cycles = {100, 100, 100, 0}};
    kernel.ports = {{.bandwidth = {2.0f, std::numeric_limits<float>::infinity(), -1.0f, 5.0f}}};
    ColumnsOfReport columns({.kernels = {kernel}});
    Column& bandwidth = columns.kernel().ports.at(0)->bandwidth;
    bandwidth.pyramid.finish();
    EXPECT_EQ(bandwidth.pyramid.least(), (std::vector<double>{2.0}));
    EXPECT_EQ(bandwidth.pyramid.range(), (std::vector<double>{0.0}));
    EXPECT_EQ(bandwidth.pyramid.sums(), (std::vector<double>{200.0}));
    EXPECT_EQ(bandwidth.pyramid.weights(), (std::vector<double>{100.0}));
}

TEST(Columns, AFillWithoutStallsIsWeighedByItsRequests) {
    StreamKernel kernel{.stamps = {100}, .cycles = {100}};
    kernel.blocks = {{.name = "recv", .mem_type = "", .requests = {10}, .fill = {2.0f}}};
    ColumnsOfReport columns({.kernels = {kernel}});
    const SeriesSums& fill = columns.sums(0, BlockSeries::fill);
    EXPECT_EQ(fill.weights, 10.0);
    EXPECT_EQ(fill.products, 20.0);
}

TEST(Columns, OnlyBurstsThatAreNumbersAboveZeroCount) {
    StreamKernel kernel{.stamps = {100}, .cycles = {100}};
    kernel.blocks = {{.name = "load", .burst = {4.0f, 0.0f, std::numeric_limits<float>::infinity(), 2.0f}}};
    ColumnsOfReport columns({.kernels = {kernel}});
    const BurstEntries& bursts = columns.kernel().blocks.at(0).bursts;
    EXPECT_EQ(bursts.num, 2u);
    EXPECT_EQ(bursts.sum, 6.0);
    EXPECT_EQ(bursts.least, 2.0);
    EXPECT_EQ(bursts.greatest, 4.0);
}

// A node of a report that has lost its start.
TEST(Columns, WithoutAStartAKernelBeginsAtItsFirstSample) {
    const TempDir dir;
    ChunkStore store(dir.path());
    Columns columns(store);
    KernelNode node;
    columns.begin_kernel(node, 0);
    columns.end_kernel();
    EXPECT_TRUE(columns.kernels().at(0)->invocations.empty()); // there is no time of it
    node.arrays[Counts::timestamps].push_back(500);
    node.arrays[Counts::timestamps].push_back(700);
    columns.begin_kernel(node, 0);
    columns.end_kernel();
    const auto& invocations = columns.kernels().at(0)->invocations;
    ASSERT_EQ(invocations.size(), 1u);
    EXPECT_EQ(columns.base(), 500);
    EXPECT_EQ(invocations[0].start, 0);
    EXPECT_EQ(invocations[0].end, 200);
}

} // namespace
