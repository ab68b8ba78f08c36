// SPDX-License-Identifier: Apache-2.0
// The values of a series, unpacked.
#pragma once

#include <cstdint>
#include <vector>

#include "chunk_store.h"
#include "series.h"

namespace zan::profile {

// In whole units of the series; nothing can be added to it afterwards.
inline std::vector<std::int64_t> units_of(Series& series, const ChunkStore& store) {
    series.finish();
    std::vector<std::int64_t> values;
    for (const StoredChunk& chunk : series.chunks()) {
        std::vector<std::int64_t> part(chunk.values);
        store.get(chunk, part);
        values.insert(values.end(), part.begin(), part.end());
    }
    return values;
}

} // namespace zan::profile
