// SPDX-License-Identifier: Apache-2.0
// `diff` for terminals.
#pragma once

#include <string>

#include "diff_view.h"
#include "table.h"

namespace zan::tool {

// Ends in a newline.
std::string diff_text(const DiffView& view, const TableLayout& layout);

} // namespace zan::tool
