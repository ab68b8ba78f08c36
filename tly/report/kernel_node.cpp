// The node of a kernel's invocation: the kernel, the module instances below it, and the external memories
// that they used.
#include "diagnostics.h"
#include "tly_json.h"
#include "tly_kernel.h"
#include "tree_sink.h"

ptree TlyKernel::getJSON(bool reset, std::unordered_map<std::string, TlyExtMem*>& ext_mems) {
    ptree node;
    TreeSink sink(node);
    write_node(sink, reset, ext_mems);
    return node;
}

void TlyKernel::write_node(ReportSink& node, bool reset,
                           std::unordered_map<std::string, TlyExtMem*>& ext_mems) {
    const std::string& display_name = m_user_friendly_name.empty() ? m_name : m_user_friendly_name;
    write_kernel(node, display_name, m_filename, static_cast<unsigned int>(m_line_num), m_device_ids, 0,
                 m_command_queues, m_start_time, m_sample_timestamps, m_sample_totalcycles, m_autorun,
                 m_shared_run_type);
    const std::string function_inst = m_name + function_inst_suffix;
    const std::string wrapper_inst = m_name + wrapper_inst_suffix;
    node.open("children", Form::array);
    for (const TlyModuleInst* inst : m_module_insts) {
        if (inst->getName() == function_inst)
            continue;
        if (inst->getName() == wrapper_inst) {
            write_ext_mems(node, *inst, ext_mems);
            continue;
        }
        node.open({}, Form::object);
        write_module(node, *inst, m_sample_totalcycles);
        node.close();
    }
    node.close();
    if (reset)
        resetKernel();
}

void TlyKernel::write_ext_mems(ReportSink& children, const TlyModuleInst& wrapper,
                               const std::unordered_map<std::string, TlyExtMem*>& ext_mems) const {
    for (const std::string& name : wrapper.getExtMemNames()) {
        const auto found = ext_mems.find(name);
        if (found == ext_mems.end()) {
            diagnose("Warning: external memory from kernel does not match external memory from board.\n");
            continue;
        }
        const TlyExtMem& mem = *found->second;
        for (int i = 0; i < mem.get_num_interfaces(); ++i) {
            for (int port = 0; port < mem.get_interface_nports(i); ++port) {
                if (wrapper.ext_mem_samples(EXT_MEM_READ, mem.get_name(), i, port).empty() &&
                    wrapper.ext_mem_samples(EXT_MEM_WRITE, mem.get_name(), i, port).empty())
                    continue;
                children.open({}, Form::object);
                write_ext_mem(children, wrapper, m_sample_totalcycles, mem, static_cast<unsigned long>(i),
                              static_cast<unsigned long>(port));
                children.close();
            }
        }
    }
}
