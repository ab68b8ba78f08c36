// SPDX-License-Identifier: Apache-2.0
// Bytes in the order in which they come: from a file, a pipe, or memory.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zan::profile {

class ByteSource {
  public:
    virtual ~ByteSource() = default;
    // Fills `to` with the next bytes, at most `size`, and returns how many there are; 0 means the end. May
    // return fewer than there are left, as a pipe does. Throws std::system_error if they can't be read.
    virtual std::size_t read(char* to, std::size_t size) = 0;
};

// An open file or pipe, from its position on. It stays open, and the caller's.
class DescriptorSource final : public ByteSource {
  public:
    explicit DescriptorSource(int fd) : m_fd(fd) {}
    std::size_t read(char* to, std::size_t size) override;

  private:
    int m_fd;
};

// A file, or a named pipe, from its start on.
class FileSource final : public ByteSource {
  public:
    // Throws std::system_error if it can't be opened.
    explicit FileSource(const std::string& path);
    FileSource(const FileSource&) = delete;
    FileSource& operator=(const FileSource&) = delete;
    ~FileSource() override;
    std::size_t read(char* to, std::size_t size) override;

  private:
    int m_fd;
};

// Bytes in memory, which must outlive the source. Returns at most `most` bytes at a time.
class MemorySource final : public ByteSource {
  public:
    explicit MemorySource(std::string_view bytes, std::size_t most = std::string_view::npos)
        : m_bytes(bytes), m_most(most) {}
    std::size_t read(char* to, std::size_t size) override;

  private:
    std::string_view m_bytes;
    std::size_t m_most;
};

// A source whose first bytes can be looked at before they are read. The source must outlive it.
class PeekedSource final : public ByteSource {
  public:
    explicit PeekedSource(ByteSource& source) : m_source(source) {}
    // The next bytes, `size` of them or as many as there are. The view holds until the next call.
    std::string_view peek(std::size_t size);
    std::size_t read(char* to, std::size_t size) override;

  private:
    ByteSource& m_source;
    std::string m_peeked; // from m_position on: not yet read
    std::size_t m_position = 0;
};

} // namespace zan::profile
