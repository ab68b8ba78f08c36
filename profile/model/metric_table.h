// SPDX-License-Identifier: Apache-2.0
// What can be asked of a profile: one table of metrics for every command and page.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

namespace zan::profile {

// A number of the profile; nothing if it wasn't measured. What isn't known is never 0.
using Value = std::optional<double>;

// docs/metrics.md has the formulas. Shares are in percent (0 to 100, and above where the formula lets them).
// Times are in nanoseconds where the time unit of the run is known, else in the numbers of the report.
enum class Metric {
    // Of a block.
    stall,
    valid,
    idle,
    lost,
    iteration,
    net,
    bandwidth,
    bandwidth_max,
    moved,
    efficiency,
    hits,
    unaligned,
    fill,
    fill_share,
    max_fill,
    burst,
    burst_share,
    memory_use,
    port_use,
    // Of a kernel.
    kernel_time,
    kernel_total,
    kernel_p95,
    busy,
    alone,
    waiting,
    // Of a memory.
    memory_mean,
    memory_max,
    memory_full,
    // Of the run.
    span,
    count // how many there are
};

enum class MetricScope { block, kernel, memory, run };
enum class MetricUnit { percent, time, cycles, megabytes_per_second, bytes, words };
enum class Better { more, less, neither };

struct MetricRow {
    Metric metric;
    std::string_view name; // on command lines, in JSON without its unit, and in docs/metrics.md
    MetricScope scope;
    MetricUnit unit;
    Better better;
    std::string_view meaning; // a line for people
};

// All rows, in the order of the enumeration.
std::span<const MetricRow> metric_table();
const MetricRow& row_of(Metric metric);
// Null if there is no metric of that name.
const MetricRow* find_metric(std::string_view name);

// The values of one block, kernel, memory or run. Metrics of other scopes are missing.
class MetricValues {
  public:
    const Value& operator[](Metric metric) const { return m_values[static_cast<std::size_t>(metric)]; }
    Value& operator[](Metric metric) { return m_values[static_cast<std::size_t>(metric)]; }
    bool operator==(const MetricValues&) const = default;

  private:
    std::array<Value, static_cast<std::size_t>(Metric::count)> m_values;
};

} // namespace zan::profile
