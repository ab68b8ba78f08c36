// SPDX-License-Identifier: Apache-2.0
#include "summary_rows.h"

#include <algorithm>
#include <set>

#include "block_facts.h"
#include "kernel_label.h"
#include "source_place.h"
#include "value_text.h"

namespace zan::tool {

using namespace profile;

namespace {

constexpr const char* unknown = "-";

} // namespace

std::string time_cell(const ProfileSummary& summary, const Value& time) {
    if (!time)
        return unknown;
    return summary.nanoseconds ? time_text(*time) : count_text(*time);
}

std::string percent_cell(const Value& percent, int decimals) {
    return percent ? fixed_text(*percent, decimals) + "%" : unknown;
}

std::string count_cell(const Value& count) {
    return count ? fixed_text(*count, 0) : unknown;
}

std::string metric_cell(const ProfileSummary& summary, Metric metric, const Value& value) {
    switch (row_of(metric).unit) {
        case MetricUnit::percent:
            return percent_cell(value);
        case MetricUnit::time:
            return time_cell(summary, value);
        case MetricUnit::cycles:
        case MetricUnit::words:
            return value ? number_text(*value) : unknown;
        case MetricUnit::megabytes_per_second:
        case MetricUnit::bytes:
            break;
    }
    return count_cell(value);
}

std::string what_cell(const BlockSummary& block) {
    std::string kind = kind_text(block);
    if (block.kind != BlockKind::global || block.memory.empty())
        return kind;
    return block.memory + kind.substr(std::string("global").size());
}

std::string place_cell(const SourcePlace& place, bool is_short) {
    if (!is_short)
        return source_place_text(place);
    return source_place_text({place.file.substr(place.file.rfind('/') + 1), place.line, place.column});
}

std::string source_cell(const BlockSummary& block, bool is_short) {
    if (block.sources.empty() || block.sources.front().empty())
        return {};
    return place_cell(block.sources.front().front(), is_short);
}

std::string kernel_cell(const KernelSummary& kernel) {
    return kernel_label(kernel);
}

std::vector<std::optional<int>> devices_of(const ProfileSummary& summary) {
    std::set<std::optional<int>> devices;
    for (const KernelSummary& kernel : summary.kernels)
        devices.insert(kernel.device);
    return {devices.begin(), devices.end()};
}

std::vector<RankedBlock> sorted_blocks(const ProfileSummary& summary, const std::string& kernel,
                                       const std::optional<Metric>& sort) {
    std::vector<RankedBlock> blocks = ranking(summary);
    std::erase_if(blocks, [&](const RankedBlock& block) {
        return !kernel.empty() && summary.kernels[block.kernel].name != kernel;
    });
    if (!sort)
        return blocks;
    const auto value = [&](const RankedBlock& block) -> const Value& {
        return summary.kernels[block.kernel].blocks[block.block].metrics[*sort];
    };
    std::ranges::stable_sort(blocks, [&](const RankedBlock& a, const RankedBlock& b) {
        return value(a) && (!value(b) || *value(a) > *value(b));
    });
    return blocks;
}

} // namespace zan::tool
