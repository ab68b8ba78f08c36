// SPDX-License-Identifier: Apache-2.0
#include "line_reader.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <sstream>
#include <thread>

#include "temp_dir.h"
#include "whole_file.h"

namespace {

using Lines = std::vector<std::string>;

Lines lines_of(const std::string& path) {
    LineReader reader(path);
    Lines lines;
    std::string_view line;
    while (reader.next(line))
        lines.emplace_back(line);
    return lines;
}

class LineReaderTest : public testing::Test {
  protected:
    std::string file(const std::string& content) const {
        const std::string path = m_dir.path("file");
        write_file(path, content);
        return path;
    }
    static Lines lines_by_getline(const std::string& content) {
        std::istringstream stream(content);
        Lines lines;
        for (std::string line; std::getline(stream, line);)
            lines.push_back(line);
        return lines;
    }

    TempDir m_dir;
};

TEST_F(LineReaderTest, ReadsWhatGetlineReads) {
    const std::string contents[] = {
        "", "\n", "\n\n", "a", "a\n", "a\nb", "a\r\nb", "\na\n\n\nb\n\n", std::string("a\0b\nc", 5)};
    for (const std::string& content : contents)
        EXPECT_EQ(lines_of(file(content)), lines_by_getline(content)) << content;
}

TEST_F(LineReaderTest, LinesAcrossAndBeyondBlocksAreWhole) {
    // Lengths around the size of a block, and lines much longer than one.
    std::string content;
    for (const std::size_t length :
         std::initializer_list<std::size_t>{262143, 262144, 262145, 1, 131072, 1000000, 0, 3000000, 5})
        content += std::string(length, 'x') + "\n";
    content += "last";
    EXPECT_TRUE(lines_of(file(content)) == lines_by_getline(content));
}

TEST_F(LineReaderTest, ManyShortLinesAreWhole) {
    std::string content;
    for (int i = 0; i < 200000; ++i)
        content += std::to_string(i) + "\n";
    EXPECT_TRUE(lines_of(file(content)) == lines_by_getline(content));
}

TEST_F(LineReaderTest, APipeHasTheSameLinesAsAFile) {
    const std::string path = m_dir.path("pipe");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    std::string content;
    for (int i = 0; i < 50000; ++i)
        content += "line " + std::to_string(i) + "\n";
    std::thread writer([&] { std::ofstream(path) << content << std::flush; });
    const Lines lines = lines_of(path);
    writer.join();
    EXPECT_TRUE(lines == lines_by_getline(content));
}

TEST_F(LineReaderTest, AMissingFileIsNotOpen) {
    LineReader reader(m_dir.path("missing"));
    EXPECT_FALSE(reader.is_open());
    std::string_view line;
    EXPECT_FALSE(reader.next(line));
}

TEST_F(LineReaderTest, AFolderIsAnEmptyFile) {
    LineReader reader(m_dir.path());
    EXPECT_TRUE(reader.is_open());
    std::string_view line;
    EXPECT_FALSE(reader.next(line));
}

TEST_F(LineReaderTest, ReadsADescriptorFromWhereItStands) {
    const int descriptor = open(file("one\ntwo\nthree").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(lseek(descriptor, 4, SEEK_SET), 4);
    LineReader reader(descriptor);
    std::string_view line;
    ASSERT_TRUE(reader.next(line));
    EXPECT_EQ(line, "two");
    EXPECT_TRUE(reader.had_newline());
    EXPECT_EQ(reader.num_bytes(), 9u); // "two", a newline, "three"
    ASSERT_TRUE(reader.next(line));
    EXPECT_EQ(line, "three");
    EXPECT_FALSE(reader.had_newline());
    EXPECT_FALSE(reader.next(line));
    EXPECT_FALSE(reader.had_newline());
    EXPECT_EQ(reader.read_error(), 0);
}

TEST_F(LineReaderTest, ANewlineAtTheEndIsSeenAlsoAfterTheEnd) {
    LineReader reader(file("one\n"));
    std::string_view line;
    EXPECT_TRUE(reader.next(line));
    EXPECT_FALSE(reader.next(line));
    EXPECT_TRUE(reader.had_newline());
}

TEST_F(LineReaderTest, KeepsTheErrorOfAReadThatFails) {
    LineReader reader(m_dir.path());
    std::string_view line;
    EXPECT_FALSE(reader.next(line));
    EXPECT_EQ(reader.read_error(), EISDIR);
}

} // namespace
