// SPDX-License-Identifier: Apache-2.0
// A port that was only written, or only read, has samples of one kind: the other list is empty and counts as
// zeros.
#include "ext_mem_node.h"

#include <algorithm>

#include "derived_samples.h"
#include "diagnostics.h"
#include "report_formulas.h"
#include "wrapping.h"

namespace {

using Samples = SampleList<long long>;

// What an instance measured on one port, in words and burst starts of each sample.
struct PortSamples {
    Samples reads;
    Samples writes;
    Samples read_bursts;
    Samples write_bursts;
};

// Warns if the lists that have samples differ in length.
void warn_of_lengths(const PortSamples& port, std::size_t num_cycles, const MessageDetails& details) {
    const std::size_t num_reads = port.reads.size();
    const std::size_t num_writes = port.writes.size();
    if (port.reads.empty()) {
        if (num_cycles != num_writes)
            diagnose(Message::memory_writes_differ, details);
    } else if (port.writes.empty()) {
        if (num_cycles != num_reads)
            diagnose(Message::memory_reads_differ, details);
    } else if (num_writes != num_reads || num_cycles != num_writes) {
        diagnose(Message::memory_samples_differ, details);
    }
}

// The number of samples that all lists have which have any.
std::size_t common_length(const PortSamples& port, std::size_t num_cycles) {
    if (port.reads.empty())
        return std::min(port.writes.size(), num_cycles);
    if (port.writes.empty())
        return std::min(port.reads.size(), num_cycles);
    return std::min({port.writes.size(), port.reads.size(), num_cycles});
}

// Megabytes a second of `words` words of `width` bits. An interval of no time makes it infinite.
float used_bandwidth(long long words, int width, long long cycles, float fmax) {
    if (words <= 0)
        return 0.0f;
    const float bytes = static_cast<float>(words) * static_cast<float>(width) * 0.125f;
    return megabytes_per_second(bytes, nanoseconds_to_seconds(cycles_to_nanoseconds(cycles, fmax)));
}

// The words of each burst. Too few bursts make no average worth showing.
float average_burst(long long words, long long bursts) {
    constexpr long long most_bursts_without_average = 10;
    if (words <= 0 || bursts <= most_bursts_without_average)
        return 0.0f;
    return static_cast<float>(words) / static_cast<float>(bursts);
}

void write_port_metrics(ReportSink& node, const PortSamples& port, std::size_t count,
                        const Samples& sample_cycles, int width, float fmax, bool has_bursts) {
    const bool has_write_bursts = has_bursts && count <= port.write_bursts.size();
    const bool has_read_bursts = has_bursts && count <= port.read_bursts.size();
    DerivedSamples bandwidths;
    DerivedSamples write_averages;
    DerivedSamples read_averages;
    SampleCursor<long long> write(port.writes);
    SampleCursor<long long> read(port.reads);
    SampleCursor<long long> write_burst(port.write_bursts);
    SampleCursor<long long> read_burst(port.read_bursts);
    SampleCursor<long long> cycles(sample_cycles);
    for (std::size_t i = 0; i < count; ++i) {
        const long long writes = write.next();
        const long long reads = read.next();
        bandwidths.push_back(used_bandwidth(wrapping_sum(writes, reads), width, cycles.next(), fmax));
        write_averages.push_back(has_write_bursts ? average_burst(writes, write_burst.next()) : 0.0f);
        read_averages.push_back(has_read_bursts ? average_burst(reads, read_burst.next()) : 0.0f);
    }
    bandwidths.append_to(node, "global_used_bw");
    write_averages.append_to(node, "avg_write_burst");
    read_averages.append_to(node, "avg_read_burst");
}

} // namespace

void write_ext_mem(ReportSink& node, const TlyModuleInst& inst, const Samples& sample_cycles,
                   const TlyExtMem& mem, unsigned long interface_index, unsigned long port_index) {
    const int bank = static_cast<int>(interface_index);
    const int port_number = static_cast<int>(port_index);
    const auto samples = [&](ExtMemOpType op) {
        return inst.ext_mem_samples(op, mem.get_name(), bank, port_number);
    };
    const PortSamples port{samples(EXT_MEM_READ), samples(EXT_MEM_WRITE), samples(EXT_MEM_READ_BURST),
                           samples(EXT_MEM_WRITE_BURST)};
    const MessageDetails details{.subject = mem.get_name(), .kernel = inst.getFunction()};
    if (port.reads.empty() && port.writes.empty()) {
        diagnose(Message::memory_without_data, details);
        return;
    }
    node.text("type", "extmem");
    node.text("name", mem.get_name());
    node.text("interface", mem.get_interface_name(bank));
    node.text("port", mem.get_interface_port_name(bank, port_number));
    warn_of_lengths(port, sample_cycles.size(), details);
    const std::size_t count = common_length(port, sample_cycles.size());
    if (port.reads.empty())
        node.boolean("write_only", true);
    else if (port.writes.empty())
        node.boolean("read_only", true);
    write_port_metrics(node, port, count, sample_cycles, mem.get_interface_width(bank), inst.getFmax(),
                       mem.has_max_burst_count() && mem.get_max_burst_count() > 1);
}
