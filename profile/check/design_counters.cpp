// SPDX-License-Identifier: Apache-2.0
#include "design_counters.h"

#include <algorithm>
#include <set>

#include "counter_tags.h"
#include "input_names.h"
#include "value_text.h"

namespace zan::profile {

namespace {

// What the counters of one instance take on a line.
void add_inst(LineCounters& counters, const TlyModuleInst& inst, long long& end,
              long long& num_shared_ports) {
    const std::vector<int> offsets = inst.getPortTagOffsets();
    const std::vector<std::string> tags = inst.getPortTagList();
    for (std::size_t i = 0; i < offsets.size(); ++i) {
        end = std::max(end, static_cast<long long>(offsets[i]) + 1);
        num_shared_ports += is_shared_tag(tags[i]) ? 1 : 0;
    }
    counters.num_unshared += inst.getNumHasShared();
    counters.shares = counters.shares || inst.compiledSharedCounters();
}

void finish(LineCounters& counters, long long end, long long num_shared_ports) {
    counters.num_fields = end - first_counter_field;
    counters.num_unshared += counters.num_fields - num_shared_ports;
    counters.is_known = counters.num_fields > 0;
}

std::string units_text(long long count) {
    return count_text(static_cast<double>(count)) + (count == 1 ? " compute unit" : " compute units");
}

} // namespace

// Counters of autorun kernels stand on the lines of the pseudo-kernel, after its own.
DesignCounters::DesignCounters(const ProfileModel& model) {
    for (const auto& [name, kernel] : model.kernels) {
        LineCounters counters;
        long long end = first_counter_field;
        long long num_shared_ports = 0;
        const bool is_pseudo = name == autorun_profile_dummy_kernel;
        counters.num_units = is_pseudo ? 0 : kernel->get_num_compute_units();
        for (const auto& [other_name, other] : model.kernels) {
            if (other != kernel && !(is_pseudo && other->is_autorun_kernel()))
                continue;
            for (const TlyModuleInst* inst : other->get_module_insts())
                add_inst(counters, *inst, end, num_shared_ports);
        }
        finish(counters, end, num_shared_ports);
        // Autorun kernels have no lines of their own in a run; what such a line would hold isn't said.
        counters.is_known =
            counters.is_known && model.is_described && (is_pseudo || !kernel->is_autorun_kernel());
        m_kernels.emplace(name, counters);
    }
    for (const auto& [original, name] : model.original_names) {
        if (const LineCounters* counters = find(name))
            m_kernels.try_emplace(original, *counters);
    }
}

const LineCounters* DesignCounters::find(std::string_view name) const {
    const auto found = m_kernels.find(name);
    return found == m_kernels.end() ? nullptr : &found->second;
}

std::string DesignCounters::reason(const LineCounters& counters, long long num_on_line) {
    const long long units = counters.num_units;
    if (num_on_line <= 0)
        return {};
    const std::string number = count_text(static_cast<double>(num_on_line));
    if (counters.shares && num_on_line == counters.num_unshared)
        return number + " is what it has without shared counters";
    if (units == 0 || counters.num_fields % units != 0)
        return {};
    const long long of_unit = counters.num_fields / units;
    if (num_on_line % of_unit == 0 && num_on_line / of_unit != units)
        return number + " is " + units_text(num_on_line / of_unit) + ", the design has " +
               std::to_string(units);
    return {};
}

} // namespace zan::profile
