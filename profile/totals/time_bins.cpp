// SPDX-License-Identifier: Apache-2.0
#include "time_bins.h"

#include <algorithm>
#include <bit>
#include <numeric>

namespace zan::profile {

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
    const std::int64_t begin_time = first_time(begin, end);
    const std::int64_t end_time = last_time(begin, end);
    cover(begin_time, end_time);
    const auto from = static_cast<std::size_t>((begin_time >> shift()) - first());
    const auto to = static_cast<std::size_t>((end_time >> shift()) - first());
    if (from == to) {
        m_values[from] += amount;
        return;
    }
    const std::uint64_t in_bin = (std::uint64_t{1} << shift()) - 1;
    const double rate = amount / time_between(begin, end);
    const double each = rate * width();
    m_values[from] += rate * (width() - static_cast<double>(static_cast<std::uint64_t>(begin_time) & in_bin));
    for (std::size_t i = from + 1; i < to; ++i)
        m_values[i] += each;
    m_values[to] += rate * (static_cast<double>(static_cast<std::uint64_t>(end_time) & in_bin) + 1.0);
}

void TimeBins::add_sample(std::int64_t begin, std::int64_t end, double amount) {
    if (empty())
        m_range.fit_sample(begin, end);
    add(begin, end, amount);
}

// Room is made at both ends of what has amounts, as if these came one by one.
void TimeBins::add(const TimeBins& other) {
    widen(other.shift());
    std::int64_t from = other.first();
    std::int64_t to = other.last();
    while (from < to && other.at(from) == 0.0)
        ++from;
    while (from < to && other.at(to - 1) == 0.0)
        --to;
    if (from == to)
        return;
    for (const std::int64_t end : {from, to - 1})
        cover(end << other.shift(), end << other.shift());
    for (std::int64_t number = from; number < to; ++number) {
        const std::int64_t own = (number << other.shift()) >> shift();
        m_values[static_cast<std::size_t>(own - first())] += other.at(number);
    }
}

void TimeBins::limit(std::size_t capacity) {
    m_capacity = capacity;
    BinRange range = m_range;
    range.limit(capacity);
    reshape(range);
}

void TimeBins::widen(int shift) {
    if (shift <= m_range.shift)
        return;
    BinRange range = m_range;
    range.widen(shift);
    reshape(range);
}

void TimeBins::make_room(std::int64_t begin, std::int64_t end) {
    BinRange range = m_range;
    range.cover(begin, end, m_capacity);
    reshape(range);
}

// Makes the bins of `range`, which are wider or more.
void TimeBins::reshape(const BinRange& range) {
    merge(range.shift - m_range.shift);
    if (range.first < m_range.first && !empty())
        m_values.insert(m_values.begin(), static_cast<std::size_t>(m_range.first - range.first), 0.0);
    m_values.resize(range.size);
    m_range = range;
}

// Makes the bins 2^steps times as wide.
void TimeBins::merge(int steps) {
    if (m_values.empty() || steps == 0)
        return;
    // The first bin of the result may begin before the first one of these.
    const std::uint64_t in_bin = (std::uint64_t{1} << steps) - 1;
    std::size_t num_left = (in_bin + 1) - (static_cast<std::uint64_t>(first()) & in_bin);
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
    m_range.widen(m_range.shift + steps);
}

void align(TimeBins& a, TimeBins& b) {
    a.widen(b.shift());
    b.widen(a.shift());
}

} // namespace zan::profile
