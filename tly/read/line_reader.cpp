// SPDX-License-Identifier: Apache-2.0
#include "line_reader.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace {

// The first buffer. A read is for at least half of it.
constexpr std::size_t block_size = std::size_t{1} << 18;

} // namespace

LineReader::LineReader(const std::string& path) : m_fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
}

LineReader::~LineReader() {
    if (m_fd >= 0)
        ::close(m_fd);
}

// Moves the bytes that no line has taken yet to the front of a buffer that has room after them. Room that
// nothing is read into is never touched, so that it takes no memory.
void LineReader::make_room() {
    const std::size_t size = m_end - m_begin;
    if (m_capacity - size < block_size / 2) {
        const std::size_t capacity = m_capacity + std::max(m_capacity, block_size);
        auto larger = std::make_unique_for_overwrite<char[]>(capacity);
        std::copy_n(m_buffer.get() + m_begin, size, larger.get());
        m_buffer = std::move(larger);
        m_capacity = capacity;
    } else if (m_begin != 0) {
        std::memmove(m_buffer.get(), m_buffer.get() + m_begin, size);
    }
    m_begin = 0;
    m_end = size;
}

// Reads more bytes after those in the buffer; false if there are no more.
bool LineReader::fill() {
    if (m_at_end || !is_open())
        return false;
    make_room();
    ssize_t count = 0;
    do {
        count = ::read(m_fd, m_buffer.get() + m_end, m_capacity - m_end);
    } while (count < 0 && errno == EINTR);
    m_at_end = count <= 0;
    if (count > 0) {
        m_end += static_cast<std::size_t>(count);
        m_num_bytes += static_cast<std::uint64_t>(count);
    } else if (count < 0) {
        m_read_error = errno;
        m_begin = m_end; // a line that a fault has cut may look like a whole one with other numbers
    }
    return !m_at_end;
}

bool LineReader::next(std::string_view& line) {
    std::size_t searched = 0; // bytes at the front without a newline: a long line is searched once
    while (true) {
        const std::size_t size = m_end - m_begin;
        const char* const begin = m_buffer.get() + m_begin;
        const void* newline =
            size > searched ? std::memchr(begin + searched, '\n', size - searched) : nullptr;
        if (newline) {
            line = std::string_view(begin, static_cast<const char*>(newline));
            m_begin += line.size() + 1;
            return true;
        }
        searched = size;
        if (fill())
            continue;
        line = std::string_view(m_buffer.get() + m_begin, m_end - m_begin);
        m_begin = m_end;
        m_had_newline = line.empty() && m_had_newline;
        return !line.empty();
    }
}
