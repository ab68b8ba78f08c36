// SPDX-License-Identifier: Apache-2.0
#include "time_bins.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <numeric>

namespace zan::profile {

namespace {

// From the first bin to the last, both included. There are never 2^64 of them, as bins of width 1 are widened
// before they get that many.
std::uint64_t num_bins(std::int64_t first, std::int64_t last) {
    return static_cast<std::uint64_t>(last) - static_cast<std::uint64_t>(first) + 1;
}

// The first sample takes up to 2^first_bits bins. Narrower ones would soon be merged.
constexpr int first_bits = 9;

// The first unit of time that an amount comes in, and the last one.
std::int64_t first_time(std::int64_t begin, std::int64_t end) {
    return std::min(begin, end);
}
std::int64_t last_time(std::int64_t begin, std::int64_t end) {
    return begin < end ? end - 1 : end;
}

} // namespace

std::size_t bins_for_each(std::size_t budget, std::size_t num_series) {
    constexpr std::size_t fewest = 64;
    const std::size_t share = budget / std::max<std::size_t>(num_series, 1);
    return std::clamp(std::bit_floor(share), fewest, max_time_bins);
}

double time_between(std::int64_t begin, std::int64_t end) {
    return end <= begin
               ? 0.0
               : static_cast<double>(static_cast<std::uint64_t>(end) - static_cast<std::uint64_t>(begin));
}

double TimeBins::total() const {
    return std::accumulate(m_values.begin(), m_values.end(), 0.0);
}

void TimeBins::add(std::int64_t begin, std::int64_t end, double amount) {
    cover(first_time(begin, end), last_time(begin, end));
    spread(begin, end, amount);
}

// Into bins that are there.
void TimeBins::spread(std::int64_t begin, std::int64_t end, double amount) {
    const std::int64_t first = first_time(begin, end);
    const std::int64_t last = last_time(begin, end);
    const auto from = static_cast<std::size_t>((first >> m_shift) - m_first);
    const auto to = static_cast<std::size_t>((last >> m_shift) - m_first);
    if (from == to) {
        m_values[from] += amount;
        return;
    }
    const std::uint64_t in_bin = (std::uint64_t{1} << m_shift) - 1;
    const double rate = amount / time_between(begin, end);
    const double each = rate * width();
    m_values[from] += rate * (width() - static_cast<double>(static_cast<std::uint64_t>(first) & in_bin));
    for (std::size_t i = from + 1; i < to; ++i)
        m_values[i] += each;
    m_values[to] += rate * (static_cast<double>(static_cast<std::uint64_t>(last) & in_bin) + 1.0);
}

void TimeBins::fit_first(std::int64_t begin, std::int64_t end) {
    if (!m_values.empty() || end <= begin)
        return;
    const auto length = static_cast<std::uint64_t>(end) - static_cast<std::uint64_t>(begin);
    widen(static_cast<int>(std::bit_width(length)) - first_bits);
}

void TimeBins::add_sample(std::int64_t begin, std::int64_t end, double amount) {
    fit_first(begin, end);
    add(begin, end, amount);
}

void TimeBins::add_samples(std::span<const TimedSample> samples) {
    if (samples.empty())
        return;
    fit_first(samples.front().begin, samples.front().end);
    std::int64_t first = std::numeric_limits<std::int64_t>::max();
    std::int64_t last = std::numeric_limits<std::int64_t>::min();
    for (const TimedSample& sample : samples) {
        first = std::min(first, first_time(sample.begin, sample.end));
        last = std::max(last, last_time(sample.begin, sample.end));
    }
    cover(first, last);
    for (const TimedSample& sample : samples)
        spread(sample.begin, sample.end, sample.amount);
}

void TimeBins::add(const TimeBins& other) {
    widen(other.m_shift);
    std::int64_t from = other.first();
    std::int64_t to = other.last();
    while (from < to && other.at(from) == 0.0)
        ++from;
    while (from < to && other.at(to - 1) == 0.0)
        --to;
    if (from == to)
        return;
    cover(from << other.m_shift, (to - 1) << other.m_shift);
    for (std::int64_t number = from; number < to; ++number) {
        const std::int64_t own = (number << other.m_shift) >> m_shift;
        m_values[static_cast<std::size_t>(own - m_first)] += other.at(number);
    }
}

void TimeBins::limit(std::size_t capacity) {
    m_capacity = capacity;
    int steps = 0;
    while (!m_values.empty() && num_bins(m_first >> steps, (last() - 1) >> steps) > m_capacity)
        ++steps;
    merge(steps);
}

void TimeBins::widen(int shift) {
    if (m_shift < shift)
        merge(shift - m_shift);
}

// Room is made in steps that grow with the bins, so that times which go backwards don't move all bins each
// time.
void TimeBins::cover(std::int64_t first, std::int64_t last) {
    std::int64_t low = first >> m_shift;
    std::int64_t high = last >> m_shift;
    const std::int64_t past = this->last();
    if (!m_values.empty()) {
        if (low >= m_first && high < past)
            return;
        low = std::min(low, m_first);
        high = std::max(high, past - 1);
    }
    int steps = 0;
    while (num_bins(low >> steps, high >> steps) - 1 >= m_capacity)
        ++steps;
    merge(steps);
    low >>= steps;
    high >>= steps;
    if (m_values.empty())
        m_first = low;
    const std::size_t spare = m_capacity - static_cast<std::size_t>(num_bins(low, high));
    const std::size_t step = std::min(spare, m_values.size());
    if (low < m_first) {
        const std::int64_t lowest = std::numeric_limits<std::int64_t>::min() >> m_shift;
        const std::uint64_t room = num_bins(lowest, low) - 1;
        const auto more = static_cast<std::size_t>(std::min<std::uint64_t>(room, step));
        m_values.insert(m_values.begin(), static_cast<std::size_t>(m_first - low) + more, 0.0);
        m_first = low - static_cast<std::int64_t>(more);
    }
    if (high >= this->last())
        m_values.resize(static_cast<std::size_t>(high - m_first) + 1);
}

// Makes the bins 2^steps times as wide.
void TimeBins::merge(int steps) {
    m_shift += steps;
    if (m_values.empty() || steps == 0)
        return;
    // The first bin of the result may begin before the first one of these.
    const std::uint64_t in_bin = (std::uint64_t{1} << steps) - 1;
    std::size_t num_left = (in_bin + 1) - (static_cast<std::uint64_t>(m_first) & in_bin);
    std::size_t num_merged = 0;
    for (std::size_t i = 0; i < m_values.size();) {
        const std::size_t end = i + std::min<std::size_t>(num_left, m_values.size() - i);
        double sum = 0.0;
        for (; i < end; ++i)
            sum += m_values[i];
        m_values[num_merged++] = sum;
        num_left = in_bin + 1;
        // The usual step, which makes bins twice as wide.
        for (; steps == 1 && i + 2 <= m_values.size(); i += 2)
            m_values[num_merged++] = 0.0 + m_values[i] + m_values[i + 1];
    }
    m_values.resize(num_merged);
    m_first >>= steps;
}

void align(TimeBins& a, TimeBins& b) {
    a.widen(b.shift());
    b.widen(a.shift());
}

} // namespace zan::profile
