// SPDX-License-Identifier: Apache-2.0
#include "export_rows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "made_export.h"

namespace {

using namespace zan::profile;

// Keeps all rows of the small tables, by the names of their columns.
class RowTable final : public ExportWriter, private RowWriter {
  public:
    using Row = std::map<std::string, ExportCell>;
    void series(const SampleSeries&) override {}
    void transfer(std::int64_t id, const TransferNode& node) override {
        write_transfer_row(3, id, node, *this);
    }
    void finish(const WholeRun& run) override { write_rows(run, 3, {2, 1}, *this); }

    std::map<ExportTable, std::vector<Row>> rows;

  private:
    void row(ExportTable table, std::span<const ExportCell> cells) override {
        ASSERT_EQ(cells.size(), layout_of(table).columns.size()) << layout_of(table).name;
        Row& made = rows[table].emplace_back();
        for (std::size_t i = 0; i < cells.size(); ++i)
            made[layout_of(table).columns[i].name] = cells[i];
    }
};

TEST(ExportRows, HaveTheMetricsOfTheSummary) {
    RowTable table;
    export_text(odd_report, table);
    RowTable::Row run = table.rows[ExportTable::run].at(0);
    EXPECT_EQ(run["run_id"], ExportCell(std::int64_t{3}));
    EXPECT_EQ(run["num_nan"], ExportCell(std::int64_t{2}));
    EXPECT_EQ(run["num_inf"], ExportCell(std::int64_t{1}));
    EXPECT_EQ(run["span_ns"], ExportCell(80.0)); // from 50 to 130
    EXPECT_EQ(run["span_ticks"], ExportCell());
    EXPECT_EQ(run["board"], ExportCell());
    RowTable::Row kernel = table.rows[ExportTable::kernel].at(0);
    EXPECT_EQ(kernel["name"], ExportCell(std::string("=cmd(\"x\")")));
    EXPECT_EQ(kernel["kernel_time_ns"], ExportCell(30.0)); // from 100 to 130
    RowTable::Row block = table.rows[ExportTable::block].at(0);
    EXPECT_EQ(block["place"], ExportCell(std::int64_t{1}));
    EXPECT_EQ(block["kind"], ExportCell(std::string("global read")));
    EXPECT_EQ(block["stall_percent"], ExportCell(50.0)); // 5 of 10; the second sample has no counter
    EXPECT_EQ(block["memory_id"], ExportCell());
    EXPECT_EQ(block["call_chain"], ExportCell(std::string("a.cl:7 < m.cl:9")));
}

// In ticks where nothing says how long a cycle lasts.
TEST(ExportRows, TimesWithoutAUnitAreTicks) {
    std::string report = odd_report;
    report.replace(report.find("1000.0"), 6, "0.0");
    RowTable table;
    export_text(report, table);
    EXPECT_EQ(table.rows[ExportTable::kernel].at(0)["kernel_time_ns"], ExportCell());
    EXPECT_EQ(table.rows[ExportTable::kernel].at(0)["kernel_time_ticks"], ExportCell(30.0));
    EXPECT_EQ(table.rows[ExportTable::run].at(0)["tick_ns"], ExportCell());
}

TEST(ExportRows, ABlockWithoutASourceHasNoPlace) {
    RowTable table;
    export_text(odd_report_without(",\n  \"sourcefiles\": [{\"filename\": \"a.cl\", \"line\": \"7\", "
                                   "\"callsite\": [{\"filename\": \"m.cl\", \"line\": \"9\"}]}]"),
                table);
    RowTable::Row block = table.rows[ExportTable::block].at(0);
    EXPECT_EQ(block["name"], ExportCell(std::string("load")));
    for (const char* const column : {"file", "line", "call_chain"})
        EXPECT_EQ(block[column], ExportCell()) << column;
}

// The summary has no memory of a block that makes no accesses to it; its row has what is known, and is a
// lower bound.
TEST(ExportRows, AMemoryThatIsOnlyNamedHasARow) {
    std::string report = odd_report;
    report.replace(report.find("\"__global\""), 10, "\"__local\", \"global_mem_name\": \"HBM\"");
    RowTable table;
    export_text(report, table);
    ASSERT_EQ(table.rows[ExportTable::memory].size(), 1u);
    const RowTable::Row memory = table.rows[ExportTable::memory][0];
    const std::map<std::string, ExportCell> known = {{"run_id", ExportCell(std::int64_t{3})},
                                                     {"memory_id", ExportCell(std::int64_t{1})},
                                                     {"name", ExportCell(std::string("HBM"))},
                                                     {"lower_bound", ExportCell(std::int64_t{1})}};
    for (const auto& [column, cell] : memory)
        EXPECT_EQ(cell, known.contains(column) ? known.at(column) : ExportCell()) << column;
    EXPECT_EQ(table.rows[ExportTable::block].at(0)["memory_id"], ExportCell(std::int64_t{1}));
}

TEST(ExportRows, CallChainsAreTexts) {
    EXPECT_EQ(call_chain_text({{{"a.cl", 12, 1}, {"main.cl", 30, 1}}, {{"b.cl", 0, 0}}}),
              "a.cl:12 < main.cl:30; b.cl");
    EXPECT_EQ(call_chain_text({}), "");
}

} // namespace
