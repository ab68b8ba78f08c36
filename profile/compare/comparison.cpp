// SPDX-License-Identifier: Apache-2.0
#include "comparison.h"

#include <algorithm>
#include <cmath>

#include "kernel_label.h"
#include "matching.h"
#include "source_place.h"

namespace zan::profile {

namespace {

// A change is compared with a limit after a division or a subtraction, which are off by some of the last
// digits.
constexpr double rounding = 1e-9;

Verdict verdict_of(Better better, double before, double after) {
    if (better == Better::neither)
        return Verdict::neither;
    return (after > before) == (better == Better::more) ? Verdict::better : Verdict::worse;
}

// Empty if it isn't known.
std::string place_key(const SourcePlace& place) {
    if (place.file.empty())
        return {};
    return source_place_text(place) + ":" + std::to_string(place.column);
}

std::string kernel_source_key(const KernelSummary& kernel) {
    const std::string place = place_key(kernel.source);
    if (place.empty())
        return {};
    return place + "#" + std::to_string(kernel.compute_unit);
}

std::string block_source_key(const BlockSummary& block) {
    if (block.sources.empty() || block.sources[0].empty() || block.sources[0][0].file.empty())
        return {};
    std::string key = std::to_string(static_cast<int>(block.kind)) + " " +
                      std::to_string(static_cast<int>(block.direction));
    for (const SourcePlace& place : block.sources[0])
        key += " " + place_key(place);
    return key;
}

SourcePlace place_of(const BlockSummary& block) {
    return block.sources.empty() || block.sources[0].empty() ? SourcePlace() : block.sources[0][0];
}

// One key, or what stands at the same place and has the same name before what only stands there.
template <class Item, class Name, class Source>
Pairs<Item> match_by(MatchBy match, const std::vector<Item>& before, const std::vector<Item>& after,
                     Name name, Source source) {
    if (match == MatchBy::name)
        return match_items<Item>(before, after, {name});
    const auto both = [&](const Item& item) {
        std::string place = source(item);
        if (!place.empty())
            place += "\n" + name(item);
        return place;
    };
    return match_items<Item>(before, after, {both, source, name});
}

// Whether the intervals (95%) of both medians overlap; false also where there are none.
bool medians_agree(const KernelSummary& before, const KernelSummary& after) {
    if (!before.median_low || !before.median_high || !after.median_low || !after.median_high)
        return false;
    return *after.median_low <= *before.median_high && *before.median_low <= *after.median_high;
}

class Comparer {
  public:
    Comparer(const ProfileSummary& before, const ProfileSummary& after, MatchBy match)
        : m_match(match),
          m_result{&before, &after, before.nanoseconds.has_value() == after.nanoseconds.has_value(), {}, {}} {
    }

    RunComparison compare() {
        SubjectComparison run;
        run.before = &before().metrics;
        run.after = &after().metrics;
        add(std::move(run));
        for (const auto& [old_kernel, new_kernel] :
             match_by(m_match, before().kernels, after().kernels, kernel_label, kernel_source_key))
            add_kernel(old_kernel, new_kernel);
        add_memories();
        add_transfers();
        return std::move(m_result);
    }

  private:
    const ProfileSummary& before() const { return *m_result.before; }
    const ProfileSummary& after() const { return *m_result.after; }

    void add_kernel(const KernelSummary* before, const KernelSummary* after) {
        SubjectComparison subject;
        subject.scope = MetricScope::kernel;
        // One of both is there.
        // cppcheck-suppress nullPointerRedundantCheck
        subject.kernel = kernel_label(after ? *after : *before);
        if (before && after && kernel_label(*before) != subject.kernel)
            subject.old_kernel = kernel_label(*before);
        subject.before = before ? &before->metrics : nullptr;
        subject.after = after ? &after->metrics : nullptr;
        subject.old_place = before ? before->source : SourcePlace();
        subject.new_place = after ? after->source : SourcePlace();
        if (before && after) {
            subject.is_time_the_same = medians_agree(*before, *after);
            subject.is_count_the_same = before->num_invocations == after->num_invocations;
        }
        const SubjectComparison& added = add(std::move(subject));
        if (added.is_in_both())
            add_blocks(*before, *after, added.kernel, added.old_kernel);
    }

    // By value: the list of subjects grows.
    void add_blocks(const KernelSummary& before, const KernelSummary& after, std::string kernel,
                    std::string old_kernel) {
        const auto name_of = [](const BlockSummary& block) { return block.name; };
        for (const auto& [old_block, new_block] :
             match_by(m_match, before.blocks, after.blocks, name_of, block_source_key)) {
            SubjectComparison subject;
            subject.scope = MetricScope::block;
            subject.kernel = kernel;
            subject.old_kernel = old_kernel;
            subject.name = new_block ? new_block->name : old_block->name;
            if (old_block && old_block->name != subject.name)
                subject.old_name = old_block->name;
            subject.before = old_block ? &old_block->metrics : nullptr;
            subject.after = new_block ? &new_block->metrics : nullptr;
            subject.old_place = old_block ? place_of(*old_block) : SourcePlace();
            subject.new_place = new_block ? place_of(*new_block) : SourcePlace();
            add(std::move(subject));
        }
    }

    void add_memories() {
        const auto name_of = [](const MemorySummary& memory) { return memory.name; };
        for (const auto& [old_memory, new_memory] :
             match_items<MemorySummary>(before().memories, after().memories, {name_of})) {
            SubjectComparison subject;
            subject.scope = MetricScope::memory;
            subject.name = new_memory ? new_memory->name : old_memory->name;
            subject.before = old_memory ? &old_memory->metrics : nullptr;
            subject.after = new_memory ? &new_memory->metrics : nullptr;
            add(std::move(subject));
        }
    }

    void add_transfers() {
        const auto key_of = [](const TransferSummary& transfer) {
            return transfer.type + " " + std::to_string(transfer.queue);
        };
        for (const auto& [old_kind, new_kind] :
             match_items<TransferSummary>(before().transfers, after().transfers, {key_of})) {
            const TransferSummary& named = new_kind ? *new_kind : *old_kind;
            m_result.transfers.push_back({named.type, named.queue, old_kind, new_kind});
        }
    }

    const SubjectComparison& add(SubjectComparison subject) {
        if (subject.is_in_both()) {
            for (const MetricRow& row : metric_table())
                add_change(subject, row);
        }
        m_result.subjects.push_back(std::move(subject));
        return m_result.subjects.back();
    }

    void add_change(SubjectComparison& subject, const MetricRow& row) const {
        const Value& before = (*subject.before)[row.metric];
        const Value& after = (*subject.after)[row.metric];
        if (row.scope != subject.scope || (!before && !after))
            return;
        if (!m_result.can_compare(row.unit, true) || !subject.may_differ(row.metric))
            return;
        if (!before || !after)
            subject.changes.push_back({row.metric, before, after, Verdict::neither});
        else if (is_listed_change(row.unit, *before, *after))
            subject.changes.push_back({row.metric, before, after, verdict_of(row.better, *before, *after)});
    }

    MatchBy m_match;
    RunComparison m_result;
};

} // namespace

bool SubjectComparison::has_moved() const {
    return !old_place.file.empty() && !new_place.file.empty() &&
           (old_place.file != new_place.file || old_place.line != new_place.line);
}

bool SubjectComparison::may_differ(Metric metric) const {
    switch (metric) {
        case Metric::kernel_time:
        case Metric::kernel_p95:
            return !is_time_the_same;
        case Metric::kernel_total:
            return !is_time_the_same || !is_count_the_same;
        default:
            return true;
    }
}

bool RunComparison::can_compare(MetricUnit unit, bool is_share) const {
    if (unit != MetricUnit::time)
        return true;
    return has_same_time_unit && (is_share || before->nanoseconds.has_value());
}

RunComparison compare(const ProfileSummary& before, const ProfileSummary& after, MatchBy match) {
    return Comparer(before, after, match).compare();
}

bool is_listed_change(MetricUnit unit, double before, double after) {
    const double change = std::abs(after - before);
    if (unit == MetricUnit::percent)
        return change >= least_points - rounding;
    return change != 0 && change >= std::abs(before) * (least_percent / 100 - rounding);
}

std::string label_of(const SubjectComparison& subject) {
    switch (subject.scope) {
        case MetricScope::run:
            return "run";
        case MetricScope::kernel:
            return subject.kernel;
        case MetricScope::memory:
            return subject.name;
        case MetricScope::block:
            break;
    }
    return subject.kernel + "/" + subject.name;
}

} // namespace zan::profile
