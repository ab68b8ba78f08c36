// SPDX-License-Identifier: Apache-2.0
// What must hold: the clock, the peaks of memories and which samples of an autorun kernel count are known
// only after the samples. So sums keep MB/s · cycles in place of bytes, and the blocks of an autorun kernel
// wait for the end of its node.
#include "totals.h"

#include <algorithm>

#include "sample_block.h"
#include "tly_constants.h"

namespace zan::profile {

namespace {

// How many doubles the bins of each kind may have: 16 MB each.
constexpr std::size_t block_bin_budget = std::size_t{2} << 20;
constexpr std::size_t access_bin_budget = std::size_t{2} << 20;

// An autorun kernel works in the samples in which one of its blocks is valid in at least 1% of the cycles.
constexpr double least_activity = 0.01;

BlockKind kind_of(const BlockNode& node) {
    if (node.memory_type == addrspace_global)
        return BlockKind::global;
    if (node.memory_type == loop_module)
        return BlockKind::loop;
    return node.arrays[Rates::bandwidth].empty() ? BlockKind::other : BlockKind::channel;
}

Direction direction_of(const BlockNode& node) {
    if (node.operation.empty())
        return Direction::none;
    return node.operation == opt_type_read ? Direction::read : Direction::write;
}

std::size_t num_values(const NodeArrays& arrays) {
    std::size_t count = 0;
    for (const auto& list : arrays.counts)
        count += list.stored().size();
    for (const auto& list : arrays.rates)
        count += list.stored().size();
    return count;
}

} // namespace

void Totals::versions(const std::string& program, const std::string& zanx) {
    m_program_version = program;
    m_zanx_version = zanx;
}

KernelTotals& Totals::kernel_of(const KernelNode& node) {
    const SampleList<long long>& devices = node.arrays[Counts::devices];
    std::vector<std::size_t>& places = m_places[node.name];
    for (const std::size_t place : places) {
        KernelTotals& kernel = m_kernels[place];
        const bool same_device = devices.empty() || kernel.key.device == static_cast<int>(devices[0]);
        if (same_device && kernel.key.compute_unit == node.compute_unit && kernel.key.source == node.source)
            return kernel;
    }
    places.push_back(m_kernels.size());
    KernelTotals& kernel = m_kernels.emplace_back();
    kernel.key = {node.name, node.compute_unit, node.source, std::nullopt};
    if (!devices.empty())
        kernel.key.device = static_cast<int>(devices[0]);
    kernel.autorun = node.autorun;
    return kernel;
}

void Totals::begin_kernel(const KernelNode& node) {
    m_kernel = &kernel_of(node);
    m_node = &node;
    m_num_blocks = 0;
    ++m_kernel->num_nodes;
    if (node.shared != SharedType::none)
        m_kernel->shared_types |= 1U << static_cast<unsigned>(node.shared);
    m_active.clear();
    m_holds = node.autorun;
    m_knows_activity = false;
    if (m_holds)
        m_active.resize(node.arrays[Counts::timestamps].size());
    add_times();
}

// The first sample of a node begins where the ones before it of the same invocation end.
void Totals::add_times() {
    const NodeArrays& arrays = m_node->arrays;
    const std::size_t count = arrays[Counts::timestamps].size();
    m_kernel->num_samples += count;
    if (arrays[Counts::cycles].size() > count)
        m_kernel->num_uncertain += count;
    if (count == 0 || !m_node->start)
        return;
    const SampleList<long long>& cycles = arrays[Counts::cycles];
    SampleCursor<long long> cycles_cursor(cycles);
    for (std::size_t i = 0; i < std::min(count, cycles.size()); ++i)
        m_kernel->num_without_cycles += cycles_cursor.next() <= 0 ? 1 : 0;
    TimeSpan& invocation = m_kernel->invocations.begun_at(*m_node->start);
    m_begin = invocation.end;
    SampleTimes times;
    TimesReader reader(arrays, m_begin, nullptr);
    while (reader.next(times)) {
        for (std::size_t i = 0; i < times.size; ++i) {
            invocation.end = std::max(invocation.end, times.end[i]);
            if (times.end[i] < times.begin[i])
                ++m_kernel->num_backwards;
            const double length = time_between(times.begin[i], times.end[i]);
            if (is_known(times.cycles[i]) && length > 0.0)
                m_kernel->clocked.add(times.cycles[i], length);
        }
    }
}

bool Totals::needs_sources(std::string_view block) {
    const std::size_t place = m_num_blocks;
    const std::vector<BlockTotals>& blocks = m_kernel->blocks;
    return !(place < blocks.size() && blocks[place].name == block);
}

void Totals::block(const BlockNode& node) {
    const std::size_t place = m_num_blocks++;
    if (!m_node->autorun) {
        add_block(node, place);
        return;
    }
    note_activity(node);
    if (!m_holds) {
        add_block(node, place);
        return;
    }
    m_held.push_back(node);
    m_held_values += num_values(node.arrays);
    if (m_held_values > m_most_held) {
        m_kernel->activity_in_part = true;
        add_held();
        m_holds = false;
    }
}

void Totals::note_activity(const BlockNode& node) {
    const SampleList<long long>& valid = node.arrays[Counts::valid];
    if (valid.empty() || (m_node->shared != SharedType::none && m_node->shared != SharedType::valid))
        return;
    m_knows_activity = true;
    SampleCursor<long long> valid_cursor(valid);
    const SampleList<long long>& cycles = m_node->arrays[Counts::cycles];
    SampleCursor<long long> cycles_cursor(cycles);
    const std::size_t count = std::min({valid.size(), cycles.size(), m_active.size()});
    for (std::size_t i = 0; i < count; ++i) {
        const auto num_valid = static_cast<double>(valid_cursor.next());
        const auto num_cycles = static_cast<double>(cycles_cursor.next());
        if (num_cycles > 0.0 && num_valid >= least_activity * num_cycles)
            m_active[i] = 1;
    }
}

// A kernel of which nothing counts valid cycles is never known to wait.
void Totals::add_held() {
    if (!m_knows_activity)
        std::ranges::fill(m_active, static_cast<unsigned char>(1));
    for (std::size_t place = 0; place < m_held.size(); ++place)
        add_block(m_held[place], place);
    m_held.clear();
    m_held_values = 0;
}

void Totals::add_block(const BlockNode& node, std::size_t place) {
    const std::size_t num_known = m_kernel->blocks.size();
    BlockTotals& block = m_kernel->block_named(node.name, place);
    if (block.kind == BlockKind::other) // as a channel without samples is
        block.kind = kind_of(node);
    if (m_kernel->blocks.size() != num_known) {
        block.direction = direction_of(node);
        block.coalesced = node.coalesced;
        m_num_block_bins += block.kind == BlockKind::loop ? 0 : 1;
        spread_bins();
    }
    if (block.sources.empty())
        block.sources = node.sources;
    if (block.memory.empty()) // an invocation without bursts doesn't name it
        block.memory = node.memory;
    if (!m_node->start)
        return;
    const std::size_t num_samples = m_node->arrays[Counts::timestamps].size();
    TimesReader times_reader(m_node->arrays, m_begin, m_node->autorun ? &m_active : nullptr);
    BlockReader reader(node, m_node->shared, num_samples);
    TimedAmounts* traffic = nullptr;
    if (block.kind == BlockKind::global && !block.memory.empty()) {
        AccessTotals& access = access_of(block.memory);
        traffic = block.direction == Direction::read ? &access.reads : &access.writes;
    }
    SampleTimes times;
    SampleBlock samples;
    while (times_reader.next(times)) {
        reader.next(times, samples);
        block.add(times, samples, m_kernel->cycle_classes);
        if (block.kind == BlockKind::global && traffic == nullptr)
            block.add_unnamed(times, samples);
        for (std::size_t i = 0; traffic != nullptr && i < times.size; ++i) {
            if (samples.bandwidth[i] > 0.0 && times.begin[i] < times.end[i])
                traffic->add_sample(times.begin[i], times.end[i], samples.bandwidth[i] * times.cycles[i]);
        }
    }
    block.add_burst_entries(node.arrays[Rates::burst]);
}

void Totals::port(const PortNode& node) {
    if (!m_node->start)
        return;
    PortTotals& port = m_kernel->port_of(node);
    port.reads = port.reads || !node.write_only;
    port.writes = port.writes || !node.read_only;
    AccessTotals& access = access_of(node.memory);
    SampleTimes times;
    SampleValues bandwidth;
    SampleValues read_burst;
    SampleValues write_burst;
    TimesReader times_reader(m_node->arrays, m_begin, nullptr);
    PortReader reader(node.arrays);
    while (times_reader.next(times)) {
        reader.next(times, Rates::bandwidth, bandwidth);
        reader.next(times, Rates::read_burst, read_burst);
        reader.next(times, Rates::write_burst, write_burst);
        reader.advance(times);
        port.add(times, bandwidth, read_burst, write_burst, m_kernel->cycle_classes);
        for (std::size_t i = 0; i < times.size; ++i) {
            if (bandwidth[i] > 0.0 && times.begin[i] < times.end[i])
                access.by_ports.add_sample(times.begin[i], times.end[i], bandwidth[i] * times.cycles[i]);
        }
    }
}

void Totals::end_kernel() {
    if (m_node->autorun)
        add_held();
    if (m_node->start)
        add_running();
    m_kernel = nullptr;
    m_node = nullptr;
}

void Totals::add_running() {
    KernelTotals& kernel = *m_kernel;
    TimesReader reader(m_node->arrays, m_begin, m_node->autorun ? &m_active : nullptr);
    SampleTimes times;
    TimeSpan working{m_begin, m_begin};
    while (reader.next(times)) {
        for (std::size_t i = 0; i < times.size; ++i) {
            const double cycles = is_known(times.cycles[i]) ? times.cycles[i] : 0.0;
            kernel.all_cycles += cycles;
            if (times.counts[i]) {
                kernel.cycles += cycles;
                kernel.active_time += time_between(times.begin[i], times.end[i]);
                working.end = std::max(working.end, times.end[i]);
                continue;
            }
            if (working.begin < working.end)
                kernel.work.add(working);
            working = {times.end[i], times.end[i]};
        }
    }
    if (kernel.autorun && working.begin < working.end)
        kernel.work.add(working);
}

AccessTotals& Totals::access_of(const std::string& memory) {
    const std::size_t num_known = m_kernel->accesses.size();
    AccessTotals& access = m_kernel->access_of(memory);
    if (m_kernel->accesses.size() != num_known) {
        m_num_access_bins += 3;
        spread_bins();
    }
    return access;
}

// Makes the bins of all series of a kind share what they may take together.
void Totals::spread_bins() {
    const std::size_t of_block = bins_for_each(block_bin_budget, m_num_block_bins);
    const std::size_t of_access = bins_for_each(access_bin_budget, m_num_access_bins);
    for (KernelTotals& kernel : m_kernels) {
        for (BlockTotals& block : kernel.blocks)
            block.stalls.limit(of_block);
        for (AccessTotals& access : kernel.accesses) {
            access.by_ports.limit(of_access);
            access.reads.limit(of_access);
            access.writes.limit(of_access);
        }
    }
}

void Totals::transfer(const TransferNode& transfer) {
    m_transfers[{transfer.type, transfer.queue}].push_back(
        {transfer.start, std::max(transfer.start, transfer.end)});
}

} // namespace zan::profile
