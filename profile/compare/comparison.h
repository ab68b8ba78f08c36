// SPDX-License-Identifier: Apache-2.0
// Two runs side by side: what changed, for better or worse, and what is in one of them alone.
#pragma once

#include <string>
#include <vector>

#include "profile_summary.h"

namespace zan::profile {

enum class MatchBy {
    name,
    source, // what stands at the same place of the sources, then what has the same name
};

enum class Verdict { worse, better, neither };

struct MetricChange {
    Metric metric;
    Value before; // missing if that run didn't measure it
    Value after;
    Verdict verdict;
    bool operator==(const MetricChange&) const = default;
};

// A run, a kernel, a block or a memory, in one run or in both.
struct SubjectComparison {
    MetricScope scope = MetricScope::run;
    std::string kernel; // the kernel, or the block's; empty for others. "name#1" for compute unit 1
    std::string name;   // of the block or memory; empty for others
    // The names in the old run where they are others. Matched by their source.
    std::string old_kernel;
    std::string old_name;
    // Null if that run doesn't have it.
    const MetricValues* before = nullptr;
    const MetricValues* after = nullptr;
    SourcePlace old_place; // of a block where it is, not where it was inlined; no file if it isn't known
    SourcePlace new_place;
    // Of a kernel: both runs have enough invocations for the test of its times, and it finds no change.
    bool is_time_the_same = false;
    bool is_count_the_same = false;    // of a kernel's invocations
    std::vector<MetricChange> changes; // in the order of the table of metrics

    bool is_in_both() const { return before && after; }
    // Both places are known, and they differ.
    bool has_moved() const;
    // False for a time of a kernel that the test says hasn't changed: other values are as good as equal.
    bool may_differ(Metric metric) const;
};

// Transfers of one kind and queue. Null if that run has none.
struct TransferComparison {
    std::string type;
    int queue = 0;
    const TransferSummary* before = nullptr;
    const TransferSummary* after = nullptr;
};

struct RunComparison {
    const ProfileSummary* before = nullptr;
    const ProfileSummary* after = nullptr;
    // False if the unit of time is known of one run alone: no time is then in `changes`.
    bool has_same_time_unit = true;
    // The run, the kernels in the order of the new run, each with its blocks, memories; after each of these
    // lists what only the old run has.
    std::vector<SubjectComparison> subjects;
    std::vector<TransferComparison> transfers;

    // Whether values of this unit can be compared: times if both runs have the same unit, or, for a limit
    // that is a time itself, if that is known.
    bool can_compare(MetricUnit unit, bool is_share) const;
};

// A change is listed from these sizes on: percent in points, other values in percent of the old one.
inline constexpr double least_points = 1.0;
inline constexpr double least_percent = 2.0;
bool is_listed_change(MetricUnit unit, double before, double after);

// Compares the metrics of both runs, which must outlive the result. Kernels are matched by name and compute
// unit, blocks by name within their kernel; those with equal names in their order.
//
// Where both runs have five invocations of a kernel or more, its times (kernel_time, kernel_total with an
// equal number of invocations, kernel_p95) are only listed if the intervals of both medians don't overlap.
RunComparison compare(const ProfileSummary& before, const ProfileSummary& after,
                      MatchBy match = MatchBy::name);

// "writer", "writer/store_pixels", "HBM0", "run".
std::string label_of(const SubjectComparison& subject);

} // namespace zan::profile
