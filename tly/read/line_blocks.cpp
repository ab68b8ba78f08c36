#include "line_blocks.h"

#include <algorithm>
#include <limits>

#include "mon_line.h"

namespace {

bool read_int(PlainFields& fields, int& value) {
    long long number = 0;
    if (!fields.number(number) || number < std::numeric_limits<int>::min() ||
        number > std::numeric_limits<int>::max())
        return false;
    value = static_cast<int>(number);
    return true;
}

// A sign would be taken for the front of the line's name.
bool read_id(PlainFields& fields, int& value) {
    return !fields.at_sign() && read_int(fields, value);
}

// A name is found by its shape, which is this one behind two numbers without a sign.
bool read_name(PlainFields& fields, std::string_view& name) {
    return fields.text(name) && !name.empty() && (name[0] < '0' || name[0] > '9');
}

bool read_head(PlainFields& fields, LineHead& head) {
    int type = 0;
    if (!fields.number(head.start_time) || !fields.number(head.sample_time) || !read_int(fields, type) ||
        !read_int(fields, head.num_counters))
        return false;
    head.shared_type = shared_type_of(type);
    return true;
}

} // namespace

SharedCounterTypes shared_type_of(long long number) {
    const bool known = number >= SHARED_IVALID && number <= SHARED_TOTAL_REQ;
    return known ? static_cast<SharedCounterTypes>(number) : SHARED_NONE;
}

void record_head(TlyKernel& kernel, const LineHead& head) {
    kernel.add_device_id(head.device_id);
    kernel.add_command_queue(head.queue_id);
    kernel.add_sample_timestamp(head.sample_time);
    kernel.set_shared_run_type(head.shared_type);
    kernel.set_in_mon(true);
}

void update_total_cycles(const Receiver& receiver) {
    if (receiver.autorun_kernels) {
        for (TlyKernel* kernel : *receiver.autorun_kernels) {
            if (kernel->module_insts().empty())
                continue;
            SampleList<long long> cycles = kernel->module_insts().front()->total_cycles();
            if (!cycles.empty())
                kernel->add_sample_totalcycle(std::move(cycles));
        }
    }
    if (!receiver.insts->empty())
        receiver.kernel->add_sample_totalcycle(receiver.insts->front()->total_cycles());
}

bool MonitorBlocks::add(std::string_view line) {
    PlainFields fields(line);
    LineHead head;
    std::string_view name;
    if (!read_id(fields, head.device_id) || !read_id(fields, head.queue_id) || !read_name(fields, name))
        return false;
    const auto found = m_names.find(name);
    if (found == m_names.end() || !found->second || !read_head(fields, head))
        return false;
    Block* const block = found->second;
    const long long start_time = block->receiver.kernel->get_start_time();
    if (start_time == -1 || head.start_time != start_time ||
        block->has_shared_counters != (head.shared_type != SHARED_NONE) ||
        static_cast<long long>(block->lines.num_counters()) != head.num_counters)
        return false;
    enter(*block);
    if (block->type != head.shared_type) {
        decode_lines(*block);
        block->type = head.shared_type;
    }
    if (!fields.last_numbers(block->lines.next(), block->lines.num_counters()))
        return false;
    block->lines.add();
    for (TlyKernel* kernel : block->receiver.targets())
        record_head(*kernel, head);
    if (block->lines.full())
        decode_lines(*block);
    return true;
}

// Its instances may get counters from lines of other kernels, too.
bool MonitorBlocks::shares_instances(const Receiver& receiver) {
    return receiver.autorun_kernels || receiver.kernel->is_autorun_kernel();
}

void MonitorBlocks::open(std::string_view name, const Receiver& receiver, std::size_t num_counters) {
    if (m_names.contains(name))
        return;
    const auto [entry, is_new] = m_blocks.try_emplace(receiver.kernel);
    if (is_new && can_decode_together(receiver, num_counters)) {
        auto block = std::make_unique<Block>();
        block->receiver = receiver;
        block->is_shared = shares_instances(receiver);
        block->has_shared_counters = receiver.insts->front()->compiledSharedCounters();
        block->lines.reset(num_counters);
        entry->second = std::move(block);
    }
    m_names.emplace(name, entry->second.get());
}

void MonitorBlocks::decode(const Receiver& receiver) {
    const auto found = m_blocks.find(receiver.kernel);
    if (found != m_blocks.end() && found->second)
        decode_lines(*found->second);
    if (shares_instances(receiver) && m_last_shared)
        decode_lines(*m_last_shared);
}

void MonitorBlocks::decode_all() {
    for (const auto& [kernel, block] : m_blocks) {
        if (block)
            decode_lines(*block);
    }
}

// Of the functions that keep their cycles in one list for all instances, those whose list gets samples from
// more than one kernel or more than one instance: it matters there in which order lines are decoded.
void MonitorBlocks::find_shared_functions() {
    m_functions_known = true;
    struct Use {
        const TlyKernel* kernel;
        int num_writers = 0;
    };
    std::unordered_map<std::string_view, Use> uses;
    for (const auto& [name, kernel] : m_kernels) {
        for (const TlyModuleInst* inst : kernel->module_insts()) {
            Use& use = uses.try_emplace(inst->getFunction(), Use{kernel}).first->second;
            use.num_writers += inst->counts_total_cycles(read_compute_unit) ? 1 : 0;
            if (use.kernel != kernel || use.num_writers > 1)
                m_shared_functions.insert(inst->getFunction());
        }
    }
}

bool MonitorBlocks::can_decode_together(const Receiver& receiver, std::size_t num_counters) {
    if (!m_functions_known)
        find_shared_functions();
    const auto& insts = *receiver.insts;
    // A function without a list of cycles is told on each line.
    const auto cycles_are_told = [](const TlyKernel* kernel) {
        return !kernel->module_insts().empty() && !kernel->module_insts().front()->has_total_cycles();
    };
    if (insts.empty() || !insts.front()->has_total_cycles() ||
        (receiver.autorun_kernels &&
         std::any_of(receiver.autorun_kernels->begin(), receiver.autorun_kernels->end(), cycles_are_told)))
        return false;
    return std::all_of(insts.begin(), insts.end(), [&](const TlyModuleInst* inst) {
        return inst->compiledSharedCounters() == insts.front()->compiledSharedCounters() &&
               !m_shared_functions.contains(inst->getFunction()) &&
               inst->can_take_blocks(first_counter_field, num_counters, read_compute_unit);
    });
}

// Of all shared blocks only the one in hand has lines, so that lines of two names that bring counters to one
// instance are decoded in their order.
void MonitorBlocks::enter(Block& block) {
    if (!block.is_shared || m_last_shared == &block)
        return;
    if (m_last_shared)
        decode_lines(*m_last_shared);
    m_last_shared = &block;
}

void MonitorBlocks::decode_lines(Block& block) {
    if (block.lines.size() == 0)
        return;
    for (TlyModuleInst* inst : *block.receiver.insts)
        inst->updateCounters(block.lines, first_counter_field, read_compute_unit, block.type);
    block.lines.clear();
    update_total_cycles(block.receiver);
}
