// SPDX-License-Identifier: Apache-2.0
// The samples as a user runs them: make the package, run the program, look at the report.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "case_file.h"
#include "programs.h"
#include "report_properties.h"
#include "run_program.h"
#include "temp_dir.h"
#include "tly_constants.h"
#include "whole_file.h"

namespace {

using testing::IsEmpty;
namespace fs = std::filesystem;

const fs::path samples = ZAN_SAMPLES_FOLDER;

std::vector<std::string> sample_names() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(samples)) {
        if (entry.is_directory())
            names.push_back(entry.path().filename().string());
    }
    if (names.empty())
        throw std::runtime_error("no sample in " + samples.string());
    return names;
}

class Sample : public testing::TestWithParam<std::string> {};

TEST_P(Sample, GivesTheReportThatStandsBesideIt) {
    const fs::path sample = samples / GetParam();
    const TempDir folder;
    const Outcome made =
        run_program(toolbox, {"package", "create", "design.zanx", "--from", sample}, folder.path());
    ASSERT_EQ(made, (Outcome{"", "", "0"}));
    const Outcome ran =
        run_program(program, {"design.zanx", sample / "profile.mon", "report.json"}, folder.path());
    EXPECT_EQ(ran, (Outcome{"", "", "0"}));
    const std::string report = read_file(folder.path("report.json"));
    EXPECT_EQ(report, replaced(read_file(sample / "expected_report.json"), "@VERSION@", tly_version));
    EXPECT_THAT(report_faults(report), IsEmpty());

    write_file(folder.path("in_one_go.mon"), without_restarts(read_file(sample / "profile.mon")));
    const Outcome again =
        run_program(program, {"design.zanx", "in_one_go.mon", "report.json"}, folder.path());
    EXPECT_EQ(again, ran);
    EXPECT_EQ(sample_rows(read_file(folder.path("report.json"))), sample_rows(report));
}

INSTANTIATE_TEST_SUITE_P(EndToEnd, Sample, testing::ValuesIn(sample_names()),
                         [](const auto& info) { return info.param; });

} // namespace
