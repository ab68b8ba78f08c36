// SPDX-License-Identifier: Apache-2.0
#include "files.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "failure.h"
#include "temp_dir.h"
#include "whole_file.h"

namespace {

using namespace zan::tool;
namespace fs = std::filesystem;

std::string text_of(const FileBytes& bytes) {
    return {bytes.data(), bytes.size()};
}

// The text of the Failure that `call` must end with.
template <typename Call>
std::string failure_of(Call call) {
    try {
        call();
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "(none)";
}

TEST(Permissions, TheUsersMaskIsTakenAwayAndKept) {
    const mode_t before = ::umask(027);
    EXPECT_EQ(masked_permissions(0666), 0640u);
    EXPECT_EQ(masked_permissions(0777), 0750u);
    EXPECT_EQ(::umask(before), 027u);
}

// Done in a process of its own, which ends with 0 if the new file has a number of its own.
TEST(StandardStreams, ClosedOnesAreNotTakenByOtherFiles) {
    const auto open_without = [](int stream) {
        ::close(stream);
        occupy_standard_streams();
        ::_exit(::open("/dev/null", O_RDWR) > STDERR_FILENO ? 0 : 1);
    };
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        EXPECT_EXIT(open_without(stream), testing::ExitedWithCode(0), "");
}

TEST(StandardStreams, AClosedOneCannotBeReadOrWritten) {
    const auto write_without = [] {
        ::close(STDOUT_FILENO);
        occupy_standard_streams();
        ::_exit(::write(STDOUT_FILENO, "x", 1) < 0 && errno == EBADF ? 0 : 1);
    };
    const auto read_without = [] {
        ::close(STDIN_FILENO);
        occupy_standard_streams();
        char byte;
        ::_exit(::read(STDIN_FILENO, &byte, 1) < 0 && errno == EBADF ? 0 : 1);
    };
    EXPECT_EXIT(write_without(), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(read_without(), testing::ExitedWithCode(0), "");
}

TEST(DescriptorTest, ClosesItsFileOnce) {
    const int fd = ::open("/dev/null", O_RDONLY);
    {
        Descriptor first(fd);
        Descriptor second(std::move(first));
        EXPECT_EQ(second.get(), fd);
        EXPECT_GE(::fcntl(fd, F_GETFD), 0);
    }
    EXPECT_LT(::fcntl(fd, F_GETFD), 0);
}

TEST(DescriptorTest, ReportsAFailedClose) {
    Descriptor file(::open("/dev/null", O_RDONLY));
    EXPECT_TRUE(file.close());
    EXPECT_EQ(file.get(), -1);
    EXPECT_FALSE(file.close());
    EXPECT_EQ(errno, EBADF);
}

TEST(FileBytesTest, GrowsAndShrinksAroundItsBytes) {
    FileBytes bytes;
    EXPECT_EQ(bytes.data(), nullptr);
    bytes.resize(3);
    std::memcpy(bytes.data(), "abc", 3);
    bytes.resize(100000);
    EXPECT_EQ(std::string(bytes.data(), 5), std::string("abc\0\0", 5));
    EXPECT_EQ(bytes.data()[99999], 0);
    bytes.resize(2);
    EXPECT_EQ(text_of(bytes), "ab");
    const FileBytes moved = std::move(bytes);
    EXPECT_EQ(text_of(moved), "ab");
    FileBytes emptied(5);
    emptied.resize(0);
    EXPECT_EQ(emptied.data(), nullptr);
    EXPECT_EQ(emptied.size(), 0u);
}

class Files : public testing::Test {
  protected:
    Descriptor open(const std::string& name, int flags) const {
        return Descriptor(::open(dir.path(name).c_str(), flags, 0600));
    }

    const TempDir dir;
};

TEST_F(Files, AFileIsReadWhole) {
    const std::string long_text(io_piece + 1, 'x');
    write_file(dir.path("long"), long_text);
    write_file(dir.path("empty"), "");
    EXPECT_TRUE(text_of(read_bytes(dir.path("long"), long_text.size())) == long_text);
    EXPECT_EQ(read_bytes(dir.path("empty"), 0).size(), 0u);
}

// Such files say that they have no bytes.
TEST_F(Files, AFileThatDoesNotKnowItsSizeIsReadToItsEnd) {
    EXPECT_EQ(text_of(read_bytes("/proc/self/status", 0)).substr(0, 5), "Name:");
    EXPECT_EQ(read_bytes("/dev/null", 0).size(), 0u);
}

TEST_F(Files, AFileThatIsTooLongIsNotRead) {
    write_file(dir.path("f"), "12345");
    EXPECT_EQ(text_of(read_bytes(dir.path("f"), 5)), "12345");
    EXPECT_EQ(failure_of([&] { read_bytes(dir.path("f"), 4); }),
              "'" + dir.path("f") + "' has 5 bytes, and a section holds at most 4");
    EXPECT_EQ(failure_of([&] { read_bytes(dir.path("none"), 4); }),
              "can't open '" + dir.path("none") + "': No such file or directory");
}

TEST_F(Files, ARangeIsReadOrFails) {
    write_file(dir.path("f"), "12345");
    const Descriptor file = open("f", O_RDONLY);
    EXPECT_EQ(text_of(read_range(file.get(), 1, 3, "f")), "234");
    EXPECT_EQ(text_of(read_range(file.get(), 5, 0, "f")), "");
    EXPECT_EQ(failure_of([&] { read_range(file.get(), 3, 3, "f"); }),
              "can't read 'f': it is shorter than expected");
    EXPECT_EQ(failure_of([&] { read_range(-1, 0, 1, "f"); }), "can't read 'f': Bad file descriptor");
}

TEST_F(Files, AWriteIsWholeOrFails) {
    const Descriptor full(::open("/dev/full", O_WRONLY));
    EXPECT_EQ(failure_of([&] { write_all(full.get(), "12", 2, "f"); }),
              "can't write to 'f': No space left on device");
    write_all(full.get(), nullptr, 0, "f"); // no byte, no failure
    write_all(open("f", O_WRONLY | O_CREAT).get(), "12", 2, "f");
    EXPECT_EQ(read_file(dir.path("f")), "12");
}

TEST_F(Files, ARangeIsCopiedToWhereTheOtherFileStands) {
    write_file(dir.path("from"), "0123456789");
    const Descriptor from = open("from", O_RDONLY);
    const Descriptor to = open("to", O_WRONLY | O_CREAT);
    write_all(to.get(), "ab", 2, "to");
    copy_range(from.get(), 3, 4, to.get(), "from", "to");
    copy_range(from.get(), 0, 1, to.get(), "from", "to");
    EXPECT_EQ(read_file(dir.path("to")), "ab34560");
    EXPECT_EQ(failure_of([&] { copy_range(from.get(), 8, 3, to.get(), "from", "to"); }),
              "can't read 'from': it is shorter than expected");
}

// The kernel copies between files alone.
TEST_F(Files, ARangeIsCopiedIntoAPipeToo) {
    write_file(dir.path("from"), "0123456789");
    const Descriptor from = open("from", O_RDONLY);
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const Descriptor reader(ends[0]);
    const Descriptor writer(ends[1]);
    copy_range(from.get(), 2, 5, writer.get(), "from", "to");
    char bytes[8];
    ASSERT_EQ(::read(reader.get(), bytes, sizeof bytes), 5);
    EXPECT_EQ(std::string(bytes, 5), "23456");
}

} // namespace
