// SPDX-License-Identifier: Apache-2.0
#include "series_table.h"

#include <utility>

namespace zan::profile {

int SeriesTable::add(Series series, std::int64_t offset) {
    const auto [begin, end] = m_known.equal_range(series.size());
    for (auto known = begin; known != end; ++known) {
        if (known->second.digest == series.digest() && known->second.offset == offset)
            return known->second.number;
    }
    const int number = static_cast<int>(m_rows.size());
    m_known.emplace(series.size(), Known{series.digest(), offset, number});
    series.finish(offset);
    SeriesRow& row = m_rows.emplace_back();
    row.size = series.size();
    row.digits = series.digits();
    row.has_numbers = series.has_numbers();
    row.least = series.least();
    row.greatest = series.greatest();
    row.marks = series.marks();
    for (const StoredChunk& chunk : series.chunks())
        row.encodings.push_back(chunk.encoding);
    const bool all_zero =
        series.chunks().size() <= 1 && (row.encodings.empty() || row.encodings[0] % 10 == 0);
    if (!all_zero) {
        row.first_chunk = static_cast<int>(m_chunks.size());
        m_chunks.insert(m_chunks.end(), series.chunks().begin(), series.chunks().end());
    }
    m_num_values += row.size;
    return number;
}

// Series of equal values can differ in what counts and what charts show, so that each has a row of its own
// with its pyramid; the chunks are the same.
SeriesRow& SeriesTable::own_row(int& number) {
    const SeriesRow& row = m_rows[static_cast<std::size_t>(number)];
    if (!row.pyramid.empty() || !row.peaks.empty()) {
        SeriesRow copy = row;
        copy.pyramid.clear();
        copy.peaks.clear();
        number = static_cast<int>(m_rows.size());
        m_rows.push_back(std::move(copy));
    }
    return m_rows[static_cast<std::size_t>(number)];
}

int SeriesTable::add(Column& column, int shown_digits, std::int64_t offset) {
    Pyramid& pyramid = column.pyramid;
    const bool is_long = column.series.size() >= pyramid_from;
    int number = add(std::move(column.series), offset);
    if (!is_long && !column.peaks)
        return number;
    const int digits = own_row(number).digits;
    if (is_long) {
        pyramid.finish();
        pyramid.shift(static_cast<double>(offset));
        std::vector<int> levels{add_level(pyramid.least(), shown_digits),
                                add_level(pyramid.range(), shown_digits), add_level(pyramid.sums(), digits)};
        if (!pyramid.all_count())
            levels.push_back(add_level(pyramid.weights(), digits));
        m_rows[static_cast<std::size_t>(number)].pyramid = std::move(levels);
    }
    if (column.peaks) {
        const int least = add(std::move(column.peaks->least));
        const int range = add(std::move(column.peaks->range));
        std::vector<int> peaks{least, range};
        if (column.peaks->counts.size() != 0)
            peaks.push_back(add(std::move(column.peaks->counts)));
        m_rows[static_cast<std::size_t>(number)].peaks = std::move(peaks);
    }
    return number;
}

int SeriesTable::add_level(const std::vector<double>& values, int digits) {
    Series level(*m_store);
    for (const double value : values)
        level.add_rounded(value, digits);
    return add(std::move(level));
}

} // namespace zan::profile
