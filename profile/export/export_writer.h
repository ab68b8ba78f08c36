// SPDX-License-Identifier: Apache-2.0
// What every format of an export takes.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "export_schema.h"
#include "profile_nodes.h"
#include "profile_summary.h"
#include "totals.h"

namespace zan::profile {

// One array of a node. All views hold until the call returns.
struct SampleSeries {
    ExportTable table = ExportTable::sample; // or port_sample
    std::int64_t kernel = 0;
    std::optional<std::int64_t> invocation; // nothing for a node without a start
    std::optional<std::int64_t> owner;      // block or port; nothing for what the kernel itself counts
    SampleMetric metric;
    std::uint64_t first = 0;                      // number of the node's first sample in its invocation
    std::int64_t begin = 0;                       // when that sample begins
    const SampleList<long long>* times = nullptr; // when the samples end
    std::variant<const SampleList<long long>*, const SampleList<float>*> values;
    // Rows that the series has: the longer one of both lists, as averages of bursts may not line up with the
    // samples. Values that the list lacks are null, and so are times.
    std::size_t size = 0;
    bool measured = true; // false: all values are null
    bool lines_up = true; // false: the values have no times
};

// What rows of the small tables are made of, when the whole run is read. Numbers of kernels, blocks and ports
// count from 1, kernels in the order of their first nodes.
struct ExportIds {
    struct Invocation {
        std::int64_t id = 0;
        std::uint64_t num_samples = 0;
    };
    struct Kernel {
        std::vector<std::int64_t> blocks;    // as in the totals
        std::vector<std::int64_t> ports;     // as in the totals
        std::vector<Invocation> invocations; // as in the totals
    };
    std::vector<Kernel> kernels; // as in the totals
};

struct WholeRun {
    const ProfileSummary& summary;
    const Totals& totals;
    const ExportIds& ids;
};

// Takes a run: series and transfers as they come, at last the whole. What it throws ends the reading.
class ExportWriter {
  public:
    virtual ~ExportWriter() = default;
    // A kernel, a block or a port that is new, before its first series.
    virtual void new_kernel(std::int64_t /*id*/, const KernelNode& /*node*/) {}
    virtual void new_block(std::int64_t /*id*/, std::int64_t /*kernel*/, const BlockNode& /*node*/) {}
    virtual void new_port(std::int64_t /*id*/, std::int64_t /*kernel*/, const PortNode& /*node*/) {}
    virtual void series(const SampleSeries& series) = 0;
    virtual void transfer(std::int64_t id, const TransferNode& node) = 0;
    virtual void finish(const WholeRun& run) = 0;
};

// A row of a table, with a cell for each of its columns.
class RowWriter {
  public:
    virtual ~RowWriter() = default;
    virtual void row(ExportTable table, std::span<const ExportCell> cells) = 0;
};

} // namespace zan::profile
