// SPDX-License-Identifier: Apache-2.0
// What each attribute type makes of a text, and what is reported when it can't make anything of it.
#include <cmath>
#include <limits>
#include <optional>
#include <span>
#include <sstream>

#include "BaseVisitor.h"
#include "contract_death.h"
#include "xml_probe.h"

namespace zan::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using xml::unsigned64_hex;
using xml::unsigned_hex;

// A text and the value it is read as; no value for a type error.
template <typename T>
struct Row {
    std::string text;
    std::optional<T> value;
};

constexpr std::nullopt_t TYPE_ERROR = std::nullopt;
constexpr float INF = std::numeric_limits<float>::infinity();
constexpr float NAN_VALUE = std::numeric_limits<float>::quiet_NaN();

template <typename T>
bool same(const T& a, const T& b) {
    return a == b;
}

bool same(float a, float b) {
    return (std::isnan(a) && std::isnan(b)) || a == b;
}

template <typename T>
void expect_read_as(std::span<const Row<T>> rows) {
    tinyxml2::XMLDocument doc;
    tinyxml2::XMLElement* elem = doc.NewElement("E");
    for (const Row<T>& row : rows) {
        elem->SetAttribute("x", row.text.c_str());
        RecordingCallbacks callbacks;
        ProbeVisitor visitor(&callbacks);
        T value{};
        EXPECT_EQ(visitor.query_attribute(*elem, "x", &value, true, true), row.value.has_value()) << row.text;
        EXPECT_EQ(visitor.m_has_error, !row.value.has_value()) << row.text;
        if (row.value) {
            EXPECT_TRUE(same(value, *row.value)) << "'" << row.text << "' is read as " << value;
            EXPECT_THAT(callbacks.errors, IsEmpty());
        } else {
            EXPECT_THAT(callbacks.errors,
                        ElementsAre("Error in 'a.xml'\nIncorrect type for attribute 'x' on element 'E'.\n"));
        }
    }
}

// Every text is a string, as it stands.
const Row<std::string> STRINGS[] = {
    {"", ""},
    {"abc", "abc"},
    {" a  b ", " a  b "},
    {"0x10", "0x10"},
    {"<&>\"'", "<&>\"'"},
    {"a\n\tb", "a\n\tb"},
    {"\xc3\xa4\xff", "\xc3\xa4\xff"},
};

TEST(AttributeValues, String) {
    expect_read_as<std::string>(STRINGS);
}

// Decimal digits and nothing else. 2^32 is 4294967296, 2^64 is 18446744073709551616.
const Row<unsigned int> UNSIGNEDS[] = {
    {"0", 0},
    {"7", 7},
    {"42", 42},
    {"007", 7},
    {"010", 10},
    {"0000000000000000000000000000001", 1},
    {"2147483648", 2147483648},
    {"4294967295", 4294967295},
    {"4294967296", 0},                       // 2^32
    {"4294967297", 1},                       // 2^32 + 1
    {"8589934597", 5},                       // 2 * 2^32 + 5
    {"18446744073709551614", 4294967294},    // 2^64 - 2
    {"18446744073709551615", 4294967295},    // 2^64 - 1
    {"18446744073709551616", 4294967295},    // 2^64 saturates to 2^64 - 1
    {"99999999999999999999999", 4294967295}, // as above
    {"", TYPE_ERROR},
    {"-1", TYPE_ERROR},
    {"+1", TYPE_ERROR},
    {"--1", TYPE_ERROR},
    {" 5", TYPE_ERROR},
    {"5 ", TYPE_ERROR},
    {"\t5", TYPE_ERROR},
    {"5\n", TYPE_ERROR},
    {" ", TYPE_ERROR},
    {"12a", TYPE_ERROR},
    {"a12", TYPE_ERROR},
    {"0x10", TYPE_ERROR},
    {"0X10", TYPE_ERROR},
    {"1.0", TYPE_ERROR},
    {"1e3", TYPE_ERROR},
    {"1,000", TYPE_ERROR},
    {"1'000", TYPE_ERROR},
    {"ten", TYPE_ERROR},
    {"/", TYPE_ERROR}, // the neighbours of the digits
    {":", TYPE_ERROR},
    {"\xc2\xb2", TYPE_ERROR}, // superscript two
};

TEST(AttributeValues, UnsignedInt) {
    expect_read_as<unsigned int>(UNSIGNEDS);
}

// One token with its base prefix; what follows the token doesn't matter.
const Row<unsigned_hex> HEXES[] = {
    {"0", 0u},
    {"16", 16u},
    {"4096", 4096u},
    {"0x0", 0u},
    {"0x10", 16u},
    {"0X10", 16u},
    {"0x1000", 4096u},
    {"0xaF", 175u},
    {"010", 8u},
    {"00", 0u},
    {"037777777777", 4294967295u},
    {"040000000000", 0u}, // 2^32 in octal
    {"0xffffffff", 4294967295u},
    {"0x100000000", 0u},
    {"0x123456789", 0x23456789u},
    {"0x1ffffffffffffffff", 4294967295u}, // above 2^64, saturates
    {"4294967296", 0u},
    {" 16", 16u},
    {"16 ", 16u},
    {"16 17", 16u},
    {"16 abc", 16u},
    {"\n\t0x20\t", 32u},
    {"", TYPE_ERROR},
    {" ", TYPE_ERROR},
    {" \n\t", TYPE_ERROR},
    {"0x", TYPE_ERROR},
    {"0x 10", TYPE_ERROR},
    {"0x10g", TYPE_ERROR},
    {"0xg", TYPE_ERROR},
    {"0x-1", TYPE_ERROR},
    {"08", TYPE_ERROR},
    {"0189", TYPE_ERROR},
    {"00x10", TYPE_ERROR},
    {"x10", TYPE_ERROR},
    {"ff", TYPE_ERROR},
    {"0b1", TYPE_ERROR},
    {"-1", TYPE_ERROR},
    {"-0x10", TYPE_ERROR},
    {"+16", TYPE_ERROR},
    {"1.5", TYPE_ERROR},
    {"0x1.8p1", TYPE_ERROR},
    {"12,13", TYPE_ERROR},
    {"abc 16", TYPE_ERROR},
};

TEST(AttributeValues, UnsignedHex) {
    expect_read_as<unsigned_hex>(HEXES);
}

const Row<unsigned64_hex> HEXES64[] = {
    {"0", 0ull},
    {"010", 8ull},
    {"0x10", 16ull},
    {"16", 16ull},
    {"0x100000000", 4294967296ull},
    {"4294967296", 4294967296ull},
    {"0x7fffffffffffffff", 9223372036854775807ull},
    {"0xffffffffffffffff", 18446744073709551615ull},
    {"01777777777777777777777", 18446744073709551615ull}, // 2^64 - 1 in octal
    {"18446744073709551615", 18446744073709551615ull},
    {"18446744073709551616", 18446744073709551615ull}, // saturates
    {"0x10000000000000000", 18446744073709551615ull},  // as above
    {" 0x10 ", 16ull},
    {"12 34", 12ull},
    {"", TYPE_ERROR},
    {" ", TYPE_ERROR},
    {"-1", TYPE_ERROR},
    {"+1", TYPE_ERROR},
    {"0x", TYPE_ERROR},
    {"09", TYPE_ERROR},
    {"0xg", TYPE_ERROR},
    {"1e3", TYPE_ERROR},
    {"12a", TYPE_ERROR},
};

TEST(AttributeValues, Unsigned64Hex) {
    expect_read_as<unsigned64_hex>(HEXES64);
}

// The parser library's own rule: blanks, sign, a number in any of C's forms, and anything after it.
const Row<float> FLOATS[] = {
    {"0", 0.0f},
    {"1", 1.0f},
    {"-0", 0.0f},
    {"1.5", 1.5f},
    {"-2.25", -2.25f},
    {"+0.5", 0.5f},
    {".5", 0.5f},
    {"5.", 5.0f},
    {"0.1", 0.1f},
    {"1e3", 1000.0f},
    {"25E-2", 0.25f},
    {"010", 10.0f},
    {"0x10", 16.0f},
    {"0x1.8p1", 3.0f},
    {"16777217", 16777216.0f}, // 2^24 + 1 is half way between two floats; the even one is taken
    {"1e-60", 0.0f},
    {"1e999", INF},
    {"-1e999", -INF},
    {"3.5e38", INF},
    {"inf", INF},
    {"-INFINITY", -INF},
    {"nan", NAN_VALUE},
    {"  7", 7.0f},
    {"\n7", 7.0f},
    {"7 8", 7.0f},
    {"5x", 5.0f},
    {"1,5", 1.0f},
    {"17.1.2", 17.1f},
    {"", TYPE_ERROR},
    {" ", TYPE_ERROR},
    {"abc", TYPE_ERROR},
    {"x5", TYPE_ERROR},
    {"e5", TYPE_ERROR},
    {"0x", TYPE_ERROR},
    {".", TYPE_ERROR},
    {"-", TYPE_ERROR},
    {"+", TYPE_ERROR},
    {"--1", TYPE_ERROR},
    {"- 1", TYPE_ERROR},
    {"$5", TYPE_ERROR},
};

TEST(AttributeValues, Float) {
    expect_read_as<float>(FLOATS);
}

// The parser library's own rules for integers and booleans.
const Row<int> INTEGERS[] = {
    {"0", 0},          {"1", 1},          {"-1", -1},
    {"+2", 2},         {"010", 10},       {" 7", 7},
    {"7x", 7},         {"7 8", 7},        {"2147483647", 2147483647},
    {"", TYPE_ERROR},  {" ", TYPE_ERROR}, {"x", TYPE_ERROR},
    {"-", TYPE_ERROR},
};

TEST(AttributeValues, Int) {
    expect_read_as<int>(INTEGERS);
}

const Row<bool> BOOLEANS[] = {
    {"true", true},       {"True", true},      {"TRUE", true},   {"1", true},           {"2", true},
    {"-1", true},         {"false", false},    {"False", false}, {"FALSE", false},      {"0", false},
    {"tRUE", TYPE_ERROR}, {"yes", TYPE_ERROR}, {"", TYPE_ERROR}, {" true", TYPE_ERROR},
};

TEST(AttributeValues, Bool) {
    expect_read_as<bool>(BOOLEANS);
}

TEST(QueryAttribute, AMissingOneKeepsTheDefault) {
    const auto doc = parsed("<MODULE/>");
    ProbeVisitor visitor;
    std::string text = "default";
    unsigned int number = 7;
    float ratio = 0.5f;
    EXPECT_FALSE(visitor.query_attribute(*doc->RootElement(), "x", &text, false, false));
    EXPECT_FALSE(visitor.query_attribute(*doc->RootElement(), "x", &number, true, false));
    EXPECT_FALSE(visitor.query_attribute(*doc->RootElement(), "x", &ratio, false, true));
    EXPECT_EQ(text, "default");
    EXPECT_EQ(number, 7u);
    EXPECT_EQ(ratio, 0.5f);
    EXPECT_FALSE(visitor.m_has_error);
}

TEST(QueryAttribute, AMissingOneIsReportedOnlyIfRequired) {
    const auto doc = parsed("\n<MODULE/>");
    RecordingCallbacks callbacks;
    ProbeVisitor visitor(&callbacks);
    unsigned_hex number(7u);
    EXPECT_FALSE(visitor.query_attribute(*doc->RootElement(), "start", &number, true, false));
    EXPECT_FALSE(visitor.query_attribute(*doc->RootElement(), "start", &number, false, true));
    EXPECT_THAT(callbacks.errors, IsEmpty());
    EXPECT_FALSE(visitor.query_attribute(*doc->RootElement(), "start", &number, true, true));
    EXPECT_THAT(callbacks.errors,
                ElementsAre("Error in 'a.xml', line 2\nExpected attribute 'start' on element 'MODULE'.\n"));
    EXPECT_EQ(number, 7u);
}

TEST(QueryAttribute, ATypeErrorIsReportedAtTheAttributeRequiredOrNot) {
    const auto doc = parsed("<MODULE\n line='1x'/>");
    const std::string message =
        "Error in 'a.xml', line 2\nIncorrect type for attribute 'line' on element 'MODULE'.\n";
    RecordingCallbacks callbacks;
    ProbeVisitor visitor(&callbacks);
    unsigned int number = 0;
    EXPECT_FALSE(visitor.query_attribute(*doc->RootElement(), "line", &number, true, true));
    EXPECT_FALSE(visitor.query_attribute(*doc->RootElement(), "line", &number, true, false));
    EXPECT_THAT(callbacks.errors, ElementsAre(message, message));
}

TEST(QueryAttribute, ATypeErrorIsSilentWithoutReport) {
    const auto doc = parsed("<MODULE line='1x'/>");
    ProbeVisitor visitor;
    unsigned int number = 0;
    EXPECT_FALSE(visitor.query_attribute(*doc->RootElement(), "line", &number, false, true));
    EXPECT_FALSE(visitor.m_has_error);
}

TEST(QueryAttribute, ReadsOnAfterAnError) {
    const auto doc = parsed("<MODULE line='3'/>");
    ProbeVisitor visitor;
    visitor.report_error("x");
    unsigned int number = 0;
    EXPECT_TRUE(visitor.query_attribute(*doc->RootElement(), "line", &number, true, true));
    EXPECT_EQ(number, 3u);
}

TEST(QueryAttribute, ReadsDecodedText) {
    const auto doc = parsed("<a n='&#x31;&#50;' t='&lt;&quot;&amp;&apos;&gt;' nl='1\r\n2'/>");
    ProbeVisitor visitor;
    unsigned int number = 0;
    std::string text, lines;
    std::string_view view;
    EXPECT_TRUE(visitor.query_attribute(*doc->RootElement(), "t", &view, true, true));
    EXPECT_EQ(view, "<\"&'>");
    EXPECT_TRUE(visitor.query_attribute(*doc->RootElement(), "n", &number, true, true));
    EXPECT_TRUE(visitor.query_attribute(*doc->RootElement(), "t", &text, true, true));
    EXPECT_TRUE(visitor.query_attribute(*doc->RootElement(), "nl", &lines, true, true));
    EXPECT_EQ(number, 12u);
    EXPECT_EQ(text, "<\"&'>");
    EXPECT_EQ(lines, "1\n2");
}

TEST(AttributeExists, IsAboutTheNameOnly) {
    const auto doc = parsed("<a full='1' empty=''/>");
    const tinyxml2::XMLElement& elem = *doc->RootElement();
    EXPECT_TRUE(xml::BaseVisitor::attribute_exists(elem, "full"));
    EXPECT_TRUE(xml::BaseVisitor::attribute_exists(elem, "empty"));
    EXPECT_FALSE(xml::BaseVisitor::attribute_exists(elem, "Full"));
    EXPECT_FALSE(xml::BaseVisitor::attribute_exists(elem, "1"));
}

TEST(ConvertToUnsigned, TakesAnyBase) {
    unsigned int number = 0;
    EXPECT_TRUE(xml::convert_to_unsigned("101", &number, 2));
    EXPECT_EQ(number, 5u);
    EXPECT_TRUE(xml::convert_to_unsigned("1f", &number, 16));
    EXPECT_EQ(number, 31u);
    EXPECT_FALSE(xml::convert_to_unsigned("f1", &number, 16)) << "the first character is no decimal digit";
    EXPECT_EQ(number, 31u);
}

TEST(ConvertToUnsigned, LeavesTheTargetUnlessADigitComesFirst) {
    unsigned int number = 7;
    unsigned long long number64 = 7;
    // "/" and ":" are the neighbours of the digits.
    for (const char* text : {"", " 1", "-1", "+1", "/1", ":1", "a"}) {
        EXPECT_FALSE(xml::convert_to_unsigned(text, &number, 10)) << text;
        EXPECT_FALSE(xml::convert_to_unsigned64(text, &number64, 10)) << text;
    }
    EXPECT_EQ(number, 7u);
    EXPECT_EQ(number64, 7ull);
}

TEST(ConvertToUnsigned64, TakesAnyBaseAndSaturates) {
    unsigned long long number = 0;
    EXPECT_TRUE(xml::convert_to_unsigned64("100000000", &number, 16));
    EXPECT_EQ(number, 4294967296ull);
    EXPECT_TRUE(xml::convert_to_unsigned64("99999999999999999999", &number, 10));
    EXPECT_EQ(number, 18446744073709551615ull);
    EXPECT_FALSE(xml::convert_to_unsigned64("12", &number, 2));
    EXPECT_FALSE(xml::convert_to_unsigned64("", &number, 10));
}

TEST(HexExtraction, ReadsOneTokenAfterTheOther) {
    std::istringstream in("0x10 010\n16");
    unsigned_hex first, second;
    unsigned64_hex third;
    EXPECT_TRUE(in >> first >> second >> third);
    EXPECT_EQ(first, 16u);
    EXPECT_EQ(second, 8u);
    EXPECT_EQ(third, 16ull);
    EXPECT_TRUE((in >> first).fail()) << "nothing is left";
}

TEST(HexExtraction, ATokenThatIsNoNumberSetsFailbitAndIsConsumed) {
    std::istringstream in("zz 0x20");
    unsigned_hex number(5u);
    in >> number;
    EXPECT_TRUE(in.fail());
    EXPECT_FALSE(in.bad());
    EXPECT_EQ(number, 5u);
    in.clear();
    EXPECT_TRUE(in >> number);
    EXPECT_EQ(number, 32u);
}

} // namespace
} // namespace zan::test
