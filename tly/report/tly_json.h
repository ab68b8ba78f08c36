// SPDX-License-Identifier: Apache-2.0
// Builders of the report's nodes as trees, for callers outside the program. Each returns a fresh node; what
// it holds is described at the write function of its kind, and the shapes in docs/report.md.
#pragma once

#include <string>
#include <unordered_map>

#include "report_tree.h"
#include "sample_list.h"
#include "tly_constants.h"
#include "tly_ext_mem.h"
#include "tly_module_inst.h"

// write_invocation of kernel_node.h, and empty `children`.
ptree getKernelJSON(std::string name, std::string sourcefile, unsigned int line,
                    const SampleList<int>& device_ids, int compute_unit,
                    const SampleList<int>& command_queues, long long start_time,
                    const SampleList<long long>& sample_timestamps, const SampleList<long long>& total_cycles,
                    bool is_autorun, SharedCounterTypes shared_type);

// write_module of module_node.h.
ptree getModuleJSON(TlyModuleInst* inst, const SampleList<long long>& sample_cycles);

// write_ext_mem of ext_mem_node.h; an empty node where that writes nothing.
ptree getExtMemJSON(TlyModuleInst* inst, const SampleList<long long>& sample_cycles, TlyExtMem* mem,
                    unsigned long interface_index, unsigned long port_index);

// write_mem_transfer of transfer_node.h.
ptree getMemTransferJSON(std::string name, int device_id, int command_queue_id, long long start_time,
                         long long end_time);

// write_board of board_node.h.
ptree getBoardJSON(std::string board_type, const std::unordered_map<std::string, float>& max_bandwidths,
                   const std::unordered_map<std::string, unsigned int>& max_burst_counts);
