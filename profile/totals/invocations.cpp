// SPDX-License-Identifier: Apache-2.0
#include "invocations.h"

namespace zan::profile {

namespace {

// Start times are often multiples of a large number, so all their bits have to count.
std::uint64_t mixed_bits(std::int64_t start) {
    std::uint64_t bits = static_cast<std::uint64_t>(start) * 0x9E37'79B9'7F4A'7C15ULL;
    bits ^= bits >> 32;
    return bits;
}

} // namespace

// The slot that holds this start, or the empty one where it belongs. There always is an empty one.
std::size_t Invocations::slot_of(std::int64_t start) const {
    const std::size_t mask = m_slots.size() - 1;
    std::size_t slot = mixed_bits(start) & mask;
    while (m_slots[slot] != 0 && m_spans[m_slots[slot] - 1].begin != start)
        slot = (slot + 1) & mask;
    return slot;
}

void Invocations::make_room() {
    m_slots.assign(m_slots.empty() ? 16 : m_slots.size() * 2, 0);
    for (std::size_t i = 0; i < m_spans.size(); ++i)
        m_slots[slot_of(m_spans[i].begin)] = static_cast<std::uint32_t>(i + 1);
}

TimeSpan& Invocations::begun_at(std::int64_t start) {
    if (!m_spans.empty() && m_spans.back().begin == start)
        return m_spans.back();
    if (4 * (m_spans.size() + 1) > 3 * m_slots.size())
        make_room();
    const std::size_t slot = slot_of(start);
    if (m_slots[slot] == 0) {
        m_spans.push_back({start, start});
        m_slots[slot] = static_cast<std::uint32_t>(m_spans.size());
    }
    return m_spans[m_slots[slot] - 1];
}

std::size_t Invocations::place_of(std::int64_t start) const {
    if (m_spans.back().begin == start)
        return m_spans.size() - 1;
    return m_slots[slot_of(start)] - 1;
}

} // namespace zan::profile
