// SPDX-License-Identifier: Apache-2.0
// Amounts over time, as they were added while they are few, and in bins from then on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "time_bins.h"

namespace zan::profile {

// What a series of samples sums up to over time. A short run has far fewer samples than bins: these then take
// 24 bytes each, and bins are made when they are asked for, one series at a time. Samples never take more
// memory than the bins would.
class TimedAmounts {
  public:
    explicit TimedAmounts(std::size_t capacity = max_time_bins) : m_bins(capacity), m_capacity(capacity) {}

    // As TimeBins::add_sample does.
    void add_sample(std::int64_t begin, std::int64_t end, double amount) {
        if (m_bins.empty() && m_samples.size() == most_samples())
            fill_bins();
        if (m_bins.empty() && m_samples.size() < most_samples())
            hold({begin, end, amount});
        else
            m_bins.add_sample(begin, end, amount);
    }
    // From now on at most `capacity` bins, which is at least 2.
    void limit(std::size_t capacity) {
        if (capacity != m_capacity)
            change_limit(capacity);
    }

    bool empty() const { return m_samples.empty() && m_bins.empty(); }
    double total() const;
    // At most as many bins as the limit says.
    TimeBins bins() const;

  private:
    // 24 bytes for every fourth bin of 8 bytes: three quarters of what the bins would take.
    std::size_t most_samples() const { return m_capacity / 4; }
    struct Sample {
        std::int64_t begin;
        std::int64_t end;
        double amount;
    };
    void hold(const Sample& sample) {
        const std::int64_t first = first_time(sample.begin, sample.end);
        const std::int64_t last = last_time(sample.begin, sample.end);
        if (m_samples.empty())
            m_range.fit_sample(sample.begin, sample.end);
        if (!m_range.covers(first, last))
            m_range.cover(first, last, m_capacity);
        m_samples.push_back(sample);
    }
    void change_limit(std::size_t capacity);
    void fill_bins();

    std::vector<Sample> m_samples; // none as soon as there are bins
    BinRange m_range;              // of their bins
    TimeBins m_bins;
    std::size_t m_capacity;
};

} // namespace zan::profile
