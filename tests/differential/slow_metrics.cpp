// SPDX-License-Identifier: Apache-2.0
#include "slow_metrics.h"

#include <algorithm>

#include "slow_decoder.h"
#include "slow_text.h"

namespace slow {

namespace {

// Requests if there is a counter for them, else valid cycles.
Samples requests(const Inst& inst) {
    return samples(inst, inst.has_requests ? "requests" : "valid");
}

int width_in_bytes(Run& run, const Inst& inst) {
    const std::optional<int> bits = to_int(inst.width_in_bits);
    if (bits)
        return *bits / 8;
    run.say("Warning: value for byte width for moduleinst " + inst.name +
            " was invalid: " + inst.width_in_bits);
    run.say("Warning: unable to parse the byte width. Setting byte width to 1.");
    return 1;
}

// The clock is in MHz, so a thousandth of it is in cycles a nanosecond.
long long nanoseconds(long long cycles, float fmax) {
    const float cycles_in_ns = fmax / 1000.0f;
    return truncated(static_cast<double>(cycles) / static_cast<double>(cycles_in_ns));
}

// Bytes in some seconds as megabytes a second, rounded up to a tenth.
float megabytes_a_second(float bytes, float seconds) {
    return rounded_up(bytes / seconds / 100000.0f, 10.0f);
}

// One sample of an instance that has bandwidths.
void add_bandwidth(Bandwidths& result, const Inst& inst, long long request, long long moved, int width,
                   long long cycles) {
    const long long ns = nanoseconds(cycles, inst.fmax);
    float bandwidth = 0.0f;
    float efficiency = 0.0f;
    if (ns != 0) {
        const float seconds = 1e-9f * static_cast<float>(ns);
        const float used =
            megabytes_a_second(static_cast<float>(request) * static_cast<float>(width), seconds);
        bandwidth = is_channel(inst) ? used : megabytes_a_second(static_cast<float>(moved), seconds);
        efficiency = bandwidth == 0.0f ? 0.0f : used / bandwidth;
    }
    result.bandwidth.push_back(bandwidth);
    if (!is_channel(inst))
        result.efficiency.push_back(efficiency);
}

std::size_t shortest(const Samples& a, const Samples& b) {
    return std::min(a.size(), b.size());
}

// How many samples a port has in common with the clock; says so if they don't agree.
std::size_t common_length(Run& run, const Samples& reads, const Samples& writes, const Samples& cycles) {
    if (reads.empty()) {
        if (cycles.size() != writes.size())
            run.say(
                "Warning: number of external memory write samples is not equal to the total number of clock "
                "samples");
        return shortest(writes, cycles);
    }
    if (writes.empty()) {
        if (cycles.size() != reads.size())
            run.say(
                "Warning: number of external memory read samples is not equal to the total number of clock "
                "samples");
        return shortest(reads, cycles);
    }
    if (writes.size() != reads.size() || cycles.size() != writes.size())
        run.say(
            "Warning: number of external memory write samples is not equal to number of external memory read "
            "samples and/or the total number of samples");
    return std::min(shortest(reads, writes), cycles.size());
}

float port_bandwidth(const Inst& inst, long long words, int width, long long cycles) {
    if (words <= 0)
        return 0.0f;
    const float bytes = static_cast<float>(words) * static_cast<float>(width) * 0.125f;
    const float seconds = static_cast<float>(nanoseconds(cycles, inst.fmax)) * 1e-9f;
    return megabytes_a_second(bytes, seconds);
}

// The average of one sample, with more than ten bursts and a memory that has bursts.
float port_burst(long long words, const Samples& bursts, std::size_t sample, std::size_t length,
                 unsigned max_burst) {
    const bool is_known = words > 0 && max_burst > 1 && length <= bursts.size() && bursts[sample] > 10;
    return is_known ? static_cast<float>(words) / static_cast<float>(bursts[sample]) : 0.0f;
}

} // namespace

bool is_channel(const Inst& inst) {
    return inst.module == "kdl_iowr" || inst.module == "kdl_iord";
}

bool is_global(const Inst& inst) {
    return inst.memory_type == "__global";
}

Floats channel_depths(Run& run, const Inst& inst) {
    if (inst.has_max_fifo != inst.has_total_fifo)
        run.say("Warning: only one of max and total fifo size counters exists in profile.mon.");
    if (inst.shared || !inst.has_total_fifo)
        return {};
    const Samples total = samples(inst, "total fifo");
    const Samples stalls = samples(inst, "stall");
    const Samples used = requests(inst);
    if (total.size() != stalls.size() || total.size() != used.size())
        run.say(
            "Warning: numbers of fifo size counts, channel stall counts, and request or invalid counts do "
            "not "
            "match.");
    Floats depths;
    for (std::size_t i = 0; i < std::min(shortest(total, stalls), used.size()); ++i) {
        const long long cycles = sum(used[i], stalls[i]);
        const float fill = static_cast<float>(total[i]) / static_cast<float>(cycles) * 100.0f;
        depths.push_back(cycles == 0 ? 0.0f : rounded_up(fill, 100.0f));
    }
    return depths;
}

Bandwidths bandwidths(Run& run, const Inst& inst, const Samples& cycles) {
    const Samples asked = requests(inst);
    const Samples moved = samples(inst, "bandwidth");
    const int width = width_in_bytes(run, inst);
    if (cycles.size() != asked.size())
        run.say("Warning: number of cycle samples is not equal to number of valid cycles");
    Bandwidths result;
    for (std::size_t i = 0; i < shortest(cycles, asked); ++i) {
        if (asked[i] == -1)
            run.say("Warning: Invalid request count. Bandwidth measurement might be incorrect.");
        result.activity.push_back(asked[i]);
        if (is_channel(inst) || is_global(inst))
            add_bandwidth(result, inst, asked[i], moved[i], width, cycles[i]);
    }
    return result;
}

Floats average_bursts(Run& run, const Inst& inst) {
    const Samples words = samples(inst, "words");
    const Samples bursts = samples(inst, "bursts");
    if (words.size() != bursts.size())
        run.say(
            "Warning: Number of Total burst word samples does not match number of n bursts. May result in "
            "incorrect average burst size data");
    Floats averages;
    for (std::size_t i = 0; i < shortest(words, bursts); ++i) {
        const int count = static_cast<int>(bursts[i]); // the low half of it
        if (count <= 0)
            continue;
        const float average = static_cast<float>(words[i]) / static_cast<float>(count);
        if (average >= 0.0f)
            averages.push_back(average);
    }
    return averages;
}

PortMetrics port_metrics(Run& run, const Inst& inst, const Samples& cycles, const Memory& memory,
                         int interface, int port) {
    const Samples reads = port_samples(inst, memory.name, "read", interface, port);
    const Samples writes = port_samples(inst, memory.name, "write", interface, port);
    const Samples read_bursts = port_samples(inst, memory.name, "read burst", interface, port);
    const Samples write_bursts = port_samples(inst, memory.name, "write burst", interface, port);
    const Interface& used = memory.interfaces[static_cast<std::size_t>(interface)];
    const int width = static_cast<int>(used.width);

    PortMetrics result;
    result.write_only = reads.empty();
    result.read_only = writes.empty();
    const std::size_t length = common_length(run, reads, writes, cycles);
    for (std::size_t i = 0; i < length; ++i) {
        const long long read = reads.empty() ? 0 : reads[i];
        const long long written = writes.empty() ? 0 : writes[i];
        result.bandwidth.push_back(port_bandwidth(inst, sum(written, read), width, cycles[i]));
        result.write_burst.push_back(port_burst(written, write_bursts, i, length, used.max_burst));
        result.read_burst.push_back(port_burst(read, read_bursts, i, length, used.max_burst));
    }
    return result;
}

} // namespace slow
