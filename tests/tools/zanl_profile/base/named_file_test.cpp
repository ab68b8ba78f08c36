// SPDX-License-Identifier: Apache-2.0
#include "named_file.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>

#include "capture.h"
#include "failure.h"
#include "run_program.h"
#include "temp_dir.h"
#include "whole_file.h"

namespace {

using namespace zan::tool;
namespace fs = std::filesystem;

std::string read_some(const InputFile& input) {
    char bytes[16];
    const ssize_t size = ::read(input.fd(), bytes, sizeof bytes);
    return size < 0 ? "(failed)" : std::string(bytes, static_cast<std::size_t>(size));
}

TEST(InputFileTest, ReadsAFileOrAPipe) {
    const TempDir dir;
    write_file(dir.path("f"), "bytes");
    EXPECT_EQ(read_some(InputFile(dir.path("f"))), "bytes");
    EXPECT_EQ(InputFile(dir.path("f")).name(), dir.path("f"));
    const PipeWriter writer(dir.path("pipe"), "more");
    EXPECT_EQ(read_some(InputFile(dir.path("pipe"))), "more");
    EXPECT_THROW(InputFile(dir.path("none")), Failure);
}

TEST(InputFileTest, ADashIsStandardInput) {
    EXPECT_TRUE(is_standard_stream("-"));
    EXPECT_FALSE(is_standard_stream("./-"));
    EXPECT_FALSE(is_standard_stream(""));
    { EXPECT_EQ(InputFile("-").fd(), STDIN_FILENO); }
    EXPECT_EQ(InputFile("-").name(), "standard input");
    struct stat status;
    EXPECT_EQ(::fstat(STDIN_FILENO, &status), 0) << "it was closed";
}

TEST(OutputFileTest, AFileIsThereWhenItIsWhole) {
    const TempDir dir;
    OutputFile output(dir.path("f"));
    output.write("bytes");
    EXPECT_FALSE(fs::exists(dir.path("f")));
    output.commit();
    EXPECT_EQ(read_file(dir.path("f")), "bytes");
    EXPECT_EQ(output.name(), dir.path("f"));
}

TEST(OutputFileTest, ADashIsStandardOutput) {
    EXPECT_EQ(stdout_of([] {
                  OutputFile output("-");
                  output.write("bytes");
                  output.commit();
                  EXPECT_EQ(output.name(), "standard output");
              }),
              "bytes");
    EXPECT_FALSE(fs::exists("-"));
}

TEST(OutputFileTest, AFileThatIsThereIsReplaced) {
    const TempDir dir;
    write_file(dir.path("f"), "before");
    OutputFile output(dir.path("f"));
    output.write("bytes");
    EXPECT_EQ(read_file(dir.path("f")), "before");
    output.commit();
    EXPECT_EQ(read_file(dir.path("f")), "bytes");
}

// No socket can be opened as a file.
TEST(OutputFileTest, ASpecialFileThatCannotBeOpenedIsReported) {
    const TempDir dir;
    const std::string path = dir.path("s");
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    ASSERT_LT(path.size(), sizeof address.sun_path);
    path.copy(address.sun_path, path.size());
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ::close(socket);
    try {
        OutputFile output(path);
        ADD_FAILURE() << "it was opened";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.what(), "can't write '" + path + "': No such device or address");
    }
}

TEST(OutputFileTest, ADeviceIsWrittenAsItIs) {
    OutputFile null("/dev/null");
    null.write("bytes");
    null.commit();
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
    OutputFile full("/dev/full");
    EXPECT_THROW(full.write("bytes"), Failure);
    EXPECT_THROW(OutputFile("/"), Failure);
}

} // namespace
