// SPDX-License-Identifier: Apache-2.0
// A file is written through its descriptor, without the buffer of a stream: the text comes in large blocks.
#include "byte_target.h"

#include <fcntl.h>
#include <unistd.h>

#include <boost/property_tree/json_parser/error.hpp>
#include <cerrno>
#include <utility>

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
        ::close(m_descriptor);
}

// A call may write a part, and a signal may end it before it has written anything.
bool FileTarget::write(const char* bytes, std::size_t size) {
    while (size != 0) {
        const ssize_t written = ::write(m_descriptor, bytes, size);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

bool FileTarget::close() {
    return ::close(std::exchange(m_descriptor, -1)) == 0;
}
