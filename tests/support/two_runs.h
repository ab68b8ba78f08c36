// SPDX-License-Identifier: Apache-2.0
// Summaries made by hand, for tests of what compares two of them.
#pragma once

#include <initializer_list>
#include <string>
#include <utility>

#include "profile_summary.h"

namespace zan::profile {

using MetricList = std::initializer_list<std::pair<Metric, double>>;

inline MetricValues values_of(MetricList list) {
    MetricValues values;
    for (const auto& [metric, value] : list)
        values[metric] = value;
    return values;
}

inline BlockSummary block_of(const std::string& name, MetricList metrics, int line = 0) {
    BlockSummary block;
    block.name = name;
    block.kind = BlockKind::global;
    block.metrics = values_of(metrics);
    if (line != 0)
        block.sources = {{{"image.cl", line, 5}}};
    return block;
}

inline KernelSummary kernel_of(const std::string& name, MetricList metrics,
                               std::vector<BlockSummary> blocks = {}) {
    KernelSummary kernel;
    kernel.name = name;
    kernel.num_invocations = 1;
    kernel.metrics = values_of(metrics);
    kernel.blocks = std::move(blocks);
    return kernel;
}

inline MemorySummary memory_of(const std::string& name, MetricList metrics) {
    MemorySummary memory;
    memory.name = name;
    memory.metrics = values_of(metrics);
    return memory;
}

inline ProfileSummary run_of(std::vector<KernelSummary> kernels, std::vector<MemorySummary> memories = {},
                             MetricList metrics = {}) {
    ProfileSummary summary;
    summary.nanoseconds = 1.0;
    summary.metrics = values_of(metrics);
    summary.kernels = std::move(kernels);
    summary.memories = std::move(memories);
    return summary;
}

} // namespace zan::profile
