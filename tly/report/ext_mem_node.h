// SPDX-License-Identifier: Apache-2.0
// The node of one port of an external memory.
#pragma once

#include "report_sink.h"
#include "sample_list.h"
#include "tly_ext_mem.h"
#include "tly_module_inst.h"

// Writes what the instance measured on the port. A port without reads and writes is reported on standard
// error, and nothing is written. Throws std::out_of_range for indices that the memory doesn't have.
void write_ext_mem(ReportSink& node, const TlyModuleInst& inst, const SampleList<long long>& sample_cycles,
                   const TlyExtMem& mem, unsigned long interface_index, unsigned long port_index);
