// SPDX-License-Identifier: Apache-2.0
// From the summary of a run to the facts that rules look at.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "facts.h"
#include "profile_summary.h"
#include "rules.h"

namespace zan::profile {

// The kind of a block as rules name it: "global read", "channel write", "loop", "other".
std::string kind_text(const BlockSummary& block);

// Names as a sentence lists them: "a, b and c".
std::string listed(const std::vector<std::string>& names);

// Percent: the greatest stall of the kernel's channels. Missing if it has no channels, or if stalls of one
// weren't counted.
Value greatest_channel_stall(const KernelSummary& kernel);

// The other kernels of its team: those of that name on its device.
std::vector<const KernelSummary*> team_of(const ProfileSummary& summary, const KernelSummary& kernel);

// The facts of a block. `innermost` of the kernel's blocks must be set.
Facts facts_of(const ProfileSummary& summary, const KernelSummary& kernel, const BlockSummary& block,
               const Rules& rules);

} // namespace zan::profile
