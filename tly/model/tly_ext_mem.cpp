// SPDX-License-Identifier: Apache-2.0
#include "tly_ext_mem.h"

#include "wrapping.h"

// Callers pass numbers from anywhere: an operation that is none must not index the array, and negative
// numbers name no port.
ExtMemCounts::Samples* ExtMemCounts::samples(ExtMemOpType op, int bank, int port) {
    if (op < EXT_MEM_READ || op > EXT_MEM_WRITE_BURST || bank < 0 || port < 0)
        return nullptr;
    return &m_ports[static_cast<std::size_t>(op)][{bank, port}];
}

const ExtMemCounts::Samples* ExtMemCounts::find_samples(ExtMemOpType op, int bank, int port) const {
    if (op < EXT_MEM_READ || op > EXT_MEM_WRITE_BURST)
        return nullptr;
    const Ports& ports = m_ports[static_cast<std::size_t>(op)];
    const auto found = ports.find({bank, port});
    return found == ports.end() ? nullptr : &found->second;
}

void ExtMemCounts::record(Samples& samples, long long value, bool push) {
    if (push)
        samples.push_back(value);
    else if (!samples.empty()) // a port without samples has nothing to add to
        samples.set_back(wrapping_sum(samples.back(), value));
}

void ExtMemCounts::updateCount(ExtMemOpType op, int bank, int port, long long value, bool push) {
    if (Samples* target = samples(op, bank, port))
        record(*target, value, push);
}

std::vector<long long> ExtMemCounts::getCount(ExtMemOpType op, int bank, int port) const {
    const Samples* found = find_samples(op, bank, port);
    return found ? found->to_vector() : std::vector<long long>();
}

TlyExtMemInterface::TlyExtMemInterface(std::string name, unsigned int data_width,
                                       std::vector<std::string> ports)
    : m_name(std::move(name)), m_data_width(data_width), m_ports(std::move(ports)) {
}

TlyExtMem::TlyExtMem(std::string name, float max_bandwidth)
    : m_name(std::move(name)), m_max_bandwidth(max_bandwidth) {
}

void TlyExtMem::add_interface(std::string name, unsigned int data_width, std::vector<std::string> ports) {
    m_interfaces.emplace_back(std::move(name), data_width, std::move(ports));
}

void TlyExtMem::set_max_burst_count(unsigned int count) {
    m_max_burst_count = count;
    m_has_max_burst_count = true;
}
