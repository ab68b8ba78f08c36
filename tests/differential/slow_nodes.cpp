// SPDX-License-Identifier: Apache-2.0
#include "slow_nodes.h"

#include "slow_decoder.h"
#include "slow_metrics.h"
#include "slow_text.h"

namespace slow {

namespace {

void add(ptree& node, const std::string& key, const ptree& child) {
    node.push_back({key, child});
}

void add(ptree& node, const std::string& key, const std::string& text) {
    add(node, key, ptree(text));
}

void add(ptree& node, const std::string& key, const char* text) {
    add(node, key, ptree(text));
}

void add(ptree& node, const std::string& key, bool value) {
    add(node, key, value ? "true" : "false");
}

void add(ptree& node, const std::string& key, long long value) {
    add(node, key, std::to_string(value));
}

std::string text_of(long long value) {
    return std::to_string(value);
}

std::string text_of(float value) {
    return float_text(value);
}

// An array of numbers, left out if it is empty.
template <class T>
void add_numbers(ptree& node, const std::string& key, const std::vector<T>& values) {
    ptree array;
    for (const T value : values)
        add_node(array, ptree(text_of(value)));
    if (!values.empty())
        add(node, key, array);
}

ptree place_node(const Place& place) {
    ptree node;
    add(node, "filename", place.file);
    add(node, "line", static_cast<long long>(place.line));
    add(node, "column_num", static_cast<long long>(place.column));
    return node;
}

// A location with its calls inside each other.
ptree location_node(const Location& location) {
    ptree inner;
    for (std::size_t i = location.calls.size(); i > 0; --i) {
        ptree call = place_node(location.calls[i - 1]);
        if (!inner.empty())
            add(call, "callsite", inner);
        inner = ptree();
        add_node(inner, call);
    }
    ptree node = place_node(location.place);
    if (!inner.empty())
        add(node, "callsite", inner);
    return node;
}

bool is_cached(const Inst& inst) {
    return inst.unit_type == "BURST-NON-ALIGNED" || inst.unit_type == "BURST-COALESCED" ||
           inst.unit_type == "SEMI-STREAMING";
}

void add_depths(Run& run, ptree& details, const Inst& inst) {
    add_numbers(details, "average_channel_depth_samples", channel_depths(run, inst));
    if (inst.has_max_fifo)
        add_numbers(details, "max_channel_depth_samples", samples(inst, "max fifo"));
}

void add_bandwidths(Run& run, ptree& details, const Inst& inst, const Samples& cycles) {
    const Bandwidths measured = bandwidths(run, inst, cycles);
    add_numbers(details, "activity_samples", measured.activity);
    add_numbers(details, "bandwidth_samples", measured.bandwidth);
    if (!is_channel(inst))
        add_numbers(details, "bandwidth_eff_samples", measured.efficiency);
}

void add_reads(ptree& details, const Inst& inst) {
    if (!is_global(inst) || inst.read_or_write != "read")
        return;
    if (is_cached(inst))
        add_numbers(details, "cache_hit_samples", samples(inst, "hits"));
    if (inst.unit_type == "BURST-NON-ALIGNED")
        add_numbers(details, "non_aligned_access_samples", samples(inst, "unaligned"));
}

void add_bursts(Run& run, ptree& details, const Inst& inst) {
    const Floats bursts = average_bursts(run, inst);
    if (bursts.empty() || !is_global(inst))
        return;
    add(details, "global_mem_name", inst.memory_name);
    add_numbers(details, "average_burst_size", bursts);
}

ptree details_node(Run& run, const Inst& inst, const Samples& cycles) {
    ptree details;
    if (!inst.memory_type.empty())
        add(details, "mem_type", inst.memory_type);
    if (!inst.read_or_write.empty())
        add(details, "operation_type", inst.read_or_write);
    add_numbers(details, "occupancy_samples", samples(inst, "valid"));
    if (inst.memory_type == "__loop")
        return details;
    add_numbers(details, "stall_samples", samples(inst, "stall"));
    add_numbers(details, "idle_samples", samples(inst, "idle"));
    add_depths(run, details, inst);
    add_bandwidths(run, details, inst, cycles);
    add_reads(details, inst);
    add(details, "coalesced_memory", inst.optimisation.find("_coalesced") != std::string::npos);
    add_bursts(run, details, inst);
    return details;
}

ptree inst_node(Run& run, const Inst& inst, const Samples& cycles) {
    ptree node;
    add(node, "type", "moduleinst");
    add(node, "name", inst.name);
    ptree locations;
    for (std::size_t i = inst.locations.size(); i > 0; --i) // the last location comes first
        add_node(locations, location_node(inst.locations[i - 1]));
    add(node, "sourcefiles", locations);
    add(node, "module_inst_details", details_node(run, inst, cycles));
    return node;
}

ptree port_node(Run& run, const Inst& inst, const Samples& cycles, const Memory& memory, int interface,
                int port) {
    const Interface& used = memory.interfaces[static_cast<std::size_t>(interface)];
    ptree node;
    add(node, "type", "extmem");
    add(node, "name", memory.name);
    add(node, "interface", used.name);
    add(node, "port", used.ports[static_cast<std::size_t>(port)]);
    const PortMetrics metrics = port_metrics(run, inst, cycles, memory, interface, port);
    if (metrics.write_only)
        add(node, "write_only", true);
    if (metrics.read_only)
        add(node, "read_only", true);
    add_numbers(node, "global_used_bw", metrics.bandwidth);
    add_numbers(node, "avg_write_burst", metrics.write_burst);
    add_numbers(node, "avg_read_burst", metrics.read_burst);
    return node;
}

void add_port_nodes(Run& run, ptree& children, const Inst& inst, const Samples& cycles) {
    for (const auto& [name, ports] : inst.memories) {
        const auto found = run.memories.find(name);
        if (found == run.memories.end()) {
            run.say("Warning: external memory from kernel does not match external memory from board.");
            continue;
        }
        const Memory& memory = found->second;
        for (int i = 0; i < static_cast<int>(memory.interfaces.size()); ++i) {
            const auto& names = memory.interfaces[static_cast<std::size_t>(i)].ports;
            for (int p = 0; p < static_cast<int>(names.size()); ++p) {
                if (!port_samples(inst, name, "read", i, p).empty() ||
                    !port_samples(inst, name, "write", i, p).empty())
                    add_node(children, port_node(run, inst, cycles, memory, i, p));
            }
        }
    }
}

ptree object_with_nodes(const ptree& nodes) {
    ptree node;
    add(node, "nodes", nodes);
    return node;
}

} // namespace

void add_node(ptree& array, const ptree& node) {
    add(array, "", node);
}

ptree kernel_node(Run& run, const Kernel& kernel) {
    ptree node;
    add(node, "type", "kernel");
    add(node, "name", kernel.display_name.empty() ? kernel.name : kernel.display_name);
    add(node, "compute_unit", "0");
    ptree source;
    add(source, "filename", kernel.file);
    add(source, "line", static_cast<long long>(kernel.line));
    add(node, "sourcefile", source);
    add_numbers(node, "device_ids", Samples(kernel.devices.begin(), kernel.devices.end()));
    add_numbers(node, "command_queue_id", Samples(kernel.queues.begin(), kernel.queues.end()));
    add(node, "start_time", kernel.start);
    if (!kernel.times.empty())
        add(node, "end_time", kernel.times.back());
    add(node, "num_samples", static_cast<long long>(kernel.times.size()));
    add(node, "shared_counter_run_type", static_cast<long long>(kernel.shared_type));
    add_numbers(node, "sample_timestamps", kernel.times);
    add_numbers(node, "total_cycles_between_samples", kernel.cycles);
    add(node, "is_autorun", kernel.autorun);
    ptree children;
    for (const Inst& inst : kernel.insts) {
        if (inst.name == kernel.name + "_function_inst")
            continue;
        if (inst.name == kernel.name + "_function_wrapper_inst")
            add_port_nodes(run, children, inst, kernel.cycles);
        else
            add_node(children, inst_node(run, inst, kernel.cycles));
    }
    add(node, "children", children);
    return node;
}

ptree transfer_node(const std::string& name, int device, int queue, long long start, long long end) {
    ptree node;
    add(node, "type", "memtransfers");
    add(node, "type_transfer", name);
    add(node, "device_id", static_cast<long long>(device));
    add(node, "command_queue_id", static_cast<long long>(queue));
    add(node, "start_time", start);
    add(node, "end_time", end);
    return node;
}

ptree board_node(const std::string& name, const std::vector<Memory>& memories) {
    // The nodes stand in the order of the standard library's hash table. Of two memories of one name the
    // later one has the numbers.
    std::unordered_map<std::string, Memory> by_name;
    for (const Memory& memory : memories)
        by_name[memory.name] = memory;
    ptree children;
    for (const auto& [key, memory] : by_name) {
        ptree child;
        add(child, "type", "globalmem");
        add(child, "global_memory_name", key);
        add(child, "max_theoretical_globalmem_bw", float_text(memory.bandwidth));
        if (!memory.interfaces.empty())
            add(child, "max_burst_count", static_cast<long long>(memory.interfaces.front().max_burst));
        add_node(children, child);
    }
    ptree node;
    add(node, "type", "board");
    add(node, "board_type", name);
    add(node, "children", children);
    return node;
}

ptree report(const Run& run, const std::string& version) {
    ptree versions;
    add(versions, "profiler_json_version", version);
    add(versions, "zanx_version", run.version);
    ptree run_info;
    add(run_info, "type", "runinfo");
    add(run_info, "fmax", run.clock);
    ptree run_infos;
    add_node(run_infos, run_info);

    ptree root;
    add(root, "json_type", "Corvane Profiler JSON");
    add(root, "versions", versions);
    add(root, "kernels", object_with_nodes(run.kernel_nodes));
    add(root, "boards", object_with_nodes(run.board_nodes));
    add(root, "memtransfers", object_with_nodes(run.transfer_nodes));
    add(root, "channels", object_with_nodes(ptree()));
    add(root, "run_info", object_with_nodes(run_infos));
    return root;
}

} // namespace slow
