// SPDX-License-Identifier: Apache-2.0
// The text of nodes that a writer takes one after the other.
#include "json_writer.h"

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

namespace {

template <class Nodes>
std::string text_of(Nodes nodes) {
    std::ostringstream stream;
    StreamTarget target(stream);
    TextBuffer buffer(target);
    JsonWriter writer(buffer);
    nodes(writer);
    writer.finish();
    buffer.flush();
    return stream.str();
}

TEST(JsonWriter, NoNodesAreAnEmptyObject) {
    EXPECT_EQ(text_of([](ReportSink&) {}), "{\n}\n");
}

TEST(JsonWriter, MembersHaveKeysAndElementsHaveNone) {
    EXPECT_EQ(text_of([](ReportSink& sink) {
                  sink.text("a", "1");
                  sink.open("list", Form::array);
                  sink.text({}, "2");
                  sink.open({}, Form::object);
                  sink.number("b", 3);
                  sink.close();
                  sink.open({}, Form::array);
                  sink.boolean({}, true);
                  sink.close();
                  sink.close();
              }),
              R"({
    "a": "1",
    "list":
    [
        "2",
        {
            "b": "3"
        },
        [
            "true"
        ]
    ]
}
)");
}

TEST(JsonWriter, ANodeWithoutChildrenIsAnEmptyText) {
    EXPECT_EQ(text_of([](ReportSink& sink) {
                  sink.open("object", Form::object);
                  sink.close();
                  sink.open("array", Form::array);
                  sink.open({}, Form::array);
                  sink.close();
                  sink.open({}, Form::object);
                  sink.close();
                  sink.close();
              }),
              R"({
    "object": "",
    "array":
    [
        "",
        ""
    ]
}
)");
}

TEST(JsonWriter, ArraysOfEachTypeAndStorage) {
    const std::vector<float> floats = {0.5f, -0.0f};
    EXPECT_EQ(text_of([&](ReportSink& sink) {
                  sink.array("ints", SampleList<int>({-1, 0}));
                  sink.array("floats", std::span<const float>(floats));
                  sink.open("in", Form::array);
                  sink.array({}, SampleList<long long>({1LL << 40}));
                  sink.close();
              }),
              R"({
    "ints":
    [
        "-1",
        "0"
    ],
    "floats":
    [
        "0.5",
        "-0"
    ],
    "in":
    [
        [
            "1099511627776"
        ]
    ]
}
)");
}

// Numbers are written 256 at a time, and one by one where an array stands more than 15 levels deep.
TEST(JsonWriter, ArraysAreOpenArraysWithATextForEachNumber) {
    for (const std::size_t length : {1u, 255u, 256u, 257u, 513u, 20'000u}) {
        std::vector<int> values(length);
        for (std::size_t i = 0; i < length; ++i)
            values[i] = static_cast<int>(i) * 7'919 - 100'000;
        for (const int depth : {0, 1, 13, 14, 15, 40}) {
            const auto nested = [&](auto write_array) {
                return text_of([&](ReportSink& sink) {
                    for (int i = 0; i < depth; ++i)
                        sink.open("k", Form::object);
                    write_array(sink);
                    for (int i = 0; i < depth; ++i)
                        sink.close();
                });
            };
            const std::string expected = nested([&](ReportSink& sink) {
                sink.open("values", Form::array);
                for (const int value : values)
                    sink.text({}, std::to_string(value));
                sink.close();
            });
            const auto plain = [&](ReportSink& sink) { sink.array("values", std::span<const int>(values)); };
            const auto list = [&](ReportSink& sink) { sink.array("values", SampleList<int>(values)); };
            EXPECT_TRUE(nested(plain) == expected) << length << " values at depth " << depth;
            EXPECT_TRUE(nested(list) == expected) << length << " values at depth " << depth;
        }
    }
}

TEST(JsonWriter, KeysAreQuotedLikeTextsAndNeedNotLast) {
    EXPECT_EQ(text_of([](ReportSink& sink) {
                  std::string key = "a/b";
                  sink.open(key, Form::object);
                  key = "xxx";
                  sink.text(key, "");
                  sink.close();
              }),
              "{\n    \"a\\/b\":\n    {\n        \"xxx\": \"\"\n    }\n}\n");
}

// What a block of a kernel starts with: texts, a whole node, and one that stays open.
struct BlockHead final : NodePart {
    explicit BlockHead(std::size_t size) : name(size, 'n') {}
    void write_to(ReportSink& sink) const override {
        ++num_writes;
        sink.text("name", name);
        sink.open("empty", Form::array);
        sink.close();
        sink.open("values", Form::array);
    }
    std::string name;
    mutable int num_writes = 0;
};

template <class WriteHead>
void write_blocks(ReportSink& sink, int count, WriteHead write_head) {
    sink.open("blocks", Form::array);
    for (int i = 0; i < count; ++i) {
        sink.open({}, Form::object);
        write_head(sink);
        sink.number({}, i);
        sink.close();
        sink.close();
    }
    sink.close();
}

TEST(JsonWriter, APartIsAskedForOnceInNodesOfOneKind) {
    const BlockHead head(3);
    const auto with_parts = text_of(
        [&](ReportSink& sink) { write_blocks(sink, 5, [&](ReportSink& node) { node.part(9, head); }); });
    EXPECT_EQ(head.num_writes, 1);
    const auto without = text_of(
        [&](ReportSink& sink) { write_blocks(sink, 5, [&](ReportSink& node) { head.write_to(node); }); });
    EXPECT_EQ(with_parts, without);
}

// Deeper in, after another child, and in a node without a key, the text is another one.
TEST(JsonWriter, APartIsAskedForAgainElsewhere) {
    const BlockHead head(3);
    const auto nodes = [&](ReportSink& sink, auto write_head) {
        write_head(sink);
        sink.text({}, "1");
        sink.close();
        sink.open("deeper", Form::object);
        write_head(sink);
        sink.close();
        sink.text("other", "2");
        write_head(sink);
        sink.close();
        sink.close();
        write_head(sink);
        sink.close();
    };
    const auto with_parts =
        text_of([&](ReportSink& sink) { nodes(sink, [&](ReportSink& node) { node.part(9, head); }); });
    EXPECT_EQ(head.num_writes, 4); // the first one is in a node without children, all others aren't
    EXPECT_EQ(with_parts, text_of([&](ReportSink& sink) {
                  nodes(sink, [&](ReportSink& node) { head.write_to(node); });
              }));
}

TEST(JsonWriter, LongPartsAndManyPartsAreWrittenAsTheyAre) {
    // Longer than what is kept of one part; and 2,000 of a KiB are more than what is kept of all.
    for (const std::size_t size : {std::size_t{20'000}, std::size_t{300'000}, std::size_t{1'000}}) {
        const BlockHead head(size);
        const int num_blocks = size == 1'000 ? 4'000 : 20;
        std::uint64_t number = 0;
        const auto with_parts = text_of([&](ReportSink& sink) {
            write_blocks(sink, num_blocks, [&](ReportSink& node) { node.part(1 + number++ % 2'000, head); });
        });
        const auto without = text_of([&](ReportSink& sink) {
            write_blocks(sink, num_blocks, [&](ReportSink& node) { head.write_to(node); });
        });
        EXPECT_TRUE(with_parts == without) << size;
    }
}

} // namespace
