// SPDX-License-Identifier: Apache-2.0
#include "run_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "description.h"
#include "make_package.h"
#include "temp_dir.h"
#include "whole_file.h"

namespace {

namespace fs = std::filesystem;
using namespace zan::profile;

// The samples are right, so that only notes are allowed.
TEST(RunCheck, NoSampleHasAnErrorOrAWarning) {
    int num_samples = 0;
    for (const auto& entry : fs::directory_iterator(ZAN_SAMPLES_FOLDER)) {
        if (!entry.is_directory())
            continue;
        ++num_samples;
        PackageSections sections;
        for (const auto& file : fs::directory_iterator(entry.path() / "sections"))
            sections.emplace_back(".zan." + file.path().filename().string(), read_file(file.path()));
        const TempDir folder;
        make_package(folder.path("d.zanx"), sections);
        const CheckResult result = check_run(folder.path("d.zanx"), entry.path() / "profile.mon", {});
        EXPECT_EQ(result.trouble, "");
        EXPECT_GT(result.num_lines, 0u);
        EXPECT_EQ(result.log.count(FindingLevel::error), 0u) << entry.path();
        EXPECT_EQ(result.log.count(FindingLevel::warning), 0u) << entry.path();
        EXPECT_EQ(check_run(folder.path("d.zanx"), std::nullopt, {}).log.count(FindingLevel::warning), 0u);
    }
    EXPECT_EQ(num_samples, 10);
}

TEST(RunCheck, WhatCannotBeReadIsTrouble) {
    const TempDir folder;
    const CheckResult result = check_run(folder.path("none"), std::nullopt, {});
    EXPECT_EQ(result.trouble, folder.path("none") + ": it can't be opened: No such file or directory");
    EXPECT_TRUE(result.log.findings().empty());
}

// On a line with more counters than the design has, no counter is where it is looked for.
TEST(RunCheck, OfALineWithOtherCountersNoCounterIsBad) {
    const TempDir folder;
    const Description description =
        Description().function("k").module("m", {"clock"}).inst("k", "b", "m").connect("k", "b", "clock");
    const fs::path sample = fs::path(ZAN_SAMPLES_FOLDER) / "loop" / "sections";
    make_package(folder.path("d.zanx"), {{".zan.version", read_file(sample / "version")},
                                         {".zan.velmora_report", read_file(sample / "velmora_report")},
                                         {".zan.board_spec.xml", read_file(sample / "board_spec.xml")},
                                         {".zan.profiler.xml", description.xml()}});
    const auto codes_of = [&](const std::string& line) {
        write_file(folder.path("p.mon"), line);
        std::vector<std::string> codes;
        const CheckResult result = check_run(folder.path("d.zanx"), folder.path("p.mon"), {});
        for (const Finding& finding : result.log.findings())
            codes.emplace_back(finding.row->code);
        return codes;
    };
    EXPECT_THAT(codes_of("0,0,k,0,10,-1,1,x\n"), testing::Contains("bad-counter"));
    EXPECT_THAT(codes_of("0,0,k,0,10,-1,1,x\n"), testing::Not(testing::Contains("counter-count")));
    EXPECT_THAT(codes_of("0,0,k,0,10,-1,2,x,5\n"), testing::Contains("counter-count"));
    EXPECT_THAT(codes_of("0,0,k,0,10,-1,2,x,5\n"), testing::Not(testing::Contains("bad-counter")));
}

} // namespace
