// Builders of the report's nodes. Each gives a fresh node; the shapes are told in docs/report.md. Those with
// "tell" in their names tell a sink what the node of the function behind them consists of.
#pragma once

#include <string>
#include <unordered_map>

#include "report_sink.h"
#include "report_tree.h"
#include "sample_list.h"
#include "tly_constants.h"
#include "tly_ext_mem.h"
#include "tly_module_inst.h"

// The node of a kernel invocation, with empty `children`. The lists hold one entry for each sample; a list
// that is empty has no key. Times are in the unit of the monitor file.
ptree getKernelJSON(std::string name, std::string sourcefile, unsigned int line,
                    const SampleList<int>& device_ids, int compute_unit,
                    const SampleList<int>& command_queues, long long start_time,
                    const SampleList<long long>& sample_timestamps, const SampleList<long long>& total_cycles,
                    bool is_autorun, SharedCounterTypes shared_type);
// All but the children.
void write_kernel(ReportSink& node, std::string_view name, const std::string& sourcefile, unsigned int line,
                  const SampleList<int>& device_ids, int compute_unit, const SampleList<int>& command_queues,
                  long long start_time, const SampleList<long long>& sample_timestamps,
                  const SampleList<long long>& total_cycles, bool is_autorun, SharedCounterTypes shared_type);

// The node of a module instance: its source locations with their call chains, and its samples with the
// metrics worked out of them. `sample_cycles` are the kernel's clock cycles of each sample interval. Lists
// whose lengths differ are told on standard error, and the shorter length wins.
ptree getModuleJSON(TlyModuleInst* inst, const SampleList<long long>& sample_cycles);
void write_module(ReportSink& node, const TlyModuleInst& inst, const SampleList<long long>& sample_cycles);

// The node of one port of an external memory as the instance has used it. A port without samples is told on
// standard error and gives an empty node. Throws std::out_of_range for indices that the memory doesn't have.
ptree getExtMemJSON(TlyModuleInst* inst, const SampleList<long long>& sample_cycles, TlyExtMem* mem,
                    unsigned long interface_index, unsigned long port_index);
void write_ext_mem(ReportSink& node, const TlyModuleInst& inst, const SampleList<long long>& sample_cycles,
                   const TlyExtMem& mem, unsigned long interface_index, unsigned long port_index);

// The node of a transfer between host and device.
ptree getMemTransferJSON(std::string name, int device_id, int command_queue_id, long long start_time,
                         long long end_time);
void write_mem_transfer(ReportSink& node, std::string_view name, int device_id, int command_queue_id,
                        long long start_time, long long end_time);

// The node of a board with a child for each memory of `max_bandwidths` (megabytes a second), in the map's
// iteration order. A memory that `max_burst_counts` lacks has no burst count.
ptree getBoardJSON(std::string board_type, const std::unordered_map<std::string, float>& max_bandwidths,
                   const std::unordered_map<std::string, unsigned int>& max_burst_counts);
