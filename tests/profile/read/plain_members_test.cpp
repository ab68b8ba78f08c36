// SPDX-License-Identifier: Apache-2.0
#include "plain_members.h"

#include <gtest/gtest.h>

#include "node_events.h"

using namespace zan::profile;

namespace {

using Events = std::vector<std::string>;

struct Taken {
    std::string rest;
    Events events;
    bool operator==(const Taken&) const = default;
};

Taken taken_of(const std::string& members) {
    const std::string padded = members + std::string(PackedNumbers::num_readable + 1, '\0');
    PackedNumbers numbers;
    NodeEventList events;
    const char* const end = add_plain_members(padded.data(), numbers, events);
    return {std::string(end, padded.data() + members.size()), events.list};
}

TEST(PlainMembers, TextsAndArraysOfNumbersAreTaken) {
    EXPECT_EQ(taken_of(R"(, "a": "x y", "b" :"", "c": [ "1", "2" ],"d":["0.5"]})"),
              (Taken{"}", {"a text x y", "b text ", "c integers 1 2", "d floats 0.5"}}));
}

TEST(PlainMembers, TheFirstThatIsNotPlainStaysWithItsComma) {
    const Events before = {"a text 1"};
    for (const char* rest :
         {R"(, "b\u0041": "1"})", R"(, "b": "\/"})", R"(, "b": {}})", R"(, "b": []})", R"(, "b": ["x"]})",
          R"(, "b": ["1", "x"]})", R"(, "b": ["1", {}]})", R"(, "b": 1})", R"(, "b": true})", R"(, b: "1"})",
          R"(, "b" "1"})", ", \"b\": \"\xC3\xA4\"}", ", \"b\": \"\t\"}", R"(; "b": "1"})", "}", "]", ""})
        EXPECT_EQ(taken_of(R"(, "a": "1")" + std::string(rest)), (Taken{rest, before}));
}

TEST(PlainMembers, AMemberThatIsCutIsNotTaken) {
    const std::string first = R"(, "first_key": "some text")";
    const std::string second = R"(, "second_key": [ "12345", "1.5" ])";
    for (std::size_t size = 0; size <= second.size(); ++size) {
        const std::string rest = second.substr(0, size);
        const bool is_whole = size == second.size();
        EXPECT_EQ(taken_of(first + rest).rest, is_whole ? "" : rest);
    }
    for (std::size_t size = 0; size < first.size(); ++size)
        EXPECT_EQ(taken_of(first.substr(0, size)), (Taken{first.substr(0, size), {}}));
}

std::string array_of(int count) {
    std::string text = R"(, "a": ["0")";
    for (int i = 1; i < count; ++i)
        text += R"(, "0")";
    return text + "]";
}

TEST(PlainMembers, AnArrayOfMoreThan64NumbersIsNotPlain) {
    EXPECT_EQ(taken_of(array_of(64)).rest, "");
    EXPECT_EQ(taken_of(array_of(65)), (Taken{array_of(65), {}}));
}

} // namespace
