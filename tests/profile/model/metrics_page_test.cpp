// SPDX-License-Identifier: Apache-2.0
// docs/metrics.md has the names and units of the table of metrics.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <sstream>

#include "metric_table.h"
#include "whole_file.h"

using namespace zan::profile;

namespace {

// The first two cells of the rows of tables that begin with "metric" and "unit".
std::map<std::string, std::string> metrics_on_page() {
    std::istringstream page(
        read_file(std::filesystem::path(ZAN_SAMPLES_FOLDER).parent_path() / "docs" / "metrics.md"));
    std::map<std::string, std::string> units;
    bool in_table = false;
    for (std::string line; std::getline(page, line);) {
        if (line.starts_with("| metric | unit |"))
            in_table = true;
        else if (!line.starts_with("|"))
            in_table = false;
        const std::size_t name_end = line.find("` | ");
        if (!in_table || !line.starts_with("| `") || name_end == line.npos)
            continue;
        const std::size_t unit = name_end + 4;
        units[line.substr(3, name_end - 3)] = line.substr(unit, line.find(" |", unit) - unit);
    }
    return units;
}

std::string unit_text(MetricUnit unit) {
    switch (unit) {
        case MetricUnit::percent:
            return "%";
        case MetricUnit::time:
            return "time";
        case MetricUnit::cycles:
            return "cycles";
        case MetricUnit::megabytes_per_second:
            return "MB/s";
        case MetricUnit::bytes:
            return "bytes";
        case MetricUnit::words:
            return "words";
    }
    return "";
}

TEST(MetricsPage, HasTheNamesAndUnitsOfTheTable) {
    std::map<std::string, std::string> expected;
    for (const MetricRow& row : metric_table())
        expected[std::string(row.name)] = unit_text(row.unit);
    EXPECT_EQ(metrics_on_page(), expected);
}

} // namespace
