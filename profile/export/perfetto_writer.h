// SPDX-License-Identifier: Apache-2.0
// An export as a trace of Perfetto.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "export_writer.h"
#include "proto_bytes.h"
#include "series_reader.h"

namespace zan::profile {

// Where a trace goes to.
struct TraceTarget {
    std::function<void(std::string_view bytes)> append;
    // Replaces bytes that were appended. `offset` counts from the first one.
    std::function<void(std::uint64_t offset, std::string_view bytes)> replace;
};

// Writes a track for each kernel, with a slice for each invocation; below it a counter for each array of
// samples; and a track for each queue of transfers. What overlaps on a track gets further tracks.
class PerfettoWriter final : public ExportWriter {
  public:
    explicit PerfettoWriter(TraceTarget target);

    void new_kernel(std::int64_t id, const KernelNode& node) override;
    void new_block(std::int64_t id, std::int64_t kernel, const BlockNode& node) override;
    void new_port(std::int64_t id, std::int64_t kernel, const PortNode& node) override;
    void series(const SampleSeries& series) override;
    void transfer(std::int64_t, const TransferNode&) override {} // the totals have them
    void finish(const WholeRun& run) override;

  private:
    struct Owner {
        std::string name;
        std::string description; // where it is in the sources
    };
    using CounterKey = std::tuple<ExportTable, std::int64_t, std::int64_t, std::string_view>;

    void add_packet(const ProtoBytes& packet);
    void hand_on_when_full();
    std::int64_t add_track(std::int64_t parent, const std::string& name, const std::string& description,
                           const ProtoBytes* counter);
    std::int64_t counter_of(const SampleSeries& series);
    void add_chunk(const SeriesChunk& chunk, std::int64_t track, std::int64_t& begin);
    void add_slice(std::int64_t track, const TimeSpan& span, const std::string& name,
                   const ProtoBytes& arguments);
    void add_invocations(const WholeRun& run, std::size_t place);
    void add_transfers(const WholeRun& run);

    TraceTarget m_target;
    std::string m_text;             // what isn't handed on yet
    std::uint64_t m_unit_place = 0; // where the unit of time is in the trace
    std::int64_t m_num_tracks = 0;
    std::vector<std::int64_t> m_kernels; // tracks of kernels, by their numbers less 1
    std::vector<std::string> m_places;   // of kernels in the sources, likewise
    std::map<std::int64_t, Owner> m_blocks;
    std::map<std::int64_t, Owner> m_ports;
    std::map<CounterKey, std::int64_t> m_counters;
};

} // namespace zan::profile
