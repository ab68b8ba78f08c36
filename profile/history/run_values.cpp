// SPDX-License-Identifier: Apache-2.0
#include "run_values.h"

#include <cmath>

#include "kernel_label.h"
#include "summary_fields.h"

namespace zan::profile {

std::string_view name_of_scope(MetricScope scope) {
    switch (scope) {
        case MetricScope::block:
            return "block";
        case MetricScope::kernel:
            return "kernel";
        case MetricScope::memory:
            return "memory";
        case MetricScope::run:
            break;
    }
    return "run";
}

RunValues::RunValues(Database& database)
    : m_find(database,
             "SELECT number FROM series WHERE scope = ? AND kernel = ? AND name = ? AND metric = ?"),
      m_make(database, "INSERT INTO series (scope, kernel, name, metric) VALUES (?, ?, ?, ?)"),
      m_insert(database, "INSERT INTO value VALUES (?, ?, ?) ON CONFLICT DO NOTHING") {
}

void RunValues::add(std::int64_t run, const ProfileSummary& summary) {
    m_run = run;
    m_time_unit_known = summary.nanoseconds.has_value();
    add_metrics(MetricScope::run, "", "", summary.metrics);
    for (const KernelSummary& kernel : summary.kernels) {
        const std::string label = kernel_label(kernel);
        add_metrics(MetricScope::kernel, label, "", kernel.metrics);
        for (const BlockSummary& block : kernel.blocks)
            add_metrics(MetricScope::block, label, block.name, block.metrics);
    }
    for (const MemorySummary& memory : summary.memories) {
        add_metrics(MetricScope::memory, "", memory.name, memory.metrics);
        if (memory.peak)
            add_value(MetricScope::memory, "", memory.name, "peak_mb_per_s", *memory.peak);
    }
}

void RunValues::add_metrics(MetricScope scope, const std::string& kernel, const std::string& name,
                            const MetricValues& metrics) {
    for (const MetricRow& row : metric_table()) {
        const Value& value = metrics[row.metric];
        if (row.scope == scope && value)
            add_value(scope, kernel, name, std::string(row.name) + unit_suffix(row.unit, m_time_unit_known),
                      *value);
    }
}

void RunValues::add_value(MetricScope scope, const std::string& kernel, const std::string& name,
                          const std::string& metric, double value) {
    if (!std::isfinite(value)) // a database has no such numbers
        return;
    const std::int64_t series = series_of(std::string(name_of_scope(scope)), kernel, name, metric);
    m_insert.bind(1, series).bind(2, m_run).bind(3, value).run();
}

std::int64_t RunValues::series_of(const std::string& scope, const std::string& kernel,
                                  const std::string& name, const std::string& metric) {
    const std::string* const texts[] = {&scope, &kernel, &name, &metric};
    std::string key;
    for (const std::string* text : texts)
        key += std::to_string(text->size()) + ":" + *text;
    const auto known = m_numbers.find(key);
    if (known != m_numbers.end())
        return known->second;
    int parameter = 0;
    for (const std::string* text : texts) {
        ++parameter;
        m_find.bind(parameter, std::string_view(*text));
        m_make.bind(parameter, std::string_view(*text));
    }
    if (!m_find.step()) {
        m_make.run();
        m_find.step();
    }
    const std::int64_t number = m_find.integer(0);
    m_find.reset();
    m_numbers.emplace(key, number);
    return number;
}

} // namespace zan::profile
