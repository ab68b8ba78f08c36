// SPDX-License-Identifier: Apache-2.0
#include "source_place.h"

#include <gtest/gtest.h>

using zan::profile::source_place_text;

TEST(SourcePlace, IsAFileAndItsLineAsFarAsTheyAreKnown) {
    EXPECT_EQ(source_place_text({"device/image.cl", 34, 5}), "device/image.cl:34");
    EXPECT_EQ(source_place_text({"device/image.cl", 0, 5}), "device/image.cl");
    EXPECT_EQ(source_place_text({"device/image.cl", -1, 5}), "device/image.cl");
    EXPECT_EQ(source_place_text({"", 34, 5}), "");
}
