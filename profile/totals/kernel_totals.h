// SPDX-License-Identifier: Apache-2.0
// Sums over the nodes of a kernel.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "block_totals.h"
#include "invocations.h"
#include "profile_nodes.h"
#include "timed_amounts.h"

namespace zan::profile {

// Two nodes are of one kernel if they agree in this.
struct KernelKey {
    std::string name;
    int compute_unit = 0;
    SourcePlace source;
    std::optional<int> device;
    bool operator==(const KernelKey&) const = default;
};

// The stretches in which an autorun kernel worked, a few thousand at most: where there are more, those with
// the shortest times between them are joined.
class WorkSpans {
  public:
    void add(TimeSpan span);
    const std::vector<TimeSpan>& spans() const { return m_spans; } // in no order

  private:
    std::vector<TimeSpan> m_spans;
    double m_shortest_gap = 1.0; // shorter ones are not kept
};

// What a kernel moved from and to a memory over time: MB/s · cycles. By ports, and by the accesses that name
// the memory; a report may have one of them or both.
struct AccessTotals {
    std::string memory;
    TimedAmounts by_ports;
    TimedAmounts reads;
    TimedAmounts writes;
};

struct KernelTotals {
    KernelKey key;
    bool autorun = false;
    unsigned shared_types = 0; // bit i: shared type i
    std::uint64_t num_nodes = 0;
    std::uint64_t num_samples = 0;        // of all nodes
    std::uint64_t num_uncertain = 0;      // samples of nodes with more cycles than samples
    std::uint64_t num_backwards = 0;      // samples that end before they begin
    std::uint64_t num_without_cycles = 0; // samples whose cycles are there, but 0 or less
    bool activity_in_part = false;        // see HeldBlocks
    Invocations invocations;
    double cycles = 0.0;        // of samples that count
    double all_cycles = 0.0;    // also of an autorun kernel's samples without work
    double active_time = 0.0;   // length of the samples that count, of an autorun kernel
    WeightedSum clocked;        // cycles, and the lengths of their samples
    WorkSpans work;             // of an autorun kernel: when it worked
    CycleClasses cycle_classes; // of blocks and ports
    std::vector<BlockTotals> blocks;
    std::vector<PortTotals> ports;
    std::vector<AccessTotals> accesses;

    // The block of that name in the current node, new if there was none; `place` is where it is in the node.
    BlockTotals& block_named(std::string_view name, std::size_t place);
    PortTotals& port_of(const PortNode& node);
    AccessTotals& access_of(const std::string& memory);
};

} // namespace zan::profile
