// SPDX-License-Identifier: Apache-2.0
#include "function_cycles.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

using Values = std::vector<long long>;

TEST(FunctionCycles, AFunctionHasNoListUntilOneIsNeeded) {
    FunctionCycles functions;
    EXPECT_EQ(functions.find("f"), nullptr);
    FunctionCycles::Samples& list = functions.list_of("f");
    EXPECT_EQ(functions.find("f"), &list);
    EXPECT_EQ(functions.find("g"), nullptr);
}

TEST(FunctionCycles, ListsStayInPlaceAndStayWhenTheyAreEmptied) {
    FunctionCycles functions;
    FunctionCycles::Samples& list = functions.list_of("f");
    list.push_back(5);
    for (int i = 0; i < 1000; ++i)
        functions.list_of("g" + std::to_string(i));
    EXPECT_EQ(functions.find("f"), &list);
    list.clear();
    EXPECT_EQ(functions.find("f"), &list);
}

TEST(FunctionCycles, CyclesOfALineAreSummed) {
    FunctionCycles functions;
    EXPECT_EQ(functions.line_sum(), 0);
    functions.add(5);
    functions.add(-2);
    EXPECT_EQ(functions.line_sum(), 3);
    functions.start_line();
    functions.add(LLONG_MAX);
    functions.add(1); // 2^63 - 1 + 1 wraps to -2^63
    EXPECT_EQ(functions.line_sum(), LLONG_MIN);
}

TEST(FunctionCycles, TimestampsAreForgottenForAllFunctionsAtOnce) {
    FunctionCycles functions;
    functions.add_timestamp("f", 5);
    functions.add_timestamp("f", 6);
    functions.add_timestamp("g", 7);
    ASSERT_NE(functions.find_timestamps("f"), nullptr);
    EXPECT_EQ(functions.find_timestamps("f")->to_vector(), (Values{5, 6}));
    EXPECT_EQ(functions.find_timestamps("g")->to_vector(), (Values{7}));
    EXPECT_EQ(functions.find("f"), nullptr); // they are no cycles
    functions.clear_timestamps();
    EXPECT_EQ(functions.find_timestamps("f"), nullptr);
    EXPECT_EQ(functions.find_timestamps("g"), nullptr);
}

} // namespace
