// SPDX-License-Identifier: Apache-2.0
// Adding to a history where system calls fail: the runs are there as a whole or not at all, and the next
// command finds a history. The file itself may need its journal for that, so what counts is what a reader
// sees.
#include <algorithm>

#include "sample_runs.h"
#include "traced_fixture.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const std::function<int()> add =
    program_body(ZAN_TOOLBOX, {"history", "add", "runs.db", "new.json", "--date", "2026-11-22"});
const std::function<int()> list = program_body(ZAN_TOOLBOX, {"history", "list", "runs.db", "--json"});

class HistoryFaults : public Traced<FaultTest>, public testing::WithParamInterface<bool> {
  protected:
    void start() override {
        const std::filesystem::path sample = ZAN_SAMPLE;
        write("new.json", read_file(sample / "expected_report.json"));
        write("old.json", read_file(sample / "../vector_add/expected_report.json"));
        if (GetParam()) {
            ASSERT_EQ(run_whole(program_body(ZAN_TOOLBOX, {"history", "add", "runs.db", "old.json", "--date",
                                                           "2026-11-21"}))
                          .outcome.status,
                      "0");
            listed_before = run_whole(list).outcome.out;
        }
        before = tree();
        whole = run_whole(add);
        listed_after = run_whole(list).outcome.out;
    }

    void expect_all_or_nothing(Calls calls, int error, bool lasting) const {
        with_each_call_failing(
            add, calls, error, lasting, [&] { restore(before); },
            [&](const TracedRun& run) { expect_all_or_nothing_of(run); });
    }

    void expect_all_or_nothing_of(const TracedRun& run) const {
        const std::string listed = run_whole(list).outcome.out;
        if (run.outcome.status == "0") {
            EXPECT_EQ(listed, listed_after);
            return;
        }
        EXPECT_EQ(run.outcome.status, run.struck == "read new.json" ? "1" : "2");
        EXPECT_THAT(run.outcome.err, StartsWith("zanl-profile: "));
        EXPECT_EQ(std::ranges::count(run.outcome.err, '\n'), 1) << run.outcome.err;
        // A new file may have become a history without runs.
        if (GetParam())
            EXPECT_EQ(listed, listed_before);
        else
            EXPECT_THAT(listed, Not(HasSubstr("new.json")));
    }

    Tree before;
    TracedRun whole;
    std::string listed_before;
    std::string listed_after;
};

TEST_P(HistoryFaults, WithoutAFaultTheRunIsAdded) {
    EXPECT_EQ(whole.outcome.status, "0");
    EXPECT_NE(listed_after, listed_before);
    EXPECT_THAT(listed_after, HasSubstr("new.json"));
}

TEST_P(HistoryFaults, AFailedReadAddsAllOrNothing) {
    expect_all_or_nothing(Calls::reads, EIO, false);
}

TEST_P(HistoryFaults, AFullDiskAddsNothing) {
    expect_all_or_nothing(Calls::writes, ENOSPC, true);
}

TEST_P(HistoryFaults, AFailedWriteAddsAllOrNothing) {
    expect_all_or_nothing(Calls::writes, EIO, false);
}

TEST_P(HistoryFaults, AnyOtherFailureAddsAllOrNothing) {
    expect_all_or_nothing(Calls::others, EIO, false);
}

INSTANTIATE_TEST_SUITE_P(Of, HistoryFaults, testing::Bool(),
                         [](const auto& info) { return info.param ? "ARunMore" : "ANewFile"; });

} // namespace
