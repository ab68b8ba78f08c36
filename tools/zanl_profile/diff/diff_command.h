// SPDX-License-Identifier: Apache-2.0
// `zanl-profile diff`: two runs compared.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "command_line.h"
#include "profile_summary.h"

namespace zan::tool {

extern const Command diff_command;

// For commands that compare runs from elsewhere.
struct DiffOptions {
    std::string match = "name";
    std::string format = "text";
    std::vector<std::string> rules;
    std::vector<std::string> kernels;
    std::vector<std::string> blocks;
};
// The options must live as long as the command line.
void add_diff_options(CLI::App& app, Console& console, DiffOptions* options);
// The old run and the new one.
using SummariesToCompare = std::function<std::pair<profile::ProfileSummary, profile::ProfileSummary>()>;
// Reads both runs after it has checked the options, and prints what changed. Throws Failure if a rule is
// broken.
void diff_summaries(const DiffOptions& options, const Console& console, const SummariesToCompare& read);

} // namespace zan::tool
