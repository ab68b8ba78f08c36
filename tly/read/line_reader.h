// The lines of a file, read in large blocks.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

// Reads what std::getline would read, from a regular file or a pipe. Memory is that of the longest line.
class LineReader {
  public:
    explicit LineReader(const std::string& path);
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;
    ~LineReader();

    bool is_open() const { return m_fd >= 0; }

    // Takes the next line without its newline; the last line needs none. The view holds until the next call.
    // False at the end of the file, and where it can't be read any further: a folder counts as an empty file,
    // and a line whose end can't be read is none.
    bool next(std::string_view& line);

  private:
    void make_room();
    bool fill();

    int m_fd;
    std::unique_ptr<char[]> m_buffer;
    std::size_t m_capacity = 0;
    std::size_t m_begin = 0; // of the bytes that no line has taken yet
    std::size_t m_end = 0;
    bool m_at_end = false;
};
