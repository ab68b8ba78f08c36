// SPDX-License-Identifier: Apache-2.0
#include "joined_samples.h"

#include <gtest/gtest.h>

#include "series_units.h"
#include "temp_dir.h"

using namespace zan::profile;

namespace {

// Four samples of 10 cycles that move 1, 2, 3 and 6 MB/s through a port: two and two become one.
TEST(JoinedSamples, OfAPortHaveTheirMeansByCycles) {
    const TempDir dir;
    ChunkStore store(dir.path());
    KernelColumns kernel(store);
    kernel.num_samples = 4;
    kernel.invocations.push_back({0, 40, 0, SharedType::none});
    PortNode names;
    names.memory = "DDR";
    PortColumns& port = *kernel.ports.emplace_back(std::make_unique<PortColumns>(names, store));
    const float rates[] = {1.0f, 2.0f, 3.0f, 6.0f};
    const std::int64_t cycles[] = {10, 30, 10, 10};
    for (std::size_t i = 0; i < 4; ++i) {
        kernel.time.series.add(static_cast<std::int64_t>(10 * i + 10));
        kernel.cycles.series.add(cycles[i]);
        port.bandwidth.series.add(rates[i]);
    }
    port.bandwidth.sums.products = 160.0; // 1 · 10 + 2 · 30 + 3 · 10 + 6 · 10
    const auto joined = joined_samples(kernel, {{0, 0, 4}}, 2, store);
    EXPECT_EQ(joined->num_samples, 2u);
    EXPECT_EQ(units_of(joined->time.series, store), (std::vector<std::int64_t>{20, 40}));
    EXPECT_EQ(units_of(joined->cycles.series, store), (std::vector<std::int64_t>{40, 20}));
    ASSERT_EQ(joined->ports.size(), 1u);
    Column& bandwidth = joined->ports[0]->bandwidth;
    EXPECT_EQ(joined->ports[0]->memory, "DDR");
    // (10 + 60) / 40 = 1.75, (30 + 60) / 20 = 4.5, in thousandths: three decimals more than whole numbers
    // have.
    EXPECT_EQ(units_of(bandwidth.series, store), (std::vector<std::int64_t>{1750, 4500}));
    EXPECT_EQ(units_of(bandwidth.peaks->least, store), (std::vector<std::int64_t>{1, 3}));
    EXPECT_EQ(units_of(bandwidth.peaks->range, store), (std::vector<std::int64_t>{1, 3}));
    EXPECT_EQ(bandwidth.sums.products, 160.0);
    EXPECT_EQ(units_of(joined->device, store),
              (std::vector<std::int64_t>{0, 0})); // missing ones repeat nothing
    EXPECT_EQ(joined->device.marks(), (std::vector<MarkRun>{{0, 2, Mark::missing}}));
}

} // namespace
