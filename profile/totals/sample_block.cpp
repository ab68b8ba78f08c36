// SPDX-License-Identifier: Apache-2.0
#include "sample_block.h"

#include <algorithm>

#include "seven_digits.h"
#include "tly_constants.h"

namespace zan::profile {

TimesReader::TimesReader(const NodeArrays& arrays, std::int64_t first_begin,
                         const std::vector<unsigned char>* active)
    : m_stamps(arrays[Counts::timestamps]),
      m_cycles(arrays[Counts::cycles]),
      m_active(active),
      m_num_cycles(m_cycles.size() > m_stamps.size() ? 0 : m_cycles.size()),
      m_last(first_begin) {
}

bool TimesReader::next(SampleTimes& times) {
    times.size = std::min(samples_in_block, m_stamps.size() - m_position);
    if (times.size == 0)
        return false;
    std::array<long long, samples_in_block> numbers;
    m_stamps.read(m_position, times.size, numbers.data());
    for (std::size_t i = 0; i < times.size; ++i) {
        times.begin[i] = m_last;
        times.end[i] = numbers[i];
        m_last = numbers[i];
    }
    m_cycles.read(m_position, times.size, numbers.data());
    for (std::size_t i = 0; i < times.size; ++i) {
        const bool has_cycles = m_position + i < m_num_cycles && numbers[i] > 0;
        times.cycles[i] = has_cycles ? static_cast<double>(numbers[i]) : missing_value;
        times.counts[i] = m_active == nullptr || (*m_active)[m_position + i] != 0;
    }
    m_position += times.size;
    return true;
}

BlockReader::BlockReader(const BlockNode& block, SharedType shared, std::size_t num_samples)
    : m_arrays(block.arrays),
      m_shared(shared),
      m_is_channel(block.memory_type != addrspace_global),
      m_bursts_line_up(m_arrays[Rates::burst].size() == num_samples) {
}

// With shared counters a run measures one of four, and the arrays of the others are zeros.
bool BlockReader::measures(Counts which) const {
    switch (which) {
        case Counts::valid:
            return m_shared == SharedType::none || m_shared == SharedType::valid;
        case Counts::stall:
            return m_shared == SharedType::none || m_shared == SharedType::stall;
        case Counts::idle:
            return m_shared == SharedType::none || m_shared == SharedType::idle;
        case Counts::requests:
            return m_shared == SharedType::none || m_shared == SharedType::requests;
        default:
            return true;
    }
}

bool BlockReader::measures(Rates which) const {
    switch (which) {
        case Rates::efficiency:
            return measures(Counts::requests);
        case Rates::bandwidth:
            return !m_is_channel || measures(Counts::requests);
        case Rates::burst:
            return m_bursts_line_up;
        default:
            return true;
    }
}

bool BlockReader::read(Counts which, const SampleTimes& times, SampleValues& values) {
    const SampleList<long long>& list = m_arrays[which];
    if (list.size() <= m_position || !measures(which)) {
        std::fill_n(values.begin(), times.size, missing_value);
        return false;
    }
    std::array<long long, samples_in_block> numbers;
    list.read(m_position, times.size, numbers.data());
    const std::size_t num_there = std::min(times.size, list.size() - m_position);
    for (std::size_t i = 0; i < num_there; ++i) {
        const bool good = numbers[i] >= 0 && is_known(times.cycles[i]);
        values[i] = good && times.counts[i] ? static_cast<double>(numbers[i]) : missing_value;
        m_left_out[i] |= !good;
        m_doubtful[i] |= numbers[i] < 0 && (which == Counts::requests || which == Counts::stall);
    }
    std::fill(values.begin() + static_cast<std::ptrdiff_t>(num_there),
              values.begin() + static_cast<std::ptrdiff_t>(times.size), missing_value);
    return true;
}

bool BlockReader::read(Rates which, const SampleTimes& times, SampleValues& values) {
    const SampleList<float>& list = m_arrays[which];
    if (list.size() <= m_position || !measures(which)) {
        std::fill_n(values.begin(), times.size, missing_value);
        return false;
    }
    std::array<float, samples_in_block> numbers;
    list.read(m_position, times.size, numbers.data());
    const std::size_t num_there = std::min(times.size, list.size() - m_position);
    for (std::size_t i = 0; i < num_there; ++i) {
        const bool good =
            std::isfinite(numbers[i]) && numbers[i] >= 0.0f && is_known(times.cycles[i]) && !m_doubtful[i];
        values[i] =
            good && times.counts[i] ? static_cast<double>(with_seven_digits(numbers[i])) : missing_value;
        m_left_out[i] |= !good;
    }
    std::fill(values.begin() + static_cast<std::ptrdiff_t>(num_there),
              values.begin() + static_cast<std::ptrdiff_t>(times.size), missing_value);
    return true;
}

// Requests and stalls come before what is computed from them.
void BlockReader::next(const SampleTimes& times, SampleBlock& samples) {
    std::fill_n(m_left_out.begin(), times.size, false);
    std::fill_n(m_doubtful.begin(), times.size, false);
    read(Counts::requests, times, samples.requests);
    read(Counts::stall, times, samples.stall);
    read(Counts::valid, times, samples.valid);
    read(Counts::idle, times, samples.idle);
    read(Counts::hits, times, samples.hits);
    read(Counts::unaligned, times, samples.unaligned);
    read(Counts::max_fill, times, samples.max_fill);
    read(Rates::fill, times, samples.fill);
    read(Rates::bandwidth, times, samples.bandwidth);
    read(Rates::efficiency, times, samples.efficiency);
    read(Rates::burst, times, samples.burst);
    samples.num_left_out = static_cast<std::size_t>(
        std::count(m_left_out.begin(), m_left_out.begin() + static_cast<std::ptrdiff_t>(times.size), true));
    m_position += times.size;
}

void PortReader::next(const SampleTimes& times, Rates which, SampleValues& values) const {
    const SampleList<float>& list = m_arrays[which];
    const std::size_t num_there = std::min(times.size, list.size() - std::min(list.size(), m_position));
    std::array<float, samples_in_block> numbers;
    list.read(m_position, num_there, numbers.data());
    for (std::size_t i = 0; i < times.size; ++i) {
        const bool good =
            i < num_there && std::isfinite(numbers[i]) && numbers[i] >= 0.0f && is_known(times.cycles[i]);
        values[i] = good ? static_cast<double>(with_seven_digits(numbers[i])) : missing_value;
    }
}

} // namespace zan::profile
