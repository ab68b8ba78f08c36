#include "tly_kernel.h"

#include "contract.h"
#include "diagnostics.h"
#include "tly_json.h" // Against the layers: the node of a kernel is still made here

TlyKernel::TlyKernel(std::string name, std::string user_friendly_name, std::string original_name,
                     std::string filename, int line_num, bool autorun)
    : m_name(std::move(name)),
      m_original_name(std::move(original_name)),
      m_user_friendly_name(std::move(user_friendly_name)),
      m_autorun(autorun),
      m_filename(std::move(filename)),
      m_line_num(line_num) {
}

TlyKernel::TlyKernel(std::string name, std::string user_friendly_name, std::string original_name,
                     std::string filename, int line_num)
    : TlyKernel(std::move(name), std::move(user_friendly_name), std::move(original_name), std::move(filename),
                line_num, false) {
}

TlyKernel::TlyKernel(std::string name, bool autorun) : TlyKernel(std::move(name), {}, {}, {}, 0, autorun) {
}

TlyKernel::TlyKernel(std::string name) : TlyKernel(std::move(name), false) {
}

void TlyKernel::add_module_inst(TlyModuleInst* inst) {
    ZAN_CONTRACT(inst != nullptr, "inst != nullptr");
    m_module_insts.push_back(inst);
    m_first_of_name.try_emplace(inst->name(), inst);
    if (inst->name() == m_name + "_function_wrapper")
        set_extmem_module_inst(inst);
}

void TlyKernel::set_module_insts(std::vector<TlyModuleInst*> insts) {
    m_module_insts = std::move(insts);
    m_first_of_name.clear();
    for (TlyModuleInst* inst : m_module_insts) {
        if (inst)
            m_first_of_name.try_emplace(inst->name(), inst);
    }
}

TlyModuleInst* TlyKernel::check_module_exists(const std::string& name) const {
    const auto found = m_first_of_name.find(name);
    return found == m_first_of_name.end() ? nullptr : found->second;
}

void TlyKernel::resetKernel() {
    m_shared_run_type = SHARED_NONE;
    m_device_ids.clear();
    m_command_queues.clear();
    m_sample_timestamps.clear();
    m_sample_totalcycles.clear();
    for (TlyModuleInst* inst : m_module_insts)
        inst->reset();
}

ptree TlyKernel::getJSON(bool reset, std::unordered_map<std::string, TlyExtMem*>& extMems) {
    ptree node;
    TreeSink sink(node);
    tellNode(sink, reset, extMems);
    return node;
}

void TlyKernel::tellNode(ReportSink& node, bool reset, std::unordered_map<std::string, TlyExtMem*>& extMems) {
    const std::string& display_name = m_user_friendly_name.empty() ? m_name : m_user_friendly_name;
    tellKernel(node, display_name, m_filename, static_cast<unsigned int>(m_line_num), m_device_ids, 0,
               m_command_queues, m_start_time, m_sample_timestamps, m_sample_totalcycles, m_autorun,
               m_shared_run_type);
    const std::string function_inst = m_name + "_function_inst";
    const std::string wrapper_inst = m_name + "_function_wrapper_inst";
    node.open("children");
    for (const TlyModuleInst* inst : m_module_insts) {
        if (inst->name() == function_inst)
            continue;
        if (inst->name() == wrapper_inst) {
            tellExtMems(node, *inst, extMems);
            continue;
        }
        node.open("");
        tellModule(node, *inst, m_sample_totalcycles);
        node.close();
    }
    node.close();
    if (reset)
        resetKernel();
}

void TlyKernel::tellExtMems(ReportSink& children, const TlyModuleInst& wrapper,
                            const std::unordered_map<std::string, TlyExtMem*>& extMems) const {
    for (const std::string& name : wrapper.getExtMemNames()) {
        const auto found = extMems.find(name);
        if (found == extMems.end()) {
            diagnose("Warning: external memory from kernel does not match external memory from board.\n");
            continue;
        }
        const TlyExtMem& mem = *found->second;
        for (int i = 0; i < mem.get_num_interfaces(); ++i) {
            for (int port = 0; port < mem.get_interface_nports(i); ++port) {
                if (wrapper.extMemSamples(EXT_MEM_READ, mem.get_name(), i, port).empty() &&
                    wrapper.extMemSamples(EXT_MEM_WRITE, mem.get_name(), i, port).empty())
                    continue;
                children.open("");
                tellExtMem(children, wrapper, m_sample_totalcycles, mem, static_cast<unsigned long>(i),
                           static_cast<unsigned long>(port));
                children.close();
            }
        }
    }
}
