// SPDX-License-Identifier: Apache-2.0
#include "json_output.h"

#include <gtest/gtest.h>

#include <limits>

#include "capture.h"

namespace {

using namespace zan::tool;

// The document of which `write(json)` writes the members.
template <typename Write>
std::string document(Write write) {
    std::string text;
    JsonOutput json("tester/things", 2, [&](std::string_view piece) { text += piece; });
    write(json);
    json.finish();
    return text;
}

TEST(JsonOutputTest, BeginsWithItsSchema) {
    EXPECT_EQ(document([](JsonOutput&) {}), R"({
    "schema": "tester/things",
    "schema_version": 2
}
)");
}

TEST(JsonOutputTest, HasObjectsArraysAndValues) {
    EXPECT_EQ(document([](JsonOutput& json) {
                  json.begin_array("rows");
                  json.begin_object();
                  json.member("size_bytes", std::uint64_t{18446744073709551615u});
                  json.member("delta_ns", std::int64_t{-7});
                  json.member("stall_percent", 28.5);
                  json.member("ok", true);
                  json.member("unknown", nullptr);
                  json.end_object();
                  json.element("a\"\n");
                  json.end_array();
                  json.begin_object("none");
                  json.end_object();
                  json.begin_array("empty");
                  json.end_array();
              }),
              R"({
    "schema": "tester/things",
    "schema_version": 2,
    "rows": [
        {
            "size_bytes": 18446744073709551615,
            "delta_ns": -7,
            "stall_percent": 28.5,
            "ok": true,
            "unknown": null
        },
        "a\"\n"
    ],
    "none": {},
    "empty": []
}
)");
}

TEST(JsonOutputTest, IsUtf8WhateverTheTextsAre) {
    const std::string text =
        document([](JsonOutput& json) { json.member("k\xFF", std::string("ü\xC3\0", 4)); });
    EXPECT_NE(text.find("\"k\xEF\xBF\xBD\": \"ü\xEF\xBF\xBD\\u0000\""), text.npos) << text;
}

// JSON has no such numbers.
TEST(JsonOutputTest, WhatIsNoFiniteNumberIsNull) {
    const std::string text = document([](JsonOutput& json) {
        json.member("a", std::numeric_limits<double>::quiet_NaN());
        json.member("b", -std::numeric_limits<double>::infinity());
    });
    EXPECT_NE(text.find("\"a\": null,\n    \"b\": null\n"), text.npos) << text;
}

// A piece is handed on at 64 KiB; the longest element is 8 bytes with its margin, comma and newline.
TEST(JsonOutputTest, ALongDocumentIsHandedOnInPieces) {
    std::size_t longest = 0, pieces = 0, size = 0;
    JsonOutput json("t", 1, [&](std::string_view piece) {
        longest = std::max(longest, piece.size());
        size += piece.size();
        ++pieces;
    });
    json.begin_array("a");
    for (int i = 0; i < 100000; ++i)
        json.element(0);
    json.end_array();
    json.finish();
    // {, schema, version, "a": [ ; then 100,000 lines of 8 blanks, a digit, a comma but for the last, and a
    // newline; then ] and } with their newlines.
    const std::size_t frame =
        std::string("{\n    \"schema\": \"t\",\n    \"schema_version\": 1,\n    \"a\": [\n").size();
    EXPECT_EQ(size, frame + 100000 * 11 - 1 + std::string("    ]\n}\n").size());
    EXPECT_LE(longest, (1u << 16) + 16);
    EXPECT_GT(pieces, 10u);
}

TEST(JsonOutputTest, StandardOutputIsATarget) {
    EXPECT_EQ(stdout_of([] { standard_output_target()("{}\n"); }), "{}\n");
}

} // namespace
