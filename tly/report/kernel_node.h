// SPDX-License-Identifier: Apache-2.0
// The node of a kernel's invocation.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

#include "report_sink.h"
#include "sample_list.h"
#include "tly_constants.h"
#include "tly_ext_mem.h"
#include "tly_kernel.h"

// What an invocation's node says of the kernel itself. A view: all that it refers to must last as long. The
// lists hold one entry for each sample; a list that is empty has no key. Times are in the unit of the monitor
// file.
struct KernelInvocation {
    std::string_view name;
    const std::string& sourcefile;
    unsigned int line;
    const SampleList<int>& device_ids;
    int compute_unit;
    const SampleList<int>& command_queues;
    long long start_time;
    const SampleList<long long>& sample_timestamps;
    const SampleList<long long>& total_cycles;
    bool is_autorun;
    SharedCounterTypes shared_type;
    // A number that stands for the name, the source, the line and the compute unit, and for no others of
    // these; 0 if there is none.
    std::uint64_t description_number = 0;
};

// Writes all members but the children.
void write_invocation(ReportSink& node, const KernelInvocation& invocation);

// What becomes of the samples of module instances that are written.
enum class WrittenSamples { kept, released };

// Writes the current invocation of the kernel with its children: the module instances, and the ports of
// external memories at the place of the wrapper instance. A memory that `ext_mems` lacks is reported on
// standard error and left out. `compute_unit` is the one whose counters were read. Samples that are released
// go as soon as the node of their module instance is written.
void write_kernel(ReportSink& node, const TlyKernel& kernel,
                  const std::unordered_map<std::string, TlyExtMem*>& ext_mems, int compute_unit = 0,
                  WrittenSamples samples = WrittenSamples::kept);
