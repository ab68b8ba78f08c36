// SPDX-License-Identifier: Apache-2.0
#include "BaseVisitorAttributes.h"

#include <cstdlib>
#include <sstream>

namespace zan::xml {

namespace {

constexpr int base_by_prefix = 0;

// strtoul and strtoull would skip blanks and take a sign, so the first character is checked here.
bool begins_with_digit(const char* text) {
    return *text >= '0' && *text <= '9';
}

// One conversion serves streams and attributes, so both refuse the same texts.
template <typename Hex, typename Number>
std::istream& extract(std::istream& in, Hex& out, bool (*convert)(const char*, Number*, int)) {
    std::string token;
    in >> token;
    Number number = out;
    if (!convert(token.c_str(), &number, base_by_prefix))
        in.setstate(std::ios::failbit);
    out = number;
    return in;
}

template <typename Hex>
bool convert_by_stream(const char* text, Hex* out) {
    std::istringstream stream(text);
    return !(stream >> *out).fail();
}

} // namespace

bool convert_to_unsigned(const char* text, unsigned int* out, int base) {
    if (!begins_with_digit(text))
        return false;
    char* end = nullptr;
    *out = static_cast<unsigned int>(std::strtoul(text, &end, base));
    return *end == '\0';
}

bool convert_to_unsigned64(const char* text, unsigned long long* out, int base) {
    if (!begins_with_digit(text))
        return false;
    char* end = nullptr;
    *out = std::strtoull(text, &end, base);
    return *end == '\0';
}

std::istream& operator>>(std::istream& in, unsigned_hex& out) {
    return extract(in, out, convert_to_unsigned);
}

std::istream& operator>>(std::istream& in, unsigned64_hex& out) {
    return extract(in, out, convert_to_unsigned64);
}

bool convert_attribute(const tinyxml2::XMLAttribute& attr, std::string* out) {
    *out = attr.Value();
    return true;
}

bool convert_attribute(const tinyxml2::XMLAttribute& attr, std::string_view* out) {
    *out = attr.Value();
    return true;
}

bool convert_attribute(const tinyxml2::XMLAttribute& attr, unsigned int* out) {
    return convert_to_unsigned(attr.Value(), out, 10);
}

bool convert_attribute(const tinyxml2::XMLAttribute& attr, unsigned_hex* out) {
    return convert_by_stream(attr.Value(), out);
}

bool convert_attribute(const tinyxml2::XMLAttribute& attr, unsigned64_hex* out) {
    return convert_by_stream(attr.Value(), out);
}

// Any other result than this one counts as success, also for a number with a rest after it.
bool convert_attribute(const tinyxml2::XMLAttribute& attr, float* out) {
    return attr.QueryFloatValue(out) != tinyxml2::XML_WRONG_ATTRIBUTE_TYPE;
}

bool convert_attribute(const tinyxml2::XMLAttribute& attr, int* out) {
    return attr.QueryIntValue(out) != tinyxml2::XML_WRONG_ATTRIBUTE_TYPE;
}

bool convert_attribute(const tinyxml2::XMLAttribute& attr, bool* out) {
    return attr.QueryBoolValue(out) != tinyxml2::XML_WRONG_ATTRIBUTE_TYPE;
}

} // namespace zan::xml
