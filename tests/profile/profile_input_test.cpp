#include "profile_input.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "make_package.h"
#include "metrics.h"
#include "summary_json.h"
#include "temp_dir.h"
#include "whole_file.h"

using namespace zan::profile;

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

const fs::path input_samples = ZAN_SAMPLES_FOLDER;

std::vector<ProfileInput> inputs_of(const std::vector<std::string>& words) {
    const auto grouped = group_inputs(words);
    EXPECT_TRUE(std::holds_alternative<std::vector<ProfileInput>>(grouped));
    const auto* const inputs = std::get_if<std::vector<ProfileInput>>(&grouped);
    return inputs ? *inputs : std::vector<ProfileInput>();
}

TEST(ProfileInput, APackageTakesTheNextWordAsItsCapture) {
    EXPECT_EQ(
        inputs_of({"a.json", "design.zanx", "run.mon", "-", "zanx", "-"}),
        (std::vector<ProfileInput>{{"a.json", ""}, {"design.zanx", "run.mon"}, {"-", ""}, {"zanx", "-"}}));
    EXPECT_EQ(inputs_of({}), std::vector<ProfileInput>());
    EXPECT_EQ((ProfileInput{"design.zanx", "run.mon"}.name()), "design.zanx run.mon");
    EXPECT_EQ((ProfileInput{"a.json", ""}.name()), "a.json");
}

TEST(ProfileInput, APackageWithoutItsCaptureIsAFault) {
    const std::vector<std::string> words = {"a.json", "design.zanx"};
    const auto grouped = group_inputs(words);
    ASSERT_TRUE(std::holds_alternative<InputFault>(grouped));
    EXPECT_EQ(std::get<InputFault>(grouped),
              (InputFault{"design.zanx", "the capture of this package must follow it"}));
}

TEST(ProfileInput, TheFirstBytesShowTheKind) {
    EXPECT_EQ(kind_of_text(" {\n \"schema\": \"x\""), InputKind::summary);
    EXPECT_EQ(kind_of_text("{\"json_type\": \"x\""), InputKind::report);
    EXPECT_EQ(kind_of_text(""), InputKind::report);
    EXPECT_EQ(kind_of_text("\x7F"
                           "ELF"),
              InputKind::package);
    EXPECT_EQ(kind_of_text("\x1F\x8B\x08"), InputKind::compressed);
}

LoadedProfile loaded_of(const ProfileInput& input, const LoadOptions& options = {}) {
    auto loaded = load_profile(input, options);
    if (const auto* const fault = std::get_if<InputFault>(&loaded)) {
        ADD_FAILURE() << fault->input << ": " << fault->text;
        return {};
    }
    return std::move(std::get<LoadedProfile>(loaded));
}

InputFault load_fault(const ProfileInput& input) {
    const auto loaded = load_profile(input);
    EXPECT_TRUE(std::holds_alternative<InputFault>(loaded)) << input.name();
    const auto* const fault = std::get_if<InputFault>(&loaded);
    return fault ? *fault : InputFault{};
}

std::string package_of(const fs::path& sample, const TempDir& dir) {
    PackageSections sections;
    for (const auto& entry : fs::directory_iterator(sample / "sections"))
        sections.emplace_back(".zan." + entry.path().filename().string(), read_file(entry.path()));
    make_package(dir.path("design.zanx"), sections);
    return dir.path("design.zanx");
}

// The version of the program is in the report's text alone.
ProfileSummary summary_without_version(const LoadedProfile& loaded) {
    ProfileSummary summary = summarize(*loaded.totals);
    summary.program_version.clear();
    for (KernelSummary& kernel : summary.kernels)
        kernel.num_units = {};
    return summary;
}

TEST(ProfileInput, AReportAndItsPackageWithCaptureHaveTheSameSummary) {
    for (const auto& entry : fs::directory_iterator(input_samples)) {
        if (!entry.is_directory())
            continue;
        const fs::path sample = entry.path();
        const TempDir dir;
        const LoadedProfile report = loaded_of({sample / "expected_report.json", ""});
        const LoadedProfile run = loaded_of({package_of(sample, dir), sample / "profile.mon"});
        EXPECT_EQ(summary_to_json(summary_without_version(report)),
                  summary_to_json(summary_without_version(run)))
            << sample;
        EXPECT_FALSE(report.knows_units);
        EXPECT_TRUE(run.knows_units);
        EXPECT_NE(run.num_lines, 0u);
    }
}

TEST(ProfileInput, ASavedSummaryComesBack) {
    const TempDir dir;
    const LoadedProfile report = loaded_of({input_samples / "image_pipeline" / "expected_report.json", ""});
    const ProfileSummary summary = summarize(*report.totals);
    write_file(dir.path("saved.json"), summary_to_json(summary));
    const LoadedProfile saved = loaded_of({dir.path("saved.json"), ""});
    EXPECT_EQ(saved.totals, nullptr);
    ASSERT_TRUE(saved.saved);
    EXPECT_EQ(*saved.saved, summary);
}

TEST(ProfileInput, TheProgressIsInBytes) {
    const fs::path report = input_samples / "vector_add" / "expected_report.json";
    std::uint64_t last = 0;
    LoadOptions options;
    options.progress = [&](std::uint64_t bytes) { last = bytes; };
    loaded_of({report, ""}, options);
    EXPECT_EQ(last, fs::file_size(report));
}

TEST(ProfileInput, WhatCantBeReadIsAFault) {
    const TempDir dir;
    EXPECT_EQ(load_fault({dir.path("none"), ""}),
              (InputFault{dir.path("none"), "can't be opened: No such file or directory"}));
    EXPECT_EQ(load_fault({"/", ""}), (InputFault{"/", "can't be read: Is a directory"}));
    write_file(dir.path("cut.json"), R"({"json_type": "Corvane Profiler JSON", "ver)");
    EXPECT_EQ(load_fault({dir.path("cut.json"), ""}).text, "byte 43: the text ends early: the report is cut");
    write_file(dir.path("summary.json"), "{\"schema\": ");
    EXPECT_THAT(load_fault({dir.path("summary.json"), ""}).text, HasSubstr("byte "));
    write_file(dir.path("report.gz"), "\x1F\x8B\x08...");
    EXPECT_THAT(load_fault({dir.path("report.gz"), ""}).text, HasSubstr("compressed"));
    const std::string package = package_of(input_samples / "vector_add", dir);
    fs::rename(package, dir.path("design.elf"));
    EXPECT_THAT(load_fault({dir.path("design.elf"), ""}).text, HasSubstr("this is a package"));
}

TEST(ProfileInput, AFaultOfARunNamesItsFile) {
    const TempDir dir;
    const fs::path sample = input_samples / "vector_add";
    const InputFault no_package = load_fault({dir.path("none.zanx"), sample / "profile.mon"});
    EXPECT_EQ(no_package.input, dir.path("none.zanx"));
    EXPECT_NE(no_package.text, "");
    const InputFault no_capture = load_fault({package_of(sample, dir), dir.path("none.mon")});
    EXPECT_EQ(no_capture.input, dir.path("none.mon"));
    EXPECT_NE(no_capture.text, "");
}

} // namespace
