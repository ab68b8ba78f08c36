// SPDX-License-Identifier: Apache-2.0
// The shell function of docs/scripts.md with the program itself, in each situation that the README lists.
// tests/scripts_page_test.py has more of the function, with a stand-in for the program.
#include <gtest/gtest.h>

#include <stdexcept>

#include "case_file.h"
#include "make_package.h"
#include "run_program.h"
#include "temp_dir.h"
#include "tly_constants.h"
#include "whole_file.h"

namespace {

namespace fs = std::filesystem;

const fs::path sample = fs::path(ZAN_SAMPLES_FOLDER) / "vector_add";
constexpr const char* old_report = "the report of an earlier run\n";

// The lines of the page from the one that begins the function to the one that ends it.
std::string shell_function() {
    const std::string page = read_file(ZAN_SCRIPTS_PAGE);
    const std::string first = "\n    make_report() (\n";
    const std::string last = "\n    )\n";
    const std::size_t begin = page.find(first);
    const std::size_t end = page.find(last, begin);
    if (begin == std::string::npos || end == std::string::npos)
        throw std::runtime_error("no function on the page");
    return page.substr(begin, end + last.size() - begin);
}

std::string section(const std::string& name) {
    return read_file(sample / "sections" / name);
}

PackageSections sections() {
    return {{".zan.version", section("version")},
            {".zan.board_spec.xml", section("board_spec.xml")},
            {".zan.velmora_report", section("velmora_report")},
            {".zan.profiler.xml", section("profiler.xml")}};
}

// The sections with other bytes for one of them.
PackageSections sections_with(const std::string& name, const std::string& bytes) {
    PackageSections all = sections();
    for (auto& [known, content] : all) {
        if (known == name)
            content = bytes;
    }
    return all;
}

PackageSections sections_without(const std::string& name) {
    PackageSections all = sections();
    std::erase_if(all, [&](const auto& row) { return row.first == name; });
    return all;
}

// Runs the function with both shells, each in a folder with a package, a monitor file and an old report.
class ScriptsPage : public testing::TestWithParam<const char*> {
  protected:
    ScriptsPage() {
        make_package(path("design.zanx"), sections());
        write_file(path("profile.mon"), monitor());
        write_file(path("report.json"), old_report);
    }

    static std::string monitor() { return read_file(sample / "profile.mon"); }
    std::string path(const std::string& name) const { return m_folder.path(name); }

    // `before` is a command that the shell runs first.
    std::string status_of(const std::string& package = "design.zanx", const std::string& mon = "profile.mon",
                          const std::string& report = "report.json", const std::string& before = ":") const {
        const std::string code = "PATH='" + fs::path(ZAN_PROGRAM).parent_path().string() + "':$PATH\n" +
                                 before + shell_function() + "make_report \"$@\"\n";
        return run_program(GetParam(), {"-c", code, "shell", package, mon, report}, m_folder.path()).status;
    }

    // Whether the report is the sample's, and nothing but it was left.
    void expect_new_report(const std::string& name = "report.json") const {
        EXPECT_EQ(read_file(path(name)),
                  replaced(read_file(sample / "expected_report.json"), "@VERSION@", tly_version));
        EXPECT_FALSE(fs::exists(path(name + ".new.json")));
    }

    void expect_old_report() const {
        EXPECT_EQ(read_file(path("report.json")), old_report);
        EXPECT_FALSE(fs::exists(path("report.json.new.json")));
    }

    // The run makes no report of a package with these sections.
    void expect_no_report_of(const PackageSections& changed) const {
        make_package(path("changed.zanx"), changed);
        EXPECT_EQ(status_of("changed.zanx"), "1");
        expect_old_report();
    }

    void expect_no_report_of_monitor(const std::string& text) const {
        write_file(path("changed.mon"), text);
        EXPECT_EQ(status_of("design.zanx", "changed.mon"), "1");
        expect_old_report();
    }

  private:
    TempDir m_folder;
};

TEST_P(ScriptsPage, SuccessIsStatus0) {
    EXPECT_EQ(status_of(), "0");
    expect_new_report();
    EXPECT_EQ(status_of("design.zanx", "profile.mon", "other.txt"), "0");
    expect_new_report("other.txt");
}

TEST_P(ScriptsPage, LinesThatAreLeftOutAreStatus2) {
    write_file(path("profile.mon"), "\n" + monitor());
    EXPECT_EQ(status_of(), "2");
    expect_new_report();
}

TEST_P(ScriptsPage, AMissingDescriptionIsStatus2) {
    make_package(path("plain.zanx"), sections_without(".zan.profiler.xml"));
    EXPECT_EQ(status_of("plain.zanx"), "2");
    EXPECT_NE(read_file(path("report.json")), old_report);
}

TEST_P(ScriptsPage, AWrongEndingIsStatus1) {
    fs::copy_file(path("design.zanx"), path("design.elf"));
    fs::copy_file(path("profile.mon"), path("profile.csv"));
    EXPECT_EQ(status_of("design.elf"), "1");
    expect_old_report();
    EXPECT_EQ(status_of("design.zanx", "profile.csv"), "1");
    expect_old_report();
}

TEST_P(ScriptsPage, APackageThatCannotBeUsedIsStatus1) {
    EXPECT_EQ(status_of("missing.zanx"), "1");
    expect_old_report();
    for (const char* name : {".zan.version", ".zan.board_spec.xml", ".zan.velmora_report"})
        expect_no_report_of(sections_without(name));
}

TEST_P(ScriptsPage, ADescriptionThatCannotBeLoadedIsStatus1) {
    expect_no_report_of(sections_with(".zan.board_spec.xml", "<board/>"));
    expect_no_report_of(sections_with(".zan.profiler.xml", "<PROFILER><LIST/></PROFILER>"));
}

TEST_P(ScriptsPage, AMonitorFileThatCannotBeUsedIsStatus1) {
    EXPECT_EQ(status_of("design.zanx", "missing.mon"), "1");
    expect_old_report();
    fs::create_directory(path("folder.mon"));
    EXPECT_EQ(status_of("design.zanx", "folder.mon"), "1");
    expect_old_report();
    expect_no_report_of_monitor(replaced(monitor(), ",-1,19,", ",0,19,")); // shared counters in the run alone
    expect_no_report_of_monitor(monitor() + "1,2,3\n");
}

TEST_P(ScriptsPage, AReportThatCannotBeWrittenIsStatus1) {
    EXPECT_EQ(status_of("design.zanx", "profile.mon", "missing/report.json"), "1");
    // A limit of 8 blocks cuts the report of 27 kilobytes, and the system ends the program.
    EXPECT_EQ(status_of("design.zanx", "profile.mon", "report.json", "ulimit -f 8"), "1");
    expect_old_report();
}

INSTANTIATE_TEST_SUITE_P(EndToEnd, ScriptsPage, testing::Values("/bin/sh", "/bin/bash"),
                         [](const auto& info) { return std::string(fs::path(info.param).filename()); });

} // namespace
