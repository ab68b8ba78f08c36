// SPDX-License-Identifier: Apache-2.0
#include "packed_text.h"

#include <zlib.h>

#include <cstddef>
#include <stdexcept>

namespace zan::profile {

namespace {

// The most that a byte of a deflate stream makes: what takes 2 bits repeats at most 258 bytes.
constexpr std::size_t most_bytes_of_one = 1032;

} // namespace

std::string pack_text(std::string_view text) {
    uLongf size = compressBound(static_cast<uLong>(text.size()));
    std::string packed(size, '\0');
    const int status =
        compress2(reinterpret_cast<Bytef*>(packed.data()), &size, reinterpret_cast<const Bytef*>(text.data()),
                  static_cast<uLong>(text.size()), Z_DEFAULT_COMPRESSION);
    if (status != Z_OK)
        throw std::runtime_error("zlib has no memory");
    packed.resize(size);
    if (packed.size() >= text.size())
        return std::string(text);
    return packed;
}

std::optional<std::string> unpack_text(std::string_view packed, std::int64_t length) {
    if (length < 0 || static_cast<std::uint64_t>(length) / most_bytes_of_one > packed.size())
        return std::nullopt;
    if (static_cast<std::size_t>(length) == packed.size())
        return std::string(packed);
    std::string text(static_cast<std::size_t>(length), '\0');
    uLongf size = text.size();
    const int status = uncompress(reinterpret_cast<Bytef*>(text.data()), &size,
                                  reinterpret_cast<const Bytef*>(packed.data()), packed.size());
    if (status != Z_OK || size != text.size())
        return std::nullopt;
    return text;
}

} // namespace zan::profile
