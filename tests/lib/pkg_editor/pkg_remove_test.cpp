// SPDX-License-Identifier: Apache-2.0
#include "pkg_remove.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "package_fixture.h"

namespace {

using namespace zan::pkg;

class RemoveTest : public PackageTest {
  protected:
    static constexpr std::uint64_t any_size = 1 << 30;
    // Writes the package without these sections to "to".
    std::string remove(const std::unordered_set<std::string_view>& names,
                       std::uint64_t max_size = any_size) const {
        const Package pkg = open(ZAN_PKG_READ);
        const int to = ::open(dir.path("to").c_str(), O_RDWR | O_CREAT | O_TRUNC, 0666);
        const std::string failure = write_without(pkg.get(), names, to, max_size);
        ::close(to);
        return failure;
    }
    Bytes result() const { return read_file(dir.path("to")); }
    void shell(const std::string& line) const {
        ASSERT_EQ(std::system(("cd " + dir.path() + " && " + line).c_str()), 0) << line;
    }
};

TEST_F(RemoveTest, TheRestIsAsIfItHadNeverBeenThere) {
    make({{"a", "1"}, {"c", ""}, {"d", std::string(1000, 'd')}});
    const Bytes expected = read_file(path);
    std::filesystem::remove(path);
    make({{"a", "1"},
          {"secret", std::string(300, 'b')},
          {"c", ""},
          {"other", "x"},
          {"d", std::string(1000, 'd')}});
    EXPECT_EQ(remove({"secret", "other"}), "");
    EXPECT_TRUE(result() == expected);
    EXPECT_EQ(remove({}), "");
    EXPECT_TRUE(result() == read_file(path));
    EXPECT_EQ(remove({"a", "secret", "c", "other", "d", "none"}), "");
    std::filesystem::remove(path);
    make({});
    EXPECT_TRUE(result() == read_file(path));
}

TEST_F(RemoveTest, AllSectionsOfANameGo) {
    make({{"a", "1"}, {"b", "22"}, {"c", "3"}});
    change_header(first_index + 1, [&](Elf32_Shdr& header) { header.sh_name = 12; }); // the place of "a"
    EXPECT_EQ(names(), "a\na\nc");
    EXPECT_EQ(remove({"a"}), "");
    write_file(path, result());
    EXPECT_EQ(names(), "c");
}

TEST_F(RemoveTest, WhatIsNotRemovedKeepsItsHeader) {
    make({{"a", "1"}, {"b", "22"}, {"c", "3"}});
    change_header(first_index + 1, [&](Elf32_Shdr& header) {
        header.sh_type = SHT_NOTE;
        header.sh_flags = SHF_ALLOC;
        header.sh_addr = 0x1000;
        header.sh_entsize = 2;
        header.sh_addralign = 512;
    });
    change_header(first_index + 2, [&](Elf32_Shdr& header) {
        header.sh_type = SHT_NOBITS;
        header.sh_size = 1 << 20;
    });
    EXPECT_EQ(remove({"a"}), "");
    write_file(path, result());
    const Elf32_Shdr note = header(result(), first_index);
    EXPECT_EQ(note.sh_type, SHT_NOTE);
    EXPECT_EQ(note.sh_flags, unsigned{SHF_ALLOC});
    EXPECT_EQ(note.sh_addr, 0x1000u);
    EXPECT_EQ(note.sh_entsize, 2u);
    EXPECT_EQ(note.sh_addralign, 512u);
    EXPECT_EQ(note.sh_offset % 512, 0u);
    EXPECT_EQ(section("b"), "22");
    EXPECT_EQ(header(result(), first_index + 1).sh_type, SHT_NOBITS);
    EXPECT_EQ(header(result(), first_index + 1).sh_size, 1u << 20);
    EXPECT_LT(result().size(), 10000u);
}

TEST_F(RemoveTest, WhatObjcopyHasWrittenIsReadWithoutASection) {
    make({{"a", "1"}, {"b", "22"}});
    shell("objcopy --add-section c=/proc/version design.zanx changed && mv changed design.zanx");
    EXPECT_EQ(remove({"b"}), "");
    shell("readelf -S to > list 2> faults");
    EXPECT_EQ(read_file(dir.path("faults")), "");
    const Bytes version = section("c");
    write_file(path, result());
    EXPECT_EQ(section("a"), "1");
    EXPECT_EQ(section("b"), "(none)");
    EXPECT_EQ(section("c"), version);
}

TEST_F(RemoveTest, ASectionWhoseNameIsNotInTheTableLosesIt) {
    make({{"a", "1"}, {"b", "22"}, {"c", "3"}});
    change_header(first_index + 1, [&](Elf32_Shdr& header) { header.sh_name = 100000; });
    EXPECT_EQ(remove({"a"}), "");
    EXPECT_EQ(header(result(), first_index).sh_name, 0u);
    EXPECT_EQ(header(result(), first_index).sh_size, 2u);
    write_file(path, result());
    EXPECT_EQ(names(), "c");
}

TEST_F(RemoveTest, WhatCannotBeWrittenWithoutASectionIsReported) {
    make({{"a", "1"}, {"b", "22"}});
    EXPECT_EQ(remove({"a"}, 100).substr(0, 30), "the gaps between its sections ");
    EXPECT_EQ(result(), "");
    const Bytes whole = read_file(path);
    change_header(first_index + 1, [&](Elf32_Shdr& header) { header.sh_link = 1; });
    EXPECT_EQ(remove({"a"}), "section 'b' refers to other sections by their numbers");
    EXPECT_EQ(remove({"b"}), "");
    write_file(path, whole);
    change_header(first_index + 1, [&](Elf32_Shdr& header) { header.sh_flags |= SHF_INFO_LINK; });
    EXPECT_EQ(remove({"a"}), "section 'b' refers to other sections by their numbers");
    write_file(path, whole);
    change_header(first_index + 1, [&](Elf32_Shdr& header) { header.sh_addralign = 3; });
    EXPECT_EQ(remove({"a"}), "invalid section alignment");
    write_file(path, whole);
    change_header(first_index + 1, [&](Elf32_Shdr& header) { header.sh_size = 1 << 20; });
    EXPECT_NE(remove({"a"}), "");
    EXPECT_EQ(remove({"b"}), "");
}

} // namespace
