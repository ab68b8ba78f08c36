// SPDX-License-Identifier: Apache-2.0
#include "open_folders.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

#include "failure.h"
#include "temp_dir.h"
#include "whole_file.h"

namespace {

using namespace zan::tool;
using testing::ElementsAre;
using testing::IsEmpty;
namespace fs = std::filesystem;

TEST(StepsOf, LeavesOutWhatIsNoStep) {
    EXPECT_THAT(steps_of("a"), ElementsAre("a"));
    EXPECT_THAT(steps_of("./a//b/./c/"), ElementsAre("a", "b", "c"));
    EXPECT_THAT(steps_of("/a/..b/.../.."), ElementsAre("a", "..b", "...", ".."));
    EXPECT_THAT(steps_of(""), IsEmpty());
    EXPECT_THAT(steps_of("./"), IsEmpty());
}

class OpenFoldersTest : public testing::Test {
  protected:
    Descriptor root() const { return Descriptor(::open(dir.path().c_str(), O_PATH | O_DIRECTORY)); }
    // Whether the place is this folder.
    bool is_at(OpenFolders& place, const std::string& path) const {
        struct stat here, there;
        return ::fstat(place.fd(), &here) == 0 && ::stat(dir.path(path).c_str(), &there) == 0 &&
               here.st_ino == there.st_ino && place.path() == path;
    }
    static std::size_t go(OpenFolders& place, const std::string& path) {
        return place.go_towards(steps_of(path));
    }
    const TempDir dir;
};

TEST_F(OpenFoldersTest, APlaceIsReachedStepByStep) {
    fs::create_directories(dir.path("a/b/c"));
    fs::create_directories(dir.path("a/d"));
    OpenFolders place(root());
    EXPECT_TRUE(is_at(place, ""));
    EXPECT_TRUE(place.enter("a"));
    EXPECT_TRUE(place.enter("b"));
    EXPECT_TRUE(is_at(place, "a/b"));
    EXPECT_EQ(place.name(), "b");
    EXPECT_EQ(go(place, "a/b/c"), 3u);
    EXPECT_TRUE(is_at(place, "a/b/c"));
    EXPECT_EQ(go(place, "a/d"), 2u);
    EXPECT_TRUE(is_at(place, "a/d"));
    EXPECT_EQ(place.leave(), "d");
    EXPECT_TRUE(is_at(place, "a"));
    place.go_to_root();
    EXPECT_TRUE(is_at(place, ""));
}

TEST_F(OpenFoldersTest, APlaceIsAsFarAsThereAreFolders) {
    fs::create_directories(dir.path("a/b/c/d"));
    write_file(dir.path("a/b/file"), "");
    fs::create_directory_symlink("c", dir.path("a/b/link"));
    OpenFolders place(root());
    for (const auto& [path, error] : {std::pair<const char*, int>{"a/b/none", ENOENT},
                                      {"a/b/none/x/y/z", ENOENT},
                                      {"a/b/file", ENOTDIR},
                                      {"a/b/file/x/y", ENOTDIR},
                                      {"a/b/link", ENOTDIR},
                                      {"a/b/link/d", ENOTDIR}}) {
        for (const char* from : {"", "a/b/c/d", "a"}) {
            EXPECT_EQ(go(place, from), steps_of(from).size());
            EXPECT_EQ(go(place, path), 2u) << path << " from " << from;
            EXPECT_EQ(errno, error) << path;
            EXPECT_TRUE(is_at(place, "a/b"));
        }
    }
    EXPECT_FALSE(place.enter("link"));
    EXPECT_FALSE(place.enter("file"));
    EXPECT_TRUE(is_at(place, "a/b"));
}

// 500 folders in folders are more than stay open.
TEST_F(OpenFoldersTest, AnyFolderAboveThePlaceIsReachedAgain) {
    std::string deep = "a";
    for (int i = 1; i < 500; ++i)
        deep += "/a";
    fs::create_directories(dir.path(deep));
    OpenFolders place(root());
    EXPECT_EQ(go(place, deep), 500u);
    for (std::size_t depth = 500; depth != 0; --depth) {
        ASSERT_TRUE(is_at(place, deep.substr(0, 2 * depth - 1))) << depth;
        EXPECT_EQ(place.leave(), "a");
    }
    for (std::size_t depth = 1; depth <= 500; ++depth)
        ASSERT_TRUE(place.enter("a"));
    EXPECT_TRUE(is_at(place, deep));
    for (const std::size_t depth : {499u, 400u, 100u, 3u, 300u}) {
        EXPECT_EQ(go(place, deep.substr(0, 2 * depth - 1)), depth);
        EXPECT_TRUE(is_at(place, deep.substr(0, 2 * depth - 1)));
    }
}

TEST_F(OpenFoldersTest, AFolderThatIsGoneIsNotReachedAgain) {
    std::string deep = "a";
    for (int i = 1; i < 300; ++i)
        deep += "/a";
    fs::create_directories(dir.path(deep));
    OpenFolders place(root());
    ASSERT_EQ(go(place, deep), 300u);
    fs::rename(dir.path("a"), dir.path("b"));
    EXPECT_GE(place.fd(), 0); // the folder itself is open
    place.leave();
    EXPECT_EQ(place.fd(), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_FALSE(place.enter("a"));
    EXPECT_EQ(place.depth(), 299u);
}

TEST_F(OpenFoldersTest, EntriesAreThoseOfTheFolder) {
    fs::create_directories(dir.path("d/folder"));
    write_file(dir.path("d/file"), "");
    fs::create_directory_symlink("folder", dir.path("d/link"));
    OpenFolders place(root());
    ASSERT_TRUE(place.enter("d"));
    std::vector<std::string> found;
    for (const FolderEntry& entry : entries_of(place.fd(), "d"))
        found.push_back(entry.name + (entry.is_folder ? "/" : ""));
    EXPECT_THAT(found, testing::UnorderedElementsAre("folder/", "file", "link"));
    EXPECT_THROW(entries_of(-1, "d"), Failure);
}

TEST_F(OpenFoldersTest, AWalkMeetsEachFolderAfterThoseInIt) {
    fs::create_directories(dir.path("a/b/c"));
    fs::create_directories(dir.path("a/d"));
    fs::create_directories(dir.path("skipped/e"));
    OpenFolders place(root());
    std::vector<std::string> visited, left;
    walk_folders(
        place,
        [&] {
            visited.push_back(place.path());
            std::vector<std::string> folders;
            for (const FolderEntry& entry : entries_of(place.fd(), "")) {
                if (entry.name != "skipped")
                    folders.push_back(entry.name);
            }
            return folders;
        },
        [&](const std::string& name) { left.push_back(place.path() + ">" + name); });
    EXPECT_THAT(visited, testing::UnorderedElementsAre("", "a", "a/b", "a/b/c", "a/d"));
    EXPECT_THAT(left, testing::UnorderedElementsAre("a/b>c", "a>b", "a>d", ">a"));
    EXPECT_EQ(left.back(), ">a");
    EXPECT_LT(std::ranges::find(left, "a/b>c"), std::ranges::find(left, "a>b"));
}

} // namespace
