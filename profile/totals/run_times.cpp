// SPDX-License-Identifier: Apache-2.0
// Autorun kernels run all the time, so they count neither as something that runs nor as company.
#include "run_times.h"

#include <algorithm>

namespace zan::profile {

namespace {

void widen(RunTimes& times, std::span<const TimeSpan> spans) {
    for (const TimeSpan span : spans) {
        times.span.begin = times.has_span ? std::min(times.span.begin, span.begin) : span.begin;
        times.span.end = times.has_span ? std::max(times.span.end, span.end) : span.end;
        times.has_span = true;
    }
}

void add_spans(std::vector<TimeSpan>& all, std::span<const TimeSpan> spans) {
    all.insert(all.end(), spans.begin(), spans.end());
}

} // namespace

RunTimes::RunTimes(const Totals& totals) {
    std::vector<std::vector<TimeSpan>> started;
    std::vector<std::size_t> places; // of the started kernels
    for (const KernelTotals& kernel : totals.kernels()) {
        widen(*this, kernel.invocations.spans());
        KernelTimes& times = kernels.emplace_back();
        times.ran = union_of(kernel.invocations.spans());
        times.work = kernel.autorun ? union_of(kernel.work.spans()) : times.ran;
        if (kernel.autorun)
            continue;
        has_started = true;
        places.push_back(kernels.size() - 1);
        started.push_back(times.ran);
    }
    walk_timeline(started, [&](const TimelinePiece& piece) {
        const double length = time_between(piece.time.begin, piece.time.end);
        started_time += length;
        if (piece.num_running == 1)
            kernels[places[piece.only]].alone += length;
    });

    std::vector<TimeSpan> all;
    for (const auto& [key, spans] : totals.transfers()) {
        widen(*this, spans);
        transfers[key] = union_of(spans);
        add_spans(all, spans);
    }
    for (const std::vector<TimeSpan>& spans : started)
        add_spans(all, spans);
    all = union_of(std::move(all));
    transfer_only = total_time(all) - started_time;
    const IdleTimes idle(all);
    for (const std::size_t place : places) {
        const std::vector<TimeSpan>& ran = kernels[place].ran;
        if (!ran.empty())
            kernels[place].gaps = idle.between(ran.front().begin, ran.back().end);
    }
}

} // namespace zan::profile
