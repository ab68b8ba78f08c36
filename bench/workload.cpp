// SPDX-License-Identifier: Apache-2.0
#include "workload.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <random>

#include "description.h"

namespace {

constexpr const char* pseudo_kernel = "Corvane_Internal_Collect_Autorun_Profiling";
constexpr int counters_per_inst = 3;

struct NamedShape {
    std::string_view name;
    Shape shape;
};

constexpr NamedShape shapes[] = {
    {"S", {3, 10, 5'000, 250, false, 1, 0, 1}}, {"L", {1, 60, 50'000, 0, false, 1, 0, 1}},
    {"M", {50, 4, 600'000, 3, false, 1, 0, 3}}, {"W", {40, 50, 1'000, 0, false, 1, 0, 1}},
    {"A", {20, 20, 5'000, 0, true, 1, 0, 1}},   {"X", {2, 4, 5'000, 0, false, 8, 64, 1}},
};

// What an instance is: its module, its attribute text, and its counters. One that can't have all counters has
// the first ones.
struct Kind {
    const char* module;
    const char* attribute;
    std::vector<std::string> tags;
};

const Kind& wrapper() {
    static const Kind kind{"wrapper", "", {"clock"}};
    return kind;
}

const Kind& global_access() {
    static const Kind kind{"lsu",
                           "__global;read;BURST-COALESCED;DDR0;512;;",
                           {"totalreq", "memorystalls", "bandwidth", "ivalid", "burstcount", "readwritecount",
                            "cachehit", "idle"}};
    return kind;
}

const Kind& channel() {
    static const Kind kind{"kdl_iowr",
                           ";write;;;512;;",
                           {"chwrite_ivalid", "chwrite_fifo_stall", "chwrite_idle", "chwrite_total_req",
                            "chwrite_total_fifo_size", "chwrite_max_fifo_size"}};
    return kind;
}

const Kind& loop() {
    static const Kind kind{"loop_control", "__loop", {"loop_ivalid"}};
    return kind;
}

struct Inst {
    std::string name;
    const Kind* kind;
    std::size_t num_tags;
};

// The instances of one kernel. Loops save up counters for the next access, and the last one takes the rest.
std::vector<Inst> insts_of(const Shape& shape, const std::string& kernel) {
    std::vector<Inst> insts{{kernel + "_function_wrapper_inst", &wrapper(), 1}};
    std::size_t used = 1;
    const Kind* next = &global_access();
    for (int i = 1; i < shape.insts_per_kernel; ++i) {
        const std::size_t left =
            static_cast<std::size_t>(counters_per_inst) * static_cast<std::size_t>(i + 1) - used;
        const bool last = i + 1 == shape.insts_per_kernel;
        const Kind* kind = last ? &global_access() : left >= next->tags.size() ? next : &loop();
        if (kind == next)
            next = next == &channel() ? &global_access() : &channel();
        const std::size_t num_tags = std::min(left, kind->tags.size());
        insts.push_back({"block_" + std::to_string(i), kind, num_tags});
        used += num_tags;
    }
    return insts;
}

std::vector<std::string> port_tags(const Shape& shape, int kernel) {
    std::vector<std::string> tags;
    for (int i = 0; i < shape.ports; ++i) {
        const int memory = i % shape.memories;
        const int port = i / shape.memories;
        const std::string begin = "profile_extmem_k" + std::to_string(kernel) + "_function_DDR" +
                                  std::to_string(memory) + "_bank0_port" + std::to_string(port) +
                                  (i % 2 == 0 ? "_read" : "_write");
        tags.push_back(begin + "_data_inc_en_0");
        tags.push_back(begin + "_burst_count_en_0");
    }
    return tags;
}

// Names of one length, so that their order is that of their numbers.
std::string kernel_name(int i) {
    return "k" + std::to_string(100'000 + i);
}

std::string describe(const Shape& shape) {
    Description description;
    for (const Kind* kind : {&wrapper(), &global_access(), &channel(), &loop()})
        description.module(kind->module, kind->tags);
    if (shape.autorun) {
        description.function(pseudo_kernel);
        const std::string inst = std::string(pseudo_kernel) + "_function_wrapper_inst";
        description.inst(pseudo_kernel, inst, "wrapper").connect(pseudo_kernel, inst, "clock");
    }
    for (int k = 0; k < shape.kernels; ++k) {
        const std::string kernel = kernel_name(k);
        description.function(kernel, "line_number='" + std::to_string(1 + k) + "'");
        Kind own_wrapper{"", wrapper().attribute, {"clock_" + kernel + "_function"}}; // tags are unique
        const std::string module = wrapper().module + ("_of_" + kernel);
        for (std::string& tag : port_tags(shape, k))
            own_wrapper.tags.push_back(std::move(tag));
        own_wrapper.module = module.c_str();
        description.module(module, own_wrapper.tags);
        for (const Inst& inst : insts_of(shape, kernel)) {
            const bool is_wrapper = inst.kind == &wrapper();
            const Kind& kind = is_wrapper ? own_wrapper : *inst.kind;
            description.inst(kernel, inst.name, kind.module, kind.attribute, shape.autorun, false,
                             "<DEBUG file='k.cl' line='2' column='3'/>");
            for (std::size_t i = 0; i < (is_wrapper ? kind.tags.size() : inst.num_tags); ++i)
                description.connect(kernel, inst.name, kind.tags[i]);
        }
    }
    return description.xml();
}

std::string board(const Shape& shape) {
    std::string text =
        "<board version='17.1' name='bench'>"
        "<device device_model='bench.xml'><used_resources><les num='1'/><ffs num='1'/><dsps num='0'/>"
        "<rams num='1'/></used_resources></device>"
        "<compile name='default' project='top' revision='top' plexo_file='system.plexo' "
        "generic_kernel='true'>"
        "<generate cmd='g'/><synthesize cmd='s'/><auto_migrate platform_type='none'/></compile>";
    const int ports_each = std::max(1, (shape.ports + shape.memories - 1) / shape.memories);
    for (int memory = 0; memory < shape.memories; ++memory) {
        const std::string number = std::to_string(memory);
        text += "<global_mem name='DDR" + number + "' max_bandwidth='25600' default='" +
                (memory == 0 ? "1" : "0") + "'><interface name='i" + number +
                "' type='agent' width='512' maxburst='16' address='0x" + std::to_string(1 + memory) +
                "0000000' size='0x10000000'>";
        for (int port = 0; port < ports_each; ++port)
            text += "<port name='p" + number + "_" + std::to_string(port) + "' direction='rw'/>";
        text += "</interface></global_mem>";
    }
    return text +
           "<host><kernel_config start='0x0' size='0x1000'/></host>"
           "<interfaces><kernel_clk_reset clk='c' reset='r'/></interfaces></board>";
}

int counters_of(const Shape& shape) {
    return counters_per_inst * shape.insts_per_kernel + 2 * shape.ports;
}

// The digits of small numbers are as many as those of large ones, as in a real capture.
unsigned counter_value(std::mt19937& random) {
    constexpr std::array<unsigned, 4> bounds = {10, 1'000, 1'000'000, 1'000'000'000};
    const unsigned number = static_cast<unsigned>(random());
    return number % bounds[number >> 30];
}

void append_number(std::string& text, long long number) {
    std::array<char, 24> digits;
    char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    text.append(digits.data(), end);
}

} // namespace

std::optional<Shape> shape_of(std::string_view name) {
    for (const NamedShape& row : shapes) {
        if (row.name == name)
            return row.shape;
    }
    return std::nullopt;
}

bool set_number(Shape& shape, std::string_view name, int value) {
    constexpr std::pair<std::string_view, int Shape::*> numbers[] = {
        {"kernels", &Shape::kernels},
        {"insts_per_kernel", &Shape::insts_per_kernel},
        {"lines", &Shape::lines},
        {"samples", &Shape::samples},
    };
    for (const auto& [known, member] : numbers) {
        if (known == name) {
            shape.*member = value;
            return true;
        }
    }
    return false;
}

PackageSections sections_of(const Shape& shape) {
    return {{".zan.version", "1.0\n"},
            {".zan.board_spec.xml", board(shape)},
            {".zan.velmora_report", "Actual clock freq: 240.5\n"},
            {".zan.profiler.xml", describe(shape)}};
}

void write_monitor(const Shape& shape, std::ostream& out) {
    std::mt19937 random(1);
    const int num_kernels = shape.autorun ? 1 : shape.kernels;
    const int num_counters = shape.autorun ? 1 + shape.kernels * counters_of(shape) : counters_of(shape);
    std::vector<int> samples_of(static_cast<std::size_t>(num_kernels)); // samples so far
    std::string text;
    for (int line = 0; line < shape.lines; ++line) {
        const int kernel = line / shape.num_lines_each % num_kernels;
        const int sample = samples_of[static_cast<std::size_t>(kernel)]++;
        const int invocation = shape.samples == 0 ? 0 : sample / shape.samples;
        const long long start = 1'000'000'000'000 + 1'000'000'000LL * invocation + kernel;
        text.clear();
        if (shape.samples != 0 && sample % (shape.samples * 4) == 0) // transfers go before some invocations
            text =
                "0,1,.mem_transfer_write," + std::to_string(start - 900) + "," + std::to_string(start) + "\n";
        text += "0,1," + (shape.autorun ? pseudo_kernel : kernel_name(kernel)) + "," + std::to_string(start) +
                "," + std::to_string(start + 5'000LL * (1 + sample)) + ",-1," + std::to_string(num_counters);
        for (int counter = 0; counter < num_counters; ++counter) {
            text += ',';
            append_number(
                text, counter == 0 ? 100'000 + static_cast<int>(random() % 100'000) : counter_value(random));
        }
        text += '\n';
        out.write(text.data(), static_cast<std::streamsize>(text.size()));
    }
}
