// SPDX-License-Identifier: Apache-2.0
// Sums over the samples of a block, and over those of a port.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "profile_summary.h"
#include "sample_block.h"
#include "timed_amounts.h"

namespace zan::profile {

// A sum with the sum of its weights over the samples that have both.
struct WeightedSum {
    double sum = 0.0;
    double weight = 0.0;

    void add(double value, double of_weight) {
        sum += value;
        weight += of_weight;
    }
    WeightedSum& operator+=(const WeightedSum& other) {
        add(other.sum, other.weight);
        return *this;
    }
    Value ratio() const { return weight > 0.0 ? Value(sum / weight) : std::nullopt; }
};

// The numbers of cycles that samples have. Most runs have few different ones, so that what depends on each
// number can be worked out when the clock is known, at the report's end.
class CycleClasses {
  public:
    static constexpr std::size_t most = 48;
    // The place of the number; `most` if there are too many different ones.
    std::size_t place_of(double cycles);
    const std::vector<double>& cycles() const { return m_cycles; }

  private:
    std::vector<double> m_cycles;
    std::size_t m_last = 0;
};

// Bandwidths by the number of cycles that they lasted.
struct MovedSum {
    std::vector<double> bandwidths; // MB/s, for each of the CycleClasses
    WeightedSum others;             // MB/s · cycles; MB/s

    void add(double bandwidth, double cycles, CycleClasses& classes);
    // Bytes at that clock. The report cuts times to whole nanoseconds before it divides by them.
    double bytes(const CycleClasses& classes, float clock_mhz) const;
};

// c: the cycles of a sample.
struct BlockSums {
    std::uint64_t num_samples = 0;
    std::uint64_t num_left_out = 0;
    WeightedSum valid; // and c
    WeightedSum stall;
    WeightedSum idle;
    double stall_time = 0.0;   // stall / c · length of the sample
    WeightedSum bandwidth;     // MB/s · c, and c
    WeightedSum efficiency;    // efficiency · MB/s · c, and MB/s · c
    WeightedSum requested;     // efficiency · MB/s · c, and requests
    WeightedSum hits;          // and requests
    WeightedSum unaligned;     // and requests
    WeightedSum fill;          // depth · (requests + stalls), and requests
    double fill_stalls = 0.0;  // stalls of the same samples
    WeightedSum burst;         // MB/s · c, and MB/s · c / burst
    WeightedSum burst_entries; // entries above 0, and their number
    double requests = 0.0;
    double max_valid = -1.0; // share; below 0: there is none
    double max_bandwidth = -1.0;
    double max_fill = -1.0;
    double max_burst = -1.0;

    BlockSums& operator+=(const BlockSums& other);
};

struct BlockTotals {
    std::string name;
    BlockKind kind = BlockKind::other;
    Direction direction = Direction::none;
    std::string memory;
    bool coalesced = false;
    std::vector<CallChain> sources;
    BlockSums sums;
    MovedSum moved;
    TimedAmounts stalls;         // stalled cycles
    double unnamed = 0.0;        // MB/s · c of samples whose memory the report doesn't name
    std::uint64_t last_node = 0; // number of the kernel's node that it was in last, from 1

    // Adds samples, all values of a block at once.
    void add(const SampleTimes& times, const SampleBlock& samples, CycleClasses& classes);
    void add_unnamed(const SampleTimes& times, const SampleBlock& samples);
    // Averages of bursts that don't line up with the samples.
    void add_burst_entries(const SampleList<float>& entries);
};

struct PortTotals {
    std::string memory;
    std::string interface;
    std::string port;
    bool reads = false;
    bool writes = false;
    WeightedSum bandwidth; // MB/s · c, and c
    double max_bandwidth = -1.0;
    WeightedSum read_burst; // MB/s · c, and MB/s · c / burst
    WeightedSum write_burst;
    MovedSum moved;

    void add(const SampleTimes& times, const SampleValues& bandwidths, const SampleValues& read_bursts,
             const SampleValues& write_bursts, CycleClasses& classes);
};

} // namespace zan::profile
