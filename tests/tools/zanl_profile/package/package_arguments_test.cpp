// SPDX-License-Identifier: Apache-2.0
#include "package_arguments.h"

#include <gtest/gtest.h>

#include "failure.h"
#include "temp_dir.h"
#include "whole_file.h"

namespace {

using namespace zan::tool;

TEST(NamedFiles, TheNameEndsAtTheFirstEqualsSign) {
    const std::vector<NamedFile> files = parse_named_files({"a=f", ".zan.version=b=c", "x=-"});
    ASSERT_EQ(files.size(), 3u);
    EXPECT_EQ(files[0].name, "a");
    EXPECT_EQ(files[0].file, "f");
    EXPECT_EQ(files[1].name, ".zan.version");
    EXPECT_EQ(files[1].file, "b=c");
    EXPECT_EQ(files[2].file, "-");
    EXPECT_TRUE(parse_named_files({}).empty());
}

TEST(NamedFiles, BothSidesAreNeeded) {
    for (const char* argument : {"", "a", "=", "a=", "=f"}) {
        try {
            parse_named_files({"good=f", argument});
            ADD_FAILURE() << argument;
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.what(),
                      "a section is given as NAME=FILE, not as '" + std::string(argument) + "'");
        }
    }
}

class SectionPlaces : public testing::Test {
  protected:
    // "package|section", or "(path)".
    static std::string place(const std::string& argument) {
        const auto found = parse_section_place(argument);
        return found ? found->package + "|" + found->section : "(path)";
    }

    const TempDir dir;
};

TEST_F(SectionPlaces, APackageIsKnownByItsEnding) {
    EXPECT_EQ(place("none.zanx:tree"), "none.zanx|tree");
    EXPECT_EQ(place("none.zanx:tree:1"), "none.zanx|tree:1");
    EXPECT_EQ(place("a:b.zanx:tree"), "a:b.zanx|tree");
    EXPECT_EQ(place("none.zanx:"), "none.zanx|");
}

TEST_F(SectionPlaces, APackageIsKnownAsAFileThatExists) {
    const std::string odd = dir.path("odd:name");
    write_file(odd, "");
    EXPECT_EQ(place(odd + ":tree"), odd + "|tree");
    EXPECT_EQ(place(dir.path("none") + ":tree"), "(path)");
    EXPECT_EQ(place(dir.path() + ":tree"), "(path)"); // a folder
}

TEST_F(SectionPlaces, APathThatExistsIsAPath) {
    EXPECT_EQ(place(dir.path()), "(path)");
    EXPECT_EQ(place("plain"), "(path)");
    const std::string file = dir.path("p.zanx:tree");
    EXPECT_EQ(place(file), dir.path("p.zanx") + "|tree");
    write_file(file, "");
    EXPECT_EQ(place(file), "(path)");
}

} // namespace
