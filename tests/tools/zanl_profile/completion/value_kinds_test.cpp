// SPDX-License-Identifier: Apache-2.0
#include "value_kinds.h"

#include <gtest/gtest.h>

namespace {

using zan::tool::kind_of_value;

TEST(ValueKinds, ALabelHasItsKindInAllCommands) {
    EXPECT_EQ(kind_of_value("check", "DESIGN"), "files:zanx");
    EXPECT_EQ(kind_of_value("", "WHEN"), "words:auto,always,never");
}

TEST(ValueKinds, ALabelMayMeanSomethingElseInOneCommand) {
    EXPECT_EQ(kind_of_value("package create", "OUT"), "files:zanx");
    EXPECT_EQ(kind_of_value("package pack", "OUT"), "files");
    EXPECT_EQ(kind_of_value("packages", "OUT"), "unknown");
}

TEST(ValueKinds, MetricsOfBlocksAreWords) {
    const std::string kind = kind_of_value("summary", "METRIC");
    EXPECT_TRUE(kind.starts_with("words:stall,valid,idle,")) << kind;
    EXPECT_EQ(kind.find("kernel_time"), std::string::npos);
    EXPECT_NE(kind.back(), ',');
}

TEST(ValueKinds, MetricsOfATrendAreThoseOfKernelsToo) {
    const std::string kind = kind_of_value("history trend", "METRIC");
    EXPECT_NE(kind.find(",kernel_time,"), std::string::npos) << kind;
    EXPECT_EQ(kind.find("memory_mean"), std::string::npos);
}

TEST(ValueKinds, ALabelWithoutARowIsUnknown) {
    EXPECT_EQ(kind_of_value("check", "NO SUCH LABEL"), "unknown");
}

} // namespace
