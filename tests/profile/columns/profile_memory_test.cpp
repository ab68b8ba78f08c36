// SPDX-License-Identifier: Apache-2.0
// How much memory a profile's samples take while they are read.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "counting_new.h"
#include "series.h"
#include "temp_dir.h"

using namespace zan::profile;

namespace {

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

} // namespace
