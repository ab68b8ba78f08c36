// SPDX-License-Identifier: Apache-2.0
// A report tree as a plain tree of texts.
#include <gtest/gtest.h>

#include "report_tree.h"

namespace {

using Plain = boost::property_tree::ptree;

TEST(ExpandedTree, KeepsKeysOrderAndTexts) {
    ptree tree;
    append_text(tree, "b", "x");
    append_text(tree, "a.b", "a dot in a key"); // appended as it stands, not as a path
    ptree list = createJSONArray(std::vector<int>{4, 0});
    append_node(tree, "list", list);
    const Plain plain = expanded(tree);
    ASSERT_EQ(plain.size(), 3u);
    auto entry = plain.begin();
    EXPECT_EQ(entry->first, "b");
    EXPECT_EQ((++entry)->first, "a.b");
    EXPECT_EQ(entry->second.data(), "a dot in a key");
    EXPECT_EQ((++entry)->first, "list");
    EXPECT_EQ(entry->second.size(), 2u);
    EXPECT_EQ(entry->second.back().second.data(), "0");
}

TEST(ExpandedTree, ATreeOfTextsIsTheSameDocument) {
    const auto fill = [](auto& document) {
        document.put("a.b", "1");
        document.put("a.c", "2");
        document.push_back({"", std::decay_t<decltype(document)>(std::string("element"))});
    };
    Plain plain;
    fill(plain);
    ptree tree;
    fill(tree);
    EXPECT_EQ(expanded(tree), plain);
}

} // namespace
