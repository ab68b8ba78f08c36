// SPDX-License-Identifier: Apache-2.0
// What must hold: blocks and ports have the places that they have in the totals, so these find the same block
// by the same rule.
#include "export_taker.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "tly_constants.h"

namespace zan::profile {

namespace {

// With shared counters a run measures one of four, and the arrays of the others are zeros.
bool is_measured(SharedType shared, Counts which) {
    constexpr std::pair<Counts, SharedType> shared_counts[] = {{Counts::valid, SharedType::valid},
                                                               {Counts::stall, SharedType::stall},
                                                               {Counts::idle, SharedType::idle},
                                                               {Counts::requests, SharedType::requests}};
    const auto* found = std::ranges::find(shared_counts, which, &std::pair<Counts, SharedType>::first);
    return shared == SharedType::none || found == std::end(shared_counts) || found->second == shared;
}

} // namespace

void ExportTaker::begin_kernel(const KernelNode& node) {
    m_totals.begin_kernel(node);
    m_node = &node;
    m_kernel = m_totals.current_kernel();
    if (m_kernel >= m_ids.kernels.size()) {
        m_ids.kernels.resize(m_kernel + 1);
        m_names.resize(m_kernel + 1);
        m_writer.new_kernel(static_cast<std::int64_t>(m_kernel) + 1, node);
    }
    ++m_names[m_kernel].num_nodes;
    m_place = 0;
    m_series = {};
    m_series.kernel = static_cast<std::int64_t>(m_kernel) + 1;
    m_series.times = &node.arrays[Counts::timestamps];
    find_invocation();
    write(Counts::cycles, node.arrays);
}

void ExportTaker::find_invocation() {
    const std::size_t num_samples = m_series.times->size();
    if (!m_node->start)
        return;
    m_series.begin = *m_node->start;
    if (num_samples == 0) // the totals don't know it
        return;
    const std::size_t place = m_totals.kernels()[m_kernel].invocations.place_of(*m_node->start);
    auto& invocations = m_ids.kernels[m_kernel].invocations;
    if (place >= invocations.size()) {
        invocations.resize(place + 1);
        invocations[place].id = ++m_num_invocations;
    }
    m_series.begin = m_totals.node_begin();
    m_series.invocation = invocations[place].id;
    m_series.first = invocations[place].num_samples;
    invocations[place].num_samples += num_samples;
}

std::size_t ExportTaker::block_place(const BlockNode& node) {
    KernelNames& kernel = m_names[m_kernel];
    auto& blocks = kernel.blocks;
    const auto is_it = [&](const BlockNames& block) {
        return block.last_node != kernel.num_nodes && block.name == node.name;
    };
    auto found = blocks.begin() + static_cast<std::ptrdiff_t>(std::min(m_place++, blocks.size()));
    if (found == blocks.end() || !is_it(*found))
        found = std::ranges::find_if(blocks, is_it);
    if (found == blocks.end()) {
        blocks.push_back({node.name, 0});
        found = blocks.end() - 1;
        m_ids.kernels[m_kernel].blocks.push_back(++m_num_blocks);
        m_writer.new_block(m_num_blocks, m_series.kernel, node);
    }
    found->last_node = kernel.num_nodes;
    return static_cast<std::size_t>(found - blocks.begin());
}

std::size_t ExportTaker::port_place(const PortNode& node) {
    auto& ports = m_names[m_kernel].ports;
    for (std::size_t i = 0; i < ports.size(); ++i) {
        if (ports[i].port == node.port && ports[i].interface == node.interface &&
            ports[i].memory == node.memory)
            return i;
    }
    ports.push_back({node.memory, node.interface, node.port});
    m_ids.kernels[m_kernel].ports.push_back(++m_num_ports);
    m_writer.new_port(m_num_ports, m_series.kernel, node);
    return ports.size() - 1;
}

void ExportTaker::block(const BlockNode& node) {
    m_totals.block(node);
    m_series.table = ExportTable::sample;
    const std::size_t place = block_place(node);
    m_series.owner = m_ids.kernels[m_kernel].blocks[place];
    for (const Counts which : {Counts::valid, Counts::stall, Counts::idle, Counts::max_fill, Counts::requests,
                               Counts::hits, Counts::unaligned}) {
        m_series.measured = is_measured(m_node->shared, which);
        write(which, node.arrays);
    }
    const bool has_requests = is_measured(m_node->shared, Counts::requests);
    for (const Rates which : {Rates::fill, Rates::bandwidth, Rates::efficiency, Rates::burst}) {
        // Bandwidths of channels, and efficiencies, are computed from requests.
        const bool from_requests =
            which == Rates::efficiency || (which == Rates::bandwidth && node.memory_type != addrspace_global);
        m_series.measured = has_requests || !from_requests;
        write(which, node.arrays);
    }
    m_series.measured = true;
}

void ExportTaker::port(const PortNode& node) {
    m_totals.port(node);
    if (!m_node->start)
        return;
    m_series.table = ExportTable::port_sample;
    const std::size_t place = port_place(node);
    m_series.owner = m_ids.kernels[m_kernel].ports[place];
    for (const Rates which : {Rates::bandwidth, Rates::write_burst, Rates::read_burst})
        write(which, node.arrays);
}

void ExportTaker::write(Counts which, const NodeArrays& arrays) {
    const SampleList<long long>& values = arrays[which];
    if (values.empty())
        return;
    m_series.metric = sample_metric(which);
    m_series.values = &values;
    m_series.lines_up = true;
    m_series.size = std::max(values.size(), m_series.times->size());
    m_writer.series(m_series);
}

// Averages of bursts need not line up with the samples.
void ExportTaker::write(Rates which, const NodeArrays& arrays) {
    const SampleList<float>& values = arrays[which];
    if (values.empty())
        return;
    m_series.metric = sample_metric(which);
    m_series.values = &values;
    m_series.lines_up = which != Rates::burst || values.size() == m_series.times->size();
    m_series.size = m_series.lines_up ? std::max(values.size(), m_series.times->size()) : values.size();
    m_writer.series(m_series);
}

void ExportTaker::transfer(const TransferNode& transfer) {
    m_totals.transfer(transfer);
    m_writer.transfer(++m_num_transfers, transfer);
}

} // namespace zan::profile
