// SPDX-License-Identifier: Apache-2.0
// What the samples of a run show: cycles that can't be, and cycles that nothing counts.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "finding.h"
#include "profile_model.h"
#include "report_sink.h"

namespace zan::profile {

// Takes the nodes of a report. Of each block it keeps sums alone.
class SampleCheck final : public ReportSink {
  public:
    // Has to come before the nodes. `clock` is what the timing report says.
    void take_design(const ProfileModel& model, const std::string& clock);

    void text(std::string_view key, std::string_view text) override;
    void open(std::string_view key, Form form) override;
    void close() override;
    void array(std::string_view key, const ReportArray& values) override;

    // Adds what was found. `package` and `capture` are the names of the files.
    void finish(std::string_view package, std::string_view capture, FindingLog& log) const;

  private:
    // What the design says of a block.
    struct BlockRule {
        bool is_checked = false; // its cycles are those of its kernel
        bool counts_all = false; // stalled and idle cycles, too
        bool adds_up = false;    // several counters of one kind, whose sum may exceed the cycles
    };
    struct BlockSums {
        BlockRule rule;
        double valid = 0;
        double active = 0; // valid, stalled and idle
        double cycles = 0;
        std::uint64_t num_samples = 0;
        std::uint64_t num_over = 0; // samples with more than their cycles
    };
    using Values = std::vector<long long>;
    using Blocks = std::map<std::string, BlockSums, std::less<>>;

    static BlockRule rule_of(const TlyModuleInst& inst, int compute_unit);
    static void find_excess(const std::string& kernel, const Blocks& blocks, Fault fault, FindingLog& log);
    static void find_uncounted(const std::string& kernel, const Blocks& blocks, Fault fault, FindingLog& log);
    void find_clock_mismatch(Fault fault, FindingLog& log) const;
    void end_block();
    void end_invocation();

    std::map<std::string, Blocks, std::less<>> m_kernels; // by the names that reports show
    double m_clock = 0;                                   // MHz; 0 if it isn't known
    double m_cycles = 0;                                  // of samples whose length is known
    double m_time = 0;                                    // their length

    std::vector<std::string> m_open; // keys of the open nodes
    Blocks* m_kernel = nullptr;      // of the current node
    bool m_is_shared = false;
    bool m_is_autorun = false;
    long long m_start = 0;
    Values m_times;
    Values m_sample_cycles;
    std::string m_block;
    Values m_valid;
    Values m_stalls;
    Values m_idle;
};

} // namespace zan::profile
