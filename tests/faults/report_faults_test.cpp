// SPDX-License-Identifier: Apache-2.0
// Runs of zanl-profile-tly in which system calls fail.
#include "sample_runs.h"
#include "tly_constants.h"
#include "traced_fixture.h"

namespace {

// The outcomes of faults, by what they struck: "pread64 design.zanx" and the words for the outcomes.
using Findings = std::map<std::string, Words>;

class ReportFaults : public Traced<SampleRuns> {
  protected:
    void start() override {
        prepare([&] { return run().outcome; });
    }
    TracedRun run(const Fault& fault = {}) const { return run_traced(body, dir.path(), fault); }

    Findings findings(Calls calls, int error, bool lasting = false) const {
        Findings found;
        with_each_call_failing(
            body, calls, error, lasting, [&] { restore(files); },
            [&](const TracedRun& run) {
                const std::string outcome = outcome_of(run.outcome);
                EXPECT_NE(outcome, "") << testing::PrintToString(run.outcome) << read("report.json");
                found[run.struck].insert(outcome);
            });
        return found;
    }

    const std::function<int()> body =
        program_body(ZAN_PROGRAM, {"design.zanx", "profile.mon", "report.json"});
};

TEST_F(ReportFaults, WithoutAFaultTheReportIsTheOneOfTheSample) {
    EXPECT_EQ(whole, (Outcome{"", "", "0"}));
    std::string expected = read_file(std::filesystem::path(ZAN_SAMPLE) / "expected_report.json");
    const std::string version = "@VERSION@";
    expected.replace(expected.find(version), version.size(), tly_version);
    EXPECT_EQ(right_report, expected);
}

// A package that can't be read is one that lacks sections. The profiler description is the last one that is
// looked for, and the only one that may be missing.
TEST_F(ReportFaults, AFailedReadOfThePackageAbortsOrCostsTheCountersWithAWarning) {
    EXPECT_EQ(findings(Calls::reads, EIO).at("pread64 design.zanx"),
              (Words{"an abort", "a warning and a report without counters"}));
}

// Lines are read until that fails, for whatever reason.
TEST_F(ReportFaults, AFailedReadOfTheMonitorFileIsNotNoticed) {
    EXPECT_EQ(findings(Calls::reads, EIO).at("read profile.mon"),
              (Words{"a report up to there", "the report"}));
}

// A number that is cut is another number.
TEST_F(ReportFaults, AMonitorLineWhoseEndCannotBeReadIsLeftOut) {
    const std::string& lines = files.at("profile.mon");
    std::set<std::string> reports;
    for (int size = 0; size < static_cast<int>(lines.size()); ++size) {
        restore(files);
        const TracedRun cut =
            run({.calls = Calls::reads, .number = size + 1, .error = EIO, .file = "profile.mon", .piece = 1});
        EXPECT_EQ(cut.outcome.status, "0");
        EXPECT_TRUE(cut_reports.contains(read("report.json")))
            << "after " << lines.substr(0, static_cast<std::size_t>(size));
        reports.insert(read("report.json"));
    }
    EXPECT_EQ(reports, cut_reports);
}

TEST_F(ReportFaults, AReportThatCannotBeWrittenEndsTheRunByASignal) {
    for (const int error : {EIO, ENOSPC}) {
        for (const bool lasting : {false, true}) {
            EXPECT_EQ(findings(Calls::writes, error, lasting),
                      (Findings{{"write report.json", {"a signal and a part of the report"}}}));
        }
    }
    EXPECT_EQ(findings(Calls::closes, EIO).at("close report.json"),
              (Words{"a signal and a part of the report"}));
}

TEST_F(ReportFaults, AClosedFileThatWasOnlyReadHasLostNothing) {
    Findings found = findings(Calls::closes, EIO);
    found.erase("close report.json");
    EXPECT_EQ(found,
              (Findings{{"close design.zanx", {"the report"}}, {"close profile.mon", {"the report"}}}));
}

TEST_F(ReportFaults, AFileThatCannotBeOpenedEndsTheRun) {
    for (const int error : {EIO, EMFILE, EINTR}) {
        EXPECT_EQ(findings(Calls::opens, error), (Findings{{"openat design.zanx", {"an abort"}},
                                                           {"openat profile.mon", {"an abort"}},
                                                           {"openat report.json", {"a signal"}}}));
    }
}

TEST_F(ReportFaults, AnInterruptedReadOrWriteIsMadeAgain) {
    EXPECT_EQ(findings(Calls::reads, EINTR),
              (Findings{{"pread64 design.zanx", {"the report"}}, {"read profile.mon", {"the report"}}}));
    EXPECT_EQ(findings(Calls::writes, EINTR), (Findings{{"write report.json", {"the report"}}}));
}

TEST_F(ReportFaults, PiecesOfAByteMakeTheSameReport) {
    for (const Calls calls : {Calls::reads, Calls::writes}) {
        restore(files);
        const TracedRun pieces = run({.calls = calls, .piece = 1});
        EXPECT_EQ(outcome_of(pieces.outcome), "the report");
        EXPECT_GT(pieces.calls, 100);
    }
}

TEST_F(ReportFaults, NothingElseIsAskedOfTheSystem) {
    const Findings found = findings(Calls::others, EIO);
    for (const auto& [call, outcomes] : found)
        EXPECT_EQ(outcomes, (Words{"the report"})) << call;
}

} // namespace
