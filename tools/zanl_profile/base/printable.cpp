// SPDX-License-Identifier: Apache-2.0
// Two questions are answered here: what must not reach a terminal, and how wide the rest is.
//
// The first is a short table. Control characters never change, and Unicode has twelve characters that control
// the direction of writing; the test compares the table with all that libutf8proc knows of directions. The
// second needs the widths of thousands of characters, which change with each version of Unicode: libutf8proc
// has them. wcwidth() depends on the locale, and knows ASCII alone in the locale "C" of most CI systems.
#include "printable.h"

#include <fmt/format.h>
#include <utf8proc.h>

#include <algorithm>

namespace zan::tool {

namespace {

using CodePoint = utf8proc_int32_t;

struct Range {
    CodePoint first;
    CodePoint last;
};

constexpr Range shown_by_number[] = {
    {0x00, 0x1F},     {0x7F, 0x9F},     // controls
    {0x061C, 0x061C},                   // marks of a direction
    {0x200E, 0x200F}, {0x2028, 0x2029}, // separators of lines and paragraphs
    {0x202A, 0x202E},                   // embeddings and overrides of a direction
    {0x2066, 0x2069},                   // isolates
};

constexpr CodePoint no_character = -1;

// The first character of a text that isn't empty, and its number of bytes; no_character and 1 if it begins
// with a byte that is no UTF-8.
struct Character {
    CodePoint code;
    std::size_t size;
};

Character first_character(std::string_view text) {
    constexpr unsigned char first_above_ascii = 0x80;
    const auto first = static_cast<unsigned char>(text.front());
    if (first < first_above_ascii)
        return {first, 1};
    CodePoint code = no_character;
    const auto* const bytes = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
    const auto size = utf8proc_iterate(bytes, static_cast<utf8proc_ssize_t>(text.size()), &code);
    return size > 0 ? Character{code, static_cast<std::size_t>(size)} : Character{no_character, 1};
}

// Calls `visit(character, bytes)` for each character as long as it returns true.
template <typename Visit>
void for_each_character(std::string_view text, Visit visit) {
    for (std::size_t begin = 0; begin < text.size();) {
        const Character character = first_character(text.substr(begin));
        if (!visit(character.code, text.substr(begin, character.size)))
            return;
        begin += character.size;
    }
}

bool is_shown_by_number(CodePoint code) {
    return std::ranges::any_of(
        shown_by_number, [code](const Range& range) { return code >= range.first && code <= range.last; });
}

std::size_t character_width(CodePoint code) {
    return code == no_character ? 1 : static_cast<std::size_t>(std::max(0, utf8proc_charwidth(code)));
}

} // namespace

std::string printable(const std::string& text) {
    std::string shown;
    shown.reserve(text.size());
    for_each_character(text, [&](CodePoint code, std::string_view bytes) {
        if (code == no_character)
            shown += fmt::format("\\x{:02X}", static_cast<unsigned char>(bytes.front()));
        else if (is_shown_by_number(code))
            shown += fmt::format("⟨U+{:04X}⟩", code);
        else
            shown += bytes;
        return true;
    });
    return shown;
}

std::string in_quotes(const std::string& text) {
    return "'" + printable(text) + "'";
}

std::size_t display_width(std::string_view text) {
    std::size_t width = 0;
    for_each_character(text, [&](CodePoint code, std::string_view) {
        width += character_width(code);
        return true;
    });
    return width;
}

std::string_view fitting(std::string_view text, std::size_t width) {
    std::size_t size = 0;
    std::size_t left = width;
    for_each_character(text, [&](CodePoint code, std::string_view bytes) {
        const std::size_t needed = character_width(code);
        if (needed > left)
            return false;
        left -= needed;
        size += bytes.size();
        return true;
    });
    return text.substr(0, size);
}

std::string valid_utf8(std::string_view text) {
    std::string valid;
    valid.reserve(text.size());
    for_each_character(text, [&](CodePoint code, std::string_view bytes) {
        valid += code == no_character ? "\xEF\xBF\xBD" : bytes;
        return true;
    });
    return valid;
}

} // namespace zan::tool
