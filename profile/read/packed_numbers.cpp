// SPDX-License-Identifier: Apache-2.0
// Nearly all bytes of a report are elements of arrays of numbers, so add_elements() is what counts here: it
// compares what stands between two numbers eight bytes at a time with what stood there before, and reads
// eight digits at a time.
//
// What must hold: a number that is added is written with the bytes that it was read from. Integers and
// decimal fractions of up to seven significant digits are compared by their form; anything else is written
// and compared.
#include "packed_numbers.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "decimal_digits.h"
#include "json_characters.h"

namespace zan::profile {

namespace {

constexpr std::array<std::uint64_t, 12> make_powers_of_ten() {
    std::array<std::uint64_t, 12> powers{1};
    for (std::size_t i = 1; i < powers.size(); ++i)
        powers[i] = powers[i - 1] * 10;
    return powers;
}
constexpr std::array<std::uint64_t, 12> powers_of_ten = make_powers_of_ten();
// A float is written with seven digits, so integers below this are written the same way as floats.
constexpr std::uint64_t float_digits_limit = 10'000'000;
// Zeros after the point that a float is written with; with more it has an exponent.
constexpr unsigned most_leading_decimals = 4;

// A 64-bit number has no more.
constexpr unsigned most_digits = 19;

// Up to the first character that is no digit. Of more than most_digits there is no value.
Digits read_all_digits(const char* at) {
    Digits digits{0, 0};
    for (;;) {
        const DigitRun run = read_digits(next_characters(at + digits.count));
        if (digits.count + run.length > most_digits)
            return {0, most_digits + 1};
        digits.value = digits.value * powers_of_ten[run.length] + run.value;
        digits.count += run.length;
        if (run.length < 8)
            return digits;
    }
}

// Whether the bytes are equal; compares whole words, the last of which may overlap the one before it.
bool are_equal(const char* a, const char* b, std::size_t size) {
    constexpr std::size_t word = sizeof(std::uint64_t);
    if (size < word)
        return std::memcmp(a, b, size) == 0;
    std::uint64_t different = 0;
    for (std::size_t i = 0; i + word <= size; i += word)
        different |= next_characters(a + i) ^ next_characters(b + i);
    return (different | (next_characters(a + size - word) ^ next_characters(b + size - word))) == 0;
}

bool is_float_integer(long long number) {
    constexpr auto limit = static_cast<long long>(float_digits_limit);
    return -limit < number && number < limit;
}

} // namespace

void PackedNumbers::clear() {
    m_integers.clear();
    m_floats.clear();
    m_are_floats = false;
}

bool PackedNumbers::add(std::string_view text) {
    if (text.empty() || text.size() > max_number_text)
        return false;
    char quoted[max_number_text + 1 + num_readable] = {};
    std::memcpy(quoted, text.data(), text.size());
    quoted[text.size()] = '"';
    return add_number(quoted) == quoted + text.size() + 1;
}

const char* PackedNumbers::add_elements(const char* at, std::size_t most) {
    for (; most != 0; --most) {
        const char* const number = after_separator(at);
        const char* const end = number ? add_number(number) : nullptr;
        if (!end)
            break;
        at = end;
    }
    return at;
}

// The place after a comma, blanks and a quote; null if something else stands at `at`.
const char* PackedNumbers::after_separator(const char* at) {
    if (m_separator_size != 0 && are_equal(at, m_separator.data(), m_separator_size))
        return at + m_separator_size;
    if (*at != ',')
        return nullptr;
    const char* end = skip_json_blanks(at + 1);
    if (*end != '"')
        return nullptr;
    ++end;
    const auto size = static_cast<std::size_t>(end - at);
    m_separator_size = size <= m_separator.size() ? size : 0;
    std::memcpy(m_separator.data(), at, m_separator_size);
    return end;
}

const char* PackedNumbers::add_number(const char* at) {
    const char* const begin = at;
    const bool negative = *at == '-';
    at += negative ? 1 : 0;
    const char first = *at;
    const Digits whole = read_all_digits(at);
    if (whole.count == 0 || whole.count > most_digits)
        return add_checked_float(begin);
    at += whole.count;
    if (first == '0' && whole.count > 1)
        return nullptr; // the report has no leading zeros
    if (*at == '"' && (whole.value != 0 || !negative))
        return add_integer(at + 1, negative, whole.value);
    if (*at != '.' || whole.value >= float_digits_limit)
        return add_checked_float(begin);
    const Digits part = read_all_digits(++at);
    const bool is_fraction = part.count != 0 && part.count < powers_of_ten.size() && at[part.count] == '"' &&
                             at[part.count - 1] != '0';
    return is_fraction ? add_fraction(begin, at + part.count + 1, whole.value, part)
                       : add_checked_float(begin);
}

// Of the float nearest to a fraction of seven digits: a double holds its product with up to 10^11. If that is
// nearest to the digits of the fraction, the float is written with them.
const char* PackedNumbers::add_fraction(const char* begin, const char* end, std::uint64_t whole,
                                        const Digits& part) {
    const std::uint64_t power = powers_of_ten[part.count];
    const std::uint64_t digits = whole * power + part.value;
    if (digits >= float_digits_limit || digits * powers_of_ten[most_leading_decimals] < power)
        return add_checked_float(begin);
    const double scale = static_cast<double>(power);
    const auto value = static_cast<float>(static_cast<double>(digits) / scale);
    if (std::fabs(static_cast<double>(value) * scale - static_cast<double>(digits)) >= 0.5)
        return add_checked_float(begin);
    return add_float(end, *begin == '-' ? -value : value);
}

const char* PackedNumbers::add_integer(const char* end, bool negative, unsigned long long value) {
    constexpr unsigned long long greatest = LLONG_MAX;
    if (value > greatest + (negative ? 1 : 0))
        return nullptr;
    const auto number = static_cast<long long>(negative ? 0 - value : value);
    if (!m_are_floats) {
        m_integers.push_back(number);
        return end;
    }
    if (!is_float_integer(number))
        return nullptr;
    m_floats.push_back(static_cast<float>(number));
    return end;
}

const char* PackedNumbers::add_float(const char* end, float value) {
    if (!m_are_floats && !make_floats())
        return nullptr;
    m_floats.push_back(value);
    return end;
}

// Adds any float that is written as it stands there.
const char* PackedNumbers::add_checked_float(const char* begin) {
    const auto* const quote = static_cast<const char*>(std::memchr(begin, '"', max_number_text + 1));
    if (!quote)
        return nullptr;
    float value = 0;
    const auto [end, error] = std::from_chars(begin, quote, value);
    if (error != std::errc() || end != quote)
        return nullptr;
    char written[max_number_text];
    const std::string_view text(written, static_cast<std::size_t>(write_number(written, value) - written));
    if (text != std::string_view(begin, static_cast<std::size_t>(quote - begin)))
        return nullptr;
    return add_float(quote + 1, value);
}

// Makes floats of the integers so far; false if one of them would be written in another way.
bool PackedNumbers::make_floats() {
    if (!std::ranges::all_of(m_integers, is_float_integer))
        return false;
    m_floats.assign(m_integers.begin(), m_integers.end());
    m_are_floats = true;
    return true;
}

void PackedNumbers::write(ReportSink& sink, std::string_view key) const {
    if (m_are_floats)
        sink.array(key, std::span<const float>(m_floats));
    else
        sink.array(key, std::span<const long long>(m_integers));
}

void PackedNumbers::write_elements(ReportSink& sink) const {
    if (m_are_floats)
        sink.elements(std::span<const float>(m_floats));
    else
        sink.elements(std::span<const long long>(m_integers));
}

void PackedNumbers::write_texts(ReportSink& sink) const {
    if (m_are_floats) {
        for (const float number : m_floats)
            sink.number({}, number);
    } else {
        for (const long long number : m_integers)
            sink.number({}, number);
    }
}

} // namespace zan::profile
