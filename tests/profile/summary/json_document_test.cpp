// SPDX-License-Identifier: Apache-2.0
#include "json_document.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace zan::profile;

// The number of a document that is one.
double number_of(std::string text) {
    rapidjson::Document document;
    EXPECT_FALSE(read_json(text, document)) << text;
    EXPECT_TRUE(document.IsNumber());
    return document.GetDouble();
}

std::string reason_of_json(std::string text) {
    rapidjson::Document document;
    const auto fault = read_json(text, document);
    return fault ? std::to_string(fault->offset) + ": " + fault->text : "read";
}

TEST(JsonDocument, HasTheNearestNumbers) {
    EXPECT_EQ(number_of("0.1"), 0.1);
    EXPECT_EQ(number_of("-12"), -12);
    EXPECT_EQ(number_of("18446744073709551616"), 18446744073709551616.0); // 2^64
    EXPECT_EQ(number_of("123456789012345678901234567890"), 123456789012345678901234567890.0);
    EXPECT_EQ(number_of("1e-999"), 0);
    EXPECT_EQ(number_of("5e-324"), 5e-324);
    EXPECT_TRUE(std::signbit(number_of("-0")));
}

TEST(JsonDocument, AZeroStaysZeroWithAnyExponent) {
    for (const char* const zero : {"0e308", "0.0e25", "0e-400", "0.000e290"})
        EXPECT_EQ(number_of(zero), 0) << zero;
    EXPECT_TRUE(std::signbit(number_of("-0e308")));
}

TEST(JsonDocument, WholeNumbersAreWhole) {
    std::string text = "[18446744073709551615, -9223372036854775808, 7, 7.0]";
    rapidjson::Document document;
    ASSERT_FALSE(read_json(text, document));
    EXPECT_EQ(document[0].GetUint64(), 18446744073709551615u);
    EXPECT_EQ(document[1].GetInt64(), std::numeric_limits<std::int64_t>::min());
    EXPECT_TRUE(document[2].IsInt());
    EXPECT_FALSE(document[3].IsInt64());
}

TEST(JsonDocument, FaultsHaveTheirPlaceAndReason) {
    EXPECT_EQ(reason_of_json("[1e999]"), "1: Number too big to be stored in double.");
    EXPECT_EQ(reason_of_json("[1,"), "3: Invalid value.");
    EXPECT_EQ(reason_of_json(""), "0: The document is empty.");
    EXPECT_EQ(reason_of_json("{\"a\": {}}"), "read");
    // The first bytes of characters of two, three and four bytes, which stand at byte 2; sanitizers look on.
    for (const char* const cut : {"[\"\xc3", "[\"\xe2\x82", "[\"\xec", "[\"\xf0\x9f\x98", "[\"\xf0"})
        EXPECT_EQ(reason_of_json(cut), "2: Invalid encoding in string.") << cut;
}

} // namespace
