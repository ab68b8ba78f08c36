// SPDX-License-Identifier: Apache-2.0
#include "counter_samples.h"

void CounterSamples::activate(Counter counter) {
    constexpr std::size_t usual_count = 4;
    unsigned char& place = m_places[index_of(counter)];
    if (place != 0)
        return;
    if (m_families.empty())
        m_families.reserve(usual_count);
    m_families.push_back({counter, m_zeros}); // a list of zeros stores nothing, so this is a count
    place = static_cast<unsigned char>(m_families.size());
}

// The sums end as end_line() leaves them, since a value without a sample of its own is added to them.
void CounterSamples::append_lines(const CounterColumns& columns, std::size_t count) {
    for (Family& family : m_families) {
        const std::size_t index = index_of(family.counter);
        columns.append_to(family.samples, index, count);
        m_sums[index] = columns.value(index, count - 1);
    }
    m_zeros.append_zeros(count);
}

void CounterSamples::release() {
    for (Family& family : m_families)
        family.samples = Samples();
    m_zeros.clear();
}

void CounterSamples::clear() {
    start_line();
    for (Family& family : m_families)
        family.samples.clear();
    m_zeros.clear();
}
