// SPDX-License-Identifier: Apache-2.0
#include "text_buffer.h"

// Hands the first `size` bytes to the target. Those after them move to the front.
void TextBuffer::write(std::size_t size) {
    m_good = m_good && m_target.write(m_bytes.get(), size);
    std::memmove(m_bytes.get(), m_bytes.get() + size, m_size - size);
    m_size -= size;
    m_written += size;
    ++m_num_flushes;
}

// Writes up to the last multiple of the write size, or all if there is none or if more room is needed.
void TextBuffer::make_room(std::size_t size) {
    const std::size_t left_over = (m_written + m_size) % write_size;
    write(left_over < m_size && capacity - left_over >= size ? m_size - left_over : m_size);
}

void TextBuffer::flush() {
    write(m_size);
}
