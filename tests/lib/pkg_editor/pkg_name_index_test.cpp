// SPDX-License-Identifier: Apache-2.0
#include "pkg_name_index.h"

#include "package_fixture.h"

namespace {

using zan::pkg::NameIndex;

TEST(NameIndexTest, OfTwoSectionsOfANameTheFirstIsFound) {
    alignas(8) char places[3][8]; // sections are only pointed to
    Elf_Scn* const sections[] = {reinterpret_cast<Elf_Scn*>(places[0]), reinterpret_cast<Elf_Scn*>(places[1]),
                                 reinterpret_cast<Elf_Scn*>(places[2])};
    NameIndex index;
    index.add("a", sections[0]);
    index.add("", sections[1]);
    index.add("a", sections[2]);
    EXPECT_EQ(index.find("a"), sections[0]);
    EXPECT_EQ(index.find(""), sections[1]);
    EXPECT_EQ(index.find("b"), nullptr);
}

class NamesOfEditedPackage : public PackageTest {
  protected:
    void SetUp() override { make({{"a", "1"}, {"bb", "22"}}); }
};

// A package that is edited finds sections by the index, and one that is read by their headers.
TEST_F(NamesOfEditedPackage, WhatWasAddedIsFoundAndNamesStayUnique) {
    const Package pkg = open(ZAN_PKG_READ_WRITE);
    EXPECT_EQ(section(pkg.get(), "c"), "(none)");
    EXPECT_EQ(zan_pkg_add_data_section(pkg.get(), "c", "333", 3), 1);
    EXPECT_EQ(section(pkg.get(), "c"), "333");
    EXPECT_EQ(section(pkg.get(), "bb"), "22");
    EXPECT_EQ(section(pkg.get(), "b"), "(none)"); // the end of a name is no name of its section
    for (const char* taken : {"a", "bb", "c", "", ".shstrtab"})
        EXPECT_EQ(zan_pkg_add_data_section(pkg.get(), taken, "4", 1), 0) << taken;
}

// The table holds a NUL, ".shstrtab", an empty name, "a" at 12 and "bb" at 14. Names begin where headers say,
// so another table changes them.
TEST_F(NamesOfEditedPackage, NewBytesForTheTableAreNewNames) {
    const Package pkg = open(ZAN_PKG_READ_WRITE);
    EXPECT_EQ(section(pkg.get(), "a"), "1");
    const Bytes table("\0.shstrtab\0\0x\0yy\0", 17);
    EXPECT_EQ(zan_pkg_update_section(pkg.get(), ".shstrtab", table.data(), table.size()), 1);
    EXPECT_EQ(section(pkg.get(), "a"), "(none)");
    EXPECT_EQ(section(pkg.get(), "x"), "1");
    EXPECT_EQ(section(pkg.get(), "yy"), "22");
}

// A name that is too long leaves a section without a name, which takes none.
TEST_F(NamesOfEditedPackage, ASectionThatCouldNotBeNamedIsNotFound) {
    const Package pkg = open(ZAN_PKG_READ_WRITE);
    const std::string long_name(4097, 'n');
    EXPECT_EQ(zan_pkg_add_data_section(pkg.get(), long_name.c_str(), "4", 1), 0);
    EXPECT_EQ(section(pkg.get(), long_name), "(none)");
    EXPECT_EQ(names(pkg.get()), "a\nbb");
}

} // namespace
