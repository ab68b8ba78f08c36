// SPDX-License-Identifier: Apache-2.0
// Making and changing packages: create, add, update, copy. After any failure the package is as it was.
#include <sys/stat.h>

#include "toolbox_fixture.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

namespace fs = std::filesystem;

class PackageEdit : public Toolbox {
  protected:
    // Gives the package a program header.
    void make_program(const std::string& name) const {
        std::string file = read(name);
        Elf32_Ehdr header;
        std::memcpy(&header, file.data(), sizeof header);
        header.e_phoff = sizeof header;
        header.e_phentsize = sizeof(Elf32_Phdr);
        header.e_phnum = 1;
        std::memcpy(file.data(), &header, sizeof header);
        write(name, file);
    }
};

TEST_F(PackageEdit, CreateMakesAPackageOfFiles) {
    write("v", "1\n");
    write("empty", "");
    EXPECT_EQ(run({"package", "create", "p.zanx", ".zan.version=v", "a=empty", "odd name=v"}),
              silent_success);
    EXPECT_EQ(sections("p.zanx"), (PackageSections{{".zan.version", "1\n"}, {"a", ""}, {"odd name", "1\n"}}));
}

TEST_F(PackageEdit, APackageIsTheOneThatTheLibraryMakes) {
    write("v", "1\n");
    make("expected.zanx", {{".zan.version", "1\n"}, {"a", "1\n"}});
    EXPECT_EQ(run({"package", "create", "p.zanx", ".zan.version=v", "a=v"}), silent_success);
    EXPECT_TRUE(read("p.zanx") == read("expected.zanx"));
}

TEST_F(PackageEdit, CreateTakesTheFilesOfASample) {
    write("s/sections/version", "1\n");
    write("s/sections/profiler.xml", "<profiler/>");
    write("s/sections/.version.swp", "an editor's");
    write("s/README.md", "no section");
    write("extra", "e");
    EXPECT_EQ(run({"package", "create", "p.zanx", "--from", "s", "extra=extra"}), silent_success);
    EXPECT_EQ(
        sections("p.zanx"),
        (PackageSections{{".zan.profiler.xml", "<profiler/>"}, {".zan.version", "1\n"}, {"extra", "e"}}));
}

TEST_F(PackageEdit, AFolderThatIsNoSampleIsReported) {
    EXPECT_EQ(run({"package", "create", "p.zanx", "--from", "none"}),
              trouble("can't read the folder 'none/sections': No such file or directory"));
    fs::create_directories(dir.path("none/sections"));
    EXPECT_EQ(run({"package", "create", "p.zanx", "--from", "none"}),
              trouble("there is no section in 'none/sections'"));
    fs::create_directories(dir.path("none/sections/file"));
    EXPECT_EQ(run({"package", "create", "p.zanx", "--from", "none"}),
              trouble("'none/sections/file' is no file"));
    EXPECT_FALSE(exists("p.zanx"));
}

TEST_F(PackageEdit, CreateReplacesAPackage) {
    make("p.zanx", {{"a", std::string(100000, 'x')}});
    write("empty.zanx", "");
    write("v", "2\n");
    for (const char* package : {"p.zanx", "empty.zanx"}) {
        EXPECT_EQ(run({"package", "create", package, "v=v"}), silent_success);
        EXPECT_EQ(sections(package), (PackageSections{{"v", "2\n"}}));
    }
}

TEST_F(PackageEdit, CreateReplacesAFileOfAnotherKindByForce) {
    write("v", "2\n");
    write("notes.txt", "notes");
    make("program", {{"a", "1"}});
    make_program("program");
    for (const char* file : {"notes.txt", "program"}) {
        const std::string before = read(file);
        EXPECT_EQ(run({"package", "create", file, "v=v"}),
                  trouble(std::string("'") + file + "' is no package; --force replaces it"));
        EXPECT_TRUE(read(file) == before);
        EXPECT_EQ(run({"package", "create", "--force", file, "v=v"}), silent_success);
        EXPECT_EQ(sections(file), (PackageSections{{"v", "2\n"}}));
    }
}

TEST_F(PackageEdit, CreateTakesTheFolderOfSectionsItself) {
    write("s/sections/version", "1\n");
    for (const char* folder : {"s", "s/sections", "s/sections/", "s/./sections"}) {
        EXPECT_EQ(run({"package", "create", "p.zanx", "--from", folder}), silent_success) << folder;
        EXPECT_EQ(sections("p.zanx"), (PackageSections{{".zan.version", "1\n"}}));
    }
    EXPECT_EQ(shell("cd s/sections && $T package create ../../q.zanx --from ."), silent_success);
    EXPECT_EQ(sections("q.zanx").size(), 1u);
    write("other/version", "1\n"); // any folder could be meant
    EXPECT_EQ(run({"package", "create", "p.zanx", "--from", "other"}),
              trouble("can't read the folder 'other/sections': No such file or directory"));
}

TEST_F(PackageEdit, ANamedSectionReplacesThatOfTheSample) {
    write("s/sections/profiler.xml", "<profiler/>");
    write("s/sections/version", "1\n");
    write("v", "2\n");
    EXPECT_EQ(run({"package", "create", "p.zanx", "--from", "s", "a=v", ".zan.profiler.xml=v"}),
              silent_success);
    EXPECT_EQ(sections("p.zanx"),
              (PackageSections{{".zan.profiler.xml", "2\n"}, {".zan.version", "1\n"}, {"a", "2\n"}}));
    EXPECT_EQ(run({"package", "create", "q.zanx", "--from", "s", ".zan.version=v", ".zan.version=v"}),
              trouble("'q.zanx' has a section '.zan.version' already"));
}

TEST_F(PackageEdit, BytesMayComeFromStandardInputOrAPipe) {
    EXPECT_EQ(shell("printf abc | $T package create p.zanx a=- b=<(printf def) c=/dev/null"), silent_success);
    EXPECT_EQ(sections("p.zanx"), (PackageSections{{"a", "abc"}, {"b", "def"}, {"c", ""}}));
    // More than is read at once.
    EXPECT_EQ(shell("head -c 1000000 /dev/zero | $T package add p.zanx d=-"), silent_success);
    EXPECT_TRUE(sections("p.zanx")[3].second == std::string(1000000, '\0'));
}

TEST_F(PackageEdit, AddAppendsSections) {
    make("p.zanx", {{"a", "1"}});
    write("f", "22");
    EXPECT_EQ(run({"package", "add", "p.zanx", "b=f", "c=/dev/null"}), silent_success);
    EXPECT_EQ(sections("p.zanx"), (PackageSections{{"a", "1"}, {"b", "22"}, {"c", ""}}));
}

TEST_F(PackageEdit, ANameThatIsTakenIsReported) {
    make("p.zanx", {{"a", "1"}});
    write("f", "22");
    const std::string before = read("p.zanx");
    EXPECT_EQ(run({"package", "add", "p.zanx", "b=f", "a=f"}), trouble("'p.zanx' has a section 'a' already"));
    EXPECT_EQ(run({"package", "add", "p.zanx", "b=f", "b=f"}), trouble("'p.zanx' has a section 'b' already"));
    EXPECT_TRUE(read("p.zanx") == before);
}

TEST_F(PackageEdit, UpdateReplacesContents) {
    make("p.zanx", {{"a", std::string(5000, 'a')}, {"b", "1"}, {"c", "2"}});
    write("f", std::string(300, 'f'));
    EXPECT_EQ(run({"package", "update", "p.zanx", "a=/dev/null", "b=f"}), silent_success);
    EXPECT_EQ(sections("p.zanx"), (PackageSections{{"a", ""}, {"b", std::string(300, 'f')}, {"c", "2"}}));
}

TEST_F(PackageEdit, UpdateOfASectionThatIsNotThereIsANo) {
    make("p.zanx", {{"a", "1"}});
    const std::string before = read("p.zanx");
    EXPECT_EQ(run({"package", "update", "p.zanx", "a=/dev/null", "b=/dev/null"}),
              not_found("'p.zanx' has no section 'b'"));
    EXPECT_TRUE(read("p.zanx") == before);
}

TEST_F(PackageEdit, CopyAddsOrReplacesSections) {
    make("a.zanx", {{"one", "1"}, {"two", "22"}, {"three", "333"}});
    make("b.zanx", {{"two", "old"}, {"four", "4444"}});
    EXPECT_EQ(run({"package", "copy", "a.zanx", "b.zanx", "three", "two"}), silent_success);
    EXPECT_EQ(sections("b.zanx"), (PackageSections{{"two", "22"}, {"four", "4444"}, {"three", "333"}}));
    EXPECT_EQ(run({"package", "copy", "a.zanx", "b.zanx", "one", "none"}),
              not_found("'a.zanx' has no section 'none'"));
    EXPECT_EQ(sections("b.zanx").size(), 3u);
    EXPECT_EQ(run({"package", "copy", "b.zanx", "b.zanx", "two"}), silent_success); // onto itself
    EXPECT_EQ(sections("b.zanx"), (PackageSections{{"two", "22"}, {"four", "4444"}, {"three", "333"}}));
}

TEST_F(PackageEdit, RemoveTakesSectionsOut) {
    make("p.zanx", {{"a", "1"}, {"b", "22"}, {"c", "333"}});
    make("expected.zanx", {{"b", "22"}});
    fs::permissions(dir.path("p.zanx"), fs::perms(0640));
    EXPECT_EQ(run({"package", "remove", "p.zanx", "c", "a"}), silent_success);
    EXPECT_TRUE(read("p.zanx") == read("expected.zanx"));
    EXPECT_EQ(fs::status(dir.path("p.zanx")).permissions(), fs::perms(0640));
    EXPECT_EQ(run({"package", "remove", "p.zanx", "b", "b"}), silent_success);
    EXPECT_EQ(sections("p.zanx"), PackageSections());
    EXPECT_EQ(tree().size(), 2u);
}

TEST_F(PackageEdit, WhatCannotBeRemovedIsReported) {
    make("p.zanx", {{"a", "1"}, {"b", "22"}});
    const std::string before = read("p.zanx");
    EXPECT_EQ(run({"package", "remove", "p.zanx", "a", "c"}), not_found("'p.zanx' has no section 'c'"));
    EXPECT_EQ(run({"package", "remove", "p.zanx", ".shstrtab"}),
              trouble("section '.shstrtab' holds the names of all sections; it can't be removed"));
    EXPECT_EQ(run({"package", "remove", "none", "a"}),
              trouble("can't open 'none': No such file or directory"));
    EXPECT_TRUE(read("p.zanx") == before);
    change_header("p.zanx", 1, [](Elf32_Shdr& header) { header.sh_link = 2; });
    EXPECT_EQ(run({"package", "remove", "p.zanx", "a"}),
              trouble("can't write 'p.zanx': section 'b' refers to other sections by their numbers"));
    EXPECT_EQ(run({"package", "remove", "p.zanx", "b"}), silent_success);
    EXPECT_EQ(sections("p.zanx"), (PackageSections{{"a", "1"}}));
}

TEST_F(PackageEdit, AProgramIsNotChanged) {
    make("p.zanx", {{"a", "1"}});
    make("q.zanx", {{"b", "1"}});
    make_program("p.zanx");
    const std::string before = read("p.zanx");
    const Outcome refused = trouble("can't change 'p.zanx': it has program headers, and would no longer run");
    for (const std::string command : {"add p.zanx c=/dev/null", "update p.zanx a=/dev/null",
                                      "copy q.zanx p.zanx b", "remove p.zanx a", "pack p.zanx:s q.zanx"})
        EXPECT_EQ(shell("$T package " + command), refused) << command;
    EXPECT_TRUE(read("p.zanx") == before);
    EXPECT_EQ(run({"package", "show", "p.zanx", "a"}), (Outcome{"1", "", "0"}));
    EXPECT_EQ(run({"package", "copy", "p.zanx", "q.zanx", "a"}), silent_success);
}

TEST_F(PackageEdit, NoPackageIsReadFromOrWrittenToAPipe) {
    make("p.zanx", {{"a", "1"}});
    const Outcome no_input =
        trouble("a package can't be read from standard input, as it isn't read in one go; name a file");
    for (const std::string command :
         {"list -", "show - a", "extract - -o d", "add - b=p.zanx", "update - a=p.zanx", "remove - a",
          "copy - p.zanx a", "copy p.zanx - a"})
        EXPECT_EQ(shell("$T package " + command + " <p.zanx"), no_input) << command;
    EXPECT_EQ(
        run({"package", "create", "-", "a=p.zanx"}),
        trouble("a package can't be written to standard output, as it isn't written in one go; name a file"));
    EXPECT_EQ(tree().size(), 1u);
    EXPECT_EQ(run({"package", "create", "./-", "a=p.zanx"}), silent_success);
    EXPECT_EQ(run({"package", "remove", "./-", "a"}), silent_success);
}

TEST_F(PackageEdit, WrongNamesAreReported) {
    make("p.zanx", {{"a", "1"}});
    write("f", "");
    const std::string before = read("p.zanx");
    EXPECT_EQ(run({"package", "add", "p.zanx", "name"}),
              trouble("a section is given as NAME=FILE, not as 'name'"));
    EXPECT_EQ(run({"package", "add", "p.zanx", "=f"}),
              trouble("a section is given as NAME=FILE, not as '=f'"));
    EXPECT_EQ(run({"package", "add", "p.zanx", "b="}),
              trouble("a section is given as NAME=FILE, not as 'b='"));
    for (const char* command : {"add", "update"}) {
        EXPECT_EQ(run({"package", command, "p.zanx", ".shstrtab=f"}),
                  trouble("section '.shstrtab' holds the names of all sections; it can't be set"));
    }
    const std::string long_name(4097, 'n');
    EXPECT_EQ(run({"package", "add", "p.zanx", long_name + "=f"}),
              trouble("the name of a section has at most 4096 bytes, not 4097: '" + long_name + "'"));
    EXPECT_EQ(run({"package", "create", "new.zanx"}),
              trouble("nothing to make 'new.zanx' of; give NAME=FILE or --from DIR"));
    EXPECT_EQ(run({"package", "pack", "p.zanx:", "f"}), trouble("a section of 'p.zanx' needs a name"));
    EXPECT_TRUE(read("p.zanx") == before);
    EXPECT_EQ(tree().size(), 2u);
}

TEST_F(PackageEdit, FilesThatCannotBeReadAreReported) {
    make("p.zanx", {{"a", "1"}});
    EXPECT_EQ(run({"package", "add", "p.zanx", "b=none"}),
              trouble("can't open 'none': No such file or directory"));
    EXPECT_EQ(run({"package", "add", "p.zanx", "b=."}), trouble("can't read '.': Is a directory"));
    EXPECT_EQ(run({"package", "add", "none.zanx", "b=p.zanx"}),
              trouble("can't open 'none.zanx': No such file or directory"));
    write("text", "no package\n");
    EXPECT_EQ(run({"package", "add", "text", "b=p.zanx"}),
              trouble("'text' is no package: it is no ELF file of the 32-bit class with named sections"));
    EXPECT_EQ(run({"package", "create", "no/p.zanx", "b=p.zanx"}),
              trouble("can't write 'no/p.zanx': No such file or directory"));
    EXPECT_EQ(run({"package", "create", ".", "b=p.zanx"}), trouble("can't write '.': it is not a file"));
    EXPECT_EQ(run({"package", "create", "/dev/full", "b=p.zanx"}),
              trouble("can't write '/dev/full': it is not a file"));
    EXPECT_EQ(tree().size(), 2u);
}

// The files have holes in place of their bytes.
TEST_F(PackageEdit, MoreThanAPackageHoldsIsReportedBeforeItIsRead) {
    make("p.zanx", {{"a", "1"}});
    write("large", "");
    fs::resize_file(dir.path("large"), 5ull << 30);
    EXPECT_EQ(run({"package", "add", "p.zanx", "b=large"}),
              trouble("'large' has 5368709120 bytes, and a section holds at most 4294967295"));
}

// A section whose bytes are missing says that it has 2^32 - 16; with 100 more there are 2^32 + 84.
TEST_F(PackageEdit, MoreThanAPackageHoldsIsReportedBeforeItIsWritten) {
    make("p.zanx", {{"a", "1"}});
    change_header("p.zanx", 0, [](Elf32_Shdr& header) { header.sh_size = 0xFFFF'FFF0; });
    write("f", std::string(100, 'f'));
    const std::string before = read("p.zanx");
    EXPECT_EQ(run({"package", "add", "p.zanx", "b=f"}),
              trouble("can't write section 'b' of 'p.zanx': it would be 4294967380 bytes long, and a package "
                      "has at most 4294967295"));
    EXPECT_TRUE(read("p.zanx") == before);
}

// The library lays sections out by alignments that are powers of two.
TEST_F(PackageEdit, ASectionThatCannotBeLaidOutIsReportedInTheLibrarysWords) {
    make("p.zanx", {{"a", "1"}, {"b", "2"}});
    change_header("p.zanx", 0, [](Elf32_Shdr& header) { header.sh_addralign = 3; });
    const std::string before = read("p.zanx");
    EXPECT_EQ(run({"package", "remove", "p.zanx", "b"}),
              trouble("can't write 'p.zanx': invalid section alignment"));
    EXPECT_TRUE(read("p.zanx") == before);
}

// A few bytes ask for a file of 2 GiB.
TEST_F(PackageEdit, SectionsThatAreToLieFarApartAreRefused) {
    make("p.zanx", {{"a", "1"}});
    change_header("p.zanx", 0, [](Elf32_Shdr& header) { header.sh_addralign = 1u << 31; });
    const std::string before = read("p.zanx");
    // "a" lies at 2^31, "b" 128 bytes after it and ends at 2147483777; the table of five headers of 40 bytes
    // each begins at the next multiple of 4.
    EXPECT_EQ(
        shell("echo >f; $T package add p.zanx b=f"),
        trouble("can't write 'p.zanx': the gaps between its sections would make it 2147483980 bytes long"));
    EXPECT_EQ(tree(), (Tree{{"f", "\n"}, {"p.zanx", before}}));
}

TEST_F(PackageEdit, PermissionsStay) {
    make("p.zanx", {{"a", "1"}});
    fs::permissions(dir.path("p.zanx"), fs::perms(0751));
    EXPECT_EQ(run({"package", "add", "p.zanx", "b=/dev/null"}), silent_success);
    EXPECT_EQ(fs::status(dir.path("p.zanx")).permissions(), fs::perms(0751));
    EXPECT_EQ(shell("umask 027; $T package create new.zanx b=/dev/null"), silent_success);
    EXPECT_EQ(fs::status(dir.path("new.zanx")).permissions(), fs::perms(0640));
}

TEST_F(PackageEdit, ALinkToAPackageStaysALink) {
    make("p.zanx", {{"a", "1"}});
    fs::create_symlink("p.zanx", dir.path("link.zanx"));
    EXPECT_EQ(run({"package", "update", "link.zanx", "a=/dev/null"}), silent_success);
    EXPECT_TRUE(fs::is_symlink(dir.path("link.zanx")));
    EXPECT_EQ(sections("p.zanx"), (PackageSections{{"a", ""}}));
}

// Runs commands that change a package, with a limit on the size of files at each of many places in turn.
class PackageFault : public Toolbox {
  protected:
    PackageFault() {
        make("p.zanx", {{"a", std::string(2000, 'a')}, {"b", "1"}});
        make("q.zanx", {{"c", std::string(3000, 'c')}});
        write("f", std::string(3000, 'f'));
    }

    // Calls `check(outcome, limit)` for each command and limit below the size that the package gets, after
    // which both packages must be as they were.
    template <typename Check>
    void expect_untouched(Check check) const {
        const std::string before = read("p.zanx");
        for (const std::string command : {"add p.zanx c=f", "update p.zanx b=f", "copy q.zanx p.zanx c"}) {
            for (int limit = 0; limit <= 9000; limit += 250) {
                // The messages go through a pipe, which has no size.
                check(shell("prlimit --fsize=" + std::to_string(limit) + " $T package " + command +
                            " 2>&1 | cat; exit ${PIPESTATUS[0]}"),
                      limit);
                EXPECT_TRUE(read("p.zanx") == before) << command << " " << limit;
            }
            // With room for all of it, the same command does its work.
            EXPECT_EQ(shell("prlimit --fsize=20000 $T package " + command), silent_success);
            EXPECT_FALSE(read("p.zanx") == before);
            write("p.zanx", before);
        }
    }
};

TEST_F(PackageFault, AFullDiskLeavesThePackageAsItWas) {
    expect_untouched([&](const Outcome& outcome, int limit) {
        EXPECT_EQ(outcome.status, "2") << limit;
        EXPECT_THAT(outcome.out, StartsWith("zanl-profile: can't write "));
        EXPECT_THAT(outcome.out, HasSubstr("'p.zanx'"));
        EXPECT_THAT(outcome.out, EndsWith(": File too large\n"));
        EXPECT_EQ(tree().size(), 3u) << "something is left";
    });
}

} // namespace
