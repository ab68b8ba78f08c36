// SPDX-License-Identifier: Apache-2.0
// The commands of zanl-profile that read a run where system calls fail: each prints or writes all, or ends
// with one line and leaves what was there.
#include <algorithm>
#include <set>

#include "make_package.h"
#include "sample_runs.h"
#include "traced_fixture.h"

namespace {

using testing::StartsWith;

struct RunCase {
    std::string name;
    std::vector<std::string> arguments;
};

const std::vector<RunCase> run_cases = {
    {"RunInPlaceOfAReport", {"run", "--quiet", "design.zanx", "profile.mon", "report.json"}},
    {"Check", {"check", "design.zanx", "profile.mon"}},
    {"Summary", {"summary", "design.zanx", "profile.mon"}},
    {"SummaryAsJson", {"summary", "design.zanx", "profile.mon", "--json"}},
    {"SummaryOfAReport", {"summary", "whole.json"}},
    {"Diff", {"diff", "design.zanx", "profile.mon", "whole.json"}},
    {"View", {"view", "design.zanx", "profile.mon", "-o", "page.html"}},
    {"ExportTables", {"export", "design.zanx", "profile.mon", "--to", "csv", "-o", "tables"}},
    {"ExportDatabase", {"export", "design.zanx", "profile.mon", "--to", "sqlite", "-o", "run.db"}},
    {"ExportTrace", {"export", "design.zanx", "profile.mon", "--to", "perfetto", "-o", "run.trace"}},
};

class RunCommandFaults : public Traced<FaultTest>, public testing::WithParamInterface<RunCase> {
  protected:
    void start() override {
        const std::filesystem::path sample = ZAN_SAMPLE;
        PackageSections sections;
        for (const char* name : {"version", "velmora_report", "board_spec.xml", "profiler.xml"})
            sections.emplace_back(std::string(".zan.") + name, read_file(sample / "sections" / name));
        make_package(dir.path("design.zanx"), sections);
        write("profile.mon", read_file(sample / "profile.mon"));
        write("report.json", "old");
        write("whole.json", read_file(sample / "expected_report.json"));
        before = tree();
        whole = run_whole(body);
        after = tree();
    }

    // Returns the calls that have failed.
    std::set<std::string> expect_all_or_nothing(Calls calls, int error, bool lasting,
                                                const std::string& spared) const {
        std::set<std::string> struck;
        with_each_call_failing(
            body, calls, error, lasting, [&] { restore(before); },
            [&](const TracedRun& run) {
                struck.insert(run.struck);
                if (run.outcome.status == "0") {
                    EXPECT_THAT(run.struck, testing::MatchesRegex(spared));
                    EXPECT_EQ(run.outcome, whole.outcome);
                    EXPECT_EQ(tree(), after);
                } else {
                    expect_failure(run.outcome);
                }
            });
        return struck;
    }

    void expect_failure(const Outcome& outcome) const {
        const auto& [out, err, status] = outcome;
        EXPECT_EQ(status, "2");
        EXPECT_THAT(err, StartsWith("zanl-profile: "));
        EXPECT_EQ(std::ranges::count(err, '\n'), 1) << err;
        EXPECT_TRUE(whole.outcome.out.starts_with(out)) << out;
        EXPECT_EQ(tree(), before);
    }

    const std::function<int()> body = program_body(ZAN_TOOLBOX, GetParam().arguments);
    Tree before;
    Tree after;
    TracedRun whole;
};

TEST_P(RunCommandFaults, WithoutAFaultTheWorkIsDone) {
    EXPECT_EQ(whole.outcome.status, "0");
    EXPECT_EQ(whole.outcome.err, "");
    EXPECT_TRUE(after != before || whole.outcome.out != "");
}

TEST_P(RunCommandFaults, AFailedReadLeavesAllAsItWas) {
    expect_all_or_nothing(Calls::reads, EIO, false, "nothing");
}

TEST_P(RunCommandFaults, AFullDiskLeavesAllAsItWas) {
    expect_all_or_nothing(Calls::writes, ENOSPC, true, "nothing");
}

// A folder that can't have files without a name, which is asked for by opening it, has one with a name.
TEST_P(RunCommandFaults, AFileThatCannotBeOpenedLeavesAllAsItWas) {
    expect_all_or_nothing(Calls::opens, EMFILE, false, "openat (\\.|.*/)");
}

// Permissions are kept where that is possible. What is exported has reached the disk before it gets its name.
TEST_P(RunCommandFaults, AnyOtherFailureLeavesAllAsItWas) {
    const auto struck = expect_all_or_nothing(Calls::others, EIO, false, "f?chmod .*|newfstatat .*|lseek .*");
    const bool is_export = GetParam().arguments.front() == "export";
    EXPECT_EQ(std::ranges::any_of(struck, [](const auto& call) { return call.starts_with("fsync "); }),
              is_export);
}

TEST_P(RunCommandFaults, AnInterruptedCallIsMadeAgainOrReported) {
    for (const Calls calls : {Calls::reads, Calls::writes})
        expect_all_or_nothing(calls, EINTR, false, ".*");
}

INSTANTIATE_TEST_SUITE_P(Commands, RunCommandFaults, testing::ValuesIn(run_cases),
                         [](const auto& info) { return info.param.name; });

} // namespace
