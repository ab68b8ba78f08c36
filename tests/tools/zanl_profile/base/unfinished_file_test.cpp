// SPDX-License-Identifier: Apache-2.0
#include "unfinished_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "failure.h"
#include "temp_dir.h"
#include "whole_file.h"

namespace {

using namespace zan::tool;
namespace fs = std::filesystem;

class UnfinishedFileTest : public testing::Test {
  protected:
    // The text of the Failure that making a file of that name must end with.
    std::string refusal(const std::string& name) const {
        try {
            const UnfinishedFile file(name);
        } catch (const Failure& failure) {
            return failure.what();
        }
        return "(none)";
    }

    const TempDir dir;
};

TEST_F(UnfinishedFileTest, AppearsWhenItIsWhole) {
    write_file(dir.path("f"), "old");
    fs::permissions(dir.path("f"), fs::perms(0640));
    {
        UnfinishedFile file(dir.path("f"));
        write_all(file.fd(), "new", 3, "f");
        file.sync();
        EXPECT_EQ(read_file(dir.path("f")), "old");
        EXPECT_EQ(read_file(file.path()), "new");
        file.commit();
    }
    EXPECT_EQ(read_file(dir.path("f")), "new");
    EXPECT_EQ(fs::status(dir.path("f")).permissions(), fs::perms(0640));
}

TEST_F(UnfinishedFileTest, ThatIsGivenUpLeavesNothing) {
    {
        UnfinishedFile file(dir.path("f"));
        write_all(file.fd(), "new", 3, "f");
        EXPECT_EQ(read_file(file.path()), "new");
    }
    EXPECT_TRUE(fs::is_empty(dir.path()));
}

TEST_F(UnfinishedFileTest, FollowsALink) {
    write_file(dir.path("f"), "old");
    fs::create_symlink("f", dir.path("link"));
    UnfinishedFile file(dir.path("link"));
    write_all(file.fd(), "new", 3, "f");
    file.commit();
    EXPECT_TRUE(fs::is_symlink(dir.path("link")));
    EXPECT_EQ(read_file(dir.path("f")), "new");
}

TEST_F(UnfinishedFileTest, ReplacesFilesAlone) {
    EXPECT_EQ(refusal(dir.path()), "can't write '" + dir.path() + "': it is not a file");
    EXPECT_EQ(refusal(dir.path("none/f")),
              "can't write '" + dir.path("none/f") + "': No such file or directory");
    fs::create_symlink("loop", dir.path("loop"));
    EXPECT_EQ(refusal(dir.path("loop")),
              "can't write '" + dir.path("loop") + "': Too many levels of symbolic links");
}

// File systems that have no files without a name are rare; the tests of faults have one.
TEST_F(UnfinishedFileTest, HasNoNameBeforeItIsWhole) {
    write_file(dir.path("old"), "old");
    UnfinishedFile fresh(dir.path("f")), replacing(dir.path("old"));
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.path()), {}), 1);
    fresh.commit();
    replacing.commit();
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.path()), {}), 2);
    EXPECT_EQ(read_file(dir.path("old")), "");
}

TEST_F(UnfinishedFileTest, ReplacesAFileThatHasComeMeanwhile) {
    UnfinishedFile file(dir.path("f"));
    write_all(file.fd(), "new", 3, "f");
    write_file(dir.path("f"), "another");
    file.commit();
    EXPECT_EQ(read_file(dir.path("f")), "new");
}

TEST_F(UnfinishedFileTest, ANewFileHasThePermissionsOfTheUsersMask) {
    const mode_t before = ::umask(027);
    UnfinishedFile(dir.path("f")).commit();
    ::umask(before);
    EXPECT_EQ(fs::status(dir.path("f")).permissions(), fs::perms(0640));
}

} // namespace
