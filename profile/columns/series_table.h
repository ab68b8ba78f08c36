// SPDX-License-Identifier: Apache-2.0
// All series of a page by number, and their chunks.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "columns.h"

namespace zan::profile {

inline constexpr int no_series = -1;

struct SeriesRow {
    std::uint64_t size = 0;
    int first_chunk = -1; // number of its first chunk in the page; -1: there is none, as all values are 0
    int digits = 0;
    std::vector<int> encodings; // of each chunk
    bool has_numbers = false;
    std::int64_t least = 0; // in units of 10^-digits
    std::int64_t greatest = 0;
    std::vector<MarkRun> marks;
    std::vector<int> pyramid; // numbers of series: least, range, sums, and weights if not all values count
    std::vector<int> peaks; // numbers of series: least and range of each value; none if it is a single sample
};

// Equal series are stored once.
class SeriesTable {
  public:
    explicit SeriesTable(ChunkStore& store) : m_store(&store) {}

    // Takes a series, with `offset` added to each value, and returns its number. The pyramid of
    // a column is stored if the series is long; `shown_digits` are the decimals of its least and greatest
    // values.
    int add(Series series, std::int64_t offset = 0);
    int add(Column& column, int shown_digits, std::int64_t offset = 0);

    const std::vector<SeriesRow>& rows() const { return m_rows; }
    const std::vector<StoredChunk>& chunks() const { return m_chunks; }
    std::uint64_t num_values() const { return m_num_values; } // of series, each counted once

  private:
    SeriesRow& own_row(int& number);
    int add_level(const std::vector<double>& values, int digits);

    struct Known {
        SeriesDigest digest;
        std::int64_t offset;
        int number;
    };

    ChunkStore* m_store;
    std::vector<SeriesRow> m_rows;
    std::vector<StoredChunk> m_chunks;
    std::multimap<std::uint64_t, Known> m_known; // by length
    std::uint64_t m_num_values = 0;
};

} // namespace zan::profile
