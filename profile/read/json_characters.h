// SPDX-License-Identifier: Apache-2.0
// Characters of a JSON text, eight at a time.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace zan::profile {

// Eight characters; the first one is in the lowest byte, on any machine.
inline std::uint64_t next_characters(const char* at) {
    std::uint64_t characters;
    std::memcpy(&characters, at, sizeof characters);
    if constexpr (std::endian::native == std::endian::big)
        return __builtin_bswap64(characters);
    return characters;
}

inline const char* skip_json_blanks(const char* at) {
    constexpr std::uint64_t blanks = 0x2020'2020'2020'2020;
    while (next_characters(at) == blanks)
        at += sizeof blanks;
    while (*at == ' ' || *at == '\n' || *at == '\r' || *at == '\t')
        ++at;
    return at;
}

// How many characters stand before the first that ends a JSON string, or needs a closer look: a quote, a
// backslash, one below 0x20 (so a zero byte at the latest), one above 0x7F. Eight bytes from that one on must
// be readable.
inline std::size_t plain_length(const char* begin) {
    constexpr std::uint64_t ones = 0x0101'0101'0101'0101;
    constexpr std::uint64_t high_bits = 0x80 * ones;
    const char* at = begin;
    for (;;) {
        const std::uint64_t characters = next_characters(at);
        // A subtraction sets the high bit of a byte that is below what is subtracted. A borrow may do so
        // above such a byte, but the first one decides.
        const std::uint64_t quotes = (characters ^ ('"' * ones)) - ones;
        const std::uint64_t backslashes = (characters ^ ('\\' * ones)) - ones;
        const std::uint64_t controls = characters - 0x20 * ones;
        const std::uint64_t special = ((quotes | backslashes | controls) | characters) & high_bits;
        if (special != 0)
            return static_cast<std::size_t>(at - begin) +
                   static_cast<std::size_t>(std::countr_zero(special)) / 8;
        at += sizeof characters;
    }
}

} // namespace zan::profile
