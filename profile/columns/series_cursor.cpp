// SPDX-License-Identifier: Apache-2.0
#include "series_cursor.h"

#include <limits>

namespace zan::profile {

std::optional<Mark> SeriesCursor::mark_at(std::uint64_t place) {
    if (!m_series || place >= m_series->size())
        return Mark::missing;
    const std::vector<MarkRun>& marks = m_series->marks();
    while (m_mark < marks.size() && marks[m_mark].from + marks[m_mark].count <= place)
        ++m_mark;
    if (m_mark < marks.size() && marks[m_mark].from <= place)
        return marks[m_mark].mark;
    return {};
}

std::int64_t SeriesCursor::units_at(std::uint64_t place) {
    if (!m_series || place >= m_series->size())
        return 0;
    const std::size_t chunk = place / chunk_values;
    if (m_chunk != chunk) {
        const StoredChunk& stored = m_series->chunks()[chunk];
        m_values.resize(stored.values);
        m_store.get(stored, m_values);
        m_chunk = chunk;
    }
    return m_values[place % chunk_values];
}

double SeriesCursor::number_at(std::uint64_t place) {
    if (mark_at(place))
        return std::numeric_limits<double>::quiet_NaN();
    return static_cast<double>(units_at(place)) / static_cast<double>(power_of_ten(m_series->digits()));
}

} // namespace zan::profile
