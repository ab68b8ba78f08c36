// SPDX-License-Identifier: Apache-2.0
// Text of users and files, as people see it on a terminal.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zan::tool {

// The text with all that could change what a terminal shows made visible: control characters, line and
// paragraph separators, and characters that change the direction of writing as "⟨U+202E⟩"; bytes that are no
// UTF-8 as "\xNN".
std::string printable(const std::string& text);
// The same in quotes.
std::string in_quotes(const std::string& text);

// How many columns a terminal takes for a printable text: none for a combining mark, two for a wide
// character. Bytes that are no UTF-8 count as one each.
std::size_t display_width(std::string_view text);

// The longest beginning of a printable text that fits into `width` columns; whole characters only.
std::string_view fitting(std::string_view text, std::size_t width);

// The text with U+FFFD for each byte that is no UTF-8.
std::string valid_utf8(std::string_view text);

} // namespace zan::tool
