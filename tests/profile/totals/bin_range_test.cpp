// SPDX-License-Identifier: Apache-2.0
#include "bin_range.h"

#include <gtest/gtest.h>

#include <limits>

using namespace zan::profile;

namespace {

constexpr std::int64_t earliest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t latest = std::numeric_limits<std::int64_t>::max();

TEST(BinRange, OfNothingCoversNoTime) {
    const BinRange range;
    EXPECT_FALSE(range.covers(0, 0));
    EXPECT_EQ(range.last(), 0);
}

// 10 to 17 are 8 bins of width 1. With 18 they are 9, which are 5 of width 2: 5 to 9.
TEST(BinRange, DoublesItsWidthWhereThereAreTooMany) {
    BinRange range;
    range.cover(10, 17, 8);
    EXPECT_EQ(range, (BinRange{10, 8, 0}));
    EXPECT_TRUE(range.covers(10, 17));
    EXPECT_FALSE(range.covers(17, 18));
    EXPECT_FALSE(range.covers(9, 10));
    range.cover(18, 18, 8);
    EXPECT_EQ(range, (BinRange{5, 5, 1}));
    EXPECT_TRUE(range.covers(19, 19));
}

// As many bins as there are come before the earlier time, or as many as there is room for.
TEST(BinRange, MakesRoomForTimesThatGoBackwards) {
    BinRange range;
    range.cover(10, 12, 16);
    range.cover(9, 9, 16);
    EXPECT_EQ(range, (BinRange{6, 7, 0})); // 9 to 12, and three bins before them
    range.cover(5, 5, 10);
    EXPECT_EQ(range, (BinRange{3, 10, 0})); // 5 to 12, and two
    range = {};
    range.cover(earliest + 1, earliest + 3, 16);
    range.cover(earliest, earliest, 16);
    EXPECT_EQ(range, (BinRange{earliest, 4, 0})); // there is no time before
}

TEST(BinRange, HoldsTheWholeRangeOfTimes) {
    BinRange range;
    range.cover(earliest, latest, 2);
    EXPECT_EQ(range, (BinRange{-1, 2, 63}));
    EXPECT_TRUE(range.covers(earliest, latest));
}

// The times -5 to 6. Bins of width 2 begin with that of -6 and -5, those of width 4 with that of -8 to -5.
TEST(BinRange, WidensFromTheMiddleOfAWiderBin) {
    BinRange range{-5, 12, 0};
    range.widen(1);
    EXPECT_EQ(range, (BinRange{-3, 7, 1}));
    range.widen(0);
    EXPECT_EQ(range, (BinRange{-3, 7, 1}));
    range = {-5, 12, 0};
    range.limit(7);
    EXPECT_EQ(range, (BinRange{-3, 7, 1}));
    range.limit(6);
    EXPECT_EQ(range, (BinRange{-2, 4, 2}));
}

// 20,000 units of time need 15 bits, 6 more than the 9 of a first sample's bins.
TEST(BinRange, FitsTheFirstSample) {
    BinRange range;
    range.fit_sample(5, 5);
    range.fit_sample(0, 500);
    EXPECT_EQ(range.shift, 0);
    range.fit_sample(100, 20'100);
    EXPECT_EQ(range.shift, 6);
    range.fit_sample(earliest, latest); // 64 bits
    EXPECT_EQ(range.shift, 55);
}

} // namespace
