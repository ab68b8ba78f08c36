// SPDX-License-Identifier: Apache-2.0
// Nodes that are written to a tree.
#include "tree_sink.h"

#include <gtest/gtest.h>

#include "node_text.h"

namespace {

TEST(TreeSink, NodesHaveTheirChildrenInOrder) {
    ptree node;
    TreeSink sink(node);
    sink.text("text", "a");
    sink.open("list", Form::array);
    sink.open({}, Form::object);
    sink.number("n", -3);
    sink.close();
    sink.text({}, "b");
    sink.close();
    sink.boolean("yes", true);
    sink.boolean("no", false);
    EXPECT_EQ(node_text(node), "text=a list=[{n=-3} b] yes=true no=false");
}

TEST(TreeSink, AChildWithoutChildrenIsAnEmptyText) {
    ptree node;
    TreeSink sink(node);
    for (const Form form : {Form::object, Form::array}) {
        sink.open("none", form);
        sink.close();
    }
    EXPECT_EQ(node_text(node), "none= none=");
}

TEST(TreeSink, ArraysOfListsAndOfPlainValuesAreTheSame) {
    const std::vector<long long> values = {4, 0, -1, 0};
    ptree node;
    TreeSink sink(node);
    sink.array("list", SampleList<long long>(values));
    sink.array("plain", std::span<const long long>(values));
    EXPECT_EQ(node_text(node), "list=[4 0 -1 0] plain=[4 0 -1 0]");
}

// They come in pieces of any type.
TEST(TreeSink, ElementsJoinTheArrayThatIsOpen) {
    const std::vector<int> ints = {1, -2};
    const std::vector<long long> longs = {1LL << 40};
    const std::vector<float> floats = {0.5f, 3.0f};
    ptree node;
    TreeSink sink(node);
    sink.open("all", Form::array);
    sink.elements(std::span<const int>(ints));
    sink.elements(std::span<const long long>(longs));
    sink.elements(std::span<const float>(floats));
    sink.elements(SampleList<int>(ints));
    sink.elements(SampleList<long long>(longs));
    sink.elements(SampleList<float>(floats));
    sink.close();
    EXPECT_EQ(node_text(node), "all=[1 -2 1099511627776 0.5 3 1 -2 1099511627776 0.5 3]");
}

TEST(TreeSink, SamplesThatAreNoneAppendNothing) {
    ptree node;
    TreeSink sink(node);
    sink.samples("none", SampleList<int>());
    sink.samples("one", SampleList<int>({1}));
    ASSERT_EQ(node.size(), 1u);
    EXPECT_EQ(node.front().first, "one");
}

} // namespace
