// SPDX-License-Identifier: Apache-2.0
// The metrics of the blocks of a kernel.
#pragma once

#include <vector>

#include "summary_context.h"

namespace zan::profile {

// In the order of the kernel's nodes. What depends on other kernels, the shares of a memory's bytes, is
// missing.
std::vector<BlockSummary> summarize_blocks(const SummaryContext& context, const JoinedKernel& kernel);

} // namespace zan::profile
