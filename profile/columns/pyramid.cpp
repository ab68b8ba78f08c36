// SPDX-License-Identifier: Apache-2.0
#include "pyramid.h"

#include <algorithm>
#include <cmath>

namespace zan::profile {

void Pyramid::add_range(double low, double high, double product, double weight) {
    if (std::isnan(low)) {
        m_all_count = false;
    } else {
        m_low = m_has_shown ? std::min(m_low, low) : low;
        m_high = m_has_shown ? std::max(m_high, high) : high;
        m_has_shown = true;
        m_sum += product;
        m_weight += weight;
    }
    if (++m_size % pyramid_step == 0)
        close();
}

void Pyramid::fill_up_to(std::uint64_t length) {
    while (m_size < length)
        add(std::nan(""), 0.0, 0.0);
}

void Pyramid::finish() {
    if (m_size % pyramid_step != 0)
        close();
}

void Pyramid::shift(double offset) {
    for (std::size_t i = 0; i < m_least.size(); ++i) {
        m_least[i] += offset;
        m_sums[i] += offset * m_weights[i];
    }
}

void Pyramid::close() {
    const double before = m_least.empty() ? 0.0 : m_least.back();
    m_least.push_back(m_has_shown ? m_low : before);
    m_range.push_back(m_has_shown ? m_high - m_low : 0.0);
    m_sums.push_back(m_sum);
    m_weights.push_back(m_weight);
    m_has_shown = false;
    m_sum = 0.0;
    m_weight = 0.0;
}

} // namespace zan::profile
