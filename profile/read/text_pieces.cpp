// SPDX-License-Identifier: Apache-2.0
#include "text_pieces.h"

#include <system_error>

namespace zan::profile {

TextPieces::TextPieces(ByteSource& source, std::size_t most)
    : m_source(source),
      m_most(most),
      m_bytes(new char[piece_size + num_readable]{}),
      m_at(m_bytes.get()),
      m_end(m_at) {
}

bool TextPieces::at_end() {
    return m_at == m_end && !refill();
}

bool TextPieces::refill() {
    if (m_has_ended)
        return false;
    if (m_offset - m_mark > m_most) {
        m_is_over_limit = m_has_ended = true;
        return false;
    }
    std::size_t size = 0;
    try {
        size = m_source.read(m_bytes.get(), piece_size);
    } catch (const std::system_error& error) {
        m_failure = error.code().message();
    }
    m_has_ended = size == 0;
    m_offset += size;
    m_at = m_bytes.get();
    m_end = m_at + size;
    m_bytes[size] = '\0';
    return size != 0;
}

} // namespace zan::profile
