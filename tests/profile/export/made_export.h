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

// The same, with that many samples: the first lasts from 100 to 110 and 1 cycle, and each one after it 10
// ticks and one cycle more.
inline std::string odd_report_of_samples(int count) {
    std::string stamps;
    std::string cycles;
    for (int i = 1; i <= count; ++i) {
        stamps += (i > 1 ? ", \"" : "\"") + std::to_string(100 + 10 * i) + "\"";
        cycles += (i > 1 ? ", \"" : "\"") + std::to_string(i) + "\"";
    }
    std::string report = odd_report;
    report.replace(report.find("\"110\", \"130\""), 12, stamps);
    report.replace(report.find("\"10\", \"20\""), 10, cycles);
    return report;
}

// The same without a part of its text.
inline std::string odd_report_without(const std::string& part) {
    std::string report = odd_report;
    const std::size_t at = report.find(part);
    if (at == std::string::npos)
        throw std::logic_error("the report has no " + part);
    return report.erase(at, part.size());
}

inline void export_text(const std::string& report, ExportWriter& writer) {
    const TempDir dir;
    write_file(dir.path("r.json"), report);
    const auto fault = export_input({dir.path("r.json"), ""}, {}, writer);
    if (fault)
        throw std::runtime_error(fault->text);
}

} // namespace zan::profile
