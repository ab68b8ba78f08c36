// SPDX-License-Identifier: Apache-2.0
#include "lost_section.h"

#include <elf.h>
#include <gtest/gtest.h>

#include <cstring>

#include "make_package.h"
#include "temp_dir.h"
#include "whole_file.h"

namespace {

using zan::profile::loss_of;
using zan::profile::SectionLoss;

// Sets offset and type of the first section with a name of the package's own.
void change_first_section(const std::string& path, Elf32_Off offset, Elf32_Word type) {
    constexpr std::size_t own_sections = 3; // null, names, and the nameless one
    std::string bytes = read_file(path);
    Elf32_Ehdr header;
    std::memcpy(&header, bytes.data(), sizeof header);
    char* const place = bytes.data() + header.e_shoff + own_sections * sizeof(Elf32_Shdr);
    Elf32_Shdr section;
    std::memcpy(&section, place, sizeof section);
    section.sh_offset = offset;
    section.sh_type = type;
    std::memcpy(place, &section, sizeof section);
    write_file(path, bytes);
}

TEST(LostSection, OneThatThePackageDoesNotListIsAbsent) {
    const TempDir dir;
    make_package(dir.path("p.zanx"), {{"a", "1"}});
    EXPECT_EQ(loss_of(dir.path("p.zanx"), "b"), SectionLoss::absent);
    write_file(dir.path("text"), "no package");
    EXPECT_EQ(loss_of(dir.path("text"), "a"), SectionLoss::absent);
}

TEST(LostSection, OneWithASizeButNoContentsIsAbsent) {
    const TempDir dir;
    make_package(dir.path("p.zanx"), {{"a", "1"}});
    change_first_section(dir.path("p.zanx"), 0x1100, SHT_NOBITS);
    EXPECT_EQ(loss_of(dir.path("p.zanx"), "a"), SectionLoss::absent);
}

TEST(LostSection, OneWhoseBytesAreBeyondTheEndOfTheFileIsCut) {
    const TempDir dir;
    make_package(dir.path("p.zanx"), {{"a", "1"}});
    change_first_section(dir.path("p.zanx"), 1 << 20, SHT_PROGBITS);
    EXPECT_EQ(loss_of(dir.path("p.zanx"), "a"), SectionLoss::cut);
}

TEST(LostSection, OneThatIsThereOrAFileThatIsGoneCouldNotBeRead) {
    const TempDir dir;
    make_package(dir.path("p.zanx"), {{"a", "1"}});
    EXPECT_EQ(loss_of(dir.path("p.zanx"), "a"), SectionLoss::unreadable);
    EXPECT_EQ(loss_of(dir.path("none.zanx"), "a"), SectionLoss::unreadable);
}

} // namespace
