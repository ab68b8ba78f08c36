// SPDX-License-Identifier: Apache-2.0
#include "pkg_stream.h"

#include <algorithm>
#include <cerrno>
#include <limits>

#include "contract.h"

namespace zan::pkg {

namespace {

constexpr int compression_level = 9;
constexpr const char* no_stream_error = "ret != (-2)";

// zlib counts in 32 bits.
constexpr std::size_t max_zlib_size = std::numeric_limits<uInt>::max();

uInt zlib_size(std::size_t size) {
    return static_cast<uInt>(std::min(size, max_zlib_size));
}

// zlib's parameter isn't const, but it doesn't change its input.
Bytef* zlib_input(const void* data) {
    return static_cast<Bytef*>(const_cast<void*>(data));
}

} // namespace

StreamWriter::~StreamWriter() {
    if (m_started)
        deflateEnd(&m_zlib); // its result only says that something was pending
}

bool StreamWriter::start() {
    m_started = deflateInit(&m_zlib, compression_level) == Z_OK;
    m_zlib.next_out = m_buffer.get();
    m_zlib.avail_out = stream_chunk;
    return m_started;
}

bool StreamWriter::append(const void* data, std::size_t size) {
    for (const auto* bytes = static_cast<const Bytef*>(data); size != 0;) {
        m_zlib.next_in = zlib_input(bytes);
        m_zlib.avail_in = zlib_size(size);
        bytes += m_zlib.avail_in;
        size -= m_zlib.avail_in;
        while (m_zlib.avail_in != 0) {
            const int ret = deflate(&m_zlib, Z_NO_FLUSH);
            ZAN_CONTRACT(ret != Z_STREAM_ERROR, no_stream_error);
            // The call that takes the last of the input may have filled the buffer as well.
            if (m_zlib.avail_out == 0 && !write_pending())
                return false;
        }
    }
    return true;
}

bool StreamWriter::append_entry(RecordType type, std::uint32_t mode, const std::string& name,
                                std::uint32_t size) {
    const RecordHeader header = {record_magic, type, mode, static_cast<std::uint32_t>(name.size() + 1), size};
    return append(&header, sizeof header) && append(name.c_str(), name.size() + 1);
}

bool StreamWriter::finish() {
    const RecordHeader end = {record_magic, record_end, 0, 0, 0};
    m_zlib.next_in = zlib_input(&end);
    m_zlib.avail_in = sizeof end;
    bool written = write_pending();
    bool full = true;
    while (full) {
        const int ret = deflate(&m_zlib, Z_FINISH);
        ZAN_CONTRACT(ret != Z_STREAM_ERROR, no_stream_error);
        full = m_zlib.avail_out == 0;
        written = write_pending() && written;
    }
    ZAN_CONTRACT(m_zlib.avail_in == 0, "z_info->strm.avail_in == 0");
    return written;
}

bool StreamWriter::write_pending() {
    const std::size_t pending = stream_chunk - m_zlib.avail_out;
    m_zlib.next_out = m_buffer.get();
    m_zlib.avail_out = stream_chunk;
    return pending == 0 || std::fwrite(m_buffer.get(), 1, pending, m_output) == pending;
}

StreamReader::StreamReader(const void* bytes, std::size_t size)
    : m_rest(static_cast<const Bytef*>(bytes)), m_rest_size(size) {
}

StreamReader::StreamReader(std::FILE* input) : m_input(input), m_buffer(new Bytef[stream_chunk]) {
}

StreamReader::~StreamReader() {
    if (m_started)
        inflateEnd(&m_zlib);
}

bool StreamReader::start() {
    m_started = inflateInit(&m_zlib) == Z_OK;
    return m_started;
}

StreamReader::Next StreamReader::next() {
    const bool input_waits = m_zlib.avail_in != 0 || m_rest_size != 0;
    if (!input_waits && (!m_input || std::feof(m_input)))
        return Next::cut;
    if (!read(&m_header, sizeof m_header))
        return Next::bad_header;
    if (m_header.magic != record_magic)
        return Next::bad_magic;
    if (m_header.type == record_end)
        return Next::end;
    if (m_header.name_length > max_name_length || !read(m_name.get(), m_header.name_length))
        return Next::bad_name;
    m_name[m_header.name_length] = 0;
    return Next::entry;
}

// The end is found where readers of the format have always found it: in memory each read needs some input
// that is left, and in a file the end counts once a read has met it. A reader that looked further would
// accept, or refuse, other streams.
bool StreamReader::read(void* target, std::size_t size) {
    m_zlib.next_out = static_cast<Bytef*>(target);
    m_zlib.avail_out = zlib_size(size);
    if (size == 0 || size > max_zlib_size)
        return false;
    Inflated inflated = m_zlib.avail_in == 0 ? Inflated::hungry : inflate_into_target();
    while (inflated == Inflated::hungry && refill())
        inflated = inflate_into_target();
    return inflated == Inflated::full;
}

bool StreamReader::ends_well() {
    Bytef none_expected;
    m_zlib.next_out = &none_expected;
    m_zlib.avail_out = 1;
    // zlib may have met the checksum while it read the end record. A byte that still comes out of the stream
    // is something after the end record.
    Inflated inflated = Inflated::hungry;
    while (!m_at_end && inflated == Inflated::hungry && (m_zlib.avail_in != 0 || refill()))
        inflated = inflate_into_target();
    return m_at_end && inflated != Inflated::full;
}

// Supplies zlib with more input; false if there is none.
bool StreamReader::refill() {
    if (m_input) {
        if (std::feof(m_input))
            return false;
        m_zlib.next_in = m_buffer.get();
        m_zlib.avail_in = static_cast<uInt>(std::fread(m_buffer.get(), 1, stream_chunk, m_input));
        if (std::ferror(m_input))
            m_error = errno;
    } else {
        m_zlib.next_in = zlib_input(m_rest);
        m_zlib.avail_in = zlib_size(m_rest_size);
        m_rest += m_zlib.avail_in;
        m_rest_size -= m_zlib.avail_in;
    }
    return m_zlib.avail_in != 0;
}

StreamReader::Inflated StreamReader::inflate_into_target() {
    const int ret = inflate(&m_zlib, Z_NO_FLUSH);
    ZAN_CONTRACT(ret != Z_STREAM_ERROR, no_stream_error);
    m_at_end = ret == Z_STREAM_END;
    if (ret == Z_MEM_ERROR)
        m_error = ENOMEM;
    if (m_zlib.avail_out == 0 && (ret == Z_OK || ret == Z_STREAM_END))
        return Inflated::full;
    return ret == Z_OK && m_zlib.avail_in == 0 ? Inflated::hungry : Inflated::failed;
}

} // namespace zan::pkg
