// SPDX-License-Identifier: Apache-2.0
// Folded nodes stand for the nodes of a tree that got the same calls.
#include "folded_nodes.h"

#include <gtest/gtest.h>

#include <limits>
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

// Integers are held in one, two, four or eight bytes, as many as the widest of their array needs.
template <class T>
void expect_kept(const std::vector<T>& values) {
    const auto nodes = std::make_shared<FoldedNodes>();
    nodes->array("", std::span<const T>(values));
    nodes->text("", "next");
    ptree tree;
    tree.put("nodes", "").data() = ReportValue(nodes);
    const auto kept = expanded(tree);
    const auto& children = kept.get_child("nodes");
    ASSERT_EQ(children.size(), 2u);
    std::vector<T> numbers;
    for (const auto& [key, value] : children.front().second)
        numbers.push_back(value.template get_value<T>());
    EXPECT_EQ(numbers, values);
    EXPECT_EQ(children.back().second.data(), "next"); // it begins where the integers end
}

TEST(FoldedNodes, IntegersOfEachWidthAreKept) {
    for (const long long limit : {1LL << 7, 1LL << 15, 1LL << 31}) {
        expect_kept<long long>({limit - 1, -limit, 0, 1, -1});
        expect_kept<long long>({0, limit});
        expect_kept<long long>({-limit - 1, 5});
    }
    constexpr auto least = std::numeric_limits<long long>::min();
    constexpr auto greatest = std::numeric_limits<long long>::max();
    expect_kept<long long>({least, greatest});
    expect_kept<int>({127, -128});
    expect_kept<int>({32'767, -32'768, 128});
    expect_kept<int>({std::numeric_limits<int>::min(), std::numeric_limits<int>::max()});
    expect_kept(std::vector<long long>(64, -1)); // the longest that is copied: 64 * 4 + 0 takes two bytes
    expect_kept(std::vector<long long>(64, greatest));
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

// Writes the same nodes each time, counts how often it was asked, and leaves a node open.
struct CountedPart final : NodePart {
    explicit CountedPart(std::string text) : name(std::move(text)) {}
    void write_to(ReportSink& sink) const override {
        ++num_writes;
        sink.text("name", name);
        sink.open("list", Form::array);
    }
    std::string name;
    mutable int num_writes = 0;
};

void write_with_part(ReportSink& sink, std::uint64_t number, const NodePart& part, const char* value) {
    sink.open({}, Form::object);
    sink.part(number, part);
    sink.text({}, value);
    sink.close();
    sink.close();
}

std::string written_nodes(std::shared_ptr<FoldedNodes> nodes) {
    ptree tree;
    tree.put("nodes", "").data() = ReportValue(std::move(nodes));
    return written(tree);
}

TEST(FoldedNodes, APartIsAskedForOnceAndWrittenEachTime) {
    const CountedPart a("a");
    const CountedPart b("b");
    const auto nodes = std::make_shared<FoldedNodes>();
    nodes->open({}, Form::object); // the first entry makes a block, and a part has to lie in one
    nodes->close();
    for (const char* value : {"1", "2", "3"}) {
        write_with_part(*nodes, 7, a, value);
        write_with_part(*nodes, 8, b, value);
    }
    EXPECT_EQ(a.num_writes, 1);
    EXPECT_EQ(b.num_writes, 1);
    ptree tree;
    TreeSink sink(tree.put("nodes", ""));
    sink.open({}, Form::object);
    sink.close();
    for (const char* value : {"1", "2", "3"}) {
        write_with_part(sink, 7, a, value);
        write_with_part(sink, 8, b, value);
    }
    EXPECT_EQ(a.num_writes, 4); // a tree asks each time
    EXPECT_EQ(written_nodes(nodes), written(tree));
}

TEST(FoldedNodes, APartThatFitsNoBlockIsAskedForAgain) {
    const CountedPart part(std::string(300'000, 'x')); // blocks have 256 KiB at most
    const auto nodes = std::make_shared<FoldedNodes>();
    write_with_part(*nodes, 7, part, "1");
    write_with_part(*nodes, 7, part, "2");
    EXPECT_EQ(part.num_writes, 2);
    ptree tree;
    TreeSink sink(tree.put("nodes", ""));
    write_with_part(sink, 7, part, "1");
    write_with_part(sink, 7, part, "2");
    EXPECT_TRUE(written_nodes(nodes) == written(tree));
}

TEST(FoldedNodes, KeysOfEachLengthAreKept) {
    const auto nodes = std::make_shared<FoldedNodes>();
    ptree tree;
    TreeSink sink(tree.put("nodes", ""));
    nodes->open({}, Form::object);
    sink.open({}, Form::object);
    // Keys of one length differ in one letter, at each place in turn.
    for (std::size_t size = 1; size < 40; ++size) {
        for (std::size_t at = 0; at < size; ++at) {
            std::string key(size, 'k');
            key[at] = 'x';
            for (int i = 0; i < 2; ++i) {
                nodes->text(key, "v");
                sink.text(key, "v");
            }
        }
    }
    nodes->close();
    sink.close();
    EXPECT_EQ(written_nodes(nodes), written(tree));
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
