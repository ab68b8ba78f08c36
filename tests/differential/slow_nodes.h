// SPDX-License-Identifier: Apache-2.0
// Nodes of the report.
#pragma once

#include "slow_run.h"

namespace slow {

// Appends an element to an array.
void add_node(ptree& array, const ptree& node);

ptree kernel_node(Run& run, const Kernel& kernel);
ptree transfer_node(const std::string& name, int device, int queue, long long start, long long end);
// `memories` in the order of the description, the default one first.
ptree board_node(const std::string& name, const std::vector<Memory>& memories);

// The whole report of a run with this program version.
ptree report(const Run& run, const std::string& version);

} // namespace slow
