// SPDX-License-Identifier: Apache-2.0
// Files as the commands use them: every call is checked, and a failure names the file and the reason.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>

namespace zan::tool {

// The name of standard input, or output, where a file is asked for.
constexpr const char* standard_stream = "-";
// What messages call them.
constexpr const char* standard_input = "standard input";
constexpr const char* standard_output = "standard output";

// How many bytes are in memory at once where a file is copied or packed.
constexpr std::size_t io_piece = 1 << 18;

struct CloseStream {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FileStream = std::unique_ptr<std::FILE, CloseStream>;

// These permissions without those that the user's mask forbids.
unsigned masked_permissions(unsigned permissions);

// Keeps files that are opened later from getting the number of a standard stream that the caller has closed:
// they would be used as that stream. Reading from such a stream, or writing to it, fails.
void occupy_standard_streams();

// An open file that is closed with it.
class Descriptor {
  public:
    Descriptor() = default;
    explicit Descriptor(int fd) : m_fd(fd) {}
    Descriptor(Descriptor&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    ~Descriptor();
    int get() const { return m_fd; }
    // Leaves it open, for others to close.
    int release() { return std::exchange(m_fd, -1); }
    // Closes it now; false, with errno set, if what was written may be lost.
    bool close();

  private:
    int m_fd = -1;
};

// Bytes in memory that own their storage: whole pages from the system. Sections are often many pages long,
// and the heap's header of such a block would take another page.
class FileBytes {
  public:
    FileBytes() = default;
    // Room for that many bytes, all zero. Throws std::bad_alloc.
    explicit FileBytes(std::size_t size);
    FileBytes(FileBytes&& other) noexcept
        : m_data(std::exchange(other.m_data, nullptr)), m_size(std::exchange(other.m_size, 0)) {}
    FileBytes& operator=(FileBytes&& other) noexcept {
        std::swap(m_data, other.m_data);
        std::swap(m_size, other.m_size);
        return *this;
    }
    ~FileBytes();

    // Null if there are no bytes.
    char* data() const { return m_data; }
    std::size_t size() const { return m_size; }
    // Adds bytes at the end, or drops some; the others stay. Throws std::bad_alloc.
    void resize(std::size_t size);

  private:
    char* m_data = nullptr;
    std::size_t m_size = 0;
};

// All bytes of a file, of a pipe, or for "-" of standard input. Throws Failure, for a file of more than
// `max_size` bytes before it is read.
FileBytes read_bytes(const std::string& path, std::uint64_t max_size);
// `size` bytes from `offset` on; `name` is shown in a Failure, as where there are fewer.
FileBytes read_range(int fd, std::uint64_t offset, std::size_t size, const std::string& name);

// Writes all bytes. Throws Failure, naming `name`.
void write_all(int fd, const void* data, std::size_t size, const std::string& name);
// Copies `size` bytes at `offset` of one file to the position of the other one, inside the kernel if it can
// do that. Throws Failure, naming the files as `from_name` and `to_name`.
void copy_range(int from, std::uint64_t offset, std::uint64_t size, int to, const std::string& from_name,
                const std::string& to_name);

} // namespace zan::tool
