// SPDX-License-Identifier: Apache-2.0
// `zanl-profile history trend` as users run it; golden/ has what it prints of a kernel that became slower.
#include "history_store.h"
#include "toolbox_fixture.h"
#include "two_runs.h"

namespace {

using namespace zan::profile;
using testing::HasSubstr;

// h.db has seven runs of 100 ns of the kernel k, which has a block b; none measured how busy k was.
class TrendCommand : public Toolbox {
  protected:
    TrendCommand() {
        for (int day = 11; day <= 17; ++day)
            add_run("k", "2026-11-" + std::to_string(day));
    }
    void add_run(const std::string& kernel, const std::string& date) const {
        ProfileSummary summary =
            run_of({kernel_of(kernel, {{Metric::kernel_time, 100}}, {block_of("b", {{Metric::stall, 28}})})});
        summary.start = date; // makes it another run
        const HistoryEntry entry = {summary, date, {{"commit", "1f3a"}}};
        HistoryStore(dir.path("h.db"), OpenMode::create).add({&entry, 1});
    }
    Outcome trend(std::vector<std::string> options) const {
        options.insert(options.begin(), {"history", "trend", "h.db", "--kernel", "k"});
        return run(options);
    }
};

TEST_F(TrendCommand, OptionsThatDoNotFitAreNamed) {
    struct Row {
        std::vector<std::string> options;
        const char* text;
    };
    const Row rows[] = {
        {{"--metric", "span"}, "'span' is no metric of a kernel or a block"},
        {{"--metric", "memory_full"}, "'memory_full' is no metric of a kernel or a block"},
        {{"--metric", "stall"}, "'stall' is a metric of blocks: name one with --block"},
        {{"--metric", "kernel_time", "--block", "b"},
         "'kernel_time' is a metric of kernels, and --block names a block"},
        {{"--metric", "kernel_time", "--strict"}, "--strict is for --fail-on"},
        {{"--metric", "kernel_time", "--fail-on", "5%"},
         "--fail-on takes a share of the median, such as +5%, not '5%'"},
        {{"--metric", "busy", "--fail-on", "+5%"}, "--fail-on: no value of 'busy' is worse than another"},
        {{"--metric", "kernel_time", "--last", "0"}, "--last takes a number of runs from 1 on"},
        {{"--metric", "kernel_time", "--where", "commit"}, "--where takes NAME=VALUE, not 'commit'"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(trend(row.options), trouble(row.text));
}

TEST_F(TrendCommand, WhatNoRunHasIsNamed) {
    EXPECT_EQ(trend({"--metric", "busy"}), trouble("no run has 'busy' of 'k'"));
    EXPECT_EQ(trend({"--metric", "busy", "--where", "commit=1f3a"}),
              trouble("no run with these labels has 'busy' of 'k'"));
    EXPECT_EQ(trend({"--metric", "valid", "--block", "b"}), trouble("no run has 'valid' of 'k/b'"));
    EXPECT_EQ(trend({"--metric", "kernel_time", "--where", "commit=2f3a"}),
              trouble("no run with these labels has 'kernel_time' of 'k'"));
}

TEST_F(TrendCommand, StrictFailsOnlyIfItCannotBeDecided) {
    const std::vector<std::string> strict = {"--metric", "kernel_time", "--fail-on", "+5%", "--strict"};
    const std::string sentence = "holds: kernel_time of k is 100 ns, median of the 6 runs before 100 ns";
    const Outcome decided = trend(strict);
    EXPECT_EQ(decided.status, "0");
    EXPECT_EQ(decided.err, "");
    EXPECT_THAT(decided.out, HasSubstr(sentence));

    add_run("other", "2026-11-18");
    const Outcome undecided = trend(strict);
    EXPECT_EQ(undecided.status, "1");
    EXPECT_THAT(undecided.err,
                testing::MatchesRegex("the newest run, [0-9a-f]{12}, has no kernel_time of k\n"));
    EXPECT_EQ(undecided.out, decided.out);
    EXPECT_EQ(trend({"--metric", "kernel_time", "--fail-on", "+5%"}).status, "0");
}

} // namespace
