// SPDX-License-Identifier: Apache-2.0
// Source locations.
#include "source_node.h"

#include <gtest/gtest.h>

#include "node_text.h"
#include "report_tree.h"
#include "tree_sink.h"

namespace {

using Plain = boost::property_tree::ptree;

TEST(SourceNode, HasAColumnOnlyIfAsked) {
    const Plain with = expanded(getSourceJSON("/a/b.cl", 7, 3, true));
    ASSERT_EQ(with.size(), 3u);
    EXPECT_EQ(with.front().first, "filename");
    EXPECT_EQ(with.get<std::string>("filename"), "/a/b.cl");
    EXPECT_EQ(with.get<std::string>("line"), "7");
    EXPECT_EQ(with.back().first, "column_num");
    EXPECT_EQ(with.back().second.data(), "3");

    const Plain without = expanded(getSourceJSON("", 0, -1, false));
    ASSERT_EQ(without.size(), 2u);
    EXPECT_EQ(without.get<std::string>("filename"), "");
    EXPECT_EQ(without.get<std::string>("line"), "0");
}

TEST(SourceNode, IsWrittenToASinkTheSameWay) {
    ptree node;
    TreeSink sink(node);
    write_source(sink, "/a/b.cl", 7);
    EXPECT_EQ(node_text(node), "filename=/a/b.cl line=7");
    write_source(sink, "", -1, 0);
    EXPECT_EQ(node_text(node), "filename=/a/b.cl line=7 filename= line=-1 column_num=0");
}

} // namespace
