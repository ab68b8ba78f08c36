// SPDX-License-Identifier: Apache-2.0
#include "json_document.h"

#include <rapidjson/error/en.h>
#include <rapidjson/reader.h>

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <string>

namespace zan::profile {

namespace {

// Hands everything on to the document, numbers as values.
class NumberReader {
  public:
    using Ch = char;
    explicit NumberReader(rapidjson::Document& document) : m_document(document) {}

    bool Null() { return m_document.Null(); }
    bool Bool(bool value) { return m_document.Bool(value); }
    // All numbers come as texts.
    bool Int(int value) { return m_document.Int(value); }
    bool Uint(unsigned value) { return m_document.Uint(value); }
    bool Int64(std::int64_t value) { return m_document.Int64(value); }
    bool Uint64(std::uint64_t value) { return m_document.Uint64(value); }
    bool Double(double value) { return m_document.Double(value); }
    bool RawNumber(const Ch* text, rapidjson::SizeType length, bool) {
        const char* const end = text + length;
        std::uint64_t whole = 0;
        if (is_all(std::from_chars(text, end, whole), end))
            return m_document.Uint64(whole);
        std::int64_t negative = 0;
        // -0 is a double.
        if (is_all(std::from_chars(text, end, negative), end) && negative != 0)
            return m_document.Int64(negative);
        double value = 0;
        if (!is_all(std::from_chars(text, end, value), end))
            value = std::strtod(std::string(text, length).c_str(), nullptr); // beyond the range, or near 0
        m_is_too_large = !std::isfinite(value);
        return !m_is_too_large && m_document.Double(value);
    }
    bool String(const Ch* text, rapidjson::SizeType length, bool copy) {
        return m_document.String(text, length, copy);
    }
    bool StartObject() { return m_document.StartObject(); }
    bool Key(const Ch* text, rapidjson::SizeType length, bool copy) {
        return m_document.Key(text, length, copy);
    }
    bool EndObject(rapidjson::SizeType count) { return m_document.EndObject(count); }
    bool StartArray() { return m_document.StartArray(); }
    bool EndArray(rapidjson::SizeType count) { return m_document.EndArray(count); }

    bool is_too_large() const { return m_is_too_large; }

  private:
    static bool is_all(const std::from_chars_result& read, const char* end) {
        return read.ec == std::errc() && read.ptr == end;
    }
    rapidjson::Document& m_document;
    bool m_is_too_large = false;
};

} // namespace

std::optional<JsonFault> read_json(std::string& text, rapidjson::Document& document) {
    // Iterative: the text may be nested as deeply as it is long.
    constexpr unsigned flags = rapidjson::kParseIterativeFlag | rapidjson::kParseInsituFlag |
                               rapidjson::kParseNumbersAsStringsFlag | rapidjson::kParseValidateEncodingFlag;
    std::optional<JsonFault> fault;
    // A character that the text cuts off is looked for beyond its end.
    constexpr std::size_t longest_rest = 3;
    text.append(longest_rest, '\0');
    const auto generate = [&](rapidjson::Document& target) {
        NumberReader numbers(target);
        rapidjson::InsituStringStream stream(text.data());
        rapidjson::Reader reader;
        const rapidjson::ParseResult result = reader.Parse<flags>(stream, numbers);
        if (result.IsError())
            fault = {result.Offset(),
                     rapidjson::GetParseError_En(numbers.is_too_large() ? rapidjson::kParseErrorNumberTooBig
                                                                        : result.Code())};
        return !result.IsError();
    };
    document.Populate(generate);
    return fault;
}

} // namespace zan::profile
