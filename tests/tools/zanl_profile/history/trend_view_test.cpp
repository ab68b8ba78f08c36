// SPDX-License-Identifier: Apache-2.0
#include "trend_view.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace zan::tool;
using namespace zan::profile;

TrendView view_of(Metric metric, const std::vector<double>& values) {
    TrendView view;
    view.subject = "k";
    view.metric = &row_of(metric);
    view.label = "commit";
    for (const double value : values)
        view.line.points.push_back(
            {{0, "id", "2026-11-2" + std::to_string(view.line.points.size()), "", {}}, value});
    view.statistics = statistics_of(values);
    return view;
}

// 10 us are 0.01 ms; 400 ns would be 0.00 ms, and have three digits in place of that.
TEST(TrendView, ADeviationIsInTheUnitOfItsMedian) {
    const TrendView time = view_of(Metric::kernel_time, {});
    EXPECT_EQ(deviation_text(time, 1e4, 4.3e6), "0.01");
    EXPECT_EQ(deviation_text(time, 400, 4.3e6), "0.0004");
    EXPECT_EQ(deviation_text(time, 0, 4.3e6), "0.00");
    EXPECT_EQ(deviation_text(time, 12, 450), "12");
    EXPECT_EQ(deviation_text(view_of(Metric::stall, {}), 0.4, 28), "0.4");
    EXPECT_EQ(deviation_text(view_of(Metric::bandwidth, {}), 250, 12'267), "250");
    EXPECT_EQ(deviation_text(view_of(Metric::moved, {}), 20'000, 1.28e6), "0.02");
    EXPECT_EQ(deviation_text(view_of(Metric::stall, {}), 0.4, 0), "0.4");
}

// The greatest value has 12 columns: 6 is half of 12, and 0.1 still has the smallest bar.
TEST(TrendView, BarsAreInProportion) {
    const TrendView view = view_of(Metric::stall, {12, 6, 0.1, 0});
    EXPECT_EQ(trend_text(view, false, false),
              "2026-11-20  -  12.0%  ############\n"
              "2026-11-21  -   6.0%  ######\n"
              "2026-11-22  -   0.1%  #\n"
              "2026-11-23  -   0.0%                -6.0 points\n"
              "median of the 3 runs before 6.0% (deviation 5.9)\n");
    // 7.7 eighths of a column for 0.96 of 12.
    EXPECT_EQ(trend_text(view_of(Metric::stall, {12, 6, 0.96}), true, false),
              "2026-11-20  -  12.0%  ████████████\n"
              "2026-11-21  -   6.0%  ██████\n"
              "2026-11-22  -   1.0%  █             -5.0 points\n"
              "median of the 2 runs before 6.0% (deviation 0.0)\n");
    EXPECT_THAT(trend_text(view_of(Metric::stall, {12, 0.66}), true, false), testing::HasSubstr("  ▋"));
}

TEST(TrendView, OneRunHasNoMedian) {
    EXPECT_EQ(trend_text(view_of(Metric::kernel_time, {1e6}), false, false),
              "2026-11-20  -  1.00 ms  ############\n");
    TrendView view = view_of(Metric::kernel_time, {1e6});
    view.limit = 5;
    view.verdict = TrendVerdict::too_few;
    EXPECT_EQ(trend_sentence(view), "too few runs to tell: 0 before the newest, and it takes 5");
    EXPECT_EQ(change_text(view), "");
}

TEST(TrendView, TimesWithoutAUnitAreNumbers) {
    TrendView view = view_of(Metric::kernel_time, {700, 700});
    view.line.time_unit = false;
    EXPECT_EQ(trend_sentence(view), "median of the 1 run before 700 (deviation 0)");
}

} // namespace
