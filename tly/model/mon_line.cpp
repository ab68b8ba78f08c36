// SPDX-License-Identifier: Apache-2.0
#include "mon_line.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>
#include <iterator>
#include <limits>

#include "decimal_digits.h"
#include "digit_marks.h"
#include "number_text.h"

namespace {

// Numbers of up to this many digits fit an unsigned long long whatever the digits are. Times in nanoseconds
// since 1970 have as many.
constexpr std::ptrdiff_t most_digits = 19;
constexpr unsigned long long largest = std::numeric_limits<long long>::max();

// Fields that are held. The widest lines of the benchmarks have 1,448.
constexpr std::size_t most_fields = 4096;

constexpr std::array<unsigned long long, 9> powers_of_ten = {
    1, 10, 100, 1'000, 10'000, 100'000, 1'000'000, 10'000'000, 100'000'000};

// How far from a mark's beginning a field without a mark may end. Two marks are more than this apart, so that
// they take less memory than the line.
constexpr std::ptrdiff_t mark_distance = 128;

// Reads the field that starts at `begin` and returns its end, the next comma or the end of the line. Nearly
// all fields are a plain number of few digits, so that one loop finds the value and the end.
const char* read_field(const char* begin, const char* end, MonField& field) {
    const char* position = begin;
    const bool negative = position != end && *position == '-';
    if (negative)
        ++position;
    const char* const digits = position;
    unsigned long long magnitude = 0;
    while (position != end && static_cast<unsigned>(*position - '0') < 10) {
        magnitude = magnitude * 10 + static_cast<unsigned>(*position - '0');
        ++position;
    }
    const std::ptrdiff_t num_digits = position - digits;
    if ((position == end || *position == ',') && num_digits != 0 && num_digits <= most_digits &&
        magnitude <= largest) {
        field.text = std::string_view(begin, position);
        field.value = negative ? -static_cast<long long>(magnitude) : static_cast<long long>(magnitude);
        field.is_number = true;
        return position;
    }
    // Spaces, a plus, letters, too many digits: what the number is, or that there is none, is std::stoll's to
    // say.
    position = std::find(position, end, ',');
    field = read_mon_field(std::string_view(begin, position));
    return position;
}

// The digits of the next eight characters, all of which must be there.
inline DigitRun take_digits(const char*& position) {
    std::uint64_t characters;
    std::memcpy(&characters, position, sizeof characters);
    const DigitRun run = read_digits(characters);
    position += run.length;
    return run;
}

// Reads digits with a sign or none from `position` on, and leaves it after them; false if there are none, or
// if they are too large a number. Most numbers end within the next eight characters, which are taken at once;
// only where numbers are long (times) it pays to take the next eight, too. Near the end of a line there may
// be fewer; there digits are read one by one, since the bytes after the line are not to be touched.
template <bool are_long>
inline bool read_plain(const char*& position, const char* end, long long& value) {
    const bool negative = position != end && *position == '-';
    if (negative)
        ++position;
    const char* const digits = position;
    unsigned long long magnitude = 0;
    bool is_whole = false;
    if (has_digit_blocks && end - position >= 8) {
        const DigitRun first = take_digits(position);
        magnitude = first.value;
        is_whole = first.length < 8;
        if (are_long && !is_whole && end - position >= 8) {
            const DigitRun second = take_digits(position);
            magnitude = magnitude * powers_of_ten[second.length] + second.value;
            is_whole = second.length < 8;
        }
    }
    // The rest of a longer number, or the end of a line. What comes after the last digit that is read is
    // neither a comma nor the end if it is a digit, so that a number which could overflow is no plain one.
    while (!is_whole && position != end && static_cast<unsigned>(*position - '0') < 10 &&
           position - digits < most_digits) {
        magnitude = magnitude * 10 + static_cast<unsigned>(*position - '0');
        ++position;
    }
    if (position == digits || magnitude > largest)
        return false;
    value = negative ? -static_cast<long long>(magnitude) : static_cast<long long>(magnitude);
    return true;
}

} // namespace

MonField read_mon_field(std::string_view text) {
    const auto number = parse_long_long(text);
    return {text, number.value_or(0), number.has_value()};
}

bool PlainFields::digits(long long& value) {
    return read_plain<true>(m_position, m_end, value);
}

bool PlainFields::text(std::string_view& text) {
    const void* const found =
        m_position == m_end ? nullptr
                            : std::memchr(m_position, ',', static_cast<std::size_t>(m_end - m_position));
    if (!found)
        return false;
    text = std::string_view(m_position, static_cast<const char*>(found));
    m_position += text.size() + 1;
    return true;
}

// Reads up to `count` numbers with the commas after them, as far as they have no sign and up to 16 digits;
// returns how many. Windows of the line are searched for what ends numbers; the last one is never read here,
// so that each window has a comma after each number.
std::size_t PlainFields::short_numbers(long long* values, std::size_t count) {
    std::size_t num_read = 0;
    const char* begin = m_position; // of the next number
    while (begin - m_begin >= most_marked_digits && m_end - m_begin >= marks_size && begin != m_end) {
        const char* const window = std::min(begin, m_end - marks_size);
        const char* const first = begin;
        std::uint64_t marks = marks_of_others(window) >> (first - window);
        while (marks != 0) {
            const char* const stop = first + static_cast<std::size_t>(std::countr_zero(marks));
            const auto length = static_cast<std::size_t>(stop - begin);
            if (length - 1 >= most_marked_digits || *stop != ',' || num_read == count)
                break;
            values[num_read++] = marked_number(stop, length);
            begin = stop + 1;
            marks &= marks - 1;
        }
        if (marks != 0 || begin == first)
            break;
    }
    m_position = begin;
    return num_read;
}

bool PlainFields::last_numbers(long long* values, std::size_t count) {
    std::size_t num_read = 0;
    while (num_read < count) {
        if (has_digit_marks && num_read + 1 < count)
            num_read += short_numbers(values + num_read, count - 1 - num_read);
        if (!read_plain<false>(m_position, m_end, values[num_read]))
            return false;
        ++num_read;
        if (num_read < count && !comma())
            return false;
    }
    return m_position == m_end;
}

MonField MonFields::far_field(std::size_t index) const {
    const auto after = std::ranges::upper_bound(m_marks, index, {}, &MonFieldMark::index);
    const MonFieldMark& mark = *std::prev(after);
    if (mark.index == index)
        return mark.field;
    const char* position = mark.field.text.data() + mark.field.text.size() + 1;
    for (std::size_t i = mark.index + 1; i < index; ++i)
        position = std::find(position, m_end, ',') + 1;
    return read_mon_field(std::string_view(position, std::find(position, m_end, ',')));
}

void MonLine::split(std::string_view line) {
    const char* position = line.data();
    m_end = position + line.size();
    m_fields.clear();
    m_marks.clear();
    while (m_fields.size() < most_fields) {
        position = read_field(position, m_end, m_fields.emplace_back());
        if (position == m_end) {
            m_size = m_fields.size();
            return;
        }
        ++position;
    }
    mark_rest(position);
}

// A field that isn't marked ends near the mark before it, so that to find it takes a short and limited time.
void MonLine::mark_rest(const char* position) {
    m_size = m_fields.size();
    while (true) {
        const char* const field_end = std::find(position, m_end, ',');
        if (m_marks.empty() || field_end - m_marks.back().field.text.data() > mark_distance)
            m_marks.push_back({m_size, read_mon_field(std::string_view(position, field_end))});
        ++m_size;
        if (field_end == m_end)
            return;
        position = field_end + 1;
    }
}
