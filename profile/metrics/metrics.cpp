// SPDX-License-Identifier: Apache-2.0
#include "metrics.h"

#include <algorithm>

#include "block_metrics.h"
#include "kernel_metrics.h"
#include "memory_metrics.h"
#include "memory_shares.h"
#include "order_statistics.h"
#include "profile_notes.h"

namespace zan::profile {

namespace {

void set_head(ProfileSummary& summary, const SummaryContext& context, const SummaryOptions& options) {
    const Totals& first = context.runs.front()->totals;
    summary.input = options.input;
    summary.program_version = first.program_version();
    summary.zanx_version = first.zanx_version();
    summary.board = first.board_name();
    summary.clock_text = first.clock_text();
    summary.clock_mhz = context.clock_mhz;
    summary.nanoseconds = context.unit.nanoseconds;
}

void set_times(ProfileSummary& summary, const SummaryContext& context) {
    const RunTimes& first = context.runs.front()->times;
    if (first.has_span)
        summary.start = std::to_string(first.span.begin);
    double started = 0.0;
    double transfer_only = 0.0;
    bool has_span = false;
    bool has_started = false;
    for (const auto& run : context.runs) {
        started += run->times.started_time;
        transfer_only += run->times.transfer_only;
        has_span |= run->times.has_span;
        has_started |= run->times.has_started;
    }
    if (!has_span)
        return;
    summary.metrics[Metric::span] = context.time(context.span_length());
    if (has_started)
        summary.kernel_time = context.time(started);
    summary.transfer_only = context.time(transfer_only);
}

void set_transfers(ProfileSummary& summary, const SummaryContext& context) {
    std::map<TransferKey, std::vector<double>> lengths;
    std::map<TransferKey, double> busy;
    for (const auto& run : context.runs) {
        for (const auto& [key, spans] : run->totals.transfers()) {
            for (const TimeSpan span : spans)
                lengths[key].push_back(context.time(time_between(span.begin, span.end)));
            busy[key] += total_time(run->times.transfers.at(key));
        }
    }
    for (auto& [key, times] : lengths) {
        std::ranges::sort(times);
        TransferSummary& transfer = summary.transfers.emplace_back();
        transfer.type = key.first;
        transfer.queue = key.second;
        transfer.num = times.size();
        for (const double time : times)
            transfer.total += time;
        transfer.median = quantile(times, 0.5);
        transfer.busy = percent_of(busy[key], context.span_length()).value_or(0.0);
    }
}

std::optional<unsigned> num_units(const SummaryOptions& options, const std::string& kernel) {
    if (!options.knows_units)
        return std::nullopt;
    const auto found = std::ranges::find(options.units, kernel, &std::pair<std::string, unsigned>::first);
    return found == options.units.end() ? 1 : found->second;
}

void set_kernels(ProfileSummary& summary, SummaryContext& context, const SummaryOptions& options) {
    const std::vector<JoinedKernel> joined = join_kernels(context);
    for (const JoinedKernel& parts : joined) {
        KernelSummary& kernel = summary.kernels.emplace_back(summarize_kernel(context, parts));
        kernel.num_units = num_units(options, kernel.name);
        kernel.blocks = summarize_blocks(context, parts);
        kernel.ports = summarize_ports(context, parts);
        set_port_use(context, kernel);
        summary.num_invocations += kernel.num_invocations;
        summary.num_samples += kernel.num_samples;
    }
    set_teams(summary.kernels, joined);
    summary.memories = summarize_memories(context, joined, summary.kernels);
    set_memory_shares(context, joined, summary.memories, summary.kernels);
}

} // namespace

ProfileSummary summarize(std::span<const Totals* const> runs, const SummaryOptions& options) {
    SummaryContext context(runs, options.nanoseconds);
    ProfileSummary summary;
    set_head(summary, context, options);
    set_times(summary, context);
    set_kernels(summary, context, options);
    set_transfers(summary, context);
    summary.notes = notes_of(context, summary);
    return summary;
}

ProfileSummary summarize(const Totals& run, const SummaryOptions& options) {
    const Totals* const runs[] = {&run};
    return summarize(runs, options);
}

} // namespace zan::profile
