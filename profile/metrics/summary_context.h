// SPDX-License-Identifier: Apache-2.0
// What all parts of a summary need: the runs, their clock, their unit of time and the board.
#pragma once

#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "memory_use.h"
#include "run_times.h"
#include "time_unit.h"
#include "totals.h"

namespace zan::profile {

// One run of the design.
struct SummaryRun {
    explicit SummaryRun(const Totals& of) : totals(of), times(of) {}

    // Made when it is first asked for.
    MemoryUse& memory(const std::string& name);

    const Totals& totals;
    RunTimes times;

  private:
    std::map<std::string, MemoryUse> m_memories;
};

// A kernel in the runs that have it.
struct KernelPart {
    SummaryRun* run;
    std::size_t place; // in the run's totals

    const KernelTotals& totals() const { return run->totals.kernels()[place]; }
    const KernelTimes& times() const { return run->times.kernels[place]; }
};
using JoinedKernel = std::vector<KernelPart>; // at least one

// A block of a kernel in the runs that have it. A name that occurs again in a kernel is another block.
struct BlockPart {
    KernelPart kernel;
    const BlockTotals* totals;
};
using JoinedBlock = std::vector<BlockPart>; // at least one

struct SummaryContext {
    SummaryContext(std::span<const Totals* const> of, Value stated_nanoseconds);

    // Of a memory of the board; missing if the board doesn't say it.
    Value peak(const std::string& memory) const; // MB/s
    Value max_burst(const std::string& memory) const;
    // A length in the report's unit as metrics have it: in nanoseconds where the unit is known.
    double time(double length) const { return length * unit.nanoseconds.value_or(1.0); }
    // MB/s, of MB/s · cycles for each unit of time.
    Value megabytes_per_second(Value rate) const;
    double span_length() const; // of all runs together, in the report's unit

    std::vector<std::unique_ptr<SummaryRun>> runs;
    Value clock_mhz;
    TimeUnit unit;
    std::vector<BoardMemoryNode> board;
};

// The kernels of all runs: in the order of their first nodes, autorun kernels last.
std::vector<JoinedKernel> join_kernels(const SummaryContext& context);
std::vector<JoinedBlock> join_blocks(const JoinedKernel& kernel);

// `part` of `whole` in percent; missing if the whole is 0.
Value percent_of(double part, double whole);

} // namespace zan::profile
