// SPDX-License-Identifier: Apache-2.0
// The metrics of memories and ports, and which kernel moved what.
#pragma once

#include <vector>

#include "summary_context.h"

namespace zan::profile {

// The memories of the board, and others that accesses name, by name. `kernels` has their blocks.
std::vector<MemorySummary> summarize_memories(const SummaryContext& context,
                                              std::span<const JoinedKernel> joined,
                                              std::span<const KernelSummary> kernels);

std::vector<PortSummary> summarize_ports(const SummaryContext& context, const JoinedKernel& kernel);

// Sets what blocks of global memory know of their port: its name, its limit and its use.
void set_port_use(const SummaryContext& context, KernelSummary& kernel);

} // namespace zan::profile
