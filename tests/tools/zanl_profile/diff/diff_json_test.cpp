// SPDX-License-Identifier: Apache-2.0
#include "diff_json.h"

#include <gtest/gtest.h>

#include "diff_result.h"

namespace {

using namespace zan::tool;
using namespace zan::profile;

std::string json_of(const DiffResult& result) {
    std::string text;
    print_diff_json(result, [&](std::string_view piece) { text += piece; });
    return text;
}

TEST(DiffJson, HasAllChangesWithUnitsInTheirKeys) {
    TwoRuns runs = slower_writer();
    runs.before.kernels[0].blocks.pop_back();
    runs.after.kernels[0].blocks.pop_back(); // the new one
    runs.before.kernels[0].metrics[Metric::busy] = {};
    EXPECT_EQ(json_of(runs.result({"stall:+5"}, {{}, {"store"}})), R"({
    "schema": "zanl-profile/diff",
    "schema_version": 1,
    "base": "base.json",
    "new": "new.json",
    "match": "name",
    "times_compared": true,
    "changes": [
        {
            "kernel": "writer",
            "metric": "kernel_time",
            "verdict": "worse",
            "base_ns": 8000.0,
            "new_ns": 9200.0,
            "delta_ns": 1200.0,
            "delta_percent": 15.0
        },
        {
            "kernel": "writer",
            "metric": "busy",
            "verdict": "neither",
            "base_percent": null,
            "new_percent": 60.0,
            "delta_points": null
        },
        {
            "kernel": "writer",
            "block": "store",
            "metric": "stall",
            "verdict": "worse",
            "base_percent": 28.0,
            "new_percent": 35.1,
            "delta_points": 7.1
        }
    ],
    "appeared": [],
    "disappeared": [],
    "moved": [
        {
            "kernel": "writer",
            "block": "store",
            "base_file": "image.cl",
            "base_line": 34,
            "new_file": "image.cl",
            "new_line": 36
        }
    ],
    "transfers": [],
    "rules": [
        {
            "rule": "stall:+5",
            "compared": 1,
            "not_comparable": 0,
            "failures": [
                {
                    "kernel": "writer",
                    "block": "store",
                    "base_percent": 28.0,
                    "new_percent": 35.1,
                    "delta_points": 7.1
                }
            ]
        }
    ],
    "passed": false
}
)");
}

TEST(DiffJson, NamesWhatIsInOneRunAlone) {
    TwoRuns runs = slower_writer();
    runs.after.transfers = {{".write", 0, 1, 30, 30, 3}};
    const std::string json = json_of(runs.result());
    EXPECT_NE(json.find(R"("appeared": [
        {
            "kernel": "writer",
            "block": "log",
            "new_file": "image.cl",
            "new_line": 40
        }
    ])"),
              std::string::npos)
        << json;
    EXPECT_NE(json.find(R"("base_count": 0,
            "new_count": 1,
            "base_ns": null,
            "new_ns": 30.0,
            "delta_ns": null,
            "delta_percent": null)"),
              std::string::npos)
        << json;
    EXPECT_NE(json.find("\"passed\": true"), std::string::npos);
}

// The same pair the other way round, so that the block of one run alone is gone, and one that never had a
// place.
TEST(DiffJson, NamesWhatIsGone) {
    TwoRuns runs = slower_writer();
    std::swap(runs.before, runs.after);
    runs.before.kernels[0].blocks.push_back(block_of("made up", {}));
    runs.before.transfers = {{".write", 0, 1, 30, 30, 3}};
    const std::string json = json_of(runs.result());
    EXPECT_NE(json.find(R"("disappeared": [
        {
            "kernel": "writer",
            "block": "log",
            "base_file": "image.cl",
            "base_line": 40
        },
        {
            "kernel": "writer",
            "block": "made up"
        }
    ])"),
              std::string::npos)
        << json;
    EXPECT_NE(json.find(R"("base_count": 1,
            "new_count": 0,
            "base_ns": 30.0,
            "new_ns": null,
            "delta_ns": null,
            "delta_percent": null)"),
              std::string::npos)
        << json;
}

// Of 0 there is no share.
TEST(DiffJson, MemoriesAndTheRunHaveNoKernel) {
    TwoRuns runs;
    runs.before = run_of({}, {memory_of("DDR", {{Metric::memory_full, 5}})}, {{Metric::span, 0}});
    runs.after = run_of({}, {memory_of("DDR", {{Metric::memory_full, 15}})}, {{Metric::span, 50}});
    const std::string json = json_of(runs.result());
    EXPECT_NE(json.find(R"(        {
            "memory": "DDR",
            "metric": "memory_full",
            "verdict": "worse",
            "base_percent": 5.0,
            "new_percent": 15.0,
            "delta_points": 10.0
        })"),
              std::string::npos)
        << json;
    EXPECT_NE(json.find(R"(        {
            "metric": "span",)"),
              std::string::npos)
        << json;
}

TEST(DiffJson, AKernelOfAnotherNameHasBoth) {
    TwoRuns runs = slower_writer();
    runs.before.kernels[0].source = {"image.cl", 30, 0};
    runs.after = runs.before;
    runs.after.kernels[0].name = "writer_2";
    runs.after.kernels[0].metrics[Metric::kernel_time] = 9'200;
    DiffResult result = runs.result();
    result.match = MatchBy::source;
    result.comparison = compare(runs.before, runs.after, MatchBy::source);
    const std::string json = json_of(result);
    EXPECT_NE(json.find(R"("match": "source")"), std::string::npos) << json;
    EXPECT_NE(json.find(R"(        {
            "kernel": "writer_2",
            "base_kernel": "writer",
            "metric": "kernel_time",)"),
              std::string::npos)
        << json;
}

TEST(DiffJson, ABlockOfAnotherNameHasBoth) {
    TwoRuns runs;
    runs.before = run_of({kernel_of("k", {}, {block_of("load_1", {{Metric::stall, 10}}, 9)})});
    runs.after = run_of({kernel_of("k", {}, {block_of("load_2", {{Metric::stall, 50}}, 9)})});
    DiffResult result = runs.result();
    result.comparison = compare(runs.before, runs.after, MatchBy::source);
    const std::string json = json_of(result);
    EXPECT_NE(json.find(R"(        {
            "kernel": "k",
            "block": "load_2",
            "base_block": "load_1",
            "metric": "stall",)"),
              std::string::npos)
        << json;
}

} // namespace
