// SPDX-License-Identifier: Apache-2.0
#include "slow_decoder.h"

#include "slow_text.h"

namespace slow {

namespace {

constexpr int not_shared = -1;

// What a counter's tag means.
struct Meaning {
    std::string family;
    int shared_type = not_shared; // the runs in which a shared counter holds it
};

const std::map<std::string, Meaning> meanings = {
    {"ostall", {"ostall"}},
    {"chread_ostall", {"ostall"}},
    {"chwrite_ostall", {"ostall"}},
    {"istall", {"istall"}},
    {"chread_istall", {"istall"}},
    {"chwrite_istall", {"istall"}},
    {"memorystalls", {"stall", 1}},
    {"chread_fifo_stall", {"stall", 1}},
    {"chwrite_fifo_stall", {"stall", 1}},
    {"ivalid", {"valid", 0}},
    {"chread_ivalid", {"valid", 0}},
    {"chwrite_ivalid", {"valid", 0}},
    {"loop_ivalid", {"valid", 0}},
    {"totalreq", {"requests", 3}},
    {"chread_total_req", {"requests", 3}},
    {"chwrite_total_req", {"requests", 3}},
    {"unalignedrequests", {"unaligned"}},
    {"cachehit", {"hits"}},
    {"bandwidth", {"bandwidth"}},
    {"idle", {"idle", 2}},
    {"chread_idle", {"idle", 2}},
    {"chwrite_idle", {"idle", 2}},
    {"readwritecount", {"bursts"}},
    {"burstcount", {"words"}},
    {"chread_total_fifo_size", {"total fifo"}},
    {"chwrite_total_fifo_size", {"total fifo"}},
    {"chread_max_fifo_size", {"max fifo"}},
    {"chwrite_max_fifo_size", {"max fifo"}},
};

const std::vector<std::string> families = {"ostall",    "istall",     "stall",     "valid", "requests",
                                           "unaligned", "hits",       "bandwidth", "idle",  "bursts",
                                           "words",     "total fifo", "max fifo"};

bool is_cycle_tag(const Inst& inst, const std::string& tag) {
    return tag == "clock" || tag == "clock_" + inst.function + "_function";
}

// The text between two places. If the second lies before the first, everything after the first.
std::string between(const std::string& text, std::size_t from, std::size_t to) {
    return to < from ? text.substr(from) : text.substr(from, to - from);
}

std::string kind_of_port(Run& run, const std::string& tag) {
    const std::pair<const char*, const char*> kinds[] = {{"_read_data_inc_en_", "read"},
                                                         {"_write_data_inc_en_", "write"},
                                                         {"_read_burst_count_en_", "read burst"},
                                                         {"_write_burst_count_en_", "write burst"}};
    for (const auto& [word, kind] : kinds) {
        if (tag.find(word) != std::string::npos)
            return kind;
    }
    run.say("WARNING: extmem port tag does not match an op type");
    return "read burst";
}

void add_port_sample(Run& run, Inst& inst, const std::string& tag, long long value) {
    const std::string kind = kind_of_port(run, tag);
    const std::size_t function = tag.find("_function_");
    const std::size_t bank = tag.find("_bank");
    const std::size_t port = tag.find("_port");
    if (function == std::string::npos || bank == std::string::npos || port == std::string::npos) {
        run.say("WARNING: something went wrong when decoding the properties of the external memory " + tag);
        return;
    }
    const std::string memory = between(tag, function + 10, bank);
    const std::string bank_text = between(tag, bank + 5, port);
    const std::string port_text = tag.substr(port + 5);
    const std::optional<int> bank_number = to_int(bank_text);
    if (!bank_number || *bank_number < 0) {
        run.say("WARNING: value for external memory bank was invalid: " + bank_text);
        return;
    }
    const std::optional<int> port_number = to_int(port_text);
    if (!port_number || *port_number < 0) {
        run.say("WARNING: value for external memory port was invalid: " + port_text);
        return;
    }
    inst.memories[memory][{kind, *bank_number, *port_number}].push_back(value);
}

void add_value(Run& run, Inst& inst, const std::string& tag, long long value) {
    if (is_cycle_tag(inst, tag)) {
        inst.has_cycles = true;
        run.current_cycles = sum(run.current_cycles, value);
        return;
    }
    const auto found = meanings.find(tag);
    if (found == meanings.end()) {
        if (tag.find("profile_extmem_") != std::string::npos)
            add_port_sample(run, inst, tag, value);
        return;
    }
    const std::string& family = found->second.family;
    inst.current[family] = sum(inst.current[family], value);
    inst.has_requests = inst.has_requests || family == "requests";
    inst.has_total_fifo = inst.has_total_fifo || family == "total fifo";
    inst.has_max_fifo = inst.has_max_fifo || family == "max fifo";
}

long long counter_value(Run& run, const std::vector<std::string>& fields, int field, int line_number) {
    const bool is_there = field >= 0 && static_cast<std::size_t>(field) < fields.size();
    const std::string text = is_there ? fields[static_cast<std::size_t>(field)] : "";
    const std::optional<long long> value = to_int64(text);
    if (!value)
        run.say("WARNING: value for counter at line " + std::to_string(line_number) +
                " was invalid: " + text + ".counter");
    return value.value_or(-1);
}

} // namespace

void read_counters(Run& run, Inst& inst, const std::vector<std::string>& fields, int shared_type,
                   int line_number) {
    inst.current.clear();
    run.current_cycles = 0;
    for (const Counter& counter : inst.counters) {
        if (counter.compute_unit != 0)
            continue;
        const long long value = counter_value(run, fields, counter.field, line_number);
        if (shared_type == 0)
            inst.has_requests = true;
        const auto found = meanings.find(counter.tag);
        const int kind = found == meanings.end() ? not_shared : found->second.shared_type;
        if (shared_type == not_shared || kind == not_shared || kind == shared_type)
            add_value(run, inst, counter.tag, value);
    }
    for (const std::string& family : families)
        inst.samples[family].push_back(inst.current[family]);
    if (inst.has_cycles)
        run.cycles[inst.function].push_back(run.current_cycles);
}

Samples total_cycles(Run& run, const Inst& inst) {
    const auto found = run.cycles.find(inst.function);
    if (found != run.cycles.end())
        return found->second;
    run.say("WARNING: No total cycles found for kernel " + inst.function);
    return {};
}

void reset(Run& run, Inst& inst) {
    inst.current.clear();
    inst.samples.clear();
    inst.has_requests = false;
    inst.has_total_fifo = false;
    inst.has_max_fifo = false;
    inst.has_cycles = false;
    const auto found = run.cycles.find(inst.function);
    if (found != run.cycles.end())
        found->second.clear();
    inst.memories.clear();
}

void reset(Run& run, Kernel& kernel) {
    kernel.shared_type = -1;
    kernel.devices.clear();
    kernel.queues.clear();
    kernel.times.clear();
    kernel.cycles.clear();
    for (Inst& inst : kernel.insts)
        reset(run, inst);
}

Samples samples(const Inst& inst, const std::string& family) {
    const auto found = inst.samples.find(family);
    return found == inst.samples.end() ? Samples() : found->second;
}

Samples port_samples(const Inst& inst, const std::string& memory, const std::string& kind, int bank,
                     int port) {
    const auto found = inst.memories.find(memory);
    if (found == inst.memories.end())
        return {};
    const auto list = found->second.find({kind, bank, port});
    return list == found->second.end() ? Samples() : list->second;
}

} // namespace slow
