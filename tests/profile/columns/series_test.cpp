// SPDX-License-Identifier: Apache-2.0
#include "series.h"

#include <cmath>
#include <limits>
#include <vector>

#include "gtest/gtest.h"
#include "series_table.h"
#include "temp_dir.h"

using namespace zan::profile;

namespace {

class SeriesTest : public testing::Test {
  protected:
    std::vector<std::int64_t> values_of(const Series& series) {
        std::vector<std::int64_t> values;
        for (const StoredChunk& chunk : series.chunks()) {
            EXPECT_EQ(chunk.digits, series.digits());
            std::vector<std::int64_t> part(chunk.values);
            store.get(chunk, part);
            values.insert(values.end(), part.begin(), part.end());
        }
        return values;
    }

    TempDir folder;
    ChunkStore store{folder.path()};
};

TEST_F(SeriesTest, HoldsWholeNumbers) {
    Series series(store);
    for (const std::int64_t value : {5, -1, 7})
        series.add(value);
    series.finish();
    EXPECT_EQ(values_of(series), (std::vector<std::int64_t>{5, -1, 7}));
    EXPECT_EQ(series.digits(), 0);
    EXPECT_EQ(series.least(), -1);
    EXPECT_EQ(series.greatest(), 7);
}

TEST_F(SeriesTest, HasTheDecimalsOfTheValueThatNeedsMost) {
    Series series(store);
    for (const float value : {2.0f, 0.25f, -1.5f})
        series.add(value);
    series.finish();
    EXPECT_EQ(series.digits(), 2);
    EXPECT_EQ(values_of(series), (std::vector<std::int64_t>{200, 25, -150}));
    EXPECT_EQ(series.least(), -150);
    EXPECT_EQ(series.greatest(), 200);
}

TEST_F(SeriesTest, PacksEarlierChunksAgainForMoreDecimals) {
    Series series(store);
    for (std::size_t i = 0; i < chunk_values; ++i)
        series.add(static_cast<float>(i % 3));
    series.add(0.5f);
    series.finish();
    const std::vector<std::int64_t> values = values_of(series);
    ASSERT_EQ(values.size(), chunk_values + 1);
    EXPECT_EQ(values[0], 0);
    EXPECT_EQ(values[1], 10);
    EXPECT_EQ(values[2], 20);
    EXPECT_EQ(values.back(), 5);
}

TEST_F(SeriesTest, MarkedPlacesRepeatTheValueBeforeThem) {
    Series series(store);
    series.add_marks(Mark::missing, 2);
    series.add(std::int64_t{4});
    series.add(std::numeric_limits<float>::infinity());
    series.add(-std::numeric_limits<float>::infinity());
    series.add(std::nanf(""));
    series.add(std::copysign(std::nanf(""), -1.0f));
    series.add(-0.0f);
    series.add(std::int64_t{6});
    series.fill_up_to(12);
    series.fill_up_to(3);
    series.finish();
    EXPECT_EQ(values_of(series), (std::vector<std::int64_t>{0, 0, 4, 4, 4, 4, 4, 4, 6, 6, 6, 6}));
    const std::vector<MarkRun> marks{
        {0, 2, Mark::missing},   {3, 1, Mark::infinity},   {4, 1, Mark::minus_infinity}, {5, 1, Mark::nan},
        {6, 1, Mark::minus_nan}, {7, 1, Mark::minus_zero}, {9, 3, Mark::missing}};
    EXPECT_EQ(series.marks(), marks);
    EXPECT_EQ(series.least(), 4);
    EXPECT_EQ(series.greatest(), 6);
}

TEST_F(SeriesTest, AddsAnOffsetToEachValue) {
    Series series(store);
    for (std::int64_t i = 0; i < static_cast<std::int64_t>(chunk_values) + 5; ++i)
        series.add(i);
    series.finish(1000);
    const std::vector<std::int64_t> values = values_of(series);
    EXPECT_EQ(values.front(), 1000);
    EXPECT_EQ(values.back(), static_cast<std::int64_t>(chunk_values) + 1004);
    EXPECT_EQ(series.least(), 1000);
}

TEST_F(SeriesTest, LargeNumbersKeepFewerDecimals) {
    Series series(store);
    series.add(0.5f);
    series.add(-0.25f);
    series.add(1e18f); // 10^18 has room for no decimals: 0.5 is rounded to 1, -0.25 to 0
    series.finish();
    EXPECT_EQ(series.digits(), 0);
    EXPECT_EQ(values_of(series), (std::vector<std::int64_t>{1, 0, 1'000'000'000'000'000'000}));
    Series some(store);
    some.add(0.000000125f);
    some.add(1e10f); // 10^19 units of 10^-9 are too many, 10^18 of 10^-8 aren't
    some.finish();
    EXPECT_EQ(some.digits(), 8);
    EXPECT_EQ(values_of(some), (std::vector<std::int64_t>{13, 1'000'000'000'000'000'000}));
    Series other(store);
    other.add(1e18f);
    other.add(0.5f); // rounded to a whole number
    other.finish();
    EXPECT_EQ(other.digits(), 0);
    EXPECT_EQ(values_of(other), (std::vector<std::int64_t>{1'000'000'000'000'000'000, 1}));
}

TEST_F(SeriesTest, LargeNegativeNumbersKeepFewerDecimalsToo) {
    Series series(store);
    series.add(-0.5f);
    series.add(-0.25f);
    series.add(-1e18f); // halves are rounded away from 0
    series.finish();
    EXPECT_EQ(series.digits(), 0);
    EXPECT_EQ(values_of(series), (std::vector<std::int64_t>{-1, 0, -1'000'000'000'000'000'000}));
    EXPECT_EQ(series.least(), -1'000'000'000'000'000'000);
    Series other(store);
    other.add(-1e18f);
    other.add(-0.75f);
    other.finish();
    EXPECT_EQ(other.digits(), 0);
    EXPECT_EQ(values_of(other), (std::vector<std::int64_t>{-1'000'000'000'000'000'000, -1}));
}

// 2^53 is about 9.007 · 10^15: 10^13 has room for two decimals, 10^16 for none.
TEST_F(SeriesTest, RoundedNumbersKeepWhatADoubleHasRoomFor) {
    struct Row {
        double value;
        int digits;
        std::int64_t units;
    };
    for (const auto& [value, digits, units] :
         {Row{1.25, 3, 1250}, Row{-1e13, 2, -1'000'000'000'000'000}, Row{1e16, 0, 10'000'000'000'000'000}}) {
        Series series(store);
        series.add_rounded(value, 3);
        series.finish();
        EXPECT_EQ(series.digits(), digits) << value;
        EXPECT_EQ(values_of(series), (std::vector<std::int64_t>{units}));
    }
}

TEST_F(SeriesTest, NoMarksAreNoValues) {
    Series series(store);
    series.add_marks(Mark::nan, 0);
    EXPECT_EQ(series.size(), 0u);
    EXPECT_TRUE(series.marks().empty());
    EXPECT_TRUE(series.digest() == Series(store).digest());
}

TEST_F(SeriesTest, MovesItsValuesToTheStoreWhenThatIsFull) {
    Series series(store);
    for (int i = 0; i < 300; ++i)
        series.add(0.5f);
    store.add_held(ChunkStore::held_limit); // other series
    for (int i = 0; i < 3000; ++i)
        series.add(0.25f);
    series.finish();
    store.drop_held(ChunkStore::held_limit);
    EXPECT_FALSE(store.is_full());
    const std::vector<std::int64_t> values = values_of(series);
    ASSERT_EQ(values.size(), 3300u);
    EXPECT_EQ(values[299], 50);
    EXPECT_EQ(values[300], 25);
    EXPECT_EQ(values[3299], 25);
}

TEST_F(SeriesTest, TheTableStoresEqualSeriesOnce) {
    SeriesTable table(store);
    const auto series_of = [&](std::initializer_list<std::int64_t> values) {
        Series series(store);
        for (const std::int64_t value : values)
            series.add(value);
        return series;
    };
    EXPECT_EQ(table.add(series_of({1, 2})), 0);
    EXPECT_EQ(table.add(series_of({2, 1})), 1);
    EXPECT_EQ(table.add(series_of({1, 2})), 0);
    EXPECT_EQ(table.add(series_of({1, 2}), 5), 2);
    EXPECT_EQ(table.add(series_of({0, 0})), 3);
    ASSERT_EQ(table.rows().size(), 4u);
    EXPECT_EQ(table.rows()[1].first_chunk, 1);
    EXPECT_EQ(table.rows()[2].least, 6);
    EXPECT_EQ(table.rows()[3].first_chunk, -1);
    EXPECT_EQ(table.chunks().size(), 3u);
    EXPECT_EQ(table.num_values(), 8u);
}

TEST_F(SeriesTest, TheTableStoresThePyramidOfALongSeries) {
    SeriesTable table(store);
    const auto add = [&](double weight) {
        Column column(store);
        for (std::uint64_t i = 0; i < pyramid_from; ++i) {
            column.series.add(std::int64_t{3});
            column.pyramid.add(i == 0 ? std::nan("") : 3.0, 3.0 * weight, weight);
        }
        return table.add(column, 0);
    };
    const int first = add(1.0);
    const int second = add(2.0); // the same values with other weights
    EXPECT_NE(first, second);
    const SeriesRow& row = table.rows()[static_cast<std::size_t>(first)];
    const SeriesRow& other = table.rows()[static_cast<std::size_t>(second)];
    EXPECT_EQ(row.first_chunk, other.first_chunk);
    ASSERT_EQ(row.pyramid.size(), 4u);
    EXPECT_EQ(row.pyramid[0], other.pyramid[0]); // both have the least values 3, 3, ...
    EXPECT_NE(row.pyramid[2], other.pyramid[2]);
    // 255 values of 3 count in the first 256.
    EXPECT_EQ(table.rows()[static_cast<std::size_t>(row.pyramid[2])].least, 765);
    EXPECT_EQ(table.rows()[static_cast<std::size_t>(row.pyramid[2])].greatest, 768);
}

} // namespace
