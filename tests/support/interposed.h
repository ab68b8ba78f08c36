// SPDX-License-Identifier: Apache-2.0
// Failures that a test can't bring about by files: calls that go wrong on demand.
#pragma once

#include <sys/types.h>

#include <string>

namespace interposed {

// zlib has no memory to begin with.
inline bool no_zlib_memory = false;
// For this path stat() returns a folder, whatever is there, before anything else; none if it is empty.
inline std::string folder_path;
// What stat() adds to the size of each file: a file that has shrunk by then.
inline off_t added_size = 0;

} // namespace interposed
