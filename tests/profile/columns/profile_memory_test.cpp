// SPDX-License-Identifier: Apache-2.0
// How much memory a profile's samples take while they are read.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "counting_new.h"
#include "series.h"
#include "temp_dir.h"
#include "timed_amounts.h"

using namespace zan::profile;

namespace {

// What each allocation takes to be counted, a few bytes, and what holds the test's own lists.
constexpr std::size_t small_change = 1024;

// 200 series of 60,000 values have 96 MB. One that grows has its old and its new room for a moment, 1 MiB at
// most, and zlib takes less than another.
TEST(ProfileMemoryTest, OpenValuesOfManySeriesStayBelowTheLimit) {
    const TempDir folder;
    ChunkStore store(folder.path());
    std::vector<std::unique_ptr<Series>> series;
    for (int i = 0; i < 200; ++i)
        series.push_back(std::make_unique<Series>(store));
    restart_most_bytes();
    for (std::int64_t i = 0; i < 60'000; ++i) {
        for (const auto& one : series)
            one->add(i);
    }
    EXPECT_LE(most_bytes(), ChunkStore::held_limit + (std::size_t{2} << 20));
    EXPECT_GT(most_bytes(), ChunkStore::held_limit / 2); // of the 96 MB
}

// 1,000 samples of 24 bytes have room for 1,024; while the list grows, also for the 512 before. Their bins
// would take 500 KB.
TEST(ProfileMemoryTest, AShortSeriesTakesNoBins) {
    restart_most_bytes();
    TimedAmounts amounts;
    for (std::int64_t i = 0; i < 1000; ++i)
        amounts.add_sample(64 * i, 64 * i + 64, 1.0);
    EXPECT_LE(most_bytes(), std::size_t{24} * (1024 + 512) + small_change);
    restart_most_bytes();
    EXPECT_EQ(amounts.bins().values().size(), 64'000U);
    EXPECT_LE(most_bytes(), 8U * 64'000U + small_change);
}

// A quarter as many samples as bins are held, 384 KiB, and freed when their bins, 512 KiB, are made.
TEST(ProfileMemoryTest, LongSeriesTakeTheirBinsAlone) {
    constexpr std::size_t num_series = 8;
    restart_most_bytes();
    std::vector<TimedAmounts> series(num_series);
    for (TimedAmounts& amounts : series) {
        for (std::int64_t i = 0; i < 20'000; ++i)
            amounts.add_sample(4 * i, 4 * i + 4, 1.0);
    }
    EXPECT_LE(most_bytes(), num_series * (std::size_t{512} << 10) + (std::size_t{384} << 10) + small_change);
}

} // namespace
