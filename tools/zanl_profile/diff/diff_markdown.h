// SPDX-License-Identifier: Apache-2.0
// `diff` for pages that show Markdown, such as the summary of a job of CI.
#pragma once

#include <string>

#include "diff_view.h"

namespace zan::tool {

// Ends in a newline.
std::string diff_markdown(const DiffView& view);

} // namespace zan::tool
