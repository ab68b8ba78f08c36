#include "staged_folder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <map>

#include "failure.h"
#include "temp_dir.h"
#include "whole_file.h"

namespace {

using namespace zan::tool;
namespace fs = std::filesystem;

TEST(NameFault, IsWhatLeadsOutOfTheFolder) {
    for (const char* name : {"f", "a/b", "./f", "a//b", "..f", "a/...", "a/./b", "a/"})
        EXPECT_EQ(name_fault(name), "") << name;
    EXPECT_EQ(name_fault(""), "it is empty");
    EXPECT_EQ(name_fault("/f"), "it is absolute");
    for (const char* name : {"..", "../f", "a/..", "a/../b"})
        EXPECT_EQ(name_fault(name), "it has '..' in it") << name;
}

class StagedFolderTest : public testing::Test {
  protected:
    static void add_file(StagedFolder& folder, const std::string& name, const std::string& bytes,
                         std::uint32_t mode = 0) {
        const Descriptor file = folder.add_file(name, mode);
        write_all(file.get(), bytes.data(), bytes.size(), name);
    }
    // Files with their bytes, folders with a slash at the end of their names.
    std::map<std::string, std::string> tree() const {
        std::map<std::string, std::string> found;
        for (const auto& entry : fs::recursive_directory_iterator(dir.path())) {
            const std::string name = fs::relative(entry.path(), dir.path());
            if (entry.is_directory())
                found[name + "/"];
            else
                found[name] = read_file(entry.path());
        }
        return found;
    }
    std::string check(const std::string& name, bool is_folder) const {
        try {
            TargetFolder(dir.path("to")).check(name, is_folder);
        } catch (const Failure& failure) {
            return failure.what();
        }
        return "";
    }

    using Tree = std::map<std::string, std::string>;
    const TempDir dir;
};

TEST_F(StagedFolderTest, ANewFolderAppearsWhenItIsWhole) {
    {
        StagedFolder folder(dir.path("a/to"));
        add_file(folder, "d/e/f", "1");
        folder.add_folder("./d/empty");
        EXPECT_FALSE(fs::exists(dir.path("a/to")));
        folder.commit();
    }
    EXPECT_EQ(tree(), (Tree{{"a/", ""},
                            {"a/to/", ""},
                            {"a/to/d/", ""},
                            {"a/to/d/e/", ""},
                            {"a/to/d/e/f", "1"},
                            {"a/to/d/empty/", ""}}));
}

TEST_F(StagedFolderTest, AFolderThatExistsKeepsItsOtherFiles) {
    fs::create_directories(dir.path("to/d"));
    write_file(dir.path("to/d/old"), "old");
    write_file(dir.path("to/d/f"), "something longer");
    {
        StagedFolder folder(dir.path("to/"));
        add_file(folder, "d/f", "new");
        EXPECT_EQ(read_file(dir.path("to/d/f")), "something longer");
        folder.commit();
    }
    EXPECT_EQ(tree(), (Tree{{"to/", ""}, {"to/d/", ""}, {"to/d/old", "old"}, {"to/d/f", "new"}}));
}

TEST_F(StagedFolderTest, WhatIsGivenUpLeavesNothing) {
    fs::create_directories(dir.path("to"));
    const Tree before = tree();
    for (const char* target : {"to", "new"}) {
        StagedFolder folder(dir.path(target));
        add_file(folder, "d/f", "1");
        EXPECT_NE(tree(), before);
    }
    EXPECT_EQ(tree(), before);
}

// What came in the way meanwhile is found before anything is moved.
TEST_F(StagedFolderTest, NothingIsMovedIfAnythingCannotBe) {
    fs::create_directories(dir.path("to"));
    StagedFolder folder(dir.path("to"));
    add_file(folder, "f", "1");
    add_file(folder, "g", "2");
    fs::create_directory(dir.path("to/g"));
    EXPECT_THROW(folder.commit(), Failure);
    EXPECT_FALSE(fs::exists(dir.path("to/f")));
}

TEST_F(StagedFolderTest, AFileKeepsThePermissionsOfItsModeAlone) {
    const mode_t before = ::umask(022);
    StagedFolder folder(dir.path("to"));
    add_file(folder, "program", "", 0100755);
    add_file(folder, "root's", "", 0104777); // without the bit that makes it run as its owner
    add_file(folder, "no file's", "", 0040700);
    folder.commit();
    ::umask(before);
    EXPECT_EQ(fs::status(dir.path("to/program")).permissions(), fs::perms(0755));
    EXPECT_EQ(fs::status(dir.path("to/root's")).permissions(), fs::perms(0755));
    EXPECT_EQ(fs::status(dir.path("to/no file's")).permissions(), fs::perms(0644));
}

TEST_F(StagedFolderTest, ATargetThatCannotBeWrittenToFails) {
    write_file(dir.path("file"), "");
    EXPECT_THROW(StagedFolder(dir.path("file")), Failure);
    EXPECT_THROW(StagedFolder(dir.path("file/d")), Failure);
    EXPECT_EQ(tree(), (Tree{{"file", ""}}));
}

TEST_F(StagedFolderTest, EntriesMayTakeThePlaceOfTheirOwnKind) {
    EXPECT_EQ(check("a/b", false), ""); // there is no folder yet
    fs::create_directories(dir.path("to/folder"));
    write_file(dir.path("to/file"), "");
    const std::string to = "'" + dir.path("to");
    EXPECT_EQ(check("folder", true), "");
    EXPECT_EQ(check("folder/f", false), "");
    EXPECT_EQ(check("file", false), "");
    EXPECT_EQ(check("folder", false), "can't write 'folder': " + to + "/folder' is a folder");
    EXPECT_EQ(check("file", true), "can't write 'file': " + to + "/file' is no folder");
    EXPECT_EQ(check("file/f", false), "can't write 'file/f': " + to + "/file' is no folder");
}

TEST_F(StagedFolderTest, NoEntryPassesThroughALink) {
    fs::create_directories(dir.path("to"));
    fs::create_directory_symlink("..", dir.path("to/link"));
    fs::create_symlink("nowhere", dir.path("to/broken"));
    const std::string to = "'" + dir.path("to");
    EXPECT_EQ(check("link/f", false), "refused the name 'link/f': " + to + "/link' is a symbolic link");
    EXPECT_EQ(check("link", true), "refused the name 'link': " + to + "/link' is a symbolic link");
    EXPECT_EQ(check("broken", false), "refused the name 'broken': " + to + "/broken' is a symbolic link");
}

} // namespace
