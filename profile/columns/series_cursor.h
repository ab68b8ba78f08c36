// SPDX-License-Identifier: Apache-2.0
// The values of a finished series, read again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "series.h"

namespace zan::profile {

// Reads a chunk at a time. Places must come in ascending order, and may come again.
class SeriesCursor {
  public:
    // `series` may be null: it has no values then. Both must outlive the cursor.
    SeriesCursor(const Series* series, const ChunkStore& store) : m_series(series), m_store(store) {}

    // What stands in place of a number; nothing where there is one.
    std::optional<Mark> mark_at(std::uint64_t place);
    // In units of 10^-digits; where there is no number, any.
    std::int64_t units_at(std::uint64_t place);
    // Not a number where there is none.
    double number_at(std::uint64_t place);

  private:
    const Series* m_series;
    const ChunkStore& m_store;
    std::vector<std::int64_t> m_values;
    std::optional<std::size_t> m_chunk; // the one that m_values has
    std::size_t m_mark = 0;
};

} // namespace zan::profile
