// SPDX-License-Identifier: Apache-2.0
// What readers should know before they trust the numbers of a summary.
#pragma once

#include <vector>

#include "summary_context.h"

namespace zan::profile {

// Each code at most once.
std::vector<Note> notes_of(const SummaryContext& context, const ProfileSummary& summary);

} // namespace zan::profile
