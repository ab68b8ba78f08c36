// SPDX-License-Identifier: Apache-2.0
// The text of a board.
#include <sstream>

#include "BoardSpec.h"
#include "contract_death.h"

namespace zan::board {
namespace {

template <typename T>
std::string text_of(const T& value) {
    std::ostringstream text;
    text << value;
    return text.str();
}

Interface* bare_interface() {
    auto* intf = new Interface;
    intf->set_type(Interface::Agent);
    intf->set_name("n");
    intf->add_port("p", Port::ReadWrite);
    intf->set_data_width(512);
    intf->set_address(0x1000);
    intf->set_size(0xabcdef0123);
    return intf;
}

constexpr const char* bare_interface_text =
    "type = agent, name = n, port = p, dataw = 512, maxburst = 1, address = 0x0000000000001000, "
    "size = 0x000000abcdef0123, misc = 0";

TEST(BoardPrint, InterfaceTypes) {
    EXPECT_EQ(text_of(Interface::Agent), "agent");
    EXPECT_EQ(text_of(Interface::Host), "host");
    EXPECT_EQ(text_of(Interface::Irq), "irq");
    EXPECT_EQ(text_of(Interface::StreamSource), "stream-source");
    EXPECT_EQ(text_of(Interface::StreamSink), "stream-sink");
    EXPECT_EQ(text_of(Interface::TypeCount), "<unknown>(5)");
}

TEST(BoardPrint, Versions) {
    EXPECT_EQ(text_of(BoardSpec::Version(14.1f)), "14.1");
    EXPECT_EQ(text_of(BoardSpec::Version()), "<unknown>(0)");
}

TEST(BoardPrint, ABareInterface) {
    const std::unique_ptr<Interface> intf(bare_interface());
    EXPECT_EQ(text_of(*intf), bare_interface_text);
}

TEST(BoardPrint, AnInterfaceWithEverything) {
    const std::unique_ptr<Interface> intf(bare_interface());
    intf->set_enable("e");
    intf->set_clock("k");
    intf->set_chan_id("c");
    intf->set_hostpipe(true);
    intf->set_uses_packets(true);
    intf->set_uses_empty(true);
    intf->set_bits_per_symbol(9);
    intf->set_stall_free(true);
    intf->set_ready_latency(2);
    intf->set_first_symbol_in_high_order_bits(true);
    intf->set_misc(17);
    EXPECT_EQ(text_of(*intf),
              "type = agent, name = n, port = p, dataw = 512, maxburst = 1, address = 0x0000000000001000, "
              "size = 0x000000abcdef0123, enable = e, clock = k, chan_id = c, hostpipe = true, "
              "uses_packets = true, uses_empty = true, bits_per_symbol = 9, stall_free = true, "
              "ready_latency = 2, first_symbol_in_high_order_bits = true, misc = 17");
}

TEST(BoardPrintDeathTest, AnInterfaceWithoutPortsCannotBePrinted) {
    EXPECT_CONTRACT(text_of(Interface()), "port < m_port.size()");
}

TEST(BoardPrint, HexadecimalChangesTheFillCharacterButNotTheFlags) {
    HostConfig host;
    host.set_start(0x1234);
    host.set_kernel_config_size(255);
    std::ostringstream text;
    text << host;
    EXPECT_EQ(text.str(),
              "Host configuration:\n  Kernel configuration start: 0x00001234\n"
              "  Kernel configuration size:  0x000000ff");
    EXPECT_EQ(text.fill(), '0');
    text.str("");
    text << 255;
    EXPECT_EQ(text.str(), "255");
}

TEST(BoardPrint, Memories) {
    GlobalMemConfig memory;
    memory.add_interface(bare_interface());
    const std::string interface_line = std::string("\n  Interface: ") + bare_interface_text;
    // 0xabcdef0123 bytes
    EXPECT_EQ(text_of(memory),
              "Global memory configuration:\n  # interleaved bytes: 737894400291" + interface_line);
    memory.set_name("DDR");
    EXPECT_EQ(
        text_of(memory),
        "Global memory configuration:\n  name: DDR,  # interleaved bytes: 737894400291" + interface_line);
}

TEST(BoardPrint, Sections) {
    DeviceConfig device;
    device.set_device_model("m.xml");
    EXPECT_EQ(text_of(device), "Device configuration:\n  Device model file: m.xml\n  Used resources: <null>");
    device.set_used_resources(new dmodel::DeviceResources);
    EXPECT_EQ(text_of(device),
              "Device configuration:\n  Device model file: m.xml\n  Used resources: LEs = 0  "
              "FFs = 0  RAMs = 0  DSPs = 0  LRAMs = 0");

    ChannelConfig channels;
    EXPECT_EQ(text_of(channels), "Channel configuration:");
    channels.add_interface(bare_interface());
    EXPECT_EQ(text_of(channels), std::string("Channel configuration:\n  Interface: ") + bare_interface_text);

    InterfaceConfig interfaces;
    EXPECT_EQ(text_of(interfaces), "Interface configuration:\n  Kernel clock-reset: <null>");
    auto* clk_reset = new KernelClkReset;
    clk_reset->set_clk("a");
    clk_reset->set_clk2x("b");
    clk_reset->set_reset("c");
    interfaces.set_kernel_clk_reset(clk_reset);
    interfaces.add_interface(bare_interface());
    EXPECT_EQ(text_of(interfaces),
              std::string("Interface configuration:\n  Kernel clock-reset: clk = a clk2x = b reset = c\n"
                          "  Interface: ") +
                  bare_interface_text);
}

TEST(BoardPrint, AnEmptyBoard) {
    EXPECT_EQ(text_of(BoardSpec()),
              "Board specification (v0):\n  Name: \nDevice configuration: <null>\n"
              "Global memory configuration: <null>\nHost configuration: <null>\n"
              "Interface configuration: <null>\nChannel configuration: <null>");
}

TEST(BoardPrint, ABoardWithItsFirstMemoryAlone) {
    BoardSpec spec;
    spec.set_version(BoardSpec::Version(17.1f));
    spec.set_name("b");
    spec.set_device_config(new DeviceConfig);
    for (const char* name : {"first", "second"}) {
        auto* memory = new GlobalMemConfig;
        memory->set_name(name);
        memory->add_interface(bare_interface());
        spec.add_global_mem_config(memory, false);
    }
    spec.set_host_config(new HostConfig);
    spec.set_interface_config(new InterfaceConfig);
    spec.set_channel_config(new ChannelConfig);
    EXPECT_EQ(text_of(spec),
              std::string("Board specification (v17.1):\n  Name: b\nDevice configuration:\n  Device model "
                          "file: \n  Used resources: <null>\nGlobal memory configuration:\n  name: first,  # "
                          "interleaved bytes: 737894400291\n  Interface: ") +
                  bare_interface_text +
                  "\nHost configuration:\n  Kernel configuration start: 0x00000000\n  Kernel configuration "
                  "size:  0x00000000\nInterface configuration:\n  Kernel clock-reset: <null>\nChannel "
                  "configuration:");
}

} // namespace
} // namespace zan::board
