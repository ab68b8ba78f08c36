// SPDX-License-Identifier: Apache-2.0
#include "kernel_totals.h"

#include <algorithm>

#include "timeline.h"

namespace zan::profile {

void WorkSpans::add(TimeSpan span) {
    constexpr std::size_t most_spans = 4096;
    m_spans.push_back(span);
    while (m_spans.size() > most_spans) {
        m_spans = union_of(std::move(m_spans), m_shortest_gap);
        m_shortest_gap *= 2.0;
    }
}

// Nodes of a kernel have the same blocks in the same order, so the first look finds all but the first ones.
// If a name occurs twice in a node, the second one is another block.
BlockTotals& KernelTotals::block_named(std::string_view name, std::size_t place) {
    const auto is_it = [&](const BlockTotals& block) {
        return block.last_node != num_nodes && block.name == name;
    };
    auto found = blocks.begin() + static_cast<std::ptrdiff_t>(std::min(place, blocks.size()));
    if (found == blocks.end() || !is_it(*found))
        found = std::ranges::find_if(blocks, is_it);
    if (found == blocks.end()) {
        blocks.emplace_back().name = name;
        found = blocks.end() - 1;
    }
    found->last_node = num_nodes;
    return *found;
}

PortTotals& KernelTotals::port_of(const PortNode& node) {
    for (PortTotals& port : ports) {
        if (port.port == node.port && port.interface == node.interface && port.memory == node.memory)
            return port;
    }
    PortTotals& port = ports.emplace_back();
    port.memory = node.memory;
    port.interface = node.interface;
    port.port = node.port;
    return port;
}

AccessTotals& KernelTotals::access_of(const std::string& memory) {
    const auto found = std::ranges::find(accesses, memory, &AccessTotals::memory);
    if (found != accesses.end())
        return *found;
    accesses.emplace_back().memory = memory;
    return accesses.back();
}

} // namespace zan::profile
