// SPDX-License-Identifier: Apache-2.0
// What a memory carried in any stretch of time.
#pragma once

#include <cstdint>
#include <vector>

#include "memory_use.h"

namespace zan::profile {

// Sums of a memory's traffic up to the borders of its bins. Between two borders it is even.
class TrafficIntegral {
  public:
    explicit TrafficIntegral(const MemoryUse& memory);

    // MB/s · cycles from `begin` to `end`.
    double between(double begin, double end) const { return until(end) - until(begin); }
    bool empty() const { return m_sums.size() < 2; }

  private:
    double until(double time) const;

    double m_first = 0.0; // time of the first border
    double m_width = 1.0;
    std::vector<double> m_sums;
};

} // namespace zan::profile
