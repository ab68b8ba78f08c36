// SPDX-License-Identifier: Apache-2.0
// Files in whose place new ones are written.
#pragma once

#include <string>

namespace zan::tool {

enum class FileKind { package, stream };

// Throws Failure if there is a file at `path` that is not of this kind, so that no other one is lost by a
// slip of the hand. An empty file may be replaced, and what is no plain file is for others to report.
void check_replaceable(const std::string& path, FileKind kind);

} // namespace zan::tool
