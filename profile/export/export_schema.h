// SPDX-License-Identifier: Apache-2.0
// The tables that other tools get of a run: one schema for all formats. docs/export.md describes it.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "profile_nodes.h"

namespace zan::profile {

// Goes up by one with each change that a reader of an older version could stumble over.
inline constexpr int export_schema_version = 1;

enum class ExportTable { run, kernel, invocation, block, memory, port, transfer, sample, port_sample, count };
inline constexpr std::size_t num_export_tables = static_cast<std::size_t>(ExportTable::count);

enum class ColumnType { integer, real, text };

struct ExportColumn {
    std::string name;
    ColumnType type = ColumnType::integer;
};

struct TableLayout {
    std::string name;
    std::vector<ExportColumn> columns;
};

// The layouts of all tables, in the order of the enumeration. A metric of the summary is a column with its
// unit; a time has two, as nanoseconds and as ticks of the report, of which one is null.
const std::vector<TableLayout>& export_layouts();
inline const TableLayout& layout_of(ExportTable table) {
    return export_layouts()[static_cast<std::size_t>(table)];
}

// Null, or a value of the column's type.
using ExportCell = std::variant<std::monostate, std::int64_t, double, std::string>;

// The arrays of samples, as rows name them. The unit is for people.
struct SampleMetric {
    std::string_view name;
    std::string_view unit;
};
SampleMetric sample_metric(Counts counts);
SampleMetric sample_metric(Rates rates);

} // namespace zan::profile
