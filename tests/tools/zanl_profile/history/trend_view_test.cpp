// SPDX-License-Identifier: Apache-2.0
#include "trend_view.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

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
    EXPECT_EQ(deviation_text(view_of(Metric::stall, {}), 0.4, -28), "0.4");
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
    // Nothing stands after a value of 0.
    EXPECT_EQ(trend_text(view_of(Metric::stall, {0, 12}), false, false),
              "2026-11-20  -   0.0%\n"
              "2026-11-21  -  12.0%  ############  +12.0 points\n"
              "median of the 1 run before 0.0% (deviation 0.0)\n");
}

TEST(TrendView, ALabelWithoutATextIsADash) {
    const TrendView view = view_of(Metric::stall, {1});
    HistoryRun run = view.line.points[0].run;
    EXPECT_EQ(label_text(view, run), "-");
    run.labels["commit"] = "";
    EXPECT_EQ(label_text(view, run), "-");
    run.labels["commit"] = "1f3a";
    EXPECT_EQ(label_text(view, run), "1f3a");
}

std::string json_of(const TrendView& view) {
    std::string text;
    print_trend_json(view, [&](std::string_view piece) { text += piece; });
    return text;
}

// One run has no median, and without a limit there is no verdict. JSON has no number for what isn't finite.
TEST(TrendView, WhatIsNotKnownIsNullInJson) {
    TrendView view = view_of(Metric::kernel_time, {std::numeric_limits<double>::infinity()});
    EXPECT_EQ(json_of(view), R"({
    "schema": "zanl-profile/history-trend",
    "schema_version": 1,
    "subject": "k",
    "metric": "kernel_time",
    "runs": [
        {
            "id": "id",
            "date": "2026-11-20",
            "labels": {},
            "value_ns": null
        }
    ],
    "runs_before": 0,
    "median_ns": null,
    "deviation_ns": null,
    "change_percent": null
}
)");
}

// 6 runs of 4 and one of 3 are 25% less; of a median of 0 there is no share.
TEST(TrendView, AChangeInJsonIsAShareOfTheMedian) {
    TrendView view = view_of(Metric::stall, {4, 4, 4, 4, 4, 4, 3});
    view.limit = 5;
    view.verdict = judge(view.statistics, view.metric->better, *view.limit);
    EXPECT_THAT(json_of(view), testing::HasSubstr("    \"runs_before\": 6,\n"
                                                  "    \"median_percent\": 4.0,\n"
                                                  "    \"deviation_percent\": 0.0,\n"
                                                  "    \"change_percent\": -25.0,\n"
                                                  "    \"limit_percent\": 5.0,\n"
                                                  "    \"verdict\": \"holds\"\n}"));
    EXPECT_THAT(json_of(view_of(Metric::stall, {0, 0, 3})),
                testing::HasSubstr("    \"runs_before\": 2,\n"
                                   "    \"median_percent\": 0.0,\n"
                                   "    \"deviation_percent\": 0.0,\n"
                                   "    \"change_percent\": null\n}"));
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
