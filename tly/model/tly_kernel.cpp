// SPDX-License-Identifier: Apache-2.0
#include "tly_kernel.h"

#include "contract.h"
#include "input_names.h"

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
    // The import looks an instance up for each connection, of which a description may have 400,000.
    m_first_of_name.try_emplace(inst->getName(), inst);
    if (inst->getName() == m_name + ext_mem_inst_suffix)
        set_extmem_module_inst(inst);
    // Last: if memory runs out before it, the instance is still its caller's alone, who deletes it.
    m_module_insts.push_back(inst);
}

void TlyKernel::set_module_insts(std::vector<TlyModuleInst*> insts) {
    m_module_insts = std::move(insts);
    m_first_of_name.clear();
    for (TlyModuleInst* inst : m_module_insts) {
        if (inst)
            m_first_of_name.try_emplace(inst->getName(), inst);
    }
}

TlyModuleInst* TlyKernel::check_module_exists(const std::string& name) const {
    const auto found = m_first_of_name.find(name);
    return found == m_first_of_name.end() ? nullptr : found->second;
}

// The instances come last and in their order: a reset of one also empties the cycles that all instances of
// its function share.
void TlyKernel::resetKernel() {
    m_shared_run_type = SHARED_NONE;
    m_device_ids.clear();
    m_command_queues.clear();
    m_sample_timestamps.clear();
    m_sample_totalcycles.clear();
    for (TlyModuleInst* inst : m_module_insts)
        inst->reset();
}
