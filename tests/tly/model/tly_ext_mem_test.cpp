// SPDX-License-Identifier: Apache-2.0
#include "tly_ext_mem.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

using Values = std::vector<long long>;

TEST(ExtMemCounts, AnEmptyRecordHasNoSamples) {
    const ExtMemCounts counts;
    EXPECT_TRUE(counts.getCount(EXT_MEM_READ, 0, 0).empty());
    EXPECT_TRUE(counts.getCount(EXT_MEM_WRITE_BURST, 5, 7).empty());
    EXPECT_TRUE(counts.getCount(EXT_MEM_READ, -1, 0).empty());
    EXPECT_TRUE(counts.getCount(EXT_MEM_READ, 0, -1).empty());
}

TEST(ExtMemCounts, OnlyTheNamedPortGetsTheSample) {
    ExtMemCounts counts;
    counts.updateCount(EXT_MEM_WRITE, 2, 3, 5, true);
    EXPECT_EQ(counts.getCount(EXT_MEM_WRITE, 2, 3), (Values{5}));
    for (int bank = 0; bank <= 3; ++bank) {
        for (int port = 0; port <= 4; ++port) {
            if (bank != 2 || port != 3) {
                EXPECT_TRUE(counts.getCount(EXT_MEM_WRITE, bank, port).empty()) << bank << ", " << port;
            }
        }
    }
    EXPECT_TRUE(counts.getCount(EXT_MEM_READ, 2, 3).empty());
}

TEST(ExtMemCounts, AnOperationThatIsNoneHasNoSamples) {
    ExtMemCounts counts;
    for (const int number : {-1, 4}) {
        const auto op = static_cast<ExtMemOpType>(number);
        counts.updateCount(op, 0, 0, 5, true);
        EXPECT_TRUE(counts.getCount(op, 0, 0).empty()) << number;
    }
    for (const ExtMemOpType op : {EXT_MEM_READ, EXT_MEM_WRITE, EXT_MEM_READ_BURST, EXT_MEM_WRITE_BURST})
        EXPECT_TRUE(counts.getCount(op, 0, 0).empty()) << op;
}

TEST(ExtMemCounts, SamplesOfAPortStayInOrder) {
    ExtMemCounts counts;
    counts.updateCount(EXT_MEM_READ, 0, 1, 5, true);
    counts.updateCount(EXT_MEM_READ, 0, 1, 0, true);
    counts.updateCount(EXT_MEM_READ, 0, 1, 7, true);
    EXPECT_EQ(counts.getCount(EXT_MEM_READ, 0, 1), (Values{5, 0, 7}));
}

TEST(ExtMemCounts, WithoutPushAValueIsAddedToTheLastSample) {
    ExtMemCounts counts;
    counts.updateCount(EXT_MEM_READ, 0, 0, 5, true);
    counts.updateCount(EXT_MEM_READ, 0, 0, 6, true);
    counts.updateCount(EXT_MEM_READ, 0, 0, 10, false);
    EXPECT_EQ(counts.getCount(EXT_MEM_READ, 0, 0), (Values{5, 16}));
    counts.updateCount(EXT_MEM_READ, 0, 0, LLONG_MAX, false); // 16 + 2^63 - 1 wraps to 15 - 2^63
    EXPECT_EQ(counts.getCount(EXT_MEM_READ, 0, 0), (Values{5, LLONG_MIN + 15}));
}

TEST(ExtMemCounts, WithoutPushAPortWithoutSamplesRecordsNothing) {
    ExtMemCounts counts;
    counts.updateCount(EXT_MEM_READ, 0, 0, 5, false);
    EXPECT_TRUE(counts.getCount(EXT_MEM_READ, 0, 0).empty());
}

TEST(ExtMemCounts, NegativeNumbersRecordNothing) {
    ExtMemCounts counts;
    counts.updateCount(EXT_MEM_READ, -1, 0, 5, true);
    counts.updateCount(EXT_MEM_READ, 0, -2, 5, true);
    EXPECT_TRUE(counts.getCount(EXT_MEM_READ, -1, 0).empty());
    EXPECT_TRUE(counts.getCount(EXT_MEM_READ, 0, -2).empty());
}

TEST(ExtMemCounts, HugeNumbersTakeNoStorageForThoseBelow) {
    ExtMemCounts counts;
    counts.updateCount(EXT_MEM_READ_BURST, 2000000000, INT_MAX, 5, true);
    EXPECT_EQ(counts.getCount(EXT_MEM_READ_BURST, 2000000000, INT_MAX), (Values{5}));
    EXPECT_TRUE(counts.getCount(EXT_MEM_READ_BURST, 1999999999, 0).empty());
}

TEST(TlyExtMemInterface, HasItsPortsByIndex) {
    const TlyExtMemInterface interface("bank", 512, {"r", "w"});
    EXPECT_EQ(interface.getName(), "bank");
    EXPECT_EQ(interface.getDataWidth(), 512);
    EXPECT_EQ(interface.getNumPorts(), 2);
    EXPECT_EQ(interface.getPortName(1), "w");
    EXPECT_THROW(interface.getPortName(2), std::out_of_range);
    EXPECT_THROW(interface.getPortName(-1), std::out_of_range);
}

class TlyExtMemTest : public testing::Test {
  protected:
    TlyExtMemTest() {
        memory.add_interface("b0", 512, {"p0", "p1"});
        memory.add_interface("b1", 256, {});
    }

    TlyExtMem memory{"DDR", 19200.0f};
};

TEST_F(TlyExtMemTest, ForwardsToItsInterfacesInTheOrderOfAdding) {
    EXPECT_EQ(memory.get_name(), "DDR");
    EXPECT_EQ(memory.get_num_interfaces(), 2);
    EXPECT_EQ(memory.get_interface_name(0), "b0");
    EXPECT_EQ(memory.get_interface_width(1), 256);
    EXPECT_EQ(memory.get_interface_nports(0), 2);
    EXPECT_EQ(memory.get_interface_nports(1), 0);
    EXPECT_EQ(memory.get_interface_port_name(0, 1), "p1");
}

TEST_F(TlyExtMemTest, ThrowsBeyondTheEndOfEitherList) {
    EXPECT_THROW(memory.get_interface_name(2), std::out_of_range);
    EXPECT_THROW(memory.get_interface_name(-1), std::out_of_range);
    EXPECT_THROW(memory.get_interface_width(2), std::out_of_range);
    EXPECT_THROW(memory.get_interface_nports(2), std::out_of_range);
    EXPECT_THROW(memory.get_interface_port_name(1, 0), std::out_of_range);
    EXPECT_THROW(memory.get_interface_port_name(2, 0), std::out_of_range);
}

TEST(TlyExtMem, KnowsNoBurstCountUntilItIsSet) {
    TlyExtMem memory("DDR", 0.0f);
    EXPECT_FALSE(memory.has_max_burst_count());
    EXPECT_EQ(memory.get_max_burst_count(), 0u);
    memory.set_max_burst_count(16);
    EXPECT_TRUE(memory.has_max_burst_count());
    EXPECT_EQ(memory.get_max_burst_count(), 16u);
}

} // namespace
