// SPDX-License-Identifier: Apache-2.0
// Members of an object of a report, right from its text.
#pragma once

#include "packed_numbers.h"
#include "report_sink.h"

namespace zan::profile {

// Writes the members of an object that stand at `at` to the sink, each after a comma: `, "line": "3"`. Stops
// before the comma of the first that isn't plain, and returns where. Plain are those of which the key has
// ASCII alone, without escapes, and the value is such a text or an array of up to 64 numbers. `numbers` is
// used for arrays, and cleared.
//
// Bytes from `at` on end in a zero byte, and PackedNumbers::num_readable bytes after that one can be read.
const char* add_plain_members(const char* at, PackedNumbers& numbers, ReportSink& sink);

} // namespace zan::profile
