// SPDX-License-Identifier: Apache-2.0
#include "time_option.h"

#include <gtest/gtest.h>

#include "failure.h"

using namespace zan::tool;

namespace {

TEST(TimeOption, UnitsAreNanoseconds) {
    EXPECT_EQ(nanoseconds_of_unit("ns"), 1.0);
    EXPECT_EQ(nanoseconds_of_unit("us"), 1e3);
    EXPECT_EQ(nanoseconds_of_unit("ms"), 1e6);
    EXPECT_EQ(nanoseconds_of_unit("s"), 1e9);
    EXPECT_EQ(nanoseconds_of_unit(""), std::nullopt);
    EXPECT_THROW(nanoseconds_of_unit("m"), Failure);
}

TEST(TimeOption, TimesHaveTheirUnit) {
    EXPECT_EQ(nanoseconds_of_time("12ms", "--from"), 12e6);
    EXPECT_EQ(nanoseconds_of_time("1.5s", "--from"), 1.5e9);
    EXPECT_EQ(nanoseconds_of_time("-3ns", "--from"), -3.0);
    EXPECT_EQ(nanoseconds_of_time("", "--from"), std::nullopt);
    for (const char* text : {"12", "ms", "12 ms", "12msx", "infs", "nans", "1e3s"})
        EXPECT_THROW(nanoseconds_of_time(text, "--from"), Failure) << text;
}

} // namespace
