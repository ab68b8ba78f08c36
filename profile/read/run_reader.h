// SPDX-License-Identifier: Apache-2.0
// A package and its capture as the stream of nodes of their report, without a report between.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "report_sink.h"
#include "run_fault.h"

struct ProfileModel;

namespace zan::profile {

// Reads the counters of each compute unit, one after the other.
inline constexpr int all_compute_units = -1;

// Sees what a run is made of. By default it looks at nothing.
class RunObserver {
  public:
    virtual ~RunObserver() = default;
    // The design, before the first line is read. `clock` is what the timing report says, "0.0" if nothing.
    virtual void take_design(const ProfileModel& /*model*/, const std::string& /*clock*/) {}
    // Each line of the capture before it is read, with its number from 1.
    virtual void take_line(std::uint64_t /*number*/, std::string_view /*text*/) {}
    // All lines were read. `has_newline`: the last one ended with it.
    virtual void take_end(bool /*has_newline*/) {}
};

struct RunOptions {
    // The unit whose counters are read. A report has those of unit 0. Kernels without such a unit have no
    // nodes, unless it is 0. With all units a capture that can't be read twice is copied first.
    int compute_unit = 0;
    // Called now and then with the bytes of the capture that have been read.
    std::function<void(std::uint64_t bytes)> progress = {};
    RunObserver* observer = nullptr; // not owned; null if there is none
    // A section whose bytes are beyond the end of the package is read as none, as the report of
    // `zanl-profile-tly` has it. Else it ends the run.
    bool reads_cut_sections = false;
};

// A kernel of the design that has several compute units.
struct KernelUnits {
    std::string kernel; // as the report names it
    unsigned int num_units = 1;
    bool operator==(const KernelUnits&) const = default;
};

struct RunResult {
    // False if a fault has ended the run. The sink has then got a part of a report, with open nodes.
    bool is_whole = false;
    std::uint64_t num_lines = 0;    // of the capture
    std::uint64_t num_left_out = 0; // of these
    std::uint64_t num_bytes = 0;    // of the capture
    std::vector<KernelUnits> units; // in the order of the kernels' names
};

// Writes the members of the report's root to `nodes`: the same in the same order as a run of zanl-profile-tly
// writes them, so that JsonWriter makes the bytes of that report. Nodes of invocations go out as soon as they
// are complete; only those of transfers are held, folded.
//
// `package` and `capture` are paths, or "-" for standard input, which only one of them can be. What is wrong
// with either is handed to `faults`, at the moment when it is found; nothing is written to standard error,
// and no input ends the process. An exception of the sink or of the receiver ends the reading and reaches the
// caller. One run at a time: runs of a process share the cycles of functions.
RunResult read_run(const std::string& package, const std::string& capture, const RunOptions& options,
                   ReportSink& nodes, FaultReceiver& faults);

// Reads the package alone. False if a fault would end a run.
bool read_design(const std::string& package, RunObserver& observer, FaultReceiver& faults);

} // namespace zan::profile
