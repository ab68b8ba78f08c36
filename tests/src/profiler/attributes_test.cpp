// SPDX-License-Identifier: Apache-2.0
// Each attribute of each element: missing, of the wrong type, unknown.
#include "whole_document.h"

namespace zan::test {
namespace {

enum class Reading { text, number, optional_text, optional_number };
using enum Reading;

struct Row {
    const char* element;
    unsigned int element_line;
    const char* attribute;
    unsigned int line;
    Reading reading;
    const char* message;
};

// In the order of reading, so that each attribute stands a line below the one before it.
const Row ROWS[] = {
    {"FUNCTION", 10, "name", 11, text, "Unsupported name string."},
    {"FUNCTION", 10, "num_compute_units", 12, number, "Unsupported num_compute_units value."},
    {"FUNCTION", 10, "filename", 13, text, "Unsupported filename string."},
    {"FUNCTION", 10, "line_number", 14, optional_number, "Unsupported line_number value."},
    {"FUNCTION", 10, "original_name", 15, optional_text, "Unsupported original_name string."},
    {"FUNCTION", 10, "user_friendly_name", 16, optional_text, "Unsupported user_friendly_name string."},
    {"MODULE", 20, "name", 21, text, "Unsupported name string."},
    {"MODULE", 20, "function", 22, text, "Unsupported function string."},
    {"MODULE", 20, "isKernelWrapper", 23, text, "Unsupported isKernelWrapper string."},
    {"PORT", 30, "cntl_name", 31, text, "Unsupported cntl_name string."},
    {"PORT", 30, "incr_name", 32, text, "Unsupported incr_name string."},
    {"PORT", 30, "tag", 33, text, "Unsupported tag string."},
    {"PORT", 30, "desc", 34, text, "Unsupported desc string."},
    {"PORT", 30, "module", 35, text, "Unsupported module string."},
    {"PORT", 30, "flag", 36, number, "Unsupported flag string."},
    {"MODULEINST", 40, "name", 41, text, "Unsupported name string."},
    {"MODULEINST", 40, "function", 42, text, "Unsupported function string."},
    {"MODULEINST", 40, "module", 43, text, "Unsupported module string."},
    {"MODULEINST", 40, "attribute", 44, text, "Unsupported attribute string."},
    {"MODULEINST", 40, "isAutorun", 45, text, "Unsupported isAutorun string."},
    {"MODULEINST", 40, "sharedOn", 46, text, "Unsupported sharedOn string."},
    {"DEBUG", 50, "file", 51, text, "Unsupported file string."},
    {"DEBUG", 50, "line", 52, number, "Unsupported line value."},
    {"DEBUG", 50, "column", 53, number, "Unsupported column value."},
    {"CALLSITE", 60, "file", 61, text, "Unsupported file string."},
    {"CALLSITE", 60, "line", 62, number, "Unsupported line value."},
    {"CALLSITE", 60, "column", 63, number, "Unsupported column value."},
    {"SIGNAL", 70, "cntl_name", 71, text, "Unsupported cntl_name string."},
    {"SIGNAL", 70, "incr_name", 72, text, "Unsupported incr_name string."},
    {"SIGNAL", 70, "port_tag", 73, text, "Unsupported port_tag string."},
    {"CONNECTION", 80, "moduleinst", 81, text, "Unsupported moduleinst string."},
    {"CONNECTION", 80, "function", 82, text, "Unsupported function string."},
    {"CONNECTION", 80, "compute_unit", 83, number, "Unsupported compute_unit value."},
    {"CONNECTION", 80, "shared_with", 84, optional_text, "Unsupported shared_with string."},
    {"CONNECTION", 80, "port_tag", 85, text, "Unsupported port_tag string."},
};

std::vector<Row> rows_read_as(std::initializer_list<Reading> readings) {
    std::vector<Row> rows;
    for (const Row& row : ROWS) {
        if (std::find(readings.begin(), readings.end(), row.reading) != readings.end())
            rows.push_back(row);
    }
    return rows;
}

std::string name_of(const testing::TestParamInfo<Row>& info) {
    return std::string(info.param.element) + "_" + info.param.attribute;
}

void PrintTo(const Row& row, std::ostream* os) {
    *os << row.element << " " << row.attribute;
}

// Takes away all attributes of the row's element that are read after the row's.
void drop_later(WholeDocument& document, const Row& row) {
    for (const Row& other : ROWS) {
        if (std::string(other.element) == row.element && other.line > row.line)
            document.without(other.element, other.attribute);
    }
}

class RequiredAttribute : public testing::TestWithParam<Row> {
  protected:
    static std::vector<std::string> messages() {
        const Row& row = GetParam();
        return {at_line(row.element_line, std::string("Expected attribute '") + row.attribute +
                                              "' on element '" + row.element + "'."),
                at_line(row.element_line, row.message)};
    }
};

INSTANTIATE_TEST_SUITE_P(Rows, RequiredAttribute, testing::ValuesIn(rows_read_as({text, number})), name_of);

TEST_P(RequiredAttribute, MissingIsReportedTwiceAtTheElement) {
    expect_refused(WholeDocument().without(GetParam().element, GetParam().attribute), messages());
}

TEST_P(RequiredAttribute, TheFirstMissingOneEndsTheReading) {
    WholeDocument document;
    document.without(GetParam().element, GetParam().attribute);
    drop_later(document, GetParam());
    expect_refused(document, messages());
}

class OptionalAttribute : public testing::TestWithParam<Row> {};

INSTANTIATE_TEST_SUITE_P(Rows, OptionalAttribute,
                         testing::ValuesIn(rows_read_as({optional_text, optional_number})), name_of);

TEST_P(OptionalAttribute, MayBeMissing) {
    EXPECT_TRUE(config_of(WholeDocument().without(GetParam().element, GetParam().attribute)));
}

class NumberAttribute : public testing::TestWithParam<Row> {
  protected:
    static WholeDocument document_with(const std::string& value) {
        return WholeDocument().with(GetParam().element, GetParam().attribute, value);
    }
    static std::vector<std::string> messages() {
        const Row& row = GetParam();
        return {at_line(row.line, std::string("Incorrect type for attribute '") + row.attribute +
                                      "' on element '" + row.element + "'."),
                at_line(row.line, row.message)};
    }
};

INSTANTIATE_TEST_SUITE_P(Rows, NumberAttribute, testing::ValuesIn(rows_read_as({number, optional_number})),
                         name_of);

TEST_P(NumberAttribute, WrongTypeIsReportedTwiceAtTheAttribute) {
    for (const char* value :
         {"", " ", "x", "12a", "-1", "+1", " 1", "1 ", "0x10", "1.0", "&#49;x", "1&#10;"}) {
        SCOPED_TRACE(value);
        expect_refused(document_with(value), messages());
    }
}

TEST_P(NumberAttribute, WrongTypeEndsTheReading) {
    WholeDocument document = document_with("x");
    drop_later(document, GetParam());
    expect_refused(document, messages());
}

TEST_P(NumberAttribute, IsDecimalWithAnyLeadingZeros) {
    // One compute unit must do for the connection.
    const WholeDocument document = WholeDocument().with("CONNECTION", "compute_unit", "0");
    for (const char* value : {"1", "01", "000000000000000000000001"}) {
        WholeDocument changed = document;
        EXPECT_TRUE(config_of(changed.with(GetParam().element, GetParam().attribute, value))) << value;
    }
}

// One row for each element: its first and its third attribute are made unknown.
struct ElementRow {
    const char* element;
    const char* first;
    unsigned int first_line;
    const char* third;
    unsigned int third_line;
};

void PrintTo(const ElementRow& row, std::ostream* os) {
    *os << row.element;
}

class UnknownAttribute : public testing::TestWithParam<ElementRow> {};

INSTANTIATE_TEST_SUITE_P(Elements, UnknownAttribute,
                         testing::Values(ElementRow{"FUNCTION", "name", 11, "filename", 13},
                                         ElementRow{"MODULE", "name", 21, "isKernelWrapper", 23},
                                         ElementRow{"PORT", "cntl_name", 31, "tag", 33},
                                         ElementRow{"MODULEINST", "name", 41, "module", 43},
                                         ElementRow{"DEBUG", "file", 51, "column", 53},
                                         ElementRow{"CALLSITE", "file", 61, "column", 63},
                                         ElementRow{"SIGNAL", "cntl_name", 71, "port_tag", 73},
                                         ElementRow{"CONNECTION", "moduleinst", 81, "compute_unit", 83}),
                         [](const auto& info) { return std::string(info.param.element); });

TEST_P(UnknownAttribute, EndsTheElementBeforeAnyReading) {
    // The attribute that is gone now is required, and its absence is not reported.
    expect_refused(WholeDocument().renamed(GetParam().element, GetParam().first, "x"),
                   {at_line(GetParam().first_line, "Unexpected attribute 'x'.")});
}

TEST_P(UnknownAttribute, EachOneIsReported) {
    expect_refused(WholeDocument()
                       .renamed(GetParam().element, GetParam().third, "b")
                       .renamed(GetParam().element, GetParam().first, "a"),
                   {at_line(GetParam().first_line, "Unexpected attribute 'a'."),
                    at_line(GetParam().third_line, "Unexpected attribute 'b'.")});
}

TEST(UnknownAttributes, NamesAreComparedExactly) {
    expect_refused(WholeDocument().renamed("FUNCTION", "name", "Name"),
                   {at_line(11, "Unexpected attribute 'Name'.")});
    expect_refused(WholeDocument().renamed("MODULE", "isKernelWrapper", "isKernelWrappe"),
                   {at_line(23, "Unexpected attribute 'isKernelWrappe'.")});
    expect_refused(WholeDocument().renamed("CONNECTION", "function", "functions"),
                   {at_line(82, "Unexpected attribute 'functions'.")});
}

TEST(UnknownAttributes, PrintedNamesAreNotTheReadOnes) {
    expect_refused(WholeDocument().renamed("FUNCTION", "line_number", "linenum"),
                   {at_line(14, "Unexpected attribute 'linenum'.")});
    expect_refused(WholeDocument().renamed("CONNECTION", "shared_with", "id"),
                   {at_line(84, "Unexpected attribute 'id'.")});
    expect_refused(WholeDocument().renamed("PORT", "cntl_name", "cntl"),
                   {at_line(31, "Unexpected attribute 'cntl'.")});
}

TEST(UnknownAttributes, TheRootAndTheListsMayHaveAny) {
    EXPECT_TRUE(
        config_of("<PROFILER version='3' name=''>\n"
                  "<FUNCTION_LIST a='1'/><MODULE_LIST b='2'/><PORT_LIST c='3'/>\n"
                  "<MODULEINST_LIST d='4'/><CONNECTION_LIST e='5' f='6'/></PROFILER>"));
}

} // namespace
} // namespace zan::test
