// SPDX-License-Identifier: Apache-2.0
#include "proto_bytes.h"

#include <bit>

namespace zan::profile {

namespace {

// What kind of value follows a field's number.
enum WireType : unsigned { varint = 0, fixed64 = 1, length = 2 };

void append_varint(std::string& text, std::uint64_t value) {
    char digits[long_varint];
    text.append(digits, write_varint(digits, value));
}

void append_tag(std::string& text, unsigned field, WireType type) {
    append_varint(text, std::uint64_t{field} << 3 | type);
}

} // namespace

char* write_varint(char* out, std::uint64_t value) {
    while (value >= 0x80) {
        *out++ = static_cast<char>(value | 0x80);
        value >>= 7;
    }
    *out++ = static_cast<char>(value);
    return out;
}

void write_long_varint(char* out, std::uint64_t value) {
    for (std::size_t i = 0; i + 1 < long_varint; ++i) {
        *out++ = static_cast<char>(value | 0x80);
        value >>= 7;
    }
    *out = static_cast<char>(value);
}

ProtoBytes& ProtoBytes::integer(unsigned field, std::int64_t value) {
    append_tag(m_text, field, varint);
    append_varint(m_text, static_cast<std::uint64_t>(value));
    return *this;
}

ProtoBytes& ProtoBytes::real(unsigned field, double value) {
    append_tag(m_text, field, fixed64);
    const auto bits = std::bit_cast<std::uint64_t>(value);
    for (unsigned shift = 0; shift < 64; shift += 8)
        m_text += static_cast<char>(bits >> shift);
    return *this;
}

ProtoBytes& ProtoBytes::bytes(unsigned field, std::string_view value) {
    append_tag(m_text, field, length);
    append_varint(m_text, value.size());
    m_text += value;
    return *this;
}

} // namespace zan::profile
