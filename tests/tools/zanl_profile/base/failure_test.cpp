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

TEST(Printable, ControlBytesAreShownAsNumbers) {
    EXPECT_EQ(printable(""), "");
    EXPECT_EQ(printable("a b~"), "a b~");
    EXPECT_EQ(printable(std::string("\0\x1b\x1f\x7f\n", 5)), "\\x00\\x1B\\x1F\\x7F\\x0A");
    EXPECT_EQ(printable("\xC3\xA4"), "\xC3\xA4"); // a letter of UTF-8
    EXPECT_EQ(in_quotes("a\tb"), "'a\\x09b'");
}

} // namespace
