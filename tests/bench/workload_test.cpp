// SPDX-License-Identifier: Apache-2.0
// The workloads of the benchmarks are the same everywhere, and make whole reports.
#include "workload.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "reread_report.h"
#include "temp_dir.h"
#include "tly_exe.h"
#include "whole_file.h"

namespace {

std::string monitor_of(const Shape& shape) {
    std::ostringstream stream;
    write_monitor(shape, stream);
    return stream.str();
}

Shape small_shape(std::string_view name) {
    Shape shape = shape_of(name).value();
    shape.lines = 300;
    return shape;
}

class Workload : public testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(Shapes, Workload, testing::Values("S", "L", "M", "W", "A", "X"));

TEST_P(Workload, IsTheSameEachTime) {
    const Shape shape = small_shape(GetParam());
    EXPECT_EQ(monitor_of(shape), monitor_of(shape));
    EXPECT_EQ(sections_of(shape), sections_of(shape));
}

TEST_P(Workload, HasTheLinesOfTheShape) {
    const Shape shape = small_shape(GetParam());
    std::istringstream monitor(monitor_of(shape));
    int num_kernel_lines = 0;
    for (std::string line; std::getline(monitor, line);) {
        if (line.find(",.mem_") != line.npos)
            continue;
        ++num_kernel_lines;
        const int counters = 3 * shape.insts_per_kernel + 2 * shape.ports;
        const int wanted = shape.autorun ? 1 + shape.kernels * counters : counters;
        ASSERT_EQ(std::count(line.begin(), line.end(), ','), 6 + wanted);
        ASSERT_NE(line.find(",-1," + std::to_string(wanted) + ","), line.npos);
    }
    EXPECT_EQ(num_kernel_lines, shape.lines);
}

// A message would be about a line or a block that was left out.
TEST_P(Workload, GivesAReportWithoutAWord) {
    const TempDir dir;
    std::string package = dir.path("design.zanx");
    std::string monitor = dir.path("profile.mon");
    std::string report = dir.path("report.json");
    make_package(package, sections_of(small_shape(GetParam())));
    write_file(monitor, monitor_of(small_shape(GetParam())));
    testing::internal::CaptureStderr();
    EXPECT_EQ(runTLY(package.data(), monitor.data(), report.data()), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    const std::string text = read_file(report);
    EXPECT_EQ(reread(text), text);
    EXPECT_NE(text.find("\"children\":\n"), text.npos);
    EXPECT_EQ(text.find("extmem") != text.npos, std::string_view(GetParam()) == "X");
}

TEST(WorkloadShapes, NumbersCanBeSetByName) {
    Shape shape = shape_of("L").value();
    EXPECT_TRUE(set_number(shape, "lines", 7));
    EXPECT_EQ(shape.lines, 7);
    EXPECT_FALSE(set_number(shape, "line", 7));
    EXPECT_FALSE(shape_of("Q"));
}

} // namespace
