// SPDX-License-Identifier: Apache-2.0
// The samples of a node, some hundred at a time, with what wasn't measured left out.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "profile_nodes.h"

namespace zan::profile {

inline constexpr std::size_t samples_in_block = 256;
using SampleValues = std::array<double, samples_in_block>;

// What a sample didn't measure, or what is left out of sums, is not a number.
inline constexpr double missing_value = std::numeric_limits<double>::quiet_NaN();
inline bool is_known(double value) {
    return !std::isnan(value);
}

// When samples were taken, and how many clock cycles they have.
struct SampleTimes {
    std::size_t size = 0;
    std::array<std::int64_t, samples_in_block> begin;
    std::array<std::int64_t, samples_in_block> end;
    SampleValues cycles;                       // missing where they are 0 or less
    std::array<bool, samples_in_block> counts; // false: an autorun kernel that waits for work
};

// Goes over the times of a kernel's node.
class TimesReader {
  public:
    // `first_begin` is when the node's first sample begins. If there are more cycles than time stamps, two
    // counters count the clock, and the cycles of no sample are known. `active` is null if all samples count;
    // else it has a value for each, and outlives the reader.
    TimesReader(const NodeArrays& arrays, std::int64_t first_begin, const std::vector<unsigned char>* active);

    // Reads the next samples; false at the end.
    bool next(SampleTimes& times);

  private:
    const SampleList<long long>& m_stamps;
    const SampleList<long long>& m_cycles;
    const std::vector<unsigned char>* m_active;
    std::size_t m_num_cycles;
    std::size_t m_position = 0;
    std::int64_t m_last;
};

// The values of a block or port in the samples of a SampleTimes.
struct SampleBlock {
    SampleValues valid;
    SampleValues stall;
    SampleValues idle;
    SampleValues requests;
    SampleValues hits;
    SampleValues unaligned;
    SampleValues max_fill;
    SampleValues fill;
    SampleValues bandwidth;
    SampleValues efficiency;
    SampleValues burst;
    std::size_t num_left_out = 0; // samples of which a value was left out
};

// Goes over the values of a block's node, beside a TimesReader.
class BlockReader {
  public:
    // `shared`: what the run's shared counters measured; the others are missing. Bandwidths of channels are
    // computed from requests.
    BlockReader(const BlockNode& block, SharedType shared, std::size_t num_samples);

    void next(const SampleTimes& times, SampleBlock& samples);

  private:
    bool read(Counts which, const SampleTimes& times, SampleValues& values);
    bool read(Rates which, const SampleTimes& times, SampleValues& values);
    bool measures(Counts which) const;
    bool measures(Rates which) const;

    const NodeArrays& m_arrays;
    SharedType m_shared;
    bool m_is_channel;
    bool m_bursts_line_up; // an entry for each sample
    std::size_t m_position = 0;
    std::array<bool, samples_in_block> m_left_out{};
    std::array<bool, samples_in_block> m_doubtful{}; // its requests or stalls are below 0
};

// Goes over the values of a port's node, beside a TimesReader. Autorun kernels wait for work, but what their
// ports carry is carried, so here all samples count.
class PortReader {
  public:
    explicit PortReader(const NodeArrays& arrays) : m_arrays(arrays) {}

    void next(const SampleTimes& times, Rates which, SampleValues& values) const;
    void advance(const SampleTimes& times) { m_position += times.size; }

  private:
    const NodeArrays& m_arrays;
    std::size_t m_position = 0;
};

} // namespace zan::profile
