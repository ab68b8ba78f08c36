// SPDX-License-Identifier: Apache-2.0
#include "facts.h"

#include "gtest/gtest.h"

using namespace zan::profile;

TEST(Facts, NumbersAreFoundByTheNameOfAMetricOrFact) {
    Facts facts;
    facts[Metric::port_use] = 78;
    facts[Fact::own_share] = 49;
    EXPECT_EQ(facts.number(*find_number("port_use")), 78.0);
    EXPECT_EQ(facts.number(*find_number("own_share")), 49.0);
    EXPECT_EQ(facts.number(*find_number("more_places")), Value());
    EXPECT_EQ(find_number("own_shares"), std::nullopt);
    EXPECT_EQ(find_number(""), std::nullopt);
}

TEST(Facts, MetricsOfMemoriesAndRunsAreNoFactsOfABlock) {
    EXPECT_EQ(find_number("memory_mean"), std::nullopt);
    EXPECT_EQ(find_number("span"), std::nullopt);
}

TEST(Facts, TextsAreEmptyUntilTheyAreSet) {
    Facts facts;
    const auto text = find_text("stalling_block");
    ASSERT_TRUE(text);
    EXPECT_EQ(facts[*text], "");
    facts[FactText::stalling_block] = "load";
    EXPECT_EQ(facts[*text], "load");
    EXPECT_EQ(find_text("memory"), FactText::memory);
    EXPECT_EQ(find_text("caller"), FactText::caller);
    EXPECT_EQ(find_text("stall"), std::nullopt);
}

TEST(Facts, MetricsOfABlockAreTaken) {
    MetricValues metrics;
    metrics[Metric::stall] = 12;
    const Facts facts(metrics);
    EXPECT_EQ(facts[Metric::stall], 12.0);
    EXPECT_EQ(facts[Fact::shared], Value());
}
