// SPDX-License-Identifier: Apache-2.0
// Nodes of a report to columns: one series for each kernel, block and metric, over all invocations.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "profile_nodes.h"
#include "pyramid.h"
#include "sample_block.h"
#include "series.h"

namespace zan::profile {

// The series that a block may have, by the names that they have in a page.
enum class BlockSeries {
    valid,
    stall,
    idle,
    requests,
    bandwidth,
    efficiency,
    fill,
    max_fill,
    hits,
    unaligned,
    burst,
    count
};
inline constexpr std::size_t num_block_series = static_cast<std::size_t>(BlockSeries::count);
std::string_view name_of(BlockSeries series);

// Of the samples that count: the weight is 1; of bandwidths the cycles, of efficiencies bandwidth · cycles,
// of fills requests + stalls.
struct SeriesSums {
    double products = 0.0; // value · weight
    double weights = 0.0;
    double cycles = 0.0;
    std::uint64_t num_left_out = 0;
};

// What charts show of samples that became one: their least value, and how much greater the greatest one is.
struct Peaks {
    explicit Peaks(ChunkStore& store) : least(store), range(store), counts(store) {}

    Series least;
    Series range;
    Series counts; // how many samples were added up; empty where values are means
};

struct Column {
    explicit Column(ChunkStore& store) : series(store) {}
    void fill_up_to(std::uint64_t length);

    Series series;
    Pyramid pyramid;
    SeriesSums sums;
    std::unique_ptr<Peaks> peaks; // null: its samples are single ones
};

// Average bursts of a block, whether they line up with its samples or not.
struct BurstEntries {
    std::uint64_t num = 0; // above 0
    double sum = 0.0;
    double least = 0.0;
    double greatest = 0.0;
};

struct BlockColumns {
    std::string name;
    std::array<std::unique_ptr<Column>, num_block_series> columns; // null: the report has none
    BurstEntries bursts;
};

struct PortColumns {
    PortColumns(const PortNode& node, ChunkStore& store);
    PortColumns(const PortColumns& names, Column bandwidth_of, Column read_burst_of, Column write_burst_of)
        : memory(names.memory),
          interface(names.interface),
          port(names.port),
          bandwidth(std::move(bandwidth_of)),
          read_burst(std::move(read_burst_of)),
          write_burst(std::move(write_burst_of)) {}

    std::string memory;
    std::string interface;
    std::string port;
    Column bandwidth;
    Column read_burst;
    Column write_burst;
};

struct InvocationColumn {
    std::int64_t start = 0; // after the first start that was seen, as are all times
    std::int64_t end = 0;
    std::uint64_t first = 0; // sample
    SharedType shared = SharedType::none;
};

struct KernelColumns {
    explicit KernelColumns(ChunkStore& store) : time(store), cycles(store), device(store), queue(store) {}

    std::uint64_t num_samples = 0;
    std::vector<InvocationColumn> invocations;
    Column time;
    Column cycles;
    Series device;
    Series queue;
    std::vector<BlockColumns> blocks; // in the order in which they came
    std::vector<std::unique_ptr<PortColumns>> ports;
};

struct TransferColumns {
    explicit TransferColumns(ChunkStore& store)
        : type(store), device(store), queue(store), start(store), end(store) {}

    std::vector<std::string> types; // by the numbers of the series
    Series type;
    Series device;
    Series queue;
    Series start;
    Series end;
};

// Takes the nodes of kernels and transfers, beside the sums of the run.
class Columns {
  public:
    explicit Columns(ChunkStore& store) : m_store(store), m_transfers(store) {}
    Columns(const Columns&) = delete;
    Columns& operator=(const Columns&) = delete;

    // `kernel`: the number of the node's kernel, from 0.
    void begin_kernel(const KernelNode& node, std::size_t kernel);
    void block(const BlockNode& node);
    void port(const PortNode& node);
    void end_kernel();
    void transfer(const TransferNode& node);

    // Their series move into the table of a page.
    std::vector<std::unique_ptr<KernelColumns>>& kernels() { return m_kernels; }
    TransferColumns& transfers() { return m_transfers; }
    // The time that all times count from.
    std::int64_t base() const { return m_base.value_or(0); }

  private:
    std::int64_t relative(std::int64_t time);
    void add_times();
    void add_counts(Column& column, const SampleList<long long>& list) const;
    BlockColumns& block_named(const std::string& name);
    PortColumns& port_of(const PortNode& node);
    Column* column_of(BlockColumns& block, BlockSeries which, const NodeArrays& arrays);
    void add_values(Column& column, BlockSeries which, const NodeArrays& arrays, const SampleTimes& times,
                    std::size_t begin, std::size_t count);

    ChunkStore& m_store;
    std::vector<std::unique_ptr<KernelColumns>> m_kernels;
    TransferColumns m_transfers;
    std::optional<std::int64_t> m_base;

    // The current node.
    KernelColumns* m_kernel = nullptr;
    const KernelNode* m_node = nullptr;
    std::int64_t m_begin = 0;  // of its first sample
    std::uint64_t m_first = 0; // its first sample
    std::size_t m_num_samples = 0;
    std::size_t m_num_blocks = 0;
    std::size_t m_num_ports = 0;
};

} // namespace zan::profile
