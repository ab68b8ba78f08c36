// SPDX-License-Identifier: Apache-2.0
// A line of a file, or the part of it that matters.
#pragma once

#include <cstddef>
#include <string>

namespace zan::tool {

// The line in printable form, `width` columns wide at most, with "..." for what is left out. `column` is a
// byte of the line, from 1, which is in the part that is shown; below it stands a caret then, on a line of
// its own. 0: no caret. `more_before` and `more_after`: the line is longer than `line`. Without a newline at
// the end.
std::string excerpt(const std::string& line, std::size_t column, std::size_t width, bool more_before = false,
                    bool more_after = false);

// The text with that many blanks before each of its lines.
std::string indented(const std::string& text, std::size_t indent);

} // namespace zan::tool
