// SPDX-License-Identifier: Apache-2.0
// The types an attribute's text can be read as, and their conversion rules.
#pragma once

#include <tinyxml2.h>

#include <concepts>
#include <istream>
#include <string>
#include <string_view>

namespace zan::xml {

// A 32-bit number whose text may carry the base prefixes "0x" and "0".
class unsigned_hex {
  public:
    unsigned_hex() = default;
    unsigned_hex(unsigned int value) : m_value(value) {}
    operator unsigned int() const { return m_value; }

  private:
    unsigned int m_value = 0;
};

// The same in 64 bits.
class unsigned64_hex {
  public:
    unsigned64_hex() = default;
    unsigned64_hex(unsigned long long value) : m_value(value) {}
    operator unsigned long long() const { return m_value; }

  private:
    unsigned long long m_value = 0;
};

// Converts the whole of `text`, which has to begin with a decimal digit: no sign, no blank. Too large a
// number is not an error: its lower 32 bits are stored, or those of the largest 64-bit number beyond that. On
// failure `out` may hold the number that the text begins with.
bool convert_to_unsigned(const char* text, unsigned int* out, int base);

// The same in 64 bits; too large a number is stored as the largest.
bool convert_to_unsigned64(const char* text, unsigned long long* out, int base);

// Each reads one blank-delimited token and takes the base from its prefix; a token that is no number sets
// failbit.
std::istream& operator>>(std::istream& in, unsigned_hex& out);
std::istream& operator>>(std::istream& in, unsigned64_hex& out);

// The types that convert_attribute, and so BaseVisitor::query_attribute, knows.
template <typename T>
concept AttributeValue = std::same_as<T, std::string> || std::same_as<T, std::string_view> ||
    std::same_as<T, unsigned int> || std::same_as<T, unsigned_hex> || std::same_as<T, unsigned64_hex> ||
    std::same_as<T, float> || std::same_as<T, int> || std::same_as<T, bool>;

// Converts an attribute's text; false if it is not of the type. After a failure `out` is not to be looked at.
bool convert_attribute(const tinyxml2::XMLAttribute& attr, std::string* out);
// A view of the document's own text, which lives as long as the document.
bool convert_attribute(const tinyxml2::XMLAttribute& attr, std::string_view* out);
bool convert_attribute(const tinyxml2::XMLAttribute& attr, unsigned int* out);
bool convert_attribute(const tinyxml2::XMLAttribute& attr, unsigned_hex* out);
bool convert_attribute(const tinyxml2::XMLAttribute& attr, unsigned64_hex* out);
bool convert_attribute(const tinyxml2::XMLAttribute& attr, float* out);
// The parser's own rules: an integer may have blanks before it, a sign and anything after it; a boolean is a
// word such as "true" or "False", or an integer.
bool convert_attribute(const tinyxml2::XMLAttribute& attr, int* out);
bool convert_attribute(const tinyxml2::XMLAttribute& attr, bool* out);

} // namespace zan::xml
