#include "tly_json.h"

namespace {

// The filename may hold a NUL, which ends it.
void tellSource(ReportSink& node, const std::string& filename, unsigned int line) {
    node.open("sourcefile");
    node.text("filename", filename.c_str());
    node.number("line", static_cast<int>(line));
    node.close();
}

} // namespace

void tellKernel(ReportSink& node, std::string_view name, const std::string& sourcefile, unsigned int line,
                const SampleList<int>& deviceIds, int computeUnit, const SampleList<int>& commandQueues,
                long long startTime, const SampleList<long long>& sampleTimestamps,
                const SampleList<long long>& totalCycles, bool isAutorun, SharedCounterTypes sharedType) {
    node.text("type", "kernel");
    node.text("name", name);
    node.number("compute_unit", computeUnit);
    tellSource(node, sourcefile, line);
    node.samples("device_ids", deviceIds);
    node.samples("command_queue_id", commandQueues);
    node.number("start_time", startTime);
    if (!sampleTimestamps.empty())
        node.number("end_time", sampleTimestamps.back());
    node.number("num_samples", sampleTimestamps.size());
    node.number("shared_counter_run_type", static_cast<int>(sharedType));
    node.samples("sample_timestamps", sampleTimestamps);
    node.samples("total_cycles_between_samples", totalCycles);
    node.truth("is_autorun", isAutorun);
}

ptree getKernelJSON(std::string name, std::string sourcefile, unsigned int line,
                    const SampleList<int>& deviceIds, int computeUnit, const SampleList<int>& commandQueues,
                    long long startTime, const SampleList<long long>& sampleTimestamps,
                    const SampleList<long long>& totalCycles, bool isAutorun, SharedCounterTypes sharedType) {
    ptree node;
    TreeSink sink(node);
    tellKernel(sink, name, sourcefile, line, deviceIds, computeUnit, commandQueues, startTime,
               sampleTimestamps, totalCycles, isAutorun, sharedType);
    sink.text("children", "");
    return node;
}

void tellMemTransfer(ReportSink& node, std::string_view name, int deviceId, int commandQueueId,
                     long long startTime, long long endTime) {
    node.text("type", "memtransfers");
    node.text("type_transfer", name);
    node.number("device_id", deviceId);
    node.number("command_queue_id", commandQueueId);
    node.number("start_time", startTime);
    node.number("end_time", endTime);
}

ptree getMemTransferJSON(std::string name, int deviceId, int commandQueueId, long long startTime,
                         long long endTime) {
    ptree node;
    TreeSink sink(node);
    tellMemTransfer(sink, name, deviceId, commandQueueId, startTime, endTime);
    return node;
}

ptree getBoardJSON(std::string boardType, const std::unordered_map<std::string, float>& maxBandwidths,
                   const std::unordered_map<std::string, unsigned int>& maxBurstCounts) {
    ptree node;
    append_text(node, "type", "board");
    append_text(node, "board_type", std::move(boardType));
    ptree& children = append_text(node, "children", "");
    for (const auto& [name, bandwidth] : maxBandwidths) {
        ptree memory;
        append_text(memory, "type", "globalmem");
        append_text(memory, "global_memory_name", name);
        append_text(memory, "max_theoretical_globalmem_bw", report_text(bandwidth));
        const auto burst = maxBurstCounts.find(name);
        if (burst != maxBurstCounts.end())
            append_text(memory, "max_burst_count", report_text(burst->second));
        append_node(children, "", memory);
    }
    return node;
}
