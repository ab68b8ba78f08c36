// SPDX-License-Identifier: Apache-2.0
// What rules look at: named numbers and texts of one block, and of the run around it.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "metric_table.h"

namespace zan::profile {

// Numbers beside the metrics. Shares are in percent, flags 0 or 1, times as in Metric.
enum class Fact {
    shared,       // flag: the kernel's samples have shared counters
    shared_stall, // flag: in one of its runs they counted stalls
    autorun,      // flag
    innermost,    // flag: of the kernel's loops, the one with the greatest valid share
    counted,      // flag: the block's stalls were counted; of a loop those of all blocks beside it
    kernel_stall, // the greatest of the kernel's blocks
    kernel_valid, // the greatest of the kernel's other blocks
    loops_valid,  // of all loops of the kernel together
    own_share,    // of its memory's bytes while it ran, that its kernel moved
    port_sharers, // blocks of the kernel on the same port, with a part of the memory's bytes that counts
    clock_reach,  // what the port can carry at this clock, of the memory's peak
    read_share,   // of its memory's bytes while it ran
    write_share,  // the same
    interfaces,   // of its memory, that were used
    bank_share,   // the interface with the most bytes: of the memory's bytes
    bank_use,     // the same interface: of its part of the memory's peak
    lower_bound,  // flag: use of the memory is a lower bound
    free,         // of memory and port, of the one that is used more
    free_memory,
    free_stages, // other kernels of the team whose channels hardly stall
    samples,
    calm_part, // of the cycles, that have only half of the stalls
    from,      // where the other half is
    to,
    clock, // MHz
    max_burst,
    max_valid,         // the greatest share of a sample
    iterations,        // of an invocation
    invocation_cycles, // the same
    // Of the run and its leading kernel.
    host_longest,      // flag: nothing ran for longer than the leading kernel did
    transfers_longest, // flag: nothing but transfers
    reprogramming_share,
    nothing_share,
    transfer_share,
    lead_autorun, // flag
    invocations,
    busy,
    kernel_total,
    kernel_time,
    gap,         // mean time between invocations in which nothing ran
    gaps_share,  // of the kernel's time
    has_culprit, // flag
    unknown_blocks,
    more_places,
    count // how many there are
};

enum class FactText {
    memory,
    port,
    what,
    sharer,
    rivals,
    stage,
    stalling_block,
    kernel,
    culprit,
    place,
    caller,
    count
};

// The place of a number in Facts: metrics first. Nothing if no number has that name.
std::optional<std::size_t> find_number(std::string_view name);
std::optional<FactText> find_text(std::string_view name);

class Facts {
  public:
    explicit Facts(const MetricValues& metrics) : m_metrics(metrics) {}
    Facts() = default;

    const Value& number(std::size_t place) const;
    const Value& operator[](Metric metric) const { return m_metrics[metric]; }
    Value& operator[](Metric metric) { return m_metrics[metric]; }
    const Value& operator[](Fact fact) const { return m_numbers[static_cast<std::size_t>(fact)]; }
    Value& operator[](Fact fact) { return m_numbers[static_cast<std::size_t>(fact)]; }
    // Empty if there is none.
    const std::string& operator[](FactText text) const { return m_texts[static_cast<std::size_t>(text)]; }
    std::string& operator[](FactText text) { return m_texts[static_cast<std::size_t>(text)]; }

    // Whether times are nanoseconds; else they are shown as plain numbers.
    bool time_unit_known = true;

  private:
    MetricValues m_metrics;
    std::array<Value, static_cast<std::size_t>(Fact::count)> m_numbers;
    std::array<std::string, static_cast<std::size_t>(FactText::count)> m_texts;
};

} // namespace zan::profile
