// SPDX-License-Identifier: Apache-2.0
#include "run_id.h"

#include <gtest/gtest.h>

#include "made_summary.h"
#include "summary_json.h"

namespace {

using namespace zan::profile;

ProfileSummary run_of_report() {
    return made::run({made::kernel("k", {made::global_read(), made::loop()})});
}

// An id doesn't depend on names of files, on the program's version, or on whether a summary was saved.
TEST(RunId, IsOfTheMetrics) {
    ProfileSummary other = run_of_report();
    other.input = "moved.json";
    other.program_version = "2";
    EXPECT_EQ(run_id_of(other), run_id_of(run_of_report()));
    EXPECT_EQ(run_id_of(std::get<ProfileSummary>(summary_from_json(summary_to_json(other)))),
              run_id_of(other));
    EXPECT_EQ(run_id_of(other).size(), 32u);
}

// All that a package makes known beside its report.
TEST(RunId, IsTheSameForAPackage) {
    ProfileSummary run = run_of_report();
    run.notes.push_back({"compute-units", "a report has one compute unit of each kernel: k has 3"});
    run.answers.memory = "not known";
    run.kernels[0].num_units = 3;
    run.memories[0].lower_bound = true;
    BlockSummary& block = run.kernels[0].blocks[0];
    block.own_share = block.block_share = block.read_share = block.write_share = std::nullopt;
    block.sentence = {"port-unknown", "note", "Waits for DDR"};
    EXPECT_EQ(run_id_of(run), run_id_of(run_of_report()));
}

TEST(RunId, DiffersWithAnyMetricAndWithWhatRan) {
    const std::string id = run_id_of(run_of_report());
    const auto id_after = [](auto change) {
        ProfileSummary run = run_of_report();
        change(run);
        return run_id_of(run);
    };
    EXPECT_NE(id, id_after([](ProfileSummary& run) { run.metrics[Metric::span] = 100'001; }));
    EXPECT_NE(id,
              id_after([](ProfileSummary& run) { run.kernels[0].metrics[Metric::kernel_time] = 99'999; }));
    EXPECT_NE(id,
              id_after([](ProfileSummary& run) { run.kernels[0].blocks[0].metrics[Metric::stall] = 41; }));
    EXPECT_NE(id, id_after([](ProfileSummary& run) { run.memories[0].peak = 1; }));
    EXPECT_NE(id, id_after([](ProfileSummary& run) { run.zanx_version = "4.2.0"; }));
    EXPECT_NE(id, id_after([](ProfileSummary& run) { run.board = "vela"; }));
    EXPECT_NE(id, id_after([](ProfileSummary& run) { run.kernels[0].name = "l"; }));
    EXPECT_NE(id, id_after([](ProfileSummary& run) { run.start = "1"; }));
}

} // namespace
