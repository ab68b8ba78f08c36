// SPDX-License-Identifier: Apache-2.0
#include "joined_samples.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <utility>
#include <vector>

#include "series_units.h"
#include "temp_dir.h"

using namespace zan::profile;

namespace {

// Samples of 10 cycles each, of a block whose series have these values.
template <class T>
using ValuesOfSeries = std::vector<std::pair<BlockSeries, std::array<T, 4>>>;

struct BlockJoinedInPairs {
    explicit BlockJoinedInPairs(const ValuesOfSeries<std::int64_t>& numbers,
                                const ValuesOfSeries<float>& floats) {
        KernelColumns kernel(store);
        kernel.num_samples = 4;
        kernel.invocations.push_back({0, 40, 0, SharedType::none});
        for (std::int64_t end = 10; end <= 40; end += 10) {
            kernel.time.series.add(end);
            kernel.cycles.series.add(std::int64_t{10});
        }
        BlockColumns& block = kernel.blocks.emplace_back();
        add(block, numbers);
        add(block, floats);
        joined = joined_samples(kernel, {{0, 0, 4}}, 2, store);
    }
    template <class T>
    void add(BlockColumns& block, const ValuesOfSeries<T>& all) {
        for (const auto& [series, values] : all) {
            auto& column = block.columns[static_cast<std::size_t>(series)];
            column = std::make_unique<Column>(store);
            for (const T value : values)
                column->series.add(value);
        }
    }
    Column& column(BlockSeries series) const {
        return *joined->blocks.at(0).columns[static_cast<std::size_t>(series)];
    }
    std::vector<std::int64_t> units(BlockSeries series) const {
        return units_of(column(series).series, store);
    }

    const TempDir dir;
    ChunkStore store{dir.path()};
    std::unique_ptr<KernelColumns> joined;
};

using Units = std::vector<std::int64_t>;

// Two and two become one: counts are added up.
TEST(JoinedSamples, OfABlockHaveTheSumsOfItsCounts) {
    const BlockJoinedInPairs block({{BlockSeries::valid, {4, 6, 2, 3}},
                                    {BlockSeries::stall, {1, 3, 0, 2}},
                                    {BlockSeries::idle, {5, 1, 8, 5}},
                                    {BlockSeries::requests, {3, 1, 0, 0}},
                                    {BlockSeries::hits, {5, 5, 1, 2}}},
                                   {});
    EXPECT_EQ(block.units(BlockSeries::valid), (Units{10, 5}));
    EXPECT_EQ(block.units(BlockSeries::stall), (Units{4, 2}));
    EXPECT_EQ(block.units(BlockSeries::idle), (Units{6, 13}));
    EXPECT_EQ(block.units(BlockSeries::requests), (Units{4, 0}));
    EXPECT_EQ(block.units(BlockSeries::hits), (Units{10, 3}));
    // Charts show shares of the cycles, in hundredths of a percent: 40% and 60%, 20% and 30%.
    const Column& valid = block.column(BlockSeries::valid);
    EXPECT_EQ(units_of(valid.peaks->least, block.store), (Units{4000, 2000}));
    EXPECT_EQ(units_of(valid.peaks->range, block.store), (Units{2000, 1000}));
}

// With three decimals more than whole numbers have, and five for the efficiencies, which have two.
TEST(JoinedSamples, OfABlockHaveMeansByWhatWasMovedAndAskedFor) {
    const BlockJoinedInPairs block({{BlockSeries::stall, {1, 3, 0, 2}},
                                    {BlockSeries::requests, {3, 1, 0, 0}},
                                    {BlockSeries::fill, {2, 4, 1, 5}},
                                    {BlockSeries::max_fill, {7, 3, 2, 9}}},
                                   {{BlockSeries::bandwidth, {1.0f, 3.0f, 2.0f, 4.0f}},
                                    {BlockSeries::efficiency, {0.5f, 1.0f, 1.0f, 0.25f}},
                                    {BlockSeries::burst, {0.0f, 4.0f, 2.0f, 4.0f}}});
    EXPECT_EQ(block.units(BlockSeries::bandwidth), (Units{2000, 3000})); // by cycles, which are the same
    // By bandwidth: (0.5 · 1 + 1 · 3) / 4 = 0.875 and (1 · 2 + 0.25 · 4) / 6 = 0.5.
    EXPECT_EQ(block.units(BlockSeries::efficiency), (Units{87500, 50000}));
    // By requests and stalls: (2 · 4 + 4 · 4) / 8 = 3; of the third sample there are none.
    EXPECT_EQ(block.units(BlockSeries::fill), (Units{3000, 5000}));
    EXPECT_EQ(block.units(BlockSeries::max_fill), (Units{7, 9}));
    EXPECT_EQ(block.units(BlockSeries::burst), (Units{4000, 3000})); // 0 words are no burst
}

TEST(JoinedSamples, WithoutWhatWeighsThemThereAreNoMeans) {
    const BlockJoinedInPairs block({{BlockSeries::fill, {2, 4, 1, 5}}},
                                   {{BlockSeries::efficiency, {0.5f, 1.0f, 1.0f, 0.25f}}});
    for (const BlockSeries series : {BlockSeries::fill, BlockSeries::efficiency})
        EXPECT_EQ(block.column(series).series.marks(), (std::vector<MarkRun>{{0, 2, Mark::missing}}));
}

// The second of four samples has no cycles, so only the first one counts in its pair.
TEST(JoinedSamples, OfWhichSomeHaveNoCyclesAddUpTheOthers) {
    const TempDir dir;
    ChunkStore store(dir.path());
    KernelColumns kernel(store);
    kernel.num_samples = 4;
    kernel.invocations.push_back({0, 40, 0, SharedType::none});
    auto& requests = kernel.blocks.emplace_back().columns[static_cast<std::size_t>(BlockSeries::requests)];
    requests = std::make_unique<Column>(store);
    const std::int64_t cycles[] = {10, 0, 10, 10};
    const std::int64_t counts[] = {4, 6, 2, 3};
    for (std::size_t i = 0; i < 4; ++i) {
        kernel.time.series.add(static_cast<std::int64_t>(10 * i + 10));
        kernel.cycles.series.add(cycles[i]);
        requests->series.add(counts[i]);
    }
    const auto joined = joined_samples(kernel, {{0, 0, 4}}, 2, store);
    EXPECT_EQ(units_of(joined->cycles.series, store), (Units{10, 20}));
    Column& column = *joined->blocks.at(0).columns[static_cast<std::size_t>(BlockSeries::requests)];
    EXPECT_EQ(units_of(column.series, store), (Units{4, 5}));
    EXPECT_EQ(units_of(column.peaks->counts, store), (Units{1, 2}));
    EXPECT_EQ(units_of(column.peaks->least, store), (Units{4, 2}));
    EXPECT_EQ(units_of(column.peaks->range, store), (Units{0, 1})); // from 4 to 4, from 2 to 3
}

TEST(JoinedSamples, HaveTheDeviceAndQueueOfTheLastOne) {
    const TempDir dir;
    ChunkStore store(dir.path());
    KernelColumns kernel(store);
    kernel.num_samples = 4;
    kernel.invocations.push_back({0, 40, 0, SharedType::none});
    for (std::int64_t i = 1; i <= 4; ++i) {
        kernel.time.series.add(10 * i);
        kernel.cycles.series.add(std::int64_t{10});
        kernel.device.add(i);
    }
    kernel.queue.add(std::int64_t{7});
    kernel.queue.add(std::int64_t{8}); // none of the other samples
    const auto joined = joined_samples(kernel, {{0, 0, 4}}, 2, store);
    EXPECT_EQ(units_of(joined->device, store), (Units{2, 4}));
    EXPECT_TRUE(joined->device.marks().empty());
    EXPECT_EQ(units_of(joined->queue, store), (Units{8, 8})); // a mark repeats the number before it
    EXPECT_EQ(joined->queue.marks(), (std::vector<MarkRun>{{1, 1, Mark::missing}}));
}

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
