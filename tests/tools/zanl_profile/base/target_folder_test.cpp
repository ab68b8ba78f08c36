// SPDX-License-Identifier: Apache-2.0
#include "target_folder.h"

#include <gtest/gtest.h>

#include <filesystem>

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

class TargetFolderTest : public testing::Test {
  protected:
    std::string check(const std::string& name, bool is_folder) const {
        try {
            TargetFolder(dir.path("to")).check(name, is_folder);
        } catch (const Failure& failure) {
            return failure.what();
        }
        return "";
    }

    const TempDir dir;
};

TEST_F(TargetFolderTest, EntriesMayTakeThePlaceOfTheirOwnKind) {
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

TEST_F(TargetFolderTest, NoEntryPassesThroughALink) {
    fs::create_directories(dir.path("to"));
    fs::create_directory_symlink("..", dir.path("to/link"));
    fs::create_symlink("nowhere", dir.path("to/broken"));
    const std::string to = "'" + dir.path("to");
    EXPECT_EQ(check("link/f", false), "refused the name 'link/f': " + to + "/link' is a symbolic link");
    EXPECT_EQ(check("link", true), "refused the name 'link': " + to + "/link' is a symbolic link");
    EXPECT_EQ(check("broken", false), "refused the name 'broken': " + to + "/broken' is a symbolic link");
}

// The way to an entry is looked at from where the last one was.
TEST_F(TargetFolderTest, EachEntryIsCheckedOnItsOwn) {
    fs::create_directories(dir.path("to/a/b"));
    fs::create_directory_symlink("b", dir.path("to/a/link"));
    write_file(dir.path("to/a/file"), "");
    TargetFolder target(dir.path("to"));
    EXPECT_TRUE(target.check("a/b", true));
    EXPECT_FALSE(target.check("a/b/f", false));
    EXPECT_FALSE(target.check("a/b/new/f", false));
    EXPECT_THROW(target.check("a/b", false), Failure); // the folder that it has just been in
    EXPECT_THROW(target.check("a/link/f", false), Failure);
    EXPECT_TRUE(target.check("a/file", false));
    EXPECT_THROW(target.check("a/file/f", false), Failure);
    EXPECT_FALSE(target.check("f", false));
    EXPECT_TRUE(target.check("./a//b/", true));
    EXPECT_TRUE(target.check(".", true));
}

TEST_F(TargetFolderTest, AFolderThatIsNoneHasNothingInTheWay) {
    write_file(dir.path("file"), "");
    EXPECT_FALSE(TargetFolder(dir.path("none")).check("a/b", false));
    EXPECT_FALSE(TargetFolder(dir.path("file")).check("a/b", false));
    EXPECT_FALSE(TargetFolder(dir.path("none")).check(".", true));
}

} // namespace
