// SPDX-License-Identifier: Apache-2.0
#include "memory_shares.h"

#include <algorithm>
#include <map>

namespace zan::profile {

namespace {

constexpr double half_of_bytes = 50.0; // percent

// An amount over time as what has come up to any time, for times in which the kernel ran.
class AmountUpTo {
  public:
    AmountUpTo(TimeBins amounts, std::span<const TimeSpan> ran) {
        if (amounts.empty())
            return;
        TimeBins covered = covered_bins(ran, amounts.shift());
        align(amounts, covered);
        m_shift = amounts.shift();
        m_first = amounts.first();
        m_before.reserve(amounts.values().size());
        m_rates.reserve(amounts.values().size());
        const double width = amounts.width();
        std::int64_t number = m_first;
        for (const double amount : amounts.values()) {
            const double time = covered.at(number++);
            m_before.push_back(m_sum);
            m_rates.push_back(time > 0.0 ? amount / time : 0.0);
            m_sum += m_rates.back() * width;
        }
    }

    double within(std::span<const TimeSpan> spans) const {
        double amount = 0.0;
        for (const TimeSpan span : spans)
            amount += up_to(span.end) - up_to(span.begin);
        return amount;
    }

  private:
    double up_to(std::int64_t time) const {
        const std::int64_t number = time >> m_shift;
        if (number < m_first)
            return 0.0;
        const auto place = static_cast<std::uint64_t>(number) - static_cast<std::uint64_t>(m_first);
        if (place >= m_rates.size())
            return m_sum;
        return m_before[place] + m_rates[place] * time_between(number << m_shift, time);
    }

    std::vector<double> m_before; // each bin
    std::vector<double> m_rates;  // for each unit of time
    std::int64_t m_first = 0;
    int m_shift = 0;
    double m_sum = 0.0;
};

// What moved from and to a memory while a kernel ran: MB/s · cycles.
struct SharedTraffic {
    std::map<std::string, double> by_others; // by the names of kernels
    double all = 0.0;
    double own = 0.0;
    double reads = 0.0;
    double writes = 0.0;
    bool knows_directions = true;
};

bool uses(const KernelSummary& kernel, const std::string& memory) {
    return std::ranges::any_of(kernel.blocks, [&](const BlockSummary& block) {
        return block.kind == BlockKind::global && block.memory == memory;
    });
}

// Adds what one kernel moved in a run to the sums of all that ran at the same time.
void add_traffic(std::vector<SharedTraffic>& sums, std::span<const JoinedKernel> joined,
                 const std::vector<bool>& wanted, const SummaryRun& run, const KernelTraffic& traffic) {
    const std::vector<TimeSpan>& ran = run.times.kernels[traffic.kernel].ran;
    const AmountUpTo all(traffic.all(), ran);
    const AmountUpTo reads(traffic.access.reads.bins(), ran);
    const AmountUpTo writes(traffic.access.writes.bins(), ran);
    const bool knows_directions = traffic.empty() || traffic.knows_directions();
    for (std::size_t i = 0; i < joined.size(); ++i) {
        for (const KernelPart& part : joined[i]) {
            if (!wanted[i] || part.run != &run)
                continue;
            const bool is_own = part.place == traffic.kernel;
            const std::vector<TimeSpan> common = is_own ? ran : intersection_of(ran, part.times().ran);
            if (common.empty())
                continue;
            const double moved = all.within(common);
            sums[i].all += moved;
            (is_own ? sums[i].own : sums[i].by_others[run.totals.kernels()[traffic.kernel].key.name]) +=
                moved;
            sums[i].reads += reads.within(common);
            sums[i].writes += writes.within(common);
            sums[i].knows_directions &= knows_directions;
        }
    }
}

// The fewest that moved more than half together, or all.
std::vector<std::string> rivals_of(const SharedTraffic& sums) {
    std::vector<std::pair<double, std::string>> others;
    for (const auto& [name, moved] : sums.by_others)
        others.emplace_back(-moved, name);
    std::ranges::sort(others);
    std::vector<std::string> rivals;
    double moved = 0.0;
    for (const auto& [negative, name] : others) {
        if (moved > sums.all / 2.0)
            break;
        moved -= negative;
        rivals.push_back(name);
    }
    return rivals;
}

void set_shares(BlockSummary& block, const SharedTraffic& sums, Value clock_mhz) {
    block.own_share = percent_of(sums.own, sums.all);
    if (block.metrics[Metric::moved] && clock_mhz)
        block.block_share = percent_of(*block.metrics[Metric::moved] * *clock_mhz, sums.all);
    if (sums.knows_directions) {
        block.read_share = percent_of(sums.reads, sums.reads + sums.writes);
        block.write_share = percent_of(sums.writes, sums.reads + sums.writes);
    }
    if (block.own_share && *block.own_share < half_of_bytes)
        block.rivals = rivals_of(sums);
}

} // namespace

void set_memory_shares(const SummaryContext& context, std::span<const JoinedKernel> joined,
                       std::span<const MemorySummary> memories, std::vector<KernelSummary>& kernels) {
    for (const MemorySummary& memory : memories) {
        if (memory.lower_bound)
            continue;
        std::vector<SharedTraffic> sums(kernels.size());
        std::vector<bool> wanted;
        wanted.reserve(kernels.size());
        for (const KernelSummary& kernel : kernels)
            wanted.push_back(uses(kernel, memory.name));
        for (const auto& run : context.runs) {
            for (const KernelTraffic& traffic : run->memory(memory.name).kernels())
                add_traffic(sums, joined, wanted, *run, traffic);
        }
        for (std::size_t i = 0; i < kernels.size(); ++i) {
            for (BlockSummary& block : kernels[i].blocks) {
                if (block.kind == BlockKind::global && block.memory == memory.name)
                    set_shares(block, sums[i], context.clock_mhz);
            }
        }
    }
}

} // namespace zan::profile
