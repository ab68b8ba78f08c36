// SPDX-License-Identifier: Apache-2.0
#include "memory_use.h"

#include <gtest/gtest.h>

#include "stream_report.h"

using namespace zan::profile;

namespace {

// 300 MB/s for 10 ns of each 1,000: the pauses between invocations don't count.
TEST(MemoryUse, IsOfTheTimeInWhichKernelsRan) {
    StreamReport report{.kernels = {}, .memories = {{}}};
    for (long long i = 0; i < 1000; ++i) {
        const long long start = 1'000'000 * i;
        report.kernels.push_back({.start = start,
                                  .stamps = {start + 10},
                                  .cycles = {10},
                                  .blocks = {},
                                  .ports = {{.bandwidth = {300.0f}}}});
    }
    const auto totals = totals_of(report);
    const RunTimes times(*totals);
    MemoryUse use(*totals, times, "DDR");
    EXPECT_GT(use.shift(), 10); // bins of more than 1,000 units of time
    EXPECT_NEAR(use.total(), 1000 * 3000.0, 1e-6);
    EXPECT_NEAR(use.covered_time(), 10'000.0, 1e-6);
    double time = 0.0;
    use.for_each_bin([&](double rate, double length) {
        if (rate > 0.0) {
            EXPECT_NEAR(rate, 300.0, 1e-6);
            time += length;
        }
    });
    EXPECT_NEAR(time, 10'000.0, 1e-6);
    TimeBins weights;
    weights.add(0, 10, 5.0);
    EXPECT_NEAR(known(use.mean_rate(weights)), 300.0, 1e-6);
    EXPECT_EQ(use.mean_rate(TimeBins()), std::nullopt);
}

TEST(MemoryUse, OfAnotherMemoryIsNothing) {
    const auto totals =
        totals_of({.kernels = {{.stamps = {10}, .cycles = {10}, .ports = {{.bandwidth = {3.0f}}}}}});
    const RunTimes times(*totals);
    MemoryUse use(*totals, times, "HBM");
    EXPECT_TRUE(use.kernels().empty());
    EXPECT_EQ(use.total(), 0.0);
    EXPECT_EQ(use.rate(0, 5), 0.0);
    EXPECT_FALSE(use.from_ports());
}

} // namespace
