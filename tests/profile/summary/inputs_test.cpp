// SPDX-License-Identifier: Apache-2.0
#include "inputs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "case_file.h"
#include "summary_json.h"
#include "temp_dir.h"
#include "tly_constants.h"
#include "whole_file.h"

namespace {

using namespace zan::profile;
using testing::HasSubstr;

std::vector<Input> split(const std::vector<std::string>& words) {
    const auto inputs = inputs_of(words);
    return std::holds_alternative<std::vector<Input>>(inputs) ? std::get<std::vector<Input>>(inputs)
                                                              : std::vector<Input>();
}

std::string split_fault(const std::vector<std::string>& words) {
    const auto inputs = inputs_of(words);
    return std::holds_alternative<InputFault>(inputs) ? std::get<InputFault>(inputs).text : "";
}

// A sample's package and its report, in files.
struct SampleFiles {
    explicit SampleFiles(const std::string& sample) {
        const std::filesystem::path source = std::filesystem::path(ZAN_SAMPLES_FOLDER) / sample;
        PackageSections sections;
        for (const auto& entry : std::filesystem::directory_iterator(source / "sections"))
            sections.emplace_back(".zan." + entry.path().filename().string(), read_file(entry.path()));
        package = folder.path("design.zanx");
        make_package(package, sections);
        capture = (source / "profile.mon").string();
        report = folder.path("report.json");
        write(report, replaced(read_file(source / "expected_report.json"), "@VERSION@", tly_version));
    }
    void write(const std::string& path, const std::string& text) const {
        std::ofstream(path, std::ios::binary) << text;
    }

    TempDir folder;
    std::string package;
    std::string capture;
    std::string report;
};

using SummaryOrFault = std::variant<ProfileSummary, InputFault>;

SummaryOrFault summarized(const std::vector<std::string>& words, const InputOptions& options = {}) {
    return summarize_inputs(split(words), options);
}

ProfileSummary summary_in(const SummaryOrFault& result) {
    if (const auto* fault = std::get_if<InputFault>(&result)) {
        ADD_FAILURE() << fault->text;
        return {};
    }
    return std::get<ProfileSummary>(result);
}

std::string fault_in(const SummaryOrFault& result) {
    return std::holds_alternative<InputFault>(result) ? std::get<InputFault>(result).text : "no fault";
}

} // namespace

TEST(Inputs, AWordThatEndsInZanxTakesTheNextAsItsCapture) {
    EXPECT_EQ(split({"a.json"}), (std::vector<Input>{{"a.json", ""}}));
    EXPECT_EQ(split({"a.zanx", "b.zanx", "-", "c.json"}),
              (std::vector<Input>{{"a.zanx", "b.zanx"}, {"-", ""}, {"c.json", ""}}));
    EXPECT_EQ(split({}), std::vector<Input>());
}

TEST(Inputs, WordsThatMakeNoInputsAreRefused) {
    EXPECT_EQ(split_fault({"a.json", "b.zanx"}), "b.zanx: a package needs its capture after it");
    EXPECT_EQ(split_fault({"-", "b.zanx", "-"}), "standard input can be read only once");
}

TEST(Inputs, AReportAndItsRunHaveTheSameSummary) {
    // What only a package knows, the number of compute units, aside; of these samples one has several.
    for (const char* sample : {"autorun", "channel", "image_pipeline", "inlined_calls", "kernel_names",
                               "load_store_units", "loop", "shared_counters", "vector_add"}) {
        const SampleFiles files(sample);
        ProfileSummary of_report = summary_in(summarized({files.report}));
        ProfileSummary of_run = summary_in(summarized({files.package, files.capture}));
        of_report.input = of_run.input = "";
        for (KernelSummary& kernel : of_run.kernels)
            kernel.num_units.reset();
        EXPECT_TRUE(of_report == of_run) << sample; // printed, they would be long
        EXPECT_FALSE(of_report.kernels.empty()) << sample;
    }
}

TEST(Inputs, ASavedSummaryIsReadAsItWasSaved) {
    const SampleFiles files("image_pipeline");
    const ProfileSummary summary = summary_in(summarized({files.report}));
    const std::string saved = files.folder.path("saved.json");
    files.write(saved, summary_to_json(summary));
    EXPECT_EQ(summary_in(summarized({saved})), summary);
    EXPECT_EQ(fault_in(summarized({files.report, saved})),
              saved + ": a saved summary can't be merged with other inputs");
    files.write(saved, summary_to_json(summary).substr(0, 100));
    EXPECT_THAT(fault_in(summarized({saved})), HasSubstr("saved.json: byte 100: "));
}

TEST(Inputs, RunsOfOneDesignAreMerged) {
    const SampleFiles files("channel");
    const ProfileSummary one = summary_in(summarized({files.report}));
    const ProfileSummary two = summary_in(summarized({files.report, files.package, files.capture}));
    EXPECT_EQ(two.num_invocations, 2 * one.num_invocations);
    EXPECT_EQ(two.kernels.size(), one.kernels.size());
    EXPECT_EQ(two.input, files.report + " " + files.package + " " + files.capture);
}

TEST(Inputs, FaultsNameTheirFile) {
    const SampleFiles files("channel");
    const std::string missing = files.folder.path("missing.json");
    EXPECT_EQ(fault_in(summarized({missing})), missing + ": No such file or directory");
    const std::string folder = files.folder.path("");
    EXPECT_THAT(fault_in(summarized({folder})), HasSubstr("Is a directory"));
    const std::string cut = files.folder.path("cut.json");
    const std::string report = read_file(files.report);
    files.write(cut, report.substr(0, report.size() / 2));
    EXPECT_THAT(fault_in(summarized({cut})),
                HasSubstr("cut.json: byte " + std::to_string(report.size() / 2) + ": "));
    EXPECT_THAT(fault_in(summarized({files.report, files.capture})), HasSubstr("profile.mon: byte 1: "));
    EXPECT_THAT(fault_in(summarized({files.package, missing})), HasSubstr("missing.json: "));
    files.write(files.package, "no package");
    EXPECT_THAT(fault_in(summarized({files.package, files.capture})), HasSubstr("design.zanx: "));
}

TEST(Inputs, LinesThatAreLeftOutAreANote) {
    const SampleFiles files("channel");
    const std::string capture = files.folder.path("run.mon");
    files.write(capture, read_file(files.capture) + "\nnonsense\n");
    const ProfileSummary summary = summary_in(summarized({files.package, capture}));
    ASSERT_FALSE(summary.notes.empty());
    EXPECT_EQ(summary.notes.back().code, "lines-left-out");
    // The capture has six lines, and an empty one and the nonsense are added.
    EXPECT_EQ(summary.notes.back().text,
              "2 of 8 lines of " + capture + " are left out; 'zanl-profile check' says why");
}

TEST(Inputs, ProgressReachesTheSizeOfWhatIsRead) {
    const SampleFiles files("channel");
    std::uint64_t done = 0;
    InputOptions options;
    options.progress = [&done](std::uint64_t bytes) { done = bytes; };
    summary_in(summarized({files.report}, options));
    EXPECT_EQ(done, size_of({files.report, ""}));
    EXPECT_EQ(size_of({files.package, files.capture}), std::filesystem::file_size(files.capture));
    EXPECT_EQ(size_of({files.folder.path("missing"), ""}), 0u);
}

TEST(Inputs, AnotherComputeUnitIsReadFromAPackage) {
    const SampleFiles files("compute_units");
    InputOptions options;
    options.compute_unit = 1;
    const ProfileSummary summary = summary_in(summarized({files.package, files.capture}, options));
    ASSERT_EQ(summary.kernels.size(), 1u);
    EXPECT_EQ(summary.kernels[0].compute_unit, 1);
    EXPECT_EQ(summary.kernels[0].num_units, 3u);
}

TEST(Inputs, AFileOfAnotherKindIsNamed) {
    const TempDir folder;
    std::ofstream(folder.path("report.gz"), std::ios::binary) << "\x1f\x8b\x08";
    EXPECT_THAT(fault_in(summarized({folder.path("report.gz")})), HasSubstr("this is compressed"));
    const SampleFiles sample("vector_add");
    std::filesystem::rename(sample.package, folder.path("design.elf"));
    EXPECT_THAT(fault_in(summarized({folder.path("design.elf")})), HasSubstr("this is a package"));
}

// A package whose description has a line that is no XML, one whose description breaks two rules, and an
// empty one, which has no lines.
TEST(Inputs, AFaultOfASectionHasItsLine) {
    const auto fault_with = [](const std::string& description) {
        const SampleFiles files("vector_add");
        PackageSections sections;
        for (const char* name : {".zan.version", ".zan.velmora_report", ".zan.board_spec.xml"}) {
            const auto path = std::filesystem::path(ZAN_SAMPLES_FOLDER) / "vector_add" / "sections" /
                              std::string(name).substr(5);
            sections.emplace_back(name, read_file(path));
        }
        sections.emplace_back(".zan.profiler.xml", description);
        const std::string package = files.folder.path("other.zanx");
        make_package(package, sections);
        const std::string fault = fault_in(summarized({package, files.capture}));
        EXPECT_TRUE(fault.starts_with(package)) << fault;
        return fault.substr(package.size());
    };
    EXPECT_EQ(fault_with("<PROFILER>\n<A b=></A>\n</PROFILER>"),
              ": .zan.profiler.xml: line 2: it is no XML: XMLElement name=A "
              "(XML_ERROR_PARSING_ATTRIBUTE)");
    EXPECT_EQ(fault_with("<PROFILER>\n\n<MODULE_LIST><MODULE odd='1' even='2'/></MODULE_LIST></PROFILER>"),
              ": .zan.profiler.xml: line 3: Unexpected attribute 'odd'.");
    EXPECT_EQ(fault_with(""), ": .zan.profiler.xml: it is no XML (XML_ERROR_EMPTY_DOCUMENT)");
}

TEST(Inputs, RunsOfOneDesignHaveItsComputeUnitsOnce) {
    const SampleFiles files("compute_units");
    const ProfileSummary summary =
        summary_in(summarized({files.package, files.capture, files.package, files.capture}));
    ASSERT_EQ(summary.kernels.size(), 1u);
    EXPECT_EQ(summary.kernels[0].num_units, 3u);
}

TEST(Inputs, OnlyAFileHasASize) {
    const TempDir folder;
    EXPECT_EQ(size_of({folder.path(), ""}), 0u);
    EXPECT_EQ(size_of({"/dev/null", ""}), 0u);
}
