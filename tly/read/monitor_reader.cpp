// SPDX-License-Identifier: Apache-2.0
#include "monitor_reader.h"

#include <utility>

#include "diagnostics.h"
#include "input_names.h"
#include "kernel_node.h"
#include "line_reader.h"
#include "tly_constants.h"
#include "transfer_node.h"

namespace {

MessageDetails of_inst(const TlyModuleInst& inst, int line_number) {
    return {.line = line_number, .kernel = inst.getFunction(), .block = inst.getName()};
}

} // namespace

MonitorReader::MonitorReader(ProfileModel& model, MonitorNodes& nodes, LineDecoding decoding)
    : m_model(model), m_nodes(nodes), m_decoding(decoding), m_blocks(model.kernels, model.compute_unit) {
}

bool MonitorReader::read_line(std::string_view text) {
    ++m_line_number;
    if (text.empty()) {
        diagnose(Message::empty_line, {.line = m_line_number});
        return true;
    }
    // After a faulty transfer the next line is one, too, even if it looks like a kernel's.
    if (!m_is_transfer && m_blocks.add(text))
        return true;
    m_name_on_line = name_in_line(text);
    m_name = m_name_on_line;
    LineTarget target;
    if (is_transfer_name(m_name))
        m_is_transfer = true;
    else if (!find_target(target))
        return true;

    m_line.split(text);
    LineHead head;
    if (!read_split_head(m_line, {m_is_transfer, m_model.is_described}, m_line_number, head))
        return true;
    if (m_is_transfer) {
        add_transfer(head);
        return true;
    }
    return add_sample(target, head);
}

// Finds the kernel that a line names and its instances. False if the line has to be left out.
bool MonitorReader::find_target(LineTarget& target) {
    target.kernel = find_kernel();
    if (!target.kernel)
        return false;
    target.insts = &target.kernel->get_module_insts();
    if (m_name == autorun_profile_dummy_kernel) {
        collect_autorun_kernels();
        target.autorun_kernels = &m_autorun_kernels;
        target.insts = &m_autorun_insts;
    }
    if (target.insts->empty() && m_model.is_described) {
        diagnose(Message::kernel_without_blocks, {.line = m_line_number, .kernel = m_name});
        return false;
    }
    return true;
}

// The kernel called m_name, which becomes the kernel's own name if the line has its original one. Null if the
// name is unknown and no kernel may be made.
TlyKernel* MonitorReader::find_kernel() {
    const auto known = m_model.kernels.find(m_name);
    if (known != m_model.kernels.end())
        return known->second;
    const auto mapped = m_model.original_names.find(m_name);
    if (mapped != m_model.original_names.end()) {
        m_name = mapped->second;
        return m_model.kernels.at(m_name);
    }
    if (!m_model.is_described)
        return m_model.kernels[m_name] = new TlyKernel(m_name);
    diagnose(Message::kernel_unknown, {.line = m_line_number, .kernel = m_name});
    return nullptr;
}

// The order is that of the report's nodes, and the first instance is the one whose cycles the pseudo-kernel
// gets.
void MonitorReader::collect_autorun_kernels() {
    if (std::exchange(m_autorun_collected, true))
        return;
    for (const auto& [name, kernel] : m_model.kernels) {
        if (!kernel->is_autorun_kernel())
            continue;
        m_autorun_kernels.push_back(kernel);
        const auto& insts = kernel->get_module_insts();
        m_autorun_insts.insert(m_autorun_insts.end(), insts.begin(), insts.end());
    }
}

void MonitorReader::add_transfer(const LineHead& head) {
    ReportSink& nodes = m_nodes.transfers();
    nodes.open({}, Form::object);
    write_mem_transfer(nodes, m_name, head.device_id, head.queue_id, head.start_time, head.sample_time);
    nodes.close();
    m_is_transfer = false;
}

// Adds the sample of a kernel line. False if the run has to end. The steps have an order: lines of the same
// kernels that wait come first, an invocation that has ended is written before the kernels are changed, and
// the cycles are handed on when all instances have their counters.
bool MonitorReader::add_sample(const LineTarget& target, const LineHead& head) {
    // The head was read, so that the fields before the counters are there.
    const auto num_fields = static_cast<long long>(m_line.fields().size() - first_counter_field);
    if (m_model.is_described && num_fields != head.num_counters) {
        diagnose(Message::wrong_counter_count, {.line = m_line_number, .kernel = m_name});
        return true;
    }
    m_blocks.decode(target);

    // A line with another start time begins an invocation. -1 is that of a kernel without one.
    const long long known_start = target.kernel->get_start_time();
    const bool sets_start_time = known_start == -1 || known_start != head.start_time;
    if (sets_start_time && known_start != -1) {
        for (TlyKernel* kernel : target.kernels())
            close_invocation(*kernel, m_nodes, AfterInvocation::reset, m_model.ext_mems,
                             m_model.compute_unit);
    }
    target.add_head(head);
    if (sets_start_time) {
        for (TlyKernel* kernel : target.kernels())
            kernel->set_start_time(head.start_time);
        target.kernel->set_start_time(head.start_time); // also that of the pseudo-kernel
    }

    if (!m_model.is_described)
        return true;
    if (!update_instances(target, head.shared_type))
        return false;
    target.update_total_cycles();
    if (m_decoding == LineDecoding::in_blocks)
        m_blocks.open(m_name_on_line, target, static_cast<std::size_t>(num_fields));
    return true;
}

// Hands the line's counters to the instances. False if the design and the run differ about shared counters,
// which is found at the first such instance: those before it have taken the line. No report is written then.
bool MonitorReader::update_instances(const LineTarget& target, SharedCounterTypes type) {
    for (TlyModuleInst* inst : *target.insts) {
        if (inst->compiledSharedCounters() && type == SHARED_NONE) {
            diagnose(Message::shared_in_design_only, of_inst(*inst, m_line_number));
            return false;
        }
        if (!inst->compiledSharedCounters() && type != SHARED_NONE) {
            diagnose(Message::shared_in_monitor_only, of_inst(*inst, m_line_number));
            return false;
        }
        inst->updateCounters(m_line.fields(), m_model.compute_unit, true, type, m_line_number);
    }
    return true;
}

// The pseudo-kernel is neither written nor warned of, whether a line named it or not.
void MonitorReader::finish(AfterInvocation after) {
    decode_all();
    for (const auto& [name, kernel] : m_model.kernels) {
        if (kernel->is_in_mon_file() || kernel->get_name() == autorun_profile_dummy_kernel)
            close_invocation(*kernel, m_nodes, after, m_model.ext_mems, m_model.compute_unit);
        else
            diagnose(kernel->is_autorun_kernel() ? Message::no_autorun_samples : Message::no_samples,
                     {.kernel = kernel->get_name()});
    }
}

void close_invocation(TlyKernel& kernel, MonitorNodes& nodes, AfterInvocation after,
                      const ProfileModel::ExtMems& ext_mems, int compute_unit) {
    if (kernel.get_name() == autorun_profile_dummy_kernel)
        return;
    ReportSink& sink = nodes.kernels(kernel);
    sink.open({}, Form::object);
    write_kernel(sink, kernel, ext_mems, compute_unit,
                 after == AfterInvocation::release ? WrittenSamples::released : WrittenSamples::kept);
    sink.close();
    if (after == AfterInvocation::reset)
        kernel.resetKernel();
}

StageResult read_monitor_file(ProfileModel& model, MonitorNodes& nodes, const std::string& mon_path,
                              LineDecoding decoding, AfterInvocation last) {
    LineReader lines(mon_path);
    if (!lines.is_open()) {
        diagnose(Message::monitor_file_unreadable);
        return StageResult::failed;
    }
    MonitorReader reader(model, nodes, decoding);
    std::string_view line;
    while (lines.next(line)) {
        if (!reader.read_line(line)) {
            reader.decode_all();
            return StageResult::failed;
        }
    }
    reader.finish(last);
    return StageResult::done;
}
