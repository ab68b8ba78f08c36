// SPDX-License-Identifier: Apache-2.0
// What people call a kernel.
#pragma once

#include <string>

#include "profile_summary.h"

namespace zan::profile {

// The kernel's name, with its compute unit if that isn't the first: "aggregate#1".
inline std::string kernel_label(const KernelSummary& kernel) {
    return kernel.compute_unit == 0 ? kernel.name : kernel.name + "#" + std::to_string(kernel.compute_unit);
}

} // namespace zan::profile
