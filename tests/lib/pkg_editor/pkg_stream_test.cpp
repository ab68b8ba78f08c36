// SPDX-License-Identifier: Apache-2.0
// Records of directory streams; what packing and unpacking make of them is in tests of their own.
#include "pkg_stream.h"

#include <cstdio>
#include <memory>

#include "stream_fixture.h"

namespace {

using namespace zan::pkg;
using Next = StreamReader::Next;

struct CloseTestFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using TestFile = std::unique_ptr<std::FILE, CloseTestFile>;

class StreamRecords : public StreamTest {
  protected:
    static TestFile open(const char* name, const char* mode) { return TestFile(std::fopen(name, mode)); }
    // A reader of these bytes in memory, started.
    static std::unique_ptr<StreamReader> reader_of(const std::string& stream) {
        auto reader = std::make_unique<StreamReader>(stream.data(), stream.size());
        EXPECT_TRUE(reader->start());
        return reader;
    }
    // What the first call of next() returns for contents that begin like this.
    static Next first_of(const std::string& contents) {
        const std::string stream = deflated(contents);
        return reader_of(stream)->next();
    }
};

TEST_F(StreamRecords, AWriterMakesWhatAnInflatorReads) {
    const std::string large(3 * stream_chunk, 'x');
    {
        const TestFile file = open("s", "wb");
        StreamWriter writer(file.get());
        ASSERT_TRUE(writer.start());
        EXPECT_TRUE(writer.append_entry(record_directory, 0, "d", 0));
        EXPECT_TRUE(writer.append_entry(record_file, 0100644, "d/f", 3));
        EXPECT_TRUE(writer.append("123", 3));
        EXPECT_TRUE(
            writer.append_entry(record_file, 0100600, "large", static_cast<std::uint32_t>(large.size())));
        EXPECT_TRUE(writer.append(large.data(), large.size()));
        EXPECT_TRUE(writer.append(nullptr, 0));
        EXPECT_TRUE(writer.finish());
    }
    const std::vector<Record> expected = {
        {folder_type, 0, "d", ""}, {file_type, 0100644, "d/f", "123"}, {file_type, 0100600, "large", large}};
    EXPECT_TRUE(records_of(read_file("s")) == expected);
}

// What is written to it can't be compressed, so that it leaves the writer's buffer.
TEST_F(StreamRecords, AFailedWriteIsReported) {
    const TestFile full = open("/dev/full", "wb");
    std::setvbuf(full.get(), nullptr, _IONBF, 0);
    StreamWriter writer(full.get());
    ASSERT_TRUE(writer.start());
    std::string noise;
    for (std::uint32_t i = 0, state = 1; i < 3 * stream_chunk; ++i)
        noise += static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
    EXPECT_FALSE(writer.append(noise.data(), noise.size()));
    EXPECT_FALSE(writer.finish());
}

TEST_F(StreamRecords, AReaderGoesFromRecordToRecord) {
    const std::string stream =
        stream_of({{folder_type, 0, "d", ""}, {file_type, 0100644, "d/f", "12345"}, {7, 1, "odd", ""}});
    write_file("s", stream);
    const TestFile file = open("s", "rb");
    StreamReader from_file(file.get());
    StreamReader from_memory(stream.data(), stream.size());
    for (StreamReader* reader : {&from_file, &from_memory}) {
        ASSERT_TRUE(reader->start());
        ASSERT_EQ(reader->next(), Next::entry);
        EXPECT_EQ(reader->header().type, std::uint32_t{record_directory});
        EXPECT_STREQ(reader->name(), "d");
        ASSERT_EQ(reader->next(), Next::entry);
        EXPECT_EQ(reader->header().mode, 0100644u);
        EXPECT_EQ(reader->header().size, 5u);
        EXPECT_STREQ(reader->name(), "d/f");
        char bytes[5];
        EXPECT_TRUE(reader->read(bytes, 2));
        EXPECT_TRUE(reader->read(bytes + 2, 3));
        EXPECT_EQ(std::string(bytes, 5), "12345");
        ASSERT_EQ(reader->next(), Next::entry);
        EXPECT_EQ(reader->header().type, 7u);
        EXPECT_EQ(reader->next(), Next::end);
        EXPECT_TRUE(reader->ends_well());
        EXPECT_EQ(reader->system_error(), 0);
    }
}

TEST_F(StreamRecords, ABadRecordIsNamed) {
    EXPECT_EQ(reader_of("")->next(), Next::cut);
    EXPECT_EQ(reader_of("no stream")->next(), Next::bad_header);
    EXPECT_EQ(first_of("short"), Next::bad_header);
    EXPECT_EQ(first_of(header_bytes({1, file_type, 0, 1, 0})), Next::bad_magic);
    EXPECT_EQ(first_of(header_bytes({stream_magic, file_type, 0, 5, 0}) + "f"), Next::bad_name);
    EXPECT_EQ(first_of(header_bytes({stream_magic, file_type, 0, 0, 0})), Next::bad_name);
    EXPECT_EQ(first_of(end_record), Next::end);
}

TEST_F(StreamRecords, ANameHasALimitAndEndsAtItsNul) {
    const auto record = [](std::uint32_t length) {
        return header_bytes({stream_magic, file_type, 0, length, 0}) + std::string(length, 'n');
    };
    const std::string longest = deflated(record(max_name_length));
    const auto reader = reader_of(longest);
    ASSERT_EQ(reader->next(), Next::entry);
    EXPECT_EQ(reader->name(), std::string(max_name_length, 'n')); // it needs no NUL of its own
    EXPECT_EQ(first_of(record(max_name_length + 1)), Next::bad_name);
    const std::string with_nul =
        deflated(header_bytes({stream_magic, file_type, 0, 4, 0}) + std::string("a\0b\0", 4));
    const auto other = reader_of(with_nul);
    ASSERT_EQ(other->next(), Next::entry);
    EXPECT_STREQ(other->name(), "a");
}

TEST_F(StreamRecords, AReadIsWholeOrFails) {
    const std::string stream = deflated("12345");
    char bytes[8];
    EXPECT_FALSE(reader_of(stream)->read(bytes, 0));
    EXPECT_FALSE(reader_of(stream)->read(bytes, 6));
    const auto reader = reader_of(stream);
    EXPECT_TRUE(reader->read(bytes, 5));
    EXPECT_FALSE(reader->read(bytes, 1));
}

TEST_F(StreamRecords, OnlyARightChecksumAloneIsAGoodEnd) {
    const auto ends_well = [](const std::string& stream) {
        const auto reader = reader_of(stream);
        EXPECT_EQ(reader->next(), Next::end);
        return reader->ends_well();
    };
    const std::string good_stream = deflated(end_record, 0); // its last bytes are the checksum
    EXPECT_TRUE(ends_well(good_stream));
    EXPECT_FALSE(ends_well(good_stream.substr(0, good_stream.size() - 1)));
    EXPECT_FALSE(ends_well(deflated(end_record + "x", 0)));
    std::string wrong = good_stream;
    wrong.back() = static_cast<char>(wrong.back() ^ 1);
    EXPECT_EQ(reader_of(wrong)->next(), Next::bad_header); // zlib looks at it with the record's last byte
}

TEST_F(StreamRecords, AFailedReadOfTheFileIsASystemError) {
    const TestFile folder = open(".", "rb"); // opens, and can't be read
    StreamReader reader(folder.get());
    ASSERT_TRUE(reader.start());
    EXPECT_EQ(reader.next(), Next::bad_header);
    EXPECT_EQ(reader.system_error(), EISDIR);
}

} // namespace
