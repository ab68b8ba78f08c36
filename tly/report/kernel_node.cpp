// SPDX-License-Identifier: Apache-2.0
// A kernel's node holds one compute unit only, as the reader keeps no counters of others.
#include "kernel_node.h"

#include "diagnostics.h"
#include "ext_mem_node.h"
#include "input_names.h"
#include "module_node.h"
#include "source_node.h"
#include "tly_constants.h"
#include "tree_sink.h"

namespace {

// A port without reads and writes has no node, whatever its bursts.
bool has_data(const TlyModuleInst& wrapper, const TlyExtMem& mem, int bank, int port) {
    const std::string& name = mem.get_name();
    return !wrapper.ext_mem_samples(EXT_MEM_READ, name, bank, port).empty() ||
           !wrapper.ext_mem_samples(EXT_MEM_WRITE, name, bank, port).empty();
}

void write_ports(ReportSink& children, const TlyModuleInst& wrapper, const TlyExtMem& mem,
                 const SampleList<long long>& sample_cycles) {
    for (int bank = 0; bank < mem.get_num_interfaces(); ++bank) {
        for (int port = 0; port < mem.get_interface_nports(bank); ++port) {
            if (!has_data(wrapper, mem, bank, port))
                continue;
            children.open({}, Form::object);
            write_ext_mem(children, wrapper, sample_cycles, mem, static_cast<unsigned long>(bank),
                          static_cast<unsigned long>(port));
            children.close();
        }
    }
}

void write_ext_mems(ReportSink& children, const TlyModuleInst& wrapper,
                    const SampleList<long long>& sample_cycles,
                    const std::unordered_map<std::string, TlyExtMem*>& ext_mems) {
    for (const std::string& name : wrapper.getExtMemNames()) {
        const auto found = ext_mems.find(name);
        if (found == ext_mems.end())
            diagnose(Message::memory_unknown, {.subject = name, .kernel = wrapper.getFunction()});
        else
            write_ports(children, wrapper, *found->second, sample_cycles);
    }
}

} // namespace

void write_invocation(ReportSink& node, const KernelInvocation& invocation) {
    const SampleList<long long>& timestamps = invocation.sample_timestamps;
    const auto write_description = [&](ReportSink& sink) {
        sink.text("type", "kernel");
        sink.text("name", invocation.name);
        sink.number("compute_unit", invocation.compute_unit);
        sink.open("sourcefile", Form::object);
        write_source(sink, invocation.sourcefile.c_str(), static_cast<int>(invocation.line));
        sink.close();
    };
    if (invocation.description_number != 0)
        node.part_of(invocation.description_number, write_description);
    else
        write_description(node);
    node.samples("device_ids", invocation.device_ids);
    node.samples("command_queue_id", invocation.command_queues);
    node.number("start_time", invocation.start_time);
    if (!timestamps.empty())
        node.number("end_time", timestamps.back());
    node.number("num_samples", timestamps.size());
    node.number("shared_counter_run_type", static_cast<int>(invocation.shared_type));
    node.samples("sample_timestamps", timestamps);
    node.samples("total_cycles_between_samples", invocation.total_cycles);
    node.boolean("is_autorun", invocation.is_autorun);
}

// The instance of the function itself counts the clock of the kernel, and has no node.
void write_kernel(ReportSink& node, const TlyKernel& kernel,
                  const std::unordered_map<std::string, TlyExtMem*>& ext_mems, int compute_unit,
                  WrittenSamples samples) {
    const std::string& name = kernel.get_name();
    const std::string& display_name = kernel.get_user_friendly_name();
    const std::string& sourcefile = kernel.get_filename();
    const SampleList<long long>& sample_cycles = kernel.sample_totalcycles();
    write_invocation(node, {.name = display_name.empty() ? name : display_name,
                            .sourcefile = sourcefile,
                            .line = static_cast<unsigned int>(kernel.get_line_num()),
                            .device_ids = kernel.device_ids(),
                            .compute_unit = compute_unit,
                            .command_queues = kernel.command_queues(),
                            .start_time = kernel.get_start_time(),
                            .sample_timestamps = kernel.sample_timestamps(),
                            .total_cycles = sample_cycles,
                            .is_autorun = kernel.is_autorun_kernel(),
                            .shared_type = kernel.get_shared_run_type(),
                            // The number of the kernel doesn't change with the compute unit.
                            .description_number = compute_unit == 0 ? kernel.description_number() : 0});
    const std::string function_inst = name + function_inst_suffix;
    const std::string wrapper_inst = name + wrapper_inst_suffix;
    node.open("children", Form::array);
    for (TlyModuleInst* inst : kernel.get_module_insts()) {
        if (inst->getName() == wrapper_inst) {
            write_ext_mems(node, *inst, sample_cycles, ext_mems);
        } else if (inst->getName() != function_inst) {
            node.open({}, Form::object);
            write_module(node, *inst, sample_cycles);
            node.close();
            if (samples == WrittenSamples::released)
                inst->release_samples();
        }
    }
    node.close();
}

// cppcheck-suppress constParameter ; the signature is that of callers
ptree TlyKernel::getJSON(bool reset, std::unordered_map<std::string, TlyExtMem*>& ext_mems) {
    ptree node;
    TreeSink sink(node);
    write_kernel(sink, *this, ext_mems);
    if (reset)
        resetKernel();
    return node;
}
