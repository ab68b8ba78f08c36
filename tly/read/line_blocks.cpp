// SPDX-License-Identifier: Apache-2.0
#include "line_blocks.h"

#include <algorithm>

#include "input_names.h"
#include "mon_line.h"

bool LineBlocks::add(std::string_view line) {
    PlainFields fields(line);
    LineHead head;
    std::string_view name;
    if (!read_plain_head(fields, name, head))
        return false;
    const auto found = m_names.find(name);
    if (found == m_names.end() || !found->second)
        return false;
    Block& block = *found->second;
    // A line that begins an invocation ends the one before, and one whose counters don't fit the design has a
    // message.
    const long long start_time = block.target.kernel->get_start_time();
    if (start_time == -1 || head.start_time != start_time ||
        block.has_shared_counters != (head.shared_type != SHARED_NONE) ||
        static_cast<long long>(block.lines.num_counters()) != head.num_counters)
        return false;
    enter(block);
    if (block.type != head.shared_type) {
        decode_lines(block);
        block.type = head.shared_type;
    }
    if (!fields.last_numbers(block.lines.next(), block.lines.num_counters()))
        return false;
    block.lines.add();
    block.target.add_head(head);
    if (block.lines.full())
        decode_lines(block);
    return true;
}

void LineBlocks::open(std::string_view name, const LineTarget& target, std::size_t num_counters) {
    if (m_names.contains(name))
        return;
    const auto [entry, is_new] = m_blocks.try_emplace(target.kernel);
    if (is_new && can_decode_together(target, num_counters)) {
        auto block = std::make_unique<Block>();
        block->target = target;
        block->is_shared = target.shares_instances();
        block->has_shared_counters = target.insts->front()->compiledSharedCounters();
        block->lines.reset(num_counters);
        entry->second = std::move(block);
    }
    m_names.emplace(name, entry->second.get());
}

void LineBlocks::decode(const LineTarget& target) {
    const auto found = m_blocks.find(target.kernel);
    if (found != m_blocks.end() && found->second)
        decode_lines(*found->second);
    if (target.shares_instances() && m_last_shared)
        decode_lines(*m_last_shared);
}

void LineBlocks::decode_all() {
    for (const auto& [kernel, block] : m_blocks) {
        if (block)
            decode_lines(*block);
    }
}

// The cycles of a function are one list for all of its instances. If more than one kernel, or more than one
// instance, adds samples to it, their order is that of the lines, which blocks would change.
void LineBlocks::find_shared_functions() {
    m_functions_known = true;
    struct Use {
        const TlyKernel* kernel;
        int num_writers = 0;
    };
    std::unordered_map<std::string_view, Use> uses;
    for (const auto& [name, kernel] : m_kernels) {
        for (const TlyModuleInst* inst : kernel->get_module_insts()) {
            Use& use = uses.try_emplace(inst->getFunction(), Use{kernel}).first->second;
            use.num_writers += inst->counts_total_cycles(m_compute_unit) ? 1 : 0;
            if (use.kernel != kernel || use.num_writers > 1)
                m_shared_functions.insert(inst->getFunction());
        }
    }
}

// Asked after the first line of the kernel, when the functions that count cycles have their lists.
bool LineBlocks::can_decode_together(const LineTarget& target, std::size_t num_counters) {
    // Not one such line fits a block, which would take several times the line's memory.
    if (num_counters > LineBlock::most_values)
        return false;
    if (!m_functions_known)
        find_shared_functions();
    const auto& insts = *target.insts;
    // A function without a list of cycles has a message on each line.
    const auto warns_of_cycles = [](const TlyKernel* kernel) {
        return !kernel->get_module_insts().empty() && !kernel->get_module_insts().front()->has_total_cycles();
    };
    if (insts.empty() || !insts.front()->has_total_cycles() ||
        (target.autorun_kernels &&
         std::any_of(target.autorun_kernels->begin(), target.autorun_kernels->end(), warns_of_cycles)))
        return false;
    return std::all_of(insts.begin(), insts.end(), [&](const TlyModuleInst* inst) {
        return inst->compiledSharedCounters() == insts.front()->compiledSharedCounters() &&
               !m_shared_functions.contains(inst->getFunction()) &&
               inst->can_take_blocks(first_counter_field, num_counters, m_compute_unit);
    });
}

// Of all shared blocks only the last one entered has lines, so that lines of two names that bring counters to
// one instance are decoded in their order.
void LineBlocks::enter(Block& block) {
    if (!block.is_shared || m_last_shared == &block)
        return;
    if (m_last_shared)
        decode_lines(*m_last_shared);
    m_last_shared = &block;
}

void LineBlocks::decode_lines(Block& block) const {
    if (block.lines.size() == 0)
        return;
    for (TlyModuleInst* inst : *block.target.insts)
        inst->updateCounters(block.lines, first_counter_field, m_compute_unit, block.type);
    block.lines.clear();
    block.target.update_total_cycles();
}
