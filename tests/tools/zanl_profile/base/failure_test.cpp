// SPDX-License-Identifier: Apache-2.0
#include "failure.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace {

using namespace zan::tool;

TEST(FailureTest, CarriesItsTextAndStatus) {
    EXPECT_STREQ(Failure("no").what(), "no");
    EXPECT_EQ(Failure("no").status(), status_trouble);
    EXPECT_EQ(Failure("no", status_no).status(), status_no);
}

// Scripts know these.
TEST(FailureTest, StatusesAreFixed) {
    EXPECT_EQ(status_no, 1);
    EXPECT_EQ(status_trouble, 2);
}

TEST(FailureTest, ASystemFailureHasTheReason) {
    errno = ENOENT;
    const Failure failure = system_failure("can't open 'x'");
    EXPECT_STREQ(failure.what(), "can't open 'x': No such file or directory");
    EXPECT_EQ(failure.status(), status_trouble);
}

} // namespace
