// SPDX-License-Identifier: Apache-2.0
// A history in a folder of the test, and small runs for it.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "history_store.h"
#include "temp_dir.h"
#include "two_runs.h"

namespace zan::profile {

// A run that took that many nanoseconds.
inline ProfileSummary run_of_time(double time) {
    ProfileSummary summary;
    summary.input = "r.json";
    summary.board = "vela";
    summary.clock_mhz = 240.5;
    summary.nanoseconds = 1.0;
    summary.kernels = {kernel_of("k", {{Metric::kernel_time, time}})};
    summary.kernels[0].device = 2;
    return summary;
}

inline HistoryEntry entry_of(double time, const std::string& date = "2026-11-22", Labels labels = {}) {
    return {run_of_time(time), date, std::move(labels)};
}

template <class Work>
std::string history_fault_of(Work work) {
    try {
        work();
    } catch (const HistoryFault& fault) {
        return fault.what();
    }
    return "no fault";
}

class HistoryTest : public testing::Test {
  protected:
    std::vector<Added> add(std::vector<HistoryEntry> entries) const {
        return HistoryStore(path, OpenMode::create).add(entries);
    }
    const TempDir dir;
    const std::string path = dir.path("runs.db");
};

} // namespace zan::profile
