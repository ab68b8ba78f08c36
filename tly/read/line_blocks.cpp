#include "line_blocks.h"

#include <algorithm>
#include <limits>

#include "mon_line.h"

namespace {

bool readInt(PlainFields& fields, int& value) {
    long long number = 0;
    if (!fields.number(number) || number < std::numeric_limits<int>::min() ||
        number > std::numeric_limits<int>::max())
        return false;
    value = static_cast<int>(number);
    return true;
}

// A sign would be taken for the front of the line's name.
bool readId(PlainFields& fields, int& value) {
    return !fields.atSign() && readInt(fields, value);
}

// A name is found by its shape, which is this one behind two numbers without a sign.
bool readName(PlainFields& fields, std::string_view& name) {
    return fields.text(name) && !name.empty() && (name[0] < '0' || name[0] > '9');
}

bool readHead(PlainFields& fields, LineHead& head) {
    int type = 0;
    if (!fields.number(head.start_time) || !fields.number(head.sample_time) || !readInt(fields, type) ||
        !readInt(fields, head.num_counters))
        return false;
    head.shared_type = sharedTypeOf(type);
    return true;
}

} // namespace

SharedCounterTypes sharedTypeOf(long long number) {
    const bool known = number >= SHARED_IVALID && number <= SHARED_TOTAL_REQ;
    return known ? static_cast<SharedCounterTypes>(number) : SHARED_NONE;
}

void recordHead(TlyKernel& kernel, const LineHead& head) {
    kernel.add_device_id(head.device_id);
    kernel.add_command_queue(head.queue_id);
    kernel.add_sample_timestamp(head.sample_time);
    kernel.set_shared_run_type(head.shared_type);
    kernel.set_in_mon(true);
}

void updateTotalCycles(const Receiver& receiver) {
    if (receiver.autorun_kernels) {
        for (TlyKernel* kernel : *receiver.autorun_kernels) {
            if (kernel->module_insts().empty())
                continue;
            SampleList<long long> cycles = kernel->module_insts().front()->totalCycles();
            if (!cycles.empty())
                kernel->add_sample_totalcycle(std::move(cycles));
        }
    }
    if (!receiver.insts->empty())
        receiver.kernel->add_sample_totalcycle(receiver.insts->front()->totalCycles());
}

bool MonitorBlocks::add(std::string_view line) {
    PlainFields fields(line);
    LineHead head;
    std::string_view name;
    if (!readId(fields, head.device_id) || !readId(fields, head.queue_id) || !readName(fields, name))
        return false;
    const auto found = m_names.find(name);
    if (found == m_names.end() || !found->second || !readHead(fields, head))
        return false;
    Block* const block = found->second;
    const long long start_time = block->receiver.kernel->get_start_time();
    if (start_time == -1 || head.start_time != start_time ||
        block->has_shared_counters != (head.shared_type != SHARED_NONE) ||
        static_cast<long long>(block->lines.num_counters()) != head.num_counters)
        return false;
    enter(*block);
    if (block->type != head.shared_type) {
        decodeLines(*block);
        block->type = head.shared_type;
    }
    if (!fields.lastNumbers(block->lines.next(), block->lines.num_counters()))
        return false;
    block->lines.add();
    for (TlyKernel* kernel : block->receiver.targets())
        recordHead(*kernel, head);
    if (block->lines.full())
        decodeLines(*block);
    return true;
}

// Its instances may get counters from lines of other kernels, too.
bool MonitorBlocks::isShared(const Receiver& receiver) {
    return receiver.autorun_kernels || receiver.kernel->is_autorun_kernel();
}

void MonitorBlocks::open(std::string_view name, const Receiver& receiver, std::size_t numCounters) {
    if (m_names.contains(name))
        return;
    const auto [entry, is_new] = m_blocks.try_emplace(receiver.kernel);
    if (is_new && canDecodeTogether(receiver, numCounters)) {
        auto block = std::make_unique<Block>();
        block->receiver = receiver;
        block->is_shared = isShared(receiver);
        block->has_shared_counters = receiver.insts->front()->compiledSharedCounters();
        block->lines.reset(numCounters);
        entry->second = std::move(block);
    }
    m_names.emplace(name, entry->second.get());
}

void MonitorBlocks::decode(const Receiver& receiver) {
    const auto found = m_blocks.find(receiver.kernel);
    if (found != m_blocks.end() && found->second)
        decodeLines(*found->second);
    if (isShared(receiver) && m_last_shared)
        decodeLines(*m_last_shared);
}

void MonitorBlocks::decodeAll() {
    for (const auto& [kernel, block] : m_blocks) {
        if (block)
            decodeLines(*block);
    }
}

// Of the functions that keep their cycles in one list for all instances, those whose list gets samples from
// more than one kernel or more than one instance: it matters there in which order lines are decoded.
void MonitorBlocks::findSharedFunctions() {
    m_functions_known = true;
    struct Use {
        const TlyKernel* kernel;
        int num_writers = 0;
    };
    std::unordered_map<std::string_view, Use> uses;
    for (const auto& [name, kernel] : m_kernels) {
        for (const TlyModuleInst* inst : kernel->module_insts()) {
            Use& use = uses.try_emplace(inst->function(), Use{kernel}).first->second;
            use.num_writers += inst->countsTotalCycles(read_compute_unit) ? 1 : 0;
            if (use.kernel != kernel || use.num_writers > 1)
                m_shared_functions.insert(inst->function());
        }
    }
}

bool MonitorBlocks::canDecodeTogether(const Receiver& receiver, std::size_t numCounters) {
    if (!m_functions_known)
        findSharedFunctions();
    const auto& insts = *receiver.insts;
    // A function without a list of cycles is told on each line.
    const auto cycles_are_told = [](const TlyKernel* kernel) {
        return !kernel->module_insts().empty() && !kernel->module_insts().front()->hasTotalCycles();
    };
    if (insts.empty() || !insts.front()->hasTotalCycles() ||
        (receiver.autorun_kernels &&
         std::any_of(receiver.autorun_kernels->begin(), receiver.autorun_kernels->end(), cycles_are_told)))
        return false;
    return std::all_of(insts.begin(), insts.end(), [&](const TlyModuleInst* inst) {
        return inst->compiledSharedCounters() == insts.front()->compiledSharedCounters() &&
               !m_shared_functions.contains(inst->function()) &&
               inst->canTakeBlocks(first_counter_field, numCounters, read_compute_unit);
    });
}

// Of all shared blocks only the one in hand has lines, so that lines of two names that bring counters to one
// instance are decoded in their order.
void MonitorBlocks::enter(Block& block) {
    if (!block.is_shared || m_last_shared == &block)
        return;
    if (m_last_shared)
        decodeLines(*m_last_shared);
    m_last_shared = &block;
}

void MonitorBlocks::decodeLines(Block& block) {
    if (block.lines.size() == 0)
        return;
    for (TlyModuleInst* inst : *block.receiver.insts)
        inst->updateCounters(block.lines, first_counter_field, read_compute_unit, block.type);
    block.lines.clear();
    updateTotalCycles(block.receiver);
}
