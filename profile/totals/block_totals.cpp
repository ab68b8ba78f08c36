// SPDX-License-Identifier: Apache-2.0
// Comparisons with a missing value are false, and sums leave it out.
#include "block_totals.h"

#include <algorithm>
#include <cmath>

#include "report_formulas.h"
#include "seven_digits.h"

namespace zan::profile {

std::size_t CycleClasses::place_of(double cycles) {
    if (m_last < m_cycles.size() && m_cycles[m_last] == cycles)
        return m_last;
    const auto found = std::ranges::find(m_cycles, cycles);
    m_last = static_cast<std::size_t>(found - m_cycles.begin());
    if (found == m_cycles.end() && m_cycles.size() < most)
        m_cycles.push_back(cycles);
    return m_last;
}

void MovedSum::add(double bandwidth, double cycles, CycleClasses& classes) {
    const std::size_t place = classes.place_of(cycles);
    if (place == CycleClasses::most) {
        others.add(bandwidth * cycles, bandwidth);
        return;
    }
    if (place >= bandwidths.size())
        bandwidths.resize(place + 1);
    bandwidths[place] += bandwidth;
}

double MovedSum::bytes(const CycleClasses& classes, float clock_mhz) const {
    double megabytes_per_second_nanoseconds = 0.0;
    for (std::size_t i = 0; i < bandwidths.size(); ++i) {
        const auto cycles = static_cast<long long>(classes.cycles()[i]);
        megabytes_per_second_nanoseconds +=
            bandwidths[i] * static_cast<double>(cycles_to_nanoseconds(cycles, clock_mhz));
    }
    // What is cut off is half of a nanosecond on average, or nothing if cycles have whole nanoseconds.
    const double cycle_time = 1000.0 / static_cast<double>(clock_mhz);
    const double cut_off = std::floor(cycle_time) == cycle_time ? 0.0 : 0.5;
    megabytes_per_second_nanoseconds += others.sum * cycle_time - others.weight * cut_off;
    return megabytes_per_second_nanoseconds / 1000.0;
}

BlockSums& BlockSums::operator+=(const BlockSums& other) {
    num_samples += other.num_samples;
    num_left_out += other.num_left_out;
    for (WeightedSum BlockSums::*sum :
         {&BlockSums::valid, &BlockSums::stall, &BlockSums::idle, &BlockSums::bandwidth,
          &BlockSums::efficiency, &BlockSums::requested, &BlockSums::hits, &BlockSums::unaligned,
          &BlockSums::fill, &BlockSums::burst, &BlockSums::burst_entries})
        this->*sum += other.*sum;
    stall_time += other.stall_time;
    fill_stalls += other.fill_stalls;
    requests += other.requests;
    for (double BlockSums::*most :
         {&BlockSums::max_valid, &BlockSums::max_bandwidth, &BlockSums::max_fill, &BlockSums::max_burst})
        this->*most = std::max(this->*most, other.*most);
    return *this;
}

namespace {

void add_known(WeightedSum& sum, double value, double weight) {
    if (is_known(value) && is_known(weight))
        sum.add(value, weight);
}

void add_greatest(double& greatest, double value) {
    if (value > greatest)
        greatest = value;
}

void add_shares(BlockSums& sums, const SampleTimes& times, const SampleBlock& samples) {
    for (std::size_t i = 0; i < times.size; ++i) {
        const double cycles = times.cycles[i];
        add_known(sums.valid, samples.valid[i], cycles);
        add_known(sums.stall, samples.stall[i], cycles);
        add_known(sums.idle, samples.idle[i], cycles);
        add_greatest(sums.max_valid, samples.valid[i] / cycles);
        if (samples.stall[i] > 0.0)
            sums.stall_time += samples.stall[i] / cycles * time_between(times.begin[i], times.end[i]);
    }
}

void add_requests(BlockSums& sums, const SampleTimes& times, const SampleBlock& samples) {
    for (std::size_t i = 0; i < times.size; ++i) {
        const double requests = samples.requests[i];
        if (!is_known(requests))
            continue;
        sums.requests += requests;
        add_known(sums.hits, samples.hits[i], requests);
        add_known(sums.unaligned, samples.unaligned[i], requests);
        add_known(sums.requested, samples.efficiency[i] * samples.bandwidth[i] * times.cycles[i], requests);
        const double fill = samples.fill[i] * (requests + samples.stall[i]);
        if (is_known(fill)) {
            sums.fill.add(fill, requests);
            sums.fill_stalls += samples.stall[i];
        }
    }
}

void add_traffic(BlockTotals& block, const SampleTimes& times, const SampleBlock& samples,
                 CycleClasses& classes) {
    BlockSums& sums = block.sums;
    for (std::size_t i = 0; i < times.size; ++i) {
        const double bandwidth = samples.bandwidth[i];
        if (!is_known(bandwidth))
            continue;
        const double cycles = times.cycles[i];
        sums.bandwidth.add(bandwidth * cycles, cycles);
        add_greatest(sums.max_bandwidth, bandwidth);
        if (bandwidth > 0.0)
            block.moved.add(bandwidth, cycles, classes);
        add_known(sums.efficiency, samples.efficiency[i] * bandwidth * cycles, bandwidth * cycles);
        if (samples.burst[i] > 0.0)
            sums.burst.add(bandwidth * cycles, bandwidth * cycles / samples.burst[i]);
    }
}

} // namespace

void BlockTotals::add(const SampleTimes& times, const SampleBlock& samples, CycleClasses& classes) {
    sums.num_samples += times.size;
    sums.num_left_out += samples.num_left_out;
    add_shares(sums, times, samples);
    if (kind == BlockKind::loop)
        return;
    add_requests(sums, times, samples);
    add_traffic(*this, times, samples, classes);
    for (std::size_t i = 0; i < times.size; ++i) {
        add_greatest(sums.max_fill, samples.max_fill[i]);
        if (samples.stall[i] > 0.0)
            stalls.add_sample(times.begin[i], times.end[i], samples.stall[i]);
    }
}

void BlockTotals::add_unnamed(const SampleTimes& times, const SampleBlock& samples) {
    for (std::size_t i = 0; i < times.size; ++i) {
        if (samples.bandwidth[i] > 0.0)
            unnamed += samples.bandwidth[i] * times.cycles[i];
    }
}

void BlockTotals::add_burst_entries(const SampleList<float>& entries) {
    SampleCursor<float> cursor(entries);
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const auto entry = static_cast<double>(with_seven_digits(cursor.next()));
        if (!(entry > 0.0) || !std::isfinite(entry))
            continue;
        sums.burst_entries.add(entry, 1.0);
        add_greatest(sums.max_burst, entry);
    }
}

void PortTotals::add(const SampleTimes& times, const SampleValues& bandwidths,
                     const SampleValues& read_bursts, const SampleValues& write_bursts,
                     CycleClasses& classes) {
    for (std::size_t i = 0; i < times.size; ++i) {
        if (!is_known(bandwidths[i]))
            continue;
        const double traffic = bandwidths[i] * times.cycles[i];
        bandwidth.add(traffic, times.cycles[i]);
        add_greatest(max_bandwidth, bandwidths[i]);
        if (traffic > 0.0)
            moved.add(bandwidths[i], times.cycles[i], classes);
        if (read_bursts[i] > 0.0)
            read_burst.add(traffic, traffic / read_bursts[i]);
        if (write_bursts[i] > 0.0)
            write_burst.add(traffic, traffic / write_bursts[i]);
    }
}

} // namespace zan::profile
