// SPDX-License-Identifier: Apache-2.0
#include "pkg_write.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include "package_fixture.h"
#include "pkg_sections.h"

namespace {

using namespace zan::pkg;

class WriteTest : public PackageTest {};

TEST_F(WriteTest, APackageHasLessThan4GiB) {
    constexpr std::uint64_t any_size = 1ull << 40;
    EXPECT_EQ(size_fault(0xFFFFFFFF, any_size), "");
    EXPECT_EQ(size_fault(0x100000000, any_size),
              "it would be 4294967296 bytes long, and a package has at most 4294967295");
    EXPECT_EQ(size_fault(1000, 1000), "");
    EXPECT_EQ(size_fault(1001, 1000), "the gaps between its sections would make it 1001 bytes long");
}

// By its sizes alone: the bytes are never looked at, and there is no such memory or file. Sections are at
// multiples of 128, the first one of a new package at 0x1100. After it, from the next multiple of 4 on, come
// the headers of 4 sections, of 40 bytes each. So with this size the file ends at 2^32 - 4, and with one byte
// more at 2^32.
TEST_F(WriteTest, WhatIsTooLargeIsNotBegun) {
    constexpr std::size_t largest = 0x100000000 - 4 - 4 * 40 - 0x1100;
    void* const nothing =
        ::mmap(nullptr, largest + 1, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(nothing, MAP_FAILED);
    for (const std::size_t size : {largest, largest + 1}) {
        zan_pkg_file* const pkg = zan_pkg_open_file(path.c_str(), create_mode);
        EXPECT_EQ(zan_pkg_add_data_section(pkg, "a", nothing, size), 1);
        EXPECT_EQ(close_edited(pkg, 1000000),
                  size == largest
                      ? "the gaps between its sections would make it 4294967292 bytes long"
                      : "it would be 4294967296 bytes long, and a package has at most 4294967295");
        EXPECT_EQ(std::filesystem::file_size(path), 0u);
    }
    ::munmap(nothing, largest + 1);
}

} // namespace
