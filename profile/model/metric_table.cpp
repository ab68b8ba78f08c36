// SPDX-License-Identifier: Apache-2.0
#include "metric_table.h"

#include <algorithm>
#include <iterator>

namespace zan::profile {

namespace {

constexpr MetricRow rows[] = {
    {Metric::stall, "stall", MetricScope::block, MetricUnit::percent, Better::less,
     "share of the cycles in which the block was stalled"},
    {Metric::valid, "valid", MetricScope::block, MetricUnit::percent, Better::more,
     "share of the cycles in which the block had valid data"},
    {Metric::idle, "idle", MetricScope::block, MetricUnit::percent, Better::neither,
     "share of the cycles in which the block was idle"},
    {Metric::lost, "lost", MetricScope::block, MetricUnit::time, Better::less,
     "time that the block was stalled, at most"},
    {Metric::iteration, "iteration", MetricScope::block, MetricUnit::cycles, Better::less,
     "cycles from the start of an iteration of the loop to the next one"},
    {Metric::net, "net", MetricScope::block, MetricUnit::cycles, Better::less,
     "the same without all stalls of the kernel"},
    {Metric::bandwidth, "bandwidth", MetricScope::block, MetricUnit::megabytes_per_second, Better::more,
     "mean bandwidth"},
    {Metric::bandwidth_max, "bandwidth_max", MetricScope::block, MetricUnit::megabytes_per_second,
     Better::more, "greatest bandwidth of a sample"},
    {Metric::moved, "moved", MetricScope::block, MetricUnit::bytes, Better::neither, "bytes moved, about"},
    {Metric::efficiency, "efficiency", MetricScope::block, MetricUnit::percent, Better::more,
     "bytes requested, of the bytes moved"},
    {Metric::hits, "hits", MetricScope::block, MetricUnit::percent, Better::more,
     "requests that hit the cache"},
    {Metric::unaligned, "unaligned", MetricScope::block, MetricUnit::percent, Better::less,
     "requests that were not aligned"},
    {Metric::fill, "fill", MetricScope::block, MetricUnit::words, Better::neither,
     "mean depth of the channel, stalls left out"},
    {Metric::fill_share, "fill_share", MetricScope::block, MetricUnit::percent, Better::neither,
     "the same, of the largest depth seen"},
    {Metric::max_fill, "max_fill", MetricScope::block, MetricUnit::words, Better::neither,
     "largest depth seen"},
    {Metric::burst, "burst", MetricScope::block, MetricUnit::words, Better::more, "mean words in a burst"},
    {Metric::burst_share, "burst_share", MetricScope::block, MetricUnit::percent, Better::more,
     "the same, of the largest burst of the memory"},
    {Metric::memory_use, "memory_use", MetricScope::block, MetricUnit::percent, Better::neither,
     "use of the block's memory, of its peak, while the block was stalled"},
    {Metric::port_use, "port_use", MetricScope::block, MetricUnit::percent, Better::neither,
     "use of the port that the block reaches its memory by"},
    {Metric::kernel_time, "kernel_time", MetricScope::kernel, MetricUnit::time, Better::less,
     "median time of an invocation"},
    {Metric::kernel_total, "kernel_total", MetricScope::kernel, MetricUnit::time, Better::less,
     "time of all invocations"},
    {Metric::kernel_p95, "kernel_p95", MetricScope::kernel, MetricUnit::time, Better::less,
     "time that 95% of the invocations don't exceed"},
    {Metric::busy, "busy", MetricScope::kernel, MetricUnit::percent, Better::neither,
     "share of the run's span in which the kernel ran"},
    {Metric::alone, "alone", MetricScope::kernel, MetricUnit::percent, Better::neither,
     "share of the run's span in which no other started kernel ran beside it"},
    {Metric::waiting, "waiting", MetricScope::kernel, MetricUnit::percent, Better::neither,
     "share of an autorun kernel's time in which it had no work"},
    {Metric::memory_mean, "memory_mean", MetricScope::memory, MetricUnit::megabytes_per_second,
     Better::neither, "mean bandwidth over the run's span"},
    {Metric::memory_max, "memory_max", MetricScope::memory, MetricUnit::megabytes_per_second, Better::neither,
     "greatest bandwidth"},
    {Metric::memory_full, "memory_full", MetricScope::memory, MetricUnit::percent, Better::less,
     "share of the run's span at 70% of the memory's peak or more"},
    {Metric::span, "span", MetricScope::run, MetricUnit::time, Better::less,
     "time from the first start to the last end"},
};
static_assert(std::size(rows) == static_cast<std::size_t>(Metric::count));

} // namespace

std::span<const MetricRow> metric_table() {
    return rows;
}

const MetricRow& row_of(Metric metric) {
    return rows[static_cast<std::size_t>(metric)];
}

const MetricRow* find_metric(std::string_view name) {
    const auto* found = std::ranges::find(rows, name, &MetricRow::name);
    return found == std::end(rows) ? nullptr : found;
}

} // namespace zan::profile
