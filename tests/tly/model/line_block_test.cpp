// SPDX-License-Identifier: Apache-2.0
#include "line_block.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

using Values = std::vector<long long>;

void add_line(LineBlock& block, const Values& counters) {
    std::copy(counters.begin(), counters.end(), block.next());
    block.add();
}

TEST(LineBlock, ColumnsHaveTheCounterOfEachLine) {
    LineBlock block;
    block.reset(3);
    add_line(block, {1, 2, 3});
    add_line(block, {10, 20, 30});
    EXPECT_EQ(block.num_counters(), 3u);
    EXPECT_EQ(block.size(), 2u);
    Values column(2);
    block.column(0, column.data());
    EXPECT_EQ(column, (Values{1, 10}));
    block.column(2, column.data());
    EXPECT_EQ(column, (Values{3, 30}));
}

TEST(LineBlock, AColumnIsAddedModulo2ToThe64) {
    LineBlock block;
    block.reset(1);
    add_line(block, {5});
    add_line(block, {1});
    Values sums{-7, LLONG_MAX};
    block.add_column(0, sums.data());
    EXPECT_EQ(sums, (Values{-2, LLONG_MIN}));
}

TEST(LineBlock, TakesUpTo64Lines) {
    LineBlock block;
    block.reset(2);
    for (int i = 0; i < 64; ++i) {
        EXPECT_FALSE(block.full()) << i;
        add_line(block, {i, i});
    }
    EXPECT_TRUE(block.full());
    block.clear();
    EXPECT_EQ(block.size(), 0u);
    EXPECT_FALSE(block.full());
}

// 32,768 values: 22 lines of 1,441 counters are 31,702, and one more line would be 33,143.
TEST(LineBlock, TakesFewerLinesIfTheyAreLong) {
    LineBlock block;
    block.reset(1441);
    for (int i = 0; i < 22; ++i) {
        EXPECT_FALSE(block.full()) << i;
        block.add();
    }
    EXPECT_TRUE(block.full());
    block.reset(1'000'000); // one line at least
    EXPECT_FALSE(block.full());
    block.add();
    EXPECT_TRUE(block.full());
}

TEST(LineBlock, LinesWithoutCountersAreCounted) {
    LineBlock block;
    block.reset(0);
    block.add();
    EXPECT_EQ(block.size(), 1u);
    EXPECT_EQ(block.num_counters(), 0u);
}

} // namespace
