// SPDX-License-Identifier: Apache-2.0
// RapidJSON reads the structure, iteratively, so that depth takes no stack. Two things are read right from
// the piece of text where RapidJSON has just read the value before them: more numbers of an array, by
// PackedNumbers, and more members of an object, by PlainMembers. At the end of the piece, or at anything that
// isn't plain, RapidJSON goes on.
//
// Measured (bench/README.md has the shapes) in processor time, without a sink that does anything: 1,100 to
// 1,500 MB of report a second on L, 670 to 880 on M. RapidJSON alone, with the same events, reads 320 and
// 280.
#include "report_reader.h"

#include <rapidjson/error/en.h>

#include <cctype>

#include "packed_numbers.h"
#include "plain_members.h"
#include "text_pieces.h"

namespace zan::profile {

namespace {

static_assert(PackedNumbers::num_readable < TextPieces::num_readable);

// What is open. An array is `unknown` until its first element; that of `numbers` isn't in the sink yet, and
// of that of `pieces` the sink has the first numbers.
enum class Open : char { object, array, unknown, numbers, pieces };

// A longer array of numbers goes to the sink in pieces.
constexpr std::size_t most_held_numbers = std::size_t{1} << 14;

// Turns RapidJSON's events into nodes. A function returns false to stop, and fault() then says why.
class NodeEvents {
  public:
    using Ch = char;

    NodeEvents(TextPieces& text, ReportSink& sink) : m_text(text), m_sink(sink) {}

    bool Null() { return refuse("null", 4); }
    bool Bool(bool value) { return refuse(value ? "true" : "false", value ? 4 : 5); }
    // With kParseNumbersAsStringsFlag all numbers come as texts.
    bool RawNumber(const char*, rapidjson::SizeType length, bool) { return refuse("a number", length); }
    bool Int(int) { return refuse("a number", 0); }
    bool Uint(unsigned) { return refuse("a number", 0); }
    bool Int64(std::int64_t) { return refuse("a number", 0); }
    bool Uint64(std::uint64_t) { return refuse("a number", 0); }
    bool Double(double) { return refuse("a number", 0); }

    bool String(const char* text, rapidjson::SizeType length, bool) {
        m_text.mark();
        const std::string_view read(text, length);
        return m_is_report ? add_text(read) : begin_report(read);
    }
    bool Key(const char* text, rapidjson::SizeType length, bool) {
        m_text.mark();
        std::string_view key;
        if (!decode({text, length}, key))
            return false;
        m_key = key;
        return m_is_report || m_key == report_type_key || is_no_report();
    }

    bool StartObject() { return open_child(Open::object); }
    bool StartArray() { return open_child(Open::unknown); }
    bool EndObject(rapidjson::SizeType) {
        m_text.mark();
        if (!m_is_report)
            return is_no_report();
        m_open.pop_back();
        if (!m_open.empty())
            m_sink.close();
        add_members(1);
        return true;
    }
    bool EndArray(rapidjson::SizeType) {
        m_text.mark();
        if (m_open.back() == Open::numbers) {
            m_numbers.write(m_sink, key_of_top());
        } else if (m_open.back() == Open::pieces) {
            write_piece();
            m_sink.close();
        } else {
            open_array();
            m_sink.close();
        }
        m_open.pop_back();
        add_members(1);
        return true;
    }

    bool is_report() const { return m_is_report; }
    const std::optional<ReportFault>& fault() const { return m_fault; }

  private:
    bool stop(ReportFaultKind kind, std::size_t before, std::string text) {
        m_fault = ReportFault{kind, m_text.Tell() - before, std::move(text)};
        return false;
    }
    bool refuse(const char* value, std::size_t length) {
        if (!m_is_report)
            return is_no_report();
        return stop(ReportFaultKind::odd_value, length,
                    std::string(value) + " where a report has a text in quotes");
    }
    bool is_no_report() {
        return stop(ReportFaultKind::no_report, 0,
                    "this is no report: it doesn't begin with " + report_start());
    }
    static std::string report_start() {
        return "\"" + std::string(report_type_key) + "\": \"" + std::string(report_type) + "\"";
    }

    bool begin_report(std::string_view type) {
        if (m_open.empty() || type != report_type)
            return is_no_report();
        m_is_report = true;
        m_sink.text(m_key, type);
        return true;
    }

    // A report has bytes from 0x80 up as code points of their own; RapidJSON makes UTF-8 of them. The view
    // holds until the next text.
    bool decode(std::string_view read, std::string_view& bytes) {
        std::size_t ascii = 0;
        while (ascii < read.size() && static_cast<unsigned char>(read[ascii]) < 0x80)
            ++ascii;
        bytes = read;
        return ascii == read.size() || decode_from(ascii, read, bytes);
    }
    bool decode_from(std::size_t begin, std::string_view read, std::string_view& bytes) {
        m_decoded.assign(read.substr(0, begin));
        for (std::size_t i = begin; i < read.size(); ++i) {
            const auto lead = static_cast<unsigned char>(read[i]);
            if (lead < 0x80) {
                m_decoded += read[i];
                continue;
            }
            const unsigned next = i + 1 < read.size() ? static_cast<unsigned char>(read[i + 1]) : 0;
            if ((lead != 0xC2 && lead != 0xC3) || (next & 0xC0) != 0x80)
                return stop(ReportFaultKind::odd_value, 1,
                            "the text that ends here has a character that stands for no byte");
            m_decoded += static_cast<char>((lead & 3U) << 6U | (next & 0x3FU));
            ++i;
        }
        bytes = m_decoded;
        return true;
    }

    bool add_text(std::string_view read) {
        if (m_open.back() != Open::object && m_open.back() != Open::array) {
            if (add_number(read))
                return true;
            open_array();
        }
        std::string_view bytes;
        if (!decode(read, bytes))
            return false;
        m_sink.text(m_open.back() == Open::object ? std::string_view(m_key) : std::string_view(), bytes);
        add_members(0);
        return true;
    }
    bool add_number(std::string_view read) {
        if (m_open.back() == Open::unknown)
            m_numbers.clear();
        if (!m_numbers.add(read))
            return false;
        if (m_open.back() == Open::unknown)
            m_open.back() = Open::numbers;
        m_text.advance(m_numbers.add_elements(m_text.position(), std::string_view::npos));
        m_text.mark();
        if (m_numbers.size() >= most_held_numbers)
            write_piece();
        return true;
    }
    void write_piece() {
        if (m_open.back() == Open::numbers)
            m_sink.open(key_of_top(), Form::array);
        m_open.back() = Open::pieces;
        if (m_numbers.size() != 0)
            m_numbers.write_elements(m_sink);
        m_numbers.clear();
    }

    // Reads the plain members after one that is complete but for `num_left` bytes. RapidJSON takes these
    // after the event, whatever they are, so as many of the last member are left to it.
    void add_members(std::size_t num_left) {
        if (m_open.empty() || m_open.back() != Open::object)
            return;
        m_text.advance(add_plain_members(m_text.position() + num_left, m_numbers, m_sink) - num_left);
        m_text.mark();
    }

    bool open_child(Open kind) {
        m_text.mark();
        if (m_open.size() == max_report_depth)
            return stop(ReportFaultKind::over_limit, 0,
                        "nodes are nested more than " + std::to_string(max_report_depth) + " levels deep");
        if (m_open.empty() ? kind != Open::object : !m_is_report)
            return is_no_report();
        if (!m_open.empty())
            open_array();
        m_open.push_back(kind);
        if (kind == Open::object && m_open.size() > 1)
            m_sink.open(key_of_top(), Form::object);
        return true;
    }
    // Writes to the sink what it doesn't have yet of an array.
    void open_array() {
        Open& top = m_open.back();
        if (top == Open::object || top == Open::array)
            return;
        if (top != Open::pieces)
            m_sink.open(key_of_top(), Form::array);
        if (top != Open::unknown)
            m_numbers.write_texts(m_sink);
        top = Open::array;
    }
    // m_key is the last one that was read: that of what is open on top, if it has any.
    std::string_view key_of_top() const {
        const bool is_member = m_open[m_open.size() - 2] == Open::object;
        return is_member ? std::string_view(m_key) : std::string_view();
    }

    TextPieces& m_text;
    ReportSink& m_sink;
    std::vector<Open> m_open;
    std::string m_key;
    std::string m_decoded;
    PackedNumbers m_numbers;
    bool m_is_report = false;
    std::optional<ReportFault> m_fault;
};

// RapidJSON's texts are sentences; this is one without its point and its capital letter.
std::string parse_error_text(rapidjson::ParseErrorCode code) {
    std::string text = rapidjson::GetParseError_En(code);
    text.erase(text.find_last_not_of('.') + 1);                                     // npos + 1 is 0
    text[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(text[0]))); // 0 stays 0
    return text;
}

// Why RapidJSON, or the events, stopped. What is wrong with the text itself comes before what RapidJSON makes
// of it.
ReportFault reading_fault(const rapidjson::ParseResult& result, TextPieces& text, const NodeEvents& events) {
    if (!text.failure().empty())
        return {ReportFaultKind::not_read, text.Tell(), "can't be read: " + text.failure()};
    if (text.is_over_limit())
        return {ReportFaultKind::over_limit, text.Tell(),
                "a text, or blanks, of more than " + std::to_string(max_report_text) + " bytes"};
    if (events.fault())
        return *events.fault();
    if (result.Code() == rapidjson::kParseErrorDocumentEmpty)
        return {ReportFaultKind::no_report, text.Tell(), "this is no report: it is empty"};
    if (text.at_end())
        return {ReportFaultKind::cut, text.Tell(), "the text ends early: the report is cut"};
    if (!events.is_report())
        return {ReportFaultKind::no_report, result.Offset(),
                "this is no report: " + parse_error_text(result.Code())};
    return {ReportFaultKind::syntax, result.Offset(), parse_error_text(result.Code())};
}

} // namespace

std::string describe(const ReportFault& fault) {
    return "byte " + std::to_string(fault.offset) + ": " + fault.text;
}

std::optional<ReportFault> read_report(ByteSource& source, ReportSink& sink) {
    TextPieces text(source, max_report_text);
    NodeEvents events(text, sink);
    rapidjson::Reader reader;
    constexpr unsigned flags = rapidjson::kParseIterativeFlag | rapidjson::kParseNumbersAsStringsFlag;
    const rapidjson::ParseResult result = reader.Parse<flags>(text, events);
    if (result.IsError() || text.is_over_limit() || !text.failure().empty())
        return reading_fault(result, text, events);
    // RapidJSON takes a zero byte for the end.
    if (!text.at_end())
        return ReportFault{ReportFaultKind::syntax, text.Tell(), "a byte 0 after the report"};
    return std::nullopt;
}

} // namespace zan::profile
