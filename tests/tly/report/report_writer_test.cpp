// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <bit>
#include <boost/property_tree/json_parser.hpp>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <random>
#include <sstream>

#include "report_tree.h"
#include "slow_report.h"
#include "temp_dir.h"
#include "whole_file.h"
#include "written_report.h"

namespace {

using boost::property_tree::json_parser_error;

TEST(ReportWriter, AnEmptyTreeIsAnEmptyObject) {
    EXPECT_EQ(written(ptree()), "{\n}\n");
}

TEST(ReportWriter, TextsStandBesideTheirKeyAndNodesBelowIt) {
    ptree tree;
    tree.put("json_type", "Corvane Profiler JSON");
    tree.put("versions.zanx_version", "1.0");
    tree.put("kernels.nodes", "");
    ptree run_info;
    run_info.put("type", "runinfo");
    append_node(tree.put("run_info.nodes", ""), "", run_info);
    EXPECT_EQ(written(tree), R"({
    "json_type": "Corvane Profiler JSON",
    "versions":
    {
        "zanx_version": "1.0"
    },
    "kernels":
    {
        "nodes": ""
    },
    "run_info":
    {
        "nodes":
        [
            {
                "type": "runinfo"
            }
        ]
    }
}
)");
}

TEST(ReportWriter, PackedArraysLookLikeArraysOfTexts) {
    ptree tree;
    tree.add_child("stalls", createJSONArray(std::vector<long long>{4, 0, -1}));
    tree.add_child("zeros", createJSONArray(std::vector<int>{0, 0}));
    tree.add_child("none", createJSONArray(std::vector<float>()));
    tree.put("last", "x");
    EXPECT_EQ(written(tree), R"({
    "stalls":
    [
        "4",
        "0",
        "-1"
    ],
    "zeros":
    [
        "0",
        "0"
    ],
    "none": "",
    "last": "x"
}
)");
}

TEST(ReportWriter, SlashesControlBytesAndHighBytesAreEscaped) {
    ptree tree;
    append_text(tree, "p/\"k", "/a/b.cl\\\b\f\n\r\t\x01\x1F\x7F\x80\xFF\xC3\xA9" + std::string(1, '\0'));
    EXPECT_EQ(
        written(tree),
        "{\n    \"p\\/\\\"k\": "
        "\"\\/a\\/b.cl\\\\\\b\\f\\n\\r\\u0009\\u0001\\u001F\x7F\\u0080\\u00FF\\u00C3\\u00A9\\u0000\"\n}\n");
}

TEST(ReportWriter, ANodeWithNamedAndUnnamedChildrenIsAnObject) {
    ptree tree;
    tree.put("node", "");
    tree.get_child("node").push_back({"", ptree()});
    tree.get_child("node").push_back({"a", ptree()});
    EXPECT_EQ(written(tree), "{\n    \"node\":\n    {\n        \"\": \"\",\n        \"a\": \"\"\n    }\n}\n");
}

TEST(ReportWriter, TheRootIsAnObjectEvenIfItIsAnArray) {
    EXPECT_EQ(written(createJSONArray(std::vector<int>{7, 8})), "{\n    \"\": \"7\",\n    \"\": \"8\"\n}\n");
}

// Trees of every shape that the report could have, and of many that it never has.
class RandomTree {
  public:
    explicit RandomTree(unsigned seed) : m_random(seed) {}

    ptree root() {
        ptree tree;
        if (below(20) == 0)
            tree.data() = array();
        append_children(tree, 0);
        return tree;
    }

  private:
    unsigned below(unsigned bound) { return std::uniform_int_distribution<unsigned>(0, bound - 1)(m_random); }

    std::string text() {
        std::string bytes(below(12), ' ');
        for (char& byte : bytes)
            byte = static_cast<char>(below(256));
        return bytes;
    }

    template <class T>
    SampleList<T> list(const std::vector<T>& special, T (RandomTree::*any)()) {
        SampleList<T> values;
        for (unsigned count = below(6); count > 0; --count)
            values.push_back(below(2) ? special[below(static_cast<unsigned>(special.size()))]
                                      : (this->*any)());
        return values;
    }

    int any_int() { return std::bit_cast<int>(static_cast<std::uint32_t>(m_random())); }
    long long any_long() { return static_cast<long long>(m_random()); }
    float any_float() { return std::bit_cast<float>(static_cast<std::uint32_t>(m_random())); }

    ReportValue array() {
        using Int = std::numeric_limits<int>;
        using Long = std::numeric_limits<long long>;
        using Float = std::numeric_limits<float>;
        switch (below(3)) {
            case 0:
                return list<int>({0, 0, Int::min(), Int::max()}, &RandomTree::any_int);
            case 1:
                return list<long long>({0, 0, Long::min(), Long::max()}, &RandomTree::any_long);
            default:
                return list<float>(
                    {0.0f, 0.0f, -0.0f, Float::infinity(), -Float::infinity(), Float::quiet_NaN(),
                     -Float::quiet_NaN(), Float::denorm_min(), Float::min(), Float::max(), Float::lowest(),
                     9999999.0f, 99999995.0f, 0.1f},
                    &RandomTree::any_float);
        }
    }

    void append_children(ptree& node, unsigned depth) {
        const bool unnamed = below(3) == 0;
        for (unsigned count = below(5); count > 0; --count) {
            ptree child;
            switch (below(depth < 5 ? 5 : 2)) {
                case 0:
                    child.data() = text();
                    break;
                case 1:
                    child.data() = array();
                    break;
                case 2:
                    child.data() = array();
                    append_children(child, depth + 1);
                    break;
                default:
                    append_children(child, depth + 1);
            }
            append_node(node, unnamed ? "" : text(), child);
        }
    }

    std::mt19937_64 m_random;
};

TEST(ReportWriter, AgreesWithTheSlowWriterOnRandomTrees) {
    constexpr unsigned num_trees = 2000;
    for (unsigned seed = 0; seed < num_trees; ++seed) {
        const ptree tree = RandomTree(seed).root();
        ASSERT_EQ(written(tree), slow_report(expanded(tree))) << "seed " << seed;
    }
}

// expanded() takes its numbers from the same function as the writer, so that function is compared with what
// a stream makes of the same values.
TEST(ReportWriter, NumbersAgreeWithAStream) {
    std::mt19937_64 random(1);
    const auto stream_text = [](auto value) {
        std::ostringstream stream;
        stream.precision(7);
        stream << value;
        return stream.str();
    };
    for (int i = 0; i < 200000; ++i) {
        const auto bits = random();
        const float any = std::bit_cast<float>(static_cast<std::uint32_t>(bits));
        const float one_decimal = std::ceil(static_cast<float>(bits % 100000007)) / 10.0f;
        const float whole = static_cast<float>(static_cast<long long>(bits >> (bits % 64)));
        ASSERT_EQ(report_text(any), stream_text(static_cast<double>(any)));
        ASSERT_EQ(report_text(one_decimal), stream_text(static_cast<double>(one_decimal)));
        ASSERT_EQ(report_text(whole), stream_text(static_cast<double>(whole)));
        const auto number = std::bit_cast<long long>(bits >> (bits % 64));
        ASSERT_EQ(report_text(number), stream_text(number));
    }
}

TEST(ReportWriter, PackedArraysAgreeAtAnyLengthAndDepth) {
    for (const int depth : {1, 12, 13, 14, 15, 40}) { // indents around and beyond a block of 64 bytes
        // The longest list fills the writer's buffer of 256 KiB several times: a value takes 15 bytes or more
        // at depth 1, and 60 or more below.
        const std::size_t longest = depth == 1 ? 100000 : 10000;
        for (const std::size_t length :
             std::initializer_list<std::size_t>{1, 2, 255, 256, 257, 512, 513, longest}) {
            SampleList<long long> list;
            for (std::size_t i = 0; i < length; ++i)
                list.push_back(i < length / 2 ? static_cast<long long>(i) - 100 : 0);
            ptree tree = packed_array(list);
            for (int level = 0; level < depth; ++level) {
                ptree parent;
                append_node(parent, "k", tree);
                tree.swap(parent);
            }
            ASSERT_TRUE(written(tree) == slow_report(expanded(tree)))
                << length << " values at depth " << depth;
        }
    }
}

TEST(ReportWriter, TextsLongerThanAnyBufferAreWhole) {
    ptree tree;
    const std::string text(3000000, 'x');
    append_text(tree, "long", text);
    append_text(tree, std::string(600000, '/'), "");
    EXPECT_EQ(written(tree), slow_report(expanded(tree)));
}

// Runs `function` on a stack of 256 KiB.
void run_on_small_stack(std::function<void()> function) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, std::size_t{1} << 18), 0);
    const auto start = [](void* argument) -> void* {
        (*static_cast<std::function<void()>*>(argument))();
        return nullptr;
    };
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &attributes, start, &function), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

TEST(ReportWriter, AChainDeeperThanTheStackIsWritten) {
    constexpr std::size_t depth = 3000;
    ptree chain;
    append_text(chain, "leaf", "x");
    std::string expected = "{\n";
    for (std::size_t level = 1; level <= depth; ++level) {
        ptree parent;
        append_node(parent, "c", chain);
        chain.swap(parent);
        const std::string indent(4 * level, ' ');
        expected += indent + "\"c\":\n" + indent + "{\n";
    }
    expected += std::string(4 * (depth + 1), ' ') + "\"leaf\": \"x\"\n";
    for (std::size_t level = depth; level >= 1; --level)
        expected += std::string(4 * level, ' ') + "}\n";
    expected += "}\n";

    std::string text;
    run_on_small_stack([&] { text = written(chain); });
    EXPECT_TRUE(text == expected); // too long to print
    run_on_small_stack([&] { dismantle(chain); });
}

MATCHER_P2(IsError, message, file, "") {
    return arg.message() == message && arg.filename() == file && arg.line() == 0;
}

template <class Function>
json_parser_error error_of(Function function) {
    try {
        function();
    } catch (const json_parser_error& error) {
        return error;
    }
    return json_parser_error("no error", "", 0);
}

constexpr const char* unrepresentable = "ptree contains data that cannot be represented in JSON format";

TEST(ReportWriter, AFileThatCannotBeOpenedIsAnError) {
    const TempDir dir;
    const std::string path = dir.path("missing/report.json");
    const auto error = error_of([&] { write_report(path, ptree()); });
    EXPECT_THAT(error, IsError("cannot open file", path));
    EXPECT_STREQ(error.what(), (path + ": cannot open file").c_str());
}

TEST(ReportWriter, AFullDeviceIsAWriteError) {
    EXPECT_THAT(error_of([] { write_report("/dev/full", ptree()); }), IsError("write error", "/dev/full"));
    ptree large;
    append_text(large, "text", std::string(5000000, 'x'));
    EXPECT_THAT(error_of([&] { write_report("/dev/full", large); }), IsError("write error", "/dev/full"));
}

TEST(ReportWriter, ABadStreamIsAWriteError) {
    std::ostringstream stream;
    stream.setstate(std::ios::badbit);
    EXPECT_THAT(error_of([&] { write_report(stream, ptree()); }), IsError("write error", ""));
}

// Takes all bytes, and can't bring them where they belong.
class BufferThatKeepsAll final : public std::stringbuf {
    int sync() override { return -1; }
};

TEST(ReportWriter, AStreamThatCannotBeFlushedIsAWriteError) {
    BufferThatKeepsAll buffer;
    std::ostream stream(&buffer);
    EXPECT_THAT(error_of([&] { write_report(stream, ptree()); }), IsError("write error", ""));
    EXPECT_EQ(buffer.str(), "{\n}\n");
}

TEST(ReportWriter, ANodeWithDataAndChildrenIsRefusedAndTheFileIsEmptied) {
    const TempDir dir;
    const std::string path = dir.path("report.json");
    write_file(path, "an older report");
    ptree tree;
    tree.put("a.b", 1);
    tree.put("a", "data");
    EXPECT_THAT(error_of([&] { write_report(path, tree); }), IsError(unrepresentable, path));
    EXPECT_EQ(read_file(path), "");
}

TEST(ReportWriter, ARootWithDataIsRefused) {
    ptree tree;
    tree.data() = ReportValue("data");
    EXPECT_THAT(error_of([&] { written(tree); }), IsError(unrepresentable, ""));
}

TEST(ReportWriter, AnOlderLongerReportIsReplaced) {
    const TempDir dir;
    const std::string path = dir.path("report.json");
    write_file(path, std::string(1000, 'x'));
    write_report(path, ptree());
    EXPECT_EQ(read_file(path), "{\n}\n");
}

} // namespace
