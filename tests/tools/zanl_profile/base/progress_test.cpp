// SPDX-License-Identifier: Apache-2.0
#include "progress.h"

#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

#include <algorithm>
#include <thread>

#include "capture.h"

namespace {

using namespace zan::tool;

// What `body` writes on standard error, if that is a terminal.
template <typename Body>
std::string on_terminal(Body body) {
    int user = -1, program = -1;
    winsize size = {};
    size.ws_col = 40;
    EXPECT_EQ(::openpty(&user, &program, nullptr, nullptr, &size), 0);
    const int before = ::dup(STDERR_FILENO);
    ::dup2(program, STDERR_FILENO);
    ::close(program);
    body();
    EXPECT_EQ(::write(STDERR_FILENO, "$", 1),
              1); // the end: a terminal may hand out what was written in pieces
    std::string text;
    char piece[4096];
    for (ssize_t num_read = 1; num_read > 0 && !text.ends_with('$');) {
        num_read = ::read(user, piece, sizeof piece);
        text.append(piece, num_read > 0 ? static_cast<std::size_t>(num_read) : 0);
    }
    ::dup2(before, STDERR_FILENO);
    ::close(before);
    ::close(user);
    text.pop_back();
    return text;
}

constexpr std::chrono::milliseconds at_once{0};

// 30 columns: "reading" has 7, " [] 100%" has 8, and one stays free. That leaves 14 for the bar.
TEST(ProgressText, ABarFillsItsLine) {
    EXPECT_EQ(progress_text("reading", 50, 100, 30), "reading [#######.......]  50%");
    EXPECT_EQ(progress_text("reading", 0, 100, 30), "reading [..............]   0%");
    EXPECT_EQ(progress_text("reading", 100, 100, 30), "reading [##############] 100%");
    EXPECT_EQ(progress_text("reading", 200, 100, 30), "reading [##############] 100%"); // a file that grew
    EXPECT_EQ(progress_text("r", 1, 2, 1000), "r [" + std::string(20, '#') + std::string(20, '.') + "]  50%");
}

TEST(ProgressText, ALineWithoutRoomHasNoBar) {
    EXPECT_EQ(progress_text("reading", 50, 100, 12), "reading ...");
    EXPECT_EQ(progress_text("reading", 50, 100, 5), "read");
    EXPECT_EQ(progress_text("reading", 50, 100, 0), "");
    EXPECT_EQ(progress_text("reading", 50, 0, 80), "reading ..."); // of how much isn't known
}

TEST(ProgressTest, ShortWorkShowsNothing) {
    EXPECT_EQ(on_terminal([] {
                  Progress progress({}, "reading", 10);
                  progress.at(5);
              }),
              "");
}

// 40 columns leave 24.
TEST(ProgressTest, LongWorkShowsABarThatIsRemoved) {
    EXPECT_EQ(on_terminal([] {
                  Progress progress({}, "reading", 100);
                  std::this_thread::sleep_for(std::chrono::milliseconds(1050));
                  progress.at(50);
              }),
              "\rreading [############............]  50%\x1b[K\r\x1b[K");
}

TEST(ProgressTest, TheBarIsDrawnTenTimesASecondAtMost) {
    const auto begin = std::chrono::steady_clock::now();
    const std::string text = on_terminal([] {
        Progress progress({}, "reading", 100, at_once);
        for (int i = 0; i < 1000; ++i)
            progress.at(50);
    });
    const auto most = (std::chrono::steady_clock::now() - begin) / std::chrono::milliseconds(100) + 1;
    EXPECT_LE(std::ranges::count(text, '%'), most);
    EXPECT_GE(std::ranges::count(text, '%'), 1);
}

TEST(ProgressTest, ANoteTakesThePlaceOfTheBar) {
    const std::string text = on_terminal([] {
        Progress progress({}, "reading", 100, at_once);
        progress.at(50);
        print_note({}, "note");
    });
    EXPECT_TRUE(text.ends_with("50%\x1b[K\r\x1b[Knote\r\n")) << text;
}

TEST(ProgressTest, QuietWorkShowsNothing) {
    EXPECT_EQ(on_terminal([] {
                  Progress progress({.quiet = true}, "reading", 100, at_once);
                  progress.at(50);
              }),
              "");
}

TEST(ProgressTest, AFileGetsNoBar) {
    EXPECT_EQ(stderr_of([] {
                  Progress progress({}, "reading", 100, at_once);
                  progress.at(50);
              }),
              "");
}

} // namespace
