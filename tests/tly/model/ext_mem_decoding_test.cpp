// SPDX-License-Identifier: Apache-2.0
// How values reach the ports of external memories.
#include <gtest/gtest.h>

#include <climits>

#include "capture.h"
#include "inst_builder.h"

namespace {

using Values = std::vector<long long>;

class ExtMemDecodingTest : public testing::Test {
  protected:
    // The messages of two lines on an instance with that tag. Each line has them again.
    std::string messages_of(const std::string& tag) {
        inst = InstBuilder{.function = "ext_mem", .tags = {tag}}.make();
        std::string first = stderr_of([&] { add_sample(*inst, {"5"}); });
        const std::string second = stderr_of([&] { add_sample(*inst, {"6"}); });
        EXPECT_EQ(first, second);
        return first;
    }

    std::unique_ptr<TlyModuleInst> inst;
};

TEST_F(ExtMemDecodingTest, SamplesGoToTheNamedPort) {
    EXPECT_EQ(messages_of("profile_extmem_k_function_mem_bank1_port2_read_data_inc_en_x"), "");
    EXPECT_EQ(inst->getNumExtReads("mem", 1, 2), (Values{5, 6}));
    EXPECT_TRUE(inst->getNumExtWrites("mem", 1, 2).empty());
    EXPECT_TRUE(inst->getNumExtReadBurstStarts("mem", 1, 2).empty());
    EXPECT_TRUE(inst->getNumExtWriteBurstStarts("mem", 1, 2).empty());
    EXPECT_TRUE(inst->getNumExtReads("mem", 1, 1).empty());
    EXPECT_TRUE(inst->getNumExtReads("other", 1, 2).empty());
    EXPECT_EQ(inst->getExtMemNames(), (std::vector<std::string>{"mem"}));
}

TEST_F(ExtMemDecodingTest, ATagWithoutAnOperationCountsAsReadBursts) {
    EXPECT_EQ(messages_of("profile_extmem_k_function_mem_bank1_port2_nothing"),
              "WARNING: extmem port tag does not match an op type\n");
    EXPECT_EQ(inst->getNumExtReadBurstStarts("mem", 1, 2), (Values{5, 6}));
}

TEST_F(ExtMemDecodingTest, ATagWithoutAPropertyIsReportedAndRecordsNothing) {
    for (const std::string tag : {"profile_extmem_k_mem_bank1_port2_read_data_inc_en_x",
                                  "profile_extmem_k_function_mem_port2_read_data_inc_en_x",
                                  "profile_extmem_k_function_mem_bank1_read_data_inc_en_x"}) {
        EXPECT_EQ(messages_of(tag),
                  "WARNING: something went wrong when decoding the properties of the external memory " + tag +
                      "\n");
        EXPECT_EQ(inst->getNumExtMems(), 0);
    }
}

TEST_F(ExtMemDecodingTest, BothFaultsOfATagAreReported) {
    EXPECT_EQ(messages_of("profile_extmem_"),
              "WARNING: extmem port tag does not match an op type\n"
              "WARNING: something went wrong when decoding the properties of the external memory "
              "profile_extmem_\n");
}

TEST_F(ExtMemDecodingTest, ABadBankIsReportedAlone) {
    const std::string start = "WARNING: value for external memory bank was invalid: ";
    EXPECT_EQ(messages_of("profile_extmem_k_function_m_bankX_portY_read_data_inc_en_x"), start + "X\n");
    EXPECT_EQ(messages_of("profile_extmem_k_function_m_bank_port2_read_data_inc_en_x"), start + "\n");
    EXPECT_EQ(messages_of("profile_extmem_k_function_m_bank2147483648_port2_read_data_inc_en_x"),
              start + "2147483648\n");
    EXPECT_EQ(inst->getNumExtMems(), 0);
}

TEST_F(ExtMemDecodingTest, ABadPortIsReportedWithAllThatFollowsIt) {
    EXPECT_EQ(messages_of("profile_extmem_k_function_m_bank1_portY_read_data_inc_en_x"),
              "WARNING: value for external memory port was invalid: Y_read_data_inc_en_x\n");
    EXPECT_EQ(inst->getNumExtMems(), 0);
}

TEST_F(ExtMemDecodingTest, NegativeNumbersAreInvalid) {
    EXPECT_EQ(messages_of("profile_extmem_k_function_m_bank-1_port2_read_data_inc_en_x"),
              "WARNING: value for external memory bank was invalid: -1\n");
    EXPECT_EQ(messages_of("profile_extmem_k_function_m_bank1_port-2_read_data_inc_en_x"),
              "WARNING: value for external memory port was invalid: -2_read_data_inc_en_x\n");
    EXPECT_EQ(inst->getNumExtMems(), 0);
}

TEST_F(ExtMemDecodingTest, ABankOrPortOfTwoThousandMillionIsRecorded) {
    EXPECT_EQ(messages_of("profile_extmem_k_function_m_bank2000000000_port2000000000_write_data_inc_en_x"),
              "");
    EXPECT_EQ(inst->getNumExtWrites("m", 2000000000, 2000000000), (Values{5, 6}));
}

TEST_F(ExtMemDecodingTest, ATagIsDecodedInEveryRunWithSharedCounters) {
    inst = InstBuilder{.function = "ext_shared",
                       .shared = true,
                       .tags = {"profile_extmem_k_function_m_bank0_port0_read_data_inc_en_x"}}
               .make();
    add_sample(*inst, {"5"}, SHARED_IDLE);
    EXPECT_EQ(inst->getNumExtReads("m", 0, 0), (Values{5}));
}

TEST(UpdateExtMemCounter, RecordsAndAddsToTheLastSample) {
    const auto inst = InstBuilder{.function = "direct"}.make();
    inst->updateExtMemCounter("m", EXT_MEM_WRITE, 0, 1, 5, true);
    inst->updateExtMemCounter("m", EXT_MEM_WRITE, 0, 1, 6, false);
    EXPECT_EQ(inst->getNumExtWrites("m", 0, 1), (Values{11}));
}

TEST(UpdateExtMemCounter, NegativeNumbersAreReportedAndRecordNothing) {
    const auto inst = InstBuilder{.function = "direct_negative"}.make();
    EXPECT_EQ(stderr_of([&] {
                  inst->updateExtMemCounter("m", EXT_MEM_READ, -7, -8, 5, true);
                  inst->updateExtMemCounter("m", EXT_MEM_READ, 0, -8, 5, true);
              }),
              "WARNING: value for external memory bank was invalid: -7\n"
              "WARNING: value for external memory port was invalid: -8\n");
    EXPECT_EQ(inst->getNumExtMems(), 0);
}

TEST(UpdateExtMemCounter, AnOperationThatThereIsNotRecordsNothing) {
    const auto inst = InstBuilder{.function = "direct_operation"}.make();
    EXPECT_EQ(stderr_of([&] {
                  for (const int op : {EXT_MEM_READ - 1, EXT_MEM_WRITE_BURST + 1})
                      inst->updateExtMemCounter("m", static_cast<ExtMemOpType>(op), 0, 0, 5, true);
              }),
              "");
    EXPECT_EQ(inst->getNumExtMems(), 0);
}

TEST(UpdateSingleCounter, AppliesOneValueByItsTag) {
    const auto inst = InstBuilder{.function = "single"}.make();
    inst->updateSingleCounter("ivalid", 5, true);
    inst->updateSingleCounter("ivalid", 6, true);
    inst->updateSingleCounter("nothing", 7, true);
    inst->updateSingleCounter("clock_single_function", 8, true);
    inst->updateSingleCounter("profile_extmem_k_function_m_bank0_port0_read_data_inc_en_x", 9, true);
    inst->pushValuesOnVectors();
    EXPECT_EQ(inst->getIValidCount(), (Values{11}));
    EXPECT_EQ(inst->getTotalCycles(), (Values{8}));
    EXPECT_EQ(inst->getNumExtReads("m", 0, 0), (Values{9}));
}

// The names come in the order of a hash map that was filled alike, also after it has been emptied.
TEST(ExtMemNames, FollowTheIterationOrderOfTheMap) {
    const auto inst = InstBuilder{.function = "names"}.make();
    std::unordered_map<std::string, int> alike;
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 40; ++i) {
            const std::string name = "memory" + std::to_string(i * 7 % 40);
            inst->updateExtMemCounter(name, EXT_MEM_READ, 0, 0, 1, true);
            alike[name] = 1;
        }
        std::vector<std::string> expected;
        for (const auto& [name, value] : alike)
            expected.push_back(name);
        EXPECT_EQ(inst->getExtMemNames(), expected);
        inst->reset();
        alike.clear();
    }
}

} // namespace
