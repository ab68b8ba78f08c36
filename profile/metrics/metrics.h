// SPDX-License-Identifier: Apache-2.0
// Totals to a summary.
#pragma once

#include <span>
#include <string>
#include <utility>
#include <vector>

#include "profile_summary.h"
#include "totals.h"

namespace zan::profile {

struct SummaryOptions {
    std::string input;
    Value nanoseconds; // of the unit of time, if the user states it
    // From a package: its kernels that have several compute units. From a report nothing is known of units.
    bool knows_units = false;
    std::vector<std::pair<std::string, unsigned>> units;
};

// The summary of several runs of one design, each with its own times: what one run didn't measure, such as a
// series of shared counters, is taken from the others. There must be at least one. It has no diagnosis.
ProfileSummary summarize(std::span<const Totals* const> runs, const SummaryOptions& options = {});
ProfileSummary summarize(const Totals& run, const SummaryOptions& options = {});

} // namespace zan::profile
