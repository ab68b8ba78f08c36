// SPDX-License-Identifier: Apache-2.0
#include "report_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "node_events.h"
#include "reread_report.h"
#include "whole_file.h"

using namespace zan::profile;

namespace {

namespace fs = std::filesystem;
using Events = std::vector<std::string>;

const std::string start = R"({"json_type": "Corvane Profiler JSON")"; // 37 bytes
const std::string start_event = "json_type text Corvane Profiler JSON";

// The events of a report that has these members, in pieces of `most` bytes.
Events events_of(const std::string& members, std::size_t most = std::string::npos) {
    const std::string report = start + members + "}";
    MemorySource source(report, most);
    NodeEventList events;
    const auto fault = read_report(source, events);
    EXPECT_EQ(fault ? describe(*fault) : "", "") << report;
    EXPECT_EQ(events.list.empty() ? "" : events.list[0], start_event);
    if (!events.list.empty())
        events.list.erase(events.list.begin());
    return events.list;
}

ReportFault fault_of_text(const std::string& text) {
    MemorySource source(text);
    NodeEventList events;
    const auto fault = read_report(source, events);
    EXPECT_TRUE(fault) << text;
    return fault.value_or(ReportFault{});
}

struct KindAndOffset {
    ReportFaultKind kind;
    std::uint64_t offset;
    bool operator==(const KindAndOffset&) const = default;
};
KindAndOffset place_of_fault(const std::string& text) {
    const ReportFault fault = fault_of_text(text);
    EXPECT_NE(fault.text, "");
    return {fault.kind, fault.offset};
}

std::vector<fs::path> sample_reports() {
    std::vector<fs::path> reports;
    for (const auto& entry : fs::directory_iterator(ZAN_SAMPLES_FOLDER)) {
        if (entry.is_directory())
            reports.push_back(entry.path() / "expected_report.json");
    }
    return reports;
}

class SampleReport : public testing::TestWithParam<fs::path> {};

// At one byte at a time each value is read the slow way; at others the pieces end anywhere.
TEST_P(SampleReport, IsWrittenAsItWasRead) {
    const std::string report = read_file(GetParam());
    EXPECT_EQ(reread(report), report);
    for (const std::size_t most : std::initializer_list<std::size_t>{1, 7, 64, 1000})
        EXPECT_EQ(reread(report, most), report) << most;
}

INSTANTIATE_TEST_SUITE_P(Samples, SampleReport, testing::ValuesIn(sample_reports()),
                         [](const auto& info) { return info.param.parent_path().filename().string(); });

TEST_P(SampleReport, IsCutWhereverItEndsEarly) {
    const std::string report = read_file(GetParam());
    const std::size_t whole = report.rfind('}') + 1;
    for (std::size_t size = 1; size < whole; size += size < 200 ? 1 : 37) {
        const ReportFault fault = fault_of_text(report.substr(0, size));
        ASSERT_EQ(fault.kind, ReportFaultKind::cut) << size << fault.text;
        ASSERT_EQ(fault.offset, size);
    }
    EXPECT_EQ(reread(report.substr(0, whole)), report); // all but the newline
}

TEST(ReportReader, TextsObjectsAndArraysBecomeNodes) {
    EXPECT_EQ(events_of(R"(, "a": "x", "o": {"b": "y", "p": {"c": "z"}}, "l": [{"d": "1"}, {"d": "2"}])"),
              (Events{"a text x", "o open object", "b text y", "p open object", "c text z", "close", "close",
                      "l open array", "open object", "d text 1", "close", "open object", "d text 2", "close",
                      "close"}));
}

TEST(ReportReader, EmptyArraysAreEmptyTextsUnlessTheyAreJSONsOwn) {
    EXPECT_EQ(events_of(R"(, "a": "", "b": [], "c": {}, "d": [""])"),
              (Events{"a text ", "b open array", "close", "c open object", "close", "d open array", "text ",
                      "close"}));
}

TEST(ReportReader, ArraysOfNumbersArePacked) {
    EXPECT_EQ(
        events_of(R"(, "a": ["1", "-1"], "b": ["0", "0.5"], "c": [["7"], ["8"]])"),
        (Events{"a integers 1 -1", "b floats 0 0.5", "c open array", "integers 7", "integers 8", "close"}));
}

TEST(ReportReader, AnArrayWithAnotherTextComesAsTexts) {
    const Events texts = {"a open array", "text 1", "text 2", "text x", "text 3", "close"};
    EXPECT_EQ(events_of(R"(, "a": ["1", "2", "x", "3"])"), texts);
    EXPECT_EQ(events_of(R"(, "a": ["1", "02"])"), (Events{"a open array", "text 1", "text 02", "close"}));
    EXPECT_EQ(events_of(R"(, "a": ["0.5", "10000000"])"),
              (Events{"a open array", "text 0.5", "text 10000000", "close"}));
    EXPECT_EQ(events_of(R"(, "a": ["1", {"b": "2"}, ["3"], "4"])"),
              (Events{"a open array", "text 1", "open object", "b text 2", "close", "integers 3", "text 4",
                      "close"}));
}

// Nodes are the same wherever the pieces end.
TEST(ReportReader, PiecesMayEndAnywhere) {
    std::string members = R"(, "k": "v", "l": ["1)";
    for (int i = 0; i < 100; ++i)
        members += "\",\n                \"" + std::to_string(i * i * i);
    members += R"("], "m": [ "0.5", "1" ], "n": ["1", "x"], "o": [{"p" : "q\u00e4\n"}], "r": [])";
    const Events expected = events_of(members);
    EXPECT_EQ(expected.size(), 14u);
    for (const std::size_t most : std::initializer_list<std::size_t>{1, 2, 3, 5, 8, 13, 100, 500})
        EXPECT_EQ(events_of(members, most), expected) << most;
}

// The numbers of a long array, which comes open, then in pieces, then texts.
std::string joined_elements(const Events& events, std::size_t& longest) {
    std::string joined;
    for (const std::string& event : events) {
        const bool is_piece = event.starts_with("more integers ");
        if (is_piece)
            longest = std::max(longest, static_cast<std::size_t>(std::ranges::count(event, ' ')) - 1);
        const std::string_view text = std::string_view(event).substr(event.find(' ') + 1);
        if (is_piece)
            joined += text.substr(text.find(' '));
        else if (event.starts_with("text "))
            joined += " " + std::string(text);
    }
    return joined;
}

// The sink gets numbers when there are 16,384 or more after a piece of the text, which has 65,536 bytes, and
// so at most 65,536 / 8 of numbers with five digits.
TEST(ReportReader, ALongArrayComesInPieces) {
    std::string members = R"(, "a": ["10000")";
    std::string expected = " 10000";
    for (int i = 10'001; i < 80'000; ++i) {
        members += ",\"" + std::to_string(i) + '"';
        expected += " " + std::to_string(i);
    }
    for (const std::string_view end : {"", "x"}) {
        const std::string text = end.empty() ? "" : ",\"x\"";
        const Events events = events_of(members + text + "]");
        EXPECT_EQ(events.front(), "a open array");
        EXPECT_EQ(events.back(), "close");
        std::size_t longest = 0;
        EXPECT_EQ(joined_elements(events, longest), expected + (end.empty() ? "" : " x"));
        EXPECT_GT(longest, 16'383u);
        EXPECT_LE(longest, 16'383u + 65'536 / 8);
    }
}

// 16,384 numbers are the fewest that come as elements.
TEST(ReportReader, AnArrayOfSomeThousandIsOneArray) {
    std::string members = R"(, "a": ["0.5")";
    std::string expected = "a floats 0.5";
    for (int i = 1; i < 16'383; ++i) {
        members += ",\"1\"";
        expected += " 1";
    }
    EXPECT_EQ(events_of(members + "]"), Events{expected});
    const Events events = events_of(members + ",\"2\"]");
    EXPECT_EQ(events, (Events{"a open array", "more " + expected.substr(2) + " 2", "close"}));
}

TEST(ReportReader, ATextHasTheBytesThatItWasWrittenFrom) {
    EXPECT_EQ(events_of(R"(, "a": "\u00C3\u00bc \/ \\ \" \b\f\n\r\u0009 \u0000x")"),
              Events{std::string("a text \xC3\xBC / \\ \" \b\f\n\r\t ") + '\0' + "x"});
    EXPECT_EQ(events_of(R"(, "\u00C3": "1")"), Events{"\xC3 text 1"});
    // As other programs write the same characters.
    EXPECT_EQ(events_of(", \"a\": \"\xC3\x83\xC2\xBC\""), Events{"a text \xC3\xBC"});
}

TEST(ReportReader, CharactersThatStandForNoByteAreRefused) {
    // The quote that ends the text is 9 bytes after what stands before "a".
    EXPECT_EQ(place_of_fault(start + R"(,"a":"\u0100"})"),
              (KindAndOffset{ReportFaultKind::odd_value, start.size() + 12}));
    EXPECT_EQ(place_of_fault(start + ",\"a\":\"\xE2\x82\xAC\"}").kind, ReportFaultKind::odd_value);
    EXPECT_EQ(place_of_fault(start + ",\"a\":\"\xC3\"}").kind, ReportFaultKind::odd_value);
    EXPECT_EQ(place_of_fault(start + ",\"a\":\"\x80\"}").kind, ReportFaultKind::odd_value);
    EXPECT_EQ(place_of_fault(start + ",\"\xFF\":\"1\"}").kind, ReportFaultKind::odd_value);
}

TEST(ReportReader, WhatNoReportHasIsRefusedAtItsFirstByte) {
    for (const char* value : {"1", "-1.5e7", "true", "false", "null"}) {
        const KindAndOffset expected{ReportFaultKind::odd_value, start.size() + 5};
        EXPECT_EQ(place_of_fault(start + ",\"a\":" + value + "}"), expected) << value;
    }
    EXPECT_EQ(describe(fault_of_text(start + R"(, "a": ["1", 2]})")),
              "byte 50: a number where a report has a text in quotes");
}

TEST(ReportReader, WhatIsNoReportIsRefused) {
    for (const char* text :
         {"", " \n", "{}", "[]", "\"json_type\"", "\"Corvane Profiler JSON\"", "hello", "<xml/>", "1",
          R"({"schema": "x"})", R"({"json_type": "other"})",
          R"({"a": "1", "json_type": "Corvane Profiler JSON"})", R"({"json_type": 1})",
          R"({"json_type": {}})", R"({"json_type": ["Corvane Profiler JSON"]})", R"({"json_type": null})",
          "\x7F"
          "ELF",
          "\x1F\x8B\x08"})
        EXPECT_EQ(fault_of_text(text).kind, ReportFaultKind::no_report) << text;
    EXPECT_EQ(describe(fault_of_text("{}")),
              R"(byte 1: this is no report: it doesn't begin with "json_type": "Corvane Profiler JSON")");
}

TEST(ReportReader, WrongNestingIsASyntaxFaultWithItsPlace) {
    const auto at = [](std::size_t place) {
        return KindAndOffset{ReportFaultKind::syntax, start.size() + place};
    };
    EXPECT_EQ(place_of_fault(start + "]"), at(0));
    EXPECT_EQ(place_of_fault(start + R"(,"a":["1"}})"), at(9));
    EXPECT_EQ(place_of_fault(start + R"(,"a":{"b":"1"]})"), at(13));
    EXPECT_EQ(place_of_fault(start + R"(,"a" "1"})"), at(5));
    EXPECT_EQ(place_of_fault(start + R"(,"a":["1" "2"]})"), at(10));
    EXPECT_EQ(place_of_fault(start + R"(,"a":["1",]})"), at(10));
    EXPECT_EQ(place_of_fault(start + R"(,})"), at(1));
    EXPECT_EQ(place_of_fault(start + R"(,"a":"\x"})").kind, ReportFaultKind::syntax);
    EXPECT_EQ(place_of_fault(start + "} x"), at(2));
    EXPECT_EQ(place_of_fault(start + "}}"), at(1));
    EXPECT_EQ(place_of_fault(start + "}" + std::string(1, '\0')), at(1));
    EXPECT_EQ(place_of_fault(start + ",\"a\":\"" + std::string(1, '\0') + "\"}"), at(6));
}

TEST(ReportReader, DepthIsBoundedAndTakesNoStack) {
    const auto nested = [](std::size_t levels) {
        return start + ",\"a\":" + std::string(levels, '[') + std::string(levels, ']') + "}";
    };
    EXPECT_EQ(place_of_fault(nested(max_report_depth)),
              (KindAndOffset{ReportFaultKind::over_limit, start.size() + 5 + max_report_depth - 1}));
    const std::string deepest = nested(max_report_depth - 1);
    MemorySource deep(deepest);
    NodeEventList events;
    EXPECT_EQ(read_report(deep, events), std::nullopt);
    EXPECT_EQ(events.list.size(), 1 + 2 * (max_report_depth - 1));
}

TEST(ReportReader, ATextOverTheLimitIsRefused) {
    const std::string report = start + ",\"a\":\"" + std::string(max_report_text + 2 * 65536, 'x') + "\"}";
    EXPECT_EQ(fault_of_text(report).kind, ReportFaultKind::over_limit);
}

class FailingAfter final : public ByteSource {
  public:
    explicit FailingAfter(std::string_view bytes) : m_bytes(bytes) {}
    std::size_t read(char* to, std::size_t size) override {
        const std::size_t count = m_bytes.read(to, size);
        return count != 0 ? count : throw std::system_error(EIO, std::generic_category());
    }

  private:
    MemorySource m_bytes;
};

TEST(ReportReader, AReadFailureIsAFault) {
    for (const std::string& bytes : {std::string(), start, start + "}"}) {
        FailingAfter source(bytes);
        NodeEventList events;
        EXPECT_EQ(read_report(source, events), (ReportFault{ReportFaultKind::not_read, bytes.size(),
                                                            "can't be read: Input/output error"}));
    }
}

TEST(ReportReader, FaultsOfTheSyntaxAreInWordsOfRapidJson) {
    // Without the point at the end of the sentence, and its capital letter.
    EXPECT_EQ(describe(fault_of_text("hello")), "byte 0: this is no report: invalid value");
    EXPECT_EQ(fault_of_text(start + ",\"a\" \"1\"}").text, "missing a colon after a name of object member");
    EXPECT_EQ(fault_of_text(start + "} x").text, "the document root must not be followed by other values");
}

} // namespace
