// SPDX-License-Identifier: Apache-2.0
// Which keys a node has depends on what the instance is: docs/report.md lists them.
//
// What must hold: the lists of one instance may differ in length. A metric has as many values as the shortest
// of the lists that set its length; others read as zeros past their end. Metrics go over lists by cursors,
// which read blocks of values: an index would look for each value whether the list stores it.
#include "module_node.h"

#include <algorithm>

#include "derived_samples.h"
#include "diagnostics.h"
#include "number_text.h"
#include "report_formulas.h"
#include "source_node.h"

namespace {

using Samples = SampleList<long long>;

MessageDetails of_inst(const TlyModuleInst& inst) {
    return {.kernel = inst.getFunction(), .block = inst.getName()};
}

// What an instance is decides which keys its node has. One instance can be several of these.
struct Kind {
    bool channel;
    bool global;
    bool global_read;

    explicit Kind(const TlyModuleInst& inst)
        : channel(inst.getModule() == write_channel || inst.getModule() == read_channel),
          global(inst.getAttrMemoryType() == addrspace_global),
          global_read(global && inst.getAttrRw() == opt_type_read) {}
};

// The requests of each sample: counted ones, or the valid cycles where nothing counted requests.
const Samples& requests_of(const TlyModuleInst& inst) {
    return inst.samples(inst.getIReqCountValid() ? Counter::ireq : Counter::ivalid);
}

void write_location(ReportSink& node, const TlyModuleInst& inst, int i) {
    write_source(node, inst.getFileName(i).c_str(), inst.getLine(i), inst.getColNum(i));
}

// Writes the call chains of the instance's flat list, where each location is followed by its call sites, the
// innermost first. The walk goes backwards, so the entries come in reverse order of the debug records.
void write_sources(ReportSink& node, const TlyModuleInst& inst) {
    node.open("sourcefiles", Form::array);
    int end = std::min(std::min(inst.getNumLines(), inst.getNumFilenames()) - 1, inst.getNumCols()) + 1;
    while (end > 0) {
        int begin = end - 1;
        while (begin > 0 && inst.getIsCallsite(begin) != 0)
            --begin;
        node.open({}, Form::object);
        write_location(node, inst, begin);
        for (int i = begin + 1; i < end; ++i) {
            node.open("callsite", Form::array);
            node.open({}, Form::object);
            write_location(node, inst, i);
        }
        for (int i = begin + 1; i < end; ++i) {
            node.close();
            node.close();
        }
        node.close();
        end = begin;
    }
    node.close();
}

void write_channel_depth(ReportSink& details, const TlyModuleInst& inst) {
    if (inst.getHasMaxFifoSize() != inst.getHasTotalFifoSize())
        diagnose(Message::one_channel_size, of_inst(inst));
    if (!inst.compiledSharedCounters() && inst.getHasTotalFifoSize()) {
        const Samples& fills = inst.samples(Counter::total_fifo);
        const Samples& stalls = inst.samples(Counter::ext_stall);
        const Samples& requests = requests_of(inst);
        if (fills.size() != stalls.size() || fills.size() != requests.size())
            diagnose(Message::channel_counts_differ, of_inst(inst));
        DerivedSamples depths;
        SampleCursor<long long> fill(fills);
        SampleCursor<long long> request(requests);
        SampleCursor<long long> stall(stalls);
        const std::size_t count = std::min({fills.size(), stalls.size(), requests.size()});
        for (std::size_t i = 0; i < count; ++i)
            depths.push_back(average_channel_depth(fill.next(), request.next(), stall.next()));
        depths.append_to(details, "average_channel_depth_samples");
    }
    if (inst.getHasMaxFifoSize())
        details.samples("max_channel_depth_samples", inst.samples(Counter::max_fifo));
}

// The instance's width in whole bytes; 1 if its attribute is no number of bits.
int byte_width_of(const TlyModuleInst& inst) {
    const auto bits = parse_int(inst.getAttrByteWidth());
    if (bits)
        return *bits / 8;
    MessageDetails details = of_inst(inst);
    details.subject = inst.getAttrByteWidth();
    diagnose(Message::width_invalid, details);
    diagnose(Message::width_replaced, details);
    return 1;
}

struct Bandwidth {
    float used;       // megabytes a second that crossed the instance
    float efficiency; // the share of it that was requested
};

// `transferred` is the count of bytes on the memory's bus in the sample.
Bandwidth bandwidth_of(bool channel, long long requests, int byte_width, long long transferred,
                       long long cycles, float fmax) {
    const long long nanoseconds = cycles_to_nanoseconds(cycles, fmax);
    if (nanoseconds == 0)
        return {0.0f, 0.0f};
    const float seconds = nanoseconds_to_seconds(nanoseconds);
    const float requested =
        megabytes_per_second(static_cast<float>(requests) * static_cast<float>(byte_width), seconds);
    const float used = channel ? requested : megabytes_per_second(static_cast<float>(transferred), seconds);
    return {used, used == 0.0f ? 0.0f : requested / used};
}

void write_bandwidth(ReportSink& details, const TlyModuleInst& inst, const Kind& kind,
                     const Samples& sample_cycles) {
    const Samples& requests = requests_of(inst);
    const Samples& transferred = inst.samples(Counter::bandwidth);
    const int byte_width = byte_width_of(inst);
    const float fmax = inst.getFmax();
    if (sample_cycles.size() != requests.size())
        diagnose(Message::request_count_differs, of_inst(inst));

    DerivedSamples bandwidths;
    DerivedSamples efficiencies;
    SampleCursor<long long> request(requests);
    SampleCursor<long long> transfer(transferred);
    SampleCursor<long long> cycles(sample_cycles);
    const std::size_t count = std::min(sample_cycles.size(), requests.size());
    for (std::size_t i = 0; i < count; ++i) {
        const long long num_requests = request.next();
        if (num_requests == -1)
            diagnose(Message::requests_invalid, of_inst(inst));
        if (!kind.channel && !kind.global)
            continue;
        const Bandwidth bandwidth =
            bandwidth_of(kind.channel, num_requests, byte_width, transfer.next(), cycles.next(), fmax);
        bandwidths.push_back(bandwidth.used);
        if (!kind.channel)
            efficiencies.push_back(bandwidth.efficiency);
    }
    details.samples("activity_samples", requests.first(count));
    bandwidths.append_to(details, "bandwidth_samples");
    efficiencies.append_to(details, "bandwidth_eff_samples");
}

void write_cache_hits(ReportSink& details, const TlyModuleInst& inst) {
    const std::string& lsu_type = inst.getAttrLsuType();
    if (lsu_type == BURST_NON_ALIGNED || lsu_type == BURST_COALESCED || lsu_type == SEMI_STREAMING)
        details.samples("cache_hit_samples", inst.samples(Counter::cachehit));
    if (lsu_type == BURST_NON_ALIGNED)
        details.samples("non_aligned_access_samples", inst.samples(Counter::unaligned));
}

// Samples without bursts are left out, so the averages may be fewer than the samples.
DerivedSamples average_burst_sizes(const TlyModuleInst& inst) {
    const Samples& words = inst.samples(Counter::burst_words);
    const Samples& bursts = inst.samples(Counter::nbursts);
    if (words.size() != bursts.size())
        diagnose(Message::bursts_differ, of_inst(inst));
    DerivedSamples averages;
    SampleCursor<long long> word(words);
    SampleCursor<long long> burst(bursts);
    const std::size_t count = std::min(words.size(), bursts.size());
    for (std::size_t i = 0; i < count; ++i) {
        const long long num_words = word.next();
        const int num_bursts = static_cast<int>(burst.next()); // 32 bits are what the average is made of
        if (num_bursts <= 0)
            continue;
        const float average = static_cast<float>(num_words) / static_cast<float>(num_bursts);
        if (average >= 0.0f)
            averages.push_back(average);
    }
    return averages;
}

// What the description says of the instance, up to the first of its samples. The details stay open.
void write_description(ReportSink& node, const TlyModuleInst& inst) {
    node.text("type", "moduleinst");
    node.text("name", inst.getName());
    write_sources(node, inst);
    node.open("module_inst_details", Form::object);
    if (!inst.getAttrMemoryType().empty())
        node.text("mem_type", inst.getAttrMemoryType());
    if (!inst.getAttrRw().empty())
        node.text("operation_type", inst.getAttrRw());
}

void write_details(ReportSink& details, const TlyModuleInst& inst, const Samples& sample_cycles) {
    details.samples("occupancy_samples", inst.samples(Counter::ivalid));
    if (inst.getAttrMemoryType() == loop_module)
        return;

    const Kind kind(inst);
    details.samples("stall_samples", inst.samples(Counter::ext_stall));
    details.samples("idle_samples", inst.samples(Counter::idle));
    write_channel_depth(details, inst);
    write_bandwidth(details, inst, kind, sample_cycles);
    if (kind.global_read)
        write_cache_hits(details, inst);
    const bool coalesced = inst.getAttrMemoryOpt().find(memoryopt_coalesced) != std::string::npos;
    details.boolean("coalesced_memory", coalesced);
    DerivedSamples burst_sizes = average_burst_sizes(inst);
    if (kind.global && !burst_sizes.empty()) {
        details.text("global_mem_name", inst.getAttrGlobalMemName());
        burst_sizes.append_to(details, "average_burst_size");
    }
}

} // namespace

void write_module(ReportSink& node, const TlyModuleInst& inst, const Samples& sample_cycles) {
    if (inst.getNumLines() != inst.getNumFilenames() || inst.getNumLines() != inst.getNumCols())
        diagnose(Message::locations_differ, of_inst(inst));
    node.part_of(inst.description_number(), [&](ReportSink& sink) { write_description(sink, inst); });
    write_details(node, inst, sample_cycles);
    node.close();
}
