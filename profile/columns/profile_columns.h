// SPDX-License-Identifier: Apache-2.0
// A profile with all its samples, as a page needs it.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "chunk_store.h"
#include "columns.h"
#include "inputs.h"
#include "profile_summary.h"

namespace zan::profile {

// How many means over the span show what a memory carried.
inline constexpr std::size_t num_memory_bins = 1024;

struct ProfileColumns {
    explicit ProfileColumns(const std::string& folder) : store(folder), columns(store) {}

    ProfileSummary summary;
    ChunkStore store;
    Columns columns;
    std::vector<std::size_t> kernel_places; // in `columns`, of the summary's kernels
    // For each of the summary's kernels: the mean MB/s of each memory while it ran.
    std::vector<std::map<std::string, double>> kernel_traffic;
    std::map<std::string, std::vector<double>> memory_bins; // by memory: MB/s
    std::uint64_t group = 1;                                // samples that one of the columns stands for
};

// Reads a report, or a package with its capture. A saved summary has no samples, and is a fault. `folder` is
// where temporary files are made. Throws std::system_error if these can't be written.
std::variant<std::unique_ptr<ProfileColumns>, InputFault> read_columns(const Input& input,
                                                                       const InputOptions& options,
                                                                       const std::string& folder);

} // namespace zan::profile
