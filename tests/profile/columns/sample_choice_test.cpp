// SPDX-License-Identifier: Apache-2.0
#include "sample_choice.h"

#include <gtest/gtest.h>

#include "contract_death.h"
#include "temp_dir.h"

using namespace zan::profile;

namespace {

// Two kernels of 16 samples each, with times and cycles alone.
std::unique_ptr<ProfileColumns> two_kernels(const TempDir& dir) {
    auto profile = std::make_unique<ProfileColumns>(dir.path());
    profile->summary.nanoseconds = 1.0;
    profile->summary.start = "0";
    for (std::size_t k = 0; k < 2; ++k) {
        KernelSummary summary;
        summary.name = k == 0 ? "a" : "b";
        profile->summary.kernels.push_back(summary);
        profile->kernel_places.push_back(k);
        auto& kernel =
            *profile->columns.kernels().emplace_back(std::make_unique<KernelColumns>(profile->store));
        kernel.num_samples = 16;
        kernel.invocations.push_back({0, 160, 0, SharedType::none});
        for (std::int64_t i = 1; i <= 16; ++i) {
            kernel.time.series.add(10 * i);
            kernel.cycles.series.add(std::int64_t{10});
        }
    }
    return profile;
}

TEST(SampleChoice, WhatFitsStaysAsItIs) {
    const TempDir dir;
    const auto profile = two_kernels(dir);
    EXPECT_TRUE(choose_samples(*profile, {.limit = 64})); // 2 kernels, 16 samples, 2 columns
    EXPECT_EQ(profile->group, 1u);
    EXPECT_EQ(profile->columns.kernels()[0]->num_samples, 16u);
}

TEST(SampleChoice, GroupsGrowUntilTheyFit) {
    const TempDir dir;
    const auto profile = two_kernels(dir);
    // Groups of 4: 2 · 4 groups, 2 columns, 3 values each are 48; of 8: 24.
    EXPECT_TRUE(choose_samples(*profile, {.limit = 47}));
    EXPECT_EQ(profile->group, 8u);
    EXPECT_EQ(profile->columns.kernels()[1]->num_samples, 2u);
}

TEST(SampleChoice, OneSampleForEachInvocationIsTheLeast) {
    const TempDir dir;
    const auto profile = two_kernels(dir);
    EXPECT_FALSE(choose_samples(*profile, {.limit = 1}));
    EXPECT_EQ(profile->group, 16u);
    EXPECT_EQ(profile->columns.kernels()[0]->num_samples, 1u);
}

TEST(SampleChoice, KernelsAndStretchesAreChosenBeforeTheLimit) {
    const TempDir dir;
    const auto profile = two_kernels(dir);
    // Samples 2 and 3 of "a", and one for those before them: 3 samples, 2 columns.
    EXPECT_TRUE(choose_samples(*profile, {.kernels = {"a"}, .from = 20.0, .to = 40.0, .limit = 6}));
    EXPECT_EQ(profile->group, 1u);
    EXPECT_EQ(profile->columns.kernels()[0]->num_samples, 3u);
    EXPECT_EQ(profile->columns.kernels()[1]->num_samples, 0u);
}

// A stretch from 100 on has the last six samples, and one for those before them; one up to 40 has the first
// four.
TEST(SampleChoice, AStretchMayBeOpenAtAnEnd) {
    for (const char* start : {"0", ""}) { // a run without a start begins at 0
        const TempDir dir;
        const auto last = two_kernels(dir);
        last->summary.start = start;
        EXPECT_TRUE(choose_samples(*last, {.from = 100.0}));
        EXPECT_EQ(last->columns.kernels()[0]->num_samples, 7u);
        const auto first = two_kernels(dir);
        first->summary.start = start;
        EXPECT_TRUE(choose_samples(*first, {.to = 40.0}));
        EXPECT_EQ(first->columns.kernels()[1]->num_samples, 4u);
    }
}

TEST(SampleChoice, AStretchNeedsTheUnitOfTime) {
    const TempDir dir;
    const auto profile = two_kernels(dir);
    profile->summary.nanoseconds.reset();
    EXPECT_TRUE(choose_samples(*profile, {.kernels = {"a"}}));
    EXPECT_CONTRACT(choose_samples(*profile, {.from = 1.0}), "the unit of time is known");
}

} // namespace
