// SPDX-License-Identifier: Apache-2.0
#include "chunk_codec.h"

#include <algorithm>
#include <bit>
#include <new>

#include "contract.h"

namespace zan::profile {

namespace {

constexpr std::int64_t exact_limit = std::int64_t{1} << 53;
constexpr int plain_encoding = 10;
constexpr int no_header = -15; // the window of 32 KiB, and neither header nor checksum
constexpr int level = 6;
// So many values show how a chunk packs.
constexpr std::size_t trial_values = 8192;

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
    return pack_as(values, has_large || is_plain_smaller(values));
}

// Which way is smaller is the same for all of a chunk, as a rule, so that some of its values are packed twice
// and not all of them.
bool ChunkPacker::is_plain_smaller(std::span<const std::int64_t> values) {
    const std::size_t count = std::min(values.size(), trial_values);
    const auto trial = values.subspan((values.size() - count) / 2, count);
    const std::size_t plain_size = pack_as(trial, true).bytes.size();
    return plain_size < pack_as(trial, false).bytes.size();
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
    deflateReset(&m_stream);
    result.bytes.resize(deflateBound(&m_stream, static_cast<uLong>(m_planes.size())));
    m_stream.next_in = m_planes.data();
    m_stream.avail_in = static_cast<uInt>(m_planes.size());
    m_stream.next_out = reinterpret_cast<unsigned char*>(result.bytes.data());
    m_stream.avail_out = static_cast<uInt>(result.bytes.size());
    const int status = deflate(&m_stream, Z_FINISH);
    ZAN_CONTRACT(status == Z_STREAM_END, "status == Z_STREAM_END");
    result.bytes.resize(result.bytes.size() - m_stream.avail_out);
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
