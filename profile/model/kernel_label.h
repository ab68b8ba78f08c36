// SPDX-License-Identifier: Apache-2.0
// What people call a kernel.
#pragma once

#include <string>

#include "profile_summary.h"

namespace zan::profile {

// The kernel's name, with its compute unit if that isn't the first: "aggregate#1".
inline std::string unit_label(std::string name, int compute_unit) {
    if (compute_unit != 0)
        name += "#" + std::to_string(compute_unit);
    return name;
}
inline std::string kernel_label(const KernelSummary& kernel) {
    return unit_label(kernel.name, kernel.compute_unit);
}

} // namespace zan::profile
