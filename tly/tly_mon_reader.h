// Reading a monitor file, for whatever takes the report's nodes.
#pragma once

#include <map>
#include <string>
#include <unordered_map>

#include "report_sink.h"
#include "tly_ext_mem.h"
#include "tly_kernel.h"

// Where the nodes of a monitor file go. The sinks hold until the next call.
class MonitorNodes {
  public:
    virtual ~MonitorNodes() = default;
    virtual ReportSink& kernels() = 0;
    virtual ReportSink& transfers() = 0;
};

// Does what parseProfilerMONFile does, with the nodes going to `nodes`.
int readMonitorFile(std::map<std::string, TlyKernel*>& kernels, MonitorNodes& nodes, const std::string& monPath,
                    const std::map<std::string, std::string>& originalNames,
                    std::unordered_map<std::string, TlyExtMem*>& extMems, bool noProfiler);
