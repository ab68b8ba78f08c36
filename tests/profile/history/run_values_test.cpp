// SPDX-License-Identifier: Apache-2.0
#include "run_values.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "history_schema.h"
#include "two_runs.h"

namespace {

using namespace zan::profile;

// Each row as "scope kernel name metric run value".
std::vector<std::string> rows_of(Database& database) {
    Statement query(database,
                    "SELECT concat_text FROM (SELECT scope || ' ' || kernel || ' ' || name || ' ' || "
                    "metric || ' ' || run || ' ' || value AS concat_text FROM value "
                    "JOIN series ON series = number ORDER BY run, series)");
    std::vector<std::string> rows;
    while (query.step())
        rows.push_back(query.text(0));
    return rows;
}

class RunValuesTest : public testing::Test {
  protected:
    RunValuesTest() : database(":memory:", OpenMode::create) { bring_up_to_date(database, 0); }
    Database database;
};

TEST_F(RunValuesTest, HaveASeriesForEachMetricOfEachSubject) {
    ProfileSummary run =
        run_of({kernel_of("k", {{Metric::kernel_time, 5}}, {block_of("b", {{Metric::stall, 28}})})},
               {memory_of("DDR", {{Metric::memory_full, 2}})}, {{Metric::span, 9}});
    run.memories[0].peak = 38'400;
    RunValues values(database);
    values.add(1, run);
    run.kernels[0].compute_unit = 3;
    run.kernels[0].blocks.clear();
    run.memories.clear();
    run.nanoseconds.reset(); // times of another unit are another series
    values.add(2, run);
    EXPECT_THAT(rows_of(database),
                testing::ElementsAre(
                    "run   span_ns 1 9.0", "kernel k  kernel_time_ns 1 5.0", "block k b stall_percent 1 28.0",
                    "memory  DDR memory_full_percent 1 2.0", "memory  DDR peak_mb_per_s 1 38400.0",
                    "run   span_ticks 2 9.0", "kernel k#3  kernel_time_ticks 2 5.0"));
}

TEST_F(RunValuesTest, SeriesAreFoundAgain) {
    RunValues(database).add(1, run_of({kernel_of("k", {{Metric::kernel_time, 5}})}));
    RunValues(database).add(2, run_of({kernel_of("k", {{Metric::kernel_time, 6}})}));
    EXPECT_EQ(database.number("SELECT count(*) FROM series"), 1);
    EXPECT_EQ(database.number("SELECT count(*) FROM value"), 2);
}

// Texts can't be taken for the ends of others.
TEST_F(RunValuesTest, NamesOfAnyKindAreTheirOwn) {
    RunValues(database).add(1, run_of({kernel_of("a:b", {}, {block_of("c", {{Metric::stall, 1}})}),
                                       kernel_of("a", {}, {block_of("b:c", {{Metric::stall, 2}})}),
                                       kernel_of("'; DROP TABLE run; --", {{Metric::busy, 3}})}));
    EXPECT_THAT(rows_of(database),
                testing::ElementsAre("block a:b c stall_percent 1 1.0", "block a b:c stall_percent 1 2.0",
                                     "kernel '; DROP TABLE run; --  busy_percent 1 3.0"));
}

TEST_F(RunValuesTest, WhatIsNoNumberIsMissing) {
    RunValues(database).add(1,
                            run_of({kernel_of("k", {{Metric::busy, std::numeric_limits<double>::infinity()},
                                                    {Metric::alone, std::numeric_limits<double>::quiet_NaN()},
                                                    {Metric::waiting, 0}}),
                                    kernel_of("k", {{Metric::waiting, 9}})})); // the first of a name counts
    EXPECT_THAT(rows_of(database), testing::ElementsAre("kernel k  waiting_percent 1 0.0"));
}

} // namespace
