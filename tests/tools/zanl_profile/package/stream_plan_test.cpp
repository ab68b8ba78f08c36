// SPDX-License-Identifier: Apache-2.0
#include "stream_plan.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "failure.h"
#include "temp_dir.h"
#include "whole_file.h"

namespace {

using namespace zan::tool;
namespace fs = std::filesystem;

class StreamPlan : public testing::Test {
  protected:
    void write(const std::string& name, const std::string& bytes) const {
        fs::create_directories(fs::path(dir.path(name)).parent_path());
        write_file(dir.path(name), bytes);
    }
    std::vector<PlannedEntry> plan(const std::vector<std::string>& paths,
                                   const std::string& output = "") const {
        return plan_stream(paths, dir.path(), output.empty() ? "" : dir.path(output));
    }
    // Names of the entries, folders with a slash at the end.
    std::vector<std::string> names(const std::vector<std::string>& paths) const {
        std::vector<std::string> found;
        for (const PlannedEntry& entry : plan(paths))
            found.push_back(entry.name + (entry.is_folder ? "/" : ""));
        return found;
    }
    std::string failure(const std::vector<std::string>& paths, const std::string& output = "") const {
        try {
            plan(paths, output);
        } catch (const Failure& failure) {
            return failure.what();
        }
        return "(none)";
    }
    std::string quoted(const std::string& name) const { return "'" + dir.path(name) + "'"; }

    using Names = std::vector<std::string>;
    const TempDir dir;
};

TEST_F(StreamPlan, AFolderComesBeforeItsContentsInTheOrderOfNames) {
    write("t/b", "1");
    write("t/a/x", "");
    write("t/a.txt", "");
    fs::create_directory(dir.path("t/empty"));
    EXPECT_EQ(names({"t"}), (Names{"t/", "t/a/", "t/a/x", "t/a.txt", "t/b", "t/empty/"}));
}

TEST_F(StreamPlan, AnEntryHasItsPlaceModeAndSize) {
    write("t/f", "12345");
    fs::permissions(dir.path("t/f"), fs::perms(0640));
    const std::vector<PlannedEntry> entries = plan({"t/f"});
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_TRUE(entries[0].is_folder);
    EXPECT_EQ(entries[0].path, dir.path("t"));
    EXPECT_EQ(entries[0].name, "t");
    EXPECT_EQ(entries[0].mode, 0u);
    EXPECT_EQ(entries[0].size, 0u);
    EXPECT_FALSE(entries[1].is_folder);
    EXPECT_EQ(entries[1].path, dir.path("t/f"));
    EXPECT_EQ(entries[1].name, "t/f");
    EXPECT_EQ(entries[1].mode, 0100640u);
    EXPECT_EQ(entries[1].size, 5u);
}

TEST_F(StreamPlan, NamesAreRelativeWithoutDotsAndRepeatedFolders) {
    write("a/b/f", "");
    EXPECT_EQ(names({"./a//b/f"}), (Names{"a/", "a/b/", "a/b/f"}));
    EXPECT_EQ(names({"a/b/../b/f", "a/b"}), (Names{"a/", "a/b/", "a/b/f", "a/b/f"}));
    EXPECT_EQ(names({"."}), (Names{"a/", "a/b/", "a/b/f"}));
    // A path from the root isn't taken from the folder.
    const Names from_root = names({dir.path("a/b/f")});
    EXPECT_EQ(from_root.back(), dir.path("a/b/f").substr(1));
    EXPECT_EQ(failure({"../x"}), "can't pack '../x': a name in a stream can't have '..'; see --directory");
}

TEST_F(StreamPlan, LinksCountAsWhatTheyPointTo) {
    write("t/f", "123");
    fs::create_symlink("f", dir.path("t/link"));
    fs::create_directory_symlink("t", dir.path("u"));
    EXPECT_EQ(names({"u"}), (Names{"u/", "u/f", "u/link"}));
    EXPECT_EQ(plan({"t/link"}).back().size, 3u);
}

TEST_F(StreamPlan, AWalkInACircleIsRefused) {
    fs::create_directories(dir.path("t/d"));
    fs::create_directory_symlink("..", dir.path("t/d/up"));
    EXPECT_EQ(failure({"t"}), "can't pack " + quoted("t/d/up") + ": it leads back to a folder that it is in");
    // A folder may come twice where it isn't inside itself.
    fs::remove(dir.path("t/d/up"));
    fs::create_directory_symlink("d", dir.path("t/e"));
    EXPECT_EQ(names({"t"}), (Names{"t/", "t/d/", "t/e/"}));
}

TEST_F(StreamPlan, TheFolderOfTheOutputIsRefused) {
    fs::create_directories(dir.path("t/d"));
    EXPECT_EQ(failure({"t"}, "s"), "(none)");
    EXPECT_EQ(failure({"t"}, "t/d/s"),
              "can't pack " + quoted("t/d") + ": the output, " + quoted("t/d/s") + ", is in it");
    EXPECT_EQ(failure({"t"}, "none/s"), "(none)"); // which fails later, when it is made
}

TEST_F(StreamPlan, NamesAndSizesHaveTheLimitsOfTheFormat) {
    fs::create_directory(dir.path("t"));
    write("t/f", "");
    fs::resize_file(dir.path("t/f"), 0xFFFFFFFF);
    EXPECT_EQ(plan({"t/f"}).back().size, 0xFFFFFFFFu);
    fs::resize_file(dir.path("t/f"), 0x100000000);
    EXPECT_EQ(failure({"t"}),
              "can't pack " + quoted("t/f") +
                  ": it has 4294967296 bytes, and a stream holds files of at most 4294967295");
}

// No path is so long, but what a user writes may be: 4,097 letters with a slash between each two are 8,193
// bytes.
TEST_F(StreamPlan, ANameThatIsTooLongIsReportedBeforeItsFoldersAreLookedAt) {
    std::string name = "a";
    for (int i = 1; i < 4097; ++i)
        name += "/a";
    EXPECT_EQ(name.size(), 8193u);
    EXPECT_EQ(failure({name + "/f"}),
              "can't pack " + quoted(name) + ": a name in a stream has at most 8191 bytes");
    EXPECT_EQ(failure({name.substr(2) + "/f"}),
              "can't read " + quoted(name.substr(2) + "/f") + ": File name too long");
}

TEST_F(StreamPlan, WhatIsNotThereFails) {
    EXPECT_EQ(failure({"none"}), "can't read " + quoted("none") + ": No such file or directory");
    fs::create_symlink("nowhere", dir.path("link"));
    EXPECT_EQ(failure({"link"}), "can't read " + quoted("link") + ": No such file or directory");
    EXPECT_EQ(failure({"/dev/null"}), "can't pack '/dev/null': it is neither a file nor a folder");
}

} // namespace
