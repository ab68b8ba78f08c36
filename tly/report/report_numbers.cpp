// SPDX-License-Identifier: Apache-2.0
// The text of a float: what a stream's default format makes of it with 7 significant digits.
//
// What must hold: every float has the text that std::to_chars has for the same number of digits; the tests
// compare them for all exponents and around each power of ten. So the quick way takes only what it can round
// exactly: floats from 10^-4 to 10^15, of which a double holds the product with a power of ten, and those
// from 10^-13 on, of which two words of 64 bits do. The rest, infinities and NaN go through std::to_chars.
//
// Measured (bench/README.md): a million floats of one decimal take 21 ms, and 74 ms by std::to_chars alone.
#include "report_numbers.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>

#include "decimal_digits.h"

namespace {

constexpr int num_digits = 7;
constexpr std::uint32_t digits_limit = 10'000'000; // 10^num_digits

// What every double and every 64-bit integer of the range below holds exactly.
constexpr double least_quick = 1e-4;
constexpr double quick_limit = 1e15;
// Down to this one a power of ten that leaves seven digits before the point fits into 64 bits.
constexpr double least_small = 1e-13;
constexpr std::array<double, 16> powers = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                           1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

// A number's first 7 digits, rounded to the nearest, from a tie to the even one; and the power of ten that
// the first of them stands for.
struct Decimal {
    std::uint32_t digits;
    int exponent;
};

double power(int exponent) {
    return powers[static_cast<std::size_t>(exponent)];
}

int binary_exponent(double magnitude) {
    return static_cast<int>(std::bit_cast<std::uint64_t>(magnitude) >> 52) - 1023;
}

// The exponent of the largest power of ten that isn't above the magnitude, or one less.
int guessed_exponent(double magnitude) {
    return (binary_exponent(magnitude) * 1233) >> 12; // log10(2) is 1233/4096 and a bit
}

// The largest power of ten that isn't above the magnitude.
int decimal_exponent(double magnitude) {
    const int guess = guessed_exponent(magnitude);
    const double next = guess >= -1 ? power(guess + 1) : 1.0 / power(-guess - 1);
    return magnitude >= next ? guess + 1 : guess;
}

std::uint32_t nearest_integer(double value) {
    constexpr double shift = 0x1.8p52; // what is added to it loses its fraction, rounded as it should be
    return static_cast<std::uint32_t>(std::bit_cast<std::uint64_t>(value + shift));
}

// A float has 24 bits, so its product with up to 10^12 is exact in a double, and a float from 10^7 on is an
// integer: both ways round the number itself, as to_chars does.
Decimal first_digits(double magnitude) {
    int exponent = decimal_exponent(magnitude);
    std::uint32_t digits;
    if (exponent < num_digits) {
        digits = nearest_integer(magnitude * power(num_digits - 1 - exponent));
    } else {
        const auto number = static_cast<std::uint64_t>(magnitude);
        const auto unit = static_cast<std::uint64_t>(power(exponent - num_digits + 1));
        const std::uint64_t whole = number / unit;
        const std::uint64_t twice_rest = 2 * (number % unit);
        const bool up = twice_rest > unit || (twice_rest == unit && whole % 2 == 1);
        digits = static_cast<std::uint32_t>(whole) + (up ? 1 : 0);
    }
    if (digits == digits_limit) {
        digits /= 10;
        ++exponent;
    }
    return {digits, exponent};
}

// The product of the 24 bits of a float from 10^-13 to 10^-4 and a power of ten, shifted right and rounded to
// the nearest integer. There are no ties: a number halfway between two integers below 10^7, times two, would
// be an odd one below 2 · 10^7 that 5^11 divides, since the power of ten is the 11th at least.
std::uint32_t scaled_digits(double magnitude, std::uint64_t power_of_ten) {
    constexpr int fraction_bits = 23;
    const std::uint64_t mantissa =
        (std::bit_cast<std::uint64_t>(magnitude) >> (52 - fraction_bits) & ((1u << fraction_bits) - 1)) |
        1u << fraction_bits;
    // 24 bits times 64 in two parts. What is below bit 32 doesn't reach the bit that is rounded by.
    const std::uint64_t low = mantissa * (power_of_ten & 0xFFFF'FFFF);
    const std::uint64_t high = mantissa * (power_of_ten >> 32) + (low >> 32);
    const int shift = fraction_bits - binary_exponent(magnitude) - 32; // 5 to 35
    return static_cast<std::uint32_t>(((high >> (shift - 1)) + 1) >> 1);
}

Decimal first_digits_of_small(double magnitude) {
    static constexpr std::array<std::uint64_t, 20> whole_powers = [] {
        std::array<std::uint64_t, 20> table{1};
        for (std::size_t i = 1; i < table.size(); ++i)
            table[i] = table[i - 1] * 10;
        return table;
    }();
    int exponent = guessed_exponent(magnitude);
    std::uint32_t digits =
        exponent >= -13
            ? scaled_digits(magnitude, whole_powers[static_cast<std::size_t>(num_digits - 1 - exponent)])
            : digits_limit;
    if (digits >= digits_limit) { // the guess was too small, or rounding made a digit more
        ++exponent;
        digits = scaled_digits(magnitude, whole_powers[static_cast<std::size_t>(num_digits - 1 - exponent)]);
    }
    return {digits, exponent};
}

// Writes digits with a point after the first `before` of them, and without zeros at the end. `characters` are
// the seven digits and a zero.
char* write_point(char* out, std::uint64_t characters, int significant, int before) {
    store_characters(out, characters);
    if (significant <= before)
        return out + before;
    out[before] = '.';
    store_characters(out + before + 1, characters >> (8 * before));
    return out + significant + 1;
}

// An exponent below 100, of two digits.
char* write_exponent(char* out, char sign, int exponent) {
    *out++ = 'e';
    *out++ = sign;
    *out++ = static_cast<char>('0' + exponent / 10);
    *out++ = static_cast<char>('0' + exponent % 10);
    return out;
}

char* write_decimal(char* out, const Decimal& decimal) {
    const std::uint64_t digits = digits_of(decimal.digits * 10);
    const std::uint64_t characters = digits | zero_characters;
    const int significant = 8 - std::countl_zero(digits) / 8;
    if (decimal.exponent >= num_digits) {
        out = write_point(out, characters, significant, 1);
        return write_exponent(out, '+', decimal.exponent);
    }
    if (decimal.exponent < -4)
        return write_exponent(write_point(out, characters, significant, 1), '-', -decimal.exponent);
    if (decimal.exponent >= 0)
        return write_point(out, characters, significant, 1 + decimal.exponent);
    store_characters(out, zero_characters);
    out[1] = '.';
    out += 1 - decimal.exponent;
    store_characters(out, characters);
    return out + significant;
}

} // namespace

char* write_number(char* out, float value) {
    if (has_digit_blocks) {
        const double magnitude = std::fabs(static_cast<double>(value));
        if (std::bit_cast<std::uint32_t>(value) == 0) {
            *out = '0';
            return out + 1;
        }
        if (magnitude >= least_small && magnitude < quick_limit) {
            *out = '-';
            return write_decimal(out + (value < 0 ? 1 : 0), magnitude < least_quick
                                                                ? first_digits_of_small(magnitude)
                                                                : first_digits(magnitude));
        }
    }
    return std::to_chars(out, out + max_number_text, static_cast<double>(value), std::chars_format::general,
                         num_digits)
        .ptr;
}
