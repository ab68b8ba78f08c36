// SPDX-License-Identifier: Apache-2.0
// A summary for scripts that don't read JSON.
#pragma once

#include <string>

#include "summary_tables.h"

namespace zan::tool {

// A table for each kind of thing: answers, kernels, blocks, memories, transfers, notes. Its first line has
// the names of the columns, with units; columns are separated by tabs, tables by an empty line. All rows are
// there, blocks in the order of the view; only its kernel, sort and top count. Numbers have all their digits;
// what isn't known is "-".
std::string plain_summary_text(const profile::ProfileSummary& summary, const SummaryView& view);

} // namespace zan::tool
