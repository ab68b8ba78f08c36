// SPDX-License-Identifier: Apache-2.0
// Small profiles as records, and the stream of nodes of their report.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "metrics.h"
#include "report_sink.h"
#include "totals.h"

// Arrays that are empty are left out, as in a report.
struct StreamBlock {
    std::string name = "load";
    std::string mem_type = "__global"; // "" of a channel
    std::string operation = "read";
    std::string memory = "";
    std::vector<long long> valid = {};
    std::vector<long long> stall = {};
    std::vector<long long> idle = {};
    std::vector<long long> requests = {};
    std::vector<float> bandwidth = {};
    std::vector<float> efficiency = {};
    std::vector<float> fill = {};
    std::vector<long long> max_fill = {};
    std::vector<long long> hits = {};
    std::vector<long long> unaligned = {};
    std::vector<float> burst = {};
};

struct StreamPort {
    std::string memory = "DDR";
    std::string interface = "ddr_0";
    std::string port = "port_0";
    std::string only = ""; // "read_only" or "write_only"
    std::vector<float> bandwidth = {};
    std::vector<float> write_burst = {};
    std::vector<float> read_burst = {};
};

struct StreamKernel {
    std::string name = "k";
    long long start = 0;
    std::vector<long long> stamps = {};
    std::vector<long long> cycles = {};
    std::vector<StreamBlock> blocks = {};
    std::vector<StreamPort> ports = {};
    int shared = -1;
    bool autorun = false;
    int device = 0;
    int compute_unit = 0;
    int line = 1;
    bool has_start = true;
};

struct StreamTransfer {
    std::string type = ".mem_transfer_read";
    int queue = 0;
    long long start = 0;
    long long end = 0;
};

struct StreamMemory {
    std::string name = "DDR";
    float peak = 1000.0f;
    int max_burst = 16;
};

struct StreamReport {
    std::vector<StreamKernel> kernels = {};
    std::vector<StreamTransfer> transfers = {};
    std::vector<StreamMemory> memories = {};
    std::string clock = "1000.0"; // MHz: a cycle is a nanosecond
};

// The array of n equal values.
template <class T>
std::vector<T> each(std::size_t n, T value) {
    return std::vector<T>(n, value);
}

template <class T>
void write_array(ReportSink& sink, std::string_view key, const std::vector<T>& values) {
    if (!values.empty())
        sink.array(key, std::span<const T>(values));
}

inline void write_stream_block(ReportSink& sink, const StreamBlock& block) {
    sink.open({}, Form::object);
    sink.text("type", "moduleinst");
    sink.text("name", block.name);
    sink.open("sourcefiles", Form::array);
    sink.open({}, Form::object);
    sink.text("filename", block.name + ".cl");
    sink.text("line", "7");
    sink.text("column_num", "3");
    sink.close();
    sink.close();
    sink.open("module_inst_details", Form::object);
    if (!block.mem_type.empty())
        sink.text("mem_type", block.mem_type);
    sink.text("operation_type", block.operation);
    write_array(sink, "occupancy_samples", block.valid);
    write_array(sink, "stall_samples", block.stall);
    write_array(sink, "idle_samples", block.idle);
    write_array(sink, "average_channel_depth_samples", block.fill);
    write_array(sink, "max_channel_depth_samples", block.max_fill);
    write_array(sink, "activity_samples", block.requests);
    write_array(sink, "bandwidth_samples", block.bandwidth);
    write_array(sink, "bandwidth_eff_samples", block.efficiency);
    write_array(sink, "cache_hit_samples", block.hits);
    write_array(sink, "non_aligned_access_samples", block.unaligned);
    sink.text("coalesced_memory", "true");
    if (!block.memory.empty())
        sink.text("global_mem_name", block.memory);
    write_array(sink, "average_burst_size", block.burst);
    sink.close();
    sink.close();
}

inline void write_stream_port(ReportSink& sink, const StreamPort& port) {
    sink.open({}, Form::object);
    sink.text("type", "extmem");
    sink.text("name", port.memory);
    sink.text("interface", port.interface);
    sink.text("port", port.port);
    if (!port.only.empty())
        sink.text(port.only, "true");
    write_array(sink, "global_used_bw", port.bandwidth);
    write_array(sink, "avg_write_burst", port.write_burst);
    write_array(sink, "avg_read_burst", port.read_burst);
    sink.close();
}

inline void write_stream_kernel(ReportSink& sink, const StreamKernel& kernel) {
    sink.open({}, Form::object);
    sink.text("type", "kernel");
    sink.text("name", kernel.name);
    sink.number("compute_unit", kernel.compute_unit);
    sink.open("sourcefile", Form::object);
    sink.text("filename", kernel.name + ".cl");
    sink.number("line", kernel.line);
    sink.close();
    write_array(sink, "device_ids", std::vector<int>(kernel.stamps.size(), kernel.device));
    if (kernel.has_start)
        sink.number("start_time", kernel.start);
    if (!kernel.stamps.empty())
        sink.number("end_time", kernel.stamps.back());
    sink.number("num_samples", kernel.stamps.size());
    sink.number("shared_counter_run_type", kernel.shared);
    write_array(sink, "sample_timestamps", kernel.stamps);
    write_array(sink, "total_cycles_between_samples", kernel.cycles);
    sink.boolean("is_autorun", kernel.autorun);
    sink.open("children", Form::array);
    for (const StreamBlock& block : kernel.blocks)
        write_stream_block(sink, block);
    for (const StreamPort& port : kernel.ports)
        write_stream_port(sink, port);
    sink.close();
    sink.close();
}

inline void write_stream(ReportSink& sink, const StreamReport& report) {
    const auto open_list = [&](std::string_view key) {
        sink.open(key, Form::object);
        sink.open("nodes", Form::array);
    };
    const auto close_list = [&] {
        sink.close();
        sink.close();
    };
    sink.open("versions", Form::object);
    sink.text("profiler_json_version", "2026.1.0");
    sink.text("zanx_version", "4.2");
    sink.close();
    open_list("kernels");
    for (const StreamKernel& kernel : report.kernels)
        write_stream_kernel(sink, kernel);
    close_list();
    open_list("boards");
    sink.open({}, Form::object);
    sink.text("board_type", "a_board");
    sink.open("children", Form::array);
    for (const StreamMemory& memory : report.memories) {
        sink.open({}, Form::object);
        sink.text("global_memory_name", memory.name);
        sink.number("max_theoretical_globalmem_bw", memory.peak);
        sink.number("max_burst_count", memory.max_burst);
        sink.close();
    }
    sink.close();
    sink.close();
    close_list();
    open_list("memtransfers");
    for (const StreamTransfer& transfer : report.transfers) {
        sink.open({}, Form::object);
        sink.text("type_transfer", transfer.type);
        sink.number("command_queue_id", transfer.queue);
        sink.number("start_time", transfer.start);
        sink.number("end_time", transfer.end);
        sink.close();
    }
    close_list();
    open_list("run_info");
    sink.open({}, Form::object);
    sink.text("fmax", report.clock);
    sink.close();
    close_list();
}

inline std::unique_ptr<zan::profile::Totals> totals_of(const StreamReport& report) {
    auto totals = std::make_unique<zan::profile::Totals>();
    write_stream(totals->sink(), report);
    return totals;
}

inline zan::profile::ProfileSummary summary_of(const StreamReport& report,
                                               const zan::profile::SummaryOptions& options = {}) {
    return zan::profile::summarize(*totals_of(report), options);
}

// The summary of a report with one block in one kernel that ran once.
inline zan::profile::ProfileSummary summary_of_block(const StreamBlock& block,
                                                     const std::vector<long long>& cycles,
                                                     const std::string& clock = "1000.0") {
    StreamKernel kernel{.cycles = cycles, .blocks = {block}};
    long long time = 0;
    for (const long long count : cycles)
        kernel.stamps.push_back(time += count > 0 ? count : 1);
    return summary_of({.kernels = {kernel}, .memories = {{}}, .clock = clock});
}

// A test fails in which there is no such value, and goes on with NaN.
inline double known(const zan::profile::Value& value) {
    return value.value_or(std::numeric_limits<double>::quiet_NaN());
}
