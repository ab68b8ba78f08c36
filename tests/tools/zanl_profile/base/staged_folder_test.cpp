// SPDX-License-Identifier: Apache-2.0
#include "staged_folder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <map>

#include "failure.h"
#include "temp_dir.h"
#include "whole_file.h"

namespace {

using namespace zan::tool;
namespace fs = std::filesystem;

class StagedFolderTest : public testing::Test {
  protected:
    static void add_file(StagedFolder& folder, const std::string& name, const std::string& bytes,
                         std::uint32_t mode = 0) {
        Descriptor file = folder.add_file(name, mode);
        write_all(file.get(), bytes.data(), bytes.size(), name);
        folder.end_file(std::move(file), name);
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
    // What the library's function for it can't remove.
    static void remove_deep(OpenFolders& place) {
        walk_folders(
            place,
            [&] {
                std::vector<std::string> folders;
                for (const FolderEntry& entry : entries_of(place.fd(), "")) {
                    if (entry.is_folder)
                        folders.push_back(entry.name);
                    else
                        ::unlinkat(place.fd(), entry.name.c_str(), 0);
                }
                return folders;
            },
            [&](const std::string& name) { ::unlinkat(place.fd(), name.c_str(), AT_REMOVEDIR); });
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

// As of two files of a name in a stream.
TEST_F(StagedFolderTest, OfTwoFilesOfANameTheSecondStays) {
    for (const char* target : {"new", "there"}) {
        if (std::string(target) == "there")
            fs::create_directories(dir.path("there/d"));
        StagedFolder folder(dir.path(target));
        add_file(folder, "d/f", "first and longer", 0100700);
        add_file(folder, "./d//f", "2", 0100600);
        folder.commit();
        EXPECT_EQ(read_file(dir.path(target) + "/d/f"), "2");
        EXPECT_EQ(fs::status(dir.path(target) + "/d/f").permissions(), fs::perms(0600)) << target;
    }
}

TEST_F(StagedFolderTest, ANameIsOfAFileOrOfAFolder) {
    StagedFolder folder(dir.path("to"));
    add_file(folder, "d/f", "1");
    EXPECT_THROW(folder.add_file("d", 0), Failure);
    EXPECT_THROW(folder.add_file(".", 0), Failure);
    EXPECT_THROW(folder.add_folder("d/f"), Failure);
    EXPECT_THROW(folder.add_folder("d/f/g"), Failure);
    folder.commit();
    EXPECT_EQ(tree(), (Tree{{"to/", ""}, {"to/d/", ""}, {"to/d/f", "1"}}));
}

// Each kind of folder that a target may have, and not have.
TEST_F(StagedFolderTest, FoldersOfBothAreMerged) {
    fs::create_directories(dir.path("to/both/both"));
    fs::create_directories(dir.path("to/old/old"));
    fs::permissions(dir.path("to/both/both"), fs::perms(0750));
    write_file(dir.path("to/both/both/f"), "old");
    write_file(dir.path("to/both/g"), "kept");
    {
        StagedFolder folder(dir.path("to"));
        add_file(folder, "both/both/f", "new");
        add_file(folder, "both/new/f", "1");
        add_file(folder, "new/new/f", "2");
        folder.add_folder("old");
        folder.commit();
    }
    EXPECT_EQ(tree(), (Tree{{"to/", ""},
                            {"to/both/", ""},
                            {"to/both/both/", ""},
                            {"to/both/both/f", "new"},
                            {"to/both/g", "kept"},
                            {"to/both/new/", ""},
                            {"to/both/new/f", "1"},
                            {"to/new/", ""},
                            {"to/new/new/", ""},
                            {"to/new/new/f", "2"},
                            {"to/old/", ""},
                            {"to/old/old/", ""}}));
    EXPECT_EQ(fs::status(dir.path("to/both/both")).permissions(), fs::perms(0750));
}

// More entries than are waited for one by one.
TEST_F(StagedFolderTest, ManyEntriesArrive) {
    fs::create_directories(dir.path("to/d0"));
    for (const char* target : {"to", "new"}) {
        StagedFolder folder(dir.path(target));
        for (int i = 0; i < 300; ++i)
            add_file(folder, "d" + std::to_string(i % 7) + "/" + std::to_string(i), std::to_string(i));
        folder.commit();
    }
    const Tree found = tree();
    EXPECT_EQ(found.size(), 2u * (1 + 7 + 300));
    EXPECT_EQ(found.at("to/d0/7"), "7");
    EXPECT_EQ(found.at("new/d5/299"), "299");
}

// More levels than a process usually has files open at most, and a path longer than the system takes.
constexpr int deep_levels = 1100;
std::string deep_folder(const std::string& step) {
    std::string path;
    for (int i = 0; i < deep_levels; ++i)
        path += step;
    return path;
}

// Deeper than a path can say, with more folders than may be open at a time. By whole paths the program
// itself, without the system, took 2 seconds for this.
TEST_F(StagedFolderTest, TwoDeepFoldersAreFilledInTurn) {
    const std::string deep = deep_folder("aaaa/");
    const std::string other = deep_folder("bbbb/");
    fs::create_directories(dir.path("to/aaaa/aaaa/aaaa"));
    {
        StagedFolder folder(dir.path("to"));
        for (int i = 0; i < 500; ++i)
            add_file(folder, (i % 2 ? deep : other) + std::to_string(i), "1");
        folder.commit();
    }
    OpenFolders place(Descriptor(::open(dir.path("to").c_str(), O_PATH | O_DIRECTORY)));
    EXPECT_EQ(place.go_towards(steps_of(deep)), std::size_t{deep_levels});
    EXPECT_EQ(entries_of(place.fd(), "").size(), 250u);
    place.go_to_root();
    EXPECT_EQ(entries_of(place.fd(), "").size(), 2u); // no temporary folder is left
    remove_deep(place);
}

TEST_F(StagedFolderTest, DeepFoldersThatAreGivenUpLeaveNothing) {
    {
        StagedFolder folder(dir.path("to"));
        add_file(folder, deep_folder("aaaa/") + "f", "1");
    }
    EXPECT_EQ(tree(), Tree());
}

} // namespace
