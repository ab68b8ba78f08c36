// SPDX-License-Identifier: Apache-2.0
// The text of a board's description, for people who debug one.
#include <iomanip>
#include <ios>

#include "BoardSpec.h"

namespace zan::board {

namespace {

constexpr int digits_of_32_bits = 8;
constexpr int digits_of_64_bits = 16;

// Zero-filled hexadecimal digits after "0x". The stream's flags are put back; its fill character isn't, as
// tools compare what callers print after it.
template <typename Number>
void print_hex(std::ostream& os, Number number, int digits) {
    const std::ios_base::fmtflags flags = os.flags();
    os << "0x" << std::hex << std::setfill('0') << std::setw(digits) << number;
    os.flags(flags);
}

// A part of an interface that is printed under a condition.
template <typename Value>
void print_if(std::ostream& os, bool condition, const char* name, const Value& value) {
    if (condition)
        os << ", " << name << " = " << value;
}

void print_interfaces(std::ostream& os, const InterfaceList& list) {
    for (unsigned int i = 0; i < list.get_num_intfs(); ++i)
        os << "\n  Interface: " << list.get_intf(i);
}

// A section and the end of its line, or that there is none.
template <typename Section>
void print_section(std::ostream& os, const char* name, const Section* section, const char* end) {
    if (section)
        os << *section << end;
    else
        os << name << " configuration: <null>" << end;
}

} // namespace

std::ostream& operator<<(std::ostream& os, Interface::Type type) {
    static constexpr const char* words[] = {"agent", "host", "irq", "stream-source", "stream-sink"};
    if (type < Interface::TypeCount)
        return os << words[type];
    return os << "<unknown>(" << static_cast<unsigned int>(type) << ")";
}

std::ostream& operator<<(std::ostream& os, const Interface& intf) {
    os << "type = " << intf.get_type() << ", name = " << intf.get_name()
       << ", port = " << intf.get_port_name(0) << ", dataw = " << intf.get_data_width()
       << ", maxburst = " << intf.get_max_burst_count() << ", address = ";
    print_hex(os, intf.get_address(), digits_of_64_bits);
    os << ", size = ";
    print_hex(os, intf.get_size(), digits_of_64_bits);

    constexpr unsigned int usual_bits_per_symbol = 8;
    print_if(os, !intf.get_enable().empty(), "enable", intf.get_enable());
    print_if(os, !intf.get_clock().empty(), "clock", intf.get_clock());
    print_if(os, !intf.get_chan_id().empty(), "chan_id", intf.get_chan_id());
    print_if(os, intf.get_hostpipe(), "hostpipe", "true");
    print_if(os, intf.get_uses_packets(), "uses_packets", "true");
    print_if(os, intf.get_uses_empty(), "uses_empty", "true");
    print_if(os, intf.get_bits_per_symbol() != usual_bits_per_symbol, "bits_per_symbol",
             intf.get_bits_per_symbol());
    print_if(os, intf.get_stall_free(), "stall_free", "true");
    print_if(os, intf.get_ready_latency() != 0, "ready_latency", intf.get_ready_latency());
    print_if(os, intf.get_first_symbol_in_high_order_bits(), "first_symbol_in_high_order_bits", "true");
    print_if(os, true, "misc", intf.get_misc());
    return os;
}

std::ostream& operator<<(std::ostream& os, const GlobalMemConfig& memory) {
    os << "Global memory configuration:\n";
    if (!memory.get_name().empty())
        os << "  name: " << memory.get_name() << ",";
    os << "  # interleaved bytes: " << memory.get_num_interleaved_bytes();
    print_interfaces(os, memory);
    return os;
}

std::ostream& operator<<(std::ostream& os, const BoardSpec::Version& version) {
    if (version == BoardSpec::Version(0.0f))
        return os << "<unknown>(0)";
    return os << version.value();
}

std::ostream& operator<<(std::ostream& os, const KernelClkReset& clk_reset) {
    return os << "clk = " << clk_reset.get_clk() << " clk2x = " << clk_reset.get_clk2x()
              << " reset = " << clk_reset.get_reset();
}

std::ostream& operator<<(std::ostream& os, const DeviceConfig& config) {
    os << "Device configuration:\n  Device model file: " << config.get_device_model()
       << "\n  Used resources: ";
    if (config.has_used_resources())
        return os << config.get_used_resources();
    return os << "<null>";
}

std::ostream& operator<<(std::ostream& os, const HostConfig& config) {
    os << "Host configuration:\n  Kernel configuration start: ";
    print_hex(os, config.get_start(), digits_of_32_bits);
    os << "\n  Kernel configuration size:  ";
    print_hex(os, config.get_kernel_config_size(), digits_of_32_bits);
    return os;
}

std::ostream& operator<<(std::ostream& os, const ChannelConfig& config) {
    os << "Channel configuration:";
    print_interfaces(os, config);
    return os;
}

std::ostream& operator<<(std::ostream& os, const InterfaceConfig& config) {
    os << "Interface configuration:\n  Kernel clock-reset: ";
    if (config.has_kernel_clk_reset())
        os << config.get_kernel_clk_reset();
    else
        os << "<null>";
    print_interfaces(os, config);
    return os;
}

std::ostream& operator<<(std::ostream& os, const BoardSpec& spec) {
    os << "Board specification (v" << spec.get_version().str() << "):\n  Name: " << spec.get_name() << "\n";
    print_section(os, "Device", spec.has_device_config() ? &spec.get_device_config() : nullptr, "\n");
    print_section(os, "Global memory", spec.has_global_mem_config() ? &spec.get_global_mem_config() : nullptr,
                  "\n");
    print_section(os, "Host", spec.has_host_config() ? &spec.get_host_config() : nullptr, "\n");
    print_section(os, "Interface", spec.has_interface_config() ? &spec.get_interface_config() : nullptr,
                  "\n");
    print_section(os, "Channel", spec.has_channel_config() ? &spec.get_channel_config() : nullptr, "");
    return os;
}

} // namespace zan::board
