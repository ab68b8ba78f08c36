// The samples as a user runs them: make the package, run the program, look at the report.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "case_file.h"
#include "report_properties.h"
#include "run_program.h"
#include "temp_dir.h"
#include "tly_constants.h"
#include "whole_file.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
namespace fs = std::filesystem;

const fs::path program = ZAN_PROGRAM;
const fs::path make_package_program = ZAN_MAKE_PACKAGE;
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
    const Outcome made = run_program(make_package_program, {sample, "design.zanx"}, folder.path());
    ASSERT_EQ(made, (Outcome{"", "", "0"}));
    const Outcome ran =
        run_program(program, {"design.zanx", sample / "profile.mon", "report.json"}, folder.path());
    EXPECT_EQ(ran, (Outcome{"", "", "0"}));
    const std::string report = readFile(folder.path("report.json"));
    EXPECT_EQ(report, replaced(readFile(sample / "expected_report.json"), "@VERSION@", tly_version));
    EXPECT_THAT(report_faults(report), IsEmpty());

    writeFile(folder.path("in_one_go.mon"), without_restarts(readFile(sample / "profile.mon")));
    const Outcome again =
        run_program(program, {"design.zanx", "in_one_go.mon", "report.json"}, folder.path());
    EXPECT_EQ(again, ran);
    EXPECT_EQ(sample_rows(readFile(folder.path("report.json"))), sample_rows(report));
}

INSTANTIATE_TEST_SUITE_P(EndToEnd, Sample, testing::ValuesIn(sample_names()),
                         [](const auto& info) { return info.param; });

class MakePackage : public testing::Test {
  protected:
    Outcome make(const std::vector<std::string>& arguments) const {
        return run_program(make_package_program, arguments, m_folder.path());
    }
    fs::path add_section(const std::string& name, const std::string& bytes) const {
        fs::create_directories(m_folder.path("sample/sections"));
        writeFile(m_folder.path("sample/sections/" + name), bytes);
        return m_folder.path("sample");
    }
    // The bytes of a section of the package that `make` has written; unset if it has no such section.
    std::optional<std::string> section(const std::string& name) const {
        zan_pkg_file* const package = zan_pkg_open_file(m_folder.path("out.zanx").c_str(), ZAN_PKG_READ);
        std::size_t size = 0;
        std::optional<std::string> bytes;
        if (zan_pkg_section_exists(package, name.c_str(), &size) == 1) {
            bytes.emplace(size + 1, '#');
            zan_pkg_read_section(package, name.c_str(), bytes->data(), size + 1);
            bytes->pop_back();
        }
        zan_pkg_close_file(package);
        return bytes;
    }

    TempDir m_folder;
};

TEST_F(MakePackage, EachFileBecomesASectionOfItsName) {
    add_section("version", "1\n");
    add_section("profiler.xml", "<profiler/>");
    add_section("empty", "");
    EXPECT_EQ(make({"sample", "out.zanx"}), (Outcome{"", "", "0"}));
    EXPECT_EQ(section(".zan.version"), "1\n");
    EXPECT_EQ(section(".zan.profiler.xml"), "<profiler/>");
    EXPECT_EQ(section(".zan.empty"), "");
    EXPECT_FALSE(section("version"));
}

TEST_F(MakePackage, AHiddenFileIsNoSection) {
    add_section("version", "1\n");
    add_section(".version.swp", "x");
    EXPECT_EQ(make({"sample", "out.zanx"}).status, "0");
    EXPECT_FALSE(section(".zan..version.swp"));
}

TEST_F(MakePackage, AnOldPackageIsReplaced) {
    writeFile(m_folder.path("out.zanx"), "something else");
    add_section("version", "2\n");
    EXPECT_EQ(make({"sample", "out.zanx"}).status, "0");
    EXPECT_EQ(section(".zan.version"), "2\n");
}

TEST_F(MakePackage, WrongArgumentsGiveTheUsageAndStatus2) {
    for (const auto& arguments : {std::vector<std::string>{}, {"sample"}, {"sample", "out.zanx", "more"}}) {
        const Outcome outcome = make(arguments);
        EXPECT_EQ(outcome.status, "2");
        EXPECT_THAT(outcome.err, StartsWith("usage: make_package FOLDER PACKAGE\n"));
        EXPECT_THAT(outcome.out, IsEmpty());
    }
}

TEST_F(MakePackage, NothingToPackIsAnError) {
    EXPECT_EQ(make({"none", "out.zanx"}),
              (Outcome{"", "make_package: there is no folder 'none/sections'\n", "1"}));
    fs::create_directories(m_folder.path("none/sections"));
    EXPECT_EQ(make({"none", "out.zanx"}),
              (Outcome{"", "make_package: there is no section in 'none/sections'\n", "1"}));
    EXPECT_FALSE(fs::exists(m_folder.path("out.zanx")));
}

TEST_F(MakePackage, AFolderAmongTheSectionsIsAnError) {
    fs::create_directories(add_section("version", "1\n") / "sections" / "file");
    EXPECT_EQ(make({"sample", "out.zanx"}),
              (Outcome{"", "make_package: 'sample/sections/file' is no file\n", "1"}));
}

TEST_F(MakePackage, AFailureLeavesNothingBehind) {
    add_section("version", "1\n");
    const Outcome outcome = make({"sample", "no/such/folder/out.zanx"});
    EXPECT_EQ(outcome.status, "1");
    EXPECT_THAT(outcome.err, HasSubstr("make_package: can't make 'no/such/folder/out.zanx.unfinished'\n"));

    fs::create_directory(m_folder.path("out.zanx")); // a folder is in the way of the finished package
    EXPECT_EQ(make({"sample", "out.zanx"}).status, "1");
    EXPECT_FALSE(fs::exists(m_folder.path("out.zanx.unfinished")));
}

TEST_F(MakePackage, APackageThatDidNotReachTheDiskIsAnError) {
    add_section("version", "1\n");
    // Files may not grow above 1024 bytes, which is told to the program as an error and not by a signal.
    const std::string limited = "trap '' XFSZ; ulimit -f 1; exec " + make_package_program.string();
    const Outcome outcome = run_program("/bin/bash", {"-c", limited + " sample out.zanx"}, m_folder.path());
    EXPECT_EQ(outcome.status, "1");
    EXPECT_THAT(outcome.err, HasSubstr("make_package: can't write 'out.zanx.unfinished'\n"));
    EXPECT_FALSE(fs::exists(m_folder.path("out.zanx")));
    EXPECT_FALSE(fs::exists(m_folder.path("out.zanx.unfinished")));
}

} // namespace
