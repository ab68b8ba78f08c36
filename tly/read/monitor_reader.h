// Reading a monitor file, for whatever takes the report's nodes.
#pragma once

#include <map>
#include <string>
#include <unordered_map>

#include "folded_nodes.h"
#include "report_tree.h"
#include "tly_ext_mem.h"
#include "tly_kernel.h"

// Where the nodes of a monitor file go. The sinks hold until the next call.
class MonitorNodes {
  public:
    virtual ~MonitorNodes() = default;
    virtual ReportSink& kernels() = 0;
    virtual ReportSink& transfers() = 0;
};

// Holds the nodes folded.
class FoldedMonitorNodes final : public MonitorNodes {
  public:
    ReportSink& kernels() override { return *m_kernels; }
    ReportSink& transfers() override { return *m_transfers; }
    // Makes them the first children of the lists of a report, sharing them.
    void append_to(ptree& tree) const {
        tree.get_child("kernels.nodes").data() = ReportValue(m_kernels);
        tree.get_child("memtransfers.nodes").data() = ReportValue(m_transfers);
    }

  private:
    std::shared_ptr<FoldedNodes> m_kernels = std::make_shared<FoldedNodes>();
    std::shared_ptr<FoldedNodes> m_transfers = std::make_shared<FoldedNodes>();
};

// How kernel lines are decoded. The results are the same, and lines in blocks are faster; tests compare them.
enum class LineDecoding { in_blocks, line_by_line };

// Does what parseProfilerMONFile does, with the nodes going to `nodes`.
int read_monitor_file(std::map<std::string, TlyKernel*>& kernels, MonitorNodes& nodes,
                      const std::string& mon_path, const std::map<std::string, std::string>& original_names,
                      std::unordered_map<std::string, TlyExtMem*>& ext_mems, bool no_profiler,
                      LineDecoding decoding = LineDecoding::in_blocks);
