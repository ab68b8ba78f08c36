#include "diagnostics.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "capture.h"

namespace {

TEST(Diagnostics, GoToStandardErrorAsTheyAre) {
    EXPECT_EQ(stderr_of([] { diagnose("{} of {}\n", 1, "two"); }), "1 of two\n");
    EXPECT_EQ(stderr_of([] { diagnose("no newline {}", "%s{}"); }), "no newline %s{}");
}

TEST(Diagnostics, AreOutBeforeTheNextStatement) {
    std::FILE* const file = std::tmpfile();
    ASSERT_NE(file, nullptr);
    write_message(file, "{}", "text");
    char text[8] = {};
    EXPECT_EQ(pread(fileno(file), text, sizeof text, 0), 4); // past the stream's own buffer
    EXPECT_STREQ(text, "text");
    std::fclose(file);
}

TEST(Diagnostics, AFullStreamIsNoError) {
    std::FILE* const full = std::fopen("/dev/full", "w");
    ASSERT_NE(full, nullptr);
    write_message(full, "{}\n", "lost");
    EXPECT_NE(std::ferror(full), 0);
    std::fclose(full);
}

} // namespace
