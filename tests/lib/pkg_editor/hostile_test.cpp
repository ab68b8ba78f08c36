// SPDX-License-Identifier: Apache-2.0
// Damaged packages: whatever they say, nothing is read outside them and every call comes back.
#include "package_fixture.h"

namespace {

class HostileTest : public PackageTest {
  protected:
    void SetUp() override {
        make({{"a", "one"}, {"b", "two"}});
        whole = read_file(path);
    }

    // Asks everything of a handle that can be asked. The sections that can be read are "a=one " and so on.
    static std::string ask(zan_pkg_file* pkg) {
        std::string answer;
        for (const char* name : {"a", "b", "", ".shstrtab"}) {
            const Bytes bytes = section(pkg, name);
            if (name[0] != 0 && name[0] != '.' && bytes != "(none)")
                answer += std::string(name) + "=" + bytes + " ";
            void* data = nullptr;
            zan_pkg_read_section_transient(pkg, name, &data);
            zan_pkg_read_section_into_file(pkg, name, "/dev/null");
        }
        names(pkg);
        return answer;
    }
    std::string ask_file(const Bytes& content) const {
        write_file(path, content);
        const Package pkg = open(ZAN_PKG_READ);
        EXPECT_NE(pkg, nullptr);
        return ask(pkg.get());
    }
    static std::string ask_memory(const Bytes& content) {
        // An allocation of just that size, so that the sanitizer sees a byte beyond it.
        const std::vector<char> exact(content.begin(), content.end());
        const Package pkg(zan_pkg_open_file_from_memory(exact.data(), exact.size(), 0));
        return pkg ? ask(pkg.get()) : "";
    }
    std::string ask_both(const Bytes& content) const {
        const std::string answer = ask_file(content);
        EXPECT_EQ(ask_memory(content), answer);
        return answer;
    }
    template <class Change>
    Bytes changed(std::size_t index, Change change) const {
        Bytes file = whole;
        Elf32_Shdr section_header = header(file, index);
        change(section_header);
        put(file, header_offset(file, index), section_header);
        return file;
    }
    template <class Change>
    Bytes changed_header(Change change) const {
        Bytes file = whole;
        auto file_header = get<Elf32_Ehdr>(file, 0);
        change(file_header);
        put(file, 0, file_header);
        return file;
    }

    Bytes whole;
};

TEST_F(HostileTest, TheWholePackageIsRead) {
    EXPECT_EQ(ask_both(whole), "a=one b=two ");
}

TEST_F(HostileTest, APackageCutAnywhereHasNoSections) {
    // The headers of the sections stand at the end, so any cut takes them away.
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const Bytes cut = whole.substr(0, size);
        ASSERT_EQ(ask_memory(cut), "") << size;
        if (size % 16 < 2 || size < 200) { // files are slower, and there are 4,500 of them
            ASSERT_EQ(ask_file(cut), "") << size;
        }
    }
}

TEST_F(HostileTest, WithoutANameTableThereAreNoNames) {
    for (const unsigned index : {0u, 0xFFFFu, 5u, 1000u, 0xFF00u})
        EXPECT_EQ(
            ask_both(changed_header([&](Elf32_Ehdr& h) { h.e_shstrndx = static_cast<Elf32_Half>(index); })),
            "")
            << index;
    EXPECT_EQ(ask_both(changed(name_table_index, [](Elf32_Shdr& h) { h.sh_type = SHT_NOBITS; })), "");
    EXPECT_EQ(ask_both(changed(name_table_index, [](Elf32_Shdr& h) { h.sh_size = 0; })), "");
    EXPECT_EQ(ask_both(changed(name_table_index, [](Elf32_Shdr& h) { h.sh_size = 0xFFFFFFFF; })), "");
    EXPECT_EQ(ask_both(changed(name_table_index, [](Elf32_Shdr& h) { h.sh_offset = 0xFFFFFF80; })), "");
}

// The table is 15 bytes: a NUL, ".shstrtab", an empty name, "a" at 12 and "b" at 14 with its NUL at 15.
TEST_F(HostileTest, ANameThatTheTableDoesNotEndIsNone) {
    EXPECT_EQ(ask_both(changed(name_table_index, [](Elf32_Shdr& h) { h.sh_size = 15; })), "a=one ");
    EXPECT_EQ(ask_both(changed(name_table_index, [](Elf32_Shdr& h) { h.sh_size = 14; })), "a=one ");
    EXPECT_EQ(ask_both(changed(name_table_index, [](Elf32_Shdr& h) { h.sh_size = 13; })), "");
}

TEST_F(HostileTest, ANameBeyondTheTableIsNone) {
    for (const unsigned offset : {16u, 17u, 4096u, 0x7FFFFFFFu, 0xFFFFFFFFu})
        EXPECT_EQ(ask_both(changed(first_index, [&](Elf32_Shdr& h) { h.sh_name = offset; })), "b=two ")
            << offset;
}

TEST_F(HostileTest, OtherBytesMayServeAsANameTable) {
    // The section "a" as the table: its bytes hold no NUL, so nothing has a name.
    EXPECT_EQ(ask_both(changed_header([](Elf32_Ehdr& h) { h.e_shstrndx = first_index; })), "");
}

TEST_F(HostileTest, ASectionBeyondTheFileIsNotThere) {
    EXPECT_EQ(ask_both(changed(first_index, [](Elf32_Shdr& h) { h.sh_size = 100000; })), "b=two ");
    EXPECT_EQ(ask_both(changed(first_index, [](Elf32_Shdr& h) { h.sh_offset = 0xFFFFFF00; })), "b=two ");
    EXPECT_EQ(ask_both(changed(first_index, [](Elf32_Shdr& h) { h.sh_size = 0xFFFFFFFF; })), "b=two ");
}

TEST_F(HostileTest, ASectionWithoutBytesCannotBeRead) {
    EXPECT_EQ(ask_both(changed(first_index, [](Elf32_Shdr& h) { h.sh_type = SHT_NOBITS; })),
              "a=(unreadable) b=two ");
}

TEST_F(HostileTest, ACompressedSectionIsReadAsItStands) {
    EXPECT_EQ(ask_both(changed(first_index, [](Elf32_Shdr& h) { h.sh_flags = SHF_COMPRESSED; })),
              "a=one b=two ");
}

TEST_F(HostileTest, TheFirstOfTwoSectionsOfOneNameIsFound) {
    EXPECT_EQ(ask_both(changed(first_index + 1, [](Elf32_Shdr& h) { h.sh_name = 12; })), "a=one ");
}

TEST_F(HostileTest, APackageOf64BitsHasNoSections) {
    Bytes file = whole;
    file[EI_CLASS] = ELFCLASS64;
    EXPECT_EQ(ask_both(file), "");
}

TEST_F(HostileTest, HeadersAtAnyPlaceAreSafe) {
    const auto offset = get<Elf32_Ehdr>(whole, 0).e_shoff;
    for (const unsigned place :
         {0u, 1u, 52u, offset - 1, offset + 1, offset + 40, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        const Bytes file = changed_header([&](Elf32_Ehdr& h) { h.e_shoff = place; });
        ask_file(file);
        ask_memory(file);
    }
    for (const unsigned count : {0u, 1u, 6u, 1000u, 0xFFFFu}) {
        const Bytes file = changed_header([&](Elf32_Ehdr& h) { h.e_shnum = static_cast<Elf32_Half>(count); });
        ask_file(file);
        ask_memory(file);
    }
}

TEST_F(HostileTest, HeadersAtAnOddAddressAreRead) {
    // The whole file again with the headers one byte further on.
    const auto offset = get<Elf32_Ehdr>(whole, 0).e_shoff;
    Bytes file = changed_header([&](Elf32_Ehdr& h) { h.e_shoff = offset + 1; });
    file.insert(offset, 1, '\0');
    EXPECT_EQ(ask_file(file), "a=one b=two ");
    EXPECT_EQ(ask_memory(file), "a=one b=two ");
}

TEST_F(HostileTest, AnyOneDamagedByteOfTheHeadersIsSafe) {
    const auto offset = get<Elf32_Ehdr>(whole, 0).e_shoff;
    for (std::size_t i = 0; i < whole.size(); i = i + 1 == sizeof(Elf32_Ehdr) ? offset : i + 1) {
        for (const char value : {'\0', '\x01', '\x7F', '\x80', '\xFF'}) {
            Bytes file = whole;
            file[i] = value;
            ask_memory(file);
        }
    }
}

TEST_F(HostileTest, BytesThatAreNoPackageHaveNoSections) {
    EXPECT_EQ(ask_both(Bytes(4096, '\xFF')), "");
    EXPECT_EQ(ask_both(Bytes(4096, '\0')), "");
    EXPECT_EQ(ask_both("!<arch>\n"), "");
    EXPECT_EQ(ask_file(""), "");
}

TEST_F(HostileTest, AWriterOfADamagedPackageStopsOrEndsQuietly) {
    write_file(path, changed(name_table_index, [](Elf32_Shdr& h) { h.sh_type = SHT_NOBITS; }));
    EXPECT_DEATH(open(ZAN_PKG_READ_WRITE), "Assertion `data' failed");
    write_file(path, changed(name_table_index, [](Elf32_Shdr& h) { h.sh_offset = 0xFFFFFF80; }));
    EXPECT_DEATH(open(ZAN_PKG_READ_WRITE), "Assertion `data' failed");
    write_file(path, changed_header([](Elf32_Ehdr& h) { h.e_shstrndx = 0; }));
    EXPECT_EQ(open(ZAN_PKG_READ_WRITE), nullptr);
}

TEST_F(HostileTest, AnAddToAPackageOf64BitsStops) {
    // A package of 64 bits made from the layout of an empty ELF file of that class: a header, and three
    // sections.
    write_file(path, whole);
    ASSERT_EQ(std::system(("cd " + dir.path() + " && echo | as --64 -o empty.o -").c_str()), 0);
    EXPECT_DEATH(
        {
            zan_pkg_file* pkg = zan_pkg_open_file(dir.path("empty.o").c_str(), ZAN_PKG_READ_WRITE);
            zan_pkg_set_show_mode(pkg, ZAN_PKG_SHOW_ERROR);
            zan_pkg_add_data_section(pkg, "a", "x", 1);
        },
        " elf32_getshdr \\(\\)  failed : .*Assertion `shdr' failed");
}

} // namespace
