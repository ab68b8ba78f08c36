// SPDX-License-Identifier: Apache-2.0
#include "scratch_file.h"

#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "run_input.h"

namespace zan::profile {

namespace {

[[noreturn]] void fail(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

} // namespace

ScratchFile::ScratchFile(const std::string& folder) {
    m_fd = open_temporary_in(folder);
    if (m_fd < 0)
        fail("can't make a temporary file in '" + folder + "'");
}

ScratchFile::~ScratchFile() {
    close(m_fd);
}

std::uint64_t ScratchFile::append(const void* data, std::size_t size) {
    const std::uint64_t offset = m_size;
    const char* next = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t count = pwrite(m_fd, next, size, static_cast<off_t>(m_size));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            fail("can't write a temporary file");
        next += count;
        size -= static_cast<std::size_t>(count);
        m_size += static_cast<std::uint64_t>(count);
    }
    return offset;
}

void ScratchFile::read(std::uint64_t offset, void* data, std::size_t size) const {
    char* next = static_cast<char*>(data);
    while (size > 0) {
        const ssize_t count = pread(m_fd, next, size, static_cast<off_t>(offset));
        if (count < 0 && errno == EINTR)
            continue;
        if (count == 0)
            errno = EIO;
        if (count <= 0)
            fail("can't read a temporary file");
        next += count;
        size -= static_cast<std::size_t>(count);
        offset += static_cast<std::uint64_t>(count);
    }
}

} // namespace zan::profile
