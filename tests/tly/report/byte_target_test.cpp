// SPDX-License-Identifier: Apache-2.0
// Files and streams that take the bytes of a report, or refuse them.
#include "byte_target.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <boost/property_tree/json_parser/error.hpp>
#include <csignal>
#include <filesystem>
#include <sstream>

#include "temp_dir.h"
#include "whole_file.h"

namespace {

TEST(ByteTarget, AFileHoldsWhatWasWrittenInPlaceOfWhatWasThere) {
    const TempDir dir;
    const std::string path = dir.path("report.json");
    write_file(path, std::string(1000, 'x'));
    FileTarget file(path);
    EXPECT_EQ(read_file(path), "");
    EXPECT_TRUE(file.write("one", 3));
    EXPECT_TRUE(file.write("", 0));
    EXPECT_TRUE(file.write(" two", 4));
    EXPECT_TRUE(file.close());
    EXPECT_EQ(read_file(path), "one two");
}

constexpr std::size_t block_size = std::size_t{1} << 18;

// What the file takes on the disk, in bytes.
std::size_t place_of(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0);
    return static_cast<std::size_t>(status.st_blocks) * 512;
}

// 10 blocks and 1,000 bytes. Where a place is reserved ahead, that is 1 MiB from the second block on, again
// from the sixth, and 2.25 MiB from the tenth; the file is as large as its bytes, and takes no more than they
// do.
TEST(ByteTarget, ALargeFileTakesNoMorePlaceThanItsBytes) {
    const TempDir dir;
    const std::string path = dir.path("report.json");
    std::string expected;
    FileTarget file(path);
    for (char letter = 'a'; letter <= 'j'; ++letter) {
        const std::string block(block_size, letter);
        EXPECT_TRUE(file.write(block.data(), block.size()));
        expected += block;
        EXPECT_EQ(std::filesystem::file_size(path), expected.size());
    }
    EXPECT_TRUE(file.write(expected.data(), 1000));
    EXPECT_TRUE(file.close());
    EXPECT_EQ(read_file(path), expected + expected.substr(0, 1000));
    EXPECT_LT(place_of(path), expected.size() + 128 * 1024);
}

// A limit of six and a half blocks, as a disk that is full then.
TEST(ByteTarget, AFileThatMayNotGrowKeepsWhatWasWritten) {
    const TempDir dir;
    const std::string path = dir.path("report.json");
    struct rlimit before {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    struct rlimit limit = before;
    limit.rlim_cur = block_size * 13 / 2;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    int num_written = 0;
    {
        FileTarget file(path);
        const std::string block(block_size, 'x');
        while (file.write(block.data(), block.size()))
            ++num_written;
    }
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(num_written, 6);
    EXPECT_EQ(read_file(path), std::string(block_size * 13 / 2, 'x'));
    EXPECT_LT(place_of(path), block_size * 13 / 2 + 128 * 1024);
}

TEST(ByteTarget, AFileThatCannotBeMadeThrowsItsPath) {
    const TempDir dir;
    const std::string path = dir.path("missing/report.json");
    try {
        FileTarget file(path);
        ADD_FAILURE() << "made " << path;
    } catch (const boost::property_tree::json_parser::json_parser_error& error) {
        EXPECT_EQ(error.message(), "cannot open file");
        EXPECT_EQ(error.filename(), path);
    }
}

TEST(ByteTarget, AFullDeviceRefusesBytes) {
    FileTarget file("/dev/full");
    EXPECT_FALSE(file.write("x", 1));
    EXPECT_TRUE(file.close());
}

TEST(ByteTarget, AStreamRefusesBytesOnceItIsBad) {
    std::ostringstream stream;
    StreamTarget target(stream);
    EXPECT_TRUE(target.write("abc", 3));
    stream.setstate(std::ios::badbit);
    EXPECT_FALSE(target.write("d", 1));
    EXPECT_EQ(stream.str(), "abc");
}

} // namespace
