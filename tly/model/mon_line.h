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

// Reads a line piece by piece, as long as it is what nearly all lines are: plain numbers of up to 18 digits,
// which fit a long long whatever the digits are. A piece that is anything else ends the reading; then the
// line has to be split. What is read is what the split line has.
class PlainFields {
  public:
    explicit PlainFields(std::string_view line) : m_position(line.data()), m_end(line.data() + line.size()) {}

    bool at_sign() const { return m_position != m_end && *m_position == '-'; }
    // Reads a number and the comma after it; false if that isn't what stands there.
    bool number(long long& value) { return digits(value) && comma(); }
    // Reads a text up to the next comma, which has to be there.
    bool text(std::string_view& text);
    // Reads the last fields of the line, just as many numbers as are wanted.
    bool last_numbers(long long* values, std::size_t count);

  private:
    bool digits(long long& value);
    bool comma() {
        if (m_position == m_end || *m_position != ',')
            return false;
        ++m_position;
        return true;
    }

    const char* m_position;
    const char* m_end;
};

// The fields of the line that was split last. The texts are views into that line.
class MonLine {
  public:
    // Splits at every comma and reads every number; n commas give n + 1 fields. Time is linear in the line's
    // length, and nothing is allocated once a line with as many fields has been seen.
    void split(std::string_view line);

    std::span<const MonField> fields() const { return m_fields; }
    std::size_t num_commas() const { return m_fields.size() - 1; }

  private:
    std::vector<MonField> m_fields;
};
