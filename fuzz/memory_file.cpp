// SPDX-License-Identifier: Apache-2.0
#include "memory_file.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>

MemoryFile::MemoryFile(std::string_view bytes) : m_fd(::memfd_create("input", MFD_CLOEXEC)) {
    if (m_fd < 0 || ::write(m_fd, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
        std::abort();
}

MemoryFile::~MemoryFile() {
    ::close(m_fd);
}

std::string MemoryFile::path() const {
    return "/proc/self/fd/" + std::to_string(m_fd);
}
