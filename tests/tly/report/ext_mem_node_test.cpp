// SPDX-License-Identifier: Apache-2.0
// Nodes of external memory ports.
#include <gtest/gtest.h>

#include <map>

#include "capture.h"
#include "inst_builder.h"
#include "node_text.h"
#include "tly_json.h"

namespace {

// A memory with two interfaces, 512 and 256 bits wide.
class ExtMemNodeTest : public testing::Test {
  protected:
    // The memory with this burst count, 0 for none.
    TlyExtMem* memory(unsigned int max_burst_count = 0) {
        const auto [entry, is_new] = m_memories.try_emplace(max_burst_count, "DDR", 0.0f);
        TlyExtMem& mem = entry->second;
        if (is_new) {
            mem.add_interface("wide", 512, {"p0", "p1"});
            mem.add_interface("narrow", 256, {"p0"});
            if (max_burst_count != 0)
                mem.set_max_burst_count(max_burst_count);
        }
        return &mem;
    }

    void record(ExtMemOpType op, const std::vector<long long>& values, int bank = 0, int port = 1) {
        for (const long long value : values)
            inst->updateExtMemCounter("DDR", op, bank, port, value, true);
    }

    // The node of port 1 of interface 0.
    std::string node(const SampleList<long long>& cycles) { return node(cycles, memory()); }
    std::string node(const SampleList<long long>& cycles, TlyExtMem* mem) {
        ptree built;
        messages = stderr_of([&] { getExtMemJSON(inst.get(), cycles, mem, 0, 1).swap(built); });
        return node_text(built);
    }

    // At 1000 MHz a cycle is a nanosecond.
    std::unique_ptr<TlyModuleInst> inst = InstBuilder{.function = "ext_node", .fmax = 1000.0f}.make();
    std::string messages;

  private:
    std::map<unsigned int, TlyExtMem> m_memories;
};

constexpr const char* head = "type=extmem name=DDR interface=wide port=p1 ";

// 625 words of 64 bytes are 40000 bytes. In a millisecond, 0.00099999993 s as a float, that is 40000004 bytes
// a second as a float, 400.00003 units, rounded up 401: 40.1. In double it would be 40.
TEST_F(ExtMemNodeTest, APortWithBothKindsHasNeitherFlagAndTheSumOfBoth) {
    record(EXT_MEM_READ, {600});
    record(EXT_MEM_WRITE, {25});
    EXPECT_EQ(node({1000000}),
              std::string(head) + "global_used_bw=[40.1] avg_write_burst=[0] avg_read_burst=[0]");
    EXPECT_EQ(messages, "");
}

TEST_F(ExtMemNodeTest, APortWithWritesAloneIsWriteOnly) {
    record(EXT_MEM_WRITE, {1000, 0});
    // 64000 bytes in 10 microseconds, 9.9999997e-06 s as a float, are 6.4e9 bytes a second.
    EXPECT_EQ(node({10000, 10000}), std::string(head) +
                                        "write_only=true global_used_bw=[6400 0] "
                                        "avg_write_burst=[0 0] avg_read_burst=[0 0]");
    EXPECT_EQ(messages, "");
}

TEST_F(ExtMemNodeTest, APortWithReadsAloneIsReadOnly) {
    record(EXT_MEM_READ, {1000});
    EXPECT_EQ(
        node({10000}),
        std::string(head) + "read_only=true global_used_bw=[6400] avg_write_burst=[0] avg_read_burst=[0]");
}

TEST_F(ExtMemNodeTest, TheWidthIsThatOfTheInterface) {
    record(EXT_MEM_READ, {1000}, 1, 0);
    const ptree narrow = getExtMemJSON(inst.get(), {10000}, memory(), 1, 0);
    EXPECT_EQ(node_text(narrow),
              "type=extmem name=DDR interface=narrow port=p0 read_only=true "
              "global_used_bw=[3200] avg_write_burst=[0] avg_read_burst=[0]");
}

TEST_F(ExtMemNodeTest, WithoutDataThereIsNoNode) {
    record(EXT_MEM_READ_BURST, {5});
    EXPECT_EQ(node({1000}), "");
    EXPECT_EQ(messages, "Error: there is no external read and write data. Nothing to add to json.\n");
}

TEST_F(ExtMemNodeTest, AnIndexThatTheMemoryDoesNotHaveThrows) {
    record(EXT_MEM_READ, {5}, 2, 0);
    EXPECT_THROW(getExtMemJSON(inst.get(), {1}, memory(), 2, 0), std::out_of_range);
}

TEST_F(ExtMemNodeTest, DifferentLengthsAreReportedAndTheShortestWins) {
    record(EXT_MEM_WRITE, {1000, 1000});
    EXPECT_EQ(node({10000}), std::string(head) +
                                 "write_only=true global_used_bw=[6400] avg_write_burst=[0] "
                                 "avg_read_burst=[0]");
    EXPECT_EQ(messages,
              "Warning: number of external memory write samples is not equal to the total number of clock "
              "samples\n");

    record(EXT_MEM_READ, {1});
    EXPECT_EQ(node({10000, 10000, 10000}),
              std::string(head) + "global_used_bw=[6406.4] avg_write_burst=[0] avg_read_burst=[0]");
    EXPECT_EQ(messages,
              "Warning: number of external memory write samples is not equal to number of external memory "
              "read samples "
              "and/or the total number of samples\n");

    inst->reset();
    record(EXT_MEM_READ, {1000});
    EXPECT_EQ(node({10000, 10000}), std::string(head) +
                                        "read_only=true global_used_bw=[6400] avg_write_burst=[0] "
                                        "avg_read_burst=[0]");
    EXPECT_EQ(messages,
              "Warning: number of external memory read samples is not equal to the total number of clock "
              "samples\n");
}

TEST_F(ExtMemNodeTest, WithoutClockSamplesThereIsNoList) {
    record(EXT_MEM_READ, {1000});
    EXPECT_EQ(node({}), "type=extmem name=DDR interface=wide port=p1 read_only=true");
}

TEST_F(ExtMemNodeTest, ASampleWithoutWordsTakesNoLookAtTheClock) {
    record(EXT_MEM_READ, {0, 5, -5});
    record(EXT_MEM_WRITE, {0, -5, 4});
    EXPECT_NE(node({0, 0, 0}).find("global_used_bw=[0 0 0]"), std::string::npos);
}

TEST_F(ExtMemNodeTest, AnIntervalOfNoTimeMakesAnInfinity) {
    record(EXT_MEM_READ, {5});
    EXPECT_NE(node({0}).find("global_used_bw=[inf]"), std::string::npos);
}

TEST_F(ExtMemNodeTest, OneWordIsEnoughForABandwidthAndAnAverage) {
    record(EXT_MEM_READ, {1});
    record(EXT_MEM_READ_BURST, {16});
    record(EXT_MEM_WRITE, {0});
    EXPECT_EQ(node({0}, memory(16)),
              std::string(head) + "global_used_bw=[inf] avg_write_burst=[0] avg_read_burst=[0.0625]");
}

TEST_F(ExtMemNodeTest, WithoutAClockTheBandwidthIsANegativeZero) {
    inst->setFmax(0.0f);
    record(EXT_MEM_READ, {5});
    EXPECT_NE(node({100}).find("global_used_bw=[-0]"), std::string::npos);
}

TEST_F(ExtMemNodeTest, MoreThanTenBurstsMakeAnAverage) {
    record(EXT_MEM_READ, {110, 110, 110});
    record(EXT_MEM_READ_BURST, {10, 11, 20});
    record(EXT_MEM_WRITE, {88, 88, 88});
    record(EXT_MEM_WRITE_BURST, {11, 10, 16});
    const std::string text = node({1, 1, 1}, memory(16));
    EXPECT_NE(text.find("avg_write_burst=[8 0 5.5] avg_read_burst=[0 10 5.5]"), std::string::npos) << text;
}

TEST_F(ExtMemNodeTest, AveragesNeedAMemoryWithBursts) {
    record(EXT_MEM_READ, {110});
    record(EXT_MEM_READ_BURST, {11});
    EXPECT_NE(node({1}, memory()).find("avg_read_burst=[0]"), std::string::npos);
    EXPECT_NE(node({1}, memory(1)).find("avg_read_burst=[0]"), std::string::npos);
    EXPECT_NE(node({1}, memory(2)).find("avg_read_burst=[10]"), std::string::npos);
}

TEST_F(ExtMemNodeTest, AveragesNeedABurstCountForEachSample) {
    record(EXT_MEM_READ, {110, 110});
    record(EXT_MEM_READ_BURST, {11});
    EXPECT_NE(node({1, 1}, memory(16)).find("avg_read_burst=[0 0]"), std::string::npos);
    record(EXT_MEM_READ_BURST, {11, 11});
    EXPECT_NE(node({1, 1}, memory(16)).find("avg_read_burst=[10 10]"), std::string::npos);
}

TEST_F(ExtMemNodeTest, NegativeWordsMakeNoAverage) {
    record(EXT_MEM_READ, {-110});
    record(EXT_MEM_READ_BURST, {11});
    EXPECT_NE(node({1}, memory(16)).find("avg_read_burst=[0]"), std::string::npos);
}

} // namespace
