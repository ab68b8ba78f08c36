// SPDX-License-Identifier: Apache-2.0
#include "columns.h"

#include <gtest/gtest.h>

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

} // namespace
