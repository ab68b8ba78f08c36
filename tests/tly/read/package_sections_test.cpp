// SPDX-License-Identifier: Apache-2.0
#include "package_sections.h"

#include <filesystem>

#include "capture.h"
#include "make_package.h"
#include "node_text.h"
#include "temp_dir.h"

namespace {

class PackageTest : public testing::Test {
  protected:
    PackageTest() { make_package(m_path, {{"a", "1"}, {"b", std::string("two\0three", 9)}, {"empty", ""}}); }

    const TempDir m_dir;
    const std::string m_path = m_dir.path("design.zanx");
};

TEST_F(PackageTest, SectionsAreTextsThatEndAtANul) {
    Package package(m_path.c_str());
    const PackageSection a = package.read("a");
    EXPECT_EQ(a.status, SectionStatus::found);
    EXPECT_STREQ(a.text.get(), "1");
    EXPECT_STREQ(package.read("b").text.get(), "two");
    EXPECT_STREQ(package.read("empty").text.get(), "");
}

TEST_F(PackageTest, ASectionThatIsMissingHasNoText) {
    Package package(m_path.c_str());
    const PackageSection section = package.read("c");
    EXPECT_EQ(section.status, SectionStatus::no_section);
    EXPECT_EQ(section.text, nullptr);
}

TEST_F(PackageTest, APackageThatIsMissingHasNoSections) {
    const std::string nowhere = m_dir.path("nowhere.zanx");
    Package package(nowhere.c_str());
    const PackageSection section = package.read("a");
    EXPECT_EQ(section.status, SectionStatus::no_package);
    EXPECT_EQ(section.text, nullptr);
}

TEST_F(PackageTest, StaysOpenFromTheFirstSectionUntilItIsClosed) {
    Package package(m_path.c_str());
    EXPECT_STREQ(package.read("a").text.get(), "1");
    std::filesystem::remove(m_path);
    EXPECT_STREQ(package.read("a").text.get(), "1");
    package.close();
    EXPECT_EQ(package.read("a").status, SectionStatus::no_package);
}

TEST_F(PackageTest, CanBeReadAgainAfterItWasClosed) {
    Package package(m_path.c_str());
    package.close(); // nothing is open yet
    EXPECT_STREQ(package.read("a").text.get(), "1");
    package.close();
    package.close();
    EXPECT_STREQ(package.read("a").text.get(), "1");
}

class TextStages : public testing::Test {
  protected:
    StageResult run(StageResult (*stage)(ptree&, Package&), const PackageSections& sections) {
        make_package(m_path, sections);
        Package package(m_path.c_str());
        return stage(tree, package);
    }
    void expect_clock(const std::string& report, const std::string& clock) {
        tree = ptree();
        tree.put("run_info.nodes..name", "x");
        EXPECT_EQ(run(parse_timing_report, {{".zan.velmora_report", report}}), StageResult::done);
        EXPECT_EQ(tree.get<std::string>("run_info.nodes..fmax"), clock) << report;
    }

    ptree tree;

  private:
    const TempDir m_dir;
    const std::string m_path = m_dir.path("design.zanx");
};

TEST_F(TextStages, TheVersionIsTheFirstLine) {
    EXPECT_EQ(run(parse_version, {{".zan.version", "4.2 Build 117\nmore\n"}}), StageResult::done);
    EXPECT_EQ(node_text(tree), "versions={zanx_version=4.2 Build 117}");
}

TEST_F(TextStages, WithoutItsSectionAStageFails) {
    EXPECT_EQ(stderr_of([&] {
                  EXPECT_EQ(run(parse_version, {{"a", "1"}}), StageResult::failed);
              }),
              "Error: unable to get version zanx section\n");
    EXPECT_EQ(stderr_of([&] {
                  EXPECT_EQ(run(parse_timing_report, {{"a", "1"}}), StageResult::failed);
              }),
              "Error: unable to get velmora report zanx section\n");
    EXPECT_EQ(node_text(tree), "");
}

TEST_F(TextStages, TheClockIsTheRestOfItsFirstLine) {
    expect_clock("x\nActual clock freq: 240.5\nActual clock freq: 1\n", "240.5");
    expect_clock("Actual clock freq:  240.5 MHz\r\n", " 240.5 MHz\r");
    expect_clock("Actual clock freq: \n", "");
}

TEST_F(TextStages, ATimingReportWithoutAWholeClockLineHasAClockOfZero) {
    expect_clock("", "0.0");
    expect_clock("x\n", "0.0");
    expect_clock("Actual clock freq: 240.5", "0.0");
    expect_clock("actual clock freq: 240.5\n", "0.0");
}

} // namespace
