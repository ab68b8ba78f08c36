// SPDX-License-Identifier: Apache-2.0
// Interfaces of a board's interconnect, and their ports.
#pragma once

#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "contract.h"

namespace zan::board {

// A signal of an interface.
class Port {
  public:
    enum Direction : unsigned int { ReadWrite = 0, Read = 1, Write = 2 };

    const std::string& get_name() const { return m_name; }
    void set_name(std::string name) { m_name = std::move(name); }
    Direction get_direction() const { return m_direction; }
    void set_direction(Direction direction) { m_direction = direction; }
    bool get_hazard_free_attributes() const { return m_hazard_free_attributes; }
    void set_hazard_free_attributes(bool hazard_free) { m_hazard_free_attributes = hazard_free; }
    // Bits of an attribute's encoding.
    unsigned int get_attribute_width() const { return m_attribute_width; }
    void set_attribute_width(unsigned int width) { m_attribute_width = width; }

    // Stores an attribute's encoding in place of an earlier one. False, with nothing stored, if it takes more
    // bits than the width modulo 32.
    bool set_attribute(const std::string& name, unsigned int encoding);
    // Throws std::out_of_range for a name that has no encoding.
    unsigned int get_attribute(const std::string& name) const { return m_attributes.at(name); }
    const std::map<std::string, unsigned int>& get_attributes() const { return m_attributes; }

  private:
    std::string m_name;
    Direction m_direction = ReadWrite;
    bool m_hazard_free_attributes = true;
    unsigned int m_attribute_width = 0;
    std::map<std::string, unsigned int> m_attributes;
};

// One interface. It owns its ports. Sizes are in bytes, widths in bits, latencies in clock cycles. An index
// has to be below the number of ports.
class Interface {
  public:
    enum Type : unsigned int {
        Agent = 0,
        Host = 1,
        Irq = 2,
        StreamSource = 3,
        StreamSink = 4,
        TypeCount = 5
    };
    enum LatencyType : unsigned int { Average = 0, Fixed = 1 };

    // How the host's registers are wrapped.
    static constexpr unsigned int cra_wrapper_not_set = 0;
    static constexpr unsigned int cra_wrapper_high_fmax = 1;
    static constexpr unsigned int cra_wrapper_low_latency = 2;

    // TypeCount until it is set; no type may be set to that.
    Type get_type() const { return m_type; }
    void set_type(Type type);
    // Widths, burst counts, sizes and sampling rates must be above 0.
    unsigned int get_data_width() const { return m_data_width; }
    void set_data_width(unsigned int width);
    unsigned int get_max_burst_count() const { return m_max_burst_count; }
    void set_max_burst_count(unsigned int count);
    size_t get_size() const { return m_size; }
    void set_size(size_t size);
    float get_sampling_rate() const { return m_sampling_rate; }
    void set_sampling_rate(float rate);

    unsigned long long get_address() const { return m_address; }
    void set_address(unsigned long long address) { m_address = address; }
    const std::string& get_chan_id() const { return m_chan_id; }
    void set_chan_id(std::string id) { m_chan_id = std::move(id); }
    const std::string& get_name() const { return m_name; }
    void set_name(std::string name) { m_name = std::move(name); }
    // The latency has a default; the flag says whether the description had one.
    unsigned int get_latency() const { return m_latency; }
    void set_latency(unsigned int latency) { m_latency = latency; }
    bool get_has_latency() const { return m_has_latency; }
    void set_has_latency(bool given) { m_has_latency = given; }
    LatencyType get_latency_type() const { return m_latency_type; }
    void set_latency_type(LatencyType type) { m_latency_type = type; }
    unsigned int get_waitrequest() const { return m_waitrequest; }
    void set_waitrequest(unsigned int cycles) { m_waitrequest = cycles; }
    unsigned int get_waitrequest_allowance() const { return m_waitrequest_allowance; }
    void set_waitrequest_allowance(unsigned int cycles) { m_waitrequest_allowance = cycles; }
    bool get_bsp_lmnmm_write_ack() const { return m_bsp_lmnmm_write_ack; }
    void set_bsp_lmnmm_write_ack(bool ack) { m_bsp_lmnmm_write_ack = ack; }
    unsigned int get_addpipe() const { return m_addpipe; }
    void set_addpipe(unsigned int addpipe) { m_addpipe = addpipe; }
    const std::string& get_enable() const { return m_enable; }
    void set_enable(std::string enable) { m_enable = std::move(enable); }
    const std::string& get_clock() const { return m_clock; }
    void set_clock(std::string clock) { m_clock = std::move(clock); }
    unsigned int get_misc() const { return m_misc; }
    void set_misc(unsigned int misc) { m_misc = misc; }
    bool get_has_misc() const { return m_has_misc; }
    void set_has_misc(bool given) { m_has_misc = given; }
    bool get_hostpipe() const { return m_hostpipe; }
    void set_hostpipe(bool hostpipe) { m_hostpipe = hostpipe; }
    unsigned int get_max_buffer_depth() const { return m_max_buffer_depth; }
    void set_max_buffer_depth(unsigned int depth) { m_max_buffer_depth = depth; }
    bool get_uses_packets() const { return m_uses_packets; }
    void set_uses_packets(bool uses) { m_uses_packets = uses; }
    bool get_uses_empty() const { return m_uses_empty; }
    void set_uses_empty(bool uses) { m_uses_empty = uses; }
    unsigned int get_bits_per_symbol() const { return m_bits_per_symbol; }
    void set_bits_per_symbol(unsigned int bits) { m_bits_per_symbol = bits; }
    bool get_stall_free() const { return m_stall_free; }
    void set_stall_free(bool stall_free) { m_stall_free = stall_free; }
    unsigned int get_ready_latency() const { return m_ready_latency; }
    void set_ready_latency(unsigned int latency) { m_ready_latency = latency; }
    bool get_first_symbol_in_high_order_bits() const { return m_first_symbol_in_high_order_bits; }
    void set_first_symbol_in_high_order_bits(bool first) { m_first_symbol_in_high_order_bits = first; }
    bool get_conduit() const { return m_conduit; }
    void set_conduit(bool conduit) { m_conduit = conduit; }
    bool get_interrupt_on_write() const { return m_interrupt_on_write; }
    void set_interrupt_on_write(bool interrupt) { m_interrupt_on_write = interrupt; }
    bool get_used_for_streaming_control() const { return m_used_for_streaming_control; }
    void set_used_for_streaming_control(bool used) { m_used_for_streaming_control = used; }
    bool get_allow_true_byte_width() const { return m_allow_true_byte_width; }
    void set_allow_true_byte_width(bool allow) { m_allow_true_byte_width = allow; }
    unsigned int get_cra_wrapper_type() const { return m_cra_wrapper_type; }
    void set_cra_wrapper_type(unsigned int type) { m_cra_wrapper_type = type; }

    // Takes over the port, which must not be null.
    void add_port(Port* port);
    // Makes a port. A direction that is none leaves it ReadWrite.
    void add_port(const std::string& name, Port::Direction direction);
    unsigned int get_num_ports() const { return static_cast<unsigned int>(m_port.size()); }
    const Port& get_port(unsigned int port) const;
    Port& get_port(unsigned int port);
    std::string get_port_name(unsigned int port) const { return get_port(port).get_name(); }
    Port::Direction get_port_direction(unsigned int port) const { return get_port(port).get_direction(); }
    // At least one port reads and at least one writes; one that does both counts for neither.
    bool has_separate_rw_ports() const;

  private:
    Type m_type = TypeCount;
    unsigned int m_data_width = 0;
    unsigned int m_max_burst_count = 1;
    unsigned long long m_address = 0;
    size_t m_size = 0;
    std::string m_chan_id;
    std::string m_name;
    unsigned int m_latency = 240;
    LatencyType m_latency_type = Average;
    unsigned int m_waitrequest = 0;
    unsigned int m_waitrequest_allowance = 0;
    bool m_bsp_lmnmm_write_ack = false;
    unsigned int m_addpipe = 0;
    std::vector<std::unique_ptr<Port>> m_port;
    std::string m_enable;
    std::string m_clock;
    unsigned int m_misc = 0;
    float m_sampling_rate = 0.0f;
    bool m_hostpipe = false;
    unsigned int m_max_buffer_depth = 32768;
    bool m_uses_packets = false;
    bool m_uses_empty = false;
    unsigned int m_bits_per_symbol = 8;
    bool m_stall_free = false;
    unsigned int m_ready_latency = 0;
    bool m_first_symbol_in_high_order_bits = false;
    bool m_has_latency = false;
    bool m_has_misc = false;
    bool m_conduit = false;
    bool m_interrupt_on_write = false;
    bool m_used_for_streaming_control = false;
    bool m_allow_true_byte_width = false;
    unsigned int m_cra_wrapper_type = cra_wrapper_not_set;
};

// The interfaces of a section, which owns them, in the order in which they were added.
class InterfaceList {
  public:
    // Takes over the interface, which must not be null.
    void add_interface(Interface* intf);
    unsigned int get_num_intfs() const { return static_cast<unsigned int>(m_interfaces.size()); }
    // `i` has to be below the number of interfaces.
    const Interface& get_intf(unsigned int i) const;
    Interface& get_intf(unsigned int i);

  protected:
    std::vector<std::unique_ptr<Interface>> m_interfaces;
};

std::ostream& operator<<(std::ostream& os, Interface::Type type);
// The interface has to have a port. The stream's fill character is "0" afterwards.
std::ostream& operator<<(std::ostream& os, const Interface& intf);

} // namespace zan::board
