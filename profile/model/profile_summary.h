// SPDX-License-Identifier: Apache-2.0
// What a run looked like, in numbers: the result that summary, diff and history show. It comes from a report,
// from a package with its capture, or from a saved summary, and holds no samples: its size depends on the
// design alone.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "metric_table.h"

namespace zan::profile {

enum class BlockKind { global, loop, channel, other };
enum class Direction { none, read, write };

// A place in the sources of a kernel.
struct SourcePlace {
    std::string file;
    int line = 0;
    int column = 0;
    bool operator==(const SourcePlace&) const = default;
};
// Innermost first: the place itself, then where it was called from.
using CallChain = std::vector<SourcePlace>;

// What a rule of the diagnosis says of a block.
struct Sentence {
    std::string rule; // the name of the rule; empty if there was no diagnosis
    std::string tone; // cause, symptom, note, none, good
    std::string text; // with what rules of the tone "added" appended
    bool operator==(const Sentence&) const = default;
};

// A hardware block of a kernel.
struct BlockSummary {
    std::string name;
    BlockKind kind = BlockKind::other;
    Direction direction = Direction::none;
    std::string memory; // of a global block; empty if the report doesn't name it
    bool coalesced = false;
    std::vector<CallChain> sources;
    std::uint64_t num_samples = 0;  // of the kernel, that have the block
    std::uint64_t num_left_out = 0; // counts below 0, samples without cycles
    bool stall_counted = true;      // false: 0 in all samples, though valid and idle don't fill the cycles
    // Facts that rules need beside the metrics; missing where they can't be known.
    Value cycles;     // clock cycles of the samples that count, in all
    Value iterations; // of a loop, for each invocation
    std::string port; // of a global block: the port that all its traffic takes; empty if several could
    // Shares of the memory's bytes while the kernel ran, percent. Missing if the sums are lower bounds.
    Value own_share;                 // that the block's kernel moved
    Value block_share;               // that this block moved
    Value read_share;                // that were read
    Value write_share;               // that were written
    std::vector<std::string> rivals; // the fewest other kernels that moved the most of them, largest first;
                                     // with own_share below 50 they have more than half
    Value max_burst;                 // words; the memory's largest burst
    Value access_bytes;              // width of an access, bytes
    Value port_limit;                // MB/s: the clock times the kernel's widest access of the memory
    Value max_valid;                 // percent; the greatest share of valid cycles of a sample
    Value stalled_part;              // percent of the cycles in which half of the stalls are
    Value stalled_from;              // where those are: times from the run's start, as in Metric
    Value stalled_to;
    MetricValues metrics;
    // By the diagnosis.
    bool innermost = false; // the kernel's loop with the greatest valid share
    Sentence sentence;
    bool operator==(const BlockSummary&) const = default;
};

// A port of a memory, as a kernel used it.
struct PortSummary {
    std::string memory;
    std::string interface;
    std::string port;
    bool reads = false;
    bool writes = false;
    Value mean; // MB/s
    Value max;  // MB/s
    Value bytes;
    Value read_burst; // words
    Value write_burst;
    bool operator==(const PortSummary&) const = default;
};

struct KernelSummary {
    std::string name;
    int compute_unit = 0;
    std::optional<unsigned> num_units; // compute units of the design; nothing where only a report was read
    std::optional<int> device;         // of all samples; nothing if they have none
    SourcePlace source;
    bool autorun = false;
    unsigned shared_types =
        0; // bit i: samples whose shared counters measured i (0 valid, 1 stall, 2 idle, 3 requests)
    std::uint64_t num_invocations = 0;
    std::uint64_t num_samples = 0;
    Value shortest; // invocation
    Value longest;
    // The order-statistic interval (95%) of the median time; missing below 5 invocations.
    Value median_low;
    Value median_high;
    Value gaps; // total time between invocations in which nothing ran
    // Time in which it ran; of an autorun kernel the time in which one of its blocks worked.
    Value union_time;
    std::vector<std::string> team; // other kernels: both ran at the same time for half of their times or more
    std::string culprit;           // the name of a block, by the diagnosis; empty if there is none
    MetricValues metrics;
    std::vector<BlockSummary> blocks;
    std::vector<PortSummary> ports;
    bool operator==(const KernelSummary&) const = default;
};

// An interface of a memory, over all kernels.
struct InterfaceSummary {
    std::string name;
    Value bytes;
    Value use; // percent of its share of the peak
    bool operator==(const InterfaceSummary&) const = default;
};

struct MemorySummary {
    std::string name;
    Value peak;               // MB/s
    Value max_burst;          // words
    bool from_ports = false;  // by ports; else by the accesses that name the memory
    bool lower_bound = false; // accesses without a memory's name, or several compute units
    Value read_share;         // percent of its bytes
    Value write_share;
    std::vector<InterfaceSummary> interfaces; // those seen
    MetricValues metrics;
    bool operator==(const MemorySummary&) const = default;
};

struct TransferSummary {
    std::string type; // as in the report: ".mem_transfer_read"
    int queue = 0;
    std::uint64_t num = 0;
    double total = 0;
    double median = 0;
    double busy = 0; // percent of the span
    bool operator==(const TransferSummary&) const = default;
};

// What readers should know before they trust a number.
struct Note {
    std::string code; // "clock-mismatch"
    std::string text;
    bool operator==(const Note&) const = default;
};

// The four answers in words, by the diagnosis.
struct Answers {
    std::string kernel;         // which kernel took the time
    std::string block;          // which block holds it up
    std::string source;         // on which source line
    std::string memory;         // is memory the reason
    std::string leading_kernel; // names; empty where there is none
    std::string culprit_kernel;
    std::string culprit_block;
    bool operator==(const Answers&) const = default;
};

struct ProfileSummary {
    std::string input; // as the user named it
    std::string program_version;
    std::string zanx_version;
    std::string board;
    std::string clock_text; // as in the report
    Value clock_mhz;        // missing for "0.0" and for what is no number
    Value nanoseconds;      // of one unit of time of the report; missing if it isn't known
    std::string start;      // of the span, an integer as in the report
    Value kernel_time;      // some started kernel ran
    Value transfer_only;    // a transfer ran and no kernel
    std::uint64_t num_invocations = 0;
    std::uint64_t num_samples = 0;
    MetricValues metrics;
    std::vector<KernelSummary> kernels; // in the order of their first node; autorun kernels last
    std::vector<MemorySummary> memories;
    std::vector<TransferSummary> transfers;
    std::vector<Note> notes;
    Answers answers;
    bool operator==(const ProfileSummary&) const = default;
};

} // namespace zan::profile
