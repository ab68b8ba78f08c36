// SPDX-License-Identifier: Apache-2.0
// A text in pieces, as RapidJSON's readers take it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include <rapidjson/reader.h>

#include "byte_source.h"
#include "json_characters.h"

namespace zan::profile {

// A stream of RapidJSON over a source of bytes. It holds one piece of the text.
//
// What must hold: a piece is followed by a zero byte and by readable bytes, so loops over blanks and digits
// need no check for its end, and may load eight bytes at a time. RapidJSON takes a zero byte for the end of
// the text; at_end() says whether it is.
class TextPieces {
  public:
    using Ch = char;
    static constexpr std::size_t piece_size = std::size_t{1} << 16;
    // How many bytes after a piece can be read.
    static constexpr std::size_t num_readable = 128;

    // The source must outlive it. `most` bytes may follow a mark() until the next one; a longer text ends
    // there, and is_over_limit() says so.
    TextPieces(ByteSource& source, std::size_t most);

    char Peek() {
        if (*m_at == '\0' && m_at == m_end)
            refill();
        return *m_at;
    }
    char Take() {
        const char c = Peek();
        if (m_at != m_end)
            ++m_at;
        return c;
    }
    // How many bytes were taken.
    std::size_t Tell() const { return m_offset - static_cast<std::size_t>(m_end - m_at); }
    // RapidJSON's streams have these. They are for streams that are written to.
    void Put(char) {}
    void Flush() {}
    char* PutBegin() { return nullptr; }
    std::size_t PutEnd(char*) { return 0; }

    void skip_blanks() {
        do {
            m_at = skip_json_blanks(m_at);
        } while (m_at == m_end && refill());
    }

    // The next bytes of the piece; what is after it is a zero byte.
    const char* position() const { return m_at; }
    // Takes the bytes before `position`, which is in the piece or at its end.
    void advance(const char* position) { m_at = position; }
    // A token has ended here.
    void mark() { m_mark = Tell(); }

    // Whether no bytes are left. Reads the next piece if the current one is used up.
    bool at_end();
    bool is_over_limit() const { return m_is_over_limit; }
    // Why the source couldn't be read; empty if it could.
    const std::string& failure() const { return m_failure; }

  private:
    // Reads the next piece; false if there is none.
    bool refill();

    ByteSource& m_source;
    std::size_t m_most;
    std::unique_ptr<char[]> m_bytes;
    const char* m_at;
    const char* m_end;
    std::size_t m_offset = 0; // of the end of the piece
    std::size_t m_mark = 0;
    bool m_has_ended = false;
    bool m_is_over_limit = false;
    std::string m_failure;
};

} // namespace zan::profile

namespace rapidjson {

// Indentation is most of a report.
template <>
inline void SkipWhitespace(zan::profile::TextPieces& is) {
    is.skip_blanks();
}

} // namespace rapidjson
