// SPDX-License-Identifier: Apache-2.0
#include "metric_text.h"

#include <gtest/gtest.h>

#include <limits>

using namespace zan::profile;

namespace {

TEST(MetricText, HasTheUnit) {
    EXPECT_EQ(metric_text(MetricUnit::percent, 28.04, true), "28.0%");
    EXPECT_EQ(metric_text(MetricUnit::time, 8'700.0, true), "8.70 us");
    EXPECT_EQ(metric_text(MetricUnit::cycles, 3.25, true), "3.25 cycles");
    EXPECT_EQ(metric_text(MetricUnit::megabytes_per_second, 12'267.0, true), "12,267 MB/s");
    EXPECT_EQ(metric_text(MetricUnit::words, 4.0, true), "4 words");
}

TEST(MetricText, BytesHaveAUnitOfThreeDigits) {
    EXPECT_EQ(metric_text(MetricUnit::bytes, 999.0, true), "999 B");
    EXPECT_EQ(metric_text(MetricUnit::bytes, 999.5, true), "1 kB");
    EXPECT_EQ(metric_text(MetricUnit::bytes, 1.28e6, true), "1.28 MB");
    EXPECT_EQ(metric_text(MetricUnit::bytes, 5e12, true), "5,000 GB");
}

TEST(MetricText, ATimeWithoutAUnitIsTheNumberOfTheReport) {
    EXPECT_EQ(metric_text(MetricUnit::time, 8'700.0, false), "8,700");
}

TEST(MetricText, WhatIsMissingIsADash) {
    EXPECT_EQ(metric_text(MetricUnit::percent, {}, true), "-");
    EXPECT_EQ(metric_text(MetricUnit::time, std::numeric_limits<double>::infinity(), true), "-");
    EXPECT_EQ(delta_text(MetricUnit::percent, {}, 1.0, true), "-");
    EXPECT_EQ(delta_text(MetricUnit::percent, 1.0, {}, true), "-");
}

TEST(MetricText, ADeltaIsInPointsOrInPercentOfTheOldValue) {
    EXPECT_EQ(delta_text(MetricUnit::percent, 28.0, 35.1, true), "+7.1 points");
    EXPECT_EQ(delta_text(MetricUnit::percent, 35.1, 28.0, true), "-7.1 points");
    EXPECT_EQ(delta_text(MetricUnit::time, 8'000.0, 9'200.0, true), "+15.0%");
    EXPECT_EQ(delta_text(MetricUnit::words, 4.0, 3.0, true), "-25.0%");
    EXPECT_EQ(delta_text(MetricUnit::bytes, 1.0, 1.0, true), "0.0%");
}

TEST(MetricText, ADeltaFromZeroIsTheNewValue) {
    EXPECT_EQ(delta_text(MetricUnit::words, 0.0, 3.2, true), "+3.2 words");
    EXPECT_EQ(delta_text(MetricUnit::time, 0.0, 500.0, false), "+500");
}

} // namespace
