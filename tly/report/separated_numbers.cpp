// SPDX-License-Identifier: Apache-2.0
// Eight numbers at a time: first the digits of all of them, then their texts without a branch for their
// length.
//
// What must hold: the text is that of write_number(), which writes each group that has an integer below 0 or
// of more than nine digits, and each float that has a sign or an exponent. Floats of the quick way have a
// product with a power of ten that a double holds, so they are rounded exactly. That was compared with
// std::to_chars for each of the 306 million of them.
#include "separated_numbers.h"

#include <bit>
#include <cstdint>
#include <cstring>

#include "decimal_digits.h"
#include "digit_groups.h"

namespace {

char* append_separator(char* out, const Separator& separator) {
    std::memcpy(out, separator.text.data(), Separator::room);
    return out + separator.size;
}

// Up to nine digits without leading zeros: the first of nine is `top`.
char* write_nine_digits(char* out, std::uint64_t top, std::uint64_t low) {
    constexpr std::uint64_t last_digit = std::uint64_t{1} << 56; // a zero is one digit, too
    const std::uint64_t num_top = (top + 15) >> 4;               // 0 or 1
    const std::uint64_t zeros = static_cast<unsigned>(std::countr_zero(low | last_digit)) & ~7u;
    const std::uint64_t leading = zeros & (num_top - 1);
    *out = static_cast<char>('0' + top);
    store_characters(out + num_top, (low | zero_characters) >> leading);
    return out + num_top + 8 - leading / 8;
}

// The quick way of integers. False if one of them needs the other way; then nothing is written.
bool write_group(char*& out, const std::array<long long, group_size>& numbers, const Separator& separator) {
    DigitGroup digits;
    if (!digits_of_group(numbers, digits))
        return false;
    const Separator in_registers = separator; // text that is written can't change a copy
    char* end = out;
    for (std::size_t i = 0; i < group_size; ++i)
        end = append_separator(write_nine_digits(end, digits.top[i], digits.low[i]), in_registers);
    out = end;
    return true;
}

constexpr int usual_digits = 7;
constexpr std::array<double, 11> usual_powers = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10};
constexpr std::uint32_t first_usual = std::bit_cast<std::uint32_t>(1e-4f) + 1; // that of 1e-4f is below 10^-4
constexpr std::uint32_t usual_limit = std::bit_cast<std::uint32_t>(1e7f);

// The decimal exponent of the floats of one binary exponent: `lower` below some float, one more from it on.
struct ExponentStep {
    std::uint32_t next; // bits of that float
    int lower;
};

constexpr double power_of_ten(int exponent) {
    return exponent >= 0 ? usual_powers[static_cast<std::size_t>(exponent)]
                         : 1.0 / usual_powers[static_cast<std::size_t>(-exponent)];
}

// The bits of the least float that isn't below the power. Its double is nearer to the power than any float
// that isn't the power itself.
constexpr std::uint32_t bits_from(int exponent) {
    const double power = power_of_ten(exponent);
    const auto nearest = static_cast<float>(power);
    return std::bit_cast<std::uint32_t>(nearest) + (static_cast<double>(nearest) < power ? 1 : 0);
}

// By binary exponents, as floats store them. A zero has the decimal exponent 0.
constexpr std::array<ExponentStep, 256> exponent_steps = [] {
    std::array<ExponentStep, 256> steps{};
    steps[0] = {0, -1};
    for (int biased = 113; biased <= 150; ++biased) { // 2^-14 to 2^23
        const int lower = ((biased - 127) * 1233) >> 12;
        steps[static_cast<std::size_t>(biased)] = {bits_from(lower + 1), lower};
    }
    return steps;
}();

constexpr int no_exponent = 100; // of a float that isn't a usual one

struct FloatGroup {
    std::array<std::uint64_t, group_size> digits; // a number of seven and a zero, then each in its byte
    std::array<int, group_size> exponents;
};

void take_floats(const float* values, FloatGroup& group) {
    constexpr double shift = 0x1.8p52; // what is added to it loses its fraction, rounded as it should be
    constexpr std::uint32_t digits_limit = 10'000'000;
    for (std::size_t i = 0; i < group_size; ++i) {
        const auto bits = std::bit_cast<std::uint32_t>(values[i]);
        const bool is_usual = bits == 0 || bits - first_usual < usual_limit - first_usual;
        const std::uint32_t usual_bits = is_usual ? bits : 0;
        const ExponentStep& step = exponent_steps[usual_bits >> 23];
        const int exponent = step.lower + (usual_bits >= step.next ? 1 : 0);
        const double scaled = static_cast<double>(std::bit_cast<float>(usual_bits)) *
                              usual_powers[static_cast<std::size_t>(usual_digits - 1 - exponent)];
        const auto digits = static_cast<std::uint32_t>(std::bit_cast<std::uint64_t>(scaled + shift));
        group.digits[i] = static_cast<std::uint64_t>(digits) * 10;
        group.exponents[i] = is_usual && digits != digits_limit ? exponent : no_exponent;
    }
}

// Where digits, their zeros and the point go, for one decimal exponent.
struct PointForm {
    std::uint64_t first;  // which of the first eight characters are digits: all or none
    std::uint32_t before; // digits before the point
    std::uint32_t point;  // its place
    std::uint32_t after;  // the place of the digits after it
};

constexpr int least_exponent = -4;
constexpr std::array<PointForm, 11> point_forms = [] {
    std::array<PointForm, 11> forms{};
    for (int exponent = least_exponent; exponent < usual_digits; ++exponent) {
        PointForm& form = forms[static_cast<std::size_t>(exponent - least_exponent)];
        const auto before = static_cast<std::uint32_t>(exponent < 0 ? 0 : exponent + 1);
        const auto zeros = static_cast<std::uint32_t>(exponent < 0 ? -exponent : 0);
        form = {before == 0 ? 0 : ~std::uint64_t{0}, before,
                static_cast<std::uint32_t>(before == 0 ? 1 : before),
                static_cast<std::uint32_t>(before + zeros + 1)};
    }
    return forms;
}();

// Up to seven digits with the point where the exponent has it, and without zeros at the end.
char* write_usual_float(char* out, std::uint64_t digits, int exponent) {
    const PointForm& form = point_forms[static_cast<std::size_t>(exponent - least_exponent)];
    const std::uint64_t characters = digits | zero_characters;
    store_characters(out, (digits & form.first) | zero_characters);
    out[form.point] = '.';
    store_characters(out + form.after, characters >> (8 * form.before));
    const auto significant = (static_cast<unsigned>(std::bit_width(digits | 1)) + 7) / 8;
    return out + (significant > form.before ? form.after + significant - form.before : form.before);
}

bool write_group(char*& out, const float* values, const Separator& separator) {
    FloatGroup group;
    take_floats(values, group);
    digits_in_place(group.digits);
    const Separator in_registers = separator;
    char* end = out;
    for (std::size_t i = 0; i < group_size; ++i) {
        end = group.exponents[i] == no_exponent ? write_number(end, values[i])
                                                : write_usual_float(end, group.digits[i], group.exponents[i]);
        end = append_separator(end, in_registers);
    }
    out = end;
    return true;
}

template <class T>
bool write_group(char*& out, const T* values, const Separator& separator) {
    std::array<long long, group_size> numbers;
    for (std::size_t i = 0; i < group_size; ++i)
        numbers[i] = values[i];
    return write_group(out, numbers, separator);
}

} // namespace

template <class T>
char* write_separated(char* out, std::span<const T> numbers, const Separator& separator) {
    while (!numbers.empty()) {
        std::size_t count = numbers.size();
        if (has_digit_blocks && count >= group_size) {
            count = group_size;
            if (write_group(out, numbers.data(), separator)) {
                numbers = numbers.subspan(group_size);
                continue;
            }
        }
        for (const T value : numbers.first(count))
            out = append_separator(write_number(out, value), separator);
        numbers = numbers.subspan(count);
    }
    return out;
}

template char* write_separated(char* out, std::span<const int> numbers, const Separator& separator);
template char* write_separated(char* out, std::span<const long long> numbers, const Separator& separator);
template char* write_separated(char* out, std::span<const float> numbers, const Separator& separator);
