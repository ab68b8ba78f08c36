// SPDX-License-Identifier: Apache-2.0
// What a memory carried during a run.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "run_times.h"
#include "time_bins.h"
#include "totals.h"

namespace zan::profile {

// What one kernel moved from and to the memory: MB/s · cycles, over time.
struct KernelTraffic {
    std::size_t kernel;         // its place in the totals
    const AccessTotals& access; // of the totals

    bool from_ports() const { return !access.by_ports.empty(); }
    bool empty() const { return !from_ports() && !knows_directions(); }
    // Whether accesses name the memory.
    bool knows_directions() const { return !access.reads.empty() || !access.writes.empty(); }
    // By ports if there are any, else by accesses. Bins are made for each call.
    TimeBins all() const;
};

// One memory in one run. A bin's bandwidth is what was moved in it, over the part of it in which a kernel
// that uses the memory ran: short invocations with pauses between them aren't diluted.
class MemoryUse {
  public:
    MemoryUse(const Totals& totals, const RunTimes& times, const std::string& memory);

    const std::vector<KernelTraffic>& kernels() const { return m_kernels; }
    bool from_ports() const { return m_from_ports; }
    // MB/s · cycles for each unit of time in bin `number` of width 2^shift; 0 where nothing was moved. The
    // bins are at least as wide as `shift()`.
    int shift() const { return m_traffic.shift(); }
    double rate(int shift, std::int64_t number);
    // Calls visit(rate, length of time) for each bin.
    template <class Visit>
    void for_each_bin(Visit&& visit) const {
        for (std::int64_t i = m_traffic.first(); i < m_traffic.last(); ++i)
            visit(rate_of(m_traffic.at(i), m_covered.at(i), m_traffic.width()), m_covered.at(i));
    }
    double total() const { return m_traffic.total(); }        // MB/s · cycles
    double covered_time() const { return m_covered.total(); } // in which kernels that use it ran

    // The mean of the rates, weighted by amounts over time; nothing without amounts.
    Value mean_rate(const TimeBins& weights);

  private:
    struct Coarse {
        TimeBins traffic;
        TimeBins covered;
    };
    static double rate_of(double traffic, double covered, double width);
    const Coarse& coarse(int shift);

    std::vector<KernelTraffic> m_kernels;
    TimeBins m_traffic;
    TimeBins m_covered;
    bool m_from_ports = false;
    std::map<int, Coarse> m_coarse; // by shift
};

} // namespace zan::profile
