// SPDX-License-Identifier: Apache-2.0
// Texts of the cells of a summary.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "diagnosis.h"
#include "profile_summary.h"

namespace zan::tool {

// "-" for what isn't known.
std::string time_cell(const profile::ProfileSummary& summary, const profile::Value& time);
std::string percent_cell(const profile::Value& percent, int decimals = 1);
std::string count_cell(const profile::Value& count);
// Any metric of a block, in its unit.
std::string metric_cell(const profile::ProfileSummary& summary, profile::Metric metric,
                        const profile::Value& value);

// What a block does: "HBM0 write", "channel read", "loop".
std::string what_cell(const profile::BlockSummary& block);
// Where it stands in the sources: its first place, "device/image.cl:34", or "image.cl:34" if it is short;
// empty if that isn't known.
std::string source_cell(const profile::BlockSummary& block, bool is_short = false);
std::string place_cell(const profile::SourcePlace& place, bool is_short = false);
// The kernel's name, with its compute unit if that isn't the first: "aggregate#1".
std::string kernel_cell(const profile::KernelSummary& kernel);

// The devices of the summary's kernels, in the order of their numbers. Kernels whose samples have several
// devices, or none, are of the device "nothing", which is the first.
std::vector<std::optional<int>> devices_of(const profile::ProfileSummary& summary);

// The blocks in their ranking, or by a metric, greatest first and unknown ones last; of one kernel only,
// unless its name is empty.
std::vector<profile::RankedBlock> sorted_blocks(const profile::ProfileSummary& summary,
                                                const std::string& kernel,
                                                const std::optional<profile::Metric>& sort);

} // namespace zan::tool
