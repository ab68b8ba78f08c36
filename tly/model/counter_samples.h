// SPDX-License-Identifier: Apache-2.0
// The counters of a module instance: a sum for the line in progress and a list of samples for each family.
#pragma once

#include <array>
#include <vector>

#include "counter_tags.h"
#include "line_block.h"
#include "sample_list.h"
#include "wrapping.h"

// The sums of each counter family, and of the total cycles, on each line of a block. They live on the stack
// while an instance takes a block, and only the columns that fields feed are ever written.
class CounterColumns {
  public:
    using Samples = SampleList<long long>;
    static constexpr std::size_t total_cycles = num_counters;

    // Adds a field of all lines to a column. `index` is a family or `total_cycles`.
    void add(std::size_t index, const LineBlock& lines, std::size_t field) {
        if (m_is_there[index])
            lines.add_column(field, m_sums[index].data());
        else
            lines.column(field, m_sums[index].data());
        m_is_there[index] = true;
    }
    // Appends the first `count` values of a column to a list. A column that no field feeds is zeros.
    void append_to(Samples& list, std::size_t index, std::size_t count) const {
        if (m_is_there[index])
            list.append(m_sums[index].data(), count);
        else
            list.append_zeros(count);
    }
    // The value of one line.
    long long value(std::size_t index, std::size_t line) const {
        return m_is_there[index] ? m_sums[index][line] : 0;
    }

  private:
    std::array<std::array<long long, LineBlock::max_lines>, num_counters + 1> m_sums; // those that are there
    std::array<bool, num_counters + 1> m_is_there{};
};

// One entry for each line, in the lists of all families alike. Most instances have few of the counters, and
// a design has thousands of instances: a family that no tag names takes no part in any line. As many zeros
// as there are samples, counted once for all such families, stand for each of their lists.
class CounterSamples {
  public:
    using Samples = SampleList<long long>;

    // Makes a list for a family, which starts with zeros for the samples so far. Has to come before
    // the family's first value. Lists may move.
    void activate(Counter counter);

    // The life of a sample: sums to zero, values added modulo 2^64, the sums onto the lists.
    void start_line() {
        for (const Family& family : m_families)
            m_sums[index_of(family.counter)] = 0;
    }
    void add(Counter counter, long long value) {
        long long& sum = m_sums[index_of(counter)];
        sum = wrapping_sum(sum, value);
    }
    void end_line() {
        for (Family& family : m_families)
            family.samples.push_back(m_sums[index_of(family.counter)]);
        m_zeros.push_back(0);
    }
    // The same for `count` lines at once. The sums are those of the last line.
    void append_lines(const CounterColumns& columns, std::size_t count);

    // Empties the lists and sets the sums to zero; families keep their lists.
    void clear();
    // Empties the lists and frees what no copy of them shares.
    void release();

    const Samples& operator[](Counter counter) const {
        const std::size_t place = m_places[index_of(counter)];
        // cppcheck-suppress returnTempReference ; both are members
        return place == 0 ? m_zeros : m_families[place - 1].samples;
    }

  private:
    static std::size_t index_of(Counter counter) { return static_cast<std::size_t>(counter); }

    // A list for each of all families would be half of what a design with thousands of instances takes.
    struct Family {
        Counter counter;
        Samples samples;
    };

    std::vector<Family> m_families;                     // those that have been activated
    std::array<unsigned char, num_counters> m_places{}; // in m_families, from 1; 0 for others
    std::array<long long, num_counters> m_sums{};
    Samples m_zeros;
};
