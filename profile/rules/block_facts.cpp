// SPDX-License-Identifier: Apache-2.0
#include "block_facts.h"

#include <algorithm>

namespace zan::profile {

namespace {

Value flag(bool is_set) {
    return is_set ? 1.0 : 0.0;
}

Value per_cent(const Value& part, const Value& whole) {
    if (!part || !whole || !(*whole > 0))
        return {};
    return *part / *whole * 100;
}

// What is left of 100%.
Value rest(const Value& percent) {
    return percent ? Value(std::max(0.0, 100 - *percent)) : Value();
}

void keep_greatest(Value& greatest, const Value& value) {
    if (value && (!greatest || *value > *greatest))
        greatest = value;
}

bool stall_is_known(const BlockSummary& block) {
    return block.stall_counted && block.metrics[Metric::stall];
}

std::string shared_counters_text(unsigned types) {
    constexpr const char* counted[] = {"valid cycles", "stalls", "idle cycles", "requests"};
    std::vector<std::string> names;
    for (unsigned type = 0; type < std::size(counted); type++) {
        if ((types >> type & 1u) != 0)
            names.emplace_back(counted[type]);
    }
    return listed(names);
}

// Stalls of a loop aren't counted; what its kernel's other blocks count is what is known of it.
bool stalls_are_counted(const KernelSummary& kernel, const BlockSummary& block) {
    if (block.kind != BlockKind::loop)
        return stall_is_known(block);
    bool any = false;
    for (const BlockSummary& other : kernel.blocks) {
        if (other.kind == BlockKind::loop)
            continue;
        if (!stall_is_known(other))
            return false;
        any = true;
    }
    return any;
}

void add_kernel_facts(const KernelSummary& kernel, const BlockSummary& block, Facts& facts) {
    facts[Fact::shared] = flag(kernel.shared_types != 0);
    facts[Fact::shared_stall] = flag((kernel.shared_types & 2u) != 0);
    facts[FactText::what] = shared_counters_text(kernel.shared_types);
    facts[Fact::autorun] = flag(kernel.autorun);
    facts[Fact::innermost] = flag(block.innermost);
    facts[Fact::counted] = flag(stalls_are_counted(kernel, block));
    facts[FactText::kernel] = kernel.name;
    double loops_valid = 0;
    for (const BlockSummary& other : kernel.blocks) {
        const Value& valid = other.metrics[Metric::valid];
        if (other.kind == BlockKind::loop) {
            loops_valid += valid.value_or(0);
            continue;
        }
        if (&other != &block)
            keep_greatest(facts[Fact::kernel_valid], valid);
        const Value& stall = other.metrics[Metric::stall];
        if (stall && (!facts[Fact::kernel_stall] || *stall > *facts[Fact::kernel_stall])) {
            facts[Fact::kernel_stall] = stall;
            facts[FactText::stalling_block] = other.name;
        }
    }
    facts[Fact::loops_valid] = loops_valid;
}

void add_port_facts(const KernelSummary& kernel, const BlockSummary& block, double least_share,
                    Facts& facts) {
    facts[FactText::port] = block.port;
    if (block.port.empty())
        return;
    double num_sharers = 0;
    double greatest = 0;
    for (const BlockSummary& other : kernel.blocks) {
        if (other.memory != block.memory || other.port != block.port || !other.block_share ||
            *other.block_share < least_share)
            continue;
        num_sharers++;
        if (&other != &block && *other.block_share > greatest) {
            greatest = *other.block_share;
            facts[FactText::sharer] = other.name;
        }
    }
    facts[Fact::port_sharers] = num_sharers;
}

void add_bank_facts(const MemorySummary& memory, Facts& facts) {
    facts[Fact::interfaces] = static_cast<double>(memory.interfaces.size());
    const InterfaceSummary* greatest = nullptr;
    double bytes = 0;
    for (const InterfaceSummary& interface : memory.interfaces) {
        if (!interface.bytes)
            return;
        bytes += *interface.bytes;
        if (greatest == nullptr || *interface.bytes > *greatest->bytes)
            greatest = &interface;
    }
    if (greatest == nullptr || memory.lower_bound)
        return;
    facts[Fact::bank_share] = per_cent(greatest->bytes, bytes);
    facts[Fact::bank_use] = greatest->use;
}

void add_memory_facts(const ProfileSummary& summary, const BlockSummary& block, Facts& facts) {
    facts[FactText::memory] = block.memory.empty() ? "global memory" : block.memory;
    facts[Fact::lower_bound] = 0;
    facts[Fact::own_share] = block.own_share;
    facts[Fact::read_share] = block.read_share;
    facts[Fact::write_share] = block.write_share;
    facts[FactText::rivals] = listed(block.rivals);
    facts[Fact::max_burst] = block.max_burst;
    const auto memory = std::ranges::find(summary.memories, block.memory, &MemorySummary::name);
    if (memory == summary.memories.end())
        return;
    facts[Fact::lower_bound] = flag(memory->lower_bound);
    if (facts[Metric::port_use])
        facts[Fact::clock_reach] = per_cent(block.port_limit, memory->peak);
    add_bank_facts(*memory, facts);
    if (memory->lower_bound)
        return;
    const Value used = facts[Metric::memory_use];
    facts[Fact::free_memory] = rest(used);
    if (used)
        facts[Fact::free] = rest(std::max(*used, facts[Metric::port_use].value_or(0)));
}

// What a port can carry is worked out from the widest access that was seen. A port that carried clearly more
// is wider, and nothing is known of how busy it is.
void drop_impossible_use(Facts& facts) {
    constexpr double greatest_use = 105; // bandwidths are rounded up
    Value& use = facts[Metric::port_use];
    if (!use)
        return;
    if (*use > greatest_use)
        use.reset();
    else
        use = std::min(*use, 100.0);
}

// Stages that others wait for: they worked, and their own channels hardly stall. A started kernel is named
// first: an autorun kernel works whenever the others let it.
void add_stage_facts(const ProfileSummary& summary, const KernelSummary& kernel, double most_stall,
                     Facts& facts) {
    double num_stages = 0;
    const KernelSummary* found = nullptr;
    double greatest = 0;
    for (const KernelSummary* stage : team_of(summary, kernel)) {
        const Value stall = greatest_channel_stall(*stage);
        const bool worked = std::ranges::any_of(stage->blocks, [](const BlockSummary& block) {
            return block.kind == BlockKind::channel && block.metrics[Metric::valid].value_or(0) > 0;
        });
        if (!stall || *stall >= most_stall || !worked)
            continue;
        num_stages++;
        const double time_at_work = stage->union_time.value_or(0) * (1 - *stall / 100);
        const bool is_first = found == nullptr || (found->autorun && !stage->autorun);
        if (is_first || (found->autorun == stage->autorun && time_at_work > greatest)) {
            greatest = time_at_work;
            found = stage;
        }
    }
    facts[FactText::stage] = found == nullptr ? "" : found->name;
    facts[Fact::free_stages] = num_stages;
}

} // namespace

std::string listed(const std::vector<std::string>& names) {
    std::string text;
    for (std::size_t i = 0; i < names.size(); i++) {
        if (i > 0)
            text += i + 1 == names.size() ? " and " : ", ";
        text += names[i];
    }
    return text;
}

std::string kind_text(const BlockSummary& block) {
    constexpr const char* kinds[] = {"global", "loop", "channel", "other"};
    constexpr const char* directions[] = {"", " read", " write"};
    std::string kind = kinds[static_cast<int>(block.kind)];
    if (block.kind == BlockKind::loop || block.kind == BlockKind::other)
        return kind;
    return kind + directions[static_cast<int>(block.direction)];
}

Value greatest_channel_stall(const KernelSummary& kernel) {
    Value greatest;
    for (const BlockSummary& block : kernel.blocks) {
        if (block.kind != BlockKind::channel)
            continue;
        if (!stall_is_known(block))
            return {};
        keep_greatest(greatest, block.metrics[Metric::stall]);
    }
    return greatest;
}

std::vector<const KernelSummary*> team_of(const ProfileSummary& summary, const KernelSummary& kernel) {
    std::vector<const KernelSummary*> team;
    for (const KernelSummary& other : summary.kernels) {
        if (&other != &kernel && other.device == kernel.device &&
            std::ranges::count(kernel.team, other.name) > 0)
            team.push_back(&other);
    }
    return team;
}

Facts facts_of(const ProfileSummary& summary, const KernelSummary& kernel, const BlockSummary& block,
               const Rules& rules) {
    Facts facts(block.metrics);
    facts.time_unit_known = summary.nanoseconds.has_value();
    if (!block.stall_counted)
        facts[Metric::stall].reset();
    add_kernel_facts(kernel, block, facts);
    facts[Fact::samples] = static_cast<double>(block.num_samples);
    facts[Fact::calm_part] = rest(block.stalled_part);
    facts[Fact::from] = block.stalled_from;
    facts[Fact::to] = block.stalled_to;
    facts[Fact::clock] = summary.clock_mhz;
    facts[Fact::max_valid] = block.max_valid;
    facts[Fact::iterations] = block.iterations;
    if (block.cycles && kernel.num_invocations > 0)
        facts[Fact::invocation_cycles] = *block.cycles / static_cast<double>(kernel.num_invocations);
    if (block.kind == BlockKind::global) {
        drop_impossible_use(facts);
        add_port_facts(kernel, block, rules.threshold("sharer"), facts);
        add_memory_facts(summary, block, facts);
    }
    if (block.kind == BlockKind::channel)
        add_stage_facts(summary, kernel, rules.threshold("stall_free"), facts);
    return facts;
}

} // namespace zan::profile
