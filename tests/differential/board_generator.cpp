// SPDX-License-Identifier: Apache-2.0
#include "board_generator.h"

#include <sstream>

namespace slow {

namespace {

class BoardGenerator {
  public:
    explicit BoardGenerator(Dice& dice) : m_dice(dice), m_is_broken(dice.chance(5)) {}
    Board make();

  private:
    // True for some parts of the few boards that are to break a rule.
    bool breaks() { return m_is_broken && m_dice.chance(12); }
    void write_memory(const std::string& name);
    void write_interface(const std::string& width, const std::string& burst);

    Dice& m_dice;
    bool m_is_broken;
    unsigned long long m_address = 0;
    std::ostringstream m_xml;
};

Board BoardGenerator::make() {
    const std::string before = R"(<?xml version="1.0"?>
<board version="17.1" name=")";
    const std::string after = R"(">
<device device_model="small.xml">
<used_resources><les num="1"/><ffs num="2"/><dsps num="0"/><rams num="10"/></used_resources>
</device>
<compile name="default" project="top" revision="top" plexo_file="system.plexo" generic_kernel="true">
<generate cmd="generate"/>
<synthesize cmd="synthesize"/>
<auto_migrate platform_type="none"/>
</compile>
<host><kernel_config start="0x0" size="0x1000"/></host>
<interfaces><kernel_clk_reset clk="kernel_clk" reset="kernel_reset"/></interfaces>
)";
    Board board;
    std::vector<std::string> names = {"DDR", "HBM", "host mem", "a/b", "DDR", "x&amp;y", "m1", "m2"};
    m_dice.shuffle(names);
    names.resize(m_dice.between(1, 4));
    const bool is_custom = m_dice.chance(10);
    if (breaks() || (is_custom && m_dice.chance(50)))
        names.clear();
    if (names.size() == 1 && m_dice.chance(10))
        names[0] = ""; // the only one needs no name
    m_xml << before << (is_custom ? "custom_ipa" : m_dice.pick<std::string>({"small", "", "a/b"})) << after;
    for (const std::string& name : names)
        write_memory(breaks() ? "" : name);
    m_xml << (breaks() ? "</bored>" : "</board>\n");
    board.xml = m_xml.str();
    board.memories = names;
    return board;
}

void BoardGenerator::write_memory(const std::string& name) {
    const std::vector<std::string> bandwidths = {"25600",     "0",    "12.5", "1e9",
                                                 "34128.123", "1e-3", "0x10", "1E40"};
    m_xml << "<global_mem name=\"" << name << "\"";
    if (!breaks())
        m_xml << " max_bandwidth=\"" << (breaks() ? "-1" : m_dice.pick(bandwidths)) << "\"";
    if (m_dice.chance(30))
        m_xml << " default=\"" << m_dice.below(2) << "\"";
    if (m_dice.chance(20))
        m_xml << " allocation_type=\"host, device\"";
    if (m_dice.chance(10))
        m_xml << " can_access=\"" << (breaks() ? "nobody" : name) << "\"";
    if (m_dice.chance(10))
        m_xml << " type=\"shared virtual\" id=\"0x" << m_dice.below(10) << "\"";
    m_xml << ">\n";
    const std::size_t num_interfaces = breaks() ? 0 : m_dice.between(1, 3);
    const std::string width = m_dice.pick<std::string>({"512", "64", "1", "4294967295"});
    const std::string burst =
        m_dice.pick<std::string>({"", " maxburst=\"16\"", " maxburst=\"2\"", " maxburst=\"1\""});
    for (std::size_t i = 0; i < num_interfaces; ++i) {
        const std::string this_width = breaks() ? "128" : width;
        const std::string this_burst = breaks() ? " maxburst=\"99\"" : burst;
        write_interface(this_width, this_burst);
    }
    m_xml << "</global_mem>\n";
}

void BoardGenerator::write_interface(const std::string& width, const std::string& burst) {
    const unsigned long long size = m_dice.pick<unsigned long long>({0x1000, 0x40000000, 1});
    m_xml << "<interface name=\"if" << m_dice.below(3) << "\" type=\"agent\" width=\"" << width << "\""
          << burst;
    m_xml << " address=\"" << m_address << "\" size=\"" << size << "\"";
    const std::size_t num_ports = m_dice.below(3);
    if (num_ports == 0 || m_dice.chance(50))
        m_xml << " port=\"port " << m_dice.below(3) << "\"";
    m_xml << ">\n";
    for (std::size_t i = 0; i < num_ports; ++i)
        m_xml << "<port name=\"p" << i << "\" direction=\"" << m_dice.pick<std::string>({"rw", "r", "w"})
              << "\"/>\n";
    m_xml << "</interface>\n";
    m_address = breaks() ? 0 : m_address + size;
}

} // namespace

Board make_board(Dice& dice) {
    return BoardGenerator(dice).make();
}

} // namespace slow
