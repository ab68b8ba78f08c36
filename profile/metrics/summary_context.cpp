// SPDX-License-Identifier: Apache-2.0
#include "summary_context.h"

#include <algorithm>

namespace zan::profile {

MemoryUse& SummaryRun::memory(const std::string& name) {
    const auto found = m_memories.find(name);
    if (found != m_memories.end())
        return found->second;
    return m_memories.emplace(name, MemoryUse(totals, times, name)).first->second;
}

SummaryContext::SummaryContext(std::span<const Totals* const> of, Value stated_nanoseconds) {
    WeightedSum clocked;
    for (const Totals* totals : of) {
        runs.push_back(std::make_unique<SummaryRun>(*totals));
        if (!clock_mhz)
            clock_mhz = clock_of(totals->clock_text());
        for (const KernelTotals& kernel : totals->kernels())
            clocked += kernel.clocked;
        for (const BoardMemoryNode& memory : totals->memories()) {
            if (std::ranges::find(board, memory.name, &BoardMemoryNode::name) == board.end())
                board.push_back(memory);
        }
    }
    std::ranges::sort(board, {}, &BoardMemoryNode::name); // a report has them in no particular order
    unit = find_time_unit(clocked.sum, clocked.weight, clock_mhz, stated_nanoseconds);
}

Value SummaryContext::peak(const std::string& memory) const {
    const auto found = std::ranges::find(board, memory, &BoardMemoryNode::name);
    return found == board.end() ? std::nullopt : found->peak;
}

Value SummaryContext::max_burst(const std::string& memory) const {
    const auto found = std::ranges::find(board, memory, &BoardMemoryNode::name);
    return found == board.end() ? std::nullopt : found->max_burst;
}

// MB/s · cycles / MHz are bytes.
Value SummaryContext::megabytes_per_second(Value rate) const {
    if (!rate || !clock_mhz || !unit.nanoseconds)
        return std::nullopt;
    return *rate / *clock_mhz / *unit.nanoseconds * 1000.0;
}

double SummaryContext::span_length() const {
    double length = 0.0;
    for (const auto& run : runs)
        length += time_between(run->times.span.begin, run->times.span.end);
    return length;
}

std::vector<JoinedKernel> join_kernels(const SummaryContext& context) {
    std::vector<JoinedKernel> joined;
    for (const auto& run : context.runs) {
        for (std::size_t place = 0; place < run->totals.kernels().size(); ++place) {
            const KernelTotals& kernel = run->totals.kernels()[place];
            const auto found = std::ranges::find_if(joined, [&](const JoinedKernel& known) {
                return known.front().run != run.get() && known.front().totals().key == kernel.key;
            });
            if (found == joined.end())
                joined.push_back({{run.get(), place}});
            else
                found->push_back({run.get(), place});
        }
    }
    std::stable_partition(joined.begin(), joined.end(),
                          [](const JoinedKernel& kernel) { return !kernel.front().totals().autorun; });
    return joined;
}

std::vector<JoinedBlock> join_blocks(const JoinedKernel& kernel) {
    std::vector<JoinedBlock> joined;
    for (const KernelPart& part : kernel) {
        for (const BlockTotals& block : part.totals().blocks) {
            const auto found = std::ranges::find_if(joined, [&](const JoinedBlock& known) {
                return known.back().kernel.run != part.run && known.front().totals->name == block.name;
            });
            if (found == joined.end())
                joined.push_back({{part, &block}});
            else
                found->push_back({part, &block});
        }
    }
    return joined;
}

Value percent_of(double part, double whole) {
    return whole > 0.0 ? Value(100.0 * part / whole) : std::nullopt;
}

} // namespace zan::profile
