// SPDX-License-Identifier: Apache-2.0
#include "scratch_file.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <system_error>

#include "temp_dir.h"

using namespace zan::profile;

namespace {

TEST(ScratchFile, BytesComeBackFromTheirPlaces) {
    const TempDir dir;
    ScratchFile file(dir.path());
    EXPECT_EQ(file.append("abc", 3), 0u);
    EXPECT_EQ(file.append("de", 2), 3u);
    std::string bytes(3, '#');
    file.read(1, bytes.data(), bytes.size());
    EXPECT_EQ(bytes, "bcd");
}

// Its error, with the text of what failed.
template <class Work>
std::system_error failure_of(Work work) {
    try {
        work();
    } catch (const std::system_error& error) {
        return error;
    }
    return std::system_error(std::error_code(), "nothing failed");
}

TEST(ScratchFile, AFolderThatIsNotThereIsReported) {
    const TempDir dir;
    const std::string folder = dir.path("none");
    const std::system_error error = failure_of([&] { ScratchFile file(folder); });
    EXPECT_EQ(error.code(), std::errc::no_such_file_or_directory);
    EXPECT_EQ(error.what(), "can't make a temporary file in '" + folder + "': No such file or directory");
}

TEST(ScratchFile, BytesThatAreNotThereAreReported) {
    const TempDir dir;
    ScratchFile file(dir.path());
    file.append("abc", 3);
    std::string bytes(3, '#');
    const std::system_error error = failure_of([&] { file.read(1, bytes.data(), bytes.size()); });
    EXPECT_EQ(error.code(), std::errc::io_error);
    EXPECT_EQ(error.what(), std::string("can't read a temporary file: Input/output error"));
    EXPECT_EQ(bytes, "bc#");
}

} // namespace
