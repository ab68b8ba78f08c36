// SPDX-License-Identifier: Apache-2.0
// The nodes of a tree, as a sink gets them.
#include "tree_nodes.h"

#include <gtest/gtest.h>

#include "folded_nodes.h"

namespace {

// The calls as a text: key=text, key=[...] for an open array, key={...} for an open object, key=(...) for an
// array of numbers.
class Calls final : public ReportSink {
  public:
    std::string log;

    void text(std::string_view key, std::string_view text) override { begin(key) += text; }
    void open(std::string_view key, Form form) override {
        begin(key) += form == Form::array ? "[" : "{";
        m_closing += form == Form::array ? ']' : '}';
    }
    void close() override {
        log += m_closing.back();
        m_closing.pop_back();
    }
    void array(std::string_view key, const ReportArray& values) override {
        begin(key) += "(";
        values.visit([&](const auto& numbers) {
            for (std::size_t i = 0; i < numbers.size(); ++i)
                log += (i == 0 ? "" : " ") + report_text(numbers[i]);
        });
        log += ")";
    }

  private:
    std::string& begin(std::string_view key) {
        if (!log.empty() && log.back() != '[' && log.back() != '{')
            log += " ";
        return log += key.empty() ? "" : std::string(key) + "=";
    }

    std::string m_closing;
};

std::string calls_of(const ptree& tree) {
    Calls sink;
    write_nodes(tree, sink);
    return sink.log;
}

ptree list_of_texts(std::initializer_list<const char*> texts) {
    ptree list;
    for (const char* text : texts)
        append_text(list, "", text);
    return list;
}

TEST(TreeNodes, NodesComeInTheirOrderWithTheirForm) {
    ptree tree;
    append_text(tree, "a", "1");
    ptree list = list_of_texts({"x", "y"});
    append_text(append_text(list, "", ""), "b", "2");
    append_node(tree, "list", list);
    append_text(tree, "none", "");
    ptree numbers = createJSONArray(std::vector<float>{0.5f, 2.0f});
    append_node(tree, "numbers", numbers);
    EXPECT_EQ(calls_of(tree), "a=1 list=[x y {b=2}] none= numbers=(0.5 2)");
}

TEST(TreeNodes, ANodeIsAnObjectIfAnyChildHasAKey) {
    ptree mixed = list_of_texts({"x"});
    append_text(mixed, "k", "y");
    ptree tree;
    append_node(tree, "mixed", mixed);
    EXPECT_EQ(calls_of(tree), "mixed={x k=y}");
}

TEST(TreeNodes, PackedNumbersComeBeforeOtherChildren) {
    ptree numbers = createJSONArray(std::vector<int>{7, 8});
    append_text(numbers, "", "9");
    ptree tree;
    append_node(tree, "n", numbers);
    EXPECT_EQ(calls_of(tree), "n=[7 8 9]");
    EXPECT_EQ(calls_of(tree.get_child("n")), "7 8 9");
}

TEST(TreeNodes, FoldedNodesComeBeforeOtherChildren) {
    const auto nodes = std::make_shared<FoldedNodes>();
    nodes->open({}, Form::object);
    nodes->text("k", "first");
    nodes->close();
    ptree list = list_of_texts({"second"});
    list.data() = ReportValue(nodes);
    ptree tree;
    append_node(tree, "nodes", list);
    append_text(tree, "none", "").data() = ReportValue(std::make_shared<FoldedNodes>());
    EXPECT_EQ(calls_of(tree), "nodes=[{k=first} second] none=[]");
}

} // namespace
