// SPDX-License-Identifier: Apache-2.0
// What must hold: a column has an entry for each sample of its kernel. What a node lacks is filled in when
// the next value comes, or at the end, so that blocks that a node doesn't have cost nothing.
#include "columns.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace zan::profile {

namespace {

struct SeriesRowOf {
    BlockSeries series;
    std::string_view name;
    Counts counts; // Counts::count: it is one of the rates
    Rates rates;
    SampleValues SampleBlock::*values;
};

constexpr SeriesRowOf series_rows[] = {
    {BlockSeries::valid, "valid", Counts::valid, Rates::count, &SampleBlock::valid},
    {BlockSeries::stall, "stall", Counts::stall, Rates::count, &SampleBlock::stall},
    {BlockSeries::idle, "idle", Counts::idle, Rates::count, &SampleBlock::idle},
    {BlockSeries::requests, "requests", Counts::requests, Rates::count, &SampleBlock::requests},
    {BlockSeries::bandwidth, "bandwidth", Counts::count, Rates::bandwidth, &SampleBlock::bandwidth},
    {BlockSeries::efficiency, "efficiency", Counts::count, Rates::efficiency, &SampleBlock::efficiency},
    {BlockSeries::fill, "fill", Counts::count, Rates::fill, &SampleBlock::fill},
    {BlockSeries::max_fill, "max_fill", Counts::max_fill, Rates::count, &SampleBlock::max_fill},
    {BlockSeries::hits, "hits", Counts::hits, Rates::count, &SampleBlock::hits},
    {BlockSeries::unaligned, "unaligned", Counts::unaligned, Rates::count, &SampleBlock::unaligned},
    {BlockSeries::burst, "burst", Counts::count, Rates::burst, &SampleBlock::burst},
};
static_assert(std::size(series_rows) == num_block_series);

const SeriesRowOf& row_of_series(BlockSeries series) {
    return series_rows[static_cast<std::size_t>(series)];
}

bool is_share(BlockSeries series) {
    return series == BlockSeries::valid || series == BlockSeries::stall || series == BlockSeries::idle;
}

double weight_of(BlockSeries series, const SampleBlock& samples, double cycles, std::size_t i) {
    switch (series) {
        case BlockSeries::bandwidth:
            return cycles;
        case BlockSeries::efficiency:
            return samples.bandwidth[i] * cycles;
        case BlockSeries::fill:
            return samples.requests[i] + (is_known(samples.stall[i]) ? samples.stall[i] : 0.0);
        default:
            return 1.0;
    }
}

// Charts show shares of the cycles, in ten-thousandths.
double shown_value(BlockSeries series, double value, double cycles) {
    return is_share(series) ? std::round(value / cycles * 10'000.0) : value;
}

void add_sample(Column& column, BlockSeries which, const SampleTimes& times, const SampleBlock& samples,
                std::size_t i) {
    const double value = (samples.*row_of_series(which).values)[i];
    const double cycles = times.cycles[i];
    const double weight = is_known(value) ? weight_of(which, samples, cycles, i) : 0.0;
    if (!(weight > 0.0)) {
        column.pyramid.add(missing_value, 0.0, 0.0);
        return;
    }
    column.sums.products += value * weight;
    column.sums.weights += weight;
    column.sums.cycles += cycles;
    column.pyramid.add(shown_value(which, value, cycles), value * weight, is_share(which) ? cycles : weight);
}

template <class T>
void count_left_out(SeriesSums& sums, const T* values, const SampleTimes& times, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        sums.num_left_out += values[i] < T{0} || !is_known(times.cycles[i]) ? 1 : 0;
}

void add_entries(BurstEntries& bursts, const SampleList<float>& list) {
    SampleCursor<float> cursor(list);
    for (std::size_t i = 0; i < list.size(); ++i) {
        const auto entry = static_cast<double>(cursor.next());
        if (!(entry > 0.0) || !std::isfinite(entry))
            continue;
        bursts.least = bursts.num == 0 ? entry : std::min(bursts.least, entry);
        bursts.greatest = std::max(bursts.greatest, entry);
        bursts.sum += entry;
        ++bursts.num;
    }
}

} // namespace

std::string_view name_of(BlockSeries series) {
    return row_of_series(series).name;
}

void Column::fill_up_to(std::uint64_t length) {
    series.fill_up_to(length);
    pyramid.fill_up_to(length);
}

PortColumns::PortColumns(const PortNode& node, ChunkStore& store)
    : memory(node.memory),
      interface(node.interface),
      port(node.port),
      bandwidth(store),
      read_burst(store),
      write_burst(store) {
}

std::int64_t Columns::relative(std::int64_t time) {
    if (!m_base)
        m_base = time;
    return wrapped_difference(time, *m_base);
}

void Columns::begin_kernel(const KernelNode& node, std::size_t kernel) {
    while (m_kernels.size() <= kernel)
        m_kernels.push_back(std::make_unique<KernelColumns>(m_store));
    m_kernel = m_kernels[kernel].get();
    m_node = &node;
    m_first = m_kernel->num_samples;
    m_num_samples = node.arrays[Counts::timestamps].size();
    m_num_blocks = 0;
    m_num_ports = 0;
    m_kernel->num_samples += m_num_samples;
    add_times();
}

void Columns::add_times() {
    const NodeArrays& arrays = m_node->arrays;
    const SampleList<long long>& stamps = arrays[Counts::timestamps];
    if (!m_node->start && stamps.empty())
        return;
    const std::int64_t start = m_node->start ? *m_node->start : stamps[0];
    std::vector<InvocationColumn>& invocations = m_kernel->invocations;
    const std::int64_t after = relative(start);
    if (invocations.empty() || invocations.back().start != after)
        invocations.push_back({after, after, m_first, m_node->shared});
    InvocationColumn& invocation = invocations.back();
    m_begin = invocation.end;
    SampleCursor<long long> cursor(stamps);
    for (std::size_t i = 0; i < m_num_samples; ++i) {
        const std::int64_t time = relative(cursor.next());
        invocation.end = std::max(invocation.end, time);
        m_kernel->time.series.add(time);
        m_kernel->time.pyramid.add(static_cast<double>(time), static_cast<double>(time), 1.0);
    }
    // Two counters of the clock: nobody knows which of the cycles are whose.
    static const SampleList<long long> none;
    const SampleList<long long>& cycles = arrays[Counts::cycles];
    add_counts(m_kernel->cycles, cycles.size() > m_num_samples ? none : cycles);
    for (const auto& [series, which] :
         {std::pair(&m_kernel->device, Counts::devices), std::pair(&m_kernel->queue, Counts::queues)}) {
        series->fill_up_to(m_first);
        SampleCursor<long long> numbers(arrays[which]);
        for (std::size_t i = 0; i < std::min(m_num_samples, arrays[which].size()); ++i)
            series->add(std::int64_t{numbers.next()});
    }
}

void Columns::add_counts(Column& column, const SampleList<long long>& list) const {
    column.fill_up_to(m_first);
    SampleCursor<long long> cursor(list);
    for (std::size_t i = 0; i < std::min(m_num_samples, list.size()); ++i) {
        const long long value = cursor.next();
        column.series.add(std::int64_t{value});
        const auto number = static_cast<double>(value);
        column.pyramid.add(value > 0 ? number : missing_value, number, 1.0);
        column.sums.products += value > 0 ? number : 0.0;
    }
}

// The blocks of a kernel come in the same order in each of its nodes, as a rule.
BlockColumns& Columns::block_named(const std::string& name) {
    std::vector<BlockColumns>& blocks = m_kernel->blocks;
    const std::size_t place = m_num_blocks++;
    if (place < blocks.size() && blocks[place].name == name)
        return blocks[place];
    const auto found = std::ranges::find(blocks, name, &BlockColumns::name);
    if (found != blocks.end())
        return *found;
    blocks.emplace_back().name = name;
    return blocks.back();
}

// Null if the node has no such array, or one that doesn't line up.
Column* Columns::column_of(BlockColumns& block, BlockSeries which, const NodeArrays& arrays) {
    const SeriesRowOf& row = row_of_series(which);
    const std::size_t size =
        row.counts == Counts::count ? arrays[row.rates].size() : arrays[row.counts].size();
    if (size == 0 || (which == BlockSeries::burst && size != m_num_samples))
        return nullptr;
    std::unique_ptr<Column>& column = block.columns[static_cast<std::size_t>(which)];
    if (!column)
        column = std::make_unique<Column>(m_store);
    column->fill_up_to(m_first);
    return column.get();
}

// The exact values of some hundred samples.
void Columns::add_values(Column& column, BlockSeries which, const NodeArrays& arrays,
                         const SampleTimes& times, std::size_t begin, std::size_t count) {
    const SeriesRowOf& row = row_of_series(which);
    if (row.counts != Counts::count) {
        std::array<long long, samples_in_block> numbers;
        arrays[row.counts].read(begin, count, numbers.data());
        for (std::size_t i = 0; i < count; ++i)
            column.series.add(std::int64_t{numbers[i]});
        count_left_out(column.sums, numbers.data(), times, count);
    } else {
        std::array<float, samples_in_block> numbers;
        arrays[row.rates].read(begin, count, numbers.data());
        for (std::size_t i = 0; i < count; ++i)
            column.series.add(numbers[i]);
        count_left_out(column.sums, numbers.data(), times, count);
    }
}

void Columns::block(const BlockNode& node) {
    BlockColumns& block = block_named(node.name);
    add_entries(block.bursts, node.arrays[Rates::burst]);
    std::array<Column*, num_block_series> columns;
    for (std::size_t k = 0; k < num_block_series; ++k)
        columns[k] = column_of(block, static_cast<BlockSeries>(k), node.arrays);
    SampleTimes times;
    SampleBlock samples;
    TimesReader times_reader(m_node->arrays, m_begin, nullptr);
    BlockReader block_reader(node, m_node->shared, m_num_samples);
    for (std::size_t begin = 0; times_reader.next(times); begin += times.size) {
        block_reader.next(times, samples);
        for (std::size_t k = 0; k < num_block_series; ++k) {
            if (!columns[k])
                continue;
            const auto which = static_cast<BlockSeries>(k);
            const SeriesRowOf& row = row_of_series(which);
            const std::size_t size =
                row.counts == Counts::count ? node.arrays[row.rates].size() : node.arrays[row.counts].size();
            const std::size_t count = std::min(times.size, size - std::min(size, begin));
            add_values(*columns[k], which, node.arrays, times, begin, count);
            for (std::size_t i = 0; i < count; ++i)
                add_sample(*columns[k], which, times, samples, i);
        }
    }
}

PortColumns& Columns::port_of(const PortNode& node) {
    const auto is_same = [&](const std::unique_ptr<PortColumns>& port) {
        return port->memory == node.memory && port->interface == node.interface && port->port == node.port;
    };
    auto& ports = m_kernel->ports;
    const std::size_t place = m_num_ports++;
    if (place < ports.size() && is_same(ports[place]))
        return *ports[place];
    const auto found = std::ranges::find_if(ports, is_same);
    if (found != ports.end())
        return **found;
    return *ports.emplace_back(std::make_unique<PortColumns>(node, m_store));
}

void Columns::port(const PortNode& node) {
    PortColumns& port = port_of(node);
    struct PortRow {
        Column& column;
        Rates rates;
    };
    const PortRow rows[] = {{port.bandwidth, Rates::bandwidth},
                            {port.read_burst, Rates::read_burst},
                            {port.write_burst, Rates::write_burst}};
    for (const auto& [column, rates] : rows) {
        const SampleList<float>& list = node.arrays[rates];
        const bool by_cycles = rates == Rates::bandwidth;
        column.fill_up_to(m_first);
        SampleCursor<float> cursor(list);
        SampleCursor<long long> cycles(m_node->arrays[Counts::cycles]);
        for (std::size_t i = 0; i < std::min(m_num_samples, list.size()); ++i) {
            const float value = cursor.next();
            const long long length = cycles.next();
            column.series.add(value);
            const auto number = static_cast<double>(value);
            const bool counts = std::isfinite(value) && value >= 0.0f && length > 0;
            const double weight = by_cycles ? static_cast<double>(length) : 1.0;
            column.pyramid.add(counts ? number : missing_value, number * weight, weight);
        }
    }
}

void Columns::end_kernel() {
    m_kernel = nullptr;
    m_node = nullptr;
}

void Columns::transfer(const TransferNode& node) {
    std::vector<std::string>& types = m_transfers.types;
    const auto found = std::ranges::find(types, node.type);
    m_transfers.type.add(std::int64_t{found - types.begin()});
    if (found == types.end())
        types.push_back(node.type);
    m_transfers.device.add(std::int64_t{node.device});
    m_transfers.queue.add(std::int64_t{node.queue});
    m_transfers.start.add(relative(node.start));
    m_transfers.end.add(relative(node.end));
}

} // namespace zan::profile
