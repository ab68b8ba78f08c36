// SPDX-License-Identifier: Apache-2.0
// The computed samples of instances and of memory ports. What is odd about the input is said in the run.
#pragma once

#include "slow_run.h"

namespace slow {

using Floats = std::vector<float>;

// Average fill of a channel's buffer.
Floats channel_depths(Run& run, const Inst& inst);

struct Bandwidths {
    Samples activity;
    Floats bandwidth;  // of channels and global memory
    Floats efficiency; // of global memory
};
Bandwidths bandwidths(Run& run, const Inst& inst, const Samples& cycles);

Floats average_bursts(Run& run, const Inst& inst);

struct PortMetrics {
    bool write_only = false;
    bool read_only = false;
    Floats bandwidth;
    Floats write_burst;
    Floats read_burst;
};
// A port with reads or writes.
PortMetrics port_metrics(Run& run, const Inst& inst, const Samples& cycles, const Memory& memory,
                         int interface, int port);

bool is_channel(const Inst& inst);
bool is_global(const Inst& inst);

} // namespace slow
