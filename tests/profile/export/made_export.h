// SPDX-License-Identifier: Apache-2.0
// A small report, through any writer.
#pragma once

#include <stdexcept>
#include <string>

#include "export_input.h"
#include "temp_dir.h"
#include "whole_file.h"

namespace zan::profile {

// A report of a kernel with a hostile name, two samples, and a block that has a number that is none.
inline constexpr const char* odd_report = R"report({
"json_type": "Corvane Profiler JSON",
"versions": {"profiler_json_version": "1", "zanx_version": "2"},
"kernels": {"nodes": [{"name": "=cmd(\"x\")", "start_time": "100", "compute_unit": "0",
 "sourcefile": {"filename": "a,b.cl", "line": "3"},
 "sample_timestamps": ["110", "130"], "total_cycles_between_samples": ["10", "20"],
 "children": [{"type": "moduleinst", "name": "load", "module_inst_details": {"mem_type": "__global",
  "operation_type": "read", "stall_samples": ["5", "-1"], "bandwidth_samples": ["0.1", "nan"]},
  "sourcefiles": [{"filename": "a.cl", "line": "7", "callsite": [{"filename": "m.cl", "line": "9"}]}]}]}]},
"memtransfers": {"nodes": [{"type_transfer": ".mem_transfer_read", "device_id": "1", "command_queue_id": "2",
 "start_time": "50", "end_time": "60"}]},
"run_info": {"nodes": [{"fmax": "1000.0"}]}
})report";

inline void export_text(const std::string& report, ExportWriter& writer) {
    const TempDir dir;
    write_file(dir.path("r.json"), report);
    const auto fault = export_input({dir.path("r.json"), ""}, {}, writer);
    if (fault)
        throw std::runtime_error(fault->text);
}

} // namespace zan::profile
