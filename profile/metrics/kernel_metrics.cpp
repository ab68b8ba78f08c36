// SPDX-License-Identifier: Apache-2.0
#include "kernel_metrics.h"

#include <algorithm>
#include <numeric>

#include "order_statistics.h"

namespace zan::profile {

namespace {

// Times of all invocations, sorted.
std::vector<double> invocation_times(const SummaryContext& context, const JoinedKernel& joined) {
    std::vector<double> times;
    for (const KernelPart& part : joined) {
        for (const TimeSpan span : part.totals().invocations.spans())
            times.push_back(context.time(time_between(span.begin, span.end)));
    }
    std::ranges::sort(times);
    return times;
}

void set_times(KernelSummary& kernel, std::span<const double> times) {
    if (times.empty())
        return;
    kernel.shortest = times.front();
    kernel.longest = times.back();
    kernel.metrics[Metric::kernel_time] = quantile(times, 0.5);
    kernel.metrics[Metric::kernel_p95] = quantile(times, 0.95);
    kernel.metrics[Metric::kernel_total] = std::accumulate(times.begin(), times.end(), 0.0);
    if (const auto places = median_interval(times.size())) {
        kernel.median_low = times[places->first];
        kernel.median_high = times[places->second];
    }
}

} // namespace

KernelSummary summarize_kernel(const SummaryContext& context, const JoinedKernel& joined) {
    const KernelTotals& first = joined.front().totals();
    KernelSummary kernel;
    kernel.name = first.key.name;
    kernel.compute_unit = first.key.compute_unit;
    kernel.device = first.key.device;
    kernel.source = first.key.source;
    kernel.autorun = first.autorun;
    set_times(kernel, invocation_times(context, joined));
    double ran = 0.0;
    double worked = 0.0;
    double alone = 0.0;
    double gaps = 0.0;
    double cycles = 0.0;
    double all_cycles = 0.0;
    for (const KernelPart& part : joined) {
        const KernelTotals& totals = part.totals();
        kernel.shared_types |= totals.shared_types;
        kernel.num_invocations += totals.invocations.size();
        kernel.num_samples += totals.num_samples;
        ran += total_time(part.times().ran);
        worked += total_time(part.times().work);
        alone += part.times().alone;
        gaps += part.times().gaps;
        cycles += totals.cycles;
        all_cycles += totals.all_cycles;
    }
    if (kernel.num_invocations == 0)
        return kernel;
    kernel.union_time = context.time(worked);
    kernel.metrics[Metric::busy] = percent_of(ran, context.span_length());
    if (kernel.autorun) {
        kernel.metrics[Metric::waiting] = percent_of(all_cycles - cycles, all_cycles);
    } else {
        kernel.metrics[Metric::alone] = percent_of(alone, context.span_length());
        kernel.gaps = context.time(gaps);
    }
    return kernel;
}

void set_teams(std::vector<KernelSummary>& kernels, std::span<const JoinedKernel> joined) {
    std::vector<double> lengths;
    for (const JoinedKernel& kernel : joined) {
        double length = 0.0;
        for (const KernelPart& part : kernel)
            length += total_time(part.times().work);
        lengths.push_back(length);
    }
    for (std::size_t i = 0; i < joined.size(); ++i) {
        for (std::size_t j = i + 1; j < joined.size(); ++j) {
            double common = 0.0;
            for (const KernelPart& a : joined[i]) {
                for (const KernelPart& b : joined[j]) {
                    if (a.run == b.run)
                        common += total_time(intersection_of(a.times().work, b.times().work));
                }
            }
            if (common > 0.0 && 2.0 * common >= std::max(lengths[i], lengths[j])) {
                kernels[i].team.push_back(kernels[j].name);
                kernels[j].team.push_back(kernels[i].name);
            }
        }
    }
}

} // namespace zan::profile
