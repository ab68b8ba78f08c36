// SPDX-License-Identifier: Apache-2.0
// Nodes of boards.
#include <gtest/gtest.h>

#include "node_text.h"
#include "tly_json.h"

namespace {

TEST(BoardNode, WithoutMemoriesHasEmptyChildren) {
    EXPECT_EQ(node_text(getBoardJSON("custom_ipa", {}, {})), "type=board board_type=custom_ipa children=");
}

TEST(BoardNode, AMemoryHasABurstCountOnlyIfItHasOne) {
    EXPECT_EQ(node_text(getBoardJSON("b", {{"DDR", 19200.0f}}, {{"DDR", 16u}, {"HBM", 8u}})),
              "type=board board_type=b children=[{type=globalmem global_memory_name=DDR "
              "max_theoretical_globalmem_bw=19200 max_burst_count=16}]");
    EXPECT_EQ(node_text(getBoardJSON("b", {{"DDR", 19200.0f}}, {{"HBM", 8u}})),
              "type=board board_type=b children=[{type=globalmem global_memory_name=DDR "
              "max_theoretical_globalmem_bw=19200}]");
}

// 12345678.9 is 12345679 as a float, and has 7 significant digits in the report.
TEST(BoardNode, ABandwidthHasSevenSignificantDigits) {
    EXPECT_EQ(node_text(getBoardJSON("b", {{"DDR", 12345678.9f}}, {})),
              "type=board board_type=b children=[{type=globalmem global_memory_name=DDR "
              "max_theoretical_globalmem_bw=1.234568e+07}]");
}

TEST(BoardNode, MemoriesComeInTheOrderOfTheMap) {
    std::unordered_map<std::string, float> bandwidths;
    for (int i = 0; i < 30; ++i)
        bandwidths["memory" + std::to_string(i)] = 1.0f;
    std::string expected;
    for (const auto& [name, bandwidth] : bandwidths)
        expected += name + " ";
    std::string actual;
    const ptree node = getBoardJSON("b", bandwidths, {});
    for (const auto& [key, memory] : node.get_child("children"))
        actual += memory.get<std::string>("global_memory_name") + " ";
    EXPECT_EQ(actual, expected);
}

} // namespace
