// SPDX-License-Identifier: Apache-2.0
#include "package_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include "failure.h"
#include "make_package.h"
#include "temp_dir.h"
#include "whole_file.h"

namespace {

using namespace zan::tool;

std::string text_of_bytes(const FileBytes& bytes) {
    return {bytes.data(), bytes.size()};
}

class PackageFileTest : public testing::Test {
  protected:
    PackageFileTest() { make_package(path, {{"a", "12345"}, {"empty", ""}, {"b", "67"}}); }

    const TempDir dir;
    const std::string path = dir.path("p.zanx");
};

TEST_F(PackageFileTest, FindsSections) {
    const PackageFile package(path);
    ASSERT_EQ(package.sections().size(), 3u);
    EXPECT_EQ(package.sections()[2].name, "b");
    EXPECT_EQ(package.section("a").size, 5u);
    EXPECT_EQ(package.section("b").size, 2u);
}

TEST_F(PackageFileTest, AMissingSectionIsANo) {
    const PackageFile package(path, "the package");
    try {
        package.section("none");
        ADD_FAILURE();
    } catch (const Failure& failure) {
        EXPECT_STREQ(failure.what(), "'the package' has no section 'none'");
        EXPECT_EQ(failure.status(), status_no);
    }
    EXPECT_THROW(package.sections_named({"a", "none"}), Failure);
}

TEST_F(PackageFileTest, SectionsComeInTheOrderOfTheirNamesOrAllOfThem) {
    const PackageFile package(path);
    const auto some = package.sections_named({"b", "a", "b"});
    ASSERT_EQ(some.size(), 3u);
    EXPECT_EQ(some[0]->name, "b");
    EXPECT_EQ(some[1]->name, "a");
    EXPECT_EQ(some[2]->name, "b");
    EXPECT_EQ(package.sections_named({}).size(), 3u);
}

TEST_F(PackageFileTest, ReadsAndCopiesBytes) {
    const PackageFile package(path);
    EXPECT_EQ(text_of_bytes(package.bytes(package.section("a"))), "12345");
    EXPECT_EQ(package.bytes(package.section("empty")).size(), 0u);
    EXPECT_EQ(text_of_bytes(package.first_bytes(package.section("a"), 3)), "123");
    EXPECT_EQ(text_of_bytes(package.first_bytes(package.section("a"), 9)), "12345");
    {
        const Descriptor to(::open(dir.path("to").c_str(), O_WRONLY | O_CREAT, 0600));
        package.copy(package.section("b"), to.get(), "to");
    }
    EXPECT_EQ(read_file(dir.path("to")), "67");
    {
        const Descriptor to(::open(dir.path("whole").c_str(), O_WRONLY | O_CREAT, 0600));
        EXPECT_EQ(package.copy_file(to.get(), "whole"), read_file(path).size());
    }
    EXPECT_TRUE(read_file(dir.path("whole")) == read_file(path));
}

TEST_F(PackageFileTest, OtherFilesAreNoPackages) {
    write_file(dir.path("text"), "no package");
    EXPECT_THROW(PackageFile(dir.path("text")), Failure);
    EXPECT_THROW(PackageFile(dir.path("none")), Failure);
    EXPECT_THROW(PackageFile(dir.path()), Failure);
}

} // namespace
