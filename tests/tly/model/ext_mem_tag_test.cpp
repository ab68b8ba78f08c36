// SPDX-License-Identifier: Apache-2.0
#include "ext_mem_tag.h"

#include <gtest/gtest.h>

namespace {

TEST(ExtMemTag, NamesMemoryBankPortAndOperation) {
    const std::pair<const char*, ExtMemOpType> rows[] = {
        {"_read_data_inc_en_", EXT_MEM_READ},
        {"_write_data_inc_en_", EXT_MEM_WRITE},
        {"_read_burst_count_en_", EXT_MEM_READ_BURST},
        {"_write_burst_count_en_", EXT_MEM_WRITE_BURST},
    };
    for (const auto& [word, op] : rows) {
        const ExtMemTag tag =
            decode_ext_mem_tag("profile_extmem_k_function_mem_bank1_port2" + std::string(word) + "x");
        EXPECT_EQ(tag.op, op) << word;
        EXPECT_TRUE(tag.names_op);
        EXPECT_EQ(tag.memory, "mem");
        EXPECT_EQ(tag.bank, 1);
        EXPECT_EQ(tag.port, 2);
        EXPECT_EQ(tag.fault, ExtMemTag::Fault::none);
    }
}

// "_bank" starts inside "_function_", so the length of the name is negative, and the name is all that
// follows.
TEST(ExtMemTag, AnEmptyMemoryNameTakesTheRestOfTheTag) {
    const ExtMemTag tag = decode_ext_mem_tag("profile_extmem_k_function_bank1_port2_read_data_inc_en_x");
    EXPECT_EQ(tag.memory, "bank1_port2_read_data_inc_en_x");
    EXPECT_EQ(tag.bank, 1);
    EXPECT_EQ(tag.port, 2);
}

TEST(ExtMemTag, TheFirstOccurrenceOfEachWordCounts) {
    // The kernel's own name holds "_bank" in front of "_function_": the bank text is all up to "_port".
    const ExtMemTag tag =
        decode_ext_mem_tag("profile_extmem_my_bank7_k_function_mem_bank1_port2_read_data_inc_en_x");
    EXPECT_EQ(tag.bank, 7);
    EXPECT_EQ(tag.port, 2);
    EXPECT_EQ(tag.memory, "mem_bank1_port2_read_data_inc_en_x");
}

} // namespace
