// SPDX-License-Identifier: Apache-2.0
// One large buffer before a target, so that a report of many small pieces takes few system calls.
//
// What must hold: all writes but the last end at a multiple of 256 KiB of the text, so that the kernel takes
// whole groups of pages. Measured on ext4 with 158 MB: writes of 256 KiB of processor time 35 ms, writes that
// end anywhere 44 ms, of 64 KiB 42 ms, of 1 MiB 33 ms. What is left over moves to the front: 16 KiB of 256.
#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>

#include "byte_target.h"

// Holds up to 288 KiB, whatever the size of the report. The short functions are inline, as each line of a
// report takes several of them. After the target has refused bytes, all further ones are dropped, and good()
// is false.
class TextBuffer {
  public:
    static constexpr std::size_t write_size = std::size_t{1} << 18;
    static constexpr std::size_t capacity = write_size + (std::size_t{1} << 15);

    // The target must outlive the buffer. What is still held at the end is lost without a flush().
    explicit TextBuffer(ByteTarget& target) : m_target(target), m_bytes(new char[capacity]) {}

    // Makes room for `size` bytes, at most the capacity, and returns the place to write them. advance() takes
    // in those before `end`.
    char* reserve(std::size_t size) {
        if (capacity - m_size < size)
            make_room(size);
        return m_bytes.get() + m_size;
    }
    void advance(const char* end) { m_size = static_cast<std::size_t>(end - m_bytes.get()); }
    void skip(std::size_t size) { m_size += size; }

    // A place in the text, and what was written since; nothing if a part of that has gone to the target.
    struct Mark {
        std::size_t size;
        std::size_t num_flushes;
    };
    Mark mark() const { return {m_size, m_num_flushes}; }
    std::string_view since(const Mark& mark) const {
        if (mark.num_flushes != m_num_flushes)
            return {};
        return {m_bytes.get() + mark.size, m_size - mark.size};
    }

    // A literal has a size that the compiler knows, which makes the copy an instruction or two.
    template <std::size_t size>
    void append(const char (&literal)[size]) {
        std::memcpy(reserve(size - 1), literal, size - 1);
        m_size += size - 1;
    }
    void append_blanks(std::size_t count) {
        for (; count > blanks.size(); count -= blanks.size())
            append_block(blanks.size());
        append_block(count);
    }

    void flush();
    bool good() const { return m_good; }

  private:
    void make_room(std::size_t size);
    void write(std::size_t size);

    static constexpr std::string_view blanks =
        "                                                                ";

    // All blanks are copied, which is quicker than a copy of a size that isn't known; `count` are taken in.
    void append_block(std::size_t count) {
        std::memcpy(reserve(blanks.size()), blanks.data(), blanks.size());
        m_size += count;
    }

    ByteTarget& m_target;
    std::unique_ptr<char[]> m_bytes;
    std::size_t m_size = 0;
    std::size_t m_num_flushes = 0;
    std::size_t m_written = 0; // bytes of the text that have left
    bool m_good = true;
};
