// SPDX-License-Identifier: Apache-2.0
#include "series_cursor.h"

#include <gtest/gtest.h>

#include <cmath>

#include "temp_dir.h"

using namespace zan::profile;

namespace {

class SeriesCursorTest : public testing::Test {
  protected:
    const TempDir m_dir;
    ChunkStore m_store{m_dir.path()};
};

TEST_F(SeriesCursorTest, ReadsNumbersAndMarks) {
    Series series(m_store);
    series.add(0.5f);
    series.add_marks(Mark::nan, 2);
    series.add(2.0f);
    series.finish();
    SeriesCursor cursor(&series, m_store);
    EXPECT_EQ(cursor.number_at(0), 0.5);
    EXPECT_EQ(cursor.mark_at(0), std::nullopt);
    EXPECT_EQ(cursor.mark_at(1), Mark::nan);
    EXPECT_TRUE(std::isnan(cursor.number_at(2)));
    EXPECT_EQ(cursor.units_at(3), 20);
    EXPECT_EQ(cursor.mark_at(3), std::nullopt);
    EXPECT_EQ(cursor.mark_at(4), Mark::missing);
    EXPECT_EQ(cursor.units_at(4), 0);
}

TEST_F(SeriesCursorTest, CrossesChunks) {
    Series series(m_store);
    for (std::size_t i = 0; i < chunk_values + 2; ++i)
        series.add(static_cast<std::int64_t>(i));
    series.finish();
    SeriesCursor cursor(&series, m_store);
    for (const std::size_t place : {std::size_t{0}, chunk_values - 1, chunk_values, chunk_values + 1})
        EXPECT_EQ(cursor.units_at(place), static_cast<std::int64_t>(place));
}

TEST_F(SeriesCursorTest, NoSeriesHasNoNumbers) {
    SeriesCursor cursor(nullptr, m_store);
    EXPECT_EQ(cursor.mark_at(0), Mark::missing);
    EXPECT_EQ(cursor.units_at(0), 0);
    EXPECT_TRUE(std::isnan(cursor.number_at(0)));
}

} // namespace
