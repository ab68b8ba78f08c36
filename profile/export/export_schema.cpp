// SPDX-License-Identifier: Apache-2.0
#include "export_schema.h"

#include <iterator>
#include <optional>

#include "metric_table.h"
#include "summary_fields.h"

namespace zan::profile {

namespace {

struct ColumnRow {
    const char* name;
    ColumnType type = ColumnType::integer;
};

struct LayoutRow {
    ExportTable table;
    const char* name;
    std::vector<ColumnRow> columns;
    std::optional<MetricScope> metrics; // follow the columns
};

std::vector<LayoutRow> layout_rows() {
    using enum ColumnType;
    const ColumnRow run_id = {"run_id"};
    return {
        {ExportTable::run,
         "run",
         {run_id,
          {"schema_version"},
          {"input", text},
          {"program_version", text},
          {"package_version", text},
          {"board", text},
          {"clock_mhz", real},
          {"tick_ns", real},
          {"start_ticks"},
          {"num_nan"},
          {"num_inf"}},
         MetricScope::run},
        {ExportTable::kernel,
         "kernel",
         {run_id,
          {"kernel_id"},
          {"name", text},
          {"compute_unit"},
          {"device"},
          {"file", text},
          {"line"},
          {"autorun"},
          {"invocations"},
          {"samples"},
          {"culprit", text}},
         MetricScope::kernel},
        {ExportTable::invocation,
         "invocation",
         {run_id, {"invocation_id"}, {"kernel_id"}, {"start_ticks"}, {"end_ticks"}, {"samples"}},
         {}},
        {ExportTable::block,
         "block",
         {run_id,
          {"block_id"},
          {"kernel_id"},
          {"place"},
          {"name", text},
          {"kind", text},
          {"memory_id"},
          {"file", text},
          {"line"},
          {"call_chain", text},
          {"rule", text},
          {"sentence", text}},
         MetricScope::block},
        {ExportTable::memory,
         "memory",
         {run_id,
          {"memory_id"},
          {"name", text},
          {"peak_mb_per_s", real},
          {"largest_burst_words", real},
          {"lower_bound"}},
         MetricScope::memory},
        {ExportTable::port,
         "port",
         {run_id,
          {"port_id"},
          {"kernel_id"},
          {"memory_id"},
          {"interface", text},
          {"name", text},
          {"reads"},
          {"writes"}},
         {}},
        {ExportTable::transfer,
         "transfer",
         {run_id, {"transfer_id"}, {"type", text}, {"device"}, {"queue"}, {"start_ticks"}, {"end_ticks"}},
         {}},
        {ExportTable::sample,
         "sample",
         {run_id, {"invocation_id"}, {"block_id"}, {"metric", text}, {"i"}, {"t"}, {"value", real}},
         {}},
        {ExportTable::port_sample,
         "port_sample",
         {run_id, {"invocation_id"}, {"port_id"}, {"metric", text}, {"i"}, {"t"}, {"value", real}},
         {}},
    };
}

void add_metrics(TableLayout& layout, MetricScope scope) {
    for (const MetricRow& metric : metric_table()) {
        if (metric.scope != scope)
            continue;
        const std::string name(metric.name);
        layout.columns.push_back({name + unit_suffix(metric.unit, true), ColumnType::real});
        if (metric.unit == MetricUnit::time)
            layout.columns.push_back({name + unit_suffix(metric.unit, false), ColumnType::real});
    }
}

constexpr SampleMetric counts_metrics[] = {
    {"device", ""},           {"queue", ""},        {"time", "ticks"},         {"cycles", "cycles"},
    {"valid", "cycles"},      {"stall", "cycles"},  {"idle", "cycles"},        {"max_fill", "words"},
    {"requests", "requests"}, {"hits", "requests"}, {"unaligned", "requests"},
};
static_assert(std::size(counts_metrics) == static_cast<std::size_t>(Counts::count));

constexpr SampleMetric rates_metrics[] = {
    {"fill", "words"},  {"bandwidth", "MB/s"},    {"efficiency", "of 1"},
    {"burst", "words"}, {"write_burst", "words"}, {"read_burst", "words"},
};
static_assert(std::size(rates_metrics) == static_cast<std::size_t>(Rates::count));

} // namespace

const std::vector<TableLayout>& export_layouts() {
    static const std::vector<TableLayout> layouts = [] {
        std::vector<TableLayout> made;
        for (const LayoutRow& row : layout_rows()) {
            TableLayout& layout = made.emplace_back();
            layout.name = row.name;
            for (const ColumnRow& column : row.columns)
                layout.columns.push_back({column.name, column.type});
            if (row.metrics)
                add_metrics(layout, *row.metrics);
        }
        return made;
    }();
    return layouts;
}

SampleMetric sample_metric(Counts counts) {
    return counts_metrics[static_cast<std::size_t>(counts)];
}

SampleMetric sample_metric(Rates rates) {
    return rates_metrics[static_cast<std::size_t>(rates)];
}

} // namespace zan::profile
