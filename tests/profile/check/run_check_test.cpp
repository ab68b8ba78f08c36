// SPDX-License-Identifier: Apache-2.0
#include "run_check.h"

#include <gtest/gtest.h>

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

} // namespace
