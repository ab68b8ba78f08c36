// SPDX-License-Identifier: Apache-2.0
// Runs the program and the slow model on random inputs. Both have to write the same bytes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <set>
#include <sstream>

#include "input_generator.h"
#include "report_properties.h"
#include "reread_report.h"
#include "run_program.h"
#include "slow_model.h"
#include "temp_dir.h"
#include "tly_constants.h"
#include "whole_file.h"

namespace {

using slow::Input;
using slow::Result;

const std::filesystem::path program = ZAN_PROGRAM;

struct Seeds {
    std::uint64_t first = 0;
    std::uint64_t end = 200;
};

// "FROM-TO", both in decimal and TO left out.
Seeds parse_seeds(const std::string& text) {
    Seeds seeds;
    char dash = 0;
    std::istringstream stream(text);
    if (!(stream >> seeds.first >> dash >> seeds.end) || dash != '-' || !stream.eof() ||
        seeds.end <= seeds.first)
        throw std::runtime_error("ZAN_SEEDS is '" + text + "' and not FROM-TO");
    return seeds;
}

Seeds seeds_to_run() {
    const char* const text = std::getenv("ZAN_SEEDS");
    return text ? parse_seeds(text) : Seeds();
}

void lay_out(const Input& input, const std::string& folder) {
    make_package(folder + "/design.zanx", input.sections);
    if (input.monitor)
        write_file(folder + "/profile.mon", *input.monitor);
}

Result run_the_program(const Input& input) {
    const TempDir folder;
    lay_out(input, folder.path());
    const Outcome outcome =
        run_program(program, {"design.zanx", "profile.mon", "report.json"}, folder.path());
    EXPECT_EQ(outcome.out, "");
    Result result = {outcome.err, outcome.status, std::nullopt};
    if (std::filesystem::exists(folder.path("report.json")))
        result.report = read_file(folder.path("report.json"));
    return result;
}

std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

// The first line that differs, with what stands before it.
std::string difference(const std::string& expected, const std::string& actual) {
    const std::vector<std::string> left = lines_of(expected);
    const std::vector<std::string> right = lines_of(actual);
    const auto [at, other] = std::mismatch(left.begin(), left.end(), right.begin(), right.end());
    const auto line = static_cast<std::size_t>(at - left.begin());
    std::ostringstream text;
    text << "line " << line + 1 << ":\n";
    for (std::size_t i = line < 12 ? 0 : line - 12; i < line; ++i)
        text << "    " << left[i] << "\n";
    const auto shown = [](const auto& lines, auto place) { return place == lines.end() ? "(end)" : *place; };
    text << "  model:   " << shown(left, at) << "\n  program: " << shown(right, other) << "\n";
    if (at == left.end() && other == right.end())
        text << "  (only newlines differ)\n";
    return text.str();
}

// Whether the program's messages are the model's. Before an end by a signal the C++ library has its say, and
// a sanitizer's word would be a fault of the program.
bool same_messages(const Result& expected, const Result& actual) {
    if (expected.status != "signal")
        return actual.err == expected.err;
    return actual.err.starts_with(expected.err + "terminate called after throwing") &&
           actual.err.find("Sanitizer") == std::string::npos;
}

// Empty if they agree.
std::string differences(const Result& expected, const Result& actual) {
    std::string text;
    if (actual.status != expected.status)
        text += "status: model " + expected.status + ", program " + actual.status + "\n";
    if (!same_messages(expected, actual))
        text += "messages, " + difference(expected.err, actual.err);
    if (actual.report != expected.report)
        text +=
            "report, " + difference(expected.report.value_or("(none)\n"), actual.report.value_or("(none)\n"));
    return text;
}

// Leaves the input and both results where they can be looked at. Returns the folder.
std::string keep(std::uint64_t seed, const Input& input, const Result& expected, const Result& actual) {
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("zan_differential_seed_" + std::to_string(seed));
    std::filesystem::remove_all(folder);
    std::filesystem::create_directory(folder);
    lay_out(input, folder.string());
    for (const auto& [name, bytes] : input.sections)
        write_file(folder / ("section" + name), bytes);
    for (const auto& [name, result] : {std::pair("model", expected), std::pair("program", actual)}) {
        write_file(folder / (std::string(name) + ".err"), result.err);
        write_file(folder / (std::string(name) + ".json"), result.report.value_or(""));
    }
    return folder.string();
}

bool knows_pseudo_kernel(const Input& input) {
    const auto names_it = [](const std::string& text) {
        return count_lines(text, autorun_profile_dummy_kernel) > 0;
    };
    return names_it(*input.monitor) ||
           std::any_of(input.sections.begin(), input.sections.end(),
                       [&](const auto& section) { return names_it(section.second); });
}

// What holds for every report, also if the model should share a mistake with the program.
std::string broken_properties(Input input, const Result& result) {
    if (result.status != "0")
        return "";
    std::string text;
    for (const std::string& fault : report_faults(*result.report))
        text += fault + "\n";
    if (reread(*result.report) != *result.report)
        text += "read and written again, the report has other bytes\n";
    std::string& monitor = *input.monitor;
    // The pseudo-kernel's lines, also those with its original name, are samples of several kernels, or of
    // none.
    if (!knows_pseudo_kernel(input) && accounted_lines(*result.report, result.err) != count_lines(monitor))
        text += "a line is lost or counted twice\n";
    monitor = without_restarts(monitor);
    if (sample_rows(*run_the_program(input).report) != sample_rows(*result.report))
        text += "a restart changes a sample\n";
    return text;
}

// True if the seed's results agree.
bool check_seed(std::uint64_t seed) {
    const Input input = slow::make_input(seed);
    const Result expected = slow::run(input, tly_version);
    const Result actual = run_the_program(input);
    std::string text = differences(expected, actual);
    if (text.empty())
        text = broken_properties(input, actual);
    if (!text.empty())
        ADD_FAILURE() << "seed " << seed << ", " << text << "kept in " << keep(seed, input, expected, actual);
    return text.empty();
}

TEST(Differential, TheProgramGivesTheBytesOfTheSlowModel) {
    constexpr int most_failures = 5; // more would hide the first one
    const Seeds seeds = seeds_to_run();
    int failures = 0;
    for (std::uint64_t seed = seeds.first; seed < seeds.end && failures < most_failures; ++seed)
        failures += !check_seed(seed);
}

TEST(Differential, EachPartOfAResultCounts) {
    const Result model = {"a\nb\n", "0", "{\n}\n"};
    EXPECT_EQ(differences(model, model), "");
    EXPECT_EQ(differences(model, {"a\nb\n", "1", "{\n}\n"}), "status: model 0, program 1\n");
    EXPECT_EQ(differences(model, {"a\nc\n", "0", "{\n}\n"}),
              "messages, line 2:\n    a\n  model:   b\n  program: c\n");
    EXPECT_EQ(differences(model, {"a\n", "0", "{\n}\n"}),
              "messages, line 2:\n    a\n  model:   b\n  program: (end)\n");
    EXPECT_EQ(
        differences(model, {"a\nb\n", "0", "{\n}"}),
        "report, line 3:\n    {\n    }\n  model:   (end)\n  program: (end)\n  (only newlines differ)\n");
    EXPECT_EQ(differences(model, {"a\nb\n", "0", std::nullopt}),
              "report, line 1:\n  model:   {\n  program: (none)\n");
}

TEST(Differential, BehindTheMessagesOfACrashStandsTheLibrarysWordAlone) {
    const Result model = {"a\n", "signal", std::nullopt};
    const std::string words = "terminate called after throwing an instance of 'X'\n";
    EXPECT_EQ(differences(model, {"a\n" + words, "signal", std::nullopt}), "");
    EXPECT_NE(differences(model, {words, "signal", std::nullopt}), "");
    EXPECT_NE(differences(model, {"a\n", "signal", std::nullopt}), "");
    EXPECT_NE(differences(model, {"a\nb\n" + words, "signal", std::nullopt}), "");
    EXPECT_NE(differences(model, {"a\n" + words + "==1==ERROR: AddressSanitizer", "signal", std::nullopt}),
              "");
}

// Inputs that don't reach something would not show that it is right.
TEST(Differential, ThePlainSeedsReachEveryEndAndEveryKey) {
    std::set<std::string> statuses;
    std::set<std::string> keys;
    for (std::uint64_t seed = 0; seed < Seeds().end; ++seed) {
        const Result result = slow::run(slow::make_input(seed), "1");
        statuses.insert(result.status);
        for (const std::string& line : lines_of(result.report.value_or(""))) {
            const std::size_t start = line.find_first_not_of(' ');
            if (start != line.npos && line[start] == '"' && line.find("\":") != line.npos)
                keys.insert(line.substr(start + 1, line.find("\":") - start - 1));
        }
    }
    EXPECT_EQ(statuses, (std::set<std::string>{"0", "1", "SIGSEGV", "signal"}));
    for (const char* key : {"total_cycles_between_samples",
                            "callsite",
                            "mem_type",
                            "operation_type",
                            "occupancy_samples",
                            "stall_samples",
                            "idle_samples",
                            "average_channel_depth_samples",
                            "max_channel_depth_samples",
                            "activity_samples",
                            "bandwidth_samples",
                            "bandwidth_eff_samples",
                            "cache_hit_samples",
                            "non_aligned_access_samples",
                            "coalesced_memory",
                            "global_mem_name",
                            "average_burst_size",
                            "write_only",
                            "read_only",
                            "global_used_bw",
                            "avg_write_burst",
                            "avg_read_burst",
                            "max_burst_count"})
        EXPECT_TRUE(keys.contains(key)) << key;
}

} // namespace
