// SPDX-License-Identifier: Apache-2.0
// Whether the global memories of a board go together.
#pragma once

#include "BoardSpec.h"

namespace zan::board::xml {

// The message of the first conflict of a memory with another one, or null. Two memories may lie on the same
// addresses only if one is the other's secondary.
const char* find_global_mem_conflict(const BoardSpec& spec);

// The first entry of a memory's list of accessible memories that names none, or null. It belongs to `spec`.
const std::string* find_unknown_can_access(const BoardSpec& spec);

} // namespace zan::board::xml
