#include "line_reader.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {

constexpr std::size_t block_size = std::size_t{1} << 18;

} // namespace

LineReader::LineReader(const std::string& path) : m_fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
}

LineReader::~LineReader() {
    if (m_fd >= 0)
        ::close(m_fd);
}

// Makes room behind the bytes at hand and reads more into it; false if there are no more.
bool LineReader::fill() {
    if (m_at_end || !is_open())
        return false;
    if (m_begin != 0) {
        std::memmove(m_buffer.data(), m_buffer.data() + m_begin, m_end - m_begin);
        m_end -= m_begin;
        m_begin = 0;
    }
    if (m_buffer.size() - m_end < block_size / 2)
        m_buffer.resize(m_buffer.size() + std::max(m_buffer.size(), block_size));
    ssize_t count = 0;
    do {
        count = ::read(m_fd, m_buffer.data() + m_end, m_buffer.size() - m_end);
    } while (count < 0 && errno == EINTR);
    m_at_end = count <= 0;
    if (!m_at_end)
        m_end += static_cast<std::size_t>(count);
    return !m_at_end;
}

bool LineReader::next(std::string_view& line) {
    std::size_t searched = 0; // bytes at the front that hold no newline
    while (true) {
        const std::size_t size = m_end - m_begin;
        const char* const begin = m_buffer.data() + m_begin;
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
        line = std::string_view(m_buffer.data() + m_begin, size);
        m_begin = m_end;
        return size != 0;
    }
}
