// SPDX-License-Identifier: Apache-2.0
#include "listing.h"

#include <gtest/gtest.h>

#include "capture.h"

namespace {

using namespace zan::tool;

const Listing two_rows = {"tester/list",
                          3,
                          "package",
                          "p.zanx",
                          "sections",
                          {"name", "size", "kind"},
                          {{std::string("a"), std::uint64_t{12345}, std::string("x")},
                           {std::string("longer\n"), std::uint64_t{7}, std::string("y")}},
                          {"kind"}};
const Listing no_rows = {"tester/list", 3, "package", "p.zanx", "sections", {"name"}, {}};

std::string printed(const Listing& listing, bool as_json) {
    return stdout_of([&] { print(listing, as_json); });
}

// Texts stand to the left, numbers to the right, and no line ends in spaces.
TEST(ListingTest, ATableHasColumnsAsWideAsTheirContents) {
    EXPECT_EQ(printed(two_rows, false),
              "NAME             SIZE\n"
              "a               12345\n"
              "longer⟨U+000A⟩      7\n");
    EXPECT_EQ(printed({"t", 1, "p", "", "s", {"wide", "n"}, {{std::string("x"), std::string("")}}}, false),
              "WIDE  N\n"
              "x\n");
}

TEST(ListingTest, AnEmptyTableHasItsHeading) {
    EXPECT_EQ(printed(no_rows, false), "NAME\n");
}

TEST(ListingTest, JsonHasAllColumns) {
    EXPECT_EQ(printed(two_rows, true), R"({
    "schema": "tester/list",
    "schema_version": 3,
    "package": "p.zanx",
    "sections": [
        {
            "name": "a",
            "size": 12345,
            "kind": "x"
        },
        {
            "name": "longer\n",
            "size": 7,
            "kind": "y"
        }
    ]
}
)");
    EXPECT_EQ(
        printed(no_rows, true),
        "{\n    \"schema\": \"tester/list\",\n    \"schema_version\": 3,\n    \"package\": \"p.zanx\",\n    \"sections\": []\n}\n");
}

TEST(ListingTest, JsonIsUtf8WhateverTheTextIs) {
    EXPECT_EQ(
        printed({"t", 1, "p", "\xFF", "s", {}, {}}, true),
        "{\n    \"schema\": \"t\",\n    \"schema_version\": 1,\n    \"p\": \"\xEF\xBF\xBD\",\n    \"s\": []\n}\n");
}

} // namespace
