// SPDX-License-Identifier: Apache-2.0
// Source locations in the report.
#pragma once

#include <optional>

#include "report_sink.h"

// Writes the members of a source location. The filename ends at its first NUL.
void write_source(ReportSink& node, const char* filename, int line, std::optional<int> column = std::nullopt);
