// SPDX-License-Identifier: Apache-2.0
#include "traffic.h"

#include <algorithm>

namespace zan::profile {

TrafficIntegral::TrafficIntegral(const MemoryUse& memory) {
    TimeBins all;
    for (const KernelTraffic& kernel : memory.kernels())
        all.add(kernel.all());
    m_first = static_cast<double>(all.first()) * all.width();
    m_width = all.width();
    m_sums.push_back(0.0);
    for (const double amount : all.values())
        m_sums.push_back(m_sums.back() + amount);
}

double TrafficIntegral::until(double time) const {
    const double place = std::clamp((time - m_first) / m_width, 0.0, static_cast<double>(m_sums.size() - 1));
    const auto border = static_cast<std::size_t>(place);
    if (border + 1 >= m_sums.size())
        return m_sums.back();
    return m_sums[border] + (place - static_cast<double>(border)) * (m_sums[border + 1] - m_sums[border]);
}

} // namespace zan::profile
