// SPDX-License-Identifier: Apache-2.0
#include "excerpt.h"

#include <algorithm>

#include "printable.h"

namespace zan::tool {

namespace {

constexpr const char* left_out = "...";
constexpr std::size_t left_out_width = 3;

} // namespace

std::string excerpt(const std::string& line, std::size_t column, std::size_t width, bool more_before,
                    bool more_after) {
    const std::size_t room = std::max(width, 4 * left_out_width) - 2 * left_out_width;
    const std::size_t caret = std::min(column == 0 ? 0 : column - 1, line.size());
    // The caret keeps two thirds of the room before it, if the line begins further away.
    std::size_t begin = display_width(printable(line.substr(0, caret))) <= room * 2 / 3 ? 0 : caret;
    while (begin > 0 && display_width(printable(line.substr(begin - 1, caret - begin + 1))) <= room * 2 / 3)
        --begin;
    const std::string text = printable(line.substr(begin));
    const std::string shown(fitting(text, room));
    std::string result = begin > 0 || more_before ? left_out : "";
    const std::size_t caret_column =
        display_width(result) + display_width(printable(line.substr(begin, caret - begin)));
    result += shown;
    if (shown.size() < text.size() || more_after)
        result += left_out;
    return column == 0 ? result : result + "\n" + std::string(caret_column, ' ') + "^";
}

std::string indented(const std::string& text, std::size_t indent) {
    const std::string blanks(indent, ' ');
    std::string result;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        result += blanks + text.substr(begin, end - begin) + (end < text.size() ? "\n" : "");
        begin = end + 1;
    }
    return result;
}

} // namespace zan::tool
