// SPDX-License-Identifier: Apache-2.0
// JSON inside a page.
#pragma once

#include <rapidjson/writer.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zan::tool {

// Takes the writer's bytes. In a script element "<" could begin its end tag, so that, as ">" and "&", it is
// written as \u003c. All three occur only inside of texts.
class PageJsonText {
  public:
    using Ch = char;
    void Put(char c);
    void Flush() {}
    const std::string& text() const { return m_text; }

  private:
    std::string m_text;
};

// Writes one JSON document. What isn't known, and what is no number, is null.
class PageJson {
  public:
    PageJson() : m_writer(m_out) {}

    PageJson& key(std::string_view name);
    // Bytes that are no UTF-8 become U+FFFD.
    void text(std::string_view value);
    void number(double value);
    void number(const std::optional<double>& value);
    void count(std::uint64_t value) { m_writer.Uint64(value); }
    void integer(std::int64_t value) { m_writer.Int64(value); }
    // units · 10^-digits, with all its digits.
    void decimal(std::int64_t units, int digits);
    void boolean(bool value) { m_writer.Bool(value); }
    void begin_object() { m_writer.StartObject(); }
    void end_object() { m_writer.EndObject(); }
    void begin_array() { m_writer.StartArray(); }
    void end_array() { m_writer.EndArray(); }

    const std::string& result() const { return m_out.text(); }

  private:
    PageJsonText m_out;
    rapidjson::Writer<PageJsonText> m_writer;
};

} // namespace zan::tool
