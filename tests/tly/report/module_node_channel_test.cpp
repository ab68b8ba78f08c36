// SPDX-License-Identifier: Apache-2.0
// Channel depths and source locations of module instance nodes.
#include <gtest/gtest.h>

#include "capture.h"
#include "inst_builder.h"
#include "node_text.h"
#include "tly_json.h"

namespace {

InstBuilder fifo(const std::string& function, const std::vector<std::string>& tags) {
    return {.function = function, .module = "kdl_iord", .tags = tags};
}

std::string depth_keys(TlyModuleInst& inst) {
    const ptree node = getModuleJSON(&inst, {1});
    std::string text;
    for (const char* key : {"average_channel_depth_samples", "max_channel_depth_samples"}) {
        const auto samples = node.get_child_optional("module_inst_details." + std::string(key));
        text += samples ? node_text(*samples) : "(none)";
    }
    return text;
}

constexpr const char* only_one =
    "Warning: only one of max and total fifo size counters exists in profile.mon.\n";

TEST(ChannelDepth, AverageIsTheFillOfEachRequestOrStall) {
    const auto inst = fifo("depth", {"chread_ivalid", "chread_fifo_stall", "chread_total_fifo_size",
                                     "chread_max_fifo_size"})
                          .make();
    add_sample(*inst, {"60", "40", "7", "3"}); // 7 / 100, rounded up at two decimals
    EXPECT_EQ(stderr_of([&] { EXPECT_EQ(depth_keys(*inst), "[0.07][3]"); }), "");
}

TEST(ChannelDepth, RequestsReplaceValidCycles) {
    const auto inst = fifo("depth_req", {"chread_ivalid", "chread_total_req", "chread_total_fifo_size",
                                         "chread_max_fifo_size"})
                          .make();
    add_sample(*inst, {"1", "100", "50", "3"});
    EXPECT_EQ(depth_keys(*inst), "[0.5][3]");
}

TEST(ChannelDepth, WithoutRequestsAndStallsIsZero) {
    const auto inst = fifo("depth_zero", {"chwrite_total_fifo_size", "chwrite_max_fifo_size"}).make();
    add_sample(*inst, {"5", "3"});
    EXPECT_EQ(depth_keys(*inst), "[0][3]");
}

TEST(ChannelDepth, OneCounterWithoutTheOtherIsReported) {
    const auto total = fifo("depth_total", {"chread_total_fifo_size", "ivalid"}).make();
    add_sample(*total, {"5", "10"});
    EXPECT_EQ(stderr_of([&] { EXPECT_EQ(depth_keys(*total), "[0.5](none)"); }), only_one);
    const auto max = fifo("depth_max", {"chread_max_fifo_size"}).make();
    add_sample(*max, {"5"});
    EXPECT_EQ(stderr_of([&] { EXPECT_EQ(depth_keys(*max), "(none)[5]"); }), only_one);
}

TEST(ChannelDepth, WithSharedCountersThereIsNoAverage) {
    InstBuilder builder = fifo("depth_shared", {"chread_total_fifo_size", "chread_max_fifo_size"});
    builder.shared = true;
    const auto inst = builder.make();
    add_sample(*inst, {"5", "3"}, SHARED_IVALID);
    EXPECT_EQ(depth_keys(*inst), "(none)[3]");
}

// A location of the instance: file, line, column, and whether it is a call site.
struct Location {
    const char* file;
    int line;
    int column;
    bool callsite;
};

std::unique_ptr<TlyModuleInst> inst_at(const std::vector<Location>& locations) {
    auto inst = InstBuilder{.function = "located"}.make();
    for (const Location& location : locations) {
        inst->addFilename(location.file);
        inst->addLine(location.line);
        inst->addColNum(location.column);
        inst->addIsCallsite(location.callsite);
    }
    return inst;
}

std::string sources_of(TlyModuleInst& inst) {
    return node_text(getModuleJSON(&inst, {}).get_child("sourcefiles"));
}

TEST(SourceLocations, WithoutDebugDataAreAnEmptyText) {
    const auto inst = inst_at({});
    EXPECT_EQ(stderr_of([&] { EXPECT_EQ(sources_of(*inst), ""); }), "");
}

TEST(SourceLocations, CallSitesNestOutwards) {
    const auto inst = inst_at({{"a", 1, 2, false}, {"b", 3, 4, true}, {"c", 5, 6, true}});
    EXPECT_EQ(sources_of(*inst),
              "[{filename=a line=1 column_num=2 callsite=[{filename=b line=3 column_num=4 "
              "callsite=[{filename=c line=5 column_num=6}]}]}]");
}

TEST(SourceLocations, RecordsComeInReverseOrder) {
    const auto inst =
        inst_at({{"a", 1, 2, false}, {"b", 3, 4, true}, {"c", 5, 6, false}, {"d", 7, 8, false}});
    EXPECT_EQ(sources_of(*inst),
              "[{filename=d line=7 column_num=8} {filename=c line=5 column_num=6} "
              "{filename=a line=1 column_num=2 callsite=[{filename=b line=3 column_num=4}]}]");
}

TEST(SourceLocations, TheFirstEntryEndsAChainWhateverItsFlag) {
    const auto inst = inst_at({{"a", 1, 2, true}, {"b", 3, 4, true}});
    EXPECT_EQ(sources_of(*inst),
              "[{filename=a line=1 column_num=2 callsite=[{filename=b line=3 column_num=4}]}]");
}

TEST(SourceLocations, ListsOfDifferentLengthAreReportedWithoutANewline) {
    const auto inst = inst_at({{"a", 1, 2, false}});
    inst->addLine(3);
    inst->addFilename("b");
    // As many locations as lines and files have. The second has no column, and no flag, which counts as set.
    EXPECT_EQ(
        stderr_of([&] {
            EXPECT_EQ(sources_of(*inst),
                      "[{filename=a line=1 column_num=2 callsite=[{filename=b line=3 column_num=-1}]}]");
        }),
        "Warning: number of debug lines, number of debug filepaths, and number of columns do not match.");
}

TEST(SourceLocations, TheWalkStartsAtTheNumberOfColumnsAtMost) {
    const auto inst = inst_at({{"a", 1, 2, false}});
    for (const char* file : {"b", "c", "d"}) {
        inst->addFilename(file);
        inst->addLine(9);
    }
    // Four lines and files, one column: the walk starts at index 1.
    EXPECT_EQ(
        stderr_of([&] {
            EXPECT_EQ(sources_of(*inst),
                      "[{filename=a line=1 column_num=2 callsite=[{filename=b line=9 column_num=-1}]}]");
        }),
        "Warning: number of debug lines, number of debug filepaths, and number of columns do not match.");
}

TEST(SourceLocations, ALongChainIsBuiltWithoutCopies) {
    std::vector<Location> locations{{"a", 1, 1, false}};
    constexpr int depth = 20000;
    for (int i = 0; i < depth; ++i)
        locations.push_back({"b", i, 2, true});
    const auto inst = inst_at(locations);
    ptree node;
    getModuleJSON(inst.get(), {}).swap(node);
    int levels = 0;
    const ptree* location = &node.get_child("sourcefiles").front().second;
    while (const auto callsite = location->get_child_optional("callsite")) {
        location = &callsite->front().second;
        ++levels;
    }
    EXPECT_EQ(levels, depth);
    dismantle(node);
}

} // namespace
