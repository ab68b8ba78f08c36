// SPDX-License-Identifier: Apache-2.0
// Names with a meaning of their own in a monitor file.
#pragma once

#include <string>
#include <vector>

namespace slow {

// Its lines hold the counters of all autorun kernels.
inline const std::string pseudo_kernel = "Corvane_Internal_Collect_Autorun_Profiling";

// Of lines that are transfers.
inline const std::vector<std::string> transfer_names = {
    ".mem_transfer_read", ".mem_transfer_write",     ".mem_transfer_copy",
    ".reprogram",         ".mem_mirror_from_device", ".mem_mirror_to_device",
    ".mem_transfer",      ".mem_migration",          ".usm_memcpy"};

} // namespace slow
