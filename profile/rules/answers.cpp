// SPDX-License-Identifier: Apache-2.0
#include "answers.h"

#include <algorithm>

#include "block_facts.h"
#include "source_place.h"
#include "tly_constants.h"

namespace zan::profile {

namespace {

Value time_at_work(const KernelSummary& kernel) {
    if (!kernel.union_time)
        return {};
    return *kernel.union_time * (1 - greatest_channel_stall(kernel).value_or(0) / 100);
}

// Time in which nothing ran: no started kernel, no transfer, and no autorun kernel had work.
Value time_of_nothing(const ProfileSummary& summary) {
    const Value& span = summary.metrics[Metric::span];
    if (!span || !summary.kernel_time || !summary.transfer_only)
        return {};
    double ran = *summary.kernel_time;
    for (const KernelSummary& kernel : summary.kernels) {
        if (kernel.autorun)
            ran = std::max(ran, kernel.union_time.value_or(*span));
    }
    return std::max(0.0, *span - ran - *summary.transfer_only);
}

double reprogramming_share(const ProfileSummary& summary) {
    double all = 0;
    double reprogramming = 0;
    for (const TransferSummary& transfer : summary.transfers) {
        all += transfer.total;
        if (transfer.type == reprogram)
            reprogramming += transfer.total;
    }
    return all > 0 ? reprogramming / all * 100 : 0;
}

void add_run_facts(const ProfileSummary& summary, const KernelSummary* leading, Facts& facts) {
    const Value nothing = time_of_nothing(summary);
    const double longest = leading != nullptr ? leading->union_time.value_or(0) : 0;
    const double transfers = summary.transfer_only.value_or(0);
    const Value& span = summary.metrics[Metric::span];
    if (nothing && *span > 0) {
        facts[Fact::host_longest] = *nothing > longest && *nothing >= transfers ? 1 : 0;
        facts[Fact::transfers_longest] = transfers > longest && transfers > *nothing ? 1 : 0;
        facts[Fact::nothing_share] = *nothing / *span * 100;
        facts[Fact::transfer_share] = transfers / *span * 100;
        facts[Fact::reprogramming_share] = reprogramming_share(summary);
    }
}

void add_leading_facts(const ProfileSummary& summary, const KernelSummary& kernel, Facts& facts) {
    const auto num_invocations = static_cast<double>(kernel.num_invocations);
    const Value& total = kernel.metrics[Metric::kernel_total];
    const Value& span = summary.metrics[Metric::span];
    facts[Fact::lead_autorun] = kernel.autorun ? 1 : 0;
    facts[Fact::invocations] = num_invocations;
    facts[Fact::kernel_total] = total;
    facts[Fact::kernel_time] = kernel.metrics[Metric::kernel_time];
    if (span && *span > 0 && kernel.union_time)
        facts[Fact::busy] = *kernel.union_time / *span * 100;
    if (kernel.gaps && total && *total > 0 && num_invocations > 1) {
        facts[Fact::gap] = *kernel.gaps / (num_invocations - 1);
        facts[Fact::gaps_share] = *kernel.gaps / *total * 100;
    }
}

// Whether a block may have stalls worth a word that nothing shows. One that works nearly always hasn't.
bool may_stall_unseen(const BlockSummary& block, double stall_worth) {
    const bool known = block.stall_counted && block.metrics[Metric::stall];
    return !known && block.metrics[Metric::valid].value_or(0) < 100 - stall_worth;
}

// Blocks whose stalls aren't known. A kernel that has loops alone counts with these: nothing counts its
// stalls.
double unknown_blocks(const std::vector<const KernelSummary*>& team, double stall_worth) {
    double unknown = 0;
    for (const KernelSummary* kernel : team) {
        const bool only_loops = std::ranges::all_of(
            kernel->blocks, [](const BlockSummary& b) { return b.kind == BlockKind::loop; });
        for (const BlockSummary& block : kernel->blocks) {
            if ((only_loops || block.kind != BlockKind::loop) && may_stall_unseen(block, stall_worth))
                unknown++;
        }
    }
    return unknown;
}

void add_culprit_facts(const KernelSummary& kernel, const BlockSummary& block, Facts& facts) {
    facts[Fact::has_culprit] = 1;
    facts[FactText::culprit] = kernel.name + "/" + block.name;
    if (block.sources.empty() || block.sources.front().empty())
        return;
    const CallChain& chain = block.sources.front();
    facts[FactText::place] = source_place_text(chain.front());
    if (chain.size() > 1)
        facts[FactText::caller] = source_place_text(chain.back());
    if (block.sources.size() > 1)
        facts[Fact::more_places] = static_cast<double>(block.sources.size() - 1);
}

bool is_of_tone(const ProfileSummary& summary, const Culprit& culprit, std::string_view tone) {
    return summary.kernels[culprit.kernel].blocks[culprit.block].sentence.tone == tone;
}

std::vector<const KernelSummary*> team_with(const ProfileSummary& summary, const KernelSummary* leading) {
    if (leading == nullptr)
        return {};
    std::vector<const KernelSummary*> team = team_of(summary, *leading);
    team.push_back(leading);
    return team;
}

// The first of the ranking; a cause comes before a symptom if it cost enough of the symptom's time.
const Culprit* culprit_of_team(const ProfileSummary& summary, const std::vector<Culprit>& culprits,
                               const std::vector<const KernelSummary*>& team, double cause_part) {
    std::vector<const Culprit*> ranked;
    for (const Culprit& culprit : culprits) {
        if (std::ranges::count(team, &summary.kernels[culprit.kernel]) > 0)
            ranked.push_back(&culprit);
    }
    if (ranked.empty())
        return nullptr;
    std::ranges::sort(ranked, {}, &Culprit::rank);
    const Culprit* first = ranked.front();
    if (!is_of_tone(summary, *first, "symptom"))
        return first;
    const double least = first->time.value_or(0) * cause_part / 100;
    for (const Culprit* culprit : ranked) {
        if (is_of_tone(summary, *culprit, "cause") && culprit->time && *culprit->time >= least)
            return culprit;
    }
    return first;
}

} // namespace

const KernelSummary* leading_kernel(const ProfileSummary& summary) {
    for (const bool autorun : {false, true}) {
        const KernelSummary* leading = nullptr;
        double greatest = 0;
        for (const KernelSummary& kernel : summary.kernels) {
            const Value time = time_at_work(kernel);
            if (kernel.autorun != autorun || !time || (leading != nullptr && *time <= greatest))
                continue;
            leading = &kernel;
            greatest = *time;
        }
        if (leading != nullptr)
            return leading;
    }
    return nullptr;
}

Answers answers_of(const ProfileSummary& summary, const std::vector<Culprit>& culprits, const Rules& rules) {
    const KernelSummary* leading = leading_kernel(summary);
    const std::vector<const KernelSummary*> team = team_with(summary, leading);
    const Culprit* culprit = culprit_of_team(summary, culprits, team, rules.threshold("cause_part"));
    const BlockSummary* block =
        culprit == nullptr ? nullptr : &summary.kernels[culprit->kernel].blocks[culprit->block];

    Facts facts;
    facts[Fact::has_culprit] = 0;
    Answers answers;
    if (block != nullptr) {
        const KernelSummary& kernel = summary.kernels[culprit->kernel];
        facts = facts_of(summary, kernel, *block, rules);
        add_culprit_facts(kernel, *block, facts);
        answers.culprit_kernel = kernel.name;
        answers.culprit_block = block->name;
    }
    facts.time_unit_known = summary.nanoseconds.has_value();
    facts[Fact::unknown_blocks] = unknown_blocks(team, rules.threshold("stall_worth"));
    facts[FactText::kernel] = answers.leading_kernel = leading == nullptr ? "" : leading->name;
    add_run_facts(summary, leading, facts);
    if (leading != nullptr)
        add_leading_facts(summary, *leading, facts);

    const auto answer = [&](const char* question) {
        const RuleList& list = rules.answers.find(question)->second;
        return block == nullptr ? judge(rules, list, facts, "none").text
                                : judge(rules, list, facts, kind_text(*block), block->sentence.rule).text;
    };
    answers.kernel = answer("kernel");
    answers.block = answer("block");
    answers.source = answer("source");
    answers.memory = answer("memory");
    return answers;
}

} // namespace zan::profile
