// SPDX-License-Identifier: Apache-2.0
// Summaries made by hand, for tests of what is said of them.
#pragma once

#include <string>
#include <utility>

#include "profile_summary.h"

namespace zan::profile::made {

// A block that stalls 40% of its cycles, for 40 us of 100 us.
inline BlockSummary block(std::string name, BlockKind kind, Direction direction) {
    BlockSummary made;
    made.name = std::move(name);
    made.kind = kind;
    made.direction = direction;
    made.num_samples = 4;
    made.cycles = 25'000; // 100 us at 250 MHz
    made.metrics[Metric::stall] = 40;
    made.metrics[Metric::valid] = 50;
    made.metrics[Metric::idle] = 10;
    made.metrics[Metric::lost] = 40'000;
    made.sources = {{{"device/a.cl", 9, 3}}};
    return made;
}

// A read of DDR that nothing but latency can be the reason for: the memory is used to 30%, its port to 40%,
// all accesses are whole, aligned and in the longest bursts.
inline BlockSummary global_read(std::string name = "load") {
    BlockSummary made = block(std::move(name), BlockKind::global, Direction::read);
    made.memory = "DDR";
    made.port = "ddr_port";
    made.own_share = 100;
    made.block_share = 100;
    made.read_share = 100;
    made.write_share = 0;
    made.max_burst = 16;
    made.port_limit = 16'000; // 80% of the memory's peak
    made.metrics[Metric::memory_use] = 30;
    made.metrics[Metric::port_use] = 40;
    made.metrics[Metric::efficiency] = 100;
    made.metrics[Metric::hits] = 0;
    made.metrics[Metric::unaligned] = 0;
    made.metrics[Metric::burst] = 16;
    made.metrics[Metric::burst_share] = 100;
    return made;
}

// A loop at 20% in which iterations follow each other every 5 cycles: 25,000 / 5,000.
inline BlockSummary loop(std::string name = "columns") {
    BlockSummary made = block(std::move(name), BlockKind::loop, Direction::none);
    made.metrics = MetricValues();
    made.metrics[Metric::valid] = 20;
    made.metrics[Metric::iteration] = 5;
    made.metrics[Metric::net] = 5;
    made.iterations = 5000;
    made.max_valid = 25;
    return made;
}

// A kernel that ran once, for 100 us.
inline KernelSummary kernel(std::string name, std::vector<BlockSummary> blocks) {
    KernelSummary made;
    made.name = std::move(name);
    made.device = 0;
    made.source = {"device/a.cl", 5, 0};
    made.num_invocations = 1;
    made.num_samples = 4;
    made.union_time = 100'000;
    made.metrics[Metric::kernel_time] = 100'000;
    made.metrics[Metric::kernel_total] = 100'000;
    made.blocks = std::move(blocks);
    return made;
}

// A run of these kernels alone, all in the same 100 us, with a memory DDR of 20,000 MB/s.
inline ProfileSummary run(std::vector<KernelSummary> kernels) {
    ProfileSummary made;
    made.clock_text = "250.0";
    made.clock_mhz = 250;
    made.nanoseconds = 1;
    made.kernel_time = 100'000;
    made.transfer_only = 0;
    made.metrics[Metric::span] = 100'000;
    made.kernels = std::move(kernels);
    for (KernelSummary& of_team : made.kernels) {
        for (const KernelSummary& other : made.kernels) {
            if (other.name != of_team.name)
                of_team.team.push_back(other.name);
        }
    }
    MemorySummary memory;
    memory.name = "DDR";
    memory.peak = 20'000;
    made.memories.push_back(memory);
    return made;
}

} // namespace zan::profile::made
