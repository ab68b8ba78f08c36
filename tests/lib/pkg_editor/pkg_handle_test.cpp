// SPDX-License-Identifier: Apache-2.0
// Checked access to the parts of a package, and messages under the show flags.
#include "pkg_handle.h"

#include "package_fixture.h"

namespace {

using namespace zan::pkg;

class HandleTest : public PackageTest {
  protected:
    void SetUp() override { make({{"a", "1"}, {"b", "22"}}); }
    static Elf32_Word name_offset(Elf_Scn* section) {
        Elf32_Shdr header;
        EXPECT_TRUE(copy_header(section, header));
        return header.sh_name;
    }
};

// Where a message needs a flag, the others don't show it.
TEST_F(HandleTest, MessagesNeedTheirFlag) {
    const auto shown = [&](int mode) {
        const Package pkg = open(ZAN_PKG_READ | mode);
        std::string out;
        const std::string err = stderr_of([&] {
            out = stdout_of([&] {
                report_error(pkg.get(), "error %d", 1);
                report_progress(pkg.get(), "progress %s", "x");
            });
        });
        return err + "|" + out;
    };
    EXPECT_EQ(shown(0), "|");
    EXPECT_EQ(shown(ZAN_PKG_SHOW_ERROR), "error 1|");
    EXPECT_EQ(shown(ZAN_PKG_SHOW_INFO), "|progress x");
    EXPECT_EQ(shown(ZAN_PKG_SHOW_ERROR | ZAN_PKG_SHOW_INFO), "error 1|progress x");
}

TEST_F(HandleTest, TheLibrarysMessageIsNeverNull) {
    elf_errno(); // forgets earlier failures
    EXPECT_STREQ(elf_message(0), "(null)");
    EXPECT_STRNE(elf_message(1), "");
}

TEST_F(HandleTest, ANameEndsInsideItsTable) {
    Bytes bytes("\0ab\0cd", 6);
    Elf_Data table{};
    table.d_buf = bytes.data();
    table.d_size = bytes.size();
    EXPECT_EQ(name_at(&table, 1), "ab");
    EXPECT_EQ(name_at(&table, 2), "b");
    EXPECT_EQ(name_at(&table, 0), "");
    EXPECT_NE(name_at(&table, 0).data(), nullptr); // a name, if an empty one
    EXPECT_EQ(name_at(&table, 4).data(), nullptr); // without a NUL
    EXPECT_EQ(name_at(&table, 6).data(), nullptr);
    EXPECT_EQ(name_at(&table, 0xFFFFFFFF).data(), nullptr);
}

TEST_F(HandleTest, AnEmptyDescriptorNeedsNoBytes) {
    char byte = 'x';
    Elf_Data data{};
    EXPECT_TRUE(has_bytes(&data));
    data.d_size = 1;
    EXPECT_FALSE(has_bytes(&data));
    describe_bytes(&data, &byte, 1);
    EXPECT_TRUE(has_bytes(&data));
    EXPECT_EQ(data.d_buf, &byte);
    EXPECT_EQ(data.d_size, 1u);
    EXPECT_EQ(data.d_align, 128u);
}

TEST_F(HandleTest, ASectionIsFoundByItsWholeName) {
    const Package pkg = open(ZAN_PKG_READ);
    Elf_Scn* const b = section_by_name(pkg.get(), "b");
    ASSERT_NE(b, nullptr);
    EXPECT_EQ(name_at(name_table(pkg.get()), name_offset(b)), "b");
    EXPECT_EQ(section_by_name(pkg.get(), "bb"), nullptr);
    EXPECT_EQ(section_by_name(pkg.get(), nullptr), nullptr);
}

TEST_F(HandleTest, APackageThatIsBrokenHasNoSections) {
    const Package pkg = open(ZAN_PKG_READ);
    pkg->broken = true;
    EXPECT_EQ(section_by_name(pkg.get(), "a"), nullptr);
    for_each_listed_section(pkg.get(), [](Elf_Scn*, std::string_view name) {
        ADD_FAILURE() << name;
        return true;
    });
    EXPECT_EQ(new_section(pkg.get()), nullptr);
}

TEST_F(HandleTest, AListEndsWhereItsVisitorWants) {
    const Package pkg = open(ZAN_PKG_READ);
    std::string names;
    for_each_listed_section(pkg.get(), [&](Elf_Scn*, std::string_view name) {
        names += name;
        return false;
    });
    EXPECT_EQ(names, "a");
}

TEST_F(HandleTest, OneDescriptorIsValid) {
    const Package pkg = open(ZAN_PKG_READ_WRITE | ZAN_PKG_SHOW_ERROR);
    Elf_Scn* const section = section_by_name(pkg.get(), "b");
    Elf_Data* const data = valid_data(pkg.get(), section);
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(data->d_size, 2u);
    Elf_Data* const second = elf_newdata(section);
    describe_bytes(second, data->d_buf, data->d_size);
    Elf_Data* found = nullptr;
    EXPECT_EQ(find_data(section, found), DataFault::multiple);
    EXPECT_EQ(stderr_of([&] { EXPECT_EQ(valid_data(pkg.get(), section), nullptr); }),
              "Multiple data descriptors for section.\n");
}

// Sanitizers see blocks that are lost.
TEST_F(HandleTest, BlocksLiveAsLongAsTheHandle) {
    const Package pkg = open(ZAN_PKG_READ);
    auto* const first = static_cast<char*>(allocate_block(pkg.get(), 3));
    auto* const second = static_cast<char*>(allocate_block(pkg.get(), 0));
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    std::memcpy(first, "abc", 3);
    EXPECT_EQ(Bytes(first, 3), "abc");
}

} // namespace
