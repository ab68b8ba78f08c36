// SPDX-License-Identifier: Apache-2.0
// Opening and closing packages.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

#include "package_fixture.h"
#include "pkg_handle.h"

namespace {

constexpr int show_error = ZAN_PKG_SHOW_ERROR;
constexpr int show_info = ZAN_PKG_SHOW_INFO;

class OpenTest : public PackageTest {
  protected:
    // The message of an open that fails. Without the show bit the same call must be silent.
    static std::string refusal(const char* filename, int mode) {
        EXPECT_EQ(stderr_of([&] { EXPECT_EQ(zan_pkg_open_file(filename, mode), nullptr); }), "");
        return stderr_of([&] { EXPECT_EQ(zan_pkg_open_file(filename, mode | show_error), nullptr); });
    }
};

TEST_F(OpenTest, AModeNeedsOneAccessBit) {
    EXPECT_EQ(refusal("x", 0),
              "Binary package open mode 0x100 must include either read-only or read-write\n");
    EXPECT_EQ(refusal("x", ZAN_PKG_CREATE),
              "Binary package open mode 0x104 must include either read-only or read-write\n");
    EXPECT_EQ(refusal("x", ZAN_PKG_READ | ZAN_PKG_READ_WRITE),
              "Binary package open mode 0x103 cannot include both read-only and read-write\n");
}

TEST_F(OpenTest, CreatingNeedsReadWrite) {
    EXPECT_EQ(refusal("x", ZAN_PKG_READ | ZAN_PKG_CREATE),
              "Binary package creation flag can only be used with read-write mode.\n");
}

TEST_F(OpenTest, TheModeIsCheckedBeforeTheName) {
    EXPECT_EQ(refusal(nullptr, 0),
              "Binary package open mode 0x100 must include either read-only or read-write\n");
    EXPECT_EQ(refusal(nullptr, 7),
              "Binary package open mode 0x107 cannot include both read-only and read-write\n");
    EXPECT_EQ(refusal(nullptr, 5), "Binary package creation flag can only be used with read-write mode.\n");
    EXPECT_EQ(refusal(nullptr, ZAN_PKG_READ), "No filename specified\n");
}

TEST_F(OpenTest, AMissingFileIsReportedWithTheReason) {
    EXPECT_EQ(refusal("/nonexistent/x", ZAN_PKG_READ),
              "Couldn't open /nonexistent/x: No such file or directory\n");
    EXPECT_EQ(refusal("/nonexistent/x", ZAN_PKG_READ_WRITE),
              "Couldn't open /nonexistent/x: No such file or directory\n");
}

// The number of the operating system's error, 21, is looked up among the texts of the ELF library.
TEST_F(OpenTest, AFolderFailsInTheLibrary) {
    EXPECT_EQ(refusal(dir.path().c_str(), ZAN_PKG_READ), "elf_begin failed: invalid binary class\n");
    EXPECT_EQ(refusal(dir.path().c_str(), ZAN_PKG_READ_WRITE),
              "Couldn't open " + dir.path() + ": Is a directory\n");
}

TEST_F(OpenTest, AFailedOpenLeavesNoDescriptorOpen) {
    const int before = ::open("/dev/null", O_RDONLY);
    ::close(before);
    refusal(dir.path().c_str(), ZAN_PKG_READ);
    const int after = ::open("/dev/null", O_RDONLY);
    ::close(after);
    EXPECT_EQ(after, before);
}

TEST_F(OpenTest, CreatingDoesNotNeedAFileAndSetsUsualRights) {
    ::umask(022);
    make({});
    struct stat status {};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0644u);
}

TEST_F(OpenTest, CreatingReplacesALongerFile) {
    write_file(path, Bytes(50000, 'x'));
    make({{"a", "1"}});
    // 128 for the header and its gap, the name table in the next 128, 4096 bytes and the gap after them up
    // to the byte of "a" at 4352, and from 4356 on four headers of 40 bytes.
    EXPECT_EQ(read_file(path).size(), 4356u + 4 * 40);
    EXPECT_EQ(section("a"), "1");
}

TEST_F(OpenTest, AFileThatIsNoPackageOpensForReadingAndHasNoSections) {
    for (const Bytes& content : {Bytes(), Bytes("x"), Bytes("plain text\n"), Bytes(5000, '\xFF'),
                                 Bytes("\x7F"
                                       "ELF")}) {
        write_file(path, content);
        const Package pkg = open(ZAN_PKG_READ);
        ASSERT_NE(pkg, nullptr);
        EXPECT_EQ(zan_pkg_section_exists(pkg.get(), "a", nullptr), 0);
        EXPECT_EQ(names(pkg.get()), "");
    }
}

TEST_F(OpenTest, AFileWithoutANameTableStopsAWriter) {
    write_file(path, "plain text\n");
    EXPECT_DEATH(open(ZAN_PKG_READ_WRITE | show_info), "No string table section\n.*Assertion `data' failed");
}

TEST_F(OpenTest, ANameTableOfNoSizeCannotBeWrittenTo) {
    make({{"a", "1"}});
    change_header(name_table_index, [](Elf32_Shdr& header) { header.sh_size = 0; });
    EXPECT_EQ(refusal(path.c_str(), ZAN_PKG_READ_WRITE), "");
}

TEST_F(OpenTest, ClosingNothingIsAFailure) {
    EXPECT_EQ(zan_pkg_close_file(nullptr), 0);
}

TEST_F(OpenTest, ClosingReturnsWhetherTheFileWasClosed) {
    make({});
    zan_pkg_file* pkg = zan_pkg_open_file(path.c_str(), ZAN_PKG_READ);
    EXPECT_EQ(zan_pkg_close_file(pkg), 1);
}

// The test closes the handle's descriptor itself.
TEST_F(OpenTest, AFailedCloseIsReportedAndIsTheResult) {
    zan_pkg_file* pkg = zan_pkg_open_file(path.c_str(), create_mode | show_error);
    int result = -1;
    EXPECT_EQ(stderr_of([&] {
                  ::close(pkg->fd);
                  result = zan_pkg_close_file(pkg);
              }),
              " elf_update ()  failed : cannot write data to file."
              "zan_pkg_close_file: Failed to flush data on " +
                  path +
                  ": Bad file descriptor\n"
                  "zan_pkg_close_file: Failed to close " +
                  path + ": Bad file descriptor\n");
    EXPECT_EQ(result, 0);
}

TEST_F(OpenTest, AFailedWriteDoesNotShowInTheResult) {
    zan_pkg_file* pkg = zan_pkg_open_file("/dev/full", create_mode);
    ASSERT_NE(pkg, nullptr);
    int result = -1;
    const std::string messages = stderr_of([&] { result = zan_pkg_close_file(pkg); });
    EXPECT_EQ(messages.substr(0, 25), " elf_update ()  failed : ");
    EXPECT_EQ(result, 1);
}

TEST_F(OpenTest, ClosingAnEditedPackageReportsItsSteps) {
    zan_pkg_file* pkg = zan_pkg_open_file(path.c_str(), create_mode);
    zan_pkg_set_show_mode(pkg, show_info);
    EXPECT_EQ(stdout_of([&] { zan_pkg_close_file(pkg); }),
              "flush_elf_edits: Pkg fd is live\nflush_elf_edits: Pkg is dirty\n"
              "flush_elf_edits: Pkg update is ok\n");
    pkg = zan_pkg_open_file(path.c_str(), ZAN_PKG_READ | show_info);
    EXPECT_EQ(stdout_of([&] { zan_pkg_close_file(pkg); }), "flush_elf_edits: Pkg fd is live\n");
}

TEST_F(OpenTest, ShowModesCanBeChanged) {
    make({});
    const Package pkg = open(ZAN_PKG_READ);
    const auto message = [&] { return stderr_of([&] { zan_pkg_update_section(pkg.get(), "a", "", 0); }); };
    EXPECT_EQ(message(), "");
    zan_pkg_set_show_mode(pkg.get(), show_error | ZAN_PKG_READ_WRITE); // access bits have no effect here
    EXPECT_EQ(message(), "Cannot add section to read-only binary\n");
    zan_pkg_set_show_mode(pkg.get(), 0);
    EXPECT_EQ(message(), "");
    zan_pkg_set_show_mode(nullptr, show_error);
}

TEST_F(OpenTest, AHandleMayBeFreedAfterReading) {
    make({{"a", "1"}});
    // In a process of its own, as the handles' descriptors leak here on purpose.
    EXPECT_EXIT(
        {
            zan_pkg_file* pkg = zan_pkg_open_file(path.c_str(), ZAN_PKG_READ);
            const bool found = zan_pkg_section_exists(pkg, "a", nullptr);
            std::free(pkg);
            std::_Exit(found ? 7 : 8);
        },
        testing::ExitedWithCode(7), "");
}

class MemoryTest : public PackageTest {
  protected:
    static std::string refusal(const void* data, std::size_t size, int mode) {
        return stderr_of([&] { EXPECT_EQ(zan_pkg_open_file_from_memory(data, size, mode), nullptr); });
    }
};

TEST_F(MemoryTest, ReadsAPackageThatIsNoFile) {
    make({{"a", "one"}, {"b", ""}});
    const Bytes bytes = read_file(path);
    zan_pkg_file* pkg = zan_pkg_open_file_from_memory(bytes.data(), bytes.size(), 0);
    ASSERT_NE(pkg, nullptr);
    EXPECT_EQ(section(pkg, "a"), "one");
    EXPECT_EQ(section(pkg, "b"), "");
    EXPECT_EQ(names(pkg), "a\nb");
    EXPECT_EQ(stderr_of([&] { EXPECT_EQ(zan_pkg_add_data_section(pkg, "c", "x", 1), 0); }), "");
    EXPECT_EQ(zan_pkg_close_file(pkg), 1);
}

TEST_F(MemoryTest, ReadsReadOnlyMemoryAtAnyAlignment) {
    make({{"a", "one"}});
    const Bytes bytes = read_file(path);
    const std::size_t size = bytes.size() + 16;
    for (std::size_t shift = 0; shift < 8; ++shift) {
        auto* pages = static_cast<char*>(
            ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        ASSERT_NE(pages, MAP_FAILED);
        std::memcpy(pages + shift, bytes.data(), bytes.size());
        ASSERT_EQ(::mprotect(pages, size, PROT_READ), 0);
        zan_pkg_file* pkg = zan_pkg_open_file_from_memory(pages + shift, bytes.size(), 0);
        EXPECT_EQ(section(pkg, "a"), "one") << shift;
        EXPECT_EQ(zan_pkg_close_file(pkg), 1);
        ::munmap(pages, size);
    }
}

TEST_F(MemoryTest, OnlyShowBitsAreAllowed) {
    EXPECT_EQ(refusal("x", 1, ZAN_PKG_READ), "");
    EXPECT_EQ(refusal("x", 1, ZAN_PKG_READ | show_error),
              "Invalid mode 257 for opening a binary in memory\n"); // 0x101
    EXPECT_EQ(refusal("x", 1, 0x400 | show_error),
              "Invalid mode 1280 for opening a binary in memory\n"); // 0x500
}

TEST_F(MemoryTest, NothingIsRefusedSilently) {
    EXPECT_EQ(refusal(nullptr, 5, show_error), "");
    EXPECT_EQ(refusal("x", 0, show_error), "");
}

TEST_F(MemoryTest, ALibraryFailureIsReported) {
    // The first bytes of an ELF file, which the library refuses with no error of the operating system.
    make({});
    const Bytes cut = read_file(path).substr(0, 51);
    errno = 0;
    EXPECT_EQ(refusal(cut.data(), cut.size(), show_error).substr(0, 20), "elf_memory failed: i");
}

} // namespace
