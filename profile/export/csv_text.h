// SPDX-License-Identifier: Apache-2.0
// Fields of CSV files.
#pragma once

#include <string>
#include <string_view>

namespace zan::profile {

// Appends a text as a field of RFC 4180: in quotes if it has commas, quotes, newlines or blanks at its ends,
// or if it is empty, as a field of nothing is null. Unless `raw`, a text that a spreadsheet would take for a
// formula, because it begins with = + - @ or a tab, gets a ' before it.
void append_csv_text(std::string& line, std::string_view text, bool raw);

// Appends a number with all digits that it takes to read it again. What is no number is nothing.
void append_csv_number(std::string& line, double value);

} // namespace zan::profile
