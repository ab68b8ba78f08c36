// SPDX-License-Identifier: Apache-2.0
#include "byte_source.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>

namespace zan::profile {

std::size_t DescriptorSource::read(char* to, std::size_t size) {
    for (;;) {
        const ssize_t count = ::read(m_fd, to, size);
        if (count >= 0)
            return static_cast<std::size_t>(count);
        if (errno != EINTR)
            throw std::system_error(errno, std::generic_category());
    }
}

FileSource::FileSource(const std::string& path) : m_fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (m_fd < 0)
        throw std::system_error(errno, std::generic_category());
}

FileSource::~FileSource() {
    ::close(m_fd);
}

std::size_t FileSource::read(char* to, std::size_t size) {
    return DescriptorSource(m_fd).read(to, size);
}

std::size_t MemorySource::read(char* to, std::size_t size) {
    const std::size_t count = std::min({size, m_most, m_bytes.size()});
    if (count != 0)
        std::memcpy(to, m_bytes.data(), count);
    m_bytes.remove_prefix(count);
    return count;
}

std::string_view PeekedSource::peek(std::size_t size) {
    m_peeked.erase(0, m_position);
    m_position = 0;
    while (m_peeked.size() < size) {
        const std::size_t old_size = m_peeked.size();
        m_peeked.resize(size);
        const std::size_t count = m_source.read(m_peeked.data() + old_size, size - old_size);
        m_peeked.resize(old_size + count);
        if (count == 0)
            break;
    }
    return std::string_view(m_peeked).substr(0, size);
}

std::size_t PeekedSource::read(char* to, std::size_t size) {
    if (m_position == m_peeked.size())
        return m_source.read(to, size);
    const std::size_t count = std::min(size, m_peeked.size() - m_position);
    std::memcpy(to, m_peeked.data() + m_position, count);
    m_position += count;
    return count;
}

} // namespace zan::profile
