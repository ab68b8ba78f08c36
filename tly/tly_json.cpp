#include "tly_json.h"

ptree getKernelJSON(std::string name, std::string sourcefile, unsigned int line,
                    const SampleList<int>& deviceIds, int computeUnit, const SampleList<int>& commandQueues,
                    long long startTime, const SampleList<long long>& sampleTimestamps,
                    const SampleList<long long>& totalCycles, bool isAutorun, SharedCounterTypes sharedType) {
    ptree node;
    append_text(node, "type", "kernel");
    append_text(node, "name", std::move(name));
    append_text(node, "compute_unit", report_text(computeUnit));
    ptree source = getSourceJSON(sourcefile.c_str(), static_cast<int>(line), -1, false);
    append_node(node, "sourcefile", source);
    append_samples(node, "device_ids", deviceIds);
    append_samples(node, "command_queue_id", commandQueues);
    append_text(node, "start_time", report_text(startTime));
    if (!sampleTimestamps.empty())
        append_text(node, "end_time", report_text(sampleTimestamps.back()));
    append_text(node, "num_samples", report_text(sampleTimestamps.size()));
    append_text(node, "shared_counter_run_type", report_text(sharedType));
    append_samples(node, "sample_timestamps", sampleTimestamps);
    append_samples(node, "total_cycles_between_samples", totalCycles);
    append_text(node, "is_autorun", report_text(isAutorun));
    append_text(node, "children", "");
    return node;
}

ptree getMemTransferJSON(std::string name, int deviceId, int commandQueueId, long long startTime,
                         long long endTime) {
    ptree node;
    append_text(node, "type", "memtransfers");
    append_text(node, "type_transfer", std::move(name));
    append_text(node, "device_id", report_text(deviceId));
    append_text(node, "command_queue_id", report_text(commandQueueId));
    append_text(node, "start_time", report_text(startTime));
    append_text(node, "end_time", report_text(endTime));
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
