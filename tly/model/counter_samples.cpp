// SPDX-License-Identifier: Apache-2.0
#include "counter_samples.h"

void CounterSamples::activate(Counter counter) {
    const std::size_t index = index_of(counter);
    if (m_is_active[index])
        return;
    m_is_active[index] = true;
    m_active.push_back(counter);
    m_samples[index] = m_zeros; // a list of zeros stores nothing, so this is a count
}

// The sums end as end_line() leaves them, since a value without a sample of its own is added to them.
void CounterSamples::append_lines(const CounterColumns& columns, std::size_t count) {
    for (const Counter counter : m_active) {
        const std::size_t index = index_of(counter);
        columns.append_to(m_samples[index], index, count);
        m_sums[index] = columns.value(index, count - 1);
    }
    m_zeros.append_zeros(count);
}

void CounterSamples::clear() {
    start_line();
    for (const Counter counter : m_active)
        m_samples[index_of(counter)].clear();
    m_zeros.clear();
}
