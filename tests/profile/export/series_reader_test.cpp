// SPDX-License-Identifier: Apache-2.0
#include "series_reader.h"

#include <gtest/gtest.h>

#include <limits>

#include "export_records.h"

namespace {

using namespace zan::profile;

SampleSeries counts_series(const SampleList<long long>& times, const SampleList<long long>& values) {
    SampleSeries series;
    series.metric = sample_metric(Counts::stall);
    series.times = &times;
    series.values = &values;
    series.size = std::max(times.size(), values.size());
    return series;
}

TEST(SeriesReader, AShorterArrayHasNulls) {
    const SampleList<long long> times = {10, 20, 30};
    const SampleList<long long> values = {0, 7};
    EXPECT_EQ(shown_series(counts_series(times, values)), "sample 0 0 stall: 0@10=0 1@20=7 2@30=-");
}

TEST(SeriesReader, ALongerArrayHasNoTimes) {
    const SampleList<long long> times = {10};
    const SampleList<long long> values = {1, 0};
    EXPECT_EQ(shown_series(counts_series(times, values)), "sample 0 0 stall: 0@10=1 1@-=0");
}

TEST(SeriesReader, CountsBelowZeroAreNull) {
    const SampleList<long long> times = {10, 20};
    const SampleList<long long> values = {-1, 3};
    EXPECT_EQ(shown_series(counts_series(times, values)), "sample 0 0 stall: 0@10=- 1@20=3");
}

TEST(SeriesReader, WhatWasNotMeasuredIsNull) {
    const SampleList<long long> times = {10, 20};
    const SampleList<long long> values = {4, 3};
    SampleSeries series = counts_series(times, values);
    series.measured = false;
    series.first = 5;
    EXPECT_EQ(shown_series(series), "sample 0 0 stall: 5@10=- 6@20=-");
}

TEST(SeriesReader, NumbersThatAreNoneAreNullAndCounted) {
    const SampleList<long long> times = {10, 20, 30, 40};
    constexpr float inf = std::numeric_limits<float>::infinity();
    const SampleList<float> values = {0.8f, std::numeric_limits<float>::quiet_NaN(), inf, -inf};
    SampleSeries series = counts_series(times, {});
    series.metric = sample_metric(Rates::efficiency);
    series.values = &values;
    series.size = 4;
    EXPECT_EQ(shown_series(series), "sample 0 0 efficiency: 0@10=0.8 1@20=- 2@30=- 3@40=-");
    SeriesReader reader(series);
    SeriesChunk chunk;
    while (reader.next(chunk)) {
    }
    EXPECT_EQ(reader.odd().num_nan, 1);
    EXPECT_EQ(reader.odd().num_inf, 2);
}

// 600 values are three chunks: 256, 256 and 88.
TEST(SeriesReader, LongSeriesComeInChunks) {
    SampleList<long long> times;
    SampleList<long long> values;
    for (int i = 0; i < 600; ++i) {
        times.push_back(i * 10);
        values.push_back(i);
    }
    const SampleSeries series = counts_series(times, values);
    SeriesReader reader(series);
    SeriesChunk chunk;
    std::vector<std::size_t> sizes;
    while (reader.next(chunk)) {
        sizes.push_back(chunk.size);
        EXPECT_EQ(chunk.value(chunk.size - 1), static_cast<double>(chunk.first + chunk.size - 1));
    }
    EXPECT_EQ(sizes, (std::vector<std::size_t>{256, 256, 88}));
}

// The float next to 0.1 is 0.100000001490116; the report has "0.1".
TEST(SeriesReader, FloatsAreTheNumbersOfTheReport) {
    EXPECT_EQ(written_value(0.1f), 0.1);
    EXPECT_EQ(written_value(12345.67f), 12345.67);
    EXPECT_EQ(written_value(7.0f), 7.0);
    EXPECT_EQ(written_value(16777216.0f), 1.677722e7); // seven digits of 16777216
}

} // namespace
