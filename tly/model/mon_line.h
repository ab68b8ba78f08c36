// SPDX-License-Identifier: Apache-2.0
// One line of a monitor file as a list of fields.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

// A field between two commas, with the number that std::stoll reads from its text.
struct MonField {
    std::string_view text;
    long long value = 0;
    bool is_number = false;

    std::optional<long long> number() const { return is_number ? std::optional(value) : std::nullopt; }
};

// The field that a text stands for, commas and all.
MonField read_mon_field(std::string_view text);

// Reads a line piece by piece, as long as it is what nearly all lines are: plain numbers that fit a long
// long, of up to 19 digits. A piece that is anything else ends the reading; then the
// line has to be split. What is read is what the split line has.
class PlainFields {
  public:
    explicit PlainFields(std::string_view line)
        : m_begin(line.data()), m_position(m_begin), m_end(m_begin + line.size()) {}

    bool at_sign() const { return m_position != m_end && *m_position == '-'; }
    // Reads a number and the comma after it; false if that isn't what stands there.
    bool number(long long& value) { return digits(value) && comma(); }
    // Reads a text up to the next comma, which has to be there.
    bool text(std::string_view& text);
    // Reads the last fields of the line, just as many numbers as are wanted.
    bool last_numbers(long long* values, std::size_t count);

  private:
    bool digits(long long& value);
    std::size_t short_numbers(long long* values, std::size_t count);
    bool comma() {
        if (m_position == m_end || *m_position != ',')
            return false;
        ++m_position;
        return true;
    }

    const char* m_begin;
    const char* m_position;
    const char* m_end;
};

// A field of a long line, from which the fields after it are found.
struct MonFieldMark {
    std::size_t index = 0; // of the field on the line
    MonField field;
};

// The fields of a line by their indices, as views of what a MonLine or its caller holds. Of a line with very
// many fields only the first ones and a mark here and there are held: to hold all of them would take 32 bytes
// for each byte of a line of commas.
class MonFields {
  public:
    // Fields that are all held.
    explicit MonFields(std::span<const MonField> fields) : m_first(fields), m_size(fields.size()) {}
    // The first fields, marks of those after them up to the line's end at `end`, and the number of all.
    MonFields(std::span<const MonField> first, std::span<const MonFieldMark> marks, const char* end,
              std::size_t size)
        : m_first(first), m_marks(marks), m_end(end), m_size(size) {}

    std::size_t size() const { return m_size; }
    // The field at an index below the size.
    MonField operator[](std::size_t index) const {
        return index < m_first.size() ? m_first[index] : far_field(index);
    }
    // The same without a copy, if it is held; else it is put into `room`. Beyond the size it is a field
    // without text.
    const MonField& get(std::size_t index, MonField& room) const {
        if (index < m_first.size())
            return m_first[index];
        return room = index < m_size ? far_field(index) : MonField();
    }

  private:
    MonField far_field(std::size_t index) const;

    std::span<const MonField> m_first;
    std::span<const MonFieldMark> m_marks; // by growing indices, the first one of the field after m_first
    const char* m_end = nullptr;
    std::size_t m_size;
};

// The fields of the line that was split last. The texts are views into that line.
class MonLine {
  public:
    // Splits at every comma and reads every number; n commas give n + 1 fields. Time is linear in the line's
    // length, and nothing is allocated once a line with as many fields has been seen.
    void split(std::string_view line);

    MonFields fields() const { return {m_fields, m_marks, m_end, m_size}; }
    std::size_t num_commas() const { return m_size - 1; }

  private:
    void mark_rest(const char* position);

    std::vector<MonField> m_fields; // the first ones
    std::vector<MonFieldMark> m_marks;
    const char* m_end = nullptr;
    std::size_t m_size = 0;
};
