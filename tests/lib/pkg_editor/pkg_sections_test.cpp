// SPDX-License-Identifier: Apache-2.0
// What C++ callers have beside the plain functions: sections as a list, and edits that are certain.
#include "pkg_sections.h"

#include "package_fixture.h"

namespace {

using namespace zan::pkg;

class PackageSectionsTest : public PackageTest {
  protected:
    // No package has to end within a limit where a test doesn't say so.
    static constexpr std::uint64_t any_size = 1 << 30;

    void SetUp() override { make({{"a", "12345"}, {"empty", ""}, {"b", "67"}}); }
    bool is_package(const Bytes& content) const {
        write_file(dir.path("other"), content);
        const Package pkg(zan_pkg_open_file(dir.path("other").c_str(), ZAN_PKG_READ));
        return zan::pkg::is_package(pkg.get());
    }
    // Opens the package, adds the section "new", and closes it again.
    std::string add_and_close(std::uint64_t max_size) const {
        zan_pkg_file* const pkg = open_to_edit(path.c_str());
        EXPECT_EQ(zan_pkg_add_data_section(pkg, "new", "890", 3), 1);
        return close_edited(pkg, max_size);
    }
};

TEST_F(PackageSectionsTest, APackageHasATableOfNames) {
    EXPECT_TRUE(is_package(read_file(path)));
    EXPECT_FALSE(is_package(""));
    EXPECT_FALSE(is_package("text"));
    Bytes without_table = read_file(path);
    Elf32_Ehdr header = get<Elf32_Ehdr>(without_table, 0);
    header.e_shstrndx = SHN_UNDEF;
    put(without_table, 0, header);
    EXPECT_FALSE(is_package(without_table));
    Bytes wide = read_file(path);
    wide[EI_CLASS] = ELFCLASS64;
    EXPECT_FALSE(is_package(wide));
}

TEST_F(PackageSectionsTest, FilesOfOtherKindsAreKnown) {
    const auto is = [&](bool (*kind)(const zan_pkg_file*), const Bytes& content) {
        write_file(dir.path("other"), content);
        const Package pkg(zan_pkg_open_file(dir.path("other").c_str(), ZAN_PKG_READ));
        return kind(pkg.get());
    };
    const Bytes package = read_file(path);
    Bytes wide = package;
    wide[EI_CLASS] = ELFCLASS64;
    EXPECT_TRUE(is(is_of_64_bits, wide));
    EXPECT_TRUE(is(is_of_64_bits, read_file("/proc/self/exe")));
    EXPECT_FALSE(is(is_of_64_bits, package));
    EXPECT_FALSE(is(is_of_64_bits, "text"));
    Bytes program = package;
    Elf32_Ehdr header = get<Elf32_Ehdr>(program, 0);
    header.e_phoff = sizeof header;
    header.e_phentsize = sizeof(Elf32_Phdr);
    header.e_phnum = 1;
    put(program, 0, header);
    EXPECT_TRUE(is(is_program, program));
    EXPECT_FALSE(is(is_program, package));
    EXPECT_FALSE(is(is_program, "text"));
}

TEST_F(PackageSectionsTest, SectionsComeInOrderWithTheirPlaces) {
    const Package pkg = open(ZAN_PKG_READ);
    const std::vector<SectionInfo> sections = list_sections(pkg.get());
    ASSERT_EQ(sections.size(), 3u);
    const Bytes file = read_file(path);
    const std::pair<std::string, Bytes> expected[] = {{"a", "12345"}, {"empty", ""}, {"b", "67"}};
    for (std::size_t i = 0; i < sections.size(); ++i) {
        EXPECT_EQ(sections[i].name, expected[i].first);
        EXPECT_EQ(file.substr(sections[i].offset, sections[i].size), expected[i].second);
        EXPECT_EQ(sections[i].contents, Contents::in_file);
        EXPECT_EQ(sections[i].index, first_index + i);
        EXPECT_EQ(sections[i].type, SHT_PROGBITS);
    }
}

TEST_F(PackageSectionsTest, ASectionThatEndsAfterTheFileIsMissing) {
    const auto size = static_cast<Elf32_Word>(std::filesystem::file_size(path));
    const auto contents = [&](Elf32_Word offset, Elf32_Word section_size, Elf32_Word type) {
        change_header(first_index, [&](Elf32_Shdr& header) {
            header.sh_offset = offset;
            header.sh_size = section_size;
            header.sh_type = type;
        });
        return list_sections(open(ZAN_PKG_READ).get())[0].contents;
    };
    EXPECT_EQ(contents(size - 5, 5, SHT_PROGBITS), Contents::in_file); // its last byte is the file's
    EXPECT_EQ(contents(size - 5, 6, SHT_PROGBITS), Contents::missing); // one byte more
    EXPECT_EQ(contents(size - 4, 5, SHT_PROGBITS), Contents::missing);
    EXPECT_EQ(contents(0, size, SHT_PROGBITS), Contents::in_file);
    EXPECT_EQ(contents(0, size + 1, SHT_PROGBITS), Contents::missing);
    EXPECT_EQ(contents(size, 0, SHT_PROGBITS), Contents::in_file);
    EXPECT_EQ(contents(size, 1, SHT_PROGBITS), Contents::missing);
    EXPECT_EQ(contents(size + 1, 0, SHT_PROGBITS), Contents::missing);
    EXPECT_EQ(contents(0xFFFFFFFF, 0xFFFFFFFF, SHT_PROGBITS), Contents::missing);
    EXPECT_EQ(contents(0, 5, SHT_NOBITS), Contents::none);
    EXPECT_EQ(contents(size, 5, SHT_NOBITS), Contents::none);
}

TEST_F(PackageSectionsTest, EditsReachTheFileInSilence) {
    const std::string said =
        stderr_of([&] { EXPECT_EQ(stdout_of([&] { EXPECT_EQ(add_and_close(any_size), ""); }), ""); });
    EXPECT_EQ(said, "");
    EXPECT_EQ(names(), "a\nempty\nb\nnew");
    EXPECT_EQ(section("new"), "890");
}

// Sections are at multiples of 128: "a" after the hidden section at 0x1100, "b" at 0x1180, "new" at 0x1200
// with 3 bytes. Then, from the next multiple of 4 on, come the headers of 7 sections, of 40 bytes each.
TEST_F(PackageSectionsTest, AFileThatWouldBeTooLargeIsNotBegun) {
    constexpr std::uint64_t size_with_new = 0x1204 + 7 * 40;
    const Bytes before = read_file(path);
    EXPECT_EQ(add_and_close(before.size()),
              "the gaps between its sections would make it " + std::to_string(size_with_new) + " bytes long");
    EXPECT_TRUE(read_file(path) == before);
    EXPECT_EQ(add_and_close(size_with_new), "");
    EXPECT_EQ(std::filesystem::file_size(path), size_with_new);
}

TEST_F(PackageSectionsTest, EditsThatAreGivenUpDoNotReachTheFile) {
    const Bytes before = read_file(path);
    zan_pkg_file* const pkg = open_to_edit(path.c_str());
    EXPECT_EQ(zan_pkg_update_section(pkg, "a", "x", 1), 1);
    EXPECT_EQ(stderr_of([&] { discard_edited(pkg); }), "");
    EXPECT_TRUE(read_file(path) == before);
}

// The plain function stops the process here.
TEST_F(PackageSectionsTest, WhatIsNoPackageIsNotOpenedToBeEdited) {
    write_file(dir.path("text"), "text");
    EXPECT_EQ(stderr_of([&] {
                  EXPECT_EQ(open_to_edit(dir.path("text").c_str()), nullptr);
                  EXPECT_EQ(open_to_edit(dir.path("none").c_str()), nullptr);
                  EXPECT_EQ(errno, ENOENT);
              }),
              "");
}

TEST_F(PackageSectionsTest, TheDescriptorIsThatOfTheFile) {
    const Package pkg = open(ZAN_PKG_READ);
    const std::string link = "/proc/self/fd/" + std::to_string(file_descriptor(pkg.get()));
    EXPECT_TRUE(std::filesystem::equivalent(link, path));
}

} // namespace
