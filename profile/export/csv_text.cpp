// SPDX-License-Identifier: Apache-2.0
#include "csv_text.h"

#include <charconv>
#include <cmath>

namespace zan::profile {

void append_csv_text(std::string& line, std::string_view text, bool raw) {
    constexpr std::string_view begins_formula = "=+-@\t\r";
    const bool guarded = !raw && !text.empty() && begins_formula.find(text.front()) != std::string_view::npos;
    const bool quoted = text.empty() || text.find_first_of(",\"\r\n") != std::string_view::npos ||
                        text.front() == ' ' || text.back() == ' ';
    if (quoted)
        line += '"';
    if (guarded)
        line += '\'';
    for (const char c : text) {
        if (c == '"')
            line += '"';
        line += c;
    }
    if (quoted)
        line += '"';
}

void append_csv_number(std::string& line, double value) {
    if (!std::isfinite(value))
        return;
    char digits[32];
    line.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

} // namespace zan::profile
