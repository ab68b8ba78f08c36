// SPDX-License-Identifier: Apache-2.0
#include "text_buffer.h"

void TextBuffer::flush() {
    m_good = m_good && m_target.write(m_bytes.get(), m_size);
    m_size = 0;
    ++m_num_flushes;
}
