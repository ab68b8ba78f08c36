// SPDX-License-Identifier: Apache-2.0
#include "run_input.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <thread>

#include "temp_dir.h"
#include "whole_file.h"

namespace {

using zan::profile::open_temporary;
using zan::profile::RunInput;

std::string rest_of(int fd) {
    std::string text(100, '\0');
    const ssize_t count = ::read(fd, text.data(), text.size());
    ::close(fd);
    return text.substr(0, count < 0 ? 0 : static_cast<std::size_t>(count));
}

TEST(RunInput, AFileIsReadAsOftenAsNeeded) {
    const TempDir folder;
    write_file(folder.path("f"), "text");
    const RunInput input(folder.path("f"), RunInput::Need::rereading);
    EXPECT_EQ(input.fault(), "");
    EXPECT_EQ(rest_of(input.descriptor()), "text");
    EXPECT_EQ(rest_of(input.descriptor()), "text");
    EXPECT_EQ(input.path(), folder.path("f"));
}

TEST(RunInput, APipeIsCopiedOnlyIfItIsReadAgain) {
    const TempDir folder;
    const std::string pipe = folder.path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const bool again : {false, true}) {
        std::thread writer([&] { write_file(pipe, "text"); });
        const RunInput input(pipe, again ? RunInput::Need::rereading : RunInput::Need::reading);
        writer.join();
        EXPECT_EQ(rest_of(input.descriptor()), "text");
        EXPECT_EQ(rest_of(input.descriptor()), again ? "text" : "");
    }
}

TEST(RunInput, APackageHasAPathEvenFromAPipe) {
    const TempDir folder;
    const std::string pipe = folder.path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    std::thread writer([&] {
        write_file(pipe,
                   "\x7f"
                   "ELF and more");
    });
    const RunInput input(pipe, RunInput::Need::path);
    writer.join();
    EXPECT_EQ(input.fault(), "");
    EXPECT_EQ(read_file(input.path()),
              "\x7f"
              "ELF and more");
    EXPECT_EQ(read_file(input.path()),
              "\x7f"
              "ELF and more");
}

TEST(RunInput, SaysWhyAFileCannotBeUsed) {
    const TempDir folder;
    const RunInput missing(folder.path("none"), RunInput::Need::reading);
    EXPECT_EQ(missing.fault(), "it can't be opened: No such file or directory");
    EXPECT_FALSE(missing.is_unusable());
    EXPECT_EQ(missing.descriptor(), -1);
    EXPECT_EQ(RunInput(folder.path(), RunInput::Need::reading).fault(), "it is a folder");
    write_file(folder.path("empty"), "");
    const RunInput empty(folder.path("empty"), RunInput::Need::path);
    EXPECT_EQ(empty.fault(), "it is empty");
    EXPECT_TRUE(empty.is_unusable());
    EXPECT_EQ(RunInput(folder.path("empty"), RunInput::Need::reading).fault(), "") << "a capture may be";
}

TEST(TemporaryFiles, HaveNoNameAndStandWhereTheUserWants) {
    const TempDir folder;
    setenv("TMPDIR", folder.path().c_str(), 1);
    const int fd = open_temporary();
    ASSERT_GE(fd, 0);
    EXPECT_EQ(write(fd, "x", 1), 1);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
    close(fd);
    setenv("TMPDIR", folder.path("none").c_str(), 1);
    EXPECT_EQ(open_temporary(), -1);
    unsetenv("TMPDIR");
}

} // namespace
