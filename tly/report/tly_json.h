// Builders of the report's nodes. Each gives a fresh node; the shapes are told in docs/report.md. Those with
// "tell" in their names tell a sink what the node of the function behind them consists of.
#pragma once

#include <string>
#include <unordered_map>

#include "report_sink.h"
#include "sample_list.h"
#include "tly_constants.h"
#include "tly_ext_mem.h"
#include "tly_module_inst.h"

// The node of a kernel invocation, with empty `children`. The lists hold one entry for each sample; a list
// that is empty has no key. Times are in the unit of the monitor file.
ptree getKernelJSON(std::string name, std::string sourcefile, unsigned int line,
                    const SampleList<int>& deviceIds, int computeUnit, const SampleList<int>& commandQueues,
                    long long startTime, const SampleList<long long>& sampleTimestamps,
                    const SampleList<long long>& totalCycles, bool isAutorun, SharedCounterTypes sharedType);
// All but the children.
void tellKernel(ReportSink& node, std::string_view name, const std::string& sourcefile, unsigned int line,
                const SampleList<int>& deviceIds, int computeUnit, const SampleList<int>& commandQueues,
                long long startTime, const SampleList<long long>& sampleTimestamps,
                const SampleList<long long>& totalCycles, bool isAutorun, SharedCounterTypes sharedType);

// The node of a module instance: its source locations with their call chains, and its samples with the
// metrics worked out of them. `sampleCycles` are the kernel's clock cycles of each sample interval. Lists
// whose lengths differ are told on standard error, and the shorter length wins.
ptree getModuleJSON(TlyModuleInst* inst, const SampleList<long long>& sampleCycles);
void tellModule(ReportSink& node, const TlyModuleInst& inst, const SampleList<long long>& sampleCycles);

// The node of one port of an external memory as the instance has used it. A port without samples is told on
// standard error and gives an empty node. Throws std::out_of_range for indices that the memory doesn't have.
ptree getExtMemJSON(TlyModuleInst* inst, const SampleList<long long>& sampleCycles, TlyExtMem* mem,
                    unsigned long interfaceIndex, unsigned long portIndex);
void tellExtMem(ReportSink& node, const TlyModuleInst& inst, const SampleList<long long>& sampleCycles,
                const TlyExtMem& mem, unsigned long interfaceIndex, unsigned long portIndex);

// The node of a transfer between host and device.
ptree getMemTransferJSON(std::string name, int deviceId, int commandQueueId, long long startTime,
                         long long endTime);
void tellMemTransfer(ReportSink& node, std::string_view name, int deviceId, int commandQueueId,
                     long long startTime, long long endTime);

// The node of a board with a child for each memory of `maxBandwidths` (megabytes a second), in the map's
// iteration order. A memory that `maxBurstCounts` lacks has no burst count.
ptree getBoardJSON(std::string boardType, const std::unordered_map<std::string, float>& maxBandwidths,
                   const std::unordered_map<std::string, unsigned int>& maxBurstCounts);
