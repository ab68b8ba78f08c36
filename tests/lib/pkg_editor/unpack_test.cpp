// SPDX-License-Identifier: Apache-2.0
// Unpacking directory streams, good ones and any others. The streams are made with zlib alone.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <functional>

#include "contract_death.h"
#include "interposed.h"
#include "stream_fixture.h"

namespace {

namespace fs = std::filesystem;
using Tree = std::map<std::string, std::string>;

// A record whose header says what the test wants.
std::string with_header(const std::vector<std::uint32_t>& header, const std::string& rest) {
    return header_bytes(header) + rest;
}

const std::string header_fault = "Error reading from buffer\n";
const std::string magic_fault = "Incorrect magic number read from buffer\n";
const std::string name_fault = "Error reading file name from buffer\n";

class Unpack : public StreamTest {
  protected:
    // Unpacks contents from memory and from a file, with the same outcome but for the caller's name in
    // messages. Each entry comes out the same, too; what is there afterwards is the tree of the second.
    static void expect_both(const std::string& stream, int result, const std::string& text) {
        fs::remove_all("to");
        EXPECT_EQ(unpack_bytes(stream),
                  (Called{result, text.empty() ? "" : "zan_pkg_unpack_buffer: " + text}));
        const Tree from_memory = tree("to");
        fs::remove_all("to");
        EXPECT_EQ(unpack_as_file(stream), (Called{result, text.empty() ? "" : "zan_pkg_unpack: " + text}));
        EXPECT_TRUE(tree("to") == from_memory);
    }
    static mode_t permissions(const char* path) {
        struct stat status;
        EXPECT_EQ(::stat(path, &status), 0);
        return status.st_mode & 07777;
    }
};

TEST_F(Unpack, FilesAndFoldersComeOut) {
    expect_both(stream_of({{folder_type, 0, "d", ""},
                           {file_type, 0100644, "d/f", "12"},
                           {folder_type, 0, "d/empty", ""},
                           {file_type, 0100644, "g", ""}}),
                1, "");
    EXPECT_EQ(tree("to"), (Tree{{"d/", ""}, {"d/f", "12"}, {"d/empty/", ""}, {"g", ""}}));
}

TEST_F(Unpack, AnEndRecordAloneMakesTheFolder) {
    expect_both(stream_of({}), 1, "");
    EXPECT_EQ(tree("to"), Tree{});
}

TEST_F(Unpack, AnEmptyBufferMakesTheFolder) {
    EXPECT_EQ(unpack_bytes(""), good);
    EXPECT_TRUE(fs::is_directory("to"));
}

TEST_F(Unpack, AnEmptyFileIsNoStream) {
    EXPECT_EQ(unpack_as_file(""), (Called{0, "zan_pkg_unpack: " + header_fault}));
    EXPECT_TRUE(fs::is_directory("to"));
}

TEST_F(Unpack, AFolderIsNoStream) {
    EXPECT_EQ(unpack("."), (Called{0, "zan_pkg_unpack: " + header_fault}));
}

TEST_F(Unpack, SizesAroundTheSmallBufferSurvive) {
    for (const std::size_t size : {1u, 65534u, 65535u, 65536u, 65537u, 1000000u}) {
        const std::string data(size, static_cast<char>(size));
        expect_both(stream_of({{file_type, 0, "f", data}, {file_type, 0, "g", "x"}}), 1, "");
        EXPECT_TRUE(tree("to") == (Tree{{"f", data}, {"g", "x"}})) << size;
    }
}

TEST_F(Unpack, StandardInputIsCalledMinus) {
    write_file("stream", stream_of({{file_type, 0, "f", std::string(100000, 'x')}}));
    const int before = ::dup(STDIN_FILENO);
    const int input = ::open("stream", O_RDONLY);
    ASSERT_EQ(::dup2(input, STDIN_FILENO), STDIN_FILENO);
    const Called outcome = unpack("-");
    EXPECT_EQ(::fcntl(STDIN_FILENO, F_GETFD), 0); // still open
    std::clearerr(stdin);
    ::dup2(before, STDIN_FILENO);
    ::close(before);
    ::close(input);
    EXPECT_EQ(outcome, good);
    EXPECT_TRUE(tree("to") == (Tree{{"f", std::string(100000, 'x')}}));
}

TEST_F(Unpack, AFolderThatExistsKeepsWhatItHolds) {
    fs::create_directory("to");
    write_file("to/old", "old");
    write_file("to/f", "something longer");
    EXPECT_EQ(unpack_bytes(stream_of({{folder_type, 0, "d", ""}, {file_type, 0, "f", "new"}})), good);
    EXPECT_EQ(tree("to"), (Tree{{"d/", ""}, {"old", "old"}, {"f", "new"}}));
}

TEST_F(Unpack, FoldersAboveTheTargetAreNotMade) {
    EXPECT_EQ(
        unpack_bytes(stream_of({{file_type, 0, "f", ""}}), "no/to"),
        (Called{0,
                "zan_pkg_unpack_buffer: Unable to open no/to/f for writing: No such file or directory\n"}));
    EXPECT_EQ(unpack_bytes(stream_of({{folder_type, 0, "d", ""}}), "no/to"), good);
    EXPECT_FALSE(fs::exists("no"));
}

TEST_F(Unpack, PermissionsAreTheProcesssOwn) {
    const mode_t before = ::umask(0027);
    EXPECT_EQ(unpack_bytes(stream_of({{folder_type, 0777, "d", ""}, {file_type, 0100600, "f", "1"}})), good);
    ::umask(before);
    EXPECT_EQ(permissions("to/f"), 0640u); // 0666 without the mask
    EXPECT_EQ(permissions("to/d"), 0750u); // 0755 without the mask
    EXPECT_EQ(permissions("to"), 0750u);
}

TEST_F(Unpack, NamesAreJoinedAsTheyStand) {
    EXPECT_EQ(unpack_bytes(stream_of({{file_type, 0, "../above", "1"}, {file_type, 0, "/below", "2"}})),
              good);
    EXPECT_EQ(read_file("above"), "1");
    EXPECT_EQ(read_file("to/below"), "2");
}

TEST_F(Unpack, NamesMayHaveAnyByte) {
    std::string name;
    for (int byte = 1; byte < 256; ++byte) {
        if (byte != '/')
            name += static_cast<char>(byte);
    }
    expect_both(stream_of({{file_type, 0, name, "1"}}), 1, "");
    EXPECT_EQ(tree("to"), (Tree{{name, "1"}}));
}

TEST_F(Unpack, ANameEndsAtItsFirstNulOrAtItsLength) {
    const std::string contents =
        with_header({stream_magic, file_type, 0, 4, 1}, std::string("a\0b\0", 4) + "1") +
        with_header({stream_magic, file_type, 0, 2, 1}, "cd2") + end_record;
    expect_both(deflated(contents), 1, "");
    EXPECT_EQ(tree("to"), (Tree{{"a", "1"}, {"cd", "2"}}));
}

TEST_F(Unpack, DataAfterTheEndRecordIsIgnored) {
    expect_both(deflated(record_bytes({file_type, 0, "f", "1"}) + end_record + "more"), 1, "");
    EXPECT_EQ(tree("to"), (Tree{{"f", "1"}}));
    expect_both(stream_of({{file_type, 0, "f", "1"}}) + "more", 1, "");
    EXPECT_EQ(tree("to"), (Tree{{"f", "1"}}));
}

TEST_F(Unpack, BytesThatAreNoStreamAreReported) {
    expect_both("this is text, no stream", 0, header_fault);
    expect_both(deflated("this is no record but text"), 0, magic_fault);
    expect_both(deflated("too short"), 0, header_fault);
}

TEST_F(Unpack, TheMagicNumberOfEachRecordCounts) {
    const std::string contents = record_bytes({file_type, 0, "f", "1"}) +
                                 with_header({0xBEEFFEEC, file_type, 0, 2, 0}, std::string("g\0", 2));
    expect_both(deflated(contents + end_record), 0, magic_fault);
    EXPECT_EQ(tree("to"), (Tree{{"f", "1"}}));
    expect_both(deflated(header_bytes({0xEBFEEFBE, end_type, 0, 0, 0})), 0,
                magic_fault); // the other byte order
}

TEST_F(Unpack, AnyOtherTypeIsAFile) {
    for (const std::uint32_t type : {3u, 4u, 0x80000000u, 0xFFFFFFFFu}) {
        expect_both(stream_of({{type, 0, "f", "1"}}), 1, "");
        EXPECT_EQ(tree("to"), (Tree{{"f", "1"}}));
    }
}

// A folder has no bytes: those that its size claims are read as the next record.
TEST_F(Unpack, ASizeOfAFolderDoesNotCount) {
    expect_both(
        deflated(with_header({stream_magic, folder_type, 7, 2, 99}, std::string("d\0", 2)) + end_record), 1,
        "");
    expect_both(stream_of({{folder_type, 0, "d", "bytes of a folder's own"}}), 0, magic_fault);
    EXPECT_EQ(tree("to"), (Tree{{"d/", ""}}));
}

TEST_F(Unpack, ASizeThatIsTooSmallLeavesBytesForTheNextRecord) {
    const std::string contents =
        with_header({stream_magic, file_type, 0, 2, 1}, std::string("f\0", 2) + "1234567890123456789012");
    expect_both(deflated(contents + end_record), 0, magic_fault);
    EXPECT_EQ(tree("to"), (Tree{{"f", "1"}}));
}

TEST_F(Unpack, ASizeThatTheStreamDoesNotHoldIsReported) {
    for (const std::uint32_t size :
         {23u, 65535u, 65536u, 1000000u}) { // 2 bytes and the end record's 20 are there
        const std::string contents =
            with_header({stream_magic, file_type, 0, 2, size}, std::string("f\0", 2) + "12");
        expect_both(deflated(contents + end_record), 0, "Error reading file data for to/f from buffer\n");
        EXPECT_EQ(tree("to"), (Tree{{"f", ""}})); // the file stays, empty
    }
}

TEST_F(Unpack, ANameLengthThatNoBufferHoldsIsReported) {
    for (const std::uint32_t length : {0u, 8193u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        const std::string contents =
            with_header({stream_magic, file_type, 0, length, 0}, std::string(9000, 'n'));
        expect_both(deflated(contents + end_record), 0, name_fault);
        EXPECT_EQ(tree("to"), Tree{});
    }
}

TEST_F(Unpack, ANameOfTheBuffersLengthIsRead) {
    const std::string name(8191, 'n'); // and its NUL
    expect_both(stream_of({{file_type, 0, name, ""}}), 0,
                "Unable to open to/" + name + " for writing: File name too long\n");
    expect_both(stream_of({{folder_type, 0, name, ""}}), 1, ""); // a folder that can't be made isn't reported
}

// The message for a stream of which only `left` bytes of the contents are there.
std::string fault_of_cut(const std::vector<Record>& records, std::size_t left) {
    std::size_t begin = 0;
    for (const Record& record : records) {
        const std::size_t name_begin = begin + 20;
        const std::size_t data_begin = name_begin + record.name.size() + 1;
        const std::size_t end = data_begin + record.data.size();
        if (left == begin && begin != 0)
            return ""; // between two records a stream may end
        if (left < name_begin)
            return header_fault;
        if (left < data_begin)
            return name_fault;
        if (left < end)
            return "Error reading file data for to/" + record.name + " from buffer\n";
        begin = end;
    }
    return left == begin || left >= begin + 20 ? "" : header_fault;
}

TEST_F(Unpack, AStreamCutAtAnyByteIsReportedWhereItEnds) {
    const std::vector<Record> records = {{folder_type, 0, "d", ""},
                                         {file_type, 0, "d/f", "some bytes, some bytes"},
                                         {file_type, 0, "g", std::string(70000, 'g')}};
    // Not compressed, each byte of the contents takes one of the stream.
    const std::string stream = stream_of(records, 0);
    for (std::size_t length = 1; length<stream.size(); length += length> 200 && length < 70000 ? 997 : 1) {
        const std::string cut = stream.substr(0, length);
        const std::string fault = fault_of_cut(records, inflated(cut).size());
        fs::remove_all("to");
        EXPECT_EQ(unpack_bytes(cut), (fault.empty() ? good : Called{0, "zan_pkg_unpack_buffer: " + fault}))
            << length;
        EXPECT_EQ(unpack_as_file(cut), (fault.empty() ? good : Called{0, "zan_pkg_unpack: " + fault}))
            << length;
    }
}

TEST_F(Unpack, ACompressedStreamCutAtAnyByteLeavesWhatCameBeforeTheCut) {
    const std::vector<Record> records = {{file_type, 0, "f", "some bytes, some bytes, some bytes"},
                                         {file_type, 0, "g", std::string(70000, 'g')}};
    const std::string stream = stream_of(records);
    for (std::size_t length = 1; length < stream.size(); ++length) {
        const std::string cut = stream.substr(0, length);
        fs::remove_all("to");
        const Called outcome = unpack_bytes(cut);
        EXPECT_EQ(outcome.result == 1, outcome.text.empty()) << length << ": " << outcome.text;
        const std::size_t left = inflated(cut).size();
        if (left >= record_bytes(records[0]).size() + 23) {
            EXPECT_EQ(read_file("to/f"), records[0].data) << length;
        }
        if (left >= record_bytes(records[0]).size() + record_bytes(records[1]).size() + 20) {
            EXPECT_EQ(outcome, good) << length;
        }
    }
}

TEST_F(Unpack, AnyByteOfAStreamMayBeWrong) {
    const std::string stream =
        stream_of({{folder_type, 0, "d", ""}, {file_type, 0, "d/f", "some bytes, some more"}});
    for (std::size_t i = 0; i < stream.size(); ++i) {
        for (unsigned bit = 0; bit < 8; ++bit) {
            std::string wrong = stream;
            wrong[i] = static_cast<char>(wrong[i] ^ (1 << bit));
            const Called outcome = unpack_bytes(wrong);
            EXPECT_EQ(outcome.result == 1, outcome.text.empty());
            EXPECT_TRUE(outcome.result == 0 || outcome.result == 1) << outcome.result;
        }
    }
}

TEST_F(Unpack, APlaceThatCannotBeWrittenIsReported) {
    fs::create_directories("to/f");
    EXPECT_EQ(unpack_bytes(stream_of({{file_type, 0, "f", "1"}})),
              (Called{0, "zan_pkg_unpack_buffer: Unable to open to/f for writing: Is a directory\n"}));
    write_file("file", "");
    EXPECT_EQ(unpack_bytes(stream_of({{file_type, 0, "f", "1"}}), "file"),
              (Called{0, "zan_pkg_unpack_buffer: Unable to open file/f for writing: Not a directory\n"}));
}

TEST_F(Unpack, AFullDiskIsReported) {
    for (const std::size_t size : {1u, 65535u, 65536u}) {
        EXPECT_EQ(
            unpack_bytes(stream_of({{file_type, 0, "full", std::string(size, 'x')}}), "/dev"),
            (Called{0, "zan_pkg_unpack_buffer: Failed to write to /dev/full: No space left on device\n"}));
    }
}

TEST_F(Unpack, AnInputThatCannotBeOpenedIsReported) {
    EXPECT_EQ(unpack("none"),
              (Called{0, "zan_pkg_unpack: Unable to open none for reading: No such file or directory\n"}));
    EXPECT_FALSE(fs::exists("to"));
}

// 12288 bytes hold the target folder, a slash and a NUL.
TEST_F(Unpack, ATargetOfMoreThan12286BytesIsTooLongForAnyRecord) {
    const std::string target(12287, 't');
    EXPECT_EQ(unpack_bytes(stream_of({{file_type, 0, "f", ""}}), target.c_str()),
              (Called{0, "zan_pkg_unpack_buffer: Directory name too long\n"}));
    EXPECT_EQ(unpack_bytes(stream_of({}), target.c_str()), good);
    const std::string much_longer(20000, 't');
    EXPECT_EQ(unpack_bytes(stream_of({{folder_type, 0, "d", ""}}), much_longer.c_str()),
              (Called{0, "zan_pkg_unpack_buffer: Directory name too long\n"}));
}

// The longest target leaves no room for a name: what is opened is the target with its slash.
TEST_F(Unpack, APathIsCutToItsBuffer) {
    const std::string target(12286, 't');
    EXPECT_EQ(unpack_bytes(stream_of({{file_type, 0, "f", ""}}), target.c_str()),
              (Called{0, "zan_pkg_unpack_buffer: Unable to open " + target +
                             "/ for writing: File name too long\n"}));
}

TEST_F(Unpack, WithoutMemoryForZlibNothingIsUnpacked) {
    write_file("stream", stream_of({}));
    interposed::no_zlib_memory = true;
    const Called from_file = unpack("stream");
    const Called from_memory = unpack_bytes("");
    interposed::no_zlib_memory = false;
    EXPECT_EQ(from_file, (Called{0, "zan_pkg_unpack: Unable to initialize zlib for reading from buffer\n"}));
    EXPECT_EQ(from_memory,
              (Called{0, "zan_pkg_unpack_buffer: Unable to initialize zlib for reading from buffer\n"}));
    EXPECT_FALSE(fs::exists("to"));
}

TEST_F(Unpack, NullNamesGive0) {
    EXPECT_EQ(called([] { return zan_pkg_unpack(nullptr, "to"); }), (Called{0, ""}));
    EXPECT_EQ(called([] { return zan_pkg_unpack("out", nullptr); }), (Called{0, ""}));
    EXPECT_EQ(called([] { return zan_pkg_unpack_buffer("", 0, nullptr); }), (Called{0, ""}));
}

using UnpackDeathTest = Unpack;

TEST_F(UnpackDeathTest, ABufferMustNotBeNull) {
    EXPECT_CONTRACT(zan_pkg_unpack_buffer(nullptr, 0, "to"), "input != ((void *)0)");
}

#ifndef __SANITIZE_ADDRESS__ // which needs more address space than there is here
// Calls in a process that can have 1 GiB of memory, and writes its messages to the file "messages".
int with_little_memory(const std::function<int()>& call) {
    const int process = ::fork();
    if (process == 0) {
        constexpr rlimit limit = {1 << 30, 1 << 30};
        ::setrlimit(RLIMIT_AS, &limit);
        if (!std::freopen("messages", "w", stderr))
            ::_exit(255);
        const int result = call();
        std::fflush(stderr);
        ::_exit(result);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(process, &status, 0), process);
    EXPECT_TRUE(WIFEXITED(status));
    return WEXITSTATUS(status);
}

TEST_F(Unpack, WithoutMemoryForAFileTheResultIs2) {
    const std::string stream =
        deflated(with_header({stream_magic, file_type, 0, 2, 0xFFFFFFFF}, std::string("f\0", 2)));
    EXPECT_EQ(with_little_memory([&] { return zan_pkg_unpack_buffer(stream.data(), stream.size(), "to"); }),
              2);
    EXPECT_EQ(read_file("messages"),
              "zan_pkg_unpack_buffer: Failed to allocate buffer to write to/f: Cannot allocate memory\n");
    EXPECT_EQ(tree("to"), (Tree{{"f", ""}}));
}

TEST_F(Unpack, WithoutMemoryForAFileItIsNotPacked) {
    write_file("large", "");
    fs::resize_file("large", 0xFFFFFFFF);
    const char* const paths[] = {"large", nullptr};
    EXPECT_EQ(with_little_memory([&] { return zan_pkg_pack("out", paths); }), 0);
    EXPECT_EQ(read_file("messages"),
              "zan_pkg_pack: Failed to allocate buffer to read large: Cannot allocate memory\n");
}
#endif

} // namespace
