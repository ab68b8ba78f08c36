// SPDX-License-Identifier: Apache-2.0
#include "run_times.h"

#include <gtest/gtest.h>

#include "stream_report.h"

using namespace zan::profile;

namespace {

TEST(RunTimes, SpanKernelsAndTransfers) {
    StreamReport report{.kernels = {{.start = 50, .stamps = {80}, .cycles = {30}}}};
    report.transfers = {{.start = 10, .end = 20}, {.start = 70, .end = 90}};
    const RunTimes times(*totals_of(report));
    EXPECT_EQ(times.span, (TimeSpan{10, 90}));
    EXPECT_EQ(times.started_time, 30.0);
    EXPECT_EQ(times.transfer_only, 20.0); // 10 to 20 and 80 to 90
    EXPECT_TRUE(times.has_started);
}

TEST(RunTimes, AutorunKernelsAreNoCompany) {
    StreamReport report{.kernels = {{.name = "k", .start = 0, .stamps = {40}, .cycles = {40}}}};
    report.kernels.push_back({.name = "stage",
                              .start = 0,
                              .stamps = {50, 100},
                              .cycles = {50, 50},
                              .blocks = {{.valid = {0, 50}}},
                              .autorun = true});
    const RunTimes times(*totals_of(report));
    EXPECT_EQ(times.kernels[0].alone, 40.0);
    EXPECT_EQ(times.started_time, 40.0);
    EXPECT_EQ(times.kernels[1].ran, (std::vector<TimeSpan>{{0, 100}}));
    EXPECT_EQ(times.kernels[1].work, (std::vector<TimeSpan>{{50, 100}}));
    EXPECT_EQ(times.span, (TimeSpan{0, 100}));
}

TEST(RunTimes, OfNothingHaveNoSpan) {
    const RunTimes times(*totals_of({}));
    EXPECT_FALSE(times.has_span);
    EXPECT_FALSE(times.has_started);
    EXPECT_EQ(times.started_time, 0.0);
}

} // namespace
