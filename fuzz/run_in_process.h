// SPDX-License-Identifier: Apache-2.0
// Whole runs of the post-processor inside a fuzz target.
#pragma once

#include <string>
#include <string_view>

// Joins the package at `package` and these lines into a report that isn't kept. Ends that input may bring
// about, and exceptions, are caught. What a run leaves for the end of its process is released.
void run_in_process(const std::string& package, std::string_view monitor_lines);
