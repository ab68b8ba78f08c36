// SPDX-License-Identifier: Apache-2.0
// Removes folders from within a signal handler.
#pragma once

namespace zan::tool {

// Removes the file, or the folder with all in it; symbolic links are not followed. Allocates nothing, takes
// the same memory for any depth, and makes only calls that a signal handler may make. What can't be removed
// stays, with the folders above it, and maybe with what lies beside it.
void remove_tree(const char* path);

} // namespace zan::tool
