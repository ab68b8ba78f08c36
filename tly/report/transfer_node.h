// SPDX-License-Identifier: Apache-2.0
// The node of a transfer between host and device.
#pragma once

#include <string_view>

#include "report_sink.h"

// Times are in the unit of the monitor file.
void write_mem_transfer(ReportSink& node, std::string_view name, int device_id, int command_queue_id,
                        long long start_time, long long end_time);
