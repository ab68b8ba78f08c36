// SPDX-License-Identifier: Apache-2.0
#include "timeline.h"

#include <algorithm>
#include <queue>

namespace zan::profile {

std::vector<TimeSpan> union_of(std::vector<TimeSpan> spans, double shortest_gap) {
    std::erase_if(spans, [](const TimeSpan& span) { return span.end <= span.begin; });
    std::ranges::sort(spans, {}, &TimeSpan::begin);
    std::size_t count = 0;
    for (const TimeSpan span : spans) {
        if (count != 0 && (span.begin <= spans[count - 1].end ||
                           time_between(spans[count - 1].end, span.begin) < shortest_gap))
            spans[count - 1].end = std::max(spans[count - 1].end, span.end);
        else
            spans[count++] = span;
    }
    spans.resize(count);
    return spans;
}

std::vector<TimeSpan> intersection_of(std::span<const TimeSpan> a, std::span<const TimeSpan> b) {
    std::vector<TimeSpan> both;
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < a.size() && j < b.size()) {
        const TimeSpan common{std::max(a[i].begin, b[j].begin), std::min(a[i].end, b[j].end)};
        if (common.begin < common.end)
            both.push_back(common);
        if (a[i].end < b[j].end)
            ++i;
        else
            ++j;
    }
    return both;
}

TimeBins covered_bins(std::span<const TimeSpan> spans, int shift) {
    TimeBins bins;
    bins.widen(shift);
    if (!spans.empty() && spans.front().begin < spans.back().end)
        bins.cover(spans.front().begin, spans.back().end - 1);
    for (const TimeSpan span : spans)
        bins.add(span.begin, span.end, time_between(span.begin, span.end));
    return bins;
}

const TimeBins& CoveredBins::of(int shift) {
    if (shift != m_asked) {
        m_bins = covered_bins(m_spans, shift);
        m_total = m_bins.total();
        m_asked = shift;
    }
    return m_bins;
}

double total_time(std::span<const TimeSpan> spans) {
    double total = 0.0;
    for (const TimeSpan span : spans)
        total += time_between(span.begin, span.end);
    return total;
}

namespace {

// A series begins or ends its next span.
struct TimelineEvent {
    std::int64_t time;
    std::size_t series;
    std::size_t position; // in the series
    bool is_end;
    bool operator>(const TimelineEvent& other) const { return time > other.time; }
};

} // namespace

void walk_timeline(std::span<const std::vector<TimeSpan>> series,
                   const std::function<void(const TimelinePiece&)>& visit) {
    std::priority_queue<TimelineEvent, std::vector<TimelineEvent>, std::greater<>> events;
    for (std::size_t i = 0; i < series.size(); ++i) {
        if (!series[i].empty())
            events.push({series[i].front().begin, i, 0, false});
    }
    std::size_t num_running = 0;
    std::size_t sum_of_running = 0; // of their places: which it is if one runs
    std::int64_t since = 0;
    while (!events.empty()) {
        const TimelineEvent event = events.top();
        events.pop();
        if (num_running != 0 && since < event.time)
            visit({{since, event.time}, num_running, sum_of_running});
        since = event.time;
        const std::vector<TimeSpan>& spans = series[event.series];
        if (!event.is_end) {
            ++num_running;
            sum_of_running += event.series;
            events.push({spans[event.position].end, event.series, event.position, true});
            continue;
        }
        --num_running;
        sum_of_running -= event.series;
        const std::size_t next = event.position + 1;
        if (next != spans.size())
            events.push({spans[next].begin, event.series, next, false});
    }
}

IdleTimes::IdleTimes(std::span<const TimeSpan> busy) : m_busy(busy) {
    m_before.reserve(busy.size());
    double idle = 0.0;
    for (std::size_t i = 0; i < busy.size(); ++i) {
        if (i != 0)
            idle += time_between(busy[i - 1].end, busy[i].begin);
        m_before.push_back(idle);
    }
}

double IdleTimes::up_to(std::int64_t time) const {
    const auto next = std::ranges::upper_bound(m_busy, time, {}, &TimeSpan::begin);
    if (next == m_busy.begin())
        return 0.0;
    const auto place = static_cast<std::size_t>(next - m_busy.begin()) - 1;
    if (next == m_busy.end())
        return m_before[place];
    return m_before[place] + time_between(m_busy[place].end, time);
}

double IdleTimes::between(std::int64_t begin, std::int64_t end) const {
    return end <= begin ? 0.0 : up_to(end) - up_to(begin);
}

} // namespace zan::profile
