// SPDX-License-Identifier: Apache-2.0
// Directory streams by the toolbox: pack and unpack.
#include <sys/stat.h>

#include "address_sanitized.h"
#include "stream_records.h"
#include "toolbox_fixture.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

namespace fs = std::filesystem;

class StreamCommand : public Toolbox {
  protected:
    // Names of the entries of a stream, folders with a slash at the end.
    std::vector<std::string> names(const std::string& stream) const {
        std::vector<std::string> found;
        for (const Record& record : records_of(read(stream)))
            found.push_back(record.name + (record.type == folder_type ? "/" : ""));
        return found;
    }
    Outcome unpack(const std::string& stream, const std::vector<std::string>& options = {}) const {
        write("s", stream);
        std::vector<std::string> arguments = {"package", "unpack", "s", "-o", "to"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return run(arguments);
    }
    void make_tree() const {
        write("t/b", "1");
        write("t/a/x", std::string(100000, 'x'));
        write("t/a.txt", "");
        fs::create_directory(dir.path("t/empty"));
    }
    const Tree small_tree = {{"t/", ""},      {"t/b", "1"},
                             {"t/a/", ""},    {"t/a/x", std::string(100000, 'x')},
                             {"t/a.txt", ""}, {"t/empty/", ""}};
};

using Names = std::vector<std::string>;

TEST_F(StreamCommand, AFolderIsPackedInTheOrderOfItsNames) {
    make_tree();
    EXPECT_EQ(run({"package", "pack", "s", "t"}), silent_success);
    EXPECT_EQ(names("s"), (Names{"t/", "t/a/", "t/a/x", "t/a.txt", "t/b", "t/empty/"}));
    const Record file = records_of(read("s"))[2];
    struct stat status;
    ASSERT_EQ(::stat(dir.path("t/a/x").c_str(), &status), 0);
    EXPECT_EQ(file.mode, status.st_mode);
    EXPECT_TRUE(file.data == std::string(100000, 'x'));
}

TEST_F(StreamCommand, WhatWasPackedComesBack) {
    make_tree();
    EXPECT_EQ(run({"package", "pack", "s", "t"}), silent_success);
    EXPECT_EQ(run({"package", "unpack", "s", "-o", "some/to"}), silent_success);
    EXPECT_TRUE(tree("some/to") == small_tree);
    EXPECT_EQ(shell("$T package pack - t | $T package unpack - -o by_pipe"), silent_success);
    EXPECT_TRUE(tree("by_pipe") == small_tree);
}

TEST_F(StreamCommand, TheLibraryUnpacksItToo) {
    write("a/b/c", "1");
    EXPECT_EQ(run({"package", "pack", "s", "a/b/c"}), silent_success);
    EXPECT_EQ(zan_pkg_unpack(dir.path("s").c_str(), dir.path("to").c_str()), 1);
    EXPECT_EQ(tree("to"), (Tree{{"a/", ""}, {"a/b/", ""}, {"a/b/c", "1"}}));
}

TEST_F(StreamCommand, AStreamMayBeASection) {
    make_tree();
    make("p.zanx", {{"a", "1"}});
    EXPECT_EQ(run({"package", "pack", "p.zanx:tree:1", "t/b"}), silent_success);
    EXPECT_EQ(run({"package", "pack", "p.zanx:tree:1", "t"}), silent_success); // replaces it
    EXPECT_EQ(sections("p.zanx").size(), 2u);
    EXPECT_EQ(run({"package", "unpack", "p.zanx:tree:1", "-o", "to"}), silent_success);
    EXPECT_TRUE(tree("to") == small_tree);
    EXPECT_EQ(run({"package", "unpack", "p.zanx:tree:1", "-o", "trusted", "--trust-names"}), silent_success);
    EXPECT_TRUE(tree("trusted") == small_tree);
    EXPECT_EQ(run({"package", "unpack", "p.zanx:none", "-o", "no"}),
              not_found("'p.zanx' has no section 'none'"));
    EXPECT_EQ(run({"package", "unpack", "none.zanx:tree", "-o", "no"}),
              trouble("can't open 'none.zanx': No such file or directory"));
    EXPECT_EQ(run({"package", "pack", "none.zanx:tree", "t"}),
              trouble("can't open 'none.zanx': No such file or directory"));
    EXPECT_FALSE(exists("no"));
}

TEST_F(StreamCommand, APackagesNameNeedNotEndInZanx) {
    write("f", "1");
    make("odd:name", {{"a", "1"}});
    EXPECT_EQ(run({"package", "pack", "odd:name:s", "f"}), silent_success);
    EXPECT_EQ(run({"package", "unpack", "odd:name:s", "-o", "to"}), silent_success);
    EXPECT_EQ(tree("to"), (Tree{{"f", "1"}}));
    EXPECT_EQ(run({"package", "pack", "new:file", "f"}),
              silent_success); // neither a package nor one's section
    EXPECT_EQ(names("new:file"), (Names{"f"}));
}

TEST_F(StreamCommand, NamesAreRelativeAndComeAfterTheirFolders) {
    write("a/b/c/f", "1");
    write("a/g", "2");
    EXPECT_EQ(run({"package", "pack", "s", "./a//b/c/", "a/b/../g", "a/b"}), silent_success);
    EXPECT_EQ(names("s"), (Names{"a/", "a/b/", "a/b/c/", "a/b/c/f", "a/g", "a/b/c/f"}));
    EXPECT_EQ(run({"package", "pack", "s", "-C", "a", "."}), silent_success);
    EXPECT_EQ(names("s"), (Names{"b/", "b/c/", "b/c/f", "g"}));
    EXPECT_EQ(run({"package", "pack", "s", "--directory", "a", "b/c/f", dir.path("a/g")}), silent_success);
    const Names found = names("s");
    EXPECT_EQ(Names(found.begin(), found.begin() + 3), (Names{"b/", "b/c/", "b/c/f"}));
    EXPECT_EQ(found.back(), dir.path("a/g").substr(1)); // without the leading slash
    EXPECT_EQ(run({"package", "pack", "s", "../a"}),
              trouble("can't pack '../a': a name in a stream can't have '..'; see --directory"));
}

TEST_F(StreamCommand, LinksCountAsWhatTheyPointTo) {
    write("t/f", "1");
    fs::create_symlink("f", dir.path("t/link"));
    EXPECT_EQ(run({"package", "pack", "s", "t"}), silent_success);
    EXPECT_EQ(names("s"), (Names{"t/", "t/f", "t/link"}));
}

TEST_F(StreamCommand, WhatAStreamCannotHoldIsReportedBeforeAnythingIsWritten) {
    write("t/f", "1");
    const std::string old = stream_of({{file_type, 0, "old", "1"}});
    write("s", old);
    const auto pack = [&] { return run({"package", "pack", "s", "t"}); };
    fs::create_symlink("nowhere", dir.path("t/link"));
    EXPECT_EQ(pack(), trouble("can't read 't/link': No such file or directory"));
    fs::remove(dir.path("t/link"));
    ASSERT_EQ(::mkfifo(dir.path("t/pipe").c_str(), 0600), 0);
    EXPECT_EQ(pack(), trouble("can't pack 't/pipe': it is neither a file nor a folder"));
    fs::remove(dir.path("t/pipe"));
    fs::create_directory_symlink("..", dir.path("t/loop"));
    EXPECT_EQ(pack(), trouble("can't pack 't/loop': the output, 's', is in it"));
    fs::remove(dir.path("t/loop"));
    fs::create_directory_symlink(".", dir.path("t/loop"));
    EXPECT_EQ(pack(), trouble("can't pack 't/loop': it leads back to a folder that it is in"));
    fs::remove(dir.path("t/loop"));
    write("t/large", "");
    fs::resize_file(dir.path("t/large"), 5ull << 30);
    EXPECT_EQ(pack(), trouble("can't pack 't/large': "
                              "it has 5368709120 bytes, and a stream holds files of at most 4294967295"));
    EXPECT_EQ(run({"package", "pack", "s", "none"}), trouble("can't read 'none': No such file or directory"));
    EXPECT_EQ(run({"package", "pack", "t/s", "t"}), trouble("can't pack 't': the output, 't/s', is in it"));
    EXPECT_TRUE(read("s") == old);
    fs::remove(dir.path("t/large"));
    EXPECT_EQ(pack(), silent_success);
}

TEST_F(StreamCommand, OnlyAStreamIsReplacedWithoutForce) {
    write("f", "1");
    write("notes", "notes");
    write("empty", "");
    make("p.zanx", {{"a", "1"}});
    const Tree before = tree();
    EXPECT_EQ(run({"package", "pack", "notes", "f"}),
              trouble("'notes' is no directory stream; --force replaces it"));
    EXPECT_EQ(
        run({"package", "pack", "p.zanx", "f"}),
        trouble("'p.zanx' is a package; a stream in it is 'p.zanx:SECTION', and --force replaces it all"));
    EXPECT_EQ(tree(), before);
    for (const char* replaced : {"empty", "empty"}) { // the second time it is a stream
        EXPECT_EQ(run({"package", "pack", replaced, "f"}), silent_success);
        EXPECT_EQ(names(replaced), (Names{"f"}));
    }
    for (const char* replaced : {"notes", "p.zanx"}) {
        EXPECT_EQ(run({"package", "pack", "--force", replaced, "f"}), silent_success);
        EXPECT_EQ(names(replaced), (Names{"f"}));
    }
}

TEST_F(StreamCommand, APlaceForAStreamThatCannotBeWrittenIsReported) {
    write("f", "1");
    EXPECT_EQ(run({"package", "pack", "no/s", "f"}),
              trouble("can't write 'no/s': No such file or directory"));
    fs::create_directory(dir.path("folder"));
    EXPECT_EQ(run({"package", "pack", "folder", "f"}), trouble("can't write 'folder': it is not a file"));
    EXPECT_EQ(run({"package", "pack", "/dev/full", "f"}),
              trouble("can't write '/dev/full': No space left on device"));
    EXPECT_EQ(shell("$T package pack - f >/dev/full"),
              trouble("can't write 'standard output': No space left on device"));
    EXPECT_EQ(shell("python3 -c 'import socket; socket.socket(socket.AF_UNIX).bind(\"socket\")'; "
                    "$T package pack socket f"),
              trouble("can't write 'socket': No such device or address"));
    EXPECT_EQ(run({"package", "pack", "/dev/null", "f"}), silent_success);
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(StreamCommand, AFullDiskLeavesNoPartOfAStream) {
    std::string noise; // that doesn't compress well
    for (std::uint32_t i = 0, state = 1; i < 50000; ++i)
        noise += static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
    write("f", noise);
    const std::string old = stream_of({{file_type, 0, "old", "1"}});
    write("s", old);
    EXPECT_EQ(shell("trap '' XFSZ; ulimit -f 8; $T package pack s f"),
              trouble("can't write 's': File too large"));
    EXPECT_TRUE(read("s") == old);
    EXPECT_EQ(tree().size(), 2u);
    EXPECT_EQ(run({"package", "pack", "s", "f"}), silent_success);
    const Outcome outcome = shell("trap '' XFSZ; ulimit -f 8; $T package unpack s -o to");
    EXPECT_EQ(outcome, trouble("can't write to 'to/f': File too large"));
    EXPECT_EQ(tree().size(), 2u);
}

TEST_F(StreamCommand, NamesThatLeaveTheFolderAreRefused) {
    for (const auto& [name, reason] : {std::pair<std::string, std::string>{"/f", "it is absolute"},
                                       {"..", "it has '..' in it"},
                                       {"../f", "it has '..' in it"},
                                       {"a/../../f", "it has '..' in it"},
                                       {"a/..", "it has '..' in it"},
                                       {"", "it is empty"}}) {
        const std::string stream = stream_of({{file_type, 0, "first", "1"}, {file_type, 0, name, "2"}});
        const Outcome refused =
            trouble("refused the name '" + name + "': " + reason + "; --trust-names takes it");
        EXPECT_EQ(unpack(stream), refused);
        EXPECT_EQ(unpack(stream, {"--dry-run"}), refused);
        EXPECT_EQ(tree(), (Tree{{"s", stream}})); // not even the first one
    }
    const std::string harmless = stream_of({{file_type, 0, "..f", "1"}, {file_type, 0, "a/.../f", "2"}});
    EXPECT_EQ(unpack(harmless), silent_success);
    EXPECT_EQ(tree("to"), (Tree{{"..f", "1"}, {"a/", ""}, {"a/.../", ""}, {"a/.../f", "2"}}));
}

TEST_F(StreamCommand, NamesThatPassThroughALinkAreRefused) {
    write("outside/f", "old");
    fs::create_directory(dir.path("to"));
    fs::create_directory_symlink("../outside", dir.path("to/folder"));
    fs::create_symlink("../outside/f", dir.path("to/file"));
    fs::create_symlink("nowhere", dir.path("to/dangling"));
    const Tree before = tree("outside");
    for (const auto& [record, link] :
         {std::pair<Record, std::string>{{file_type, 0, "folder/f", "1"}, "folder"},
          {{file_type, 0, "folder/new/f", "1"}, "folder"},
          {{folder_type, 0, "folder", ""}, "folder"},
          {{file_type, 0, "./file", "1"}, "file"},
          {{file_type, 0, "dangling", "1"}, "dangling"}}) {
        const std::string stream = stream_of({{file_type, 0, "first", "1"}, record});
        const Outcome refused =
            trouble("refused the name '" + record.name + "': 'to/" + link + "' is a symbolic link");
        EXPECT_EQ(unpack(stream), refused);
        EXPECT_EQ(unpack(stream, {"--dry-run"}), refused);
        EXPECT_FALSE(exists("to/first"));
    }
    EXPECT_EQ(tree("outside"), before);
    EXPECT_EQ(tree("to").size(), 3u);
}

TEST_F(StreamCommand, TrustedNamesAreTakenAsTheyStand) {
    fs::create_directories(dir.path("outside"));
    fs::create_directory(dir.path("to"));
    fs::create_directory_symlink("../outside", dir.path("to/link"));
    const std::string stream = stream_of({{file_type, 0, "../above", "1"}, {file_type, 0, "link/f", "2"}});
    EXPECT_EQ(unpack(stream, {"--trust-names", "--dry-run"}), (Outcome{"TYPE          SIZE  PATH\n"
                                                                       "file             1  to/../above\n"
                                                                       "file             1  to/link/f\n",
                                                                       "", "0"}));
    EXPECT_FALSE(exists("above"));
    EXPECT_EQ(unpack(stream, {"--trust-names"}), silent_success);
    EXPECT_EQ(read("above"), "1");
    EXPECT_EQ(read("outside/f"), "2");
    EXPECT_EQ(unpack("no stream", {"--trust-names"}),
              trouble("can't unpack 's': it ends early, is damaged, or is no directory stream"));
}

TEST_F(StreamCommand, TrustedNamesMayBeThoseOfDevicesAndOfLinks) {
    fs::create_directory(dir.path("to"));
    fs::create_symlink("/dev/null", dir.path("to/nothing"));
    fs::create_symlink("/dev/full", dir.path("to/full"));
    fs::create_symlink("../new", dir.path("to/link"));
    fs::create_symlink("nowhere/f", dir.path("to/broken"));
    const auto unpack_file = [&](const std::string& name) {
        return unpack(stream_of({{file_type, 0, name, "1"}}), {"--trust-names"});
    };
    EXPECT_EQ(unpack_file("nothing"), silent_success);
    EXPECT_EQ(unpack_file("link"), silent_success);
    EXPECT_EQ(read("new"), "1");
    EXPECT_EQ(unpack_file("full"), trouble("can't write to 'to/full': No space left on device"));
    EXPECT_EQ(unpack_file("broken"), trouble("can't write 'to/broken': No such file or directory"));
    for (const char* link : {"to/nothing", "to/full", "to/link", "to/broken"})
        EXPECT_TRUE(fs::is_symlink(dir.path(link))) << link;
}

TEST_F(StreamCommand, ATargetMayEndInSlashes) {
    write("s", stream_of({{file_type, 0, "f", "1"}}));
    EXPECT_EQ(run({"package", "unpack", "s", "-o", "to//"}), silent_success);
    EXPECT_EQ(tree("to"), (Tree{{"f", "1"}}));
}

TEST_F(StreamCommand, ADryRunListsWhatWouldBeWritten) {
    make_tree();
    ASSERT_EQ(run({"package", "pack", "s", "t"}), silent_success);
    const Tree before = tree();
    EXPECT_EQ(run({"package", "unpack", "s", "-o", "to", "--dry-run"}),
              (Outcome{"TYPE          SIZE  PATH\n"
                       "folder           0  to/t\n"
                       "folder           0  to/t/a\n"
                       "file        100000  to/t/a/x\n"
                       "file             0  to/t/a.txt\n"
                       "file             1  to/t/b\n"
                       "folder           0  to/t/empty\n",
                       "", "0"}));
    EXPECT_TRUE(tree() == before);
}

#ifndef ZAN_ADDRESS_SANITIZED // the sanitizer keeps memory that was freed
// A list that is printed at its end took 330 MB for a million of them.
TEST_F(StreamCommand, ADryRunOfVeryManyEntriesTakesLittleMemory) {
    std::vector<Record> records;
    for (int i = 0; i < 200000; ++i)
        records.push_back({i % 2 ? folder_type : file_type, 0, "entry" + std::to_string(i), ""});
    write("s", stream_of(records));
    for (const std::string option : {"", " --json"}) {
        // All that the process has at its greatest, in KiB, which its libraries are part of.
        const Outcome outcome = shell(
            "python3 -c 'import resource, subprocess, sys\n"
            "lines = subprocess.run(sys.argv[1:], capture_output=True).stdout.count(b\"entry\")\n"
            "print(lines, resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss < 60000)' "
            "$T package unpack s -o to --dry-run" +
            option);
        EXPECT_EQ(outcome, (Outcome{"200000 True\n", "", "0"}));
    }
}
#endif

TEST_F(StreamCommand, ADryRunPrintsJson) {
    write("s", stream_of({{file_type, 0, "f", "12"}}));
    EXPECT_EQ(run({"package", "unpack", "s", "-o", "to", "--dry-run", "--json"}), (Outcome{R"({
    "schema": "zanl-profile/package-unpack",
    "schema_version": 1,
    "stream": "s",
    "entries": [
        {
            "type": "file",
            "size": 2,
            "path": "to/f"
        }
    ]
}
)",
                                                                                           "", "0"}));
}

TEST_F(StreamCommand, UnpackingIntoAFolderThatExistsReplacesFilesAndKeepsTheRest) {
    write("to/d/old", "old");
    write("to/d/f", "something longer");
    EXPECT_EQ(unpack(stream_of(
                  {{folder_type, 0, "d", ""}, {file_type, 0, "d/f", "new"}, {file_type, 0, "e/g", "1"}})),
              silent_success);
    EXPECT_EQ(tree("to"), (Tree{{"d/", ""}, {"d/old", "old"}, {"d/f", "new"}, {"e/", ""}, {"e/g", "1"}}));
}

TEST_F(StreamCommand, WhatIsInTheWayIsReportedAndNothingIsWritten) {
    write("to/file", "old");
    fs::create_directory(dir.path("to/folder"));
    const Record first = {file_type, 0, "first", "1"};
    EXPECT_EQ(unpack(stream_of({first, {file_type, 0, "file/f", "1"}})),
              trouble("can't write 'file/f': 'to/file' is no folder"));
    EXPECT_EQ(unpack(stream_of({first, {folder_type, 0, "file", ""}})),
              trouble("can't write 'file': 'to/file' is no folder"));
    EXPECT_EQ(unpack(stream_of({first, {file_type, 0, "folder", "1"}})),
              trouble("can't write 'folder': 'to/folder' is a folder"));
    EXPECT_EQ(tree("to"), (Tree{{"file", "old"}, {"folder/", ""}}));
    EXPECT_EQ(run({"package", "unpack", "s", "-o", "to/file"}),
              trouble("can't write to the folder 'to/file': Not a directory"));
}

// In a stream a name may come twice, and a file where a folder was.
TEST_F(StreamCommand, OfTwoFilesOfANameTheLastOneStays) {
    EXPECT_EQ(unpack(stream_of({{file_type, 0, "f", "first"}, {file_type, 0, "f", "2"}})), silent_success);
    EXPECT_EQ(tree("to"), (Tree{{"f", "2"}}));
    const std::string again = stream_of(
        {{file_type, 0100755, "f", "one"}, {file_type, 0100600, "f", "4"}, {folder_type, 0, "d", ""}});
    for (const std::vector<std::string>& options : {std::vector<std::string>{}, {"--trust-names"}}) {
        EXPECT_EQ(unpack(again, options), silent_success); // into the folder that is there now
        EXPECT_EQ(tree("to"), (Tree{{"d/", ""}, {"f", "4"}}));
    }
    fs::remove_all(dir.path("to"));
    EXPECT_EQ(unpack(again), silent_success);
    EXPECT_EQ(fs::status(dir.path("to/f")).permissions(), fs::perms(0600));
    fs::remove_all(dir.path("to"));
    EXPECT_EQ(unpack(stream_of({{file_type, 0, "f/g", "1"}, {file_type, 0, "f", "2"}})),
              trouble("can't write 'to/f': Is a directory"));
    EXPECT_FALSE(exists("to"));
}

TEST_F(StreamCommand, ProgramsStayProgramsAndPrivateFilesPrivate) {
    EXPECT_EQ(unpack(stream_of({{file_type, 0100755, "program", ""},
                                {file_type, 0100600, "private", ""},
                                {file_type, 0104777, "root's", ""},
                                {file_type, 0, "any", ""}})),
              silent_success);
    const auto permissions = [&](const char* name) { return fs::status(dir.path(name)).permissions(); };
    const mode_t mask = ::umask(0);
    ::umask(mask);
    EXPECT_EQ(permissions("to/program"), fs::perms(0755 & ~mask));
    EXPECT_EQ(permissions("to/private"), fs::perms(0600));
    EXPECT_EQ(permissions("to/root's"), fs::perms(0777 & ~mask));
    EXPECT_EQ(permissions("to/any"), fs::perms(0666 & ~mask));
    EXPECT_EQ(permissions("to"), fs::perms(0777 & ~mask));
}

TEST_F(StreamCommand, AStreamWithAFaultIsReportedAndNothingIsWritten) {
    const std::vector<Record> records = {{file_type, 0, "f", "12"},
                                         {file_type, 0, "g", std::string(1000, 'g')}};
    std::string contents;
    for (const Record& record : records)
        contents += record_bytes(record);
    const auto expect = [&](const std::string& stream, const std::string& reason) {
        EXPECT_EQ(unpack(stream), trouble("can't unpack 's': " + reason));
        EXPECT_EQ(unpack(stream, {"--dry-run"}).status, "2");
        EXPECT_FALSE(exists("to"));
    };
    expect("", "it ends early, is damaged, or is no directory stream");
    expect("no stream", "it ends early, is damaged, or is no directory stream");
    expect(deflated("text of twenty letters and more"),
           "there is something else where an entry should begin");
    expect(deflated(contents), "it ends without an end record");
    expect(deflated(header_bytes({stream_magic, file_type, 0, 9000, 0}) + std::string(9000, 'n')),
           "an entry has no name that can be read");
    expect(deflated(contents.substr(0, 900)), "it ends inside 'g'");
    const std::string good_stream = deflated(contents + end_record);
    std::string wrong_sum = good_stream;
    wrong_sum.back() = static_cast<char>(wrong_sum.back() + 1);
    expect(wrong_sum, "it ends early, is damaged, or is no directory stream");
    const std::string uncompressed = deflated(contents + end_record, 0);
    expect(uncompressed.substr(0, uncompressed.size() - 1), "its end is damaged");
    expect(deflated(contents + end_record + "more"), "its end is damaged");
    EXPECT_EQ(unpack(good_stream), silent_success);
}

TEST_F(StreamCommand, AStreamCutAtAnyByteIsReportedAndNothingIsWritten) {
    write("t/f", "some bytes, some bytes");
    ASSERT_EQ(run({"package", "pack", "good", "t"}), silent_success);
    const std::string stream = read("good");
    for (std::size_t length = 0; length < stream.size(); ++length) {
        const Outcome outcome = unpack(stream.substr(0, length));
        EXPECT_EQ(outcome.status, "2") << length;
        EXPECT_THAT(outcome.err, StartsWith("zanl-profile: can't unpack 's': "));
        EXPECT_FALSE(exists("to"));
    }
}

TEST_F(StreamCommand, WhatMayNotBeReadOrWrittenIsReported) {
    write("t/f", "1");
    write("s", stream_of({{file_type, 0, "f", "1"}}));
    fs::permissions(dir.path("t/f"), fs::perms(0));
    fs::permissions(dir.path(), fs::perms(0755));
    // Without the rights of root.
    const std::string plainly =
        "if [ $(id -u) -eq 0 ]; then P='setpriv --reuid=65534 --clear-groups'; fi; $P $T package ";
    EXPECT_EQ(shell(plainly + "pack - t >/dev/null"), trouble("can't open 't/f': Permission denied"));
    fs::permissions(dir.path(), fs::perms(0555));
    const Outcome outcome = shell(plainly + "unpack s -o to");
    fs::permissions(dir.path(), fs::perms(0755));
    EXPECT_EQ(outcome, trouble("can't write to the folder 'to': Permission denied"));
}

} // namespace
