// SPDX-License-Identifier: Apache-2.0
// Nearly all texts are keys and names with nothing to escape. So a text is copied and checked in blocks of
// eight bytes first, and only one that has something to escape is written byte by byte.
//
// What must hold: reports are compared byte by byte, so the escapes stay as they are: slashes have a
// backslash, and bytes from 0x80 up are code points of their own.
#include "quoted_text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace {

// What stands for each byte inside quotes: nothing, if the byte stands for itself.
using EscapeTable = std::array<std::array<char, 7>, 256>;
constexpr std::size_t longest_escape = 6;

constexpr EscapeTable make_escapes() {
    EscapeTable table{};
    constexpr char digits[] = "0123456789ABCDEF";
    for (std::size_t byte = 0; byte < table.size(); ++byte) {
        if (byte < 0x20 || byte > 0x7F)
            table[byte] = {'\\', 'u', '0', '0', digits[byte >> 4], digits[byte & 15], 0};
    }
    table['\b'] = {'\\', 'b'};
    table['\f'] = {'\\', 'f'};
    table['\n'] = {'\\', 'n'};
    table['\r'] = {'\\', 'r'};
    table['/'] = {'\\', '/'};
    table['"'] = {'\\', '"'};
    table['\\'] = {'\\', '\\'};
    return table;
}

constexpr EscapeTable escapes = make_escapes();

const char* escape_of(char byte) {
    return escapes[static_cast<unsigned char>(byte)].data();
}

// Whether each byte of a block stands for itself. One that doesn't has or gets its highest bit, or makes one
// above it get that by a borrow, which is as good.
template <class Block>
bool is_plain(Block bytes) {
    constexpr Block ones = static_cast<Block>(0x0101'0101'0101'0101);
    constexpr Block highest = 0x80 * ones;
    const auto below = [&](Block word, Block limit) { return (word - limit * ones) & ~word; };
    const auto equal = [&](char byte) { return below(bytes ^ static_cast<unsigned char>(byte) * ones, 1); };
    return ((bytes | below(bytes, 0x20) | equal('"') | equal('\\') | equal('/')) & highest) == 0;
}

// Sixteen bytes, where the processor compares them at once.
#ifdef __SSE2__
using LargeBlock = __m128i;

bool is_plain(LargeBlock bytes) {
    const auto equal = [&](char byte) { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(byte)); };
    const LargeBlock below =
        _mm_cmplt_epi8(bytes, _mm_set1_epi8(0x20)); // signed, so bytes from 0x80 up are below, too
    const LargeBlock others = _mm_or_si128(_mm_or_si128(equal('"'), equal('\\')), equal('/'));
    return _mm_movemask_epi8(_mm_or_si128(below, others)) == 0;
}
#else
using LargeBlock = std::uint64_t;
#endif

// The text is a block or longer. The last block starts where it ends with the text, so it may copy some bytes
// again.
template <class Block>
bool copy_plain_blocks(std::string_view text, char* out) {
    const std::size_t last = text.size() - sizeof(Block);
    for (std::size_t begin = 0;; begin = std::min(begin + sizeof(Block), last)) {
        Block block;
        std::memcpy(&block, text.data() + begin, sizeof block);
        if (!is_plain(block))
            return false;
        std::memcpy(out + begin, &block, sizeof block);
        if (begin == last)
            return true;
    }
}

// Copies a text that has nothing to escape, as nearly all are; else returns false.
bool copy_plain(std::string_view text, char* out) {
    if (text.size() >= sizeof(LargeBlock))
        return copy_plain_blocks<LargeBlock>(text, out);
    if (text.size() >= sizeof(std::uint64_t))
        return copy_plain_blocks<std::uint64_t>(text, out);
    if (text.size() >= sizeof(std::uint32_t))
        return copy_plain_blocks<std::uint32_t>(text, out);
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (escape_of(text[i])[0] != 0)
            return false;
        out[i] = text[i];
    }
    return true;
}

void append_escaped(TextBuffer& out, std::string_view text) {
    char* end = out.reserve(text.size() * longest_escape);
    for (const char byte : text) {
        const char* const escape = escape_of(byte);
        if (escape[0] == 0)
            *end++ = byte;
        else
            end = std::copy_n(escape, std::strlen(escape), end);
    }
    out.advance(end);
}

} // namespace

void append_quoted(TextBuffer& out, std::string_view text) {
    constexpr std::size_t longest_piece = 4096; // escaped, it still fits into the buffer
    static_assert(longest_piece * longest_escape <= TextBuffer::capacity);
    char* const begin = out.reserve(std::min(text.size(), longest_piece) + 2);
    *begin = '"';
    if (text.size() <= longest_piece && copy_plain(text, begin + 1)) {
        begin[text.size() + 1] = '"';
        out.advance(begin + text.size() + 2);
        return;
    }
    out.advance(begin + 1);
    for (; text.size() > longest_piece; text.remove_prefix(longest_piece))
        append_escaped(out, text.substr(0, longest_piece));
    append_escaped(out, text);
    out.append("\"");
}
