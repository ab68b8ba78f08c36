// SPDX-License-Identifier: Apache-2.0
// Directory streams that are read entry by entry.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>

#include "files.h"
#include "pkg_stream.h"

namespace zan::tool {

// The entries of a stream, one after the other, with the bytes of files.
class StreamEntries {
  public:
    // `name` is a file, PACKAGE:SECTION, or "-" for standard input. Throws Failure if it can't be opened.
    explicit StreamEntries(const std::string& name);

    // Goes on to the next entry; false at the end. The bytes of a file must have been read by then. Throws
    // Failure if the stream is damaged or can't be read.
    bool next();

    // Of the current entry.
    std::string name() const { return m_reader->name(); }
    bool is_folder() const { return m_reader->header().type == zan::pkg::record_directory; }
    std::uint32_t mode() const { return m_reader->header().mode; } // st_mode of a file
    std::uint32_t size() const { return m_reader->header().size; } // of a file, in bytes

    // Calls `take(bytes, size)` for one piece of a file's bytes after the other. Throws Failure if there are
    // fewer bytes than the entry's size.
    template <typename Take>
    void read_data(Take take) {
        for (std::size_t left = is_folder() ? 0 : size(); left != 0;) {
            const std::size_t count = std::min(left, io_piece);
            read_piece(count);
            take(m_piece.get(), count);
            left -= count;
        }
    }

  private:
    void read_piece(std::size_t count);
    [[noreturn]] void fail(const std::string& reason) const;

    const std::string m_name;
    FileStream m_file; // null for standard input and sections
    FileBytes m_bytes; // of a section
    std::unique_ptr<zan::pkg::StreamReader> m_reader;
    const std::unique_ptr<char[]> m_piece{new char[io_piece]};
};

} // namespace zan::tool
