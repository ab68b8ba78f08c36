// SPDX-License-Identifier: Apache-2.0
// Measured for a summary of shape S (bench/README.md), where 27 series have 1,666 samples each: bins as
// samples come took 30 MB of fresh pages and a quarter of all instructions, since they grew and were merged.
#include "timed_amounts.h"

namespace zan::profile {

void TimedAmounts::change_limit(std::size_t capacity) {
    m_capacity = capacity;
    m_range.limit(capacity);
    m_bins.limit(capacity);
    if (m_samples.size() > most_samples())
        fill_bins();
}

double TimedAmounts::total() const {
    double sum = m_bins.total();
    for (const Sample& sample : m_samples)
        sum += sample.amount;
    return sum;
}

TimeBins TimedAmounts::bins() const {
    if (m_samples.empty())
        return m_bins;
    TimeBins bins(m_capacity, m_range);
    for (const Sample& sample : m_samples)
        bins.add(sample.begin, sample.end, sample.amount);
    return bins;
}

void TimedAmounts::fill_bins() {
    m_bins = bins();
    m_samples = std::vector<Sample>(); // an empty list in braces would keep the memory
}

} // namespace zan::profile
