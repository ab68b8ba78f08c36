// SPDX-License-Identifier: Apache-2.0
// The line of a terminal that shows progress. It is there once for the process.
#pragma once

#include <string>

namespace zan::tool {

// Writes the line on standard error, over the one that is there. `text` must fit into the terminal's line.
void show_progress_line(const std::string& text);
// Removes the line if there is one. Only calls that a signal handler may make.
void remove_progress_line();

} // namespace zan::tool
