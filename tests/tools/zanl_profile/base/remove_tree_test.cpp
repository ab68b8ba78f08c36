// SPDX-License-Identifier: Apache-2.0
#include "remove_tree.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "temp_dir.h"
#include "whole_file.h"

namespace {

using zan::tool::remove_tree;
namespace fs = std::filesystem;

TEST(RemoveTree, RemovesAFile) {
    const TempDir dir;
    write_file(dir.path("f"), "1");
    remove_tree(dir.path("f").c_str());
    remove_tree(dir.path("none").c_str());
    EXPECT_TRUE(fs::is_empty(dir.path()));
}

// More entries than one read of a folder returns, at two levels, and empty folders among them.
TEST(RemoveTree, RemovesFoldersWithAllInThem) {
    const TempDir dir;
    for (int i = 0; i < 300; ++i) {
        const std::string folder = dir.path("t/" + std::to_string(i));
        fs::create_directories(folder);
        for (int j = 0; j < i % 7; ++j)
            write_file(folder + "/" + std::to_string(j), "1");
    }
    remove_tree(dir.path("t").c_str());
    EXPECT_TRUE(fs::is_empty(dir.path()));
}

TEST(RemoveTree, TakesAnyDepth) {
    const TempDir dir;
    const fs::path before = fs::current_path();
    fs::create_directory(dir.path("t"));
    fs::current_path(dir.path("t"));
    // More levels than a process usually has files open at most, and a path longer than the system takes.
    for (int i = 0; i < 1100; ++i) {
        fs::create_directory("dddd");
        fs::current_path("dddd");
    }
    fs::current_path(before);
    remove_tree(dir.path("t").c_str());
    EXPECT_TRUE(fs::is_empty(dir.path()));
}

TEST(RemoveTree, DoesNotFollowLinks) {
    const TempDir dir;
    fs::create_directories(dir.path("other"));
    write_file(dir.path("other/f"), "1");
    fs::create_directories(dir.path("t"));
    fs::create_directory_symlink("../other", dir.path("t/link"));
    remove_tree(dir.path("t").c_str());
    EXPECT_FALSE(fs::exists(dir.path("t")));
    EXPECT_EQ(read_file(dir.path("other/f")), "1");
    fs::create_directory_symlink("other", dir.path("link"));
    remove_tree(dir.path("link").c_str());
    EXPECT_FALSE(fs::is_symlink(dir.path("link")));
    EXPECT_EQ(read_file(dir.path("other/f")), "1");
}

// The attribute would take a privilege; a folder that is a mount point stays as well.
TEST(RemoveTree, EndsWhereSomethingCannotBeRemoved) {
    remove_tree("/proc/self/fd");
    EXPECT_TRUE(fs::exists("/proc/self/fd"));
}

} // namespace
