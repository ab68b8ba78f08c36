// SPDX-License-Identifier: Apache-2.0
#include "files.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <new>

#include "failure.h"

namespace zan::tool {

namespace {

// read(), repeated while signals interrupt it. 0 at the end of the file.
std::size_t checked_read(int fd, void* target, std::size_t size, const std::string& name) {
    for (;;) {
        const ssize_t got = ::read(fd, target, size);
        if (got >= 0)
            return static_cast<std::size_t>(got);
        if (errno != EINTR)
            throw system_failure("can't read " + in_quotes(name));
    }
}

// The bytes of a file whose size isn't known: of pipes, devices, and files of the kernel. The room is
// doubled, and mremap() moves pages without copying them.
FileBytes read_to_end(int fd, const std::string& name) {
    FileBytes bytes(io_piece);
    std::size_t size = 0;
    while (const std::size_t got = checked_read(fd, bytes.data() + size, bytes.size() - size, name)) {
        size += got;
        if (size == bytes.size())
            bytes.resize(2 * size);
    }
    bytes.resize(size);
    return bytes;
}

// Copies through memory, for what the kernel can't copy by itself.
void copy_piecewise(int from, std::uint64_t offset, std::uint64_t size, int to, const std::string& from_name,
                    const std::string& to_name) {
    while (size != 0) {
        const FileBytes bytes = read_range(from, offset, std::min<std::uint64_t>(size, io_piece), from_name);
        write_all(to, bytes.data(), bytes.size(), to_name);
        offset += bytes.size();
        size -= bytes.size();
    }
}

} // namespace

unsigned masked_permissions(unsigned permissions) {
    // The mask can only be read by setting it. There is one thread, so no file is made meanwhile.
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return permissions & ~mask;
}

void occupy_standard_streams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // open() takes the lowest free number, which is this one. The wrong direction makes any use fail.
        if (::fcntl(stream, F_GETFD) < 0)
            ::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
}

Descriptor::~Descriptor() {
    if (m_fd >= 0)
        ::close(m_fd);
}

bool Descriptor::close() {
    return ::close(std::exchange(m_fd, -1)) == 0;
}

FileBytes::FileBytes(std::size_t size) {
    resize(size);
}

FileBytes::~FileBytes() {
    if (m_data)
        ::munmap(m_data, m_size);
}

void FileBytes::resize(std::size_t size) {
    if (size == 0) {
        *this = FileBytes();
        return;
    }
    void* const block =
        m_data ? ::mremap(m_data, m_size, size, MREMAP_MAYMOVE)
               : ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (block == MAP_FAILED)
        throw std::bad_alloc();
    m_data = static_cast<char*>(block);
    m_size = size;
}

FileBytes read_bytes(const std::string& path, std::uint64_t max_size) {
    if (path == standard_stream)
        return read_to_end(STDIN_FILENO, standard_input);
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat status;
    if (file.get() < 0 || ::fstat(file.get(), &status) != 0)
        throw system_failure("can't open " + in_quotes(path));
    if (static_cast<std::uint64_t>(status.st_size) > max_size)
        throw Failure(fmt::format("{} has {} bytes, and a section holds at most {}", in_quotes(path),
                                  status.st_size, max_size));
    if (S_ISREG(status.st_mode) && status.st_size > 0)
        return read_range(file.get(), 0, static_cast<std::size_t>(status.st_size), path);
    return read_to_end(file.get(), path);
}

// By pread(), so that the file's position neither matters nor changes.
FileBytes read_range(int fd, std::uint64_t offset, std::size_t size, const std::string& name) {
    FileBytes bytes(size);
    for (std::size_t done = 0; done < size;) {
        const ssize_t got = ::pread(fd, bytes.data() + done, size - done, static_cast<off_t>(offset + done));
        if (got < 0 && errno != EINTR)
            throw system_failure("can't read " + in_quotes(name));
        if (got == 0)
            throw Failure("can't read " + in_quotes(name) + ": it is shorter than expected");
        done += got < 0 ? 0 : static_cast<std::size_t>(got);
    }
    return bytes;
}

void write_all(int fd, const void* data, std::size_t size, const std::string& name) {
    for (const auto* bytes = static_cast<const char*>(data); size != 0;) {
        const ssize_t written = ::write(fd, bytes, size);
        if (written < 0 && errno != EINTR)
            throw system_failure("can't write to " + in_quotes(name));
        const std::size_t count = written < 0 ? 0 : static_cast<std::size_t>(written);
        bytes += count;
        size -= count;
    }
}

void copy_range(int from, std::uint64_t offset, std::uint64_t size, int to, const std::string& from_name,
                const std::string& to_name) {
    auto position = static_cast<off_t>(offset);
    while (size != 0) {
        const ssize_t copied = ::copy_file_range(from, &position, to, nullptr, size, 0);
        // These kinds of files can't be copied like this, there was a fault, or the file has shrunk. The
        // other way copies what is left, or reports why it can't.
        if (copied <= 0)
            return copy_piecewise(from, static_cast<std::uint64_t>(position), size, to, from_name, to_name);
        size -= static_cast<std::uint64_t>(copied);
    }
}

} // namespace zan::tool
