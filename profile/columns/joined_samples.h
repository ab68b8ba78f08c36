// SPDX-License-Identifier: Apache-2.0
// Samples of a kernel put together, so that a page has fewer of them.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "columns.h"
#include "sample_groups.h"

namespace zan::profile {

// The kernel with one sample for each group of its samples. Counts are added up, of ratios and bandwidths the
// means are weighted as in sums, and each series keeps its least and greatest values as peaks. Sums and
// bursts stay those of all samples. `parts` are the invocations of the kernel, in their order. Finishes the
// series of `kernel`, which is to be dropped.
std::unique_ptr<KernelColumns> joined_samples(KernelColumns& kernel, const std::vector<InvocationPart>& parts,
                                              std::uint64_t group_size, ChunkStore& store);

} // namespace zan::profile
