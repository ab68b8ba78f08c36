// SPDX-License-Identifier: Apache-2.0
// Messages in the binary form of protocol buffers, written by hand.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace zan::profile {

// The fields of a message, in the order in which they are added. Numbers of fields are below 2^29.
class ProtoBytes {
  public:
    // Negative numbers are int64 values, of ten bytes.
    ProtoBytes& integer(unsigned field, std::int64_t value);
    ProtoBytes& real(unsigned field, double value);
    // Of a text, or a message.
    ProtoBytes& bytes(unsigned field, std::string_view value);
    ProtoBytes& message(unsigned field, const ProtoBytes& value) { return bytes(field, value.text()); }
    // The fields of another message.
    ProtoBytes& append(const ProtoBytes& fields) {
        m_text += fields.text();
        return *this;
    }

    std::string_view text() const { return m_text; }

  private:
    std::string m_text;
};

// Writes a number at `out`, which has room for ten bytes, and returns its end.
char* write_varint(char* out, std::uint64_t value);
// With ten bytes, whatever the value, so that it can be replaced by any other. Readers take it as usual.
void write_long_varint(char* out, std::uint64_t value);
inline constexpr std::size_t long_varint = 10;

} // namespace zan::profile
