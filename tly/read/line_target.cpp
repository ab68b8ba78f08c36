// SPDX-License-Identifier: Apache-2.0
#include "line_target.h"

void LineTarget::add_head(const LineHead& head) const {
    for (TlyKernel* each : kernels()) {
        each->add_device_id(head.device_id);
        each->add_command_queue(head.queue_id);
        each->add_sample_timestamp(head.sample_time);
        each->set_shared_run_type(head.shared_type);
        each->set_in_mon(true);
    }
}

// An autorun kernel whose function has no cycles keeps those that it has; the kernel of the line doesn't.
void LineTarget::update_total_cycles() const {
    if (autorun_kernels) {
        for (TlyKernel* each : *autorun_kernels) {
            if (each->get_module_insts().empty())
                continue;
            SampleList<long long> cycles = each->get_module_insts().front()->total_cycles();
            if (!cycles.empty())
                each->add_sample_totalcycle(std::move(cycles));
        }
    }
    if (!insts->empty())
        kernel->add_sample_totalcycle(insts->front()->total_cycles());
}
