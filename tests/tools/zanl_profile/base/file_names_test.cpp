// SPDX-License-Identifier: Apache-2.0
#include "file_names.h"

#include <gtest/gtest.h>

namespace {

using zan::tool::FileNames;

TEST(FileNamesTest, UsualNamesStayAsTheyAre) {
    FileNames names;
    EXPECT_EQ(names.next(".zan.version"), ".zan.version");
    EXPECT_EQ(names.next("a b"), "a b");
    EXPECT_EQ(names.next("..."), "...");
}

TEST(FileNamesTest, WhatCannotStandInAFileNameIsANumber) {
    FileNames names;
    EXPECT_EQ(names.next("a/b"), "a%2Fb");
    EXPECT_EQ(names.next("50%"), "50%25");
    EXPECT_EQ(names.next("a\nb\x7f"), "a%0Ab%7F");
    EXPECT_EQ(names.next("."), "%2E");
    EXPECT_EQ(names.next(".."), "%2E%2E");
}

TEST(FileNamesTest, ARepeatedNameGetsANumber) {
    FileNames names;
    EXPECT_EQ(names.next("a"), "a");
    EXPECT_EQ(names.next("a"), "a%~2");
    EXPECT_EQ(names.next("b"), "b");
    EXPECT_EQ(names.next("a"), "a%~3");
}

TEST(FileNamesTest, ALongNameIsCutAndGetsANumber) {
    FileNames names;
    const std::string longest(220, 'n');
    EXPECT_EQ(names.next(longest + "x"), longest + "%~1");
    EXPECT_EQ(names.next(longest + "y"), longest + "%~2");
    EXPECT_EQ(names.next(std::string(220, 'm')), std::string(220, 'm'));
    EXPECT_EQ(names.next(std::string(74, '/')).size(), 220u + 3); // 222 bytes when written as numbers
}

} // namespace
