// SPDX-License-Identifier: Apache-2.0
#include "metric_table.h"

#include <set>
#include <string>

#include "gtest/gtest.h"

using namespace zan::profile;

TEST(MetricTable, RowsStandInTheOrderOfTheEnumeration) {
    std::size_t place = 0;
    for (const MetricRow& row : metric_table())
        EXPECT_EQ(static_cast<std::size_t>(row.metric), place++) << row.name;
}

TEST(MetricTable, FindsEachMetricByItsNameAlone) {
    std::set<std::string_view> names;
    for (const MetricRow& row : metric_table()) {
        EXPECT_TRUE(names.insert(row.name).second) << row.name;
        EXPECT_EQ(find_metric(row.name), &row);
        EXPECT_EQ(&row_of(row.metric), &row);
    }
    EXPECT_EQ(find_metric("stal"), nullptr);
    EXPECT_EQ(find_metric(""), nullptr);
}

TEST(MetricTable, ValuesAreMissingUntilTheyAreSet) {
    MetricValues values;
    EXPECT_FALSE(values[Metric::stall].has_value());
    values[Metric::stall] = 0.0;
    EXPECT_EQ(values[Metric::stall], 0.0);
    EXPECT_FALSE(values[Metric::span].has_value());
}
