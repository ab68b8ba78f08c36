// SPDX-License-Identifier: Apache-2.0
#include "joined_samples.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "series_cursor.h"

namespace zan::profile {

namespace {

// How many samples become one value.
enum class Joining { sum, greatest, mean };

// What a value is multiplied with in sums.
enum class Weight { one, cycles, traffic, accesses };

struct ColumnRole {
    Joining joining = Joining::sum;
    Weight weight = Weight::one;
    bool is_share = false;   // charts show it as a share of the cycles
    bool above_zero = false; // 0 is unknown
};

ColumnRole role_of(BlockSeries series) {
    switch (series) {
        case BlockSeries::valid:
        case BlockSeries::stall:
        case BlockSeries::idle:
            return {Joining::sum, Weight::one, true, false};
        case BlockSeries::bandwidth:
            return {Joining::mean, Weight::cycles, false, false};
        case BlockSeries::efficiency:
            return {Joining::mean, Weight::traffic, false, false};
        case BlockSeries::fill:
            return {Joining::mean, Weight::accesses, false, false};
        case BlockSeries::max_fill:
            return {Joining::greatest, Weight::one, false, false};
        case BlockSeries::burst:
            return {Joining::mean, Weight::one, false, true};
        default:
            return {};
    }
}

// The values of a group that count.
struct GroupSums {
    std::uint64_t num = 0;
    double low = 0.0; // as charts show them
    double high = 0.0;
    double values = 0.0;
    double greatest = 0.0;
    double products = 0.0;
    double weights = 0.0;
    double cycles = 0.0;

    void add(double value, double shown, double weight, double length) {
        low = num == 0 ? shown : std::min(low, shown);
        high = num == 0 ? shown : std::max(high, shown);
        greatest = num == 0 ? value : std::max(greatest, value);
        values += value;
        products += value * weight;
        weights += weight;
        cycles += length;
        ++num;
    }
    double joined(Joining joining) const {
        switch (joining) {
            case Joining::sum:
                return values;
            case Joining::greatest:
                return greatest;
            default:
                return products / weights;
        }
    }
};

class ColumnJoiner {
  public:
    // `block`: where weights come from; null for a port.
    ColumnJoiner(Column& column, ColumnRole role, const KernelColumns& kernel, const BlockColumns* block,
                 ChunkStore& store)
        : m_role(role),
          m_old(column),
          m_values(&column.series, store),
          m_cycles(&kernel.cycles.series, store),
          m_first(weight_series(block, true), store),
          m_second(weight_series(block, false), store),
          m_new(std::make_unique<Column>(store)) {
        m_new->sums = column.sums;
        m_new->peaks = std::make_unique<Peaks>(store);
        if (is_count())
            m_new->pyramid.count_by_weights();
    }

    void add(const SampleGroup& group);
    std::unique_ptr<Column> result() { return std::move(m_new); }

  private:
    const Series* weight_series(const BlockColumns* block, bool first) const {
        const auto of = [&](BlockSeries which) {
            const auto& column = block->columns[static_cast<std::size_t>(which)];
            return column ? &column->series : nullptr;
        };
        if (block && m_role.weight == Weight::traffic)
            return first ? of(BlockSeries::bandwidth) : nullptr;
        if (block && m_role.weight == Weight::accesses)
            return of(first ? BlockSeries::requests : BlockSeries::stall);
        return nullptr;
    }
    double weight_at(std::uint64_t place, double cycles);
    void add_value(const SampleGroup& group, const GroupSums& sums);
    // Charts show its mean over samples, and not over the groups.
    bool is_count() const { return m_role.joining == Joining::sum && !m_role.is_share; }

    ColumnRole m_role;
    Column& m_old;
    SeriesCursor m_values;
    SeriesCursor m_cycles;
    SeriesCursor m_first;
    SeriesCursor m_second;
    std::unique_ptr<Column> m_new;
};

double ColumnJoiner::weight_at(std::uint64_t place, double cycles) {
    const auto known = [](double value) { return value > 0.0 ? value : 0.0; };
    switch (m_role.weight) {
        case Weight::cycles:
            return cycles;
        case Weight::traffic:
            return known(m_first.number_at(place)) * cycles;
        case Weight::accesses:
            return known(m_first.number_at(place)) + known(m_second.number_at(place));
        default:
            return 1.0;
    }
}

void ColumnJoiner::add(const SampleGroup& group) {
    GroupSums sums;
    for (std::uint64_t i = group.begin; i < group.end && !group.is_left_out; ++i) {
        const double value = m_values.number_at(i);
        const double cycles = m_cycles.number_at(i);
        const bool is_known = m_role.above_zero ? value > 0.0 : value >= 0.0;
        if (!is_known || !(cycles > 0.0))
            continue;
        const double weight = weight_at(i, cycles);
        if (weight > 0.0)
            sums.add(value, m_role.is_share ? std::round(value / cycles * 10'000.0) : value, weight, cycles);
    }
    add_value(group, sums);
    if (is_count())
        m_new->peaks->counts.add(static_cast<std::int64_t>(sums.num));
    const int digits = m_role.is_share ? 0 : m_old.series.digits();
    if (sums.num == 0) {
        m_new->pyramid.add(std::nan(""), 0.0, 0.0);
        m_new->peaks->least.add_marks(Mark::missing, 1);
        m_new->peaks->range.add_marks(Mark::missing, 1);
        return;
    }
    m_new->pyramid.add_range(sums.low, sums.high, sums.products,
                             m_role.is_share ? sums.cycles : sums.weights);
    m_new->peaks->least.add_rounded(sums.low, digits);
    m_new->peaks->range.add_rounded(sums.high - sums.low, digits);
}

// A single sample stays as it is.
void ColumnJoiner::add_value(const SampleGroup& group, const GroupSums& sums) {
    constexpr int more_digits = 3; // of a mean
    Series& series = m_new->series;
    const int digits = m_old.series.digits();
    const bool is_single = group.end - group.begin == 1;
    if (group.is_left_out || (!is_single && sums.num == 0))
        series.add_marks(Mark::missing, 1);
    else if (const auto mark = m_values.mark_at(group.begin); is_single && mark)
        series.add_marks(*mark, 1);
    else if (is_single)
        series.add(Decimal{m_values.units_at(group.begin), digits});
    else
        series.add_rounded(sums.joined(m_role.joining), m_role.joining == Joining::mean
                                                            ? std::min(digits + more_digits, max_decimals)
                                                            : digits);
}

// The joined samples of a kernel, column by column.
class KernelJoiner {
  public:
    KernelJoiner(KernelColumns& kernel, const std::vector<InvocationPart>& parts, std::uint64_t group_size,
                 ChunkStore& store)
        : m_old(kernel),
          m_parts(parts),
          m_group_size(group_size),
          m_store(store),
          m_new(std::make_unique<KernelColumns>(store)) {}

    std::unique_ptr<KernelColumns> join();

  private:
    template <typename Take>
    void for_each(Take take) const {
        for (const InvocationPart& part : m_parts)
            for_each_group(part, m_group_size, take);
    }
    void finish_old();
    void join_invocations();
    void join_times();
    void join_numbers(const Series& old, Series& joined);
    std::unique_ptr<Column> join_column(Column& old, ColumnRole role, const BlockColumns* block);
    void join_ports();

    KernelColumns& m_old;
    const std::vector<InvocationPart>& m_parts;
    std::uint64_t m_group_size;
    ChunkStore& m_store;
    std::unique_ptr<KernelColumns> m_new;
};

// Series can be read when they are finished.
void KernelJoiner::finish_old() {
    const auto finish = [&](Series& series) {
        series.fill_up_to(m_old.num_samples);
        series.finish();
    };
    for (Series* series : {&m_old.time.series, &m_old.cycles.series, &m_old.device, &m_old.queue})
        finish(*series);
    for (const BlockColumns& block : m_old.blocks) {
        for (const auto& column : block.columns) {
            if (column)
                finish(column->series);
        }
    }
    for (const auto& port : m_old.ports) {
        for (Column* column : {&port->bandwidth, &port->read_burst, &port->write_burst})
            finish(column->series);
    }
}

void KernelJoiner::join_invocations() {
    m_new->invocations = m_old.invocations;
    for (std::size_t i = 0; i < m_parts.size(); ++i) {
        m_new->invocations[i].first = m_new->num_samples;
        for_each_group(m_parts[i], m_group_size, [&](const SampleGroup&) { ++m_new->num_samples; });
    }
}

// A joined sample ends with its last one, and has the cycles of all of them.
void KernelJoiner::join_times() {
    SeriesCursor time(&m_old.time.series, m_store);
    SeriesCursor cycles(&m_old.cycles.series, m_store);
    m_new->cycles.sums = m_old.cycles.sums;
    for_each([&](const SampleGroup& group) {
        const std::int64_t end = time.units_at(group.end - 1);
        m_new->time.series.add(end);
        m_new->time.pyramid.add(static_cast<double>(end), static_cast<double>(end), 1.0);
        double sum = 0.0;
        for (std::uint64_t i = group.begin; i < group.end && !group.is_left_out; ++i) {
            const double number = cycles.number_at(i);
            sum += number > 0.0 ? number : 0.0;
        }
        const bool is_known = sum > 0.0;
        if (is_known)
            m_new->cycles.series.add_rounded(sum, 0);
        else
            m_new->cycles.series.add_marks(Mark::missing, 1);
        m_new->cycles.pyramid.add(is_known ? sum : std::nan(""), sum, 1.0);
    });
}

// Numbers that name something: those of the last sample.
void KernelJoiner::join_numbers(const Series& old, Series& joined) {
    SeriesCursor cursor(&old, m_store);
    for_each([&](const SampleGroup& group) {
        if (const auto mark = cursor.mark_at(group.end - 1))
            joined.add_marks(*mark, 1);
        else
            joined.add(cursor.units_at(group.end - 1));
    });
}

std::unique_ptr<Column> KernelJoiner::join_column(Column& old, ColumnRole role, const BlockColumns* block) {
    ColumnJoiner joiner(old, role, m_old, block, m_store);
    for_each([&](const SampleGroup& group) { joiner.add(group); });
    return joiner.result();
}

void KernelJoiner::join_ports() {
    for (const auto& old : m_old.ports) {
        auto bandwidth = join_column(old->bandwidth, {Joining::mean, Weight::cycles, false, false}, nullptr);
        auto read = join_column(old->read_burst, {Joining::mean, Weight::one, false, true}, nullptr);
        auto write = join_column(old->write_burst, {Joining::mean, Weight::one, false, true}, nullptr);
        m_new->ports.push_back(
            std::make_unique<PortColumns>(*old, std::move(*bandwidth), std::move(*read), std::move(*write)));
    }
}

std::unique_ptr<KernelColumns> KernelJoiner::join() {
    finish_old();
    join_invocations();
    join_times();
    join_numbers(m_old.device, m_new->device);
    join_numbers(m_old.queue, m_new->queue);
    for (const BlockColumns& old : m_old.blocks) {
        BlockColumns& block = m_new->blocks.emplace_back();
        block.name = old.name;
        block.bursts = old.bursts;
        for (std::size_t i = 0; i < num_block_series; ++i) {
            if (old.columns[i])
                block.columns[i] = join_column(*old.columns[i], role_of(static_cast<BlockSeries>(i)), &old);
        }
    }
    join_ports();
    return std::move(m_new);
}

} // namespace

std::unique_ptr<KernelColumns> joined_samples(KernelColumns& kernel, const std::vector<InvocationPart>& parts,
                                              std::uint64_t group_size, ChunkStore& store) {
    return KernelJoiner(kernel, parts, group_size, store).join();
}

} // namespace zan::profile
