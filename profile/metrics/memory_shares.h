// SPDX-License-Identifier: Apache-2.0
// Which kernel moved how much of a memory's bytes.
#pragma once

#include <span>
#include <vector>

#include "summary_context.h"

namespace zan::profile {

// Sets the shares of its memory's bytes for each block, while its kernel ran.
void set_memory_shares(const SummaryContext& context, std::span<const JoinedKernel> joined,
                       std::span<const MemorySummary> memories, std::vector<KernelSummary>& kernels);

} // namespace zan::profile
