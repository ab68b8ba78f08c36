// SPDX-License-Identifier: Apache-2.0
#include "run_input.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <thread>

#include "interrupted_pipe.h"
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

// Standard input for as long as this lives.
class StandardInput {
  public:
    explicit StandardInput(int fd) : m_old(::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)) {
        ::dup2(fd, STDIN_FILENO);
    }
    StandardInput(const StandardInput&) = delete;
    StandardInput& operator=(const StandardInput&) = delete;
    ~StandardInput() {
        ::dup2(m_old, STDIN_FILENO);
        ::close(m_old);
    }

  private:
    int m_old;
};

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

TEST(RunInput, StandardInputBeginsWhereItStands) {
    const TempDir folder;
    write_file(folder.path("f"),
               "before\x7f"
               "ELF and more");
    const int fd = ::open(folder.path("f").c_str(), O_RDONLY | O_CLOEXEC);
    for (const auto need : {RunInput::Need::reading, RunInput::Need::rereading, RunInput::Need::path}) {
        ASSERT_EQ(::lseek(fd, 6, SEEK_SET), 6);
        const StandardInput standard_input(fd);
        const RunInput input("-", need);
        EXPECT_EQ(input.fault(), "");
        EXPECT_EQ(rest_of(input.descriptor()),
                  "\x7f"
                  "ELF and more");
        if (need == RunInput::Need::path) {
            EXPECT_EQ(read_file(input.path()),
                      "\x7f"
                      "ELF and more");
        }
    }
    ::close(fd);
}

TEST(RunInput, ACopyIsWholeThoughSignalsInterruptIt) {
    const InterruptedPipe pipe("text");
    const StandardInput standard_input(pipe.reading_end());
    const RunInput input("-", RunInput::Need::rereading);
    EXPECT_EQ(input.fault(), "");
    EXPECT_EQ(rest_of(input.descriptor()), "text");
    EXPECT_EQ(rest_of(input.descriptor()), "text");
}

// The end of a pipe that is written to.
TEST(RunInput, SaysWhyItCannotBeReadToBeCopied) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const StandardInput standard_input(ends[1]);
    for (const auto need : {RunInput::Need::rereading, RunInput::Need::path}) {
        const RunInput input("-", need);
        EXPECT_EQ(input.fault(), "it can't be read: Bad file descriptor");
        EXPECT_FALSE(input.is_unusable());
    }
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST(RunInput, SaysWhyItCannotBeCopied) {
    const TempDir folder;
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    ASSERT_EQ(::write(ends[1], "0123456789", 10), 10);
    ::close(ends[1]);
    const StandardInput standard_input(ends[0]);
    ::setenv("TMPDIR", folder.path("none").c_str(), 1);
    EXPECT_EQ(RunInput("-", RunInput::Need::path).fault(),
              "it can't be copied to a temporary file: No such file or directory");
    ::setenv("TMPDIR", folder.path().c_str(), 1);
    rlimit usual{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &usual), 0);
    const rlimit of_three_bytes{3, usual.rlim_max};
    const auto old_handler = ::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &of_three_bytes), 0);
    const std::string fault = RunInput("-", RunInput::Need::rereading).fault();
    ::setrlimit(RLIMIT_FSIZE, &usual);
    ::signal(SIGXFSZ, old_handler);
    ::unsetenv("TMPDIR");
    ::close(ends[0]);
    EXPECT_EQ(fault, "it can't be copied to a temporary file: File too large");
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
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
    EXPECT_EQ(errno, ENOENT);
    setenv("TMPDIR", "", 1); // as if it were not set
    const int in_usual_place = open_temporary();
    EXPECT_GE(in_usual_place, 0);
    close(in_usual_place);
    unsetenv("TMPDIR");
}

} // namespace
