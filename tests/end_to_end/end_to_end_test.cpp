// SPDX-License-Identifier: Apache-2.0
// Runs zanl-profile-tly on the cases of the folder `cases` and compares every byte it writes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <set>

#include "case_file.h"
#include "programs.h"
#include "report_properties.h"
#include "run_program.h"
#include "temp_dir.h"
#include "tly_constants.h"
#include "whole_file.h"

namespace {

const std::filesystem::path folder_of_cases = ZAN_CASES_FOLDER;

const ReportFrame& frame() {
    static const ReportFrame the_frame = read_frame(folder_of_cases.parent_path(), tly_version);
    return the_frame;
}

TestCase read_case(const std::string& name) {
    return parse_case(read_file(folder_of_cases / (name + ".case")), frame());
}

std::vector<std::string> case_names() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_of_cases))
        names.push_back(entry.path().stem().string());
    if (names.empty())
        throw std::runtime_error("no case in " + folder_of_cases.string());
    std::sort(names.begin(), names.end());
    return names;
}

// The monitor file, if it is a file; else null.
CaseInput* monitor_file(TestCase& test) {
    const auto found = std::find_if(test.inputs.begin(), test.inputs.end(),
                                    [](const CaseInput& input) { return input.name == "profile.mon"; });
    return found != test.inputs.end() && found->kind == CaseInput::file ? &*found : nullptr;
}

// Cases that read a monitor file to its end.
std::vector<std::string> monitor_case_names() {
    std::vector<std::string> names = case_names();
    std::erase_if(names, [](const std::string& name) {
        try {
            TestCase test = read_case(name);
            return !monitor_file(test) || !test.report || !test.out.empty() || test.status != "0";
        } catch (const std::runtime_error&) {
            return true; // its first test says what is wrong with it
        }
    });
    return names;
}

// All that a run leaves.
struct Result {
    Outcome outcome;
    std::optional<std::string> report;
    std::set<std::string> strays; // files that the run has made beside the report
};

// The one file that a run may write.
std::string report_name(const TestCase& test) {
    const bool is_named = !test.arguments.empty() && test.arguments.back().ends_with("json");
    return is_named ? test.arguments.back() : "report.json";
}

// Makes an input; a pipe needs a writer for as long as the program runs.
std::unique_ptr<PipeWriter> lay_out(const CaseInput& input, const TempDir& folder) {
    const std::filesystem::path path = folder.path(input.name);
    switch (input.kind) {
        case CaseInput::file:
            write_file(path, input.bytes);
            break;
        case CaseInput::folder:
            std::filesystem::create_directory(path);
            break;
        case CaseInput::link:
            std::filesystem::create_symlink(input.bytes, path);
            break;
        case CaseInput::pipe:
            return std::make_unique<PipeWriter>(path, input.bytes);
    }
    return nullptr;
}

std::set<std::string> files_in(const TempDir& folder) {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
        names.insert(entry.path().filename().string());
    return names;
}

// Lays out the case's files in a new folder and runs the program in it.
Result run(const TestCase& test) {
    const TempDir folder;
    if (test.package)
        make_package(folder.path("design.zanx"), *test.package);
    std::vector<std::unique_ptr<PipeWriter>> pipes;
    for (const CaseInput& input : test.inputs)
        pipes.push_back(lay_out(input, folder));
    const std::set<std::string> before = files_in(folder);
    Result result;
    result.outcome = run_program(program, test.arguments, folder.path());
    result.strays = files_in(folder);
    std::erase_if(result.strays, [&](const std::string& name) {
        return before.contains(name) || name == report_name(test);
    });
    const std::filesystem::path report = folder.path(report_name(test));
    if (std::filesystem::is_regular_file(report))
        result.report = read_file(report);
    return result;
}

class Case : public testing::TestWithParam<std::string> {
  protected:
    TestCase m_case = read_case(GetParam());
};

class MonitorCase : public Case {};

TEST_P(Case, GivesEveryByteItStates) {
    SCOPED_TRACE(m_case.title);
    const Result result = run(m_case);
    EXPECT_EQ(result.outcome.status, m_case.status);
    EXPECT_EQ(result.outcome.out, m_case.out);
    EXPECT_EQ(result.report.has_value(), m_case.report.has_value());
    EXPECT_EQ(result.report.value_or(""), m_case.report.value_or(""));
    EXPECT_THAT(result.strays, testing::IsEmpty());
    if (m_case.status != "signal") {
        EXPECT_EQ(result.outcome.err, m_case.err);
        return;
    }
    // The last words are the C++ library's own. A sanitizer's would be a fault of the program.
    EXPECT_TRUE(result.outcome.err.starts_with(m_case.err)) << result.outcome.err;
    EXPECT_EQ(result.outcome.err.find("Sanitizer"), std::string::npos) << result.outcome.err;
    EXPECT_EQ(result.outcome.err.find("runtime error"), std::string::npos) << result.outcome.err;
}

TEST_P(MonitorCase, IsTheSameThroughAPipe) {
    const Result from_file = run(m_case);
    monitor_file(m_case)->kind = CaseInput::pipe;
    const Result from_pipe = run(m_case);
    EXPECT_EQ(from_pipe.outcome, from_file.outcome);
    EXPECT_EQ(from_pipe.report, from_file.report);
}

TEST_P(MonitorCase, TheReportHoldsTogetherAndNoLineIsLost) {
    const Result result = run(m_case);
    ASSERT_TRUE(result.report);
    EXPECT_THAT(report_faults(*result.report), testing::IsEmpty());

    const std::string& monitor = monitor_file(m_case)->bytes;
    const std::size_t accounted = accounted_lines(*result.report, result.outcome.err);
    EXPECT_LE(accounted, count_lines(monitor));
    // The pseudo-kernel's samples never reach the report by themselves.
    EXPECT_GE(accounted + count_lines(monitor, autorun_profile_dummy_kernel), count_lines(monitor));
}

TEST_P(MonitorCase, RestartsCutTheSamplesAndChangeNone) {
    const Result with_restarts = run(m_case);
    std::string& monitor = monitor_file(m_case)->bytes;
    monitor = without_restarts(monitor);
    const Result in_one_go = run(m_case);
    ASSERT_TRUE(with_restarts.report && in_one_go.report);
    EXPECT_EQ(sample_rows(*with_restarts.report), sample_rows(*in_one_go.report));
}

const auto name_of_case = [](const auto& info) { return info.param; };
INSTANTIATE_TEST_SUITE_P(EndToEnd, Case, testing::ValuesIn(case_names()), name_of_case);
INSTANTIATE_TEST_SUITE_P(EndToEnd, MonitorCase, testing::ValuesIn(monitor_case_names()), name_of_case);

} // namespace
