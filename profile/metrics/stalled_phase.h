// SPDX-License-Identifier: Apache-2.0
// When a block stalled most.
#pragma once

#include <optional>

#include "timeline.h"

namespace zan::profile {

struct StalledPhase {
    double part = 0.0; // of the time that the kernel ran: 0.2 is a fifth
    TimeSpan time;
};

// The shortest stretch that holds at least half of the stalls, measured by the time in it that the kernel
// ran. So "most of it between here and there" is true. Nothing without stalls.
// The bins of the stalls become wider where those of `ran` are.
std::optional<StalledPhase> find_stalled_phase(TimeBins& stalled, CoveredBins& ran);

} // namespace zan::profile
