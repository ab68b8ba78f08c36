// SPDX-License-Identifier: Apache-2.0
// Packing into directory streams. The streams are read with zlib alone.
#include <dirent.h>
#include <sys/un.h>

#include <algorithm>
#include <cstdlib>

#include "interposed.h"
#include "stream_fixture.h"

namespace {

namespace fs = std::filesystem;

class Pack : public StreamTest {
  protected:
    static std::vector<Record> packed(const std::vector<const char*>& paths) {
        EXPECT_EQ(pack(paths), good);
        return records_of(read_file("out"));
    }
    static std::uint32_t mode(const char* path) {
        struct stat status;
        EXPECT_EQ(::stat(path, &status), 0);
        return status.st_mode;
    }
    // Bytes that compress badly, the same ones each time.
    static std::string noise(std::size_t size) {
        std::string bytes(size, '\0');
        std::uint64_t state = 88172645463325252u;
        for (char& byte : bytes) {
            state ^= state << 13;
            state ^= state >> 7;
            state ^= state << 17;
            byte = static_cast<char>(state);
        }
        return bytes;
    }
};

TEST_F(Pack, NoPathsMakeAnEndRecordAlone) {
    EXPECT_EQ(pack({}), good);
    EXPECT_EQ(inflated(read_file("out")), header_bytes({0xBEEFFEEB, 2, 0, 0, 0}));
}

TEST_F(Pack, AFileIsItsHeaderItsNameAndItsBytes) {
    write_file("ab", "xyz");
    fs::permissions("ab", fs::perms(0640));
    EXPECT_EQ(pack({"ab"}), good);
    // The magic number, the type, 0100640 for a file of these permissions, the name's 3 bytes with the NUL,
    // the size; each with its least significant byte first.
    const std::string expected(
        "\xEB\xFE\xEF\xBE"
        "\0\0\0\0"
        "\xA0\x81\0\0"
        "\3\0\0\0"
        "\3\0\0\0"
        "ab\0"
        "xyz"
        "\xEB\xFE\xEF\xBE"
        "\2\0\0\0"
        "\0\0\0\0"
        "\0\0\0\0"
        "\0\0\0\0",
        46);
    EXPECT_EQ(inflated(read_file("out")), expected);
}

TEST_F(Pack, TheStreamIsZlibsOwnAtItsBestLevel) {
    write_file("a", std::string(100000, 'a'));
    EXPECT_EQ(pack({"a"}), good);
    const std::string stream = read_file("out");
    EXPECT_EQ(stream.substr(0, 2), "\x78\xDA"); // a window of 32 KiB, level 9
    EXPECT_EQ(stream, stream_of({{file_type, mode("a"), "a", std::string(100000, 'a')}}));
}

TEST_F(Pack, AFolderComesBeforeWhatItHolds) {
    fs::create_directories("d/sub");
    write_file("d/sub/f", "1");
    EXPECT_EQ(packed({"d"}), (std::vector<Record>{{folder_type, 0, "d", ""},
                                                  {folder_type, 0, "d/sub", ""},
                                                  {file_type, mode("d/sub/f"), "d/sub/f", "1"}}));
}

TEST_F(Pack, EntriesFollowTheOrderOfTheFolder) {
    fs::create_directory("d");
    for (const char* name : {"d/c", "d/a", "d/e", "d/b", "d/d"})
        write_file(name, "");
    std::vector<std::string> expected = {"d"};
    DIR* const folder = ::opendir("d");
    while (const dirent* entry = ::readdir(folder)) {
        if (entry->d_name[0] != '.')
            expected.push_back(std::string("d/") + entry->d_name);
    }
    ::closedir(folder);
    std::vector<std::string> names;
    for (const Record& record : packed({"d"}))
        names.push_back(record.name);
    EXPECT_EQ(names, expected);
    EXPECT_EQ(names.size(), 6u);
}

TEST_F(Pack, NamesAreThePathsInTheirOrder) {
    fs::create_directory("d");
    write_file("d/f", "1");
    write_file("g", "2");
    const std::string absolute = dir.path("g");
    const auto records = packed({"g", "./d/", absolute.c_str(), "g"});
    std::vector<std::string> names;
    for (const Record& record : records)
        names.push_back(record.name);
    EXPECT_EQ(names, (std::vector<std::string>{"g", "./d/", "./d//f", absolute, "g"}));
}

TEST_F(Pack, HiddenFilesAndEmptyFoldersAreEntriesToo) {
    fs::create_directories("d/empty");
    write_file("d/.hidden", "h");
    auto records = packed({"d"});
    std::ranges::sort(records, {}, &Record::name);
    EXPECT_EQ(records, (std::vector<Record>{{folder_type, 0, "d", ""},
                                            {file_type, mode("d/.hidden"), "d/.hidden", "h"},
                                            {folder_type, 0, "d/empty", ""}}));
}

TEST_F(Pack, FilesKeepTheirBytesWhateverBufferTheyGoThrough) {
    std::vector<Record> expected;
    std::vector<const char*> paths;
    const std::vector<std::pair<const char*, std::size_t>> files = {{"a", 0},     {"b", 1},      {"c", 32767},
                                                                    {"d", 32768}, {"e", 65535},  {"f", 65536},
                                                                    {"g", 65537}, {"h", 1000000}};
    for (const auto& [name, size] : files) {
        write_file(name, noise(size));
        expected.push_back({file_type, mode(name), name, noise(size)});
        paths.push_back(name);
    }
    EXPECT_TRUE(packed(paths) == expected);
}

// The buffer of compressed bytes may fill exactly as the input ends, and the last of them may fill it too.
TEST_F(Pack, StreamsOfAnyLengthAroundTheBuffersSizeAreWhole) {
    for (std::size_t size = 32768 - 120; size < 32768 + 20; ++size) {
        write_file("a", noise(size));
        EXPECT_TRUE(packed({"a"}) == (std::vector<Record>{{file_type, mode("a"), "a", noise(size)}})) << size;
    }
}

TEST_F(Pack, ALinkCountsAsWhatItPointsTo) {
    fs::create_directory("d");
    write_file("d/f", "1");
    fs::create_directory("e");
    fs::create_symlink("../d/f", "e/file");
    fs::create_directory_symlink("../d", "e/folder");
    auto records = packed({"e"});
    std::ranges::sort(records, {}, &Record::name);
    EXPECT_EQ(records, (std::vector<Record>{{folder_type, 0, "e", ""},
                                            {file_type, mode("d/f"), "e/file", "1"},
                                            {folder_type, 0, "e/folder", ""},
                                            {file_type, mode("d/f"), "e/folder/f", "1"}}));
}

TEST_F(Pack, NamesMayHaveAnyByte) {
    std::string name;
    for (int byte = 1; byte < 256; ++byte) {
        if (byte != '/')
            name += static_cast<char>(byte);
    }
    ASSERT_EQ(name.size(), 254u);
    fs::create_directory("d");
    write_file("d/" + name, "1");
    EXPECT_EQ(packed({"d"}),
              (std::vector<Record>{{folder_type, 0, "d", ""},
                                   {file_type, mode(("d/" + name).c_str()), "d/" + name, "1"}}));
}

TEST_F(Pack, ALinkThatPointsNowhereEndsIt) {
    fs::create_directory("d");
    fs::create_symlink("nowhere", "d/link");
    EXPECT_EQ(pack({"d"}), (Called{0, "zan_pkg_pack: Unable to stat d/link: No such file or directory\n"}));
    EXPECT_EQ(pack({"d/link"}),
              (Called{0, "zan_pkg_pack: Unable to stat d/link: No such file or directory\n"}));
}

TEST_F(Pack, APathThatIsNotThereEndsIt) {
    write_file("a", "1");
    EXPECT_EQ(pack({"a", "b"}), (Called{0, "zan_pkg_pack: Unable to stat b: No such file or directory\n"}));
    EXPECT_TRUE(fs::exists("out")); // incomplete
    EXPECT_EQ(pack({""}), (Called{0, "zan_pkg_pack: Unable to stat : No such file or directory\n"}));
}

TEST_F(Pack, WhatIsNeitherFileNorFolderEndsIt) {
    fs::create_directory("d");
    ASSERT_EQ(::mkfifo("d/pipe", 0600), 0);
    EXPECT_EQ(pack({"d"}), (Called{0, "zan_pkg_pack: File d/pipe is not a file or directory\n"}));
    EXPECT_EQ(pack({"d/pipe"}), (Called{0, "zan_pkg_pack: File d/pipe is not a file or directory\n"}));
    EXPECT_EQ(pack({"/dev/null"}), (Called{0, "zan_pkg_pack: File /dev/null is not a file or directory\n"}));
}

TEST_F(Pack, WhatMayNotBeReadEndsIt) {
    fs::create_directory("d");
    write_file("d/f", "1");
    fs::permissions(".", fs::perms(0755));
    fs::permissions("d/f", fs::perms(0));
    write_file("out", "");
    fs::permissions("out", fs::perms(0666));
    {
        const PlainUser user;
        EXPECT_EQ(pack({"d"}),
                  (Called{0, "zan_pkg_pack: Unable to open d/f for reading: Permission denied\n"}));
    }
    fs::permissions("d", fs::perms(0));
    const PlainUser user;
    EXPECT_EQ(pack({"d"}), (Called{0, "zan_pkg_pack: Unable to read directory d: Permission denied\n"}));
}

TEST_F(Pack, AnOutputThatCannotBeOpenedIsReported) {
    EXPECT_EQ(pack({}, "no/such"),
              (Called{0, "zan_pkg_pack: Unable to open no/such for writing: No such file or directory\n"}));
    EXPECT_EQ(pack({}, "."), (Called{0, "zan_pkg_pack: Unable to open . for writing: Is a directory\n"}));
}

TEST_F(Pack, AFullDiskIsReported) {
    write_file("a", noise(100000)); // more than one buffer of compressed bytes
    EXPECT_EQ(pack({"a"}, "/dev/full"),
              (Called{0, "zan_pkg_pack: Failed to write to /dev/full: No space left on device\n"}));
    EXPECT_EQ(pack({}, "/dev/full"),
              (Called{0, "zan_pkg_pack: Write of /dev/full failed: No space left on device\n"}));
}

// The names alone fill a buffer: 300 of 200 bytes, which zlib can't halve.
TEST_F(Pack, AFullDiskIsReportedWhereANameMeetsIt) {
    const std::string letters = noise(300 * 200);
    std::filesystem::create_directory("files");
    for (std::size_t i = 0; i < 300; ++i) {
        std::string name = letters.substr(200 * i, 200);
        std::ranges::transform(name, name.begin(), [](char letter) {
            return static_cast<char>('@' + (static_cast<unsigned char>(letter) & 63)); // '@' to DEL
        });
        write_file("files/" + name, "");
        std::filesystem::create_directories("folders/" + name);
    }
    for (const char* folder : {"files", "folders"})
        EXPECT_EQ(pack({folder}, "/dev/full"),
                  (Called{0, "zan_pkg_pack: Failed to write to /dev/full: No space left on device\n"}));
}

// Only the closing of the file is looked at by then, and it has nothing left to write.
TEST_F(Pack, AFailedWriteOfTheLastBytesGoesUnnoticed) {
    write_file("a", noise(10000));
    EXPECT_EQ(pack({"a"}, "/dev/full"), good);
}

TEST_F(Pack, AFileThatHasShrunkEndsIt) {
    write_file("a", "123");
    interposed::added_size = 1;
    const Called outcome = pack({"a"});
    interposed::added_size = 0;
    EXPECT_EQ(outcome, (Called{0, "zan_pkg_pack: Failed to read file a: Success\n"}));
}

TEST_F(Pack, AFileThatHasGrownKeepsTheSizeThatItHad) {
    write_file("a", "123");
    interposed::added_size = -1;
    EXPECT_EQ(pack({"a"}), good);
    interposed::added_size = 0;
    EXPECT_EQ(records_of(read_file("out")), (std::vector<Record>{{file_type, mode("a"), "a", "12"}}));
}

// 8192 bytes hold the path, its slash and a NUL.
TEST_F(Pack, AFoldersPathOfMoreThan8190BytesEndsItBehindItsRecord) {
    interposed::folder_path = std::string(8191, 'a');
    const Called outcome = pack({interposed::folder_path.c_str()});
    EXPECT_EQ(outcome, (Called{0, "zan_pkg_pack: Failed to write to out: Directory name too long\n"}));

    interposed::folder_path.pop_back();
    const std::string longest = interposed::folder_path;
    const Called longest_outcome = pack({longest.c_str()});
    interposed::folder_path.clear();
    EXPECT_EQ(longest_outcome,
              (Called{0, "zan_pkg_pack: Unable to read directory " + longest + ": File name too long\n"}));
}

TEST_F(Pack, WithoutMemoryForZlibNothingIsPacked) {
    interposed::no_zlib_memory = true;
    const Called outcome = pack({});
    interposed::no_zlib_memory = false;
    EXPECT_EQ(outcome, (Called{0, "zan_pkg_pack: Unable to initialize zlib for writing out\n"}));
}

TEST_F(Pack, NullArgumentsGive0) {
    const char* const paths[] = {nullptr};
    EXPECT_EQ(called([&] { return zan_pkg_pack(nullptr, paths); }), (Called{0, ""}));
    EXPECT_EQ(called([] { return zan_pkg_pack("out", nullptr); }), (Called{0, ""}));
    EXPECT_FALSE(fs::exists("out"));
}

TEST_F(Pack, TenThousandFilesArePackedAndComeBack) {
    std::map<std::string, std::string> expected;
    for (int i = 0; i < 100; ++i) {
        const std::string folder = "d" + std::to_string(i);
        fs::create_directories("tree/" + folder);
        expected[folder + "/"];
        for (int j = 0; j < 100; ++j) {
            const std::string name = folder + "/f" + std::to_string(j);
            expected[name] = std::to_string(i * j);
            write_file("tree/" + name, expected[name]);
        }
    }
    EXPECT_EQ(pack({"tree"}), good);
    EXPECT_EQ(records_of(read_file("out")).size(), 1u + 100 + 10000);
    EXPECT_EQ(unpack(), good);
    EXPECT_TRUE(tree("to/tree") == expected);
}

TEST_F(Pack, OfALargeSizeTheLow32BitsCount) {
    write_file("a", "123");
    interposed::added_size = 1ll << 32;
    const Called outcome = pack({"a"});
    interposed::added_size = 0;
    EXPECT_EQ(outcome, good);
    EXPECT_EQ(records_of(read_file("out")), (std::vector<Record>{{file_type, mode("a"), "a", "123"}}));
}

// 4 GiB and 1 MiB are 1 MiB in 32 bits. The file has holes in place of most of its bytes, all of them zeros.
TEST_F(Pack, AFileOf4GiBAnd1MiBIsCutTo1MiB) {
    write_file("large", "beginning");
    fs::resize_file("large", (4ull << 30) + (1 << 20));
    EXPECT_EQ(pack({"large"}), good);
    const std::string kept = "beginning" + std::string((1 << 20) - 9, '\0');
    EXPECT_TRUE(records_of(read_file("out")) ==
                (std::vector<Record>{{file_type, mode("large"), "large", kept}}));
}

} // namespace
