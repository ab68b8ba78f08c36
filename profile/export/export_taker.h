// SPDX-License-Identifier: Apache-2.0
// Nodes of a run to the series of an export, beside the sums of the run.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "export_writer.h"
#include "totals.h"

namespace zan::profile {

// Hands each node to the sums, which know its kernel, then its arrays to the writer. Both must outlive it.
class ExportTaker final : public NodeTaker {
  public:
    ExportTaker(Totals& totals, ExportWriter& writer) : m_totals(totals), m_writer(writer) {}

    void begin_kernel(const KernelNode& node) override;
    bool needs_sources(std::string_view block) override { return m_totals.needs_sources(block); }
    void block(const BlockNode& node) override;
    void port(const PortNode& node) override;
    void end_kernel() override { m_totals.end_kernel(); }
    void transfer(const TransferNode& transfer) override;
    void board(const std::string& type) override { m_totals.board(type); }
    void board_memory(const BoardMemoryNode& memory) override { m_totals.board_memory(memory); }
    void clock(const std::string& text) override { m_totals.clock(text); }
    void versions(const std::string& program, const std::string& zanx) override {
        m_totals.versions(program, zanx);
    }

    const ExportIds& ids() const { return m_ids; }

  private:
    struct BlockNames {
        std::string name;
        std::uint64_t last_node = 0; // number of the kernel's node that it was in last, from 1
    };
    struct PortNames {
        std::string memory;
        std::string interface;
        std::string port;
    };
    struct KernelNames {
        std::vector<BlockNames> blocks;
        std::vector<PortNames> ports;
        std::uint64_t num_nodes = 0;
    };

    void find_invocation();
    std::size_t block_place(const BlockNode& node);
    std::size_t port_place(const PortNode& node);
    void write(Counts which, const NodeArrays& arrays);
    void write(Rates which, const NodeArrays& arrays);

    Totals& m_totals;
    ExportWriter& m_writer;
    ExportIds m_ids;
    std::vector<KernelNames> m_names; // as m_ids.kernels
    std::int64_t m_num_invocations = 0;
    std::int64_t m_num_blocks = 0;
    std::int64_t m_num_ports = 0;
    std::int64_t m_num_transfers = 0;

    // The current node.
    const KernelNode* m_node = nullptr;
    std::size_t m_kernel = 0;
    std::size_t m_place = 0; // of the next block
    SampleSeries m_series;   // what all series of the node, or of a block, have in common
};

} // namespace zan::profile
