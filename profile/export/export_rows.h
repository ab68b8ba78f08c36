// SPDX-License-Identifier: Apache-2.0
// The rows of the tables that don't have a row for each sample.
#pragma once

#include <cstdint>

#include "export_writer.h"
#include "series_reader.h"

namespace zan::profile {

// Writes the rows of all tables but transfers and samples, table by table.
void write_rows(const WholeRun& run, std::int64_t run_id, const OddNumbers& odd, RowWriter& writer);

// Writes the row of a transfer.
void write_transfer_row(std::int64_t run_id, std::int64_t id, const TransferNode& node, RowWriter& writer);

// "a.cl:12 < main.cl:30; b.cl:7": where a block is in the sources, and after each "<" where that is called.
std::string call_chain_text(const std::vector<CallChain>& chains);

} // namespace zan::profile
