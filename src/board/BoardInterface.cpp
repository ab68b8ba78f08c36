// SPDX-License-Identifier: Apache-2.0
#include "BoardInterface.h"

#include <algorithm>

namespace zan::board {

bool Port::set_attribute(const std::string& name, unsigned int encoding) {
    constexpr unsigned int bits_of_shift = 31; // shifts are taken modulo 32
    if (encoding >= 1u << (m_attribute_width & bits_of_shift))
        return false;
    m_attributes[name] = encoding;
    return true;
}

void Interface::set_type(Type type) {
    ZAN_CONTRACT(type < TypeCount, "type < TypeCount");
    m_type = type;
}

void Interface::set_data_width(unsigned int width) {
    ZAN_CONTRACT(width > 0, "width > 0");
    m_data_width = width;
}

void Interface::set_max_burst_count(unsigned int count) {
    ZAN_CONTRACT(count > 0, "count > 0");
    m_max_burst_count = count;
}

void Interface::set_size(size_t size) {
    ZAN_CONTRACT(size > 0, "size > 0");
    m_size = size;
}

void Interface::set_sampling_rate(float rate) {
    ZAN_CONTRACT(rate > 0.0f, "rate > 0.0f");
    m_sampling_rate = rate;
}

void Interface::add_port(Port* port) {
    ZAN_CONTRACT(port != nullptr, "port != nullptr");
    m_port.emplace_back(port);
}

void Interface::add_port(const std::string& name, Port::Direction direction) {
    auto port = std::make_unique<Port>();
    port->set_name(name);
    if (direction <= Port::Write)
        port->set_direction(direction);
    m_port.push_back(std::move(port));
}

const Port& Interface::get_port(unsigned int port) const {
    ZAN_CONTRACT(port < m_port.size(), "port < m_port.size()");
    return *m_port[port];
}

Port& Interface::get_port(unsigned int port) {
    ZAN_CONTRACT(port < m_port.size(), "port < m_port.size()");
    return *m_port[port];
}

// A port that reads and writes counts for neither side.
bool Interface::has_separate_rw_ports() const {
    const auto any = [&](Port::Direction direction) {
        return std::any_of(m_port.begin(), m_port.end(),
                           [&](const auto& port) { return port->get_direction() == direction; });
    };
    return any(Port::Read) && any(Port::Write);
}

void InterfaceList::add_interface(Interface* intf) {
    ZAN_CONTRACT(intf != nullptr, "intf != nullptr");
    m_interfaces.emplace_back(intf);
}

const Interface& InterfaceList::get_intf(unsigned int i) const {
    ZAN_CONTRACT(i < m_interfaces.size(), "i < m_interfaces.size()");
    return *m_interfaces[i];
}

Interface& InterfaceList::get_intf(unsigned int i) {
    ZAN_CONTRACT(i < m_interfaces.size(), "i < m_interfaces.size()");
    return *m_interfaces[i];
}

} // namespace zan::board
