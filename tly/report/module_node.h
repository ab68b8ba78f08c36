// SPDX-License-Identifier: Apache-2.0
// The node of a module instance.
#pragma once

#include "report_sink.h"
#include "sample_list.h"
#include "tly_module_inst.h"

// Writes the source locations with their call chains, and the samples with the metrics worked out of them.
// `sample_cycles` are the kernel's clock cycles of each sample interval. Lists whose lengths differ are
// reported on standard error, and the shorter length wins.
void write_module(ReportSink& node, const TlyModuleInst& inst, const SampleList<long long>& sample_cycles);
