// SPDX-License-Identifier: Apache-2.0
#include "section_types.h"

#include <gtest/gtest.h>

namespace {

using zan::tool::section_type_name;

TEST(SectionTypeName, IsThatOfElfOrANumber) {
    EXPECT_EQ(section_type_name(1), "PROGBITS");
    EXPECT_EQ(section_type_name(3), "STRTAB");
    EXPECT_EQ(section_type_name(8), "NOBITS");
    EXPECT_EQ(section_type_name(18), "SYMTAB_SHNDX");
    EXPECT_EQ(section_type_name(12), "0x0000000C");
    EXPECT_EQ(section_type_name(0x6FFF4700), "0x6FFF4700");
}

} // namespace
