// SPDX-License-Identifier: Apache-2.0
// Folded nodes stand for the nodes of a tree that got the same calls.
#include "folded_nodes.h"

#include <gtest/gtest.h>

#include <random>

#include "written_report.h"

#include "report_tree.h"
#include "tree_sink.h"

namespace {

// Writes random nodes, the same ones for a seed.
class RandomNodes {
  public:
    explicit RandomNodes(unsigned seed) : m_random(seed) {}

    void write_to(ReportSink& sink) {
        for (unsigned count = below(6); count > 0; --count)
            write_node(sink, {}, 0);
    }

  private:
    unsigned below(unsigned bound) { return static_cast<unsigned>(m_random() % bound); }

    std::string text() {
        std::string bytes(below(30), ' ');
        for (char& byte : bytes)
            byte = static_cast<char>(below(256));
        return bytes;
    }

    template <class T>
    void write_array(ReportSink& sink, std::string_view key, int shift) {
        std::vector<T> values(below(100)); // more than 64 are held in another way
        for (T& value : values)
            value = below(3) == 0 ? T{0} : static_cast<T>(static_cast<long long>(m_random()) >> shift);
        if (below(2) == 0)
            sink.samples(key, SampleList<T>(values));
        else if (!values.empty())
            sink.array(key, std::span<const T>(values));
    }

    void write_node(ReportSink& sink, std::string_view node_key, int depth) {
        const bool in_array = below(3) == 0;
        sink.open(node_key, in_array ? Form::array : Form::object);
        for (unsigned count = below(8); count > 0; --count) {
            const std::string key = in_array ? std::string() : text() + "k";
            switch (below(depth < 4 ? 6 : 5)) {
                case 0:
                    write_array<int>(sink, key, 32);
                    break;
                case 1:
                    write_array<long long>(sink, key, static_cast<int>(below(64)));
                    break;
                case 2:
                    write_array<float>(sink, key, 40);
                    break;
                case 5:
                    write_node(sink, key, depth + 1);
                    break;
                default:
                    sink.text(key, text());
            }
        }
        sink.close();
    }

    std::mt19937_64 m_random;
};

struct Trees {
    ptree plain;
    ptree folded;

    explicit Trees(unsigned seed) {
        TreeSink sink(plain.put("a.nodes", ""));
        RandomNodes(seed).write_to(sink);
        const auto nodes = std::make_shared<FoldedNodes>();
        RandomNodes(seed).write_to(*nodes);
        folded.put("a.nodes", "").data() = ReportValue(nodes);
    }
};

TEST(FoldedNodes, ExpandToTheSameNodes) {
    for (unsigned seed = 0; seed < 300; ++seed) {
        const Trees trees(seed);
        ASSERT_TRUE(expanded(trees.folded) == expanded(trees.plain)) << "seed " << seed;
    }
}

TEST(FoldedNodes, AreWrittenAsTheSameText) {
    for (unsigned seed = 0; seed < 300; ++seed) {
        const Trees trees(seed);
        ASSERT_TRUE(written(trees.folded) == written(trees.plain)) << "seed " << seed;
    }
}

TEST(FoldedNodes, NoneAreAnEmptyText) {
    ptree tree;
    tree.put("nodes", "").data() = ReportValue(std::make_shared<FoldedNodes>());
    EXPECT_EQ(written(tree), "{\n    \"nodes\": \"\"\n}\n");
    EXPECT_TRUE(expanded(tree).get_child("nodes").empty());
    EXPECT_EQ(tree.get<std::string>("nodes"), "");
}

TEST(FoldedNodes, StandInFrontOfTheOtherChildren) {
    const auto nodes = std::make_shared<FoldedNodes>();
    nodes->text("", "first");
    ptree tree;
    ptree& list = tree.put("nodes", "");
    list.data() = ReportValue(nodes);
    append_text(list, "", "second");
    EXPECT_EQ(written(tree), "{\n    \"nodes\":\n    [\n        \"first\",\n        \"second\"\n    ]\n}\n");
}

TEST(FoldedNodes, KeepTheirValuesWhenTheListGrows) {
    std::vector<long long> values(100, 7);
    SampleList<long long> list(values);
    const auto nodes = std::make_shared<FoldedNodes>();
    nodes->samples("", list);
    list.clear();
    for (int i = 0; i < 200; ++i)
        list.push_back(8);
    ptree tree;
    tree.put("nodes", "").data() = ReportValue(nodes);
    const auto array = expanded(tree).get_child("nodes").front().second;
    ASSERT_EQ(array.size(), 100u);
    for (const auto& [key, value] : array)
        EXPECT_EQ(value.data(), "7");
}

TEST(FoldedNodes, TextsLongerThanABlockAreWhole) {
    const std::string text(1'000'000, 'x');
    const auto nodes = std::make_shared<FoldedNodes>();
    nodes->text("", "before");
    nodes->text("", text);
    nodes->text("", "after");
    ptree tree;
    tree.put("nodes", "").data() = ReportValue(nodes);
    const auto list = expanded(tree).get_child("nodes");
    ASSERT_EQ(list.size(), 3u);
    EXPECT_TRUE(std::next(list.begin())->second.data() == text);
    EXPECT_EQ(list.back().second.data(), "after");
}

} // namespace
