// SPDX-License-Identifier: Apache-2.0
#include "node_reader.h"

#include <gtest/gtest.h>

#include <cmath>

#include "stream_report.h"

using namespace zan::profile;

namespace {

// Keeps copies of what it takes.
class TakenNodes final : public NodeTaker {
  public:
    void begin_kernel(const KernelNode& kernel) override { kernels.push_back(kernel); }
    bool needs_sources(std::string_view) override { return needs; }
    bool needs_queues() const override { return needs; }
    void block(const BlockNode& block) override { blocks.push_back(block); }
    void port(const PortNode& port) override { ports.push_back(port); }
    void end_kernel() override { ++num_ended; }
    void transfer(const TransferNode& transfer) override { transfers.push_back(transfer); }
    void board(const std::string& type) override { board_type = type; }
    void board_memory(const BoardMemoryNode& memory) override { memories.push_back(memory); }
    void clock(const std::string& text) override { clock_text = text; }
    void versions(const std::string& program, const std::string& zanx) override {
        version = program;
        zanx_version = zanx;
    }

    bool needs = true;
    std::vector<KernelNode> kernels;
    std::vector<BlockNode> blocks;
    std::vector<PortNode> ports;
    int num_ended = 0;
    std::vector<TransferNode> transfers;
    std::string board_type;
    std::vector<BoardMemoryNode> memories;
    std::string clock_text;
    std::string version;
    std::string zanx_version;
};

TakenNodes nodes_of(const StreamReport& report) {
    TakenNodes nodes;
    NodeReader reader(nodes);
    write_stream(reader, report);
    return nodes;
}

TEST(NodeReader, ReadsAKernelWithItsChildren) {
    StreamKernel kernel{.name = "k",
                        .start = -7,
                        .stamps = {1, 2},
                        .cycles = {3, 4},
                        .shared = 2,
                        .autorun = true,
                        .device = 5};
    kernel.blocks = {{.valid = {8, 9}, .efficiency = {0.5f, 1.0f}}};
    kernel.ports = {{.only = "write_only", .bandwidth = {2.5f}}};
    const TakenNodes nodes = nodes_of({.kernels = {kernel, {.name = "empty"}}});
    ASSERT_EQ(nodes.kernels.size(), 2U);
    EXPECT_EQ(nodes.num_ended, 2);
    EXPECT_EQ(nodes.kernels[0].name, "k");
    EXPECT_EQ(nodes.kernels[0].start, -7);
    EXPECT_EQ(nodes.kernels[0].shared, SharedType::idle);
    EXPECT_TRUE(nodes.kernels[0].autorun);
    EXPECT_EQ(nodes.kernels[0].source, (SourcePlace{"k.cl", 1, 0}));
    EXPECT_EQ(nodes.kernels[0].arrays[Counts::timestamps], (SampleList<long long>{1, 2}));
    EXPECT_EQ(nodes.kernels[0].arrays[Counts::devices], (SampleList<long long>{5, 5})); // ints in the stream
    EXPECT_EQ(nodes.blocks.at(0).arrays[Counts::valid], (SampleList<long long>{8, 9}));
    EXPECT_EQ(nodes.blocks[0].arrays[Rates::efficiency], (SampleList<float>{0.5f, 1.0f}));
    EXPECT_TRUE(nodes.ports.at(0).write_only);
    EXPECT_EQ(nodes.ports[0].memory, "DDR");
    EXPECT_EQ(nodes.ports[0].arrays[Rates::bandwidth], (SampleList<float>{2.5f}));
    EXPECT_EQ(nodes.kernels[1].name, "empty");
    EXPECT_TRUE(nodes.kernels[1].arrays[Counts::timestamps].empty());
    EXPECT_EQ(nodes.kernels[1].shared, SharedType::none);
}

void open_details(ReportSink& sink) {
    sink.open("kernels", Form::object);
    sink.open("nodes", Form::array);
    sink.open({}, Form::object);
    sink.open("children", Form::array);
    sink.open({}, Form::object);
    sink.text("type", "moduleinst");
    sink.open("module_inst_details", Form::object);
}

void close_details(ReportSink& sink) {
    for (int i = 0; i < 6; ++i)
        sink.close();
}

// As a reader of texts may hand on an array that isn't all numbers.
TEST(NodeReader, ReadsArraysTextByText) {
    TakenNodes nodes;
    NodeReader reader(nodes);
    open_details(reader);
    reader.open("stall_samples", Form::array);
    for (const char* text : {"12", "", "x", "-3"})
        reader.text({}, text);
    reader.close();
    reader.open("bandwidth_samples", Form::array);
    for (const char* text : {"1.5", "inf", "1.5 MB"})
        reader.text({}, text);
    reader.close();
    close_details(reader);
    const NodeArrays& arrays = nodes.blocks.at(0).arrays;
    EXPECT_EQ(arrays[Counts::stall], (SampleList<long long>{12, -1, -1, -3}));
    EXPECT_EQ(arrays[Rates::bandwidth][0], 1.5f);
    EXPECT_TRUE(std::isinf(arrays[Rates::bandwidth][1]));
    EXPECT_TRUE(std::isnan(arrays[Rates::bandwidth][2]));
}

// A reader of texts can't know the type of "1".
// What is in an open array, even another one, doesn't change where its next element goes.
TEST(NodeReader, AnArrayInAnArrayIsSkipped) {
    TakenNodes nodes;
    NodeReader reader(nodes);
    reader.open("kernels", Form::object);
    reader.open("nodes", Form::array);
    reader.open("", Form::object);
    reader.open("sample_timestamps", Form::array);
    const std::vector<long long> inner = {2};
    reader.text("", "1");
    reader.array("", std::span<const long long>(inner));
    reader.text("", "3");
    reader.open("", Form::array);
    reader.text("", "4");
    reader.close();
    reader.text("", "5");
    for (int i = 0; i < 4; ++i)
        reader.close();
    ASSERT_EQ(nodes.kernels.size(), 1u);
    EXPECT_EQ(nodes.kernels[0].arrays[Counts::timestamps], (SampleList<long long>{1, 3, 5}));
}

// An array of numbers, and one that comes text by text.
TEST(NodeReader, TakesOnlyTheFirstQueueIfMoreArentNeeded) {
    for (const bool needs : {true, false}) {
        TakenNodes nodes;
        nodes.needs = needs;
        NodeReader reader(nodes);
        reader.open("kernels", Form::object);
        reader.open("nodes", Form::array);
        reader.open("", Form::object);
        const std::vector<int> devices = {3, 4};
        reader.array("device_ids", std::span<const int>(devices));
        reader.open("command_queue_id", Form::array);
        reader.text("", "5");
        reader.text("", "6");
        reader.close();
        // In pieces, as long ones come.
        reader.open("total_cycles_between_samples", Form::array);
        reader.elements(std::span<const int>(devices));
        reader.elements(std::span<const int>(devices));
        reader.close();
        const std::vector<int> stamps = {7, 8};
        reader.array("sample_timestamps", std::span<const int>(stamps));
        for (int i = 0; i < 3; ++i)
            reader.close();
        ASSERT_EQ(nodes.kernels.size(), 1u);
        const NodeArrays& arrays = nodes.kernels[0].arrays;
        using List = SampleList<long long>;
        EXPECT_EQ(arrays[Counts::devices], needs ? (List{3, 4}) : (List{3}));
        EXPECT_EQ(arrays[Counts::queues], needs ? (List{5, 6}) : (List{5}));
        EXPECT_EQ(arrays[Counts::timestamps], (List{7, 8}));
        EXPECT_EQ(arrays[Counts::cycles], (List{3, 4, 3, 4}));
    }
}

// Pieces of an array whose numbers look as integers first, and as floats then.
TEST(NodeReader, ReadsArraysInPieces) {
    TakenNodes nodes;
    NodeReader reader(nodes);
    reader.open("kernels", Form::object);
    reader.open("nodes", Form::array);
    reader.open("", Form::object);
    reader.open("children", Form::array);
    reader.open("", Form::object);
    reader.text("type", "moduleinst");
    reader.open("module_inst_details", Form::object);
    reader.open("bandwidth_samples", Form::array);
    const std::vector<long long> integers = {1, 20'000'000};
    const std::vector<float> floats = {0.5f};
    reader.elements(std::span<const long long>(integers));
    reader.elements(std::span<const float>(floats));
    for (int i = 0; i < 7; ++i)
        reader.close();
    ASSERT_EQ(nodes.blocks.size(), 1u);
    EXPECT_EQ(nodes.blocks[0].arrays[Rates::bandwidth], (SampleList<float>{1.0f, 2e7f, 0.5f}));
}

TEST(NodeReader, TakesNumbersOfAnyType) {
    TakenNodes nodes;
    NodeReader reader(nodes);
    open_details(reader);
    write_array(reader, "stall_samples", std::vector<float>{2.0f, NAN, 1e30f});
    write_array(reader, "bandwidth_samples", std::vector<int>{3});
    reader.array("idle_samples", SampleList<int>{4});
    close_details(reader);
    const NodeArrays& arrays = nodes.blocks.at(0).arrays;
    EXPECT_EQ(arrays[Counts::stall], (SampleList<long long>{2, -1, -1}));
    EXPECT_EQ(arrays[Rates::bandwidth], (SampleList<float>{3.0f}));
    EXPECT_EQ(arrays[Counts::idle], (SampleList<long long>{4}));
}

// A block that lacks what the one before it has.
TEST(NodeReader, ABlockKeepsNothingOfTheOneBeforeIt) {
    TakenNodes nodes;
    NodeReader reader(nodes);
    reader.open("kernels", Form::object);
    reader.open("nodes", Form::array);
    reader.open({}, Form::object);
    reader.open("children", Form::array);
    write_stream_block(reader, {.name = "load", .operation = "read", .valid = {1}});
    reader.open({}, Form::object);
    reader.text("type", "moduleinst");
    reader.text("name", "loop");
    reader.open("module_inst_details", Form::object);
    for (int i = 0; i < 6; ++i)
        reader.close();
    ASSERT_EQ(nodes.blocks.size(), 2U);
    EXPECT_EQ(nodes.blocks[0].operation, "read");
    EXPECT_EQ(nodes.blocks[1].name, "loop");
    EXPECT_EQ(nodes.blocks[1].operation, "");
    EXPECT_EQ(nodes.blocks[1].memory_type, "");
    EXPECT_TRUE(nodes.blocks[1].sources.empty());
    EXPECT_TRUE(nodes.blocks[1].arrays[Counts::valid].empty());
}

TEST(NodeReader, SkipsWhatItDoesntKnow) {
    TakenNodes nodes;
    NodeReader reader(nodes);
    open_details(reader);
    reader.open("new_in_this", Form::object);
    reader.open("stall_samples", Form::array);
    reader.text({}, "5");
    reader.close();
    reader.array("idle_samples", SampleList<int>{4});
    reader.text("mem_type", "__loop");
    reader.close();
    reader.array("stall_counts", SampleList<int>{4});
    close_details(reader);
    reader.close(); // one too many
    EXPECT_TRUE(nodes.blocks.at(0).arrays[Counts::stall].empty());
    EXPECT_TRUE(nodes.blocks[0].arrays[Counts::idle].empty());
    EXPECT_EQ(nodes.blocks[0].memory_type, "");
}

TEST(NodeReader, ReadsSourcesOnlyIfTheyAreNeeded) {
    TakenNodes nodes;
    nodes.needs = false;
    NodeReader reader(nodes);
    StreamKernel kernel{.blocks = {{}}};
    write_stream(reader, {.kernels = {kernel}});
    EXPECT_TRUE(nodes.blocks.at(0).sources.empty());
    nodes.needs = true;
    write_stream(reader, {.kernels = {kernel}});
    EXPECT_EQ(nodes.blocks.at(1).sources.at(0), (CallChain{{"load.cl", 7, 3}}));
}

TEST(NodeReader, ReadsWhatStandsAroundTheKernels) {
    StreamReport report{.memories = {{.name = "DDR", .peak = 5.5f, .max_burst = 0}}, .clock = " 7 "};
    report.transfers = {{.type = ".reprogram", .queue = 4, .start = 10, .end = 20}};
    const TakenNodes nodes = nodes_of(report);
    EXPECT_EQ(nodes.board_type, "a_board");
    EXPECT_EQ(nodes.memories.at(0).peak, 5.5);
    EXPECT_EQ(nodes.memories[0].max_burst, std::nullopt);
    EXPECT_EQ(nodes.clock_text, " 7 ");
    EXPECT_EQ(nodes.version, "2026.1.0");
    EXPECT_EQ(nodes.transfers.at(0).type, ".reprogram");
    EXPECT_EQ(nodes.transfers[0].queue, 4);
    EXPECT_EQ(nodes.transfers[0].end, 20);
}

// Each node has a key, or a type, that a later version may write.
TEST(NodeReader, KeysThatItDoesntKnowChangeNothing) {
    TakenNodes nodes;
    NodeReader reader(nodes);
    const auto close = [&](int count) {
        for (int i = 0; i < count; ++i)
            reader.close();
    };
    reader.open("versions", Form::object);
    for (const char* key : {"profiler_json_version", "zanx_version", "later"})
        reader.text(key, key);
    reader.close();
    reader.open("kernels", Form::object);
    reader.open("nodes", Form::array);
    reader.open({}, Form::object);
    for (const char* key : {"name", "later"})
        reader.text(key, key);
    reader.open("children", Form::array);
    for (const char* type : {"moduleinst", "extmem", "later"}) {
        reader.open({}, Form::object);
        for (const char* key : {"name", "interface", "port", "later"})
            reader.text(key, key);
        reader.text("type", type);
        reader.open("sourcefiles", Form::array);
        reader.open({}, Form::object);
        for (const char* key : {"filename", "later"})
            reader.text(key, key);
        close(2);
        reader.open("module_inst_details", Form::object);
        for (const char* key : {"mem_type", "operation_type", "global_mem_name", "later"})
            reader.text(key, key);
        close(2);
    }
    close(4);
    EXPECT_EQ(nodes.version, "profiler_json_version");
    EXPECT_EQ(nodes.zanx_version, "zanx_version");
    ASSERT_EQ(nodes.kernels.size(), 1u);
    EXPECT_EQ(nodes.kernels[0].name, "name");
    ASSERT_EQ(nodes.blocks.size(), 1u) << "one of each kind that is known";
    ASSERT_EQ(nodes.ports.size(), 1u);
    EXPECT_EQ(nodes.blocks[0].name, "name");
    EXPECT_EQ(nodes.blocks[0].memory_type, "mem_type");
    EXPECT_EQ(nodes.blocks[0].operation, "operation_type");
    EXPECT_EQ(nodes.blocks[0].memory, "global_mem_name");
    EXPECT_EQ(nodes.blocks[0].sources, (std::vector<CallChain>{{{"filename", 0, 0}}}));
    EXPECT_EQ(nodes.ports[0].memory, "name");
    EXPECT_EQ(nodes.ports[0].port, "port");
}

TEST(NodeReader, ElementsOutsideOfAListOfNumbersAreSkipped) {
    TakenNodes nodes;
    NodeReader reader(nodes);
    const std::vector<long long> numbers = {1, 2};
    open_details(reader);
    reader.open("later", Form::array);
    reader.elements(std::span<const long long>(numbers));
    reader.close();
    reader.open("stall_samples", Form::array);
    reader.elements(std::span<const long long>(numbers));
    reader.close();
    reader.elements(std::span<const long long>(numbers));
    close_details(reader);
    EXPECT_EQ(nodes.blocks.at(0).arrays[Counts::stall], (SampleList<long long>{1, 2}));
}

// A number that no memory can have is unknown.
TEST(NodeReader, PeaksAreNumbersAboveZero) {
    for (const char* text : {"inf", "-1", "0", "nan", "1e99", "5 MB", ""}) {
        TakenNodes nodes;
        NodeReader reader(nodes);
        reader.open("boards", Form::object);
        reader.open("nodes", Form::array);
        reader.open({}, Form::object);
        reader.open("children", Form::array);
        reader.open({}, Form::object);
        reader.text("global_memory_name", "DDR");
        reader.text("max_theoretical_globalmem_bw", text);
        for (int i = 0; i < 5; ++i)
            reader.close();
        ASSERT_EQ(nodes.memories.size(), 1u);
        EXPECT_EQ(nodes.memories[0].name, "DDR");
        EXPECT_EQ(nodes.memories[0].peak, std::nullopt) << text;
    }
}

TEST(NodeReader, ARunWithSharedCountersIsOfOneOfFourKinds) {
    const std::pair<const char*, SharedType> rows[] = {
        {"0", SharedType::valid}, {"3", static_cast<SharedType>(3)}, {"4", SharedType::none},
        {"-1", SharedType::none}, {"-2", SharedType::none},          {"x", SharedType::none}};
    for (const auto& [text, type] : rows) {
        TakenNodes nodes;
        NodeReader reader(nodes);
        reader.open("kernels", Form::object);
        reader.open("nodes", Form::array);
        reader.open({}, Form::object);
        reader.text("shared_counter_run_type", text);
        for (int i = 0; i < 3; ++i)
            reader.close();
        ASSERT_EQ(nodes.kernels.size(), 1u);
        EXPECT_EQ(nodes.kernels[0].shared, type) << text;
    }
}

// An empty list is a text in a report.
TEST(NodeReader, AKernelBeginsAtItsListOfChildrenEvenIfThatIsEmpty) {
    TakenNodes nodes;
    NodeReader reader(nodes);
    reader.open("kernels", Form::object);
    reader.open("nodes", Form::array);
    reader.open({}, Form::object);
    reader.text("name", "k");
    EXPECT_TRUE(nodes.kernels.empty());
    reader.text("children", "");
    ASSERT_EQ(nodes.kernels.size(), 1u);
    EXPECT_EQ(nodes.kernels[0].name, "k");
    for (int i = 0; i < 3; ++i)
        reader.close();
    EXPECT_EQ(nodes.kernels.size(), 1u);
    EXPECT_EQ(nodes.num_ended, 1);
}

TEST(NodeReader, TakesTheFirstQueueOfAListInPieces) {
    TakenNodes nodes;
    nodes.needs = false;
    NodeReader reader(nodes);
    reader.open("kernels", Form::object);
    reader.open("nodes", Form::array);
    reader.open("", Form::object);
    reader.open("command_queue_id", Form::array);
    const std::vector<int> first = {5, 6};
    const std::vector<int> second = {7};
    reader.elements(std::span<const int>(first));
    reader.elements(std::span<const int>(second));
    for (int i = 0; i < 4; ++i)
        reader.close();
    ASSERT_EQ(nodes.kernels.size(), 1u);
    EXPECT_EQ(nodes.kernels[0].arrays[Counts::queues], (SampleList<long long>{5}));
}

} // namespace
