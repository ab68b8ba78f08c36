// SPDX-License-Identifier: Apache-2.0
#include "page_json.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace zan::tool;

namespace {

std::string number_in_page(double value) {
    PageJson json;
    json.number(value);
    return json.result();
}

std::string decimal_in_page(std::int64_t units, int digits) {
    PageJson json;
    json.decimal(units, digits);
    return json.result();
}

TEST(PageJson, NoTextEndsAScriptElement) {
    PageJson json;
    json.begin_object();
    json.key("</script>").text("<!-- a & b -->");
    json.end_object();
    EXPECT_EQ(json.result(), R"({"\u003c/script\u003e":"\u003c!-- a \u0026 b --\u003e"})");
}

TEST(PageJson, ControlCharactersAndQuotesAreEscaped) {
    PageJson json;
    json.text(std::string("\"\\\n\x01\0", 5));
    EXPECT_EQ(json.result(), R"("\"\\\n\u0001\u0000")");
}

TEST(PageJson, BytesThatAreNoUtf8AreReplaced) {
    PageJson json;
    json.text(
        "a\xff"
        "b");
    EXPECT_EQ(json.result(),
              "\"a\xef\xbf\xbd"
              "b\"");
}

TEST(PageJson, WholeNumbersHaveNoPoint) {
    EXPECT_EQ(number_in_page(12.0), "12");
    EXPECT_EQ(number_in_page(-3.0), "-3");
    EXPECT_EQ(number_in_page(0.25), "0.25");
    // From 9e15 on, where not all whole numbers are doubles, and far beyond the integers.
    EXPECT_EQ(number_in_page(8999999999999999.0), "8999999999999999");
    EXPECT_EQ(number_in_page(-9e15), "-9000000000000000.0");
    EXPECT_EQ(number_in_page(1e300), "1e300");
}

TEST(PageJson, WhatIsNoNumberIsNull) {
    EXPECT_EQ(number_in_page(std::nan("")), "null");
    EXPECT_EQ(number_in_page(std::numeric_limits<double>::infinity()), "null");
}

TEST(PageJson, DecimalsHaveAllTheirDigits) {
    EXPECT_EQ(decimal_in_page(12345, 2), "123.45");
    EXPECT_EQ(decimal_in_page(5, 3), "0.005");
    EXPECT_EQ(decimal_in_page(-5, 1), "-0.5");
    EXPECT_EQ(decimal_in_page(0, 2), "0.00");
    EXPECT_EQ(decimal_in_page(std::numeric_limits<std::int64_t>::min(), 0), "-9223372036854775808");
}

} // namespace
