// SPDX-License-Identifier: Apache-2.0
#include "tly_json.h"

#include "board_node.h"
#include "ext_mem_node.h"
#include "kernel_node.h"
#include "module_node.h"
#include "transfer_node.h"
#include "tree_sink.h"

ptree getKernelJSON(std::string name, std::string sourcefile, unsigned int line,
                    const SampleList<int>& device_ids, int compute_unit,
                    const SampleList<int>& command_queues, long long start_time,
                    const SampleList<long long>& sample_timestamps, const SampleList<long long>& total_cycles,
                    bool is_autorun, SharedCounterTypes shared_type) {
    ptree node;
    TreeSink sink(node);
    write_invocation(sink, {name, sourcefile, line, device_ids, compute_unit, command_queues, start_time,
                            sample_timestamps, total_cycles, is_autorun, shared_type});
    sink.text("children", "");
    return node;
}

ptree getModuleJSON(TlyModuleInst* inst, const SampleList<long long>& sample_cycles) {
    ptree node;
    TreeSink sink(node);
    write_module(sink, *inst, sample_cycles);
    return node;
}

ptree getExtMemJSON(TlyModuleInst* inst, const SampleList<long long>& sample_cycles, TlyExtMem* mem,
                    unsigned long interface_index, unsigned long port_index) {
    ptree node;
    TreeSink sink(node);
    write_ext_mem(sink, *inst, sample_cycles, *mem, interface_index, port_index);
    return node;
}

ptree getMemTransferJSON(std::string name, int device_id, int command_queue_id, long long start_time,
                         long long end_time) {
    ptree node;
    TreeSink sink(node);
    write_mem_transfer(sink, name, device_id, command_queue_id, start_time, end_time);
    return node;
}

ptree getBoardJSON(std::string board_type, const std::unordered_map<std::string, float>& max_bandwidths,
                   const std::unordered_map<std::string, unsigned int>& max_burst_counts) {
    ptree node;
    TreeSink sink(node);
    write_board(sink, board_type, max_bandwidths, max_burst_counts);
    return node;
}
