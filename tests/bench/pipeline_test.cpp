// SPDX-License-Identifier: Apache-2.0
// Other tests take the pipeline for a real run, so its counts have to fit each other and the clock.
#include "pipeline.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "temp_dir.h"
#include "tly_exe.h"
#include "whole_file.h"

namespace {

std::vector<std::vector<std::string>> pipeline_lines(const Pipeline& pipeline) {
    std::ostringstream stream;
    write_monitor(pipeline, stream);
    std::istringstream text(stream.str());
    std::vector<std::vector<std::string>> lines;
    for (std::string line; std::getline(text, line);) {
        std::istringstream fields(line);
        for (lines.emplace_back(); std::getline(fields, line, ',');)
            lines.back().push_back(line);
    }
    return lines;
}

class PipelineWorkload : public testing::TestWithParam<bool> {
  protected:
    Pipeline m_pipeline{.num_frames = 2, .aligned = GetParam()};
};
INSTANTIATE_TEST_SUITE_P(Versions, PipelineWorkload, testing::Bool());

TEST_P(PipelineWorkload, IsTheSameEachTime) {
    EXPECT_EQ(pipeline_lines(m_pipeline), pipeline_lines(m_pipeline));
    EXPECT_EQ(sections_of(m_pipeline), sections_of(m_pipeline));
}

// At 300 MHz three cycles take 10 ns. The first counter of a line is the clock.
TEST_P(PipelineWorkload, HasCyclesThatFitTheTimeStamps) {
    std::map<std::string, long long> last; // time of the kernel's invocation so far
    std::map<std::string, std::string> start;
    for (const std::vector<std::string>& line : pipeline_lines(m_pipeline)) {
        if (line[2][0] == '.')
            continue;
        if (start[line[2]] != line[3])
            last[line[2]] = std::stoll(start[line[2]] = line[3]);
        const long long time = std::stoll(line[4]);
        EXPECT_EQ(3 * (time - last[line[2]]), 10 * std::stoll(line[7]));
        EXPECT_EQ(line.size(), 7 + std::stoul(line[6]));
        last[line[2]] = time;
    }
    EXPECT_EQ(last.size(), 6); // five kernels, and one for those that run by themselves
}

// `fetch` has, after its clock and the two counters of its port, a load whose valid, stalled and idle cycles
// come first.
TEST_P(PipelineWorkload, HasCountsThatMakeUpAllCycles) {
    int num_lines = 0;
    for (const std::vector<std::string>& line : pipeline_lines(m_pipeline)) {
        if (line[2] != "fetch")
            continue;
        ++num_lines;
        EXPECT_EQ(std::stoll(line[10]) + std::stoll(line[11]) + std::stoll(line[12]), std::stoll(line[7]));
    }
    EXPECT_GT(num_lines, 2 * 35);
}

TEST_P(PipelineWorkload, MakesAReportWithoutAWord) {
    const TempDir dir;
    std::string package = dir.path("design.zanx");
    std::string monitor = dir.path("profile.mon");
    std::string report = dir.path("report.json");
    make_package(package, sections_of(m_pipeline));
    std::ostringstream stream;
    write_monitor(m_pipeline, stream);
    write_file(monitor, stream.str());
    testing::internal::CaptureStderr();
    EXPECT_EQ(runTLY(package.data(), monitor.data(), report.data()), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    const std::string text = read_file(report);
    for (const char* kernel : {"track", "fetch", "warp", "merge", "grade", "emit", "meter"})
        EXPECT_NE(text.find("\"name\": \"" + std::string(kernel) + "\""), text.npos) << kernel;
    EXPECT_NE(text.find("\"callsite\":"), text.npos);
}

// In the second version only what reads aligned takes less time.
TEST(PipelineVersions, DifferInTheTimeOfTheFirstKernel) {
    std::map<std::string, int> num_samples[2];
    for (const bool aligned : {false, true}) {
        for (const std::vector<std::string>& line : pipeline_lines({.num_frames = 4, .aligned = aligned}))
            ++num_samples[aligned ? 1 : 0][line[2]];
    }
    EXPECT_LT(num_samples[1]["track"], 0.6 * num_samples[0]["track"]);
    EXPECT_NEAR(num_samples[1]["fetch"], num_samples[0]["fetch"], 8);
}

} // namespace
