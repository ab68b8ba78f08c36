// SPDX-License-Identifier: Apache-2.0
// The node of a board.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

#include "report_sink.h"

// Writes a child for each memory of `max_bandwidths` (megabytes a second), in the map's iteration order. A
// memory that `max_burst_counts` lacks has no burst count.
void write_board(ReportSink& node, std::string_view board_type,
                 const std::unordered_map<std::string, float>& max_bandwidths,
                 const std::unordered_map<std::string, unsigned int>& max_burst_counts);
