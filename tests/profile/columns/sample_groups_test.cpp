// SPDX-License-Identifier: Apache-2.0
#include "sample_groups.h"

#include <gtest/gtest.h>

#include <string>

using namespace zan::profile;

namespace {

std::string groups(const InvocationPart& part, std::uint64_t size) {
    std::string text;
    for_each_group(part, size, [&](const SampleGroup& group) {
        text += (group.is_left_out ? "(" : "[") + std::to_string(group.begin) + " " +
                std::to_string(group.end) + "]";
    });
    return text;
}

TEST(SampleGroups, TheLastOneMayBeSmaller) {
    EXPECT_EQ(groups({3, 3, 12}, 4), "[3 7][7 11][11 12]");
    EXPECT_EQ(num_groups({{3, 3, 12}}, 4), 3U);
    EXPECT_EQ(groups({3, 3, 5}, 1), "[3 4][4 5]");
}

TEST(SampleGroups, WhatIsLeftOutBeforeThemIsOne) {
    EXPECT_EQ(groups({3, 6, 8}, 1), "(3 6][6 7][7 8]");
    EXPECT_EQ(num_groups({{3, 6, 8}, {8, 8, 9}}, 1), 4U);
}

TEST(SampleGroups, AnInvocationWithoutSamplesHasNone) {
    EXPECT_EQ(groups({3, 3, 3}, 4), "");
    EXPECT_EQ(groups({3, 8, 3}, 4), ""); // nothing of it lies in a stretch
    EXPECT_EQ(num_groups({{3, 8, 3}, {3, 3, 3}}, 4), 0U);
}

} // namespace
