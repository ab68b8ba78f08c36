// SPDX-License-Identifier: Apache-2.0
// Values are worked out from a row for each block: how much of 1,000 cycles it is valid and stalled, and what
// its requests are like. They vary by a few parts in 100.
#include "pipeline.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "description.h"

namespace {

constexpr const char* autorun_lines = "Corvane_Internal_Collect_Autorun_Profiling";
constexpr std::int64_t first_time = 1'700'000'000'000'000'000;
constexpr std::int64_t sample_cycles = 6'000; // 20 us at 300 MHz
constexpr std::int64_t autorun_cycles = 12'000;

constexpr std::int64_t time_of(std::int64_t cycles) {
    return cycles * 10 / 3;
}

enum class BlockType { load, store, channel_read, channel_write, loop };

// Places in the sources as the elements of a description.
constexpr const char* in_match_current =
    "<DEBUG file=\"device/match.h\" line=\"5\" column=\"20\">"
    "<CALLSITE file=\"device/match.h\" line=\"14\" column=\"9\"/>"
    "<CALLSITE file=\"device/stabilize.cl\" line=\"38\" column=\"22\"/></DEBUG>";
constexpr const char* in_match_previous =
    "<DEBUG file=\"device/match.h\" line=\"5\" column=\"33\">"
    "<CALLSITE file=\"device/match.h\" line=\"14\" column=\"9\"/>"
    "<CALLSITE file=\"device/stabilize.cl\" line=\"38\" column=\"22\"/></DEBUG>";

struct Block {
    const char* kernel;
    const char* name;
    BlockType type;
    int line;            // in device/stabilize.cl, or
    const char* inlined; // what is in its place
    int valid;           // of 1,000 cycles
    int stall;           // of 1,000 cycles
    const char* memory;  // of a load or store
    int width;           // bytes
    int moved;           // bytes on the bus of 1,000 that are requested
    int burst;           // words
    int hits;            // of 1,000 requests
    int unaligned;       // of 1,000 requests
    int depth;           // of a channel
    int max_depth;
};

// Kernels in the order of their lines' counters: the greatest name first among those that run by themselves.
constexpr Block blocks[] = {
    {"track", "load_now", BlockType::load, 0, in_match_current, 310, 280, "HBM", 16, 1'667, 4, 80, 300, 0, 0},
    {"track", "load_before", BlockType::load, 0, in_match_previous, 310, 550, "HBM", 16, 2'500, 2, 80, 610, 0,
     0},
    {"track", "store_motion", BlockType::store, 45, nullptr, 11, 2, "HBM", 4, 2'000, 4, 0, 0, 0, 0},
    {"track", "patch_rows", BlockType::loop, 13, nullptr, 310, 0, "", 0, 0, 0, 0, 0, 0, 0},
    {"track", "shifts", BlockType::loop, 37, nullptr, 20, 0, "", 0, 0, 0, 0, 0, 0, 0},
    {"fetch", "load_frame", BlockType::load, 19, nullptr, 440, 190, "DDR", 64, 1'000, 16, 0, 0, 0, 0},
    {"fetch", "send_raw", BlockType::channel_write, 20, nullptr, 440, 270, "", 64, 0, 0, 0, 0, 52, 64},
    {"fetch", "lines", BlockType::loop, 18, nullptr, 440, 0, "", 0, 0, 0, 0, 0, 0, 0},
    {"merge", "recv_warped", BlockType::channel_read, 57, nullptr, 440, 10, "", 64, 0, 0, 0, 0, 52, 64},
    {"merge", "load_past", BlockType::load, 58, nullptr, 440, 330, "DDR", 64, 1'053, 14, 30, 0, 0, 0},
    {"merge", "load_motion", BlockType::load, 59, nullptr, 30, 2, "HBM", 4, 1'100, 4, 900, 0, 0, 0},
    {"merge", "store_past", BlockType::store, 61, nullptr, 440, 360, "DDR", 64, 1'000, 15, 0, 0, 0, 0},
    {"merge", "send_merged", BlockType::channel_write, 62, nullptr, 440, 4, "", 64, 0, 0, 0, 0, 2, 11},
    {"merge", "pixels", BlockType::loop, 56, nullptr, 440, 0, "", 0, 0, 0, 0, 0, 0, 0},
    {"emit", "recv_graded", BlockType::channel_read, 75, nullptr, 430, 490, "", 64, 0, 0, 0, 0, 1, 10},
    {"emit", "store_frame", BlockType::store, 75, nullptr, 430, 50, "DDR", 64, 1'000, 15, 0, 0, 0, 0},
    {"emit", "rows", BlockType::loop, 74, nullptr, 430, 0, "", 0, 0, 0, 0, 0, 0, 0},
    {"meter", "load_luma", BlockType::load, 82, nullptr, 155, 3, "DDR", 64, 1'000, 16, 0, 0, 0, 0},
    {"meter", "count", BlockType::loop, 81, nullptr, 155, 0, "", 0, 0, 0, 0, 0, 0, 0},
    {"warp", "recv_raw", BlockType::channel_read, 28, nullptr, 440, 4, "", 64, 0, 0, 0, 0, 55, 64},
    {"warp", "send_warped", BlockType::channel_write, 29, nullptr, 440, 350, "", 64, 0, 0, 0, 0, 53, 64},
    {"warp", "forever", BlockType::loop, 27, nullptr, 440, 0, "", 0, 0, 0, 0, 0, 0, 0},
    {"grade", "recv_merged", BlockType::channel_read, 68, nullptr, 440, 10, "", 64, 0, 0, 0, 0, 2, 10},
    {"grade", "send_graded", BlockType::channel_write, 69, nullptr, 440, 3, "", 64, 0, 0, 0, 0, 1, 10},
};

struct Kernel {
    const char* name;
    int line;
    bool autorun;
};
constexpr Kernel kernels[] = {
    {"track", 33, false}, {"fetch", 17, false}, {"merge", 53, false}, {"emit", 72, false},
    {"meter", 78, false}, {"warp", 25, true},   {"grade", 66, true},
};

// A port of a memory: what it carries is the sum of the kernel's accesses of that memory.
struct Port {
    const char* kernel;
    const char* memory;
    int interface;
    bool reads;
    bool writes;
};
constexpr Port ports[] = {
    {"track", "HBM", 0, true, true},  {"fetch", "DDR", 0, true, false}, {"merge", "DDR", 1, true, true},
    {"merge", "HBM", 0, true, false}, {"emit", "DDR", 0, false, true},  {"meter", "DDR", 1, true, false},
};

const std::vector<std::string>& tags_of(BlockType type) {
    static const std::vector<std::string> access = {"ivalid",         "memorystalls", "idle",
                                                    "totalreq",       "bandwidth",    "burstcount",
                                                    "readwritecount", "cachehit",     "unalignedrequests"};
    static const std::vector<std::string> read = {
        "chread_ivalid",    "chread_fifo_stall",      "chread_idle",
        "chread_total_req", "chread_total_fifo_size", "chread_max_fifo_size"};
    static const std::vector<std::string> write = {
        "chwrite_ivalid",    "chwrite_fifo_stall",      "chwrite_idle",
        "chwrite_total_req", "chwrite_total_fifo_size", "chwrite_max_fifo_size"};
    static const std::vector<std::string> loop = {"loop_ivalid"};
    switch (type) {
        case BlockType::channel_read:
            return read;
        case BlockType::channel_write:
            return write;
        case BlockType::loop:
            return loop;
        default:
            return access;
    }
}

const char* module_of(BlockType type) {
    switch (type) {
        case BlockType::channel_read:
            return "kdl_iord";
        case BlockType::channel_write:
            return "kdl_iowr";
        case BlockType::loop:
            return "loop_control";
        default:
            return "lsu";
    }
}

std::string attribute_of(const Block& block) {
    if (block.type == BlockType::loop)
        return "__loop";
    const bool reads = block.type == BlockType::load || block.type == BlockType::channel_read;
    const std::string bits = std::to_string(8 * block.width);
    if (block.memory[0] == '\0')
        return std::string(";") + (reads ? "read" : "write") + ";;;" + bits + ";;";
    const char* const unit = block.unaligned != 0 ? "BURST-NON-ALIGNED" : "BURST-COALESCED";
    return std::string("__global;") + (reads ? "read" : "write") + ";" + unit + ";" + block.memory + ";" +
           bits + ";;" + (block.unaligned != 0 ? "" : "_coalesced");
}

std::string debugs_of(const Block& block) {
    if (block.inlined != nullptr)
        return block.inlined;
    return "<DEBUG file=\"device/stabilize.cl\" line=\"" + std::to_string(block.line) + "\" column=\"9\"/>";
}

std::vector<std::string> wrapper_tags(std::string_view kernel) {
    std::vector<std::string> tags = {"clock_" + std::string(kernel) + "_function"};
    for (const Port& port : ports) {
        if (port.kernel != kernel)
            continue;
        const std::string begin = "profile_extmem_" + std::string(kernel) + "_function_" + port.memory +
                                  "_bank" + std::to_string(port.interface) + "_port0_";
        for (const char* direction : {"read", "write"}) {
            if (!(direction == std::string_view("read") ? port.reads : port.writes))
                continue;
            tags.push_back(begin + direction + "_data_inc_en_0");
            tags.push_back(begin + direction + "_burst_count_en_0");
        }
    }
    return tags;
}

std::string describe() {
    Description description;
    for (const BlockType type :
         {BlockType::load, BlockType::channel_read, BlockType::channel_write, BlockType::loop})
        description.module(module_of(type), tags_of(type));
    description.function(autorun_lines).module("autorun_wrapper", {"clock"});
    const std::string own = std::string(autorun_lines) + "_function_wrapper_inst";
    description.inst(autorun_lines, own, "autorun_wrapper").connect(autorun_lines, own, "clock");
    for (const Kernel& kernel : kernels) {
        const std::string name = kernel.name;
        description.function(name, "line_number='" + std::to_string(kernel.line) + "'");
        description.module(name + "_wrapper", wrapper_tags(name));
        description.inst(name, name + "_function_wrapper_inst", name + "_wrapper", "", kernel.autorun);
        for (const std::string& tag : wrapper_tags(name))
            description.connect(name, name + "_function_wrapper_inst", tag);
        for (const Block& block : blocks) {
            if (block.kernel != name)
                continue;
            description.inst(name, block.name, module_of(block.type), attribute_of(block), kernel.autorun,
                             false, debugs_of(block));
            for (const std::string& tag : tags_of(block.type))
                description.connect(name, block.name, tag);
        }
    }
    return description.xml();
}

std::string interface_of(const std::string& memory, int number) {
    const std::string name = memory + "_" + std::to_string(number);
    return "<interface name='" + name + "' port='kernel_" + name +
           "' type='agent' width='512' maxburst='16' " + "address='0x" + (memory == "DDR" ? "1" : "2") +
           std::to_string(number) + "0000000' size='0x10000000' latency='240'/>";
}

std::string board() {
    return "<board version='17.1' name='vela_pcie'>"
           "<device device_model='vela_200.xml'><used_resources><les num='1'/><ffs num='1'/><dsps num='0'/>"
           "<rams num='1'/></used_resources></device>"
           "<compile name='default' project='top' revision='top' plexo_file='system.plexo' "
           "generic_kernel='true'><generate cmd='g'/><synthesize cmd='s'/>"
           "<auto_migrate platform_type='none'/></compile>"
           "<global_mem name='DDR' max_bandwidth='38400' default='1' interleaved_bytes='0x400'>" +
           interface_of("DDR", 0) + interface_of("DDR", 1) + "</global_mem>" +
           "<global_mem name='HBM' max_bandwidth='51200' default='0'>" + interface_of("HBM", 0) +
           "</global_mem><host><kernel_config start='0x0' size='0x1000'/></host>"
           "<interfaces><kernel_clk_reset clk='c' reset='r'/></interfaces></board>";
}

} // namespace

PackageSections sections_of(const Pipeline&) {
    return {{".zan.version", "4.2.0 Build 117\n"},
            {".zan.board_spec.xml", board()},
            {".zan.velmora_report", "Actual clock freq: 300.0\n"},
            {".zan.profiler.xml", describe()}};
}

namespace {

// A monitor line, to be sorted by its time.
struct Line {
    std::int64_t time;
    std::string text;
};

struct TimeRange {
    std::int64_t begin;
    std::int64_t end;
};

class MonitorWriter {
  public:
    explicit MonitorWriter(const Pipeline& pipeline) : m_pipeline(pipeline) {}

    std::vector<Line> lines();

  private:
    // `amount`, more or less by up to 3 of 100.
    std::int64_t about(std::int64_t amount) {
        return amount + amount * (static_cast<std::int64_t>(m_random() % 61) - 30) / 1000;
    }
    Block as_built(const Block& block) const;
    void transfer(const char* type, int queue, std::int64_t begin, std::int64_t length);
    std::int64_t invocation(const char* kernel, std::int64_t begin, std::int64_t num_samples);
    void autorun(std::int64_t end);
    void block_counters(std::string& text, const Block& block, std::int64_t cycles, std::int64_t working);
    std::string kernel_counters(std::string_view kernel, std::int64_t cycles, std::int64_t working);
    std::int64_t working_cycles(std::int64_t begin, std::int64_t end) const;

    const Pipeline& m_pipeline;
    std::mt19937 m_random{7};
    std::vector<Line> m_lines;
    std::vector<TimeRange> m_phases;                       // in which the pipeline works
    std::vector<std::array<std::int64_t, 4>> m_port_words; // read, read bursts, written, write bursts
};

Block MonitorWriter::as_built(const Block& block) const {
    Block built = block;
    if (!m_pipeline.aligned || std::string_view(block.kernel) != "track")
        return built;
    built.valid = block.valid * 22 / 10;
    built.stall = block.stall / 3;
    if (block.unaligned != 0) {
        built.moved = 1'000;
        built.burst = 16;
        built.unaligned = 10;
    }
    return built;
}

// What isn't valid or stalled is idle. Without work a read end waits, and all else is idle.
void MonitorWriter::block_counters(std::string& text, const Block& block, std::int64_t cycles,
                                   std::int64_t working) {
    const std::int64_t valid = std::min(working, about(working * block.valid / 1'000));
    if (block.type == BlockType::loop) {
        text += "," + std::to_string(valid);
        return;
    }
    const std::int64_t waiting = block.type == BlockType::channel_read ? (cycles - working) * 98 / 100 : 0;
    const std::int64_t stall = std::min(cycles - valid, about(working * block.stall / 1'000) + waiting);
    for (const std::int64_t value : {valid, stall, cycles - valid - stall, valid})
        text += "," + std::to_string(value);
    if (block.memory[0] == '\0') {
        const std::int64_t fill = block.depth * valid;
        const bool reads = block.type == BlockType::channel_read;
        text += "," + std::to_string(reads ? fill : fill + stall * block.max_depth);
        text += "," + std::to_string(valid == 0 ? 0 : block.max_depth);
        return;
    }
    const std::int64_t bytes = valid * block.width * block.moved / 1'000;
    const std::int64_t words = bytes / 64;
    const std::int64_t bursts = words / block.burst;
    for (const std::int64_t value :
         {bytes, words, bursts, valid * block.hits / 1'000, valid * block.unaligned / 1'000})
        text += "," + std::to_string(value);
    for (std::size_t i = 0; i < std::size(ports); ++i) {
        if (std::string_view(ports[i].kernel) != block.kernel ||
            std::string_view(ports[i].memory) != block.memory)
            continue;
        const std::size_t place = block.type == BlockType::load ? 0 : 2;
        m_port_words[i][place] += words;
        m_port_words[i][place + 1] += bursts;
    }
}

// The counters of the wrapper stand first, and hold what the accesses of the kernel add up to.
std::string MonitorWriter::kernel_counters(std::string_view kernel, std::int64_t cycles,
                                           std::int64_t working) {
    m_port_words.assign(std::size(ports), {});
    std::string of_blocks;
    for (const Block& block : blocks) {
        if (block.kernel == kernel)
            block_counters(of_blocks, as_built(block), cycles, working);
    }
    std::string text = "," + std::to_string(cycles);
    for (std::size_t i = 0; i < std::size(ports); ++i) {
        if (ports[i].kernel != kernel)
            continue;
        const auto& [reads, read_bursts, writes, write_bursts] = m_port_words[i];
        if (ports[i].reads)
            text += "," + std::to_string(reads) + "," + std::to_string(read_bursts);
        if (ports[i].writes)
            text += "," + std::to_string(writes) + "," + std::to_string(write_bursts);
    }
    return text + of_blocks;
}

std::int64_t count_counters(std::string_view counters) {
    return std::count(counters.begin(), counters.end(), ',');
}

void MonitorWriter::transfer(const char* type, int queue, std::int64_t begin, std::int64_t length) {
    m_lines.push_back({begin + length, "0," + std::to_string(queue) + "," + type + "," +
                                           std::to_string(begin) + "," + std::to_string(begin + length)});
}

// Returns its end.
std::int64_t MonitorWriter::invocation(const char* kernel, std::int64_t begin, std::int64_t num_samples) {
    std::int64_t time = begin;
    for (std::int64_t i = 0; i < num_samples; ++i) {
        const bool is_last = i + 1 == num_samples; // the run's end, not a full interval
        const std::int64_t cycles =
            is_last ? 3 * (100 + static_cast<std::int64_t>(m_random() % 1'800)) : sample_cycles;
        time += time_of(cycles);
        const std::string counters = kernel_counters(kernel, cycles, cycles);
        m_lines.push_back({time, "0,1," + std::string(kernel) + "," + std::to_string(begin) + "," +
                                     std::to_string(time) + ",-1," +
                                     std::to_string(count_counters(counters)) + counters});
    }
    return time;
}

std::int64_t MonitorWriter::working_cycles(std::int64_t begin, std::int64_t end) const {
    std::int64_t working = 0;
    for (const TimeRange& phase : m_phases)
        working += std::max<std::int64_t>(0, std::min(end, phase.end) - std::max(begin, phase.begin));
    return working * 3 / 10;
}

void MonitorWriter::autorun(std::int64_t end) {
    for (std::int64_t time = first_time; time < end; time += time_of(autorun_cycles)) {
        const std::int64_t sampled = time + time_of(autorun_cycles);
        const std::int64_t working = working_cycles(time, sampled);
        std::string counters = "," + std::to_string(autorun_cycles);
        for (const char* kernel : {"warp", "grade"})
            counters += kernel_counters(kernel, autorun_cycles, working);
        m_lines.push_back({sampled, "0,1," + std::string(autorun_lines) + "," + std::to_string(first_time) +
                                        "," + std::to_string(sampled) + ",-1," +
                                        std::to_string(count_counters(counters)) + counters});
    }
}

std::vector<Line> MonitorWriter::lines() {
    constexpr std::int64_t stage_delay = 30'000; // until the first pixels have come through a stage
    std::int64_t time = first_time;
    for (int frame = 0; frame < m_pipeline.num_frames; ++frame) {
        transfer(".mem_transfer_write", 2, time, 300'000);
        time += 300'000 + about(20'000);
        time = invocation("track", time, about(m_pipeline.aligned ? 30 : 60)) + 15'000;
        const std::int64_t num_samples = about(40);
        const std::int64_t begin = time;
        time = invocation("fetch", begin, num_samples);
        time = std::max(time, invocation("merge", begin + stage_delay, num_samples));
        time = std::max(time, invocation("emit", begin + 2 * stage_delay, num_samples));
        m_phases.push_back({begin, time});
        time = invocation("meter", time + 15'000, about(12));
        transfer(".mem_transfer_read", 3, time + 10'000, 400'000);
        time += 410'000 + about(150'000);
    }
    autorun(time);
    std::ranges::stable_sort(m_lines, {}, &Line::time);
    return std::move(m_lines);
}

} // namespace

void write_monitor(const Pipeline& pipeline, std::ostream& out) {
    for (const Line& line : MonitorWriter(pipeline).lines())
        out << line.text << '\n';
}
