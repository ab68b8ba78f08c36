// SPDX-License-Identifier: Apache-2.0
#include "summary_rows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "made_summary.h"
#include "rules_reader.h"

using namespace zan::tool;
using namespace zan::profile;

TEST(SummaryRows, WhatIsNotKnownIsADash) {
    ProfileSummary summary;
    EXPECT_EQ(time_cell(summary, {}), "-");
    EXPECT_EQ(percent_cell({}), "-");
    EXPECT_EQ(count_cell({}), "-");
    for (const MetricRow& row : metric_table())
        EXPECT_EQ(metric_cell(summary, row.metric, {}), "-") << row.name;
}

TEST(SummaryRows, TimesHaveAUnitOnlyIfItIsKnown) {
    ProfileSummary summary;
    EXPECT_EQ(time_cell(summary, 12'345.0), "12,345");
    summary.nanoseconds = 1;
    EXPECT_EQ(time_cell(summary, 12'345.0), "12.3 us");
}

TEST(SummaryRows, MetricsAreInTheirUnit) {
    const ProfileSummary summary;
    EXPECT_EQ(metric_cell(summary, Metric::stall, 28.04), "28.0%");
    EXPECT_EQ(metric_cell(summary, Metric::bandwidth, 12'266.7), "12267");
    EXPECT_EQ(metric_cell(summary, Metric::moved, 1e6), "1000000");
    EXPECT_EQ(metric_cell(summary, Metric::net, 6.449), "6.45");
    EXPECT_EQ(metric_cell(summary, Metric::burst, 3.984), "3.98");
}

TEST(SummaryRows, ABlockIsNamedByWhatItDoes) {
    BlockSummary block = made::global_read();
    EXPECT_EQ(what_cell(block), "DDR read");
    block.memory.clear();
    EXPECT_EQ(what_cell(block), "global read");
    EXPECT_EQ(what_cell(made::block("c", BlockKind::channel, Direction::write)), "channel write");
    EXPECT_EQ(what_cell(made::loop()), "loop");
}

TEST(SummaryRows, PlacesCanBeShort) {
    EXPECT_EQ(place_cell({"device/include/sad.h", 6, 1}), "device/include/sad.h:6");
    EXPECT_EQ(place_cell({"device/include/sad.h", 6, 1}, true), "sad.h:6");
    EXPECT_EQ(place_cell({"sad.h", 0, 0}, true), "sad.h");
    EXPECT_EQ(place_cell({"", 0, 0}), "");
    BlockSummary block;
    EXPECT_EQ(source_cell(block), "");
    block.sources = {{}};
    EXPECT_EQ(source_cell(block), "");
    block.sources = {{{"b.h", 1, 1}, {"a.cl", 2, 2}}, {{"c.cl", 3, 3}}};
    EXPECT_EQ(source_cell(block), "b.h:1");
}

TEST(SummaryRows, AComputeUnitIsPartOfTheName) {
    KernelSummary kernel;
    kernel.name = "aggregate";
    EXPECT_EQ(kernel_cell(kernel), "aggregate");
    kernel.compute_unit = 2;
    EXPECT_EQ(kernel_cell(kernel), "aggregate#2");
}

TEST(SummaryRows, BlocksAreSortedByAMetricWithUnknownOnesLast) {
    BlockSummary low = made::global_read("low");
    low.metrics[Metric::hits] = 10;
    BlockSummary unknown = made::global_read("unknown");
    unknown.metrics[Metric::hits].reset();
    BlockSummary high = made::global_read("high");
    high.metrics[Metric::hits] = 20;
    const ProfileSummary summary = made::run({made::kernel("a", {unknown, low}), made::kernel("b", {high})});
    const auto names = [&](const std::string& kernel, std::optional<Metric> sort) {
        std::vector<std::string> found;
        for (const RankedBlock& block : sorted_blocks(summary, kernel, sort))
            found.push_back(summary.kernels[block.kernel].blocks[block.block].name);
        return found;
    };
    EXPECT_THAT(names("", Metric::hits), testing::ElementsAre("high", "low", "unknown"));
    EXPECT_THAT(names("a", Metric::hits), testing::ElementsAre("low", "unknown"));
    EXPECT_THAT(names("", {}), testing::ElementsAre("unknown", "low", "high")); // all lost the same
}

TEST(SummaryRows, DevicesAreInTheOrderOfTheirNumbers) {
    ProfileSummary summary = made::run({made::kernel("a", {}), made::kernel("b", {}), made::kernel("c", {})});
    summary.kernels[0].device = 1;
    summary.kernels[2].device.reset();
    EXPECT_THAT(devices_of(summary), testing::ElementsAre(std::nullopt, 0, 1));
}
