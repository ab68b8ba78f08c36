// SPDX-License-Identifier: Apache-2.0
// Reading sections.
#include <libelf.h>

#include "package_fixture.h"

namespace {

class ReadTest : public PackageTest {
  protected:
    void SetUp() override {
        make({{"five", "12345"}, {"empty", ""}});
        pkg = open(ZAN_PKG_READ | ZAN_PKG_SHOW_ERROR);
    }
    // The message of a call that must fail with the show bit, and be silent without.
    template <class Call>
    std::string failure(Call call) {
        zan_pkg_set_show_mode(pkg.get(), 0);
        EXPECT_EQ(stderr_of([&] { EXPECT_EQ(call(pkg.get()), 0); }), "");
        zan_pkg_set_show_mode(pkg.get(), ZAN_PKG_SHOW_ERROR);
        return stderr_of([&] { EXPECT_EQ(call(pkg.get()), 0); });
    }
    // Makes "five" a section with a size and without bytes.
    void take_bytes_away() {
        pkg.reset();
        change_header(first_index, [](Elf32_Shdr& header) { header.sh_type = SHT_NOBITS; });
        pkg = open(ZAN_PKG_READ);
    }
    // Moves "five" out of the file.
    void move_out_of_file() {
        pkg.reset();
        change_header(first_index, [](Elf32_Shdr& header) { header.sh_offset = 0x7FFFFF00; });
        pkg = open(ZAN_PKG_READ);
    }

    Package pkg;
    char buffer[16] = {};
    void* data = nullptr;
};

TEST_F(ReadTest, ExistsStoresTheSize) {
    std::size_t size = 99;
    EXPECT_EQ(zan_pkg_section_exists(pkg.get(), "five", &size), 1);
    EXPECT_EQ(size, 5u);
    EXPECT_EQ(zan_pkg_section_exists(pkg.get(), "empty", &size), 1);
    EXPECT_EQ(size, 0u);
    EXPECT_EQ(zan_pkg_section_exists(pkg.get(), "five", nullptr), 1);
}

TEST_F(ReadTest, AMissingSectionIsSilentAndLeavesTheSize) {
    std::size_t size = 99;
    EXPECT_EQ(failure([&](auto* p) { return zan_pkg_section_exists(p, "six", &size); }), "");
    EXPECT_EQ(failure([&](auto* p) { return zan_pkg_section_exists(p, "fiv", &size); }), "");
    EXPECT_EQ(failure([&](auto* p) { return zan_pkg_section_exists(p, "fivee", &size); }), "");
    EXPECT_EQ(size, 99u);
}

TEST_F(ReadTest, ABufferMustBeLargerThanTheSection) {
    EXPECT_EQ(failure([&](auto* p) { return zan_pkg_read_section(p, "five", buffer, 5); }),
              "Target buffer for section 'five' is too small.\n");
    std::memset(buffer, 'x', sizeof buffer);
    EXPECT_EQ(zan_pkg_read_section(pkg.get(), "five", buffer, 6), 1);
    EXPECT_EQ(Bytes(buffer, 7), Bytes("12345\0x", 7));
}

TEST_F(ReadTest, AnEmptySectionFitsABufferOfOneByte) {
    buffer[0] = 'x';
    EXPECT_EQ(failure([&](auto* p) { return zan_pkg_read_section(p, "empty", buffer, 0); }),
              "Target buffer for section 'empty' is too small.\n");
    EXPECT_EQ(zan_pkg_read_section(pkg.get(), "empty", buffer, 1), 1);
    EXPECT_STREQ(buffer, "");
}

TEST_F(ReadTest, ReadingReportsTheFirstFault) {
    EXPECT_EQ(failure([&](auto* p) { return zan_pkg_read_section(p, "six", nullptr, 9); }),
              "Buffer argument is NULL\n");
    EXPECT_EQ(failure([&](auto* p) { return zan_pkg_read_section(p, "six", buffer, 0); }),
              "Couldn't find section with name 'six'.\n");
}

TEST_F(ReadTest, TransientReadingStoresAPointerIntoThePackage) {
    EXPECT_EQ(zan_pkg_read_section_transient(pkg.get(), "five", &data), 1);
    EXPECT_EQ(Bytes(static_cast<char*>(data), 5), "12345");
    EXPECT_EQ(zan_pkg_read_section_transient(pkg.get(), "empty", &data), 1);
    EXPECT_EQ(failure([&](auto* p) { return zan_pkg_read_section_transient(p, "six", nullptr); }),
              "Buffer pointer argument is NULL\n");
    EXPECT_EQ(failure([&](auto* p) { return zan_pkg_read_section_transient(p, "six", &data); }),
              "Couldn't find section with name 'six'.\n");
}

TEST_F(ReadTest, ASectionWithoutBytesExistsButCannotBeRead) {
    take_bytes_away();
    std::size_t size = 0;
    EXPECT_EQ(zan_pkg_section_exists(pkg.get(), "five", &size), 1);
    EXPECT_EQ(size, 5u);
    const std::string no_data = "No data for section.\nNo data for section 'five'.\n";
    EXPECT_EQ(failure([&](auto* p) { return zan_pkg_read_section(p, "five", buffer, 16); }), no_data);
    EXPECT_EQ(failure([&](auto* p) { return zan_pkg_read_section_transient(p, "five", &data); }), no_data);
    const std::string out = dir.path("out");
    EXPECT_EQ(failure([&](auto* p) { return zan_pkg_read_section_into_file(p, "five", out.c_str()); }),
              "No data for section 'five'.\n");
    EXPECT_FALSE(std::filesystem::exists(out));
}

TEST_F(ReadTest, ASectionOutsideTheFileHasNoData) {
    move_out_of_file();
    const std::string no_data = "No data for section.\n";
    EXPECT_EQ(failure([&](auto* p) { return zan_pkg_section_exists(p, "five", nullptr); }), no_data);
    EXPECT_EQ(failure([&](auto* p) { return zan_pkg_read_section(p, "five", buffer, 16); }),
              no_data + "No data for section 'five'.\n");
    EXPECT_EQ(failure([&](auto* p) { return zan_pkg_read_section_transient(p, "five", &data); }),
              no_data + "No data for section 'five'.\n");
    EXPECT_EQ(failure([&](auto* p) { return zan_pkg_read_section_into_file(p, "five", "/dev/null"); }),
              "No data for section 'five'.\n");
}

// Whatever is wrong with the section, too: without a target there is nothing to read into.
TEST_F(ReadTest, ANullTargetIsTheOnlyFaultReported) {
    const std::string no_buffer = "Buffer argument is NULL\n";
    const std::string no_pointer = "Buffer pointer argument is NULL\n";
    const auto expect_them_alone = [&] {
        EXPECT_EQ(failure([](auto* p) { return zan_pkg_read_section(p, "five", nullptr, 16); }), no_buffer);
        EXPECT_EQ(failure([](auto* p) { return zan_pkg_read_section_transient(p, "five", nullptr); }),
                  no_pointer);
    };
    expect_them_alone();
    move_out_of_file();
    expect_them_alone();
    take_bytes_away();
    expect_them_alone();
}

TEST_F(ReadTest, ASectionGoesIntoAFile) {
    const std::string out = dir.path("out");
    write_file(out, "something longer");
    zan_pkg_set_show_mode(pkg.get(), ZAN_PKG_SHOW_INFO);
    EXPECT_EQ(
        stdout_of([&] { EXPECT_EQ(zan_pkg_read_section_into_file(pkg.get(), "five", out.c_str()), 1); }),
        "Wrote 5 bytes from section 'five' to file " + out + "\n");
    EXPECT_EQ(read_file(out), "12345");
    zan_pkg_set_show_mode(pkg.get(), 0);
    EXPECT_EQ(
        stdout_of([&] { EXPECT_EQ(zan_pkg_read_section_into_file(pkg.get(), "empty", out.c_str()), 1); }),
        "");
    EXPECT_EQ(read_file(out), "");
}

TEST_F(ReadTest, FilesThatCannotBeWrittenAreReported) {
    EXPECT_EQ(failure([](auto* p) { return zan_pkg_read_section_into_file(p, "six", "/dev/null"); }),
              "Couldn't find section with name 'six'.\n");
    EXPECT_EQ(failure([](auto* p) { return zan_pkg_read_section_into_file(p, "five", "/nonexistent/x"); }),
              "Couldn't open file for writing: No such file or directory\n");
    EXPECT_EQ(failure([](auto* p) { return zan_pkg_read_section_into_file(p, "five", "/dev/full"); }),
              "Wrote only 0 out of 5 bytes into /dev/full for writing");
}

TEST_F(ReadTest, NullArgumentsAreSilentFailures) {
    EXPECT_EQ(failure([&](auto* p) { return zan_pkg_section_exists(p, nullptr, nullptr); }), "");
    EXPECT_EQ(failure([&](auto* p) { return zan_pkg_read_section(p, nullptr, buffer, 16); }), "");
    EXPECT_EQ(failure([&](auto* p) { return zan_pkg_read_section_transient(p, nullptr, &data); }), "");
    EXPECT_EQ(failure([&](auto* p) { return zan_pkg_read_section_into_file(p, nullptr, "x"); }), "");
    EXPECT_EQ(failure([&](auto* p) { return zan_pkg_read_section_into_file(p, "five", nullptr); }), "");
    EXPECT_EQ(failure([&](auto* p) { return zan_pkg_section_names(p, nullptr, 9); }), "");
    EXPECT_EQ(stderr_of([&] {
                  EXPECT_EQ(zan_pkg_section_exists(nullptr, "five", nullptr), 0);
                  EXPECT_EQ(zan_pkg_read_section(nullptr, "five", buffer, 16), 0);
                  EXPECT_EQ(zan_pkg_read_section_transient(nullptr, "five", &data), 0);
                  EXPECT_EQ(zan_pkg_read_section_into_file(nullptr, "five", "x"), 0);
                  EXPECT_EQ(zan_pkg_section_names(nullptr, buffer, 16), 0);
                  EXPECT_EQ(zan_pkg_list_file_sections(nullptr), 0);
              }),
              "");
}

// "five" and "empty" with a newline between are 10 bytes; the NUL makes 11, and the capacity must be one
// above that of the last name's place: 4 + 5 + 1 below the capacity.
TEST_F(ReadTest, NamesNeedRoom) {
    char names[16];
    const auto names_in = [&](std::size_t capacity, int result) {
        std::memset(names, 'x', sizeof names);
        names[15] = 0;
        EXPECT_EQ(zan_pkg_section_names(pkg.get(), names, capacity), result) << capacity;
        return std::string(names);
    };
    EXPECT_EQ(names_in(11, 1), "five\nempty");
    EXPECT_EQ(names_in(10, 0), "five");
    EXPECT_EQ(names_in(6, 0), "five");
    EXPECT_EQ(names_in(5, 0), "xxxxxxxxxxxxxxx");
    EXPECT_EQ(names_in(0, 0), "xxxxxxxxxxxxxxx");
}

TEST_F(ReadTest, ANewPackageListsNoName) {
    pkg.reset();
    make({});
    pkg = open(ZAN_PKG_READ);
    char names[4] = "xyz";
    EXPECT_EQ(zan_pkg_section_names(pkg.get(), names, sizeof names), 1);
    EXPECT_STREQ(names, "xyz");
    EXPECT_EQ(zan_pkg_section_names(pkg.get(), names, 0), 1);
    EXPECT_EQ(stdout_of([&] { EXPECT_EQ(zan_pkg_list_file_sections(pkg.get()), 1); }),
              "Sections in package file:\n");
}

TEST_F(ReadTest, TheListHasNamesAndSizes) {
    EXPECT_EQ(stdout_of([&] { EXPECT_EQ(zan_pkg_list_file_sections(pkg.get()), 1); }),
              "Sections in package file:\n  five, 5 bytes\n  empty, 0 bytes\n");
}

TEST_F(ReadTest, AListOverASectionWithoutDataStopsTheProcess) {
    move_out_of_file();
    zan_pkg_set_show_mode(pkg.get(), ZAN_PKG_SHOW_ERROR);
    EXPECT_DEATH(zan_pkg_list_file_sections(pkg.get()), "No data for section.\n.*Assertion `sdata' failed");
}

} // namespace
