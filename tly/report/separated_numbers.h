// SPDX-License-Identifier: Apache-2.0
// Numbers of an array, one after the other, with what stands between two of them.
#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "report_numbers.h"

// The end of a line, the blanks of the next one, and quotes. All `room` bytes are copied, since a copy of a
// size that is known takes a few instructions; what is too much is overwritten by the next number.
struct Separator {
    static constexpr std::size_t room = 48;

    std::array<char, room> text; // up to `size`; blanks after that
    std::size_t size;
};

// Writes each number and a separator after it at `out`, which has room for max_number_text and
// Separator::room bytes for each, and returns the end of the last separator. The numbers have the texts that
// write_number() writes.
template <class T>
char* write_separated(char* out, std::span<const T> numbers, const Separator& separator);
