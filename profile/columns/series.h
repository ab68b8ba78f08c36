// SPDX-License-Identifier: Apache-2.0
// The values of one metric of one block over all invocations, on their way to a page.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "chunk_store.h"
#include "decimal.h"

namespace zan::profile {

// What stands in place of a number; the numbers are those of a page.
enum class Mark { missing, nan, infinity, minus_infinity, minus_zero, minus_nan };

struct MarkRun {
    std::uint64_t from = 0;
    std::uint64_t count = 0;
    Mark mark = Mark::missing;
    bool operator==(const MarkRun&) const = default;
};

// Two numbers that are the same for series with the same values, and hardly ever for others.
struct SeriesDigest {
    std::uint64_t first = 0x9e3779b97f4a7c15U;
    std::uint64_t second = 0xc2b2ae3d27d4eb4fU;

    void add(std::uint64_t number);
    bool operator==(const SeriesDigest&) const = default;
};

// Takes values one after the other, and packs each chunk as it fills. Values have the most decimals that one
// of them needs, but fewer where the largest one would pass 9 · 10^18 units; chunks that were packed with
// others are packed again at the end. Memory: 8 bytes for each value that isn't packed, and where the store
// is full, none.
class Series {
  public:
    // The store must live as long as the series.
    explicit Series(ChunkStore& store) : m_store(&store) {}
    Series(Series&& other) noexcept;
    Series& operator=(Series&&) = delete;
    ~Series();

    void add(std::int64_t value);
    void add(float value);
    // At most max_decimals decimals.
    void add(const Decimal& value);
    // Fewer decimals than `digits` are kept where the units would pass 2^53.
    void add_rounded(double value, int digits);
    void add_marks(Mark mark, std::uint64_t count);
    // Missing values up to that length; none if it is longer.
    void fill_up_to(std::uint64_t length);
    // Packs what is left, and brings all chunks to the same decimals, after `offset` was added to each value.
    // Nothing may be added after that.
    void finish(std::int64_t offset = 0);

    std::uint64_t size() const { return m_size; }
    int digits() const { return m_digits; }
    const std::vector<MarkRun>& marks() const { return m_marks; }
    const SeriesDigest& digest() const { return m_digest; }
    // Of the numbers; in units of 10^-digits.
    bool has_numbers() const { return m_has_numbers; }
    std::int64_t least() const { return m_least; }
    std::int64_t greatest() const { return m_greatest; }
    // After finish().
    const std::vector<StoredChunk>& chunks() const { return m_chunks; }

  private:
    void add_decimal(const Decimal& decimal);
    void raise_digits(int digits);
    void change_digits(int digits);
    void push(std::int64_t units);
    void pack();
    void move_to_store();
    void free_open();
    std::vector<std::int64_t> all_open();
    void change_chunks(std::int64_t offset);

    // Values that were moved to the store.
    struct Extent {
        std::uint64_t offset;
        std::size_t values;
        int digits;
    };

    ChunkStore* m_store;
    std::vector<std::int64_t> m_open;
    std::size_t m_held = 0; // bytes of m_open that the store knows of
    std::vector<Extent> m_extents;
    std::size_t m_num_open = 0; // also those in the extents
    std::vector<StoredChunk> m_chunks;
    std::vector<MarkRun> m_marks;
    SeriesDigest m_digest;
    std::uint64_t m_size = 0;
    int m_digits = 0;
    bool m_has_numbers = false;
    std::int64_t m_last = 0; // what marked places repeat
    std::int64_t m_least = 0;
    std::int64_t m_greatest = 0;
};

} // namespace zan::profile
