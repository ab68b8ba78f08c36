// SPDX-License-Identifier: Apache-2.0
// Monitor lines of one kernel that are decoded together.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>

#include "wrapping.h"

// The counters of some lines, a row each. A line touches every sample list of its kernel, and those are more
// than the caches hold; many lines at once touch each list once. Rows are read column by column, so a block
// has to fit a cache itself: lines of 1,441 counters come in blocks of 22.
class LineBlock {
  public:
    static constexpr std::size_t max_lines = 64;
    static constexpr std::size_t most_values = 32'768; // what fits a cache along with the lists

    // Empties the block and sets the number of counters of each line.
    void reset(std::size_t num_counters) {
        m_num_counters = num_counters;
        m_room = std::clamp(most_values / std::max<std::size_t>(num_counters, 1), std::size_t{1}, max_lines);
        m_values = std::make_unique_for_overwrite<long long[]>(m_room * num_counters);
        m_size = 0;
    }
    void clear() { m_size = 0; }

    std::size_t num_counters() const { return m_num_counters; }
    std::size_t size() const { return m_size; }
    bool full() const { return m_size == m_room; }

    // The place of the next line's counters, in a block that isn't full. add() takes them in.
    long long* next() { return m_values.get() + m_size * m_num_counters; }
    void add() { ++m_size; }

    // Copies a counter of all lines, one after the other.
    void column(std::size_t counter, long long* out) const {
        const long long* value = m_values.get() + counter;
        for (std::size_t i = 0; i < m_size; ++i, value += m_num_counters)
            out[i] = *value;
    }
    // Adds a counter of all lines to their sums.
    void add_column(std::size_t counter, long long* sums) const {
        const long long* value = m_values.get() + counter;
        for (std::size_t i = 0; i < m_size; ++i, value += m_num_counters)
            sums[i] = wrapping_sum(sums[i], *value);
    }

  private:
    // Not set before a line is there: a kernel of a wide design has many counters and often few lines, and
    // the pages of those that never come take neither time nor memory.
    std::unique_ptr<long long[]> m_values;
    std::size_t m_num_counters = 0;
    std::size_t m_room = 0; // in lines
    std::size_t m_size = 0;
};
