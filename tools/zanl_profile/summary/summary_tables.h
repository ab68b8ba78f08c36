// SPDX-License-Identifier: Apache-2.0
// A summary as people read it: the four answers, then tables.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "profile_summary.h"

namespace zan::tool {

struct SummaryView {
    std::string kernel;                  // the only one that is shown; empty: all
    std::optional<profile::Metric> sort; // of blocks; nothing: by the time that they lost
    std::optional<std::size_t> top;      // rows of blocks; nothing: as many as fit
    bool short_sources = false;          // names of source files without their folders
    std::size_t width = 100;             // columns
    bool colors = false;
};

// How many rows a table has at most if nothing else is asked for: together with headings and empty lines 45
// lines, sentences and notes aside.
struct TableRows {
    std::size_t kernels = 7;
    std::size_t blocks = 8;
    std::size_t memories = 3;
    std::size_t loops = 3;
    std::size_t transfers = 3;
};

// The answers and tables. What isn't known is "-". Each device has its own tables of kernels, blocks and
// loops.
std::string summary_text(const profile::ProfileSummary& summary, const SummaryView& view);

} // namespace zan::tool
