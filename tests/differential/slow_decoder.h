// SPDX-License-Identifier: Apache-2.0
// Counters of a monitor line: which value belongs to which sample list of an instance.
#pragma once

#include "slow_run.h"

namespace slow {

// Reads the instance's counters out of a line's fields and appends one sample to each of its lists.
void read_counters(Run& run, Inst& inst, const std::vector<std::string>& fields, int shared_type,
                   int line_number);

// The cycles of each sample of the instance's function; says so if there never were any.
Samples total_cycles(Run& run, const Inst& inst);

// Forgets the samples.
void reset(Run& run, Inst& inst);
void reset(Run& run, Kernel& kernel);

// One of the sample lists. Families are "ostall", "istall", "stall", "valid", "requests", "unaligned",
// "hits", "bandwidth", "idle", "bursts", "words", "total fifo" and "max fifo".
Samples samples(const Inst& inst, const std::string& family);

// Samples of a memory's port; none if no counter names it.
Samples port_samples(const Inst& inst, const std::string& memory, const std::string& kind, int bank,
                     int port);

} // namespace slow
