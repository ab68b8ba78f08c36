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
MonField readMonField(std::string_view text);

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
