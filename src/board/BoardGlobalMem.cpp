// SPDX-License-Identifier: Apache-2.0
#include "BoardGlobalMem.h"

#include <algorithm>

namespace zan::board {

void GlobalMemConfig::set_max_bandwidth(float bandwidth) {
    ZAN_CONTRACT(bandwidth >= 0.0f, "bandwidth >= 0.0f");
    m_max_bandwidth = bandwidth;
}

void GlobalMemConfig::set_type(Type type) {
    ZAN_CONTRACT(type < TypeCount, "type < TypeCount");
    m_type = type;
}

void GlobalMemConfig::set_primary_interface(std::string name) {
    m_primary_interface = std::move(name);
    m_has_primary_interface = true;
}

void GlobalMemConfig::set_id(unsigned int id) {
    m_id = id;
    m_has_id = true;
}

unsigned int GlobalMemConfig::get_data_width_bits() const {
    const unsigned int width = get_intf(0).get_data_width();
    for (const auto& intf : m_interfaces)
        ZAN_CONTRACT(intf->get_data_width() == width, "intf->get_data_width() == width");
    return width;
}

unsigned int GlobalMemConfig::get_data_width_bytes() const {
    constexpr unsigned int bits_of_byte = 8;
    const unsigned int width = get_data_width_bits();
    ZAN_CONTRACT(width % bits_of_byte == 0, "width % bits_of_byte == 0");
    return width / bits_of_byte;
}

unsigned int GlobalMemConfig::get_max_burst_count() const {
    const unsigned int count = get_intf(0).get_max_burst_count();
    for (const auto& intf : m_interfaces)
        ZAN_CONTRACT(intf->get_max_burst_count() == count, "intf->get_max_burst_count() == count");
    return count;
}

// With a single interface there is nothing to interleave, whatever the description says.
size_t GlobalMemConfig::get_num_interleaved_bytes() const {
    const size_t size = get_intf(0).get_size();
    return m_interfaces.size() > 1 && m_interleaved_bytes != 0 ? m_interleaved_bytes : size;
}

// Not the smallest of all: the checks of memories against each other count from the first interface.
unsigned long long GlobalMemConfig::get_min_byte_address() const {
    return m_interfaces.empty() ? 0 : m_interfaces[0]->get_address();
}

unsigned long long GlobalMemConfig::get_max_byte_address() const {
    unsigned long long last = 0;
    for (const auto& intf : m_interfaces)
        last = std::max(last, intf->get_address() + intf->get_size() - 1);
    return last;
}

} // namespace zan::board
