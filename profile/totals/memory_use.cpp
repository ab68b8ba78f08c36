// SPDX-License-Identifier: Apache-2.0
#include "memory_use.h"

#include <algorithm>

namespace zan::profile {

TimeBins KernelTraffic::all() const {
    if (from_ports())
        return access.by_ports.bins();
    TimeBins sum;
    sum.add(access.reads.bins());
    sum.add(access.writes.bins());
    return sum;
}

MemoryUse::MemoryUse(const Totals& totals, const RunTimes& times, const std::string& memory) {
    std::vector<TimeSpan> used;
    for (std::size_t i = 0; i < totals.kernels().size(); ++i) {
        const KernelTotals& kernel = totals.kernels()[i];
        const auto access = std::ranges::find(kernel.accesses, memory, &AccessTotals::memory);
        if (access == kernel.accesses.end())
            continue;
        const KernelTraffic& traffic = m_kernels.emplace_back(KernelTraffic{i, *access});
        m_from_ports |= traffic.from_ports();
        m_traffic.add(traffic.all());
        used.insert(used.end(), times.kernels[i].ran.begin(), times.kernels[i].ran.end());
    }
    m_covered = covered_bins(union_of(std::move(used)), m_traffic.shift());
    align(m_traffic, m_covered);
}

double MemoryUse::rate_of(double traffic, double covered, double width) {
    // A sliver of a bin says nothing: its traffic is what rounding has left.
    return covered > 1e-9 * width ? traffic / covered : 0.0;
}

const MemoryUse::Coarse& MemoryUse::coarse(int shift) {
    const auto [place, is_new] = m_coarse.try_emplace(shift);
    if (is_new) {
        place->second = {m_traffic, m_covered};
        place->second.traffic.widen(shift);
        place->second.covered.widen(shift);
    }
    return place->second;
}

double MemoryUse::rate(int shift, std::int64_t number) {
    const Coarse& bins = coarse(std::max(shift, m_traffic.shift()));
    return rate_of(bins.traffic.at(number), bins.covered.at(number), bins.traffic.width());
}

Value MemoryUse::mean_rate(const TimeBins& weights) {
    if (weights.shift() < m_traffic.shift()) {
        TimeBins wide = weights;
        wide.widen(m_traffic.shift());
        return mean_rate(wide);
    }
    const Coarse& bins = coarse(weights.shift());
    const double width = bins.traffic.width();
    double sum = 0.0;
    double total = 0.0;
    for (std::int64_t i = weights.first(); i < weights.last(); ++i) {
        const double weight = weights.at(i);
        if (weight <= 0.0)
            continue;
        sum += weight * rate_of(bins.traffic.at(i), bins.covered.at(i), width);
        total += weight;
    }
    return total > 0.0 ? Value(sum / total) : std::nullopt;
}

} // namespace zan::profile
