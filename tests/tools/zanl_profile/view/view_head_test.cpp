// SPDX-License-Identifier: Apache-2.0
#include "view_head.h"

#include <gtest/gtest.h>

namespace {

TEST(ViewHead, AnInputIsShownWithoutItsFolder) {
    EXPECT_EQ(zan::tool::shown_name("a/b/run.json"), "run.json");
    EXPECT_EQ(zan::tool::shown_name("run.json"), "run.json");
    EXPECT_EQ(zan::tool::shown_name("-"), "standard input");
}

} // namespace
