// SPDX-License-Identifier: Apache-2.0
#include "time_option.h"

#include <gtest/gtest.h>

#include "failure.h"

namespace {

using namespace zan::tool;

TEST(TimeOption, UnitsAreNanoseconds) {
    EXPECT_EQ(nanoseconds_of_unit("ns"), 1.0);
    EXPECT_EQ(nanoseconds_of_unit("us"), 1e3);
    EXPECT_EQ(nanoseconds_of_unit("ms"), 1e6);
    EXPECT_EQ(nanoseconds_of_unit("s"), 1e9);
    EXPECT_EQ(nanoseconds_of_unit(""), std::nullopt);
    EXPECT_THROW(nanoseconds_of_unit("min"), Failure);
}

} // namespace
