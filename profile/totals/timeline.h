// SPDX-License-Identifier: Apache-2.0
// Which of several series of time spans ran when.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "invocations.h"
#include "time_bins.h"

namespace zan::profile {

// The same time as spans that are in order and don't touch. Spans without length are no time. Times between
// spans that are shorter than `shortest_gap` are filled.
std::vector<TimeSpan> union_of(std::vector<TimeSpan> spans, double shortest_gap = 0.0);

// The time in both. Each is in order, and its spans don't touch.
std::vector<TimeSpan> intersection_of(std::span<const TimeSpan> a, std::span<const TimeSpan> b);

// How much of each bin of width 2^shift the spans, which are in order, cover.
TimeBins covered_bins(std::span<const TimeSpan> spans, int shift);

// The same for one width after another. The series of a kernel mostly have one, so the last bins are kept.
class CoveredBins {
  public:
    // Spans are in order and don't touch, and outlive this.
    explicit CoveredBins(std::span<const TimeSpan> spans) : m_spans(spans) {}

    std::span<const TimeSpan> spans() const { return m_spans; }
    // Bins of that width, or of a greater one if there would be too many. They hold until the next call.
    const TimeBins& of(int shift);
    // The sum of these bins.
    double total() const { return m_total; }

  private:
    std::span<const TimeSpan> m_spans;
    TimeBins m_bins;
    double m_total = 0.0;
    int m_asked = -1; // the width that m_bins were made for; none at first
};

// The length of all of them together, if they don't overlap.
double total_time(std::span<const TimeSpan> spans);

// A stretch in which the same series ran.
struct TimelinePiece {
    TimeSpan time;
    std::size_t num_running; // at least 1
    std::size_t only;        // if one ran: which of the series
};

// Calls `visit` for the pieces in order, leaving out the times in which nothing ran. Each series is in order
// and its spans don't touch.
void walk_timeline(std::span<const std::vector<TimeSpan>> series,
                   const std::function<void(const TimelinePiece&)>& visit);

// The length of the idle times between pieces, up to any time.
class IdleTimes {
  public:
    // Spans must be in order and not touch.
    explicit IdleTimes(std::span<const TimeSpan> busy);
    // Idle time from `begin` to `end`. Before the first span and after the last one nothing counts as idle.
    double between(std::int64_t begin, std::int64_t end) const;

  private:
    double up_to(std::int64_t time) const;

    std::span<const TimeSpan> m_busy;
    std::vector<double> m_before; // idle time before each span
};

} // namespace zan::profile
