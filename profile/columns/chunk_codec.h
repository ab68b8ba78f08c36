// SPDX-License-Identifier: Apache-2.0
// Values of a series, packed as a page holds them.
#pragma once

#include <zlib.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zan::profile {

// Values of a chunk; the last one of a series may have fewer.
inline constexpr std::size_t chunk_values = std::size_t{1} << 18;

struct PackedChunk {
    int encoding = 0;  // bytes of a value, from 0 to 8; plus 10 if values are plain and not differences
    std::string bytes; // deflate-raw; empty if all values are 0
};

// Packs chunks, one after the other, with the same memory.
//
// A value is the difference to the one before it (the first of a chunk: to 0) or plain, whichever packs
// smaller; a value of 2^53 or more is never taken as a difference, as browsers have doubles. The sign goes to
// the lowest bit, and the bytes of all values of the same weight stand together, the lowest first. Level 9
// saves 0.7% more than level 6 does, for three times the time.
class ChunkPacker {
  public:
    ChunkPacker();
    ChunkPacker(const ChunkPacker&) = delete;
    ChunkPacker& operator=(const ChunkPacker&) = delete;
    ~ChunkPacker();

    // At most chunk_values values.
    PackedChunk pack(std::span<const std::int64_t> values);

  private:
    PackedChunk pack_as(std::span<const std::int64_t> values, bool plain);
    bool is_plain_smaller(std::span<const std::int64_t> values);
    bool has_repeats(std::span<const unsigned char> plane);
    void deflate_planes(std::size_t num_planes, std::string& bytes);

    z_stream m_stream{};
    std::vector<std::uint64_t> m_numbers;
    std::vector<unsigned char> m_planes;
    std::vector<std::uint64_t> m_seen; // words of eight bytes, by their hashes
};

// The values of a packed chunk. Contract: `bytes` and `encoding` are of a PackedChunk with that many values.
void unpack_chunk(std::string_view bytes, int encoding, std::span<std::int64_t> values);

// The text of bytes in base64, with padding.
std::string base64(std::string_view bytes);

} // namespace zan::profile
