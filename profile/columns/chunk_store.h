// SPDX-License-Identifier: Apache-2.0
// What all series of a page share: packed chunks, and room for values that aren't packed yet.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "chunk_codec.h"
#include "scratch_file.h"

namespace zan::profile {

// A packed chunk in the store.
struct StoredChunk {
    std::uint64_t offset = 0;
    std::size_t size = 0; // bytes
    int encoding = 0;
    int digits = 0;         // decimals of its values
    std::size_t values = 0; // how many
};

class ChunkStore {
  public:
    // In that folder are the temporary files.
    explicit ChunkStore(const std::string& folder) : m_scratch(folder) {}

    StoredChunk put(std::span<const std::int64_t> values, int digits);
    std::string packed(const StoredChunk& chunk) const;
    void get(const StoredChunk& chunk, std::span<std::int64_t> values) const;

    // Values that aren't packed, as they are.
    std::uint64_t put_plain(std::span<const std::int64_t> values);
    void get_plain(std::uint64_t offset, std::span<std::int64_t> values) const;

    // Bytes of the values in memory, of all series. Above the limit series move theirs to the store.
    void add_held(std::size_t bytes) { m_held += bytes; }
    void drop_held(std::size_t bytes) { m_held -= bytes; }
    bool is_full() const { return m_held > held_limit; }

    static constexpr std::size_t held_limit = std::size_t{64} << 20;

  private:
    ScratchFile m_scratch;
    ChunkPacker m_packer;
    std::size_t m_held = 0;
};

} // namespace zan::profile
