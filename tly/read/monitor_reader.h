// SPDX-License-Identifier: Apache-2.0
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
#include <string_view>
#include <vector>

#include "folded_nodes.h"
#include "line_blocks.h"
#include "mon_line.h"
#include "profile_model.h"
#include "report_tree.h"
#include "stage_result.h"

// Where the nodes of a monitor file go. The sinks hold until the next call.
class MonitorNodes {
  public:
    virtual ~MonitorNodes() = default;
    // `kernel` is the one whose node comes next.
    virtual ReportSink& kernels(const TlyKernel& kernel) = 0;
    virtual ReportSink& transfers() = 0;
};

// Holds the nodes folded.
class FoldedMonitorNodes final : public MonitorNodes {
  public:
    ReportSink& kernels(const TlyKernel&) override { return *m_kernels; }
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

// What becomes of a kernel whose invocation has been written: its samples stay, it is reset for the next
// invocation, or its samples are freed as there is none, and nothing else asks for them.
enum class AfterInvocation { keep, reset, release };

// Reads the lines of a monitor file, from the first to the last.
class MonitorReader {
  public:
    // `model` and `nodes` must outlive the reader.
    MonitorReader(ProfileModel& model, MonitorNodes& nodes, LineDecoding decoding = LineDecoding::in_blocks);

    // Reads the next line, which has no newline. False if the run has to end. Throws std::out_of_range for a
    // line of digits and commas alone, which has no effect then but for the number of the next line.
    bool read_line(std::string_view text);
    // Counts a line that isn't read.
    void skip_line() { ++m_line_number; }
    // A transfer line with a fault has been left out, and the next line is taken for a transfer, whatever its
    // name.
    bool takes_transfer() const { return m_is_transfer; }
    // Decodes the lines that still wait for that. The samples are not complete before.
    void decode_all() { m_blocks.decode_all(); }
    // Closes the last invocation of each kernel, and warns of the kernels that no line named. No line may
    // come any more if samples are released.
    void finish(AfterInvocation after = AfterInvocation::keep);

  private:
    bool find_target(LineTarget& target);
    TlyKernel* find_kernel();
    void collect_autorun_kernels();
    void add_transfer(const LineHead& head);
    bool add_sample(const LineTarget& target, const LineHead& head);
    bool update_instances(const LineTarget& target, SharedCounterTypes type);

    ProfileModel& m_model;
    MonitorNodes& m_nodes;
    const LineDecoding m_decoding;

    LineBlocks m_blocks;
    int m_line_number = 0;
    MonLine m_line;
    std::string_view m_name_on_line; // of the current line
    std::string m_name;              // the same after mapping
    // Set by a line with a transfer's name and cleared only when a transfer has been added.
    bool m_is_transfer = false;

    // The kernels and instances that a line of the autorun pseudo-kernel is for. They are the same for all
    // lines, since no line makes an autorun kernel.
    bool m_autorun_collected = false;
    std::vector<TlyKernel*> m_autorun_kernels;
    std::vector<TlyModuleInst*> m_autorun_insts;
};

// Reads a monitor file into the kernels, and writes a node for each transfer, and for each invocation of a
// kernel when it has ended. Unless the design is described, unknown kernels are made, and counters are not
// read. Lines with faults have a message and are left out. Fails with a message if the file can't be opened,
// or if the design and the run differ about shared counters. Throws std::out_of_range for a line of digits
// and commas alone, and for an original name of a kernel that isn't in the model. `last` is what becomes of
// the kernels at the end.
StageResult read_monitor_file(ProfileModel& model, MonitorNodes& nodes, const std::string& mon_path,
                              LineDecoding decoding = LineDecoding::in_blocks,
                              AfterInvocation last = AfterInvocation::keep);

// Writes the node of the kernel's current invocation. Does nothing for the kernel that stands for all autorun
// kernels. `compute_unit` is the one whose counters were read.
void close_invocation(TlyKernel& kernel, MonitorNodes& nodes, AfterInvocation after,
                      const ProfileModel::ExtMems& ext_mems, int compute_unit = 0);
