// SPDX-License-Identifier: Apache-2.0
// The four answers: which kernel took the time, which block holds it up, on which line, and whether memory is
// the reason.
#pragma once

#include <cstddef>
#include <vector>

#include "profile_summary.h"
#include "rules.h"

namespace zan::profile {

// The block that holds a kernel up.
struct Culprit {
    std::size_t kernel = 0; // places in the summary
    std::size_t block = 0;
    std::size_t rank = 0; // its place in the ranking
    Value time;           // that it is ranked by
};

// The answers for a summary that has its sentences, and for the culprits of its kernels.
Answers answers_of(const ProfileSummary& summary, const std::vector<Culprit>& culprits, const Rules& rules);

// Null if no kernel ran. The kernel that the others wait for: the one that ran longest, times in which its
// channels stalled left out.
const KernelSummary* leading_kernel(const ProfileSummary& summary);

} // namespace zan::profile
