// SPDX-License-Identifier: Apache-2.0
#include "diagnosis.h"

#include <algorithm>
#include <tuple>

#include "answers.h"
#include "block_facts.h"

namespace zan::profile {

namespace {

void find_innermost(KernelSummary& kernel) {
    BlockSummary* innermost = nullptr;
    for (BlockSummary& block : kernel.blocks) {
        block.innermost = false;
        const Value& valid = block.metrics[Metric::valid];
        if (block.kind != BlockKind::loop || !valid || !(*valid > 0))
            continue;
        if (innermost == nullptr || *valid > *innermost->metrics[Metric::valid])
            innermost = &block;
    }
    if (innermost != nullptr)
        innermost->innermost = true;
}

void judge_blocks(ProfileSummary& summary, const Rules& rules) {
    for (KernelSummary& kernel : summary.kernels)
        find_innermost(kernel);
    for (KernelSummary& kernel : summary.kernels) {
        for (BlockSummary& block : kernel.blocks)
            block.sentence =
                judge(rules, rules.blocks, facts_of(summary, kernel, block, rules), kind_text(block));
    }
}

// The time that a loop takes beyond a cycle for each iteration and beyond all stalls. Since net is (cycles -
// stalls) / iterations, that is (net - 1) · iterations cycles.
Value time_of_loop(const ProfileSummary& summary, const KernelSummary& kernel, const BlockSummary& block) {
    const Value& net = block.metrics[Metric::net];
    const Value& valid = block.metrics[Metric::valid];
    if (!net || !valid)
        return {};
    const double share = (*net - 1) * *valid / 100;
    if (summary.nanoseconds && summary.clock_mhz && block.cycles)
        return share * *block.cycles / *summary.clock_mhz * 1000;
    const Value& total = kernel.metrics[Metric::kernel_total];
    return total ? Value(share * *total) : Value();
}

Value ranking_time(const ProfileSummary& summary, const KernelSummary& kernel, const BlockSummary& block) {
    if (block.sentence.rule == "loop-interval")
        return time_of_loop(summary, kernel, block);
    return block.stall_counted ? block.metrics[Metric::lost] : Value();
}

// By what a kernel's culprit is: one that stalls, else a loop, else the first.
std::size_t culprit_of(const ProfileSummary& summary, const std::vector<RankedBlock>& ranked,
                       std::size_t kernel, double stall_worth) {
    const auto first_that = [&](const auto& is_it) {
        return static_cast<std::size_t>(
            std::ranges::find_if(ranked,
                                 [&](const RankedBlock& block) {
                                     return block.kernel == kernel &&
                                            is_it(summary.kernels[kernel].blocks[block.block]);
                                 }) -
            ranked.begin());
    };
    std::size_t place = first_that([&](const BlockSummary& block) {
        return block.stall_counted && block.metrics[Metric::stall].value_or(0) >= stall_worth;
    });
    if (place == ranked.size())
        place = first_that([](const BlockSummary& block) { return block.sentence.rule == "loop-interval"; });
    if (place == ranked.size())
        place = first_that([](const BlockSummary&) { return true; });
    return place;
}

} // namespace

std::vector<RankedBlock> ranking(const ProfileSummary& summary) {
    std::vector<RankedBlock> ranked;
    for (std::size_t k = 0; k < summary.kernels.size(); k++) {
        const KernelSummary& kernel = summary.kernels[k];
        for (std::size_t b = 0; b < kernel.blocks.size(); b++)
            ranked.push_back({k, b, ranking_time(summary, kernel, kernel.blocks[b])});
    }
    const auto waits = [&](const RankedBlock& ranked_block) {
        const BlockSummary& block = summary.kernels[ranked_block.kernel].blocks[ranked_block.block];
        return block.sentence.rule == "waits-for-work";
    };
    std::ranges::stable_sort(ranked, {}, [&](const RankedBlock& block) {
        return std::tuple(waits(block), !block.time.has_value(), -block.time.value_or(0));
    });
    return ranked;
}

void diagnose(ProfileSummary& summary, const Rules& rules) {
    judge_blocks(summary, rules);
    const std::vector<RankedBlock> ranked = ranking(summary);
    std::vector<Culprit> culprits;
    for (std::size_t k = 0; k < summary.kernels.size(); k++) {
        const std::size_t place = culprit_of(summary, ranked, k, rules.threshold("stall_worth"));
        KernelSummary& kernel = summary.kernels[k];
        kernel.culprit = place == ranked.size() ? "" : kernel.blocks[ranked[place].block].name;
        if (place != ranked.size())
            culprits.push_back({ranked[place].kernel, ranked[place].block, place, ranked[place].time});
    }
    summary.answers = answers_of(summary, culprits, rules);
}

} // namespace zan::profile
