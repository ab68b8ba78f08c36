// SPDX-License-Identifier: Apache-2.0
// A report's stream to its nodes as records.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "profile_nodes.h"
#include "report_sink.h"

namespace zan::profile {

// Takes the members of a report's root, and hands its nodes to the taker. Keys that it doesn't know are
// skipped with all that is in them, so newer reports can be read. Nothing is allocated for a value once the
// first nodes have been read. The arrays of a kernel's node and those of one of its blocks are held at a
// time.
class NodeReader final : public ReportSink {
  public:
    // The taker must live as long as the reader.
    explicit NodeReader(NodeTaker& taker) : m_taker(taker) {}

    void text(std::string_view key, std::string_view text) override;
    void open(std::string_view key, Form form) override;
    void close() override;
    void array(std::string_view key, const ReportArray& values) override;
    void elements(const ReportArray& values) override;

    // What is open. `list` stands for the arrays of nodes, and for what leads to them.
    enum class Place : unsigned char {
        root,
        versions,
        kernels,
        kernel_list,
        kernel,
        kernel_source,
        children,
        child,
        sources,
        source,
        callsites,
        details,
        transfers,
        transfer_list,
        transfer,
        boards,
        board_list,
        board,
        memory_list,
        memory,
        infos,
        info_list,
        info,
        counts, // an array of texts that should be numbers
        rates,
        skipped,
    };

  private:
    Place place() const { return m_open.empty() ? Place::root : m_open.back(); }
    Place place_of_child(std::string_view key) const;
    NodeArrays* arrays_of_place();
    bool find_array(std::string_view key);
    bool takes_one() const;
    void take(const ReportArray& values);
    void begin(Place place);
    void end(Place place);
    void begin_children();
    void finish_child();

    void kernel_text(std::string_view key, std::string_view text);
    void child_text(std::string_view key, std::string_view text);
    void details_text(std::string_view key, std::string_view text);
    void source_text(SourcePlace& place, std::string_view key, std::string_view text);
    void transfer_text(std::string_view key, std::string_view text);
    void memory_text(std::string_view key, std::string_view text);
    void number_text(std::string_view text);

    NodeTaker& m_taker;
    std::vector<Place> m_open;
    KernelNode m_kernel;
    bool m_kernel_begun = false; // the taker has it
    std::string m_child_type;
    BlockNode m_block;
    PortNode m_port;
    bool m_needs_sources = false;
    TransferNode m_transfer;
    BoardMemoryNode m_memory;
    std::string m_board;
    std::string m_clock;
    std::string m_program_version;
    std::string m_zanx_version;
    SampleList<long long>* m_counts = nullptr; // the array that is open, or that find_array has found
    SampleList<float>* m_rates = nullptr;
};

} // namespace zan::profile
