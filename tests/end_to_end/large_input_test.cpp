// SPDX-License-Identifier: Apache-2.0
// Input that is larger than any block the program may read or write at once.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "case_file.h"
#include "programs.h"
#include "run_program.h"
#include "temp_dir.h"
#include "tly_constants.h"
#include "whole_file.h"

namespace {

constexpr const char* no_description =
    "Warning: No profiler elf section. Will only return kernel start/stop time and memory transfer times "
    "between device & host.\n";

// An array of `count` texts under a kernel's key.
std::string array(const std::string& key, int count, const std::function<std::string(int)>& value) {
    const std::string indent(16, ' ');
    std::string text = indent + "\"" + key + "\":\n" + indent + "[\n";
    for (int i = 0; i < count; ++i)
        text += indent + "    \"" + value(i) + (i + 1 < count ? "\",\n" : "\"\n");
    return text + indent + "],\n";
}

std::string same(const std::string& text, int count, const std::string& key) {
    return array(key, count, [&](int) { return text; });
}

// The node of the kernel "k" on device 0 and queue 1 that was started at 5, with samples at 1000, 1001, ...
std::string kernel_node(int count) {
    return R"(            {
                "type": "kernel",
                "name": "k",
                "compute_unit": "0",
                "sourcefile":
                {
                    "filename": "",
                    "line": "0"
                },
)" + same("0", count, "device_ids") +
           same("1", count, "command_queue_id") + R"(                "start_time": "5",
                "end_time": ")" +
           std::to_string(999 + count) + R"(",
                "num_samples": ")" +
           std::to_string(count) + R"(",
                "shared_counter_run_type": "-1",
)" + array("sample_timestamps", count, [](int i) { return std::to_string(1000 + i); }) +
           R"(                "is_autorun": "false",
                "children": ""
            }
)";
}

// The plain package and its report with these kernel nodes.
TestCase plain_case(const std::string& kernels) {
    const ReportFrame frame = read_frame(std::filesystem::path(ZAN_CASES_FOLDER).parent_path(), tly_version);
    return parse_case("# Large\n--- plain package\n--- kernels\n" + kernels, frame);
}

std::string expected_report(const std::string& kernels) {
    return plain_case(kernels).report.value();
}

std::string report_on(const std::string& monitor) {
    const TempDir folder;
    make_package(folder.path("design.zanx"), plain_case("").package.value());
    write_file(folder.path("profile.mon"), monitor);
    const Outcome outcome =
        run_program(program, {"design.zanx", "profile.mon", "report.json"}, folder.path());
    EXPECT_EQ(outcome, (Outcome{"", no_description, "0"}));
    return read_file(folder.path("report.json"));
}

// Not EXPECT_EQ: a difference of megabytes helps no reader.
testing::AssertionResult same_text(const std::string& left, const std::string& right) {
    const auto [at, other] = std::mismatch(left.begin(), left.end(), right.begin(), right.end());
    if (at == left.end() && other == right.end())
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "they differ at byte " << at - left.begin();
}

TEST(LargeInput, ManyLines) {
    constexpr int count = 50'000;
    std::string monitor;
    for (int i = 0; i < count; ++i)
        monitor += "0,1,k,5," + std::to_string(1000 + i) + ",-1,2,11,12\n";
    ASSERT_GT(monitor.size(), 1'000'000u);
    EXPECT_TRUE(same_text(report_on(monitor), expected_report(kernel_node(count))));
}

TEST(LargeInput, LongLines) {
    std::string counters;
    for (int i = 0; i < 300'000; ++i)
        counters += "," + std::to_string(i);
    const std::string monitor =
        "0,1,k,5,1000,-1,0" + counters + "\n0,1,k,5,1001,-1,0" + counters + "\n0,1,k,5,1002,-1,0";
    EXPECT_TRUE(same_text(report_on(monitor), expected_report(kernel_node(3))));
}

TEST(LargeInput, ALongName) {
    const std::string name(1'000'000, 'n');
    const std::string node = replaced(kernel_node(1), "\"name\": \"k\"", "\"name\": \"" + name + "\"");
    EXPECT_TRUE(same_text(report_on("0,1," + name + ",5,1000,-1,0\n"), expected_report(node)));
}

TEST(LargeInput, ManyKernels) {
    // Names of one length, so that their order is that of their numbers.
    std::string monitor;
    std::string nodes;
    for (int i = 10'000; i < 12'000; ++i) {
        monitor += "0,1,k" + std::to_string(i) + ",5,1000,-1,0\n";
        const std::string node =
            replaced(kernel_node(1), "\"name\": \"k\"", "\"name\": \"k" + std::to_string(i) + "\"");
        nodes += i + 1 < 12'000 ? replaced(node, "            }\n", "            },\n") : node;
    }
    EXPECT_TRUE(same_text(report_on(monitor), expected_report(nodes)));
}

} // namespace
