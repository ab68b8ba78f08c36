#include "tly_json.h"

#include "tree_sink.h"

namespace {

// The filename may hold a NUL, which ends it.
void write_source(ReportSink& node, const std::string& filename, unsigned int line) {
    node.open("sourcefile", Form::object);
    node.text("filename", filename.c_str());
    node.number("line", static_cast<int>(line));
    node.close();
}

} // namespace

void write_kernel(ReportSink& node, std::string_view name, const std::string& sourcefile, unsigned int line,
                  const SampleList<int>& device_ids, int compute_unit, const SampleList<int>& command_queues,
                  long long start_time, const SampleList<long long>& sample_timestamps,
                  const SampleList<long long>& total_cycles, bool is_autorun,
                  SharedCounterTypes shared_type) {
    node.text("type", "kernel");
    node.text("name", name);
    node.number("compute_unit", compute_unit);
    write_source(node, sourcefile, line);
    node.samples("device_ids", device_ids);
    node.samples("command_queue_id", command_queues);
    node.number("start_time", start_time);
    if (!sample_timestamps.empty())
        node.number("end_time", sample_timestamps.back());
    node.number("num_samples", sample_timestamps.size());
    node.number("shared_counter_run_type", static_cast<int>(shared_type));
    node.samples("sample_timestamps", sample_timestamps);
    node.samples("total_cycles_between_samples", total_cycles);
    node.boolean("is_autorun", is_autorun);
}

ptree getKernelJSON(std::string name, std::string sourcefile, unsigned int line,
                    const SampleList<int>& device_ids, int compute_unit,
                    const SampleList<int>& command_queues, long long start_time,
                    const SampleList<long long>& sample_timestamps, const SampleList<long long>& total_cycles,
                    bool is_autorun, SharedCounterTypes shared_type) {
    ptree node;
    TreeSink sink(node);
    write_kernel(sink, name, sourcefile, line, device_ids, compute_unit, command_queues, start_time,
                 sample_timestamps, total_cycles, is_autorun, shared_type);
    sink.text("children", "");
    return node;
}

void write_mem_transfer(ReportSink& node, std::string_view name, int device_id, int command_queue_id,
                        long long start_time, long long end_time) {
    node.text("type", "memtransfers");
    node.text("type_transfer", name);
    node.number("device_id", device_id);
    node.number("command_queue_id", command_queue_id);
    node.number("start_time", start_time);
    node.number("end_time", end_time);
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
    append_text(node, "type", "board");
    append_text(node, "board_type", std::move(board_type));
    ptree& children = append_text(node, "children", "");
    for (const auto& [name, bandwidth] : max_bandwidths) {
        ptree memory;
        append_text(memory, "type", "globalmem");
        append_text(memory, "global_memory_name", name);
        append_text(memory, "max_theoretical_globalmem_bw", report_text(bandwidth));
        const auto burst = max_burst_counts.find(name);
        if (burst != max_burst_counts.end())
            append_text(memory, "max_burst_count", report_text(burst->second));
        append_node(children, "", memory);
    }
    return node;
}
