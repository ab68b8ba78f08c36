// SPDX-License-Identifier: Apache-2.0
// What a kernel's line adds to the profile model.
#pragma once

#include <span>
#include <vector>

#include "line_head.h"
#include "tly_kernel.h"

// The kernel of a line, and the instances and kernels that its counters go to. Owns none of them.
struct LineTarget {
    TlyKernel* kernel = nullptr;
    const std::vector<TlyModuleInst*>* insts = nullptr;
    // All autorun kernels if the line is one of their pseudo-kernel, else null.
    const std::vector<TlyKernel*>* autorun_kernels = nullptr;

    // The kernels that the line is a sample of.
    std::span<TlyKernel* const> kernels() const {
        if (autorun_kernels && !autorun_kernels->empty())
            return *autorun_kernels;
        return {&kernel, 1};
    }
    // The instances may also get counters from lines of other kernels.
    bool shares_instances() const { return autorun_kernels || kernel->is_autorun_kernel(); }

    // Adds the head's times and ids to the kernels' samples. The counters come separately.
    void add_head(const LineHead& head) const;
    // Hands the kernels the cycles of their instances' functions, after a line's counters.
    void update_total_cycles() const;
};
