// SPDX-License-Identifier: Apache-2.0
#include "summary_context.h"

#include <gtest/gtest.h>

#include "stream_report.h"

using namespace zan::profile;

namespace {

TEST(SummaryContext, JoinsKernelsOfRunsWithAutorunOnesLast) {
    const auto first =
        totals_of({.kernels = {{.name = "stage", .autorun = true}, {.name = "b"}, {.name = "a"}}});
    const auto second = totals_of({.kernels = {{.name = "a"}, {.name = "c"}}});
    const Totals* const runs[] = {first.get(), second.get()};
    const SummaryContext context(runs, {});
    std::string names;
    for (const JoinedKernel& kernel : join_kernels(context))
        names += kernel.front().totals().key.name + std::to_string(kernel.size()) + " ";
    EXPECT_EQ(names, "b1 a2 c1 stage1 ");
}

TEST(SummaryContext, JoinsBlocksByNameAndOccurrence) {
    const StreamKernel kernel{
        .stamps = {1}, .cycles = {1}, .blocks = {{.name = "x"}, {.name = "x"}, {.name = "y"}}};
    const auto first = totals_of({.kernels = {kernel}});
    const auto second = totals_of({.kernels = {kernel}});
    const Totals* const runs[] = {first.get(), second.get()};
    const SummaryContext context(runs, {});
    const auto blocks = join_blocks(join_kernels(context).at(0));
    ASSERT_EQ(blocks.size(), 3U);
    for (const JoinedBlock& block : blocks)
        EXPECT_EQ(block.size(), 2U);
    EXPECT_EQ(blocks[1].at(1).totals, &second->kernels()[0].blocks[1]);
}

TEST(SummaryContext, KnowsTheBoardAndTheUnits) {
    const auto totals =
        totals_of({.kernels = {{.stamps = {2}, .cycles = {1000}}},
                   .memories = {{.name = "HBM", .peak = 10.0f, .max_burst = 8}, {.name = "DDR"}},
                   .clock = "500.0"});
    const Totals* const runs[] = {totals.get()};
    const SummaryContext context(runs, {});
    EXPECT_EQ(context.unit.nanoseconds, 1000.0); // 1,000 cycles of 2 ns last 2
    EXPECT_EQ(context.time(3.0), 3000.0);
    EXPECT_EQ(context.peak("HBM"), 10.0);
    EXPECT_EQ(context.max_burst("HBM"), 8.0);
    EXPECT_EQ(context.peak("SRAM"), std::nullopt);
    // 50 MB/s · cycles in each microsecond: 0.1 byte in 1,000 ns are 0.1 MB/s.
    EXPECT_NEAR(known(context.megabytes_per_second(50.0)), 0.1, 1e-12);
    EXPECT_EQ(context.megabytes_per_second({}), std::nullopt);
    EXPECT_EQ(context.span_length(), 2.0);
    EXPECT_EQ(percent_of(1.0, 4.0), 25.0);
    EXPECT_EQ(percent_of(1.0, 0.0), std::nullopt);
}

TEST(SummaryContext, JoinsOnlyKernelsOfOneNameUnitSourceAndDevice) {
    const StreamKernel kernel{.stamps = {10}, .cycles = {10}};
    std::vector<StreamKernel> others(5, kernel);
    others[0].name = "other";
    others[1].compute_unit = 1;
    others[2].line = 2;
    others[3].device = 1;
    for (std::size_t i = 0; i < others.size(); ++i) {
        const auto first = totals_of({.kernels = {kernel}});
        const auto second = totals_of({.kernels = {others[i]}});
        const Totals* const runs[] = {first.get(), second.get()};
        const SummaryContext context(runs, {});
        EXPECT_EQ(join_kernels(context).size(), i == 4 ? 1U : 2U) << i;
    }
}

TEST(SummaryContext, JoinsABlockThatOnlyOneRunHasWithNone) {
    const auto run_with = [](std::vector<StreamBlock> blocks) {
        return totals_of({.kernels = {{.stamps = {1}, .cycles = {1}, .blocks = std::move(blocks)}}});
    };
    const auto first = run_with({{.name = "x"}, {.name = "y"}});
    const auto second = run_with({{.name = "z"}, {.name = "y"}});
    const Totals* const runs[] = {first.get(), second.get()};
    const SummaryContext context(runs, {});
    std::string names;
    for (const JoinedBlock& block : join_blocks(join_kernels(context).at(0)))
        names += block.front().totals->name + std::to_string(block.size()) + " ";
    EXPECT_EQ(names, "x1 y2 z1 ");
}

} // namespace
