// SPDX-License-Identifier: Apache-2.0
// What a summary says in words: a sentence for each block, the culprit of each kernel, and the four answers.
#pragma once

#include <cstddef>
#include <vector>

#include "profile_summary.h"
#include "rules.h"

namespace zan::profile {

// Fills what the diagnosis owns in the summary: innermost loops, sentences, culprits, answers. All else must
// be there.
void diagnose(ProfileSummary& summary, const Rules& rules);

// A block by its places in the summary, and the time that it is ranked by; nothing if that isn't known.
struct RankedBlock {
    std::size_t kernel = 0;
    std::size_t block = 0;
    Value time;
    bool operator==(const RankedBlock&) const = default;
};

// All blocks of a summary that has its sentences: those that cost the most time first, then those of which
// the time isn't known, and last blocks of autorun kernels that only wait for work.
std::vector<RankedBlock> ranking(const ProfileSummary& summary);

} // namespace zan::profile
