// SPDX-License-Identifier: Apache-2.0
#include "stream_entries.h"

#include <cerrno>
#include <cstdio>

#include "failure.h"
#include "package_arguments.h"
#include "package_file.h"

namespace zan::tool {

using zan::pkg::StreamReader;

StreamEntries::StreamEntries(const std::string& name) : m_name(name) {
    if (name == standard_stream) {
        m_reader = std::make_unique<StreamReader>(stdin);
    } else if (const auto place = parse_section_place(name)) {
        const PackageFile package(place->package);
        m_bytes = package.bytes(package.section(place->section));
        m_reader = std::make_unique<StreamReader>(m_bytes.data(), m_bytes.size());
    } else {
        m_file.reset(std::fopen(name.c_str(), "rb"));
        if (!m_file)
            throw system_failure("can't open " + in_quotes(name));
        m_reader = std::make_unique<StreamReader>(m_file.get());
    }
    if (!m_reader->start())
        throw Failure("there is no memory to unpack " + in_quotes(m_name));
}

// Stricter than the library's unpacking: a stream has to have its end record and a right checksum, so that a
// stream that was cut isn't taken for a whole one.
bool StreamEntries::next() {
    switch (m_reader->next()) {
        case StreamReader::Next::entry:
            return true;
        case StreamReader::Next::end:
            if (!m_reader->ends_well())
                fail("its end is damaged");
            return false;
        case StreamReader::Next::cut:
            fail("it ends without an end record");
        case StreamReader::Next::bad_header:
            fail("it ends early, is damaged, or is no directory stream");
        case StreamReader::Next::bad_magic:
            fail("there is something else where an entry should begin");
        case StreamReader::Next::bad_name:
            fail("an entry has no name that can be read");
    }
    return false;
}

void StreamEntries::read_piece(std::size_t count) {
    if (!m_reader->read(m_piece.get(), count))
        fail("it ends inside " + in_quotes(name()));
}

void StreamEntries::fail(const std::string& reason) const {
    // A disk that can't be read is no damage of the stream.
    errno = m_reader->system_error();
    if (errno != 0)
        throw system_failure("can't read " + in_quotes(m_name));
    throw Failure("can't unpack " + in_quotes(m_name) + ": " + reason);
}

} // namespace zan::tool
