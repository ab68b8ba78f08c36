// SPDX-License-Identifier: Apache-2.0
// A file is written through its descriptor, without the buffer of a stream: the text comes in large blocks.
//
// From the second block on a file gets its place on the disk some megabytes at a time, before the bytes are
// written: the kernel then has less to do for each page. What must hold: it never changes what is written, or
// what fails. So a file system that can't do it, or has no room left, is asked once; what is reserved and not
// used is returned; and the size of the file stays that of its bytes.
//
// Measured on 158 MB, processor time of all writes: 24 ms in place of 35 on ext4, with 16 MiB at a time as
// with 64. On tmpfs it is 76 in place of 69, so it is done on ext4 only; others were not measured.
#include "byte_target.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <boost/property_tree/json_parser/error.hpp>
#include <cerrno>
#include <utility>

namespace {

// Reserved at once: as much as is written already, within these limits.
constexpr std::size_t least_reserved = std::size_t{1} << 20;
constexpr std::size_t most_reserved = std::size_t{1} << 24;

bool is_quicker_reserved(int descriptor) {
    struct statfs system {};
    return ::fstatfs(descriptor, &system) == 0 && system.f_type == EXT4_SUPER_MAGIC;
}

} // namespace

bool StreamTarget::write(const char* bytes, std::size_t size) {
    return m_stream.write(bytes, static_cast<std::streamsize>(size)).good();
}

FileTarget::FileTarget(const std::string& path)
    : m_descriptor(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666)) {
    if (m_descriptor < 0)
        throw boost::property_tree::json_parser::json_parser_error("cannot open file", path, 0);
}

FileTarget::~FileTarget() {
    if (m_descriptor >= 0)
        close();
}

// A call may write a part, and a signal may end it before it has written anything.
bool FileTarget::write(const char* bytes, std::size_t size) {
    reserve_ahead(size);
    while (size != 0) {
        const ssize_t written = ::write(m_descriptor, bytes, size);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes += written;
        size -= static_cast<std::size_t>(written);
        m_size += static_cast<std::size_t>(written);
    }
    return true;
}

// Sees to it that the next `size` bytes have a place. Most reports are one block, and go without.
void FileTarget::reserve_ahead(std::size_t size) {
    if (!m_can_reserve || m_size == 0 || m_size + size <= m_reserved)
        return;
    if (m_reserved == 0)
        m_can_reserve = is_quicker_reserved(m_descriptor);
    const std::size_t begin = std::max(m_size, m_reserved);
    const std::size_t end = m_size + std::max(size, std::clamp(m_size, least_reserved, most_reserved));
    if (m_can_reserve && ::fallocate(m_descriptor, FALLOC_FL_KEEP_SIZE, static_cast<off_t>(begin),
                                     static_cast<off_t>(end - begin)) == 0)
        m_reserved = end;
    else
        m_can_reserve = false;
}

void FileTarget::return_reserved() const {
    if (m_reserved <= m_size)
        return;
    // The bytes are there even if this fails.
    [[maybe_unused]] const int result = ::ftruncate(m_descriptor, static_cast<off_t>(m_size));
}

bool FileTarget::close() {
    return_reserved();
    return ::close(std::exchange(m_descriptor, -1)) == 0;
}
