// SPDX-License-Identifier: Apache-2.0
// What all module instances of a function have in common: the cycles and the times of its samples.
#pragma once

#include <string>
#include <unordered_map>

#include "sample_list.h"
#include "wrapping.h"

// A registry of functions by name. Any instance of a function may bring its cycles, and each of them reads
// the same list. A list of cycles is made with the function's first sample and stays for good, emptied or
// not: that a function has had cycles before keeps the report from warning that it has none.
class FunctionCycles {
  public:
    using Samples = SampleList<long long>;

    // The cycles of each sample of a function, null until there is one. Lists stay in place, so that
    // instances can hold on to theirs.
    Samples* find(const std::string& function);
    // The same list, made if there is none.
    Samples& list_of(const std::string& function) { return m_cycles[function]; }

    // The cycles of the line in progress, summed modulo 2^64. One sum is enough, since instances are updated
    // one after the other.
    void start_line() { m_line_sum = 0; }
    void add(long long cycles) { m_line_sum = wrapping_sum(m_line_sum, cycles); }
    long long line_sum() const { return m_line_sum; }

    // Sample times of a function; null if there are none.
    const Samples* find_timestamps(const std::string& function) const;
    void add_timestamp(const std::string& function, long long timestamp);
    // Forgets the sample times of all functions.
    void clear_timestamps() { m_timestamps.clear(); }

  private:
    std::unordered_map<std::string, Samples> m_cycles;
    std::unordered_map<std::string, Samples> m_timestamps;
    long long m_line_sum = 0;
};
