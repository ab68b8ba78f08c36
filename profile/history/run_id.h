// SPDX-License-Identifier: Apache-2.0
// What makes two runs the same.
#pragma once

#include <string>

#include "profile_summary.h"

namespace zan::profile {

// XXH3-128 of the metrics in canonical form, as 32 digits. It is the same for a report, its saved summary,
// and the package with its capture; whatever the files are called, and whichever version of the program has
// read them, as long as that knows the same metrics.
std::string run_id_of(const ProfileSummary& summary);

} // namespace zan::profile
