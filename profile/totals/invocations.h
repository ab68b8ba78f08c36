// SPDX-License-Identifier: Apache-2.0
// The invocations of a kernel, by the nodes that hold their samples.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zan::profile {

// A stretch of time, in the unit of the report. The end is not below the start.
struct TimeSpan {
    std::int64_t begin = 0;
    std::int64_t end = 0;
    bool operator==(const TimeSpan&) const = default;
};

// Takes 16 bytes for an invocation, and 8 to find it again by its start.
class Invocations {
  public:
    // The invocation that began at `start`: a new one unless it is known. Nodes of the same start are one, as
    // they are if two queues take turns. A new one ends where it begins.
    TimeSpan& begun_at(std::int64_t start);
    // The place in spans() of the one that began at `start`, which must be known.
    std::size_t place_of(std::int64_t start) const;

    std::size_t size() const { return m_spans.size(); }
    const std::vector<TimeSpan>& spans() const { return m_spans; }

  private:
    std::size_t slot_of(std::int64_t start) const;
    void make_room();

    std::vector<TimeSpan> m_spans;
    std::vector<std::uint32_t> m_slots; // places in m_spans, from 1; 0 is empty. At most 3 of 4 are taken
};

} // namespace zan::profile
