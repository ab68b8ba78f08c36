// SPDX-License-Identifier: Apache-2.0
// The bytes of packages that this library makes, and packages of many sections or many edits.
#include <fcntl.h>
#include <libelf.h>
#include <unistd.h>

#include "package_fixture.h"
#include "pkg_handle.h"

namespace {

class LayoutTest : public PackageTest {};

TEST_F(LayoutTest, TheHeaderSaysWhatAPackageIs) {
    make({{"a", "1"}});
    const auto header = get<Elf32_Ehdr>(read_file(path), 0);
    EXPECT_EQ(Bytes(reinterpret_cast<const char*>(header.e_ident), 4),
              "\x7F"
              "ELF");
    EXPECT_EQ(header.e_ident[EI_CLASS], 1); // 32 bits
    EXPECT_EQ(header.e_ident[EI_DATA], 1);  // little-endian
    EXPECT_EQ(header.e_type, 0);
    EXPECT_EQ(header.e_machine, 62);
    EXPECT_EQ(header.e_shnum, 4); // null, names, the hidden one, "a"
    EXPECT_EQ(header.e_shstrndx, 1);
}

TEST_F(LayoutTest, TheNameTableIsTheFirstSection) {
    make({{"a", "1"}});
    const Bytes file = read_file(path);
    const Elf32_Shdr table = header(file, name_table_index);
    EXPECT_EQ(table.sh_name, 1u);
    EXPECT_EQ(table.sh_type, 3u);
    EXPECT_EQ(table.sh_flags, 32u);
    EXPECT_EQ(table.sh_entsize, 0u);
    EXPECT_EQ(table.sh_addralign, 128u);
    EXPECT_EQ(table.sh_offset % 128, 0u);
    // A NUL, the table's own name, the empty name of the hidden section, and "a".
    EXPECT_EQ(file.substr(table.sh_offset, table.sh_size), Bytes("\0.shstrtab\0\0a\0", 14));
    EXPECT_EQ(header(file, 0).sh_link, 0u);
}

TEST_F(LayoutTest, TheHiddenSectionHasNoNameAnd4096Zeros) {
    make({});
    const Bytes file = read_file(path);
    const Elf32_Shdr hidden = header(file, hidden_index);
    EXPECT_EQ(hidden.sh_name, 11u);
    EXPECT_EQ(hidden.sh_type, 1u);
    EXPECT_EQ(file.substr(hidden.sh_offset, hidden.sh_size), Bytes(4096, '\0'));
}

TEST_F(LayoutTest, ADataSectionIsPlainAndAligned) {
    make({{"a", "one"}, {"b", "two"}});
    const Bytes file = read_file(path);
    for (std::size_t i = first_index; i < first_index + 2; ++i) {
        const Elf32_Shdr data = header(file, i);
        EXPECT_EQ(data.sh_name, 12 + 2 * (i - first_index));
        EXPECT_EQ(data.sh_type, 1u);
        EXPECT_EQ(data.sh_flags, 0u);
        EXPECT_EQ(data.sh_entsize, 0u);
        EXPECT_EQ(data.sh_addralign, 128u);
        EXPECT_EQ(data.sh_offset % 128, 0u);
        EXPECT_EQ(file.substr(data.sh_offset, data.sh_size), i == first_index ? "one" : "two");
    }
}

TEST_F(LayoutTest, TenThousandSectionsAreAllReadBack) {
    constexpr std::size_t count = 10000;
    std::vector<std::string> contents;
    std::string all_names;
    for (std::size_t i = 0; i < count; ++i) {
        contents.push_back("content " + std::to_string(i));
        all_names += (i == 0 ? "s" : "\ns") + std::to_string(i);
    }
    {
        const Package pkg = open(create_mode);
        for (std::size_t i = 0; i < count; ++i)
            ASSERT_EQ(zan_pkg_add_data_section(pkg.get(), ("s" + std::to_string(i)).c_str(),
                                               contents[i].data(), contents[i].size()),
                      1);
    }
    const Package pkg = open(ZAN_PKG_READ);
    for (std::size_t i = 0; i < count; ++i)
        ASSERT_EQ(section(pkg.get(), "s" + std::to_string(i)), contents[i]);
    EXPECT_EQ(names(pkg.get()), all_names);
}

// Makes a package of `count` sections and then a name table, by the ELF library itself.
void make_large_package(const std::string& path, std::size_t count) {
    ::elf_version(EV_CURRENT);
    const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC, 0666);
    Elf* elf = ::elf_begin(fd, ELF_C_WRITE, nullptr);
    Elf32_Ehdr* header = ::elf32_newehdr(elf);
    header->e_ident[EI_DATA] = ELFDATA2LSB;
    header->e_machine = EM_X86_64;
    std::string names(1, '\0');
    static char content[] = "c";
    const auto add = [&](const std::string& name, unsigned type, char* bytes, std::size_t size) {
        Elf_Scn* made = ::elf_newscn(elf);
        zan::pkg::describe_bytes(::elf_newdata(made), bytes, size);
        ::elf32_getshdr(made)->sh_type = type;
        ::elf32_getshdr(made)->sh_name = static_cast<Elf32_Word>(names.size());
        names += name + '\0';
        return made;
    };
    for (std::size_t i = 0; i < count; ++i)
        add("s" + std::to_string(i), SHT_PROGBITS, content, 1);
    Elf_Scn* table = add(".shstrtab", SHT_STRTAB, nullptr, 0);
    zan::pkg::describe_bytes(::elf_getdata(table, nullptr), names.data(), names.size());
    header->e_shstrndx = SHN_XINDEX;
    ::elf32_getshdr(::elf_getscn(elf, 0))->sh_link = static_cast<Elf32_Word>(::elf_ndxscn(table));
    ASSERT_GE(::elf_update(elf, ELF_C_WRITE), 0);
    ::elf_end(elf);
    ::close(fd);
}

TEST_F(LayoutTest, ANameTableBeyondSection65280IsFoundAndGrows) {
    constexpr std::size_t count = 65300;
    make_large_package(path, count);
    ASSERT_EQ(get<Elf32_Ehdr>(read_file(path), 0).e_shstrndx, 0xFFFF);
    {
        const Package pkg = open(ZAN_PKG_READ_WRITE);
        EXPECT_EQ(section(pkg.get(), "s65299"), "c");
        EXPECT_EQ(zan_pkg_add_data_section(pkg.get(), "added", "new", 3), 1);
        EXPECT_EQ(zan_pkg_update_section(pkg.get(), "s65299", "changed", 7), 1);
    }
    const Package pkg = open(ZAN_PKG_READ);
    EXPECT_EQ(section(pkg.get(), "s0"), "c");
    EXPECT_EQ(section(pkg.get(), "s65299"), "changed");
    EXPECT_EQ(section(pkg.get(), "added"), "new");
}

TEST_F(LayoutTest, AHundredEditsLeaveTheOtherContentsAlone) {
    const Bytes big(5000, 'b');
    make({{"kept", "k"}, {"big", big}, {"changed", ""}});
    for (int round = 0; round < 100; ++round) {
        const Bytes content(static_cast<std::size_t>(round * 37 % 500), 'c');
        const std::string added = "added" + std::to_string(round);
        {
            const Package pkg = open(ZAN_PKG_READ_WRITE);
            ASSERT_EQ(zan_pkg_update_section(pkg.get(), "changed", content.data(), content.size()), 1);
            ASSERT_EQ(zan_pkg_add_data_section(pkg.get(), added.c_str(), added.data(), added.size()), 1);
        }
        const Package pkg = open(ZAN_PKG_READ);
        ASSERT_EQ(section(pkg.get(), "kept"), "k");
        ASSERT_EQ(section(pkg.get(), "big"), big);
        ASSERT_EQ(section(pkg.get(), "changed"), content);
        for (int i = 0; i <= round; ++i)
            ASSERT_EQ(section(pkg.get(), "added" + std::to_string(i)), "added" + std::to_string(i));
    }
}

TEST_F(LayoutTest, OpeningForWritingAndClosingChangesNothing) {
    make({{"a", "1"}});
    const Bytes before = read_file(path);
    for (int i = 0; i < 100; ++i)
        open(ZAN_PKG_READ_WRITE);
    EXPECT_TRUE(read_file(path) == before);
}

TEST_F(LayoutTest, TwoHandlesOnOneFileAreIndependent) {
    make({{"a", "1"}});
    const Package reader = open(ZAN_PKG_READ);
    const Package other_reader = open(ZAN_PKG_READ);
    EXPECT_EQ(section(reader.get(), "a"), "1");
    EXPECT_EQ(section(other_reader.get(), "a"), "1");
    {
        const Package writer = open(ZAN_PKG_READ_WRITE);
        EXPECT_EQ(zan_pkg_update_section(writer.get(), "a", "22", 2), 1);
        EXPECT_EQ(section(reader.get(), "a"), "1");
    }
    EXPECT_EQ(section("a"), "22");
}

} // namespace
