// SPDX-License-Identifier: Apache-2.0
// Decimal numbers in text, read as std::stoll and std::stoi read them.
#pragma once

#include <optional>
#include <string_view>

// Leading white space and one sign are accepted, text after the digits is ignored. There is no result where
// std::stoll throws: for a text without a number at that place and for a number out of range.
std::optional<long long> parse_long_long(std::string_view text);

// The same with the range of int, as std::stoi has it.
std::optional<int> parse_int(std::string_view text);

// The number as an int, if it is in range: std::stoi takes just the texts whose std::stoll is one.
std::optional<int> narrow_to_int(std::optional<long long> number);
