// SPDX-License-Identifier: Apache-2.0
// The lines of a file, read in large blocks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

// Reads what std::getline would read, from a regular file or a pipe. Memory is that of the longest line.
class LineReader {
  public:
    explicit LineReader(const std::string& path);
    // Reads an open descriptor from where it stands, and closes it at the end. A negative one isn't open.
    explicit LineReader(int descriptor) : m_fd(descriptor) {}
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;
    ~LineReader();

    bool is_open() const { return m_fd >= 0; }

    // Takes the next line without its newline; the last line needs none. The view holds until the next call.
    // False at the end of the file, and where it can't be read any further: a folder counts as an empty file,
    // and a line whose end can't be read is none.
    bool next(std::string_view& line);

    // The bytes read so far: those of the lines taken, and of some after them.
    std::uint64_t num_bytes() const { return m_num_bytes; }
    // The error number of a read that failed, which has ended the lines; 0 if none did.
    int read_error() const { return m_read_error; }
    // The last line that was taken ended with a newline.
    bool had_newline() const { return m_had_newline; }

  private:
    void make_room();
    bool fill();

    int m_fd;
    std::unique_ptr<char[]> m_buffer;
    std::size_t m_capacity = 0;
    std::size_t m_begin = 0; // of the bytes that no line has taken yet
    std::size_t m_end = 0;
    bool m_at_end = false;
    bool m_had_newline = true;
    int m_read_error = 0;
    std::uint64_t m_num_bytes = 0;
};
