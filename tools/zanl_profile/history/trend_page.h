// SPDX-License-Identifier: Apache-2.0
// A trend as a page: one HTML file without scripts, which needs nothing else.
#pragma once

#include <string>

#include "trend_view.h"

namespace zan::tool {

// The page: sentence, chart, and a table of the runs. There must be at least one run.
std::string trend_page(const TrendView& view);

} // namespace zan::tool
