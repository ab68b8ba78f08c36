// SPDX-License-Identifier: Apache-2.0
#include "design_check.h"

#include <charconv>

#include "input_names.h"
#include "number_text.h"
#include "tly_constants.h"

namespace zan::profile {

namespace {

void add_to_section(FindingLog& log, std::string_view code, std::string_view package, const char* section,
                    const std::string& message) {
    Fault fault;
    fault.file = package;
    fault.section = section;
    fault.message = message;
    log.add(code, fault);
}

bool is_own_inst(const TlyKernel& kernel, const TlyModuleInst& inst) {
    return inst.getName() == kernel.get_name() + function_inst_suffix ||
           inst.getName() == kernel.get_name() + wrapper_inst_suffix;
}

void check_widths(const TlyKernel& kernel, std::string_view package, FindingLog& log) {
    for (const TlyModuleInst* inst : kernel.get_module_insts()) {
        const bool has_width = parse_int(inst->getAttrByteWidth()).value_or(0) > 0;
        if (!has_width && (is_global(*inst) || is_channel(*inst)) && !is_own_inst(kernel, *inst))
            add_to_section(log, "no-width", package, profiler_section,
                           shown_name(kernel) + "/" + inst->getName() + " has the width '" +
                               inst->getAttrByteWidth() + "'");
    }
}

} // namespace

bool is_global(const TlyModuleInst& inst) {
    return inst.getAttrMemoryType() == addrspace_global;
}

bool is_channel(const TlyModuleInst& inst) {
    return inst.getModule() == write_channel || inst.getModule() == read_channel;
}

bool is_loop(const TlyModuleInst& inst) {
    return inst.getAttrMemoryType() == loop_module;
}

const std::string& shown_name(const TlyKernel& kernel) {
    return kernel.get_user_friendly_name().empty() ? kernel.get_name() : kernel.get_user_friendly_name();
}

double stated_clock(const std::string& text) {
    double clock = 0;
    const std::size_t begin = std::min(text.find_first_not_of(" \t"), text.size());
    const auto [end, error] = std::from_chars(text.data() + begin, text.data() + text.size(), clock);
    const bool is_whole =
        text.find_first_not_of(" \t\r", static_cast<std::size_t>(end - text.data())) == std::string::npos;
    return error == std::errc() && is_whole && clock > 0 && clock < 1e6 ? clock : 0;
}

void check_design(const ProfileModel& model, const std::string& clock, std::string_view package,
                  FindingLog& log) {
    if (clock == "0.0")
        add_to_section(log, "no-clock", package, timing_report_section, "the timing report names no clock");
    else if (stated_clock(clock) == 0)
        add_to_section(log, "no-clock", package, timing_report_section,
                       "the clock is '" + clock + "', which is no number of MHz");
    for (const auto& [name, kernel] : model.kernels) {
        if (name == autorun_profile_dummy_kernel)
            continue;
        check_widths(*kernel, package, log);
        const unsigned int num_units = kernel->get_num_compute_units();
        if (num_units > 1)
            add_to_section(log, "compute-units", package, profiler_section,
                           shown_name(*kernel) + " has " + std::to_string(num_units) + " compute units");
    }
}

} // namespace zan::profile
