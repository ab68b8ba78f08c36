// SPDX-License-Identifier: Apache-2.0
#include "design_generator.h"

#include <algorithm>
#include <map>
#include <set>
#include <sstream>

#include "known_names.h"

namespace slow {

namespace {

const std::vector<std::string> kernel_names = {"alpha",
                                               "beta",
                                               "conv2d",
                                               "k",
                                               "sum",
                                               "kernel_bank_port",
                                               "gamma_function",
                                               "0third",
                                               "name of blanks",
                                               "<odd&\"name'>",
                                               "\xC3\xBC",
                                               "x.y",
                                               "-1",
                                               "Zeta/eta\\theta"};

const std::vector<std::string> channel_read_tags = {
    "chread_istall", "chread_fifo_stall",      "chread_ostall",        "chread_ivalid", "chread_total_req",
    "chread_idle",   "chread_total_fifo_size", "chread_max_fifo_size", "chread_shared"};
const std::vector<std::string> channel_write_tags = {
    "chwrite_istall",          "chwrite_fifo_stall",    "chwrite_ostall",
    "chwrite_ivalid",          "chwrite_total_req",     "chwrite_idle",
    "chwrite_total_fifo_size", "chwrite_max_fifo_size", "chwrite_shared"};
const std::vector<std::string> unit_tags = {
    "burstcount",        "istall",   "memorystalls",   "ostall", "ivalid", "totalreq", "bandwidth",
    "unalignedrequests", "cachehit", "readwritecount", "idle",   "shared", "mystery",  "Ivalid"};

// Tags of counters that a shared one may hold, and a few more.
const std::set<std::string> shareable = {"ivalid",
                                         "chread_ivalid",
                                         "chwrite_ivalid",
                                         "loop_ivalid",
                                         "memorystalls",
                                         "chread_fifo_stall",
                                         "idle",
                                         "chread_idle",
                                         "chwrite_idle",
                                         "chread_total_req",
                                         "chwrite_total_req",
                                         "chwrite_fifo_stall",
                                         "totalreq",
                                         "burstcount"};

std::string escaped(const std::string& text) {
    const std::map<char, std::string> entities = {
        {'<', "&lt;"}, {'>', "&gt;"}, {'&', "&amp;"}, {'"', "&quot;"}, {'\'', "&apos;"}};
    std::string result;
    for (const char c : text) {
        const auto found = entities.find(c);
        result += found == entities.end() ? std::string(1, c) : found->second;
    }
    return result;
}

struct InstPlan {
    std::string name;
    std::string module;
    std::size_t kernel = 0;
    bool autorun = false;
    bool shared = false;
};

struct ConnectionPlan {
    std::size_t inst = 0;
    std::string tag;
    std::string shared_with;
};

class DesignGenerator {
  public:
    DesignGenerator(Dice& dice, const std::vector<std::string>& memories)
        : m_dice(dice), m_memories(memories) {}
    Design make();

  private:
    void make_kernels();
    void make_modules();
    void make_tags();
    void add_tags(const std::vector<std::string>& tags, const std::string& module);
    std::vector<std::string> port_tags();
    void make_insts();
    void add_inst(std::size_t kernel, const std::string& name);
    void make_connections();
    void connect(std::size_t inst);
    void count_counters();

    void write_functions();
    void write_modules();
    void write_ports();
    void write_insts();
    void write_attribute();
    void write_locations();
    void write_place(const std::string& element, const std::string& end);
    void write_connections();

    Dice& m_dice;
    const std::vector<std::string>& m_memories;
    Design m_design;
    std::vector<std::size_t> m_num_compute_units;
    std::vector<std::string> m_modules;
    std::vector<std::pair<std::string, std::string>> m_tags; // with their modules
    std::vector<InstPlan> m_insts;
    std::vector<ConnectionPlan> m_connections;
    std::ostringstream m_xml;
};

Design DesignGenerator::make() {
    m_design.shared = m_dice.chance(35);
    make_kernels();
    make_modules();
    make_insts();
    make_tags();
    make_connections();
    count_counters();
    m_xml << "<?xml version=\"1.0\"?>\n<PROFILER>\n";
    write_functions();
    write_modules();
    write_ports();
    write_insts();
    write_connections();
    m_xml << "</PROFILER>\n";
    m_design.xml = m_xml.str();
    return m_design;
}

void DesignGenerator::make_kernels() {
    std::vector<std::string> names = kernel_names;
    m_dice.shuffle(names);
    names.resize(m_dice.below(5));
    const bool has_autorun = m_dice.chance(40);
    if (has_autorun && m_dice.chance(90))
        names.push_back(pseudo_kernel);
    m_dice.shuffle(names);
    for (const std::string& name : names) {
        DesignKernel kernel;
        kernel.name = name;
        kernel.autorun = has_autorun && m_dice.chance(name == pseudo_kernel ? 20 : 60);
        if (m_dice.chance(25))
            kernel.original_name = m_dice.pick<std::string>({"original", "beta", "k", "o/" + name});
        m_design.kernels.push_back(kernel);
        m_num_compute_units.push_back(m_dice.between(1, 3));
    }
}

void DesignGenerator::make_modules() {
    m_modules = {"kdl_iord", "kdl_iowr", "unit", "wrapper"};
    for (const char* name : {"loop", "other"}) {
        if (m_dice.chance(50))
            m_modules.push_back(name);
    }
}

// A tag belongs to one module, mostly to the one that suits it.
void DesignGenerator::add_tags(const std::vector<std::string>& tags, const std::string& module) {
    for (const std::string& tag : tags) {
        if (m_dice.chance(85))
            m_tags.push_back({tag, m_dice.chance(80) ? module : m_dice.pick(m_modules)});
    }
}

void DesignGenerator::make_tags() {
    add_tags(channel_read_tags, "kdl_iord");
    add_tags(channel_write_tags, "kdl_iowr");
    add_tags(unit_tags, "unit");
    add_tags({"loop_ivalid"}, m_modules.back());
    add_tags({"clock"}, m_dice.pick(m_modules));
    for (std::size_t i = m_insts.size(); i > 0; --i) // mostly one of its kernel's own instances counts cycles
        add_tags({"clock_" + m_design.kernels[m_insts[i - 1].kernel].name + "_function"},
                 m_insts[i - 1].module);
    const std::size_t num_ports = m_dice.below(5);
    for (std::size_t i = 0; i < num_ports; ++i)
        add_tags(port_tags(), "wrapper");
    std::set<std::string> seen;
    std::erase_if(m_tags, [&](const auto& tag) { return !seen.insert(tag.first).second; });
    m_dice.shuffle(m_tags);
}

// "profile_extmem_k_function_DDR_bank0_port1_read_data_inc_en_x" and the other counters of the port, or
// nearly.
std::vector<std::string> DesignGenerator::port_tags() {
    const std::vector<std::string> operations = {"_read_data_inc_en_", "_write_data_inc_en_",
                                                 "_read_burst_count_en_", "_write_burst_count_en_",
                                                 "_no_operation_"};
    const std::vector<std::string> odd_numbers = {"-1", "2147483647", "2147483648", "",
                                                  "x",  " 1",         "+1",         "007"};
    std::vector<std::string> memories = m_memories;
    memories.insert(memories.end(), {"DDR", "nowhere"});
    std::ostringstream port;
    port << (m_dice.chance(3) ? "_port3_bank2" : "");
    port << "profile_extmem_" << (m_design.kernels.empty() ? "k" : m_dice.pick(m_design.kernels).name);
    port << (m_dice.chance(95) ? "_function_" : "_function");
    port << (m_dice.chance(95) ? m_dice.pick(memories) : "");
    port << (m_dice.chance(97) ? "_bank" : "_bunk");
    port << (m_dice.chance(92) ? std::to_string(m_dice.below(2)) : m_dice.pick(odd_numbers));
    port << (m_dice.chance(97) ? "_port" : "_part");
    port << (m_dice.chance(92) ? std::to_string(m_dice.below(2)) : m_dice.pick(odd_numbers));
    std::vector<std::string> tags;
    for (const std::string& operation : operations) {
        if (m_dice.chance(operation == operations.back() ? 5 : 70))
            tags.push_back(port.str() + operation + m_dice.pick<std::string>({"x", "y", ""}));
    }
    return tags;
}

void DesignGenerator::make_insts() {
    for (std::size_t k = 0; k < m_design.kernels.size(); ++k) {
        const std::string& name = m_design.kernels[k].name;
        const std::vector<std::string> names = {name + "_function_inst",
                                                name + "_function_wrapper_inst",
                                                name + "_function_wrapper",
                                                "inst1",
                                                "inst2",
                                                "inst3",
                                                "inst4"};
        for (const std::string& inst_name : names) {
            if (m_dice.chance(35))
                add_inst(k, inst_name);
        }
    }
    m_dice.shuffle(m_insts);
}

void DesignGenerator::add_inst(std::size_t kernel, const std::string& name) {
    const bool is_wrapper = name.find("_wrapper") != std::string::npos;
    InstPlan inst;
    inst.name = name;
    inst.module = is_wrapper && m_dice.chance(85) ? "wrapper" : m_dice.pick(m_modules);
    inst.kernel = kernel;
    inst.autorun = m_design.kernels[kernel].autorun != m_dice.chance(5);
    inst.shared = m_design.shared != m_dice.chance(1);
    m_insts.push_back(inst);
}

void DesignGenerator::make_connections() {
    for (std::size_t i = 0; i < m_insts.size(); ++i)
        connect(i);
    if (m_dice.chance(20))
        m_dice.shuffle(m_connections);
}

// Connects the counters of an instance's module. In a shared design most of them are on a shared counter,
// which has to come first.
void DesignGenerator::connect(std::size_t inst) {
    std::vector<std::string> tags;
    for (const auto& [tag, module] : m_tags) {
        if (module == m_insts[inst].module)
            tags.push_back(tag);
    }
    std::string shared_tag;
    if (m_insts[inst].shared) {
        std::stable_partition(tags.begin(), tags.end(),
                              [](const std::string& tag) { return tag.find("shared") != std::string::npos; });
        if (!tags.empty() && tags.front().find("shared") != std::string::npos)
            shared_tag = tags.front();
    }
    for (const std::string& tag : tags) {
        if (m_dice.chance(12))
            continue;
        ConnectionPlan connection = {inst, tag, ""};
        if (shareable.count(tag) == 1 && m_dice.chance(85))
            connection.shared_with = shared_tag;
        else if (m_dice.chance(1))
            connection.shared_with = m_dice.pick(m_tags).first;
        m_connections.push_back(connection);
        if (m_dice.chance(4))
            m_connections.push_back(connection); // the same counter twice
    }
}

// How many counters the lines of each kernel need. Those of autorun kernels stand on the pseudo-kernel's
// lines.
void DesignGenerator::count_counters() {
    std::set<std::size_t> started;
    std::size_t num_autorun = 1;
    for (const ConnectionPlan& connection : m_connections) {
        const std::size_t kernel = m_insts[connection.inst].kernel;
        if (!started.insert(kernel).second && !connection.shared_with.empty())
            continue;
        ++m_design.kernels[kernel].num_counters;
        num_autorun += m_design.kernels[kernel].autorun;
    }
    for (DesignKernel& kernel : m_design.kernels) {
        if (kernel.name == pseudo_kernel)
            kernel.num_counters = std::max(kernel.num_counters, num_autorun);
    }
}

void DesignGenerator::write_functions() {
    const std::vector<std::string> lines = {"0",          "1",          "42",
                                            "2147483648", "4294967295", "99999999999999999999"};
    const std::vector<std::string> files = {"/src/a.cl", "b.cl", "\xC3\xBC.cl", "a\tb", "c:\\d.cl", "&quot;"};
    m_xml << "<FUNCTION_LIST>\n";
    for (std::size_t i = 0; i < m_design.kernels.size(); ++i) {
        const DesignKernel& kernel = m_design.kernels[i];
        m_xml << "<FUNCTION name=\"" << escaped(kernel.name) << "\" num_compute_units=\"";
        m_xml << m_num_compute_units[i] << "\" filename=\"" << m_dice.pick(files) << "\"";
        if (m_dice.chance(70))
            m_xml << " line_number=\"" << m_dice.pick(lines) << "\"";
        if (!kernel.original_name.empty() || m_dice.chance(20))
            m_xml << " original_name=\"" << escaped(kernel.original_name) << "\"";
        if (m_dice.chance(30))
            m_xml << " user_friendly_name=\"" << m_dice.pick<std::string>({"", "friendly", "a b"}) << "\"";
        m_xml << "/>\n";
    }
    m_xml << "</FUNCTION_LIST>\n";
}

void DesignGenerator::write_modules() {
    m_xml << "<MODULE_LIST>\n";
    for (const std::string& module : m_modules) {
        const bool has_function = !m_design.kernels.empty() && m_dice.chance(30);
        m_xml << "<MODULE name=\"" << module << "\" function=\"";
        m_xml << (has_function ? escaped(m_dice.pick(m_design.kernels).name) : "");
        m_xml << "\" isKernelWrapper=\"" << (m_dice.chance(50) ? "true" : "false") << "\"/>\n";
    }
    m_xml << "</MODULE_LIST>\n";
}

void DesignGenerator::write_ports() {
    m_xml << "<PORT_LIST>\n";
    for (const auto& [tag, module] : m_tags) {
        m_xml << "<PORT cntl_name=\"c\" incr_name=\"i\" tag=\"" << escaped(tag) << "\" desc=\"\" module=\"";
        m_xml << module << "\" flag=\"" << m_dice.number() << "\"/>\n";
    }
    m_xml << "</PORT_LIST>\n";
}

void DesignGenerator::write_attribute() {
    const std::vector<std::string> widths = {"512",         "512",  "256", "64",         "32",
                                             "8",           "4",    "-64", "0",          "abc",
                                             "99999999999", " 16x", "",    "2147483647", "+128"};
    std::vector<std::string> memories = m_memories;
    memories.push_back("DDR");
    const std::vector<std::string> fields = {
        m_dice.pick<std::string>({"__global", "__global", "__global", "__loop", "__local", ""}),
        m_dice.pick<std::string>({"read", "read", "write", ""}),
        m_dice.pick<std::string>({"BURST-NON-ALIGNED", "BURST-COALESCED", "SEMI-STREAMING", "PIPELINED"}),
        m_dice.pick(memories),
        m_dice.pick(widths),
        m_dice.pick<std::string>({"", "x"}),
        m_dice.pick<std::string>({"", "_coalesced", "x_coalesced_y", "coalesced"}),
        "more",
        ""};
    const std::size_t count = m_dice.chance(85) ? 7 : m_dice.below(fields.size() + 1);
    for (std::size_t i = 0; i < count; ++i)
        m_xml << (i > 0 ? ";" : "") << escaped(fields[i]);
}

void DesignGenerator::write_insts() {
    m_xml << "<MODULEINST_LIST>\n";
    for (const InstPlan& inst : m_insts) {
        m_xml << "<MODULEINST name=\"" << escaped(inst.name) << "\" function=\"";
        m_xml << escaped(m_design.kernels[inst.kernel].name) << "\" module=\"" << inst.module
              << "\" attribute=\"";
        write_attribute();
        m_xml << "\" isAutorun=\""
              << (inst.autorun ? m_dice.pick<std::string>({"true", "yes", "TRUE"}) : "false");
        m_xml << "\" sharedOn=\"" << (inst.shared ? m_dice.pick<std::string>({"true", "1", ""}) : "false");
        m_xml << "\">\n";
        write_locations();
        m_xml << "</MODULEINST>\n";
    }
    m_xml << "</MODULEINST_LIST>\n";
}

void DesignGenerator::write_place(const std::string& element, const std::string& end) {
    const std::vector<std::string> files = {"/a/b.cl", "c.h", "d\\e\"/>"};
    const std::vector<std::string> lines = {"0", "7", "12", "300", "2147483648", "4294967296"};
    m_xml << "<" << element << " file=\"" << escaped(m_dice.pick(files)) << "\" line=\""
          << m_dice.pick(lines);
    m_xml << "\" column=\"" << m_dice.pick(lines) << "\"" << end;
}

void DesignGenerator::write_locations() {
    const std::size_t num_locations = m_dice.below(4);
    for (std::size_t i = 0; i < num_locations; ++i) {
        write_place("DEBUG", ">");
        const std::size_t num_calls = m_dice.below(4);
        for (std::size_t j = 0; j < num_calls; ++j)
            write_place("CALLSITE", "/>");
        m_xml << "</DEBUG>\n";
    }
    if (!m_tags.empty() && m_dice.chance(2))
        m_xml << "<SIGNAL cntl_name=\"c\" incr_name=\"\" port_tag=\"" << escaped(m_dice.pick(m_tags).first)
              << "\"/>\n";
}

void DesignGenerator::write_connections() {
    m_xml << "<CONNECTION_LIST>\n";
    for (const ConnectionPlan& connection : m_connections) {
        const InstPlan& inst = m_insts[connection.inst];
        const std::size_t unit = m_dice.chance(92) ? 0 : m_dice.below(m_num_compute_units[inst.kernel]);
        m_xml << "<CONNECTION moduleinst=\"" << escaped(inst.name) << "\" function=\"";
        m_xml << escaped(m_design.kernels[inst.kernel].name) << "\" compute_unit=\"" << unit << "\"";
        if (!connection.shared_with.empty())
            m_xml << " shared_with=\"" << escaped(connection.shared_with) << "\"";
        m_xml << " port_tag=\"" << escaped(connection.tag) << "\"/>\n";
    }
    m_xml << "</CONNECTION_LIST>\n";
}

std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

void damage_lines(Dice& dice, std::vector<std::string>& lines) {
    const std::size_t at = dice.below(lines.size());
    const std::size_t other = dice.below(lines.size());
    switch (dice.below(4)) {
        case 0:
            lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(at));
            break;
        case 1:
            lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(at), std::string(lines[at]));
            break;
        case 2:
            std::swap(lines[at], lines[other]);
            break;
        default: // a line in another place
            lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(at), std::string(lines[other]));
    }
}

// Leaves out, changes or moves one attribute of a line.
void damage_attribute(Dice& dice, std::string& line) {
    std::vector<std::size_t> starts;
    for (std::size_t at = line.find("=\""); at != std::string::npos; at = line.find("=\"", at + 1))
        starts.push_back(at);
    if (starts.empty())
        return;
    const std::size_t value = dice.pick(starts) + 2;
    const std::size_t end = line.find('"', value);
    if (end == std::string::npos)
        return;
    const std::size_t name = line.rfind(' ', value);
    switch (dice.below(4)) {
        case 0:
            line.replace(value, end - value, dice.pick<std::string>({"", "0", "1", "x", "-1", "9x", "true"}));
            break;
        case 1:
            line.insert(end, dice.pick<std::string>({"x", " ", "0", "&amp;"}));
            break;
        case 2:
            if (name != std::string::npos)
                line.erase(name, end + 1 - name);
            break;
        default:
            line.insert(end + 1, dice.pick<std::string>({" more=\"1\"", " name=\"x\"", " shared_with=\"\""}));
    }
}

} // namespace

Design make_design(Dice& dice, const std::vector<std::string>& memories) {
    return DesignGenerator(dice, memories).make();
}

std::string damaged(Dice& dice, std::string text) {
    const std::string bytes = "<>\"'/&; =a0-\n\t";
    std::vector<std::string> lines = lines_of(text);
    if (lines.empty())
        return text;
    const std::size_t what = dice.below(4);
    if (what == 0) {
        const std::size_t at = dice.below(text.size());
        if (dice.chance(50))
            text.erase(at, 1);
        else
            text[at] = bytes[dice.below(bytes.size())];
        return text;
    }
    if (what == 1)
        damage_lines(dice, lines);
    else
        damage_attribute(dice, lines[dice.below(lines.size())]);
    std::string result;
    for (const std::string& line : lines)
        result += line + "\n";
    return result;
}

} // namespace slow
