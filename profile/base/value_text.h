// SPDX-License-Identifier: Apache-2.0
// Numbers as people read them: in sentences of the diagnosis, and in tables. Page and program write them by
// the same rules, so that the same profile has the same sentences in both.
#pragma once

#include <string>

namespace zan::profile {

// All texts are plain ASCII. Numbers that stand halfway between two texts are rounded away from zero.

// With that many decimals (0 to 9): "12.50". What is no number is "-".
std::string fixed_text(double value, int decimals);
// The same without zeros at the end of the decimals: "12.5", "12".
std::string trimmed_text(double value, int decimals);
// A whole number with commas: "12,345".
std::string count_text(double value);
// Three digits, without zeros at the end of the decimals: "6.45", "56.9", "1". From 1,000 on a whole number
// with commas.
std::string number_text(double value);
// All digits that it takes to read the same number again, without an exponent where that is at most 17 digits
// long.
std::string exact_text(double value);
// Percent: "9.4%" below 10, "61%" from there on.
std::string percent_text(double percent);
// Nanoseconds as three digits, or as two, and a unit from ns to s: "8.70 us", "8.7 us"; "0 ns". Whole
// nanoseconds below 1 us, and whole seconds with commas from 1,000 s on.
std::string time_text(double nanoseconds);
std::string short_time_text(double nanoseconds);

} // namespace zan::profile
