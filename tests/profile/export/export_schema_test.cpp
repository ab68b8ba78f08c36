// SPDX-License-Identifier: Apache-2.0
#include "export_schema.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "whole_file.h"

namespace {

using namespace zan::profile;
using testing::HasSubstr;

TEST(ExportSchema, EachTableHasTheNumberOfItsRunFirst) {
    ASSERT_EQ(export_layouts().size(), num_export_tables);
    for (const TableLayout& layout : export_layouts())
        EXPECT_EQ(layout.columns.front().name, "run_id") << layout.name;
    EXPECT_EQ(layout_of(ExportTable::port_sample).name, "port_sample");
}

TEST(ExportSchema, NamesOfColumnsOccurOnce) {
    for (const TableLayout& layout : export_layouts()) {
        std::set<std::string> names;
        for (const ExportColumn& column : layout.columns)
            EXPECT_TRUE(names.insert(column.name).second) << layout.name << "." << column.name;
    }
}

// A time has a column for each unit that it may be in.
TEST(ExportSchema, MetricsAreColumnsWithUnits) {
    std::vector<std::string> names;
    for (const ExportColumn& column : layout_of(ExportTable::memory).columns)
        names.push_back(column.name);
    EXPECT_THAT(names, testing::ElementsAre("run_id", "memory_id", "name", "peak_mb_per_s",
                                            "largest_burst_words", "lower_bound", "memory_mean_mb_per_s",
                                            "memory_max_mb_per_s", "memory_full_percent"));
    names.clear();
    for (const ExportColumn& column : layout_of(ExportTable::run).columns)
        names.push_back(column.name);
    EXPECT_THAT(names, testing::IsSupersetOf({"span_ns", "span_ticks"}));
}

TEST(ExportSchema, SamplesAreNamedAsMetrics) {
    EXPECT_EQ(sample_metric(Counts::stall).name, "stall");
    EXPECT_EQ(sample_metric(Counts::unaligned).unit, "requests");
    EXPECT_EQ(sample_metric(Rates::bandwidth).unit, "MB/s");
    EXPECT_EQ(sample_metric(Rates::read_burst).name, "read_burst");
}

// The page has each column of each table, in a line that begins with the table's name.
TEST(ExportSchema, ThePageHasAllColumns) {
    const std::string page = read_file(ZAN_EXPORT_PAGE);
    for (const TableLayout& layout : export_layouts()) {
        const std::size_t begin = page.find("| `" + layout.name + "` |");
        ASSERT_NE(begin, std::string::npos) << layout.name;
        const std::string line = page.substr(begin, page.find('\n', begin) - begin);
        for (const ExportColumn& column : layout.columns)
            EXPECT_THAT(line, HasSubstr("`" + column.name + "`")) << layout.name;
    }
}

} // namespace
