// SPDX-License-Identifier: Apache-2.0
// Fewer samples for a page: those of some kernels, those of a stretch of time, or several in one.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "profile_columns.h"

namespace zan::profile {

// Above that a page takes seconds to open, and 300 MB.
inline constexpr std::uint64_t most_values = 200'000'000;

struct SampleChoice {
    std::vector<std::string> kernels = {}; // names; of others no samples stay. Empty: all
    Value from = {};                       // nanoseconds after the run's start
    Value to = {};
    std::uint64_t limit = most_values; // values; 0: none
};

// Leaves these samples in the columns. If they have more values than the limit, consecutive ones of an
// invocation become one, 4 or the next power of two of them that is enough; `group` of the profile says how
// many. False if no group is large enough: then each invocation has one sample. Sums stay those of the whole
// run. Contract: from and to are given only if the summary knows the unit of time.
bool choose_samples(ProfileColumns& profile, const SampleChoice& choice);

} // namespace zan::profile
