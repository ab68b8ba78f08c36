// SPDX-License-Identifier: Apache-2.0
// Numbers that are read from an array of texts.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "report_sink.h"

namespace zan::profile {

// Decimal digits as they stand in a text.
struct Digits {
    std::uint64_t value;
    unsigned count;
};

// The numbers of one array, as long as each text is just what the report has for its number: long long values
// while all are integers, float values from the first other one on. Which of them an array was written from
// isn't in its text; either has the same bytes.
class PackedNumbers {
  public:
    // Forgets all numbers; the storage stays.
    void clear();
    // Adds a number. False, without any effect, if the text isn't the report's text of a number of the kind
    // that the array has, or may have.
    bool add(std::string_view text);
    // Adds the number that stands at `at` and ends in a quote, and returns the place after the quote; null,
    // without any effect, if it can't be added.
    const char* add_number(const char* at);
    // Adds the numbers of JSON elements that stand at `at`, each after a comma: `, "12", "13"`. Stops after
    // `most` of them, or before the comma of the first that can't be added, and returns where.
    const char* add_elements(const char* at, std::size_t most);
    // For both: bytes from `at` on end in a zero byte, and as many bytes after that one can be read.
    static constexpr std::size_t num_readable = 127;

    std::size_t size() const { return m_are_floats ? m_floats.size() : m_integers.size(); }
    // Writes them as an array; there must be one at least.
    void write(ReportSink& sink, std::string_view key) const;
    // Writes them as elements of the array that is open; there must be one at least.
    void write_elements(ReportSink& sink) const;
    // Writes each as a text without a key.
    void write_texts(ReportSink& sink) const;

  private:
    const char* after_separator(const char* at);
    const char* add_integer(const char* end, bool negative, unsigned long long value);
    const char* add_fraction(const char* begin, const char* end, std::uint64_t whole, const Digits& part);
    const char* add_float(const char* end, float value);
    const char* add_checked_float(const char* begin);
    bool make_floats();

    std::vector<long long> m_integers;
    std::vector<float> m_floats;
    bool m_are_floats = false;
    // The bytes from the end of an element to the quote of the next one, as they were last; those of an array
    // are all the same.
    std::array<char, 64> m_separator{};
    std::size_t m_separator_size = 0;
};

} // namespace zan::profile
