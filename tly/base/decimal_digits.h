// SPDX-License-Identifier: Apache-2.0
// Eight decimal digits at a time, in one 64-bit register.
//
// Nearly all bytes of a monitor file and of a report are digits. Read and written one by one, each of them
// waits for the one before, and each number of another length ends its loop at a branch that the processor
// predicts wrong. Here all eight are worked out at once, without a loop, a table or such a branch. A million
// integers are written in the time that std::to_chars takes for them, with all that the report has around
// them.
//
// What must hold: the result is that of std::to_chars, and of a loop over the digits. The digits of a
// register stand in the order of memory on little-endian machines only; on others callers take the usual way.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

inline constexpr bool has_digit_blocks = std::endian::native == std::endian::little;

// The digits of a number below 10^8, with leading zeros, the first one in the lowest byte: values of 0 to 9,
// no characters.
constexpr std::uint64_t digits_of(std::uint32_t number) {
    // Halves of four digits, then quarters of two, then single ones, all of a kind divided by one
    // multiplication with a rounded reciprocal: 10,486 / 2^20 for a hundredth of a number below 10,000, and
    // 103 / 2^10 for a tenth of one below 100, are exact after the shift. The masks remove what a shift has
    // brought in from the number above.
    const std::uint64_t halves = number / 10'000 | std::uint64_t{number % 10'000} << 32;
    const std::uint64_t hundreds = ((halves * 10'486) >> 20) & 0x0000'007F'0000'007F;
    const std::uint64_t pairs = hundreds | (halves - hundreds * 100) << 16;
    const std::uint64_t tens = ((pairs * 103) >> 10) & 0x000F'000F'000F'000F;
    return tens | (pairs - tens * 10) << 8;
}

inline constexpr std::uint64_t zero_characters = 0x3030'3030'3030'3030;

inline void store_characters(char* out, std::uint64_t characters) {
    std::memcpy(out, &characters, sizeof characters);
}

// Writes a number below 10^8 without leading zeros at `out`, which has room for 8 bytes whatever the number
// is, and returns the end of its digits.
inline char* write_up_to_8_digits(char* out, std::uint32_t number) {
    const std::uint64_t digits = digits_of(number);
    constexpr std::uint64_t last_digit = std::uint64_t{1} << 56; // a zero is one digit, too
    const int leading = std::countr_zero(digits | last_digit) & ~7;
    store_characters(out, (digits | zero_characters) >> leading);
    return out + (64 - leading) / 8;
}

// The same with leading zeros.
inline char* write_8_digits(char* out, std::uint32_t number) {
    store_characters(out, digits_of(number) | zero_characters);
    return out + 8;
}

// The digits at the front of eight characters (the first one in the lowest byte).
struct DigitRun {
    unsigned length;     // how many there are
    std::uint32_t value; // the number that they are; 0 if there are none
};

inline DigitRun read_digits(std::uint64_t characters) {
    // A byte that is no digit keeps a bit in the upper half, or gets one from the addition. A carry out of a
    // byte spoils only those after it, and the first one decides.
    const std::uint64_t values = characters ^ zero_characters;
    const std::uint64_t others = (values | (values + 0x0606'0606'0606'0606)) & 0xF0F0'F0F0'F0F0'F0F0;
    const unsigned bits = others == 0 ? 64 : static_cast<unsigned>(std::countr_zero(others)) & ~7u;
    if (bits == 0)
        return {0, 0};
    // The digits move to the end, after as many zeros as there is room; then neighbours are joined: ones,
    // pairs, fours.
    std::uint64_t digits = values << (64 - bits);
    digits = (digits * 10 + (digits >> 8)) & 0x00FF'00FF'00FF'00FF;
    digits = (digits * 100 + (digits >> 16)) & 0x0000'FFFF'0000'FFFF;
    return {bits / 8, static_cast<std::uint32_t>(digits * 10'000 + (digits >> 32))};
}
