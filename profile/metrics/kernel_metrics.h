// SPDX-License-Identifier: Apache-2.0
// The metrics of kernels, and how they ran beside each other.
#pragma once

#include <vector>

#include "summary_context.h"

namespace zan::profile {

// Without its blocks, ports and team.
KernelSummary summarize_kernel(const SummaryContext& context, const JoinedKernel& joined);

// Sets the team of each kernel: those that ran with it for half of both times or more.
void set_teams(std::vector<KernelSummary>& kernels, std::span<const JoinedKernel> joined);

} // namespace zan::profile
