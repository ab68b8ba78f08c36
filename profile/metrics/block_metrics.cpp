// SPDX-License-Identifier: Apache-2.0
// docs/metrics.md has the formulas. A value is set where all it is made of was measured, and left missing
// everywhere else.
#include "block_metrics.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "stalled_phase.h"

namespace zan::profile {

namespace {

// When a kernel worked, by its times in each run.
using WorkedBins = std::map<const KernelTimes*, CoveredBins>;

// Whether the valid, stalled and idle cycles leave 5% of the cycles or more to what wasn't counted.
bool leaves_cycles(const BlockSums& sums) {
    double share = 0.0;
    for (const WeightedSum& sum : {sums.valid, sums.stall, sums.idle})
        share += sum.ratio().value_or(0.0);
    return share < 0.95;
}

Value percent(Value share) {
    return share ? Value(*share * 100.0) : std::nullopt;
}

Value if_measured(double greatest) {
    return greatest >= 0.0 ? Value(greatest) : std::nullopt;
}

// A series that is 0 in all samples may be one that nothing counts.
void set_shares(BlockSummary& block, const BlockSums& sums) {
    const bool leaves = leaves_cycles(sums);
    const bool has_stall = sums.stall.weight > 0.0;
    block.stall_counted = !(has_stall && sums.stall.sum == 0.0 && leaves);
    block.metrics[Metric::valid] = percent(sums.valid.ratio());
    if (block.stall_counted)
        block.metrics[Metric::stall] = percent(sums.stall.ratio());
    if (!(sums.idle.sum == 0.0 && leaves))
        block.metrics[Metric::idle] = percent(sums.idle.ratio());
    if (const Value most = if_measured(sums.max_valid))
        block.max_valid = percent(most);
}

// The time that the block was stalled: by its cycles where these have a length, else by the samples' own
// times.
Value lost_time(const SummaryContext& context, const BlockSummary& block, const BlockSums& sums) {
    const Value stall = block.metrics[Metric::stall];
    if (!stall)
        return std::nullopt;
    if (context.clock_mhz && context.unit.nanoseconds && block.cycles)
        return *stall / 100.0 * *block.cycles * 1000.0 / *context.clock_mhz;
    return context.time(sums.stall_time);
}

void set_traffic(BlockSummary& block, const BlockSums& sums, const SummaryContext& context,
                 const JoinedBlock& joined) {
    const bool none_counted = sums.bandwidth.sum == 0.0 && sums.requests > 0.0 && sums.hits.sum == 0.0;
    if (block.kind == BlockKind::loop || none_counted)
        return;
    block.metrics[Metric::bandwidth] = sums.bandwidth.ratio();
    if (sums.bandwidth.weight > 0.0)
        block.metrics[Metric::bandwidth_max] = if_measured(sums.max_bandwidth);
    if (context.clock_mhz && sums.bandwidth.weight > 0.0) {
        double bytes = 0.0;
        for (const BlockPart& part : joined)
            bytes += part.totals->moved.bytes(part.kernel.totals().cycle_classes,
                                              static_cast<float>(*context.clock_mhz));
        block.metrics[Metric::moved] = bytes;
    }
    if (sums.efficiency.sum > 0.0)
        block.metrics[Metric::efficiency] = percent(sums.efficiency.ratio());
    if (sums.requested.sum > 0.0 && sums.requested.weight > 0.0 && context.clock_mhz)
        block.access_bytes = sums.requested.sum / *context.clock_mhz / sums.requested.weight;
}

void set_fill(BlockSummary& block, const BlockSums& sums) {
    block.metrics[Metric::max_fill] = if_measured(sums.max_fill);
    if (block.kind != BlockKind::channel || !(sums.fill.weight > 0.0))
        return;
    Value fill = sums.fill.ratio();
    const bool is_write = block.direction != Direction::read;
    if (is_write) {
        if (sums.max_fill < 0.0)
            return;
        fill = std::max(0.0, (sums.fill.sum - sums.fill_stalls * sums.max_fill) / sums.fill.weight);
    }
    constexpr double shallow = 2.0; // a read end of so few words is nearly always full or empty
    block.metrics[Metric::fill] = fill;
    if (sums.max_fill > (is_write ? 0.0 : shallow))
        block.metrics[Metric::fill_share] = percent_of(*fill, sums.max_fill);
}

void set_burst(BlockSummary& block, const BlockSums& sums, const SummaryContext& context) {
    constexpr double most_above =
        1.1; // more than that above the memory's largest burst isn't counted in its words
    const Value weighted = sums.burst.ratio();
    const Value burst = weighted ? weighted : sums.burst_entries.ratio();
    block.metrics[Metric::burst] = burst;
    block.max_burst = context.max_burst(block.memory);
    if (burst && block.max_burst && sums.max_burst <= most_above * *block.max_burst)
        block.metrics[Metric::burst_share] = percent_of(*burst, *block.max_burst);
}

void set_phase(BlockSummary& block, const SummaryContext& context, const SummaryRun& run, TimeBins& stalls,
               CoveredBins& worked) {
    const std::optional<StalledPhase> phase = find_stalled_phase(stalls, worked);
    if (!phase)
        return;
    const std::int64_t start = run.times.span.begin;
    block.stalled_part = phase->part * 100.0;
    block.stalled_from = context.time(time_between(start, phase->time.begin));
    block.stalled_to = context.time(time_between(start, phase->time.end));
}

// What depends on when the block was stalled: its phase, unless it is of several runs, and the use of its
// memory meanwhile; of a block that never was, while its kernel ran.
void set_stalled_times(BlockSummary& block, const SummaryContext& context, const JoinedBlock& joined,
                       WorkedBins& worked_bins) {
    const Value peak = block.memory.empty() ? std::nullopt : context.peak(block.memory);
    const bool has_stalls = block.metrics[Metric::stall].value_or(0.0) > 0.0;
    WeightedSum rates;
    for (const BlockPart& part : joined) {
        const KernelTimes& times = part.kernel.times();
        CoveredBins& worked = worked_bins.try_emplace(&times, times.work).first->second;
        TimeBins stalls = has_stalls ? part.totals->stalls.bins() : TimeBins();
        if (peak) {
            MemoryUse& memory = part.kernel.run->memory(block.memory);
            const TimeBins& weights = has_stalls ? stalls : worked.of(memory.shift());
            const double weight = weights.total();
            if (const Value rate = memory.mean_rate(weights))
                rates.add(*rate * weight, weight);
        }
        if (has_stalls && joined.size() == 1)
            set_phase(block, context, *part.kernel.run, stalls, worked);
    }
    const Value use = context.megabytes_per_second(rates.ratio());
    block.metrics[Metric::memory_use] = use && peak ? percent_of(*use, *peak) : std::nullopt;
}

BlockSums sums_of(const JoinedBlock& joined) {
    BlockSums sums;
    for (const BlockPart& part : joined)
        sums += part.totals->sums;
    return sums;
}

BlockSummary summarize_block(const SummaryContext& context, const JoinedBlock& joined, double cycles,
                             WorkedBins& worked_bins) {
    const BlockTotals& first = *joined.front().totals;
    BlockSummary block;
    block.name = first.name;
    block.kind = first.kind;
    block.direction = first.direction;
    block.coalesced = first.coalesced;
    block.sources = first.sources;
    for (const BlockPart& part : joined) {
        if (block.memory.empty())
            block.memory = part.totals->memory;
    }
    const BlockSums sums = sums_of(joined);
    block.num_samples = sums.num_samples;
    block.num_left_out = sums.num_left_out;
    if (cycles > 0.0)
        block.cycles = cycles;
    set_shares(block, sums);
    block.metrics[Metric::lost] = lost_time(context, block, sums);
    set_traffic(block, sums, context, joined);
    block.metrics[Metric::hits] = percent(sums.hits.ratio());
    block.metrics[Metric::unaligned] = percent(sums.unaligned.ratio());
    set_fill(block, sums);
    set_burst(block, sums, context);
    set_stalled_times(block, context, joined, worked_bins);
    return block;
}

// What a loop's iterations take, and would take if no block of the kernel stalled.
void set_iterations(std::vector<BlockSummary>& blocks, double num_invocations) {
    Value stalls = 0.0; // share of the cycles, of all blocks; missing if one isn't known
    for (const BlockSummary& block : blocks) {
        if (block.kind == BlockKind::loop || !stalls)
            continue;
        const Value stall = block.metrics[Metric::stall];
        stalls = stall ? Value(*stalls + *stall / 100.0) : std::nullopt;
    }
    for (BlockSummary& block : blocks) {
        const double valid = block.metrics[Metric::valid].value_or(0.0) / 100.0;
        if (block.kind != BlockKind::loop || !block.metrics[Metric::valid])
            continue;
        if (block.cycles && num_invocations > 0.0)
            block.iterations = valid * *block.cycles / num_invocations;
        if (!(valid > 0.0))
            continue;
        block.metrics[Metric::iteration] = 1.0 / valid;
        if (stalls)
            block.metrics[Metric::net] = std::max(1.0, (1.0 - *stalls) / valid);
    }
}

} // namespace

std::vector<BlockSummary> summarize_blocks(const SummaryContext& context, const JoinedKernel& kernel) {
    double cycles = 0.0;
    double num_invocations = 0.0;
    for (const KernelPart& part : kernel) {
        cycles += part.totals().cycles;
        num_invocations += static_cast<double>(part.totals().invocations.size());
    }
    std::vector<BlockSummary> blocks;
    WorkedBins worked_bins;
    for (const JoinedBlock& joined : join_blocks(kernel))
        blocks.push_back(summarize_block(context, joined, cycles, worked_bins));
    set_iterations(blocks, num_invocations);
    return blocks;
}

} // namespace zan::profile
