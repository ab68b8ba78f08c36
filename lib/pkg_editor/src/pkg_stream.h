// SPDX-License-Identifier: Apache-2.0
// Directory streams, record by record: what packing and unpacking share, for C++ callers who name, check or
// store the entries in their own way. docs/stream.md describes the format.
#pragma once

#include <zlib.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

namespace zan::pkg {

enum RecordType : std::uint32_t { record_file, record_directory, record_end };

constexpr std::uint32_t record_magic = 0xBEEFFEEB;

// The beginning of each entry, in the byte order of the machine. After it come the name with its NUL, then a
// file's bytes.
struct RecordHeader {
    std::uint32_t magic;
    std::uint32_t type;        // a RecordType; others count as files
    std::uint32_t mode;        // st_mode of a file
    std::uint32_t name_length; // with its NUL
    std::uint32_t size;        // of a file's data, in bytes
};
static_assert(sizeof(RecordHeader) == 20, "records have no padding");

// Longest name that can be read from a stream, with its NUL.
constexpr std::size_t max_name_length = 8192;
// Compressed bytes are read and written in pieces of this size.
constexpr std::size_t stream_chunk = 32768;

// Writes a stream to a file, which stays the caller's.
class StreamWriter {
  public:
    explicit StreamWriter(std::FILE* output) : m_output(output) {}
    StreamWriter(const StreamWriter&) = delete;
    StreamWriter& operator=(const StreamWriter&) = delete;
    ~StreamWriter();

    // Has to be called first, and once; false if there is no memory.
    bool start();
    // Appends bytes to the stream's contents; false if a write failed.
    bool append(const void* data, std::size_t size);
    // Appends a header and the name; a file's bytes are the caller's to append.
    bool append_entry(RecordType type, std::uint32_t mode, const std::string& name, std::uint32_t size);
    // Appends the end record and writes what is pending, all of it even after a failed write; false if one
    // failed. Nothing can be appended after this.
    bool finish();

  private:
    bool write_pending();

    std::FILE* m_output;
    z_stream m_zlib{};
    bool m_started = false;
    const std::unique_ptr<Bytef[]> m_buffer{new Bytef[stream_chunk]};
};

// Reads a stream from memory or from a file. Nothing in it is trusted: any bytes lead to an end or to a
// fault.
class StreamReader {
  public:
    enum class Next {
        entry, // header() and name() are about it
        end,   // the end record
        cut,   // no input where a record should begin, which ends a stream as well
        bad_header,
        bad_magic,
        bad_name, // cut, empty, or longer than max_name_length
    };

    // The bytes, or the file, stay the caller's and must outlive the reader.
    StreamReader(const void* bytes, std::size_t size);
    explicit StreamReader(std::FILE* input);
    StreamReader(const StreamReader&) = delete;
    StreamReader& operator=(const StreamReader&) = delete;
    ~StreamReader();

    // Has to be called first, and once; false if there is no memory.
    bool start();
    // Goes on to the next record. The bytes of the previous one must have been read.
    Next next();
    const RecordHeader& header() const { return m_header; }
    // The entry's name up to its first NUL.
    const char* name() const { return m_name.get(); }
    // Reads exactly `size` bytes of the contents into `target`; false if there are fewer, or if none are
    // asked for.
    bool read(void* target, std::size_t size);
    // Whether the stream's checksum follows the end record, and is right. Nothing can be read after this.
    bool ends_well();
    // The errno of a failure that is no fault of the stream: of reading the file, or of memory. 0 if there
    // was none.
    int system_error() const { return m_error; }

  private:
    enum class Inflated { full, hungry, failed }; // full: the target; hungry: for more input

    bool refill();
    Inflated inflate_into_target();

    std::FILE* m_input = nullptr;
    const Bytef* m_rest = nullptr; // of a stream in memory: what zlib hasn't got yet
    std::size_t m_rest_size = 0;
    z_stream m_zlib{};
    bool m_started = false;
    int m_error = 0;
    bool m_at_end = false; // zlib has reached the end of the stream, and its checksum is right
    RecordHeader m_header{};
    const std::unique_ptr<char[]> m_name{new char[max_name_length + 1]};
    const std::unique_ptr<Bytef[]> m_buffer; // of a stream in a file
};

} // namespace zan::pkg
