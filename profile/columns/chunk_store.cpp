// SPDX-License-Identifier: Apache-2.0
#include "chunk_store.h"

namespace zan::profile {

StoredChunk ChunkStore::put(std::span<const std::int64_t> values, int digits) {
    const PackedChunk packed = m_packer.pack(values);
    const std::uint64_t offset = m_scratch.append(packed.bytes.data(), packed.bytes.size());
    return {offset, packed.bytes.size(), packed.encoding, digits, values.size()};
}

std::string ChunkStore::packed(const StoredChunk& chunk) const {
    std::string bytes(chunk.size, '\0');
    m_scratch.read(chunk.offset, bytes.data(), bytes.size());
    return bytes;
}

void ChunkStore::get(const StoredChunk& chunk, std::span<std::int64_t> values) const {
    unpack_chunk(packed(chunk), chunk.encoding, values);
}

std::uint64_t ChunkStore::put_plain(std::span<const std::int64_t> values) {
    return m_scratch.append(values.data(), values.size_bytes());
}

void ChunkStore::get_plain(std::uint64_t offset, std::span<std::int64_t> values) const {
    m_scratch.read(offset, values.data(), values.size_bytes());
}

} // namespace zan::profile
