// SPDX-License-Identifier: Apache-2.0
#include "stalled_phase.h"

#include <algorithm>

namespace zan::profile {

std::optional<StalledPhase> find_stalled_phase(TimeBins& stalled, CoveredBins& ran) {
    const TimeBins& covered = ran.of(stalled.shift());
    stalled.widen(covered.shift());
    const double whole = ran.total();
    const double half = stalled.total() / 2.0;
    if (!(half > 0.0) || !(whole > 0.0))
        return std::nullopt;
    std::optional<StalledPhase> best;
    double held = 0.0;
    double length = 0.0;
    std::int64_t begin = stalled.first();
    for (std::int64_t end = begin; end < stalled.last(); ++end) {
        held += stalled.at(end);
        length += covered.at(end);
        while (begin < end && held - stalled.at(begin) >= half) {
            held -= stalled.at(begin);
            length -= covered.at(begin);
            ++begin;
        }
        if (held >= half && (!best || length / whole < best->part)) {
            const int shift = stalled.shift();
            const std::int64_t last_time = (end << shift) | ((std::int64_t{1} << shift) - 1);
            best = {length / whole, {begin << shift, std::min(last_time, ran.spans().back().end - 1) + 1}};
        }
    }
    best->time.begin = std::max(best->time.begin, ran.spans().front().begin);
    return best;
}

} // namespace zan::profile
