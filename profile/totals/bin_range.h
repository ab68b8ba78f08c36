// SPDX-License-Identifier: Apache-2.0
// Which bins of time there are.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zan::profile {

// Bins of one width, a power of two of the unit of time. Bin number n covers the times from n·width to
// (n + 1)·width, so bins of different ranges line up.
struct BinRange {
    std::int64_t first = 0; // the number of the first bin; 0 if there are none
    std::size_t size = 0;   // how many there are
    int shift = 0;          // the width is 2^shift

    bool operator==(const BinRange&) const = default;

    // One past the number of the last bin.
    std::int64_t last() const { return first + static_cast<std::int64_t>(size); }
    bool covers(std::int64_t begin, std::int64_t end) const {
        return begin >> shift >= first && end >> shift < last();
    }
    // Adds the bins of both times, of which `end` is not the earlier one, and those between. All become wider
    // where there would be more than `capacity`, which is at least 2.
    void cover(std::int64_t begin, std::int64_t end, std::size_t capacity);
    // Makes the bins wider until there are at most `capacity`.
    void limit(std::size_t capacity);
    // Makes the bins 2^to wide; those that are wider stay.
    void widen(int to);
    // Makes the bins, of which there are none yet, as wide as splits a sample of that time into some hundred
    // of them, as more of its length will follow.
    void fit_sample(std::int64_t begin, std::int64_t end);
};

} // namespace zan::profile
