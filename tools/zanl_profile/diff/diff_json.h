// SPDX-License-Identifier: Apache-2.0
// `diff` for scripts.
#pragma once

#include "diff_view.h"
#include "json_output.h"

namespace zan::tool {

inline constexpr const char* diff_schema = "zanl-profile/diff";
inline constexpr int diff_schema_version = 1;

// One document. Keys of values name their units; what isn't known is null. Throws what the target throws.
void print_diff_json(const DiffResult& result, TextTarget target);

} // namespace zan::tool
