// SPDX-License-Identifier: Apache-2.0
// Looking into packages: list, show, extract.
#include "toolbox_fixture.h"

namespace {

using testing::HasSubstr;

const std::string all_bytes = [] {
    std::string bytes;
    for (int i = 0; i < 1000; ++i)
        bytes += static_cast<char>(i);
    return bytes;
}();

using PackageRead = Toolbox;

TEST_F(PackageRead, ListHasNamesSizesAndMeanings) {
    make("p.zanx", {{".zan.version", "1\n"},
                    {".zan.board_spec.xml", std::string(12345, ' ')},
                    {".zan.velmora_report", "r"},
                    {".zan.profiler.xml", ""},
                    {".zan.opt.rpt.xml", "o"},
                    {".zan.source0", "s"},
                    {".zan.file.0", "f"},
                    {"mine", "m"}});
    EXPECT_EQ(run({"package", "list", "p.zanx"}),
              (Outcome{"NAME                  SIZE  MEANING\n"
                       ".zan.version             2  version\n"
                       ".zan.board_spec.xml  12345  board description\n"
                       ".zan.velmora_report      1  timing report\n"
                       ".zan.profiler.xml        0  profiler description\n"
                       ".zan.opt.rpt.xml         1  optimization report\n"
                       ".zan.source0             1  kernel source\n"
                       ".zan.file.0              1  name of a source file\n"
                       "mine                     1\n",
                       "", "0"}));
}

TEST_F(PackageRead, ListPrintsJson) {
    make("p.zanx", {{".zan.version", "1\n"}, {"a\"\n\xFF\xC3\xA4", "x"}});
    EXPECT_EQ(run({"package", "list", "--json", "p.zanx"}),
              (Outcome{R"({
    "schema": "zanl-profile/package-list",
    "schema_version": 1,
    "package": "p.zanx",
    "sections": [
        {
            "name": ".zan.version",
            "size": 2,
            "kind": "version",
            "meaning": "version"
        },
        {
            "name": "a\"\n)"
                       "\xEF\xBF\xBD\xC3\xA4" // U+FFFD, then the letter
                       R"(",
            "size": 1,
            "kind": "other",
            "meaning": ""
        }
    ]
}
)",
                       "", "0"}));
}

TEST_F(PackageRead, APackageWithoutSectionsHasAnEmptyList) {
    make("p.zanx", {});
    EXPECT_EQ(run({"package", "list", "p.zanx"}), (Outcome{"NAME  SIZE  MEANING\n", "", "0"}));
    EXPECT_EQ(run({"package", "list", "p.zanx", "--json"}),
              (Outcome{"{\n    \"schema\": \"zanl-profile/package-list\",\n    \"schema_version\": 1,\n"
                       "    \"package\": \"p.zanx\",\n    \"sections\": []\n}\n",
                       "", "0"}));
}

TEST_F(PackageRead, NamesAloneAreALineEach) {
    make("p.zanx", {{".zan.version", "1\n"}, {"a b", "x"}, {"a\x1b\nb", ""}});
    EXPECT_EQ(run({"package", "list", "--names", "p.zanx"}),
              (Outcome{".zan.version\na b\na⟨U+001B⟩⟨U+000A⟩b\n", "", "0"}));
    make("empty.zanx", {});
    EXPECT_EQ(run({"package", "list", "--names", "empty.zanx"}), (Outcome{"", "", "0"}));
    EXPECT_EQ(run({"package", "list", "--names", "--json", "p.zanx"}).status, "2");
}

TEST_F(PackageRead, NamesCannotCommandATerminal) {
    make("p.zanx", {{"a\x1b[2J\n\x7f", ""}});
    EXPECT_THAT(run({"package", "list", "p.zanx"}).out, HasSubstr("a⟨U+001B⟩[2J⟨U+000A⟩⟨U+007F⟩  "));
}

TEST_F(PackageRead, ADirectoryStreamIsKnownByItsContents) {
    write("f", "1");
    ASSERT_EQ(shell("$T package create p.zanx a=f && $T package pack p.zanx:tree f"), silent_success);
    EXPECT_THAT(run({"package", "list", "p.zanx"}).out, HasSubstr("  directory stream\n"));
    EXPECT_THAT(run({"package", "list", "p.zanx", "--json"}).out, HasSubstr("\"kind\": \"stream\""));
}

TEST_F(PackageRead, ASectionWithoutItsBytesIsDamaged) {
    make("p.zanx", {{"beyond", "1"}, {"nobits", "1"}, {"good", "1"}});
    change_header("p.zanx", 0, [](Elf32_Shdr& header) { header.sh_size = 1 << 20; });
    change_header("p.zanx", 1, [](Elf32_Shdr& header) { header.sh_type = SHT_NOBITS; });
    EXPECT_EQ(run({"package", "list", "p.zanx"}).out,
              "NAME       SIZE  MEANING\n"
              "beyond  1048576  damaged: its bytes are not in the file\n"
              "nobits        1  no contents\n"
              "good          1\n");
    const Outcome damaged = trouble("can't read section 'beyond' of 'p.zanx': its bytes are not in the file");
    EXPECT_EQ(run({"package", "show", "p.zanx", "beyond"}), damaged);
    EXPECT_EQ(run({"package", "extract", "p.zanx", "-o", "d"}), damaged);
    EXPECT_EQ(run({"package", "copy", "p.zanx", "p.zanx", "beyond"}), damaged);
    EXPECT_EQ(run({"package", "unpack", "p.zanx:beyond", "-o", "d"}), damaged);
    EXPECT_FALSE(exists("d"));
    EXPECT_EQ(run({"package", "extract", "p.zanx", "good", "-o", "d"}), silent_success);
    EXPECT_EQ(tree("d"), (Tree{{"good", "1"}}));
}

// As .bss of programs: it asks for memory, and has no bytes in the file.
TEST_F(PackageRead, ASectionWithoutContentsIsNoDamage) {
    make("p.zanx", {{".bss", "1"}, {"good", "1"}});
    change_header("p.zanx", 0, [](Elf32_Shdr& header) {
        header.sh_type = SHT_NOBITS;
        header.sh_size = 1 << 20;
    });
    EXPECT_THAT(run({"package", "list", "p.zanx", "--json"}).out, HasSubstr("\"kind\": \"nobits\""));
    EXPECT_EQ(run({"package", "extract", "p.zanx", "-o", "d"}), silent_success);
    EXPECT_EQ(tree("d"), (Tree{{"good", "1"}}));
    const Outcome none = trouble("section '.bss' of 'p.zanx' has a size but no contents");
    EXPECT_EQ(run({"package", "show", "p.zanx", ".bss"}), none);
    EXPECT_EQ(run({"package", "extract", "p.zanx", ".bss", "-o", "e"}), none);
    EXPECT_EQ(run({"package", "copy", "p.zanx", "p.zanx", ".bss"}), none);
    write("f", "22");
    EXPECT_EQ(run({"package", "add", "p.zanx", "f=f"}), silent_success);
    EXPECT_THAT(run({"package", "list", "p.zanx"}).out, HasSubstr(".bss  1048576  no contents\n"));
    EXPECT_EQ(run({"package", "remove", "p.zanx", ".bss"}), silent_success);
    EXPECT_EQ(run({"package", "list", "p.zanx"}).out, "NAME  SIZE  MEANING\ngood     1\nf        2\n");
}

// The sections of a new package begin at 0x1100, at multiples of 128, and with number 3.
TEST_F(PackageRead, ALongListHasWhatElfToolsShow) {
    make("p.zanx", {{".zan.version", "1\n"}, {"b", std::string(200, 'b')}, {"c", ""}});
    change_header("p.zanx", 1, [](Elf32_Shdr& header) { header.sh_type = SHT_NOTE; });
    change_header("p.zanx", 2, [](Elf32_Shdr& header) { header.sh_type = 0x70000001; });
    for (const char* option : {"--long", "-l"}) {
        EXPECT_EQ(run({"package", "list", "p.zanx", option}).out,
                  "INDEX  NAME          TYPE        OFFSET  SIZE  MEANING\n"
                  "    3  .zan.version  PROGBITS      4352     2  version\n"
                  "    4  b             NOTE          4480   200\n"
                  "    5  c             0x70000001    4736     0\n");
    }
    EXPECT_THAT(run({"package", "list", "p.zanx", "--long", "--json"}).out,
                HasSubstr("            \"index\": 3,\n"
                          "            \"name\": \".zan.version\",\n"
                          "            \"type\": \"PROGBITS\",\n"
                          "            \"offset\": 4352,\n"
                          "            \"size\": 2,\n"
                          "            \"kind\": \"version\",\n"));
}

TEST_F(PackageRead, WhatIsNoPackageIsReported) {
    write("text", "no package\n");
    write("empty", "");
    const std::string reason = " is no package: it is no ELF file of the 32-bit class with named sections";
    for (const char* command : {"list", "show"}) {
        std::vector<std::string> arguments = {"package", command, "text"};
        if (std::string(command) == "show")
            arguments.push_back("a");
        EXPECT_EQ(run(arguments), trouble("'text'" + reason));
        arguments[2] = "empty";
        EXPECT_EQ(run(arguments), trouble("'empty'" + reason));
        arguments[2] = "none";
        EXPECT_EQ(run(arguments), trouble("can't open 'none': No such file or directory"));
        arguments[2] = ".";
        EXPECT_EQ(run(arguments), trouble("can't open '.': Is a directory"));
    }
    EXPECT_EQ(
        run({"package", "list", ZAN_TOOLBOX}),
        trouble(std::string("'") + ZAN_TOOLBOX + "' is no package: it is an ELF file of the 64-bit class, " +
                "and packages are of the 32-bit class"));
}

TEST_F(PackageRead, ShowWritesTheBytesAsTheyAre) {
    make("p.zanx", {{"a", all_bytes}, {"empty", ""}, {"text", "no newline"}});
    EXPECT_TRUE(run({"package", "show", "p.zanx", "a"}) == (Outcome{all_bytes, "", "0"}));
    EXPECT_EQ(run({"package", "show", "p.zanx", "empty"}), silent_success);
    EXPECT_EQ(run({"package", "show", "p.zanx", "text"}), (Outcome{"no newline", "", "0"}));
    // A pipe can't be written by the kernel's copy.
    EXPECT_TRUE(shell("$T package show p.zanx a | cat") == (Outcome{all_bytes, "", "0"}));
}

TEST_F(PackageRead, OfTwoSectionsOfANameTheFirstIsMeant) {
    make("p.zanx", {{"a", "1"}, {"b", "22"}});
    std::string file = read("p.zanx");
    file[file.find(std::string("\0b\0", 3)) + 1] = 'a'; // in the table of names
    write("p.zanx", file);
    EXPECT_EQ(run({"package", "list", "p.zanx"}).out, "NAME  SIZE  MEANING\na        1\na        2\n");
    EXPECT_EQ(run({"package", "show", "p.zanx", "a"}).out, "1");
    EXPECT_EQ(run({"package", "extract", "p.zanx", "-o", "d"}), silent_success);
    EXPECT_EQ(tree("d"), (Tree{{"a", "1"}, {"a%~2", "22"}}));
}

TEST_F(PackageRead, ASectionThatIsNotThereIsANo) {
    make("p.zanx", {{"a", "1"}});
    const Outcome no = not_found("'p.zanx' has no section 'b'");
    EXPECT_EQ(run({"package", "show", "p.zanx", "b"}), no);
    EXPECT_EQ(run({"package", "extract", "p.zanx", "-o", "d", "a", "b"}), no);
    EXPECT_FALSE(exists("d"));
}

TEST_F(PackageRead, ExtractWritesEachSectionIntoAFile) {
    make("p.zanx", {{".zan.version", "1\n"}, {"a", all_bytes}, {"empty", ""}});
    EXPECT_EQ(run({"package", "extract", "p.zanx", "-o", "some/folder"}), silent_success);
    EXPECT_TRUE(tree("some/folder") == (Tree{{".zan.version", "1\n"}, {"a", all_bytes}, {"empty", ""}}));
    EXPECT_EQ(run({"package", "extract", "p.zanx", "empty", "a", "a", "--output", "other"}), silent_success);
    EXPECT_TRUE(tree("other") == (Tree{{"a", all_bytes}, {"a%~2", all_bytes}, {"empty", ""}}));
}

TEST_F(PackageRead, ExtractReplacesFilesOfItsNames) {
    make("p.zanx", {{"a", "new"}});
    write("d/a", "something older and longer");
    write("d/b", "kept");
    EXPECT_EQ(run({"package", "extract", "p.zanx", "-o", "d"}), silent_success);
    EXPECT_EQ(tree("d"), (Tree{{"a", "new"}, {"b", "kept"}}));
}

TEST_F(PackageRead, NamesOfSectionsCannotLeadOutOfTheFolder) {
    const std::string long_name(4096, 'n');
    make("p.zanx", {{"/etc/a", "1"},
                    {"../b", "2"},
                    {"..", "3"},
                    {".", "4"},
                    {"50%", "5"},
                    {"c\n\x7f", "6"},
                    {long_name, "7"},
                    {long_name.substr(1), "8"}});
    EXPECT_EQ(run({"package", "extract", "p.zanx", "-o", "d"}), silent_success);
    const std::string cut(220, 'n');
    EXPECT_EQ(tree(), (Tree{{"p.zanx", read("p.zanx")},
                            {"d/", ""},
                            {"d/%2Fetc%2Fa", "1"},
                            {"d/..%2Fb", "2"},
                            {"d/%2E%2E", "3"},
                            {"d/%2E", "4"},
                            {"d/50%25", "5"},
                            {"d/c%0A%7F", "6"},
                            {"d/" + cut + "%~1", "7"},
                            {"d/" + cut + "%~2", "8"}}));
}

TEST_F(PackageRead, ExtractLeavesNoPartOfAFile) {
    make("p.zanx", {{"a", "1"}, {"b", std::string(3000, 'b')}});
    // Files may not grow above 2048 bytes; the program gets an error for that and not a signal.
    const Outcome outcome = shell("trap '' XFSZ; ulimit -f 2; $T package extract p.zanx -o d");
    EXPECT_EQ(outcome.status, "2");
    EXPECT_THAT(outcome.err, HasSubstr("File too large"));
    EXPECT_FALSE(exists("d"));
    write("there/a", "old");
    EXPECT_EQ(shell("trap '' XFSZ; ulimit -f 2; $T package extract p.zanx -o there").status, "2");
    EXPECT_EQ(tree("there"), (Tree{{"a", "old"}}));
    EXPECT_EQ(run({"package", "extract", "p.zanx", "-o", "p.zanx/d"}),
              trouble("can't write to the folder 'p.zanx/d': Not a directory"));
}

TEST_F(PackageRead, ExtractWritesThroughNoLink) {
    namespace fs = std::filesystem;
    make("p.zanx", {{"a", "1"}, {"b", "2"}});
    write("outside", "old");
    fs::create_directory(dir.path("d"));
    for (const char* target : {"../outside", "../new", "."}) {
        fs::create_symlink(target, dir.path("d/b"));
        EXPECT_EQ(run({"package", "extract", "p.zanx", "-o", "d"}),
                  trouble("refused the name 'b': 'd/b' is a symbolic link"));
        EXPECT_FALSE(exists("d/a"));
        EXPECT_EQ(run({"package", "extract", "p.zanx", "a", "-o", "d"}), silent_success);
        fs::remove(dir.path("d/b"));
        fs::remove(dir.path("d/a"));
    }
    EXPECT_EQ(read("outside"), "old");
    EXPECT_FALSE(exists("new"));
    fs::create_directory_symlink("d", dir.path("link")); // the folder that the user names may be one
    EXPECT_EQ(run({"package", "extract", "p.zanx", "-o", "link"}), silent_success);
    EXPECT_EQ(tree("d"), (Tree{{"a", "1"}, {"b", "2"}}));
}

TEST_F(PackageRead, ExtractKeepsPermissionsOfTheFilesThatItReplaces) {
    namespace fs = std::filesystem;
    make("p.zanx", {{"a", "1"}});
    write("d/a", "old");
    fs::permissions(dir.path("d/a"), fs::perms(0600));
    EXPECT_EQ(run({"package", "extract", "p.zanx", "-o", "d"}), silent_success);
    EXPECT_EQ(fs::status(dir.path("d/a")).permissions(), fs::perms(0600));
    EXPECT_EQ(read("d/a"), "1");
}

} // namespace
