// SPDX-License-Identifier: Apache-2.0
// The table of all series in the head of a page.
#pragma once

#include "page_json.h"
#include "series_table.h"

namespace zan::tool {

// Writes it as an object of columns, each an array of one entry a series, and of what only some series have,
// by their numbers: places without a number, and pyramids.
void write_series_table(PageJson& json, const profile::SeriesTable& table);

} // namespace zan::tool
