// SPDX-License-Identifier: Apache-2.0
// A run's report to sums, as its nodes go by.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "kernel_totals.h"
#include "node_reader.h"
#include "profile_nodes.h"

namespace zan::profile {

// A kind of transfer: its type and its queue.
using TransferKey = std::pair<std::string, int>;

// Takes the report of one run. What it holds depends on the design, with 24 bytes for each invocation, 16 for
// each transfer and 32 MB at most for what happened when; and on the longest node, of which it holds the
// times and one block. The node of an autorun kernel is held as a whole, up to 64 MB, because its samples
// count only if one of its blocks worked.
class Totals final : public NodeTaker {
  public:
    // Values of an autorun kernel's blocks that may wait for the end of its node, 4 bytes or 8 each.
    static constexpr std::size_t default_held_values = std::size_t{16} << 20;

    explicit Totals(std::size_t most_held_values = default_held_values)
        : m_reader(*this), m_most_held(most_held_values) {}
    Totals(const Totals&) = delete;
    Totals& operator=(const Totals&) = delete;

    // Takes the members of the report's root.
    ReportSink& sink() { return m_reader; }

    const std::vector<KernelTotals>& kernels() const {
        return m_kernels;
    } // in the order of their first nodes
    // The number of the current node's kernel, between begin_kernel() and end_kernel().
    std::size_t current_kernel() const { return static_cast<std::size_t>(m_kernel - m_kernels.data()); }
    // When the first sample of the current node begins.
    std::int64_t node_begin() const { return m_begin; }
    const std::map<TransferKey, std::vector<TimeSpan>>& transfers() const { return m_transfers; }
    const std::vector<BoardMemoryNode>& memories() const { return m_memories; }
    const std::string& board_name() const { return m_board; }
    const std::string& clock_text() const { return m_clock; }
    const std::string& program_version() const { return m_program_version; }
    const std::string& zanx_version() const { return m_zanx_version; }

    void begin_kernel(const KernelNode& node) override;
    bool needs_sources(std::string_view block) override;
    bool needs_queues() const override { return false; }
    void block(const BlockNode& node) override;
    void port(const PortNode& node) override;
    void end_kernel() override;
    void transfer(const TransferNode& transfer) override;
    void board(const std::string& type) override { m_board = type; }
    void board_memory(const BoardMemoryNode& memory) override { m_memories.push_back(memory); }
    void clock(const std::string& text) override { m_clock = text; }
    void versions(const std::string& program, const std::string& zanx) override;

  private:
    KernelTotals& kernel_of(const KernelNode& node);
    void add_times();
    void add_block(const BlockNode& node, std::size_t place);
    void add_port(const PortNode& node);
    AccessTotals& access_of(const std::string& memory);
    void note_activity(const BlockNode& node);
    void add_held();
    void add_running();
    void spread_bins();

    NodeReader m_reader;
    std::vector<KernelTotals> m_kernels;
    std::unordered_map<std::string, std::vector<std::size_t>> m_places; // of kernels with that name
    std::map<TransferKey, std::vector<TimeSpan>> m_transfers;
    std::vector<BoardMemoryNode> m_memories;
    std::string m_board;
    std::string m_clock;
    std::string m_program_version;
    std::string m_zanx_version;

    // The current node.
    KernelTotals* m_kernel = nullptr;
    const KernelNode* m_node = nullptr;
    std::int64_t m_begin = 0; // of its first sample
    std::size_t m_num_blocks = 0;
    std::vector<BlockNode> m_held; // of an autorun kernel
    std::size_t m_held_values = 0;
    std::size_t m_most_held;
    bool m_holds = false;
    bool m_knows_activity = false;
    std::vector<unsigned char> m_active; // for each sample
    std::size_t m_num_block_bins = 0;    // series
    std::size_t m_num_access_bins = 0;
};

} // namespace zan::profile
