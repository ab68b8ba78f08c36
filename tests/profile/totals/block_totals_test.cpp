// SPDX-License-Identifier: Apache-2.0
#include "block_totals.h"

#include <gtest/gtest.h>

using namespace zan::profile;

namespace {

TEST(BlockTotals, CyclesAreClassedUntilThereAreTooMany) {
    CycleClasses classes;
    for (std::size_t i = 0; i < CycleClasses::most; ++i)
        EXPECT_EQ(classes.place_of(static_cast<double>(100 + i)), i);
    EXPECT_EQ(classes.place_of(100.0), 0U);
    EXPECT_EQ(classes.place_of(7.0), CycleClasses::most);
    EXPECT_EQ(classes.place_of(7.0), CycleClasses::most);
    EXPECT_EQ(classes.place_of(101.0), 1U);
}

// 10 cycles at 300 MHz are 33.3 ns, of which the report takes 33.
TEST(BlockTotals, BytesAreThoseOfWholeNanoseconds) {
    CycleClasses classes;
    MovedSum moved;
    moved.add(1000.0, 10.0, classes);
    moved.add(2000.0, 10.0, classes);
    EXPECT_NEAR(moved.bytes(classes, 300.0f), 3000.0 * 33.0 / 1000.0, 1e-9);
}

// Beyond the classes it is the half of a nanosecond that is cut off on average: 10 cycles are 33.3 - 0.5 ns.
// At 250 MHz all cycles are 4 ns, and nothing is cut off.
TEST(BlockTotals, BytesOfTooManyClassesAreAboutThose) {
    CycleClasses classes;
    for (std::size_t i = 0; i < CycleClasses::most; ++i)
        classes.place_of(static_cast<double>(100 + i));
    MovedSum moved;
    moved.add(3000.0, 10.0, classes);
    EXPECT_NEAR(moved.bytes(classes, 300.0f), 3000.0 * (100.0 / 3.0 - 0.5) / 1000.0, 1e-9);
    EXPECT_NEAR(moved.bytes(classes, 250.0f), 3000.0 * 40.0 / 1000.0, 1e-9);
}

TEST(BlockTotals, SumsOfTwoRunsAddUp) {
    BlockSums a;
    a.num_samples = 2;
    a.stall.add(10.0, 100.0);
    a.max_valid = 0.3;
    BlockSums b;
    b.num_samples = 3;
    b.stall.add(30.0, 100.0);
    b.valid.add(50.0, 100.0);
    b.max_fill = 4.0;
    a += b;
    EXPECT_EQ(a.num_samples, 5U);
    EXPECT_EQ(a.stall.ratio(), 0.2);
    EXPECT_EQ(a.valid.ratio(), 0.5); // of the run that has it
    EXPECT_EQ(a.idle.ratio(), std::nullopt);
    EXPECT_EQ(a.max_valid, 0.3);
    EXPECT_EQ(a.max_fill, 4.0);
    EXPECT_EQ(a.max_burst, -1.0);
}

TEST(BlockTotals, BurstEntriesOfZeroAreUnknown) {
    BlockTotals block;
    block.add_burst_entries(SampleList<float>{0.0f, 3.0f, 5.0f, std::numeric_limits<float>::quiet_NaN()});
    EXPECT_EQ(block.sums.burst_entries.ratio(), 4.0);
    EXPECT_EQ(block.sums.max_burst, 5.0);
}

} // namespace
