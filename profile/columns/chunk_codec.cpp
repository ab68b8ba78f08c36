// SPDX-License-Identifier: Apache-2.0
#include "chunk_codec.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>
#include <utility>

#include "contract.h"

namespace zan::profile {

namespace {

constexpr std::int64_t exact_limit = std::int64_t{1} << 53;
constexpr int plain_encoding = 10;
constexpr int no_header = -15; // the window of 32 KiB, and neither header nor checksum
constexpr int level = 6;
// So many values show how a chunk packs.
constexpr std::size_t trial_values = 2048;
// Places for words that were seen: they stay in the cache of the processor.
constexpr std::size_t num_seen = std::size_t{1} << 13;
// If fewer of all words than one in that many come again, it isn't worth looking for them.
constexpr std::size_t repeat_share = 24;

std::uint64_t zigzag(std::int64_t value) {
    return (static_cast<std::uint64_t>(value) << 1) ^ static_cast<std::uint64_t>(value >> 63);
}

std::int64_t unzigzag(std::uint64_t number) {
    return static_cast<std::int64_t>(number >> 1) ^ -static_cast<std::int64_t>(number & 1);
}

} // namespace

ChunkPacker::ChunkPacker() {
    if (deflateInit2(&m_stream, level, Z_DEFLATED, no_header, 8, Z_DEFAULT_STRATEGY) != Z_OK)
        throw std::bad_alloc();
}

ChunkPacker::~ChunkPacker() {
    deflateEnd(&m_stream);
}

PackedChunk ChunkPacker::pack(std::span<const std::int64_t> values) {
    const bool has_large = std::ranges::any_of(
        values, [](std::int64_t value) { return value >= exact_limit || value <= -exact_limit; });
    if (has_large)
        return pack_as(values, true);
    if (values.size() > trial_values)
        return pack_as(values, is_plain_smaller(values));
    PackedChunk plain = pack_as(values, true);
    PackedChunk steps = pack_as(values, false);
    return plain.bytes.size() < steps.bytes.size() ? std::move(plain) : std::move(steps);
}

// Which way is smaller is the same for all of a chunk, as a rule, so that some of its values are packed twice
// and not all of them.
bool ChunkPacker::is_plain_smaller(std::span<const std::int64_t> values) {
    const auto trial = values.subspan((values.size() - trial_values) / 2, trial_values);
    const std::size_t plain_size = pack_as(trial, true).bytes.size();
    return plain_size < pack_as(trial, false).bytes.size();
}

// Bytes of noise, as the lowest of most counters are, repeat nothing but zeros: to look for repeats in them
// takes ten times as long as all else of packing, and the short ones that it finds cost more than they save.
bool ChunkPacker::has_repeats(std::span<const unsigned char> plane) {
    constexpr std::size_t least_size = 512;
    if (plane.size() < least_size)
        return true;
    m_seen.assign(num_seen, 0);
    std::size_t num_repeats = 0;
    for (std::size_t i = 0; i + sizeof(std::uint64_t) <= plane.size(); ++i) {
        std::uint64_t word = 0;
        std::memcpy(&word, &plane[i], sizeof word);
        std::uint64_t& seen = m_seen[word * 0x9e3779b97f4a7c15U >> 51]; // the golden ratio; 13 bits are left
        num_repeats += seen == word && word != std::rotl(word, 8) ? 1 : 0;
        seen = word;
    }
    return num_repeats * repeat_share > plane.size();
}

// Deflates all planes as one stream.
void ChunkPacker::deflate_planes(std::size_t num_planes, std::string& bytes) {
    const std::size_t size = m_planes.size() / num_planes;
    // A change of the strategy ends a block, for which the bound has no room.
    bytes.resize(deflateBound(&m_stream, static_cast<uLong>(m_planes.size())) + 64 * num_planes);
    deflateReset(&m_stream);
    m_stream.next_out = reinterpret_cast<unsigned char*>(bytes.data());
    m_stream.avail_out = static_cast<uInt>(bytes.size());
    int status = Z_OK;
    for (std::size_t k = 0; k < num_planes; ++k) {
        const std::span<unsigned char> plane = std::span(m_planes).subspan(k * size, size);
        deflateParams(&m_stream, level, has_repeats(plane) ? Z_DEFAULT_STRATEGY : Z_RLE);
        m_stream.next_in = plane.data();
        m_stream.avail_in = static_cast<uInt>(plane.size());
        status = deflate(&m_stream, k + 1 < num_planes ? Z_NO_FLUSH : Z_FINISH);
    }
    ZAN_CONTRACT(status == Z_STREAM_END, "status == Z_STREAM_END");
    bytes.resize(bytes.size() - m_stream.avail_out);
}

PackedChunk ChunkPacker::pack_as(std::span<const std::int64_t> values, bool plain) {
    m_numbers.resize(values.size());
    std::uint64_t all = 0;
    std::int64_t last = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        m_numbers[i] = zigzag(plain ? values[i] : values[i] - last);
        all |= m_numbers[i];
        last = values[i];
    }
    const auto width = static_cast<std::size_t>((std::bit_width(all) + 7) / 8);
    PackedChunk result;
    result.encoding = static_cast<int>(width) + (plain ? plain_encoding : 0);
    if (width == 0)
        return result;
    m_planes.resize(width * values.size());
    for (std::size_t k = 0; k < width; ++k) {
        unsigned char* const plane = m_planes.data() + k * values.size();
        for (std::size_t i = 0; i < values.size(); ++i)
            plane[i] = static_cast<unsigned char>(m_numbers[i] >> (8 * k));
    }
    deflate_planes(width, result.bytes);
    return result;
}

void unpack_chunk(std::string_view bytes, int encoding, std::span<std::int64_t> values) {
    const bool plain = encoding >= plain_encoding;
    const auto width = static_cast<std::size_t>(encoding % plain_encoding);
    std::vector<unsigned char> planes(width * values.size());
    if (!planes.empty()) {
        z_stream stream{};
        if (inflateInit2(&stream, no_header) != Z_OK)
            throw std::bad_alloc();
        // zlib only reads there.
        stream.next_in = const_cast<unsigned char*>(reinterpret_cast<const unsigned char*>(bytes.data()));
        stream.avail_in = static_cast<uInt>(bytes.size());
        stream.next_out = planes.data();
        stream.avail_out = static_cast<uInt>(planes.size());
        const int status = inflate(&stream, Z_FINISH);
        inflateEnd(&stream);
        ZAN_CONTRACT(status == Z_STREAM_END && stream.avail_out == 0, "status == Z_STREAM_END");
    }
    std::int64_t last = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        std::uint64_t number = 0;
        for (std::size_t k = 0; k < width; ++k)
            number |= std::uint64_t{planes[k * values.size() + i]} << (8 * k);
        values[i] = unzigzag(number) + (plain ? 0 : last);
        last = values[i];
    }
}

std::string base64(std::string_view bytes) {
    static constexpr char letters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.resize((bytes.size() + 2) / 3 * 4);
    char* out = text.data();
    const auto byte = [&](std::size_t i) {
        return i < bytes.size() ? static_cast<unsigned>(static_cast<unsigned char>(bytes[i])) : 0U;
    };
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const unsigned bits = byte(i) << 16 | byte(i + 1) << 8 | byte(i + 2);
        *out++ = letters[bits >> 18];
        *out++ = letters[bits >> 12 & 63];
        *out++ = i + 1 < bytes.size() ? letters[bits >> 6 & 63] : '=';
        *out++ = i + 2 < bytes.size() ? letters[bits & 63] : '=';
    }
    return text;
}

} // namespace zan::profile
