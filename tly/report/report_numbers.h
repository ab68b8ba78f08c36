// SPDX-License-Identifier: Apache-2.0
// The report's text of a number.
#pragma once

#include <charconv>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

#include "decimal_digits.h"

// Longest text of a number in the report.
inline constexpr std::size_t max_number_text = 24;

// Writes the report's text of a number at `out`, which has room for max_number_text bytes, and returns the
// end. Bytes after the end may be overwritten. Integers are decimal; a float is written as a stream of
// precision 7 writes it.
template <std::integral T>
char* write_number(char* out, T value) {
    constexpr std::uint64_t block = 100'000'000; // what eight digits hold
    if (has_digit_blocks && value >= 0) {
        const auto number = static_cast<std::uint64_t>(value);
        if (number < block)
            return write_up_to_8_digits(out, static_cast<std::uint32_t>(number));
        if (number < block * block) {
            out = write_up_to_8_digits(out, static_cast<std::uint32_t>(number / block));
            return write_8_digits(out, static_cast<std::uint32_t>(number % block));
        }
    }
    return std::to_chars(out, out + max_number_text, value).ptr;
}
char* write_number(char* out, float value);

template <class T>
concept ReportNumber = std::same_as<T, int> || std::same_as<T, long long> || std::same_as<T, unsigned int> ||
    std::same_as<T, unsigned long> || std::same_as<T, float>;

// The text that a value of type T has in the report.
template <class T>
std::string report_text(const T& value) {
    if constexpr (std::is_same_v<T, bool>) {
        return value ? "true" : "false";
    } else if constexpr (std::is_enum_v<T>) {
        return report_text(static_cast<std::underlying_type_t<T>>(value));
    } else if constexpr (ReportNumber<T>) {
        char text[max_number_text];
        return std::string(text, write_number(text, value));
    } else {
        return std::string(value);
    }
}
