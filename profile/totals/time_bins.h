// SPDX-License-Identifier: Apache-2.0
// Amounts over time in a bounded number of bins.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "bin_range.h"

namespace zan::profile {

// The most bins of one series.
inline constexpr std::size_t max_time_bins = 65'536;

// How many bins each of `num_series` may have, so that all of them have about `budget` at most.
std::size_t bins_for_each(std::size_t budget, std::size_t num_series);

// The length of time from `begin` to `end`; 0 if it is none. Neither overflows.
double time_between(std::int64_t begin, std::int64_t end);

// The first unit of time of what is spread from `begin` to `end`, and the last one. If that is no time, all
// of it is at `end`.
inline std::int64_t first_time(std::int64_t begin, std::int64_t end) {
    return begin < end ? begin : end;
}
inline std::int64_t last_time(std::int64_t begin, std::int64_t end) {
    return begin < end ? end - 1 : end;
}

// Adds amounts to bins of one width, which begins at 1 and doubles as the covered time grows. Times may come
// in any order. Amounts that were exact stay exact while the width is 1.
class TimeBins {
  public:
    // Begins with the bins of `range`, of which there are at most `capacity`, and nothing in them.
    explicit TimeBins(std::size_t capacity = max_time_bins, const BinRange& range = {})
        : m_values(range.size), m_range(range), m_capacity(capacity) {}

    // Spreads `amount` evenly from `begin` to `end`. If that is no time, all of it is at `end`.
    void add(std::int64_t begin, std::int64_t end, double amount);
    // The same. The first one makes the bins as wide as splits it into some hundred of them, as more of its
    // length will follow.
    void add_sample(std::int64_t begin, std::int64_t end, double amount);
    // Adds another series, bin by bin; the greater width is that of the sum.
    void add(const TimeBins& other);
    // Makes the bins of both times and those between, wider ones where there are too many.
    void cover(std::int64_t begin, std::int64_t end) {
        if (!m_range.covers(begin, end))
            make_room(begin, end);
    }
    // From now on at most `capacity` bins, which is at least 2.
    void limit(std::size_t capacity);
    // Doubles the width until it is 2^shift; a width that is greater stays.
    void widen(int shift);

    bool empty() const { return m_values.empty(); }
    int shift() const { return m_range.shift; } // the width is 2^shift
    double width() const { return static_cast<double>(std::uint64_t{1} << shift()); }
    // The number of the first bin, and one past the last; both 0 if it is empty.
    std::int64_t first() const { return m_range.first; }
    std::int64_t last() const { return m_range.last(); }
    // The amount in bin `number`; 0 outside of what is covered.
    double at(std::int64_t number) const {
        const std::uint64_t place = static_cast<std::uint64_t>(number) - static_cast<std::uint64_t>(first());
        return place < m_values.size() ? m_values[place] : 0.0;
    }
    std::span<const double> values() const { return m_values; }
    double total() const;

  private:
    void make_room(std::int64_t begin, std::int64_t end);
    void reshape(const BinRange& range);
    void merge(int steps);

    std::vector<double> m_values;
    BinRange m_range;
    std::size_t m_capacity;
};

// Widens two series to the greater of their widths.
void align(TimeBins& a, TimeBins& b);

} // namespace zan::profile
