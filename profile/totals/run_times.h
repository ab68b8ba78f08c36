// SPDX-License-Identifier: Apache-2.0
// When the kernels and transfers of one run ran.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "timeline.h"
#include "totals.h"

namespace zan::profile {

// Times are in the unit of the report.
struct KernelTimes {
    std::vector<TimeSpan> ran;  // in order, not touching
    std::vector<TimeSpan> work; // the same; of an autorun kernel the times with work
    double alone = 0.0;         // no other started kernel ran
    double gaps = 0.0;          // between its first start and its last end, in which nothing ran
};

struct RunTimes {
    explicit RunTimes(const Totals& totals);

    TimeSpan span; // from the first start to the last end of kernels and transfers
    bool has_span = false;
    std::vector<KernelTimes> kernels;                       // as in the totals
    std::map<TransferKey, std::vector<TimeSpan>> transfers; // in order, not touching
    double started_time = 0.0;                              // a started kernel ran
    double transfer_only = 0.0;                             // a transfer ran and no started kernel
    bool has_started = false;                               // there are kernels that aren't autorun
};

} // namespace zan::profile
