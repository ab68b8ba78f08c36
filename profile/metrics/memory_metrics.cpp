// SPDX-License-Identifier: Apache-2.0
#include "memory_metrics.h"

#include <algorithm>
#include <map>
#include <set>

namespace zan::profile {

namespace {

constexpr double full_share = 0.7;      // of a memory's peak
constexpr double port_full = 70.0;      // percent
constexpr double most_port_use = 105.0; // percent; bandwidths are rounded up

// Whether bytes may be missing: a kernel that the design has several times, or accesses that name no memory
// in a kernel without ports.
bool is_lower_bound(std::span<const JoinedKernel> joined, std::span<const KernelSummary> kernels,
                    const std::string& memory) {
    for (std::size_t i = 0; i < joined.size(); ++i) {
        bool uses_it = false;
        bool has_unnamed = false;
        for (const KernelPart& part : joined[i]) {
            const KernelTotals& totals = part.totals();
            uses_it |=
                std::ranges::find(totals.accesses, memory, &AccessTotals::memory) != totals.accesses.end();
            has_unnamed |= totals.ports.empty() &&
                           std::ranges::any_of(totals.blocks,
                                               [](const BlockTotals& block) { return block.unnamed > 0.0; });
        }
        const auto units_seen = std::ranges::count_if(
            kernels, [&](const KernelSummary& kernel) { return kernel.name == kernels[i].name; });
        const bool has_more_units =
            uses_it && static_cast<std::ptrdiff_t>(kernels[i].num_units.value_or(1)) > units_seen;
        if (has_unnamed || has_more_units)
            return true;
    }
    return false;
}

struct MemorySums {
    double traffic = 0.0; // MB/s · cycles
    double reads = 0.0;
    double writes = 0.0;
    bool knows_directions = true;
    double covered = 0.0; // time in which kernels that use it ran
    double full_time = 0.0;
    double max_rate = 0.0;
    bool is_used = false;
    bool from_ports = false;
};

MemorySums sums_of(const SummaryContext& context, const std::string& name) {
    MemorySums sums;
    const Value peak = context.peak(name);
    for (const auto& run : context.runs) {
        const MemoryUse& memory = run->memory(name);
        sums.traffic += memory.total();
        sums.covered += memory.covered_time();
        sums.from_ports |= memory.from_ports();
        sums.is_used |= !memory.kernels().empty();
        for (const KernelTraffic& kernel : memory.kernels()) {
            sums.reads += kernel.access.reads.total();
            sums.writes += kernel.access.writes.total();
            sums.knows_directions &= kernel.empty() || kernel.knows_directions();
        }
        memory.for_each_bin([&](double rate, double time) {
            sums.max_rate = std::max(sums.max_rate, rate);
            const Value bandwidth = context.megabytes_per_second(rate);
            if (peak && bandwidth && *bandwidth >= full_share * *peak)
                sums.full_time += time;
        });
    }
    return sums;
}

std::vector<InterfaceSummary> summarize_interfaces(const SummaryContext& context,
                                                   std::span<const JoinedKernel> joined,
                                                   const std::string& memory, double covered) {
    std::map<std::string, double> bytes; // by interface
    for (const JoinedKernel& kernel : joined) {
        for (const KernelPart& part : kernel) {
            for (const PortTotals& port : part.totals().ports) {
                if (port.memory == memory && context.clock_mhz)
                    bytes[port.interface] +=
                        port.moved.bytes(part.totals().cycle_classes, static_cast<float>(*context.clock_mhz));
            }
        }
    }
    std::vector<InterfaceSummary> interfaces;
    for (const auto& [name, moved] : bytes) {
        InterfaceSummary& interface = interfaces.emplace_back();
        interface.name = name;
        interface.bytes = moved;
        const Value peak = context.peak(memory);
        if (!peak || !context.unit.nanoseconds || !(covered > 0.0))
            continue;
        const double bandwidth = moved * 1000.0 / (covered * *context.unit.nanoseconds);
        interface.use = percent_of(bandwidth, *peak / static_cast<double>(bytes.size()));
    }
    return interfaces;
}

} // namespace

std::vector<MemorySummary> summarize_memories(const SummaryContext& context,
                                              std::span<const JoinedKernel> joined,
                                              std::span<const KernelSummary> kernels) {
    std::set<std::string> names;
    for (const BoardMemoryNode& memory : context.board)
        names.insert(memory.name);
    for (const JoinedKernel& kernel : joined) {
        for (const KernelPart& part : kernel) {
            for (const AccessTotals& access : part.totals().accesses)
                names.insert(access.memory);
        }
    }
    std::vector<MemorySummary> memories;
    const double span = context.span_length();
    for (const std::string& name : names) {
        const MemorySums sums = sums_of(context, name);
        MemorySummary& memory = memories.emplace_back();
        memory.name = name;
        memory.peak = context.peak(name);
        memory.max_burst = context.max_burst(name);
        memory.from_ports = sums.from_ports;
        memory.lower_bound = is_lower_bound(joined, kernels, name);
        memory.interfaces = summarize_interfaces(context, joined, name, sums.covered);
        if (!sums.is_used || !context.clock_mhz || !context.unit.nanoseconds)
            continue;
        if (sums.knows_directions) {
            memory.read_share = percent_of(sums.reads, sums.reads + sums.writes);
            memory.write_share = percent_of(sums.writes, sums.reads + sums.writes);
        }
        if (span > 0.0)
            memory.metrics[Metric::memory_mean] = context.megabytes_per_second(sums.traffic / span);
        memory.metrics[Metric::memory_max] = context.megabytes_per_second(sums.max_rate);
        if (memory.peak)
            memory.metrics[Metric::memory_full] = percent_of(sums.full_time, span);
    }
    return memories;
}

std::vector<PortSummary> summarize_ports(const SummaryContext& context, const JoinedKernel& kernel) {
    std::vector<PortSummary> ports;
    std::vector<std::array<WeightedSum, 3>> sums; // bandwidth, read and write bursts
    for (const KernelPart& part : kernel) {
        for (const PortTotals& totals : part.totals().ports) {
            auto found = std::ranges::find_if(ports, [&](const PortSummary& port) {
                return port.port == totals.port && port.interface == totals.interface &&
                       port.memory == totals.memory;
            });
            if (found == ports.end()) {
                ports.push_back(
                    {totals.memory, totals.interface, totals.port, false, false, {}, {}, {}, {}, {}});
                sums.emplace_back();
                found = ports.end() - 1;
            }
            found->reads |= totals.reads;
            found->writes |= totals.writes;
            auto& [bandwidth, read_burst, write_burst] =
                sums[static_cast<std::size_t>(found - ports.begin())];
            bandwidth += totals.bandwidth;
            read_burst += totals.read_burst;
            write_burst += totals.write_burst;
            found->mean = bandwidth.ratio();
            found->read_burst = read_burst.ratio();
            found->write_burst = write_burst.ratio();
            if (totals.bandwidth.weight > 0.0)
                found->max = std::max(found->max.value_or(0.0), totals.max_bandwidth);
            if (totals.bandwidth.weight > 0.0 && context.clock_mhz)
                found->bytes =
                    found->bytes.value_or(0.0) +
                    totals.moved.bytes(part.totals().cycle_classes, static_cast<float>(*context.clock_mhz));
        }
    }
    std::ranges::sort(
        ports, {}, [](const PortSummary& port) { return std::tie(port.memory, port.interface, port.port); });
    return ports;
}

namespace {

// The use of the one port that could carry the block's traffic. Of several the report doesn't say which it
// is; then their use is known only as far as it is the same for all: the greatest if none is full, the least
// if all are. A port that carries more than its accesses can is wider than these, so that nothing is known of
// its use.
Value use_of(std::span<const PortSummary* const> ports, double limit) {
    Value least;
    Value greatest;
    for (const PortSummary* port : ports) {
        if (!port->mean)
            return std::nullopt;
        const Value use = percent_of(*port->mean, limit);
        if (*use > most_port_use)
            return std::nullopt;
        least = std::min(least.value_or(*use), *use);
        greatest = std::max(greatest.value_or(*use), *use);
    }
    if (!greatest || *greatest < port_full || ports.size() == 1)
        return greatest;
    return *least >= port_full ? least : std::nullopt;
}

} // namespace

void set_port_use(const SummaryContext& context, KernelSummary& kernel) {
    for (BlockSummary& block : kernel.blocks) {
        if (block.kind != BlockKind::global || block.memory.empty() || !context.clock_mhz)
            continue;
        double widest = 0.0;
        for (const BlockSummary& other : kernel.blocks) {
            if (other.memory == block.memory)
                widest = std::max(widest, other.access_bytes.value_or(0.0));
        }
        if (!(widest > 0.0))
            continue;
        block.port_limit = widest * *context.clock_mhz;
        std::vector<const PortSummary*> candidates;
        for (const PortSummary& port : kernel.ports) {
            if (port.memory == block.memory &&
                (block.direction == Direction::read ? port.reads : port.writes))
                candidates.push_back(&port);
        }
        if (candidates.size() == 1)
            block.port = candidates.front()->port;
        block.metrics[Metric::port_use] = use_of(candidates, *block.port_limit);
    }
}

} // namespace zan::profile
