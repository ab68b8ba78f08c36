// SPDX-License-Identifier: Apache-2.0
#include "bin_range.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace zan::profile {

namespace {

// From the first bin to the last, both included. There are never 2^64 of them, as bins of width 1 are widened
// before they get that many.
std::uint64_t num_bins(std::int64_t first, std::int64_t last) {
    return static_cast<std::uint64_t>(last) - static_cast<std::uint64_t>(first) + 1;
}

// The first sample takes up to 2^first_bits bins. Narrower ones would soon be merged.
constexpr int first_bits = 9;

} // namespace

// Room is made in steps that grow with the bins, so that times which go backwards don't move all bins each
// time.
void BinRange::cover(std::int64_t begin, std::int64_t end, std::size_t capacity) {
    std::int64_t low = begin >> shift;
    std::int64_t high = end >> shift;
    if (size != 0) {
        low = std::min(low, first);
        high = std::max(high, last() - 1);
    }
    int steps = 0;
    while (num_bins(low >> steps, high >> steps) - 1 >= capacity)
        ++steps;
    widen(shift + steps);
    low >>= steps;
    high >>= steps;
    if (size == 0)
        first = low;
    if (low < first) {
        const std::size_t spare = capacity - static_cast<std::size_t>(num_bins(low, high));
        const std::int64_t lowest = std::numeric_limits<std::int64_t>::min() >> shift;
        const std::uint64_t room = num_bins(lowest, low) - 1;
        first = low - static_cast<std::int64_t>(std::min<std::uint64_t>(room, std::min(spare, size)));
    }
    size = static_cast<std::size_t>(num_bins(first, high));
}

void BinRange::limit(std::size_t capacity) {
    while (size > capacity)
        widen(shift + 1);
}

void BinRange::widen(int to) {
    if (to <= shift)
        return;
    const int steps = to - shift;
    shift = to;
    if (size == 0)
        return;
    const std::int64_t end = (last() - 1) >> steps;
    first >>= steps;
    size = static_cast<std::size_t>(num_bins(first, end));
}

void BinRange::fit_sample(std::int64_t begin, std::int64_t end) {
    if (end <= begin)
        return;
    const auto length = static_cast<std::uint64_t>(end) - static_cast<std::uint64_t>(begin);
    widen(static_cast<int>(std::bit_width(length)) - first_bits);
}

} // namespace zan::profile
