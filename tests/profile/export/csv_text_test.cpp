// SPDX-License-Identifier: Apache-2.0
#include "csv_text.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace zan::profile;

std::string field(std::string_view text, bool raw = false) {
    std::string line;
    append_csv_text(line, text, raw);
    return line;
}

std::string number(double value) {
    std::string line;
    append_csv_number(line, value);
    return line;
}

TEST(CsvText, IsQuotedWhereItHasTo) {
    EXPECT_EQ(field("a b"), "a b");
    EXPECT_EQ(field("a,b"), "\"a,b\"");
    EXPECT_EQ(field("a\"b"), "\"a\"\"b\"");
    EXPECT_EQ(field("a\nb"), "\"a\nb\"");
    EXPECT_EQ(field("a\rb"), "\"a\rb\"");
    EXPECT_EQ(field(" a"), "\" a\"");
    EXPECT_EQ(field("a "), "\"a \"");
    EXPECT_EQ(field(""), "\"\"");
}

TEST(CsvText, FormulasAreGuardedUnlessRaw) {
    for (const char* const formula : {"=1+1", "+1", "-1", "@SUM(A1)", "\tx"}) {
        EXPECT_EQ(field(formula), std::string("'") + formula);
        EXPECT_EQ(field(formula, true), formula);
    }
    EXPECT_EQ(field("=HYPERLINK(\"x\")"), "\"'=HYPERLINK(\"\"x\"\")\"");
    EXPECT_EQ(field("a=1"), "a=1");
}

TEST(CsvText, NumbersHaveAllDigits) {
    EXPECT_EQ(number(0.1), "0.1");
    EXPECT_EQ(number(38400), "38400");
    EXPECT_EQ(number(-2.5), "-2.5");
    EXPECT_EQ(number(std::numeric_limits<double>::infinity()), "");
    EXPECT_EQ(number(std::numeric_limits<double>::quiet_NaN()), "");
}

} // namespace
