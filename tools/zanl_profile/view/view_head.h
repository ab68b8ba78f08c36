// SPDX-License-Identifier: Apache-2.0
// What a page knows of a profile besides its samples.
#pragma once

#include <span>
#include <string>

#include "page_json.h"
#include "profile_columns.h"
#include "series_table.h"

namespace zan::tool {

// What a page calls its input: the file's name without its folder.
std::string shown_name(const std::string& input);

// Writes the head of a page as a JSON object: the run, its memories, kernels and transfers, and the table of
// all series, which move from the profile into `table`. `sources`: the names of the files whose texts are the
// chunks after those of the series. docs/viewer.md has each key.
void write_head(PageJson& json, profile::ProfileColumns& profile, profile::SeriesTable& table,
                std::span<const std::string> sources);

} // namespace zan::tool
