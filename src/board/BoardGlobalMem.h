// SPDX-License-Identifier: Apache-2.0
// A global memory of a board.
#pragma once

#include "BoardInterface.h"

namespace zan::board {

// A memory and the interfaces through which it is reached. Values that are the same for all interfaces have
// to be the same there; a memory without any has none.
class GlobalMemConfig : public InterfaceList {
  public:
    enum Type : unsigned int { SharedVirtual = 0, SharedPhysical = 1, DevicePrivate = 2, TypeCount = 3 };
    // A set of bits.
    enum AllocationType : unsigned int {
        UndefinedAllocation = 0,
        HostAllocation = 1,
        SharedAllocation = 2,
        DeviceAllocation = 4,
    };

    const std::string& get_name() const { return m_name; }
    void set_name(std::string name) { m_name = std::move(name); }
    // In megabytes a second; must not be negative.
    float get_max_bandwidth() const { return m_max_bandwidth; }
    void set_max_bandwidth(float bandwidth);
    // Bytes of an interleave step, 0 if none was given.
    size_t get_interleaved_bytes() const { return m_interleaved_bytes; }
    void set_interleaved_bytes(size_t bytes) { m_interleaved_bytes = bytes; }
    unsigned long long get_config_addr() const { return m_config_addr; }
    void set_config_addr(unsigned long long address) { m_config_addr = address; }
    // Must not be set to TypeCount or above.
    Type get_type() const { return m_type; }
    void set_type(Type type);
    // The name of the memory that this one is secondary to; setting it sets the flag.
    const std::string& get_primary_interface() const { return m_primary_interface; }
    void set_primary_interface(std::string name);
    bool get_has_primary_interface() const { return m_has_primary_interface; }
    // Names of memories that this one can access.
    const std::vector<std::string>& get_can_access() const { return m_can_access; }
    void add_can_access(std::string name) { m_can_access.push_back(std::move(name)); }
    AllocationType get_allocation_type() const { return m_allocation_type; }
    void set_allocation_type(AllocationType type) { m_allocation_type = type; }
    // Setting the identifier sets the flag.
    unsigned int get_id() const { return m_id; }
    void set_id(unsigned int id);
    bool get_has_id() const { return m_has_id; }

    // Of all interfaces, of which there must be one. A width in bytes must be a whole number.
    unsigned int get_data_width_bits() const;
    unsigned int get_data_width_bytes() const;
    unsigned int get_max_burst_count() const;
    // With several interfaces the step that was given, otherwise the size of the first; there must be one.
    size_t get_num_interleaved_bytes() const;
    // The address of the first interface, and the last byte of all; 0 without interfaces.
    unsigned long long get_min_byte_address() const;
    unsigned long long get_max_byte_address() const;

  private:
    float m_max_bandwidth = 0.0f;
    size_t m_interleaved_bytes = 0;
    unsigned long long m_config_addr = 0;
    Type m_type = DevicePrivate;
    std::string m_primary_interface;
    std::vector<std::string> m_can_access;
    AllocationType m_allocation_type = UndefinedAllocation;
    bool m_has_primary_interface = false;
    std::string m_name;
    unsigned int m_id = 0;
    bool m_has_id = false;
};

// The memory has to have an interface.
std::ostream& operator<<(std::ostream& os, const GlobalMemConfig& memory);

} // namespace zan::board
