// From a monitor file to samples in the profile model, and to nodes of the report.
//
// What must hold: a line costs time in proportion to its length, however many instances the design has, and
// nothing is allocated for a line or a field once a line as long has been seen (allocation_test counts). A
// message comes when its line is read, and the node of an invocation when the invocation ends. Most of the
// time of reading goes into numbers of plain lines, which line_blocks.h takes; what is here is for the
// others, and may take longer.
#pragma once

#include <memory>
#include <string>

#include "folded_nodes.h"
#include "profile_model.h"
#include "report_tree.h"
#include "stage_result.h"

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

// Reads a monitor file into the kernels, and writes a node for each transfer, and for each invocation of a
// kernel when it has ended. Unless the design is described, unknown kernels are made, and counters are not
// read. Lines with faults have a message and are left out. Fails with a message if the file can't be opened,
// or if the design and the run differ about shared counters. Throws std::out_of_range for a line of digits
// and commas alone, and for an original name of a kernel that isn't in the model.
StageResult read_monitor_file(ProfileModel& model, MonitorNodes& nodes, const std::string& mon_path,
                              LineDecoding decoding = LineDecoding::in_blocks);

// Writes the node of the kernel's current invocation, and resets the kernel if `reset` is set. Does nothing
// for the kernel that stands for all autorun kernels.
void close_invocation(TlyKernel& kernel, MonitorNodes& nodes, bool reset,
                      const ProfileModel::ExtMems& ext_mems);
