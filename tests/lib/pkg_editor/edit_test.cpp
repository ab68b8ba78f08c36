// SPDX-License-Identifier: Apache-2.0
// Adding and updating sections.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <limits>

#include "package_fixture.h"
#include "pkg_handle.h"

namespace {

constexpr const char* read_only = "Cannot add section to read-only binary\n";

class EditTest : public PackageTest {
  protected:
    // The message of a call that must fail with the show bit, and be silent without.
    template <class Call>
    static std::string failure(zan_pkg_file* pkg, Call call) {
        zan_pkg_set_show_mode(pkg, 0);
        EXPECT_EQ(stderr_of([&] { EXPECT_EQ(call(pkg), 0); }), "");
        zan_pkg_set_show_mode(pkg, ZAN_PKG_SHOW_ERROR);
        return stderr_of([&] { EXPECT_EQ(call(pkg), 0); });
    }
    int update(const std::string& name, const Bytes& bytes) const {
        const Package pkg = open(ZAN_PKG_READ_WRITE);
        return zan_pkg_update_section(pkg.get(), name.c_str(), bytes.data(), bytes.size());
    }
    // A file with that content.
    std::string file(const Bytes& content) const {
        const std::string input = dir.path("input");
        write_file(input, content);
        return input;
    }
};

TEST_F(EditTest, AReadOnlyPackageRefusesEditsBeforeAnyLookup) {
    make({{"a", "1"}});
    const Package pkg = open(ZAN_PKG_READ);
    for (const char* name : {"a", "b"}) {
        EXPECT_EQ(failure(pkg.get(), [&](auto* p) { return zan_pkg_add_data_section(p, name, "x", 1); }),
                  read_only);
        EXPECT_EQ(failure(pkg.get(), [&](auto* p) { return zan_pkg_update_section(p, name, "x", 1); }),
                  read_only);
        EXPECT_EQ(
            failure(pkg.get(), [&](auto* p) { return zan_pkg_add_data_section_from_file(p, name, "/x"); }),
            read_only);
        EXPECT_EQ(
            failure(pkg.get(), [&](auto* p) { return zan_pkg_update_section_from_file(p, name, "/x"); }),
            read_only);
    }
}

TEST_F(EditTest, ANameIsTakenOnce) {
    make({{"a", "1"}});
    const Package pkg = open(ZAN_PKG_READ_WRITE);
    const std::string taken = "Section 'a' already exists.\n";
    EXPECT_EQ(failure(pkg.get(), [](auto* p) { return zan_pkg_add_data_section(p, "a", "x", 1); }), taken);
    EXPECT_EQ(failure(pkg.get(), [](auto* p) { return zan_pkg_add_data_section_from_file(p, "a", "/x"); }),
              taken);
    // Those that every new package has are taken too.
    EXPECT_EQ(zan_pkg_add_data_section(pkg.get(), ".shstrtab", "x", 1), 0);
    EXPECT_EQ(zan_pkg_add_data_section(pkg.get(), "", "x", 1), 0);
}

TEST_F(EditTest, OnlyASectionThatExistsIsUpdated) {
    make({{"a", "1"}});
    const Package pkg = open(ZAN_PKG_READ_WRITE);
    const std::string missing = "Section 'b' does not exist.\n";
    EXPECT_EQ(failure(pkg.get(), [](auto* p) { return zan_pkg_update_section(p, "b", "x", 1); }), missing);
    EXPECT_EQ(failure(pkg.get(), [](auto* p) { return zan_pkg_update_section_from_file(p, "b", "/x"); }),
              missing);
}

TEST_F(EditTest, NullArgumentsAreSilentFailures) {
    make({{"a", "1"}});
    const Package pkg = open(ZAN_PKG_READ_WRITE);
    EXPECT_EQ(failure(pkg.get(), [](auto* p) { return zan_pkg_add_data_section(p, nullptr, "x", 1); }), "");
    EXPECT_EQ(failure(pkg.get(), [](auto* p) { return zan_pkg_update_section(p, nullptr, "x", 1); }), "");
    EXPECT_EQ(failure(pkg.get(), [](auto* p) { return zan_pkg_add_data_section(p, "b", nullptr, 1); }), "");
    EXPECT_EQ(failure(pkg.get(), [](auto* p) { return zan_pkg_update_section(p, "a", nullptr, 1); }), "");
    EXPECT_EQ(failure(pkg.get(), [](auto* p) { return zan_pkg_add_data_section_from_file(p, "b", nullptr); }),
              "");
    EXPECT_EQ(failure(pkg.get(), [](auto* p) { return zan_pkg_update_section_from_file(p, "a", nullptr); }),
              "");
    for (const auto function : {zan_pkg_add_data_section_from_file, zan_pkg_update_section_from_file})
        EXPECT_EQ(failure(pkg.get(), [&](auto* p) { return function(p, nullptr, "x"); }), "");
    EXPECT_EQ(failure(nullptr, [](auto* p) { return zan_pkg_add_data_section(p, "b", "x", 1); }), "");
    EXPECT_EQ(failure(nullptr, [](auto* p) { return zan_pkg_update_section(p, "a", "x", 1); }), "");
    EXPECT_EQ(failure(nullptr, [](auto* p) { return zan_pkg_add_data_section_from_file(p, "b", "x"); }), "");
    EXPECT_EQ(failure(nullptr, [](auto* p) { return zan_pkg_update_section_from_file(p, "a", "x"); }), "");
    EXPECT_EQ(section(pkg.get(), "a"), "1");
    EXPECT_EQ(section(pkg.get(), "b"), "(none)");
}

TEST_F(EditTest, SizesThatTheFileCannotHoldAreRefused) {
    make({{"a", "1"}});
    const Package pkg = open(ZAN_PKG_READ_WRITE);
    constexpr std::size_t too_large = std::size_t{1} << 32;
    EXPECT_EQ(zan_pkg_add_data_section(pkg.get(), "b", "x", too_large), 0);
    EXPECT_EQ(zan_pkg_update_section(pkg.get(), "a", "x", too_large), 0);
    EXPECT_EQ(section(pkg.get(), "a"), "1");
}

TEST_F(EditTest, ANameOf4096BytesIsTheLongest) {
    const std::string longest(4096, 'n');
    const std::string too_long(4097, 'n');
    {
        const Package pkg = open(create_mode);
        EXPECT_EQ(zan_pkg_add_data_section(pkg.get(), longest.c_str(), "1", 1), 1);
        EXPECT_EQ(failure(pkg.get(),
                          [&](auto* p) { return zan_pkg_add_data_section(p, too_long.c_str(), "2", 1); }),
                  "Section name length 4097 exceeds limit of 4096 bytes. Section name is " + too_long + "\n");
    }
    EXPECT_EQ(section(longest), "1");
    EXPECT_EQ(section(too_long), "(none)");
    EXPECT_EQ(names(), longest); // what the refused adds left has no name
}

TEST_F(EditTest, ARefusedAddForgetsTheCallersBytes) {
    const std::string too_long(4097, 'n');
    const Package pkg = open(create_mode);
    auto bytes = std::make_unique<Bytes>(100000, 'x');
    EXPECT_EQ(zan_pkg_add_data_section(pkg.get(), too_long.c_str(), bytes->data(), bytes->size()), 0);
    bytes.reset(); // closing the package must not look at them
}

TEST_F(EditTest, EditsTellTheirProgress) {
    const Package pkg = open(create_mode);
    zan_pkg_set_show_mode(pkg.get(), ZAN_PKG_SHOW_INFO);
    EXPECT_EQ(stdout_of([&] { zan_pkg_add_data_section(pkg.get(), "a", "12", 2); }),
              "zan_pkg_add_data_section: Added section a with 2 bytes\n");
    EXPECT_EQ(stdout_of([&] { zan_pkg_update_section(pkg.get(), "a", "123", 3); }),
              "zan_pkg_update_section: Updating section a with 3 bytes of new data\n");
}

TEST_F(EditTest, SectionsGrowShrinkAndEmpty) {
    for (const Bytes& content : {Bytes(100000, 'x'), Bytes("1"), Bytes("2"), Bytes(), Bytes(300, 'y')}) {
        make({{"front", "f"}, {"a", "old"}, {"after", Bytes(1000, 'b')}});
        EXPECT_EQ(update("a", content), 1);
        EXPECT_EQ(section("a"), content);
        EXPECT_EQ(section("front"), "f");
        EXPECT_EQ(section("after"), Bytes(1000, 'b'));
    }
}

TEST_F(EditTest, NothingOfNoSizeEmptiesASection) {
    make({{"a", "old"}});
    {
        const Package pkg = open(ZAN_PKG_READ_WRITE);
        EXPECT_EQ(zan_pkg_update_section(pkg.get(), "a", nullptr, 0), 1);
        EXPECT_EQ(section(pkg.get(), "a"), "");
        EXPECT_EQ(zan_pkg_add_data_section(pkg.get(), "b", nullptr, 0), 1);
    }
    EXPECT_EQ(section("a"), "");
    EXPECT_EQ(section("b"), "");
}

TEST_F(EditTest, AnUpdateWithoutAnyBytesIsSeenAtOnce) {
    make({{"a", "old"}});
    const Package pkg = open(ZAN_PKG_READ_WRITE);
    EXPECT_EQ(zan_pkg_update_section(pkg.get(), "a", "new", 3), 1);
    EXPECT_EQ(section(pkg.get(), "a"), "new");
    EXPECT_EQ(section("a"), "old"); // the file changes when the package is closed
}

// The table's bytes are the handle's own, so that closing can free them.
TEST_F(EditTest, TheNameTableItselfCanBeReplaced) {
    make({{"a", "1"}});
    const Bytes table("\0.shstrtab\0\0b\0", 14); // offsets as they were: 1, 11 and 12
    EXPECT_EQ(update(".shstrtab", table), 1);
    EXPECT_EQ(names(), "b");
    EXPECT_EQ(section("b"), "1");
}

TEST_F(EditTest, ASectionWithTwoDescriptorsIsNotValid) {
    make({{"a", "1"}});
    const Package pkg = open(ZAN_PKG_READ_WRITE);
    Elf_Scn* found = zan::pkg::section_by_name(pkg.get(), "a");
    ASSERT_NE(elf_getdata(found, nullptr), nullptr);
    Elf_Data* second = elf_newdata(found);
    ASSERT_NE(second, nullptr);
    zan::pkg::describe_bytes(second, const_cast<char*>("2"), 1);
    char buffer[9];
    void* data = nullptr;
    const std::string multiple = "Multiple data descriptors for section.\n";
    EXPECT_EQ(failure(pkg.get(), [](auto* p) { return zan_pkg_section_exists(p, "a", nullptr); }), multiple);
    EXPECT_EQ(failure(pkg.get(), [&](auto* p) { return zan_pkg_read_section(p, "a", buffer, 9); }),
              multiple + "No data for section 'a'.\n");
    EXPECT_EQ(failure(pkg.get(), [&](auto* p) { return zan_pkg_read_section_transient(p, "a", &data); }),
              multiple + "No data for section 'a'.\n");
    EXPECT_EQ(failure(pkg.get(), [](auto* p) { return zan_pkg_read_section_into_file(p, "a", "/dev/null"); }),
              "Multiple data descriptors for 'a'.\n");
    EXPECT_EQ(failure(pkg.get(), [](auto* p) { return zan_pkg_update_section(p, "a", "x", 1); }), multiple);
    const std::string input = file("content");
    EXPECT_EQ(
        failure(pkg.get(), [&](auto* p) { return zan_pkg_update_section_from_file(p, "a", input.c_str()); }),
        multiple);
    EXPECT_DEATH(zan_pkg_list_file_sections(pkg.get()), "Assertion `sdata' failed");
}

TEST_F(EditTest, AFileBecomesASection) {
    const std::string input = file("content");
    {
        const Package pkg = open(create_mode);
        zan_pkg_set_show_mode(pkg.get(), ZAN_PKG_SHOW_INFO);
        EXPECT_EQ(stdout_of([&] { zan_pkg_add_data_section_from_file(pkg.get(), "a", input.c_str()); }),
                  "zan_pkg_add_data_section: Added section a with 7 bytes\nRead 7 bytes from file " + input +
                      " and created new section 'a'.\n");
        write_file(input, "12");
        EXPECT_EQ(
            stdout_of([&] { zan_pkg_update_section_from_file(pkg.get(), "a", input.c_str()); }),
            "zan_pkg_update_section: Updating section a with 2 bytes of new data\nRead 2 bytes from file " +
                input + " and updated section 'a'.\n");
        ::unlink(input.c_str());
        zan_pkg_set_show_mode(pkg.get(), 0);
    }
    EXPECT_EQ(section("a"), "12");
}

TEST_F(EditTest, AnEmptyFileBecomesAnEmptySection) {
    const std::string input = file("");
    {
        const Package pkg = open(create_mode);
        zan_pkg_set_show_mode(pkg.get(), ZAN_PKG_SHOW_INFO);
        EXPECT_EQ(stdout_of([&] {
                      EXPECT_EQ(zan_pkg_add_data_section_from_file(pkg.get(), "a", input.c_str()), 1);
                  }),
                  "Empty input file. Creating section using dummy file and then updating it.\n"
                  "zan_pkg_add_data_section: Added section a with 1 bytes\n"
                  "flush_elf_edits: Pkg fd is live\nflush_elf_edits: Pkg is dirty\n"
                  "flush_elf_edits: Pkg update is ok\n"
                  "zan_pkg_update_section: Updating section a with 0 bytes of new data\n"
                  "Read 0 bytes from file " +
                      input + " and created new section 'a'.\n");
        zan_pkg_set_show_mode(pkg.get(), 0);
        EXPECT_EQ(zan_pkg_add_data_section(pkg.get(), "b", "2", 1), 1); // edits go on after the flush
    }
    EXPECT_EQ(section("a"), "");
    EXPECT_EQ(section("b"), "2");
}

TEST_F(EditTest, AnEmptyFileEmptiesASection) {
    make({{"a", "old"}});
    const std::string input = file("");
    {
        const Package pkg = open(ZAN_PKG_READ_WRITE);
        EXPECT_EQ(zan_pkg_update_section_from_file(pkg.get(), "a", input.c_str()), 1);
    }
    EXPECT_EQ(section("a"), "");
}

TEST_F(EditTest, FilesThatCannotBeReadAreReportedWithoutAnyShowBit) {
    const Package pkg = open(create_mode);
    EXPECT_EQ(stderr_of([&] {
                  EXPECT_EQ(zan_pkg_add_data_section_from_file(pkg.get(), "a", "/nonexistent/x"), 0);
              }),
              "Couldn't open file /nonexistent/x for reading\n");
    const std::string pipe = dir.path("pipe");
    ASSERT_EQ(::system(("mkfifo " + pipe + " && (sleep 0.1 > " + pipe + " &)").c_str()), 0);
    EXPECT_EQ(
        stderr_of([&] { EXPECT_EQ(zan_pkg_add_data_section_from_file(pkg.get(), "a", pipe.c_str()), 0); }),
        "Couldn't determine size of file " + pipe + "\n");
    EXPECT_EQ(names(pkg.get()), "");
}

// On most file systems a folder claims the greatest size, 2^63 - 1, to which the link to the next block is
// added; on the others there is nothing to try.
TEST_F(EditTest, AFileLargerThanMemoryIsReported) {
    const int folder = ::open("/", O_RDONLY | O_DIRECTORY);
    const off_t size = ::lseek(folder, 0, SEEK_END);
    ::close(folder);
    if (size != std::numeric_limits<off_t>::max())
        return;
    const Package pkg = open(create_mode);
    // A sanitizer's allocator prints a warning first.
    EXPECT_THAT(stderr_of([&] { EXPECT_EQ(zan_pkg_add_data_section_from_file(pkg.get(), "a", "/"), 0); }),
                testing::EndsWith("Could not allocated 9223372036854775815 bytes of memory\n"));
    EXPECT_EQ(names(pkg.get()), "");
}

// A file of the kernel that says 4096 bytes and has fewer.
TEST_F(EditTest, AFileShorterThanItsSizeIsReported) {
    const std::string short_file = "/sys/kernel/mm/transparent_hugepage/enabled";
    if (!std::filesystem::exists(short_file))
        return;
    const std::size_t size = read_file(short_file).size();
    const Package pkg = open(create_mode);
    EXPECT_EQ(stderr_of([&] {
                  EXPECT_EQ(zan_pkg_add_data_section_from_file(pkg.get(), "a", short_file.c_str()), 0);
              }),
              "Error reading " + short_file + ". Read only " + std::to_string(size) + " out of 4096 bytes\n");
}

// The header of "b" says that it has a size but no bytes, so its place, the last in the file, is free for the
// new section. With that the table of headers stays where it was.
TEST_F(EditTest, ASectionMayBeAddedWhereTheTableOfHeadersStays) {
    make({{"a", "1"}, {"b", "2"}});
    change_header(first_index + 1, [](Elf32_Shdr& header) { header.sh_type = SHT_NOBITS; });
    const auto offset = get<Elf32_Ehdr>(read_file(path), 0).e_shoff;
    {
        const Package pkg = open(ZAN_PKG_READ_WRITE);
        EXPECT_EQ(zan_pkg_add_data_section(pkg.get(), "c", "3", 1), 1);
    }
    EXPECT_EQ(get<Elf32_Ehdr>(read_file(path), 0).e_shoff, offset);
    EXPECT_EQ(section("a"), "1");
    EXPECT_EQ(section("c"), "3");
    EXPECT_EQ(names(), "a\nb\nc");
}

} // namespace
