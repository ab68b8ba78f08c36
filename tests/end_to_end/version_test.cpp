// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tly_constants.h"

namespace {

TEST(Version, IsAYearTwoSmallNumbersAndACommit) {
    EXPECT_THAT(tly_version, testing::MatchesRegex("[0-9]{4}\\.[0-9]{1,3}\\.[0-9]{1,3}\\.[0-9a-f]{40}"));
}

} // namespace
