// SPDX-License-Identifier: Apache-2.0
#include "byte_source.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <system_error>

#include "interrupted_pipe.h"
#include "temp_dir.h"
#include "whole_file.h"

using namespace zan::profile;

namespace {

std::string read_all(ByteSource& source, std::size_t size) {
    std::string bytes;
    std::string piece(size, '\0');
    while (const std::size_t count = source.read(piece.data(), size))
        bytes += piece.substr(0, count);
    return bytes;
}

TEST(ByteSource, MemoryComesInPiecesOfTheSizeAskedFor) {
    MemorySource source("abcde", 3);
    char bytes[4] = {};
    EXPECT_EQ(source.read(bytes, 4), 3u);
    EXPECT_EQ(std::string(bytes, 3), "abc");
    EXPECT_EQ(source.read(bytes, 1), 1u);
    EXPECT_EQ(bytes[0], 'd');
    EXPECT_EQ(source.read(bytes, 4), 1u);
    EXPECT_EQ(source.read(bytes, 4), 0u);
}

TEST(ByteSource, APipeComesUpToItsEnd) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_EQ(write(ends[1], "hello", 5), 5);
    close(ends[1]);
    DescriptorSource source(ends[0]);
    EXPECT_EQ(read_all(source, 2), "hello");
    close(ends[0]);
}

TEST(ByteSource, AFileComesFromItsStart) {
    const TempDir dir;
    write_file(dir.path("file"), "hello");
    FileSource source(dir.path("file"));
    EXPECT_EQ(read_all(source, 2), "hello");
    EXPECT_THROW(FileSource(dir.path("none")), std::system_error);
}

TEST(ByteSource, AFolderCantBeRead) {
    const int folder = open("/", O_RDONLY);
    DescriptorSource source(folder);
    char byte;
    EXPECT_THROW(source.read(&byte, 1), std::system_error);
    close(folder);
}

TEST(ByteSource, WhatWasLookedAtIsReadAfterwards) {
    MemorySource memory("abcdef", 2);
    PeekedSource source(memory);
    EXPECT_EQ(source.peek(3), "abc");
    EXPECT_EQ(source.peek(1), "a");
    char byte;
    EXPECT_EQ(source.read(&byte, 1), 1u);
    EXPECT_EQ(byte, 'a');
    EXPECT_EQ(source.peek(2), "bc");
    EXPECT_EQ(read_all(source, 100), "bcdef");
    EXPECT_EQ(source.peek(2), "");
}

TEST(ByteSource, NoMoreIsLookedAtThanThereIs) {
    MemorySource memory("ab");
    PeekedSource source(memory);
    EXPECT_EQ(source.peek(10), "ab");
    EXPECT_EQ(read_all(source, 1), "ab");
}

TEST(ByteSource, AReadThatASignalInterruptsIsMadeAgain) {
    const InterruptedPipe pipe("hello");
    DescriptorSource source(pipe.reading_end());
    EXPECT_EQ(read_all(source, 3), "hello");
}

} // namespace
