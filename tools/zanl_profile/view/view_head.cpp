// SPDX-License-Identifier: Apache-2.0
// Numbers of the whole run are those of the summary, so that page and program show the same; what the page
// works out itself, for a stretch of the run, it works out of the series and their sums.
#include "view_head.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>
#include <string_view>
#include <utility>

#include "block_facts.h"
#include "rules_reader.h"
#include "series_json.h"

namespace zan::tool {

namespace {

using profile::BlockSummary;
using profile::Column;
using profile::KernelColumns;
using profile::KernelSummary;
using profile::Metric;
using profile::ProfileColumns;
using profile::ProfileSummary;
using profile::Series;
using profile::SeriesTable;
using profile::Value;

constexpr int head_format = 1;

// Facts that a page can't work out of sums.
constexpr std::string_view number_facts[] = {
    "stall",        "valid",      "idle",     "lost",      "iteration",  "net",         "bandwidth",
    "moved",        "efficiency", "hits",     "unaligned", "fill",       "fill_share",  "burst",
    "burst_share",  "memory_use", "port_use", "own_share", "read_share", "write_share", "clock_reach",
    "port_sharers", "calm_part",  "from",     "to",        "max_valid"};
constexpr std::string_view text_facts[] = {"rivals", "port", "sharer"};

class HeadWriter {
  public:
    HeadWriter(PageJson& json, ProfileColumns& profile, SeriesTable& table)
        : m_json(json),
          m_profile(profile),
          m_summary(profile.summary),
          m_table(table),
          m_offset(profile::wrapped_difference(profile.columns.base(), start_of(profile.summary))) {}

    void write(std::span<const std::string> sources);

  private:
    static std::int64_t start_of(const ProfileSummary& summary) {
        return summary.start.empty() ? 0 : std::stoll(summary.start);
    }
    // A time of the summary in the unit of the report.
    Value ticks(const Value& time) const {
        return time ? Value(*time / m_summary.nanoseconds.value_or(1.0)) : time;
    }
    std::string_view unit() const;

    void write_run();
    void write_memories();
    void write_kernel(std::size_t number);
    void write_times(const KernelSummary& kernel);
    void write_invocations(KernelColumns& columns);
    void write_blocks(const KernelSummary& kernel, KernelColumns& columns);
    void write_block(const KernelSummary& kernel, const BlockSummary& block, profile::BlockColumns& columns);
    void write_sources(const BlockSummary& block);
    void write_facts(const KernelSummary& kernel, const BlockSummary& block);
    void write_ports(const KernelSummary& kernel, const KernelColumns& columns);
    void write_transfers();

    int add(Column& column, std::uint64_t length, int shown_digits, std::int64_t offset = 0);
    int add_integers(std::span<const std::int64_t> values);

    PageJson& m_json;
    ProfileColumns& m_profile;
    const ProfileSummary& m_summary;
    SeriesTable& m_table;
    const std::int64_t m_offset; // from the base of the columns to the start of the run
};

int HeadWriter::add(Column& column, std::uint64_t length, int shown_digits, std::int64_t offset) {
    column.fill_up_to(length);
    return m_table.add(column, shown_digits, offset);
}

int HeadWriter::add_integers(std::span<const std::int64_t> values) {
    Series series(m_profile.store);
    for (const std::int64_t value : values)
        series.add(value);
    return m_table.add(std::move(series));
}

std::string_view HeadWriter::unit() const {
    constexpr std::pair<double, std::string_view> units[] = {
        {1.0, "ns"}, {1e3, "us"}, {1e6, "ms"}, {1e9, "s"}};
    for (const auto& [nanoseconds, name] : units) {
        if (m_summary.nanoseconds == nanoseconds)
            return name;
    }
    return "";
}

void HeadWriter::write(std::span<const std::string> sources) {
    m_json.begin_object();
    m_json.key("format").integer(head_format);
    write_memories();
    m_json.key("kernels").begin_array();
    for (std::size_t i = 0; i < m_summary.kernels.size(); ++i)
        write_kernel(i);
    m_json.end_array();
    write_transfers();
    write_run();
    m_json.key("series");
    write_series_table(m_json, m_table);
    m_json.key("sources").begin_object();
    std::size_t chunk = m_table.chunks().size();
    for (const std::string& file : sources)
        m_json.key(file).count(chunk++);
    m_json.end_object();
    m_json.key("notes").begin_array();
    for (const profile::Note& note : m_summary.notes)
        m_json.text(note.text);
    m_json.end_array();
    m_json.end_object();
}

// After all series, whose values it counts.
void HeadWriter::write_run() {
    m_json.key("run").begin_object();
    m_json.key("report").text(shown_name(m_summary.input));
    m_json.key("version").text(m_summary.program_version);
    m_json.key("zanx").text(m_summary.zanx_version);
    m_json.key("fmax").text(m_summary.clock_text);
    m_json.key("board").text(m_summary.board);
    m_json.key("unit").text(unit());
    m_json.key("start").text(m_summary.start.empty() ? "0" : m_summary.start);
    m_json.key("span").number(ticks(m_summary.metrics[Metric::span]).value_or(0.0));
    m_json.key("kernel_time").number(ticks(m_summary.kernel_time).value_or(0.0));
    m_json.key("transfer_only").number(ticks(m_summary.transfer_only).value_or(0.0));
    m_json.key("values").count(m_table.num_values());
    m_json.key("reduced").count(m_profile.group);
    m_json.end_object();
}

void HeadWriter::write_memories() {
    m_json.key("memories").begin_array();
    for (const profile::MemorySummary& memory : m_summary.memories) {
        const auto bins = m_profile.memory_bins.find(memory.name);
        const bool is_used = bins != m_profile.memory_bins.end() && !bins->second.empty();
        m_json.begin_object();
        m_json.key("name").text(memory.name);
        m_json.key("peak").number(memory.peak);
        m_json.key("max_burst").number(memory.max_burst.value_or(0.0));
        m_json.key("by").text(!is_used ? "none" : memory.from_ports ? "ports" : "accesses");
        m_json.key("bins").begin_array();
        if (is_used) {
            for (const double bandwidth : bins->second)
                m_json.number(
                    bandwidth < 1.0 ? 0.0 : static_cast<double>(static_cast<float>(std::round(bandwidth))));
        }
        m_json.end_array();
        m_json.key("mean").number(memory.metrics[Metric::memory_mean]);
        m_json.key("max").number(memory.metrics[Metric::memory_max]);
        m_json.key("full").number(memory.metrics[Metric::memory_full]);
        m_json.key("lower_bound").boolean(memory.lower_bound);
        m_json.key("interfaces").begin_array();
        for (const profile::InterfaceSummary& interface : memory.interfaces) {
            m_json.begin_array();
            m_json.text(interface.name);
            m_json.number(interface.bytes);
            m_json.number(interface.use);
            m_json.end_array();
        }
        m_json.end_array();
        m_json.end_object();
    }
    m_json.end_array();
}

void HeadWriter::write_kernel(std::size_t number) {
    const KernelSummary& kernel = m_summary.kernels[number];
    KernelColumns& columns = *m_profile.columns.kernels()[m_profile.kernel_places[number]];
    m_json.begin_object();
    m_json.key("name").text(kernel.name);
    m_json.key("cu").integer(kernel.compute_unit);
    m_json.key("file").text(kernel.source.file);
    m_json.key("line").integer(kernel.source.line);
    m_json.key("autorun").boolean(kernel.autorun);
    m_json.key("types").begin_array();
    for (int type = 0; type < 4; ++type) {
        if ((kernel.shared_types >> type & 1U) != 0)
            m_json.integer(type);
    }
    m_json.end_array();
    m_json.key("n").count(columns.num_samples);
    write_times(kernel);
    m_json.key("mem").begin_object();
    for (const auto& [memory, bandwidth] : m_profile.kernel_traffic[number])
        m_json.key(memory).number(bandwidth);
    m_json.end_object();
    write_invocations(columns);
    m_json.key("time").integer(add(columns.time, columns.num_samples, 0, m_offset));
    const double cycles = columns.cycles.sums.products;
    m_json.key("cycles").integer(add(columns.cycles, columns.num_samples, 0));
    m_json.key("cycles_total").number(cycles > 0.0 ? Value(cycles) : Value());
    columns.device.fill_up_to(columns.num_samples);
    columns.queue.fill_up_to(columns.num_samples);
    m_json.key("device").integer(m_table.add(std::move(columns.device)));
    m_json.key("queue").integer(m_table.add(std::move(columns.queue)));
    write_blocks(kernel, columns);
    write_ports(kernel, columns);
    m_json.end_object();
}

void HeadWriter::write_times(const KernelSummary& kernel) {
    const double span = m_summary.metrics[Metric::span].value_or(0.0);
    const Value alone = kernel.metrics[Metric::alone];
    m_json.key("total").number(ticks(kernel.metrics[Metric::kernel_total]).value_or(0.0));
    m_json.key("union").number(ticks(kernel.union_time).value_or(0.0));
    m_json.key("alone").number(alone ? ticks(*alone / 100.0 * span).value_or(0.0) : 0.0);
    m_json.key("median").number(ticks(kernel.metrics[Metric::kernel_time]));
    m_json.key("p95").number(ticks(kernel.metrics[Metric::kernel_p95]));
    m_json.key("shortest").number(ticks(kernel.shortest));
    m_json.key("longest").number(ticks(kernel.longest));
    m_json.key("gaps").number(ticks(kernel.gaps));
    m_json.key("waiting").number(kernel.metrics[Metric::waiting]);
    m_json.key("with").begin_array();
    for (const KernelSummary* other : profile::team_of(m_summary, kernel))
        m_json.integer(other - m_summary.kernels.data());
    m_json.end_array();
}

void HeadWriter::write_invocations(KernelColumns& columns) {
    const std::vector<profile::InvocationColumn>& invocations = columns.invocations;
    std::array<std::vector<std::int64_t>, 4> values;
    for (const profile::InvocationColumn& invocation : invocations) {
        values[0].push_back(profile::wrapped_sum(invocation.start, m_offset));
        values[1].push_back(profile::wrapped_sum(invocation.end, m_offset));
        values[2].push_back(static_cast<std::int64_t>(invocation.first));
        values[3].push_back(static_cast<std::int64_t>(invocation.shared));
    }
    m_json.key("invocations").begin_object();
    m_json.key("n").count(invocations.size());
    constexpr std::string_view names[] = {"start", "end", "first", "type"};
    for (std::size_t i = 0; i < values.size(); ++i)
        m_json.key(names[i]).integer(add_integers(values[i]));
    m_json.end_object();
}

void HeadWriter::write_blocks(const KernelSummary& kernel, KernelColumns& columns) {
    m_json.key("blocks").begin_array();
    for (profile::BlockColumns& of_block : columns.blocks) {
        for (auto& column : of_block.columns) {
            if (column)
                column->fill_up_to(columns.num_samples);
        }
        const auto block = std::ranges::find(kernel.blocks, of_block.name, &BlockSummary::name);
        if (block != kernel.blocks.end())
            write_block(kernel, *block, of_block);
    }
    m_json.end_array();
}

std::string_view kind_name(profile::BlockKind kind) {
    switch (kind) {
        case profile::BlockKind::global:
            return "global";
        case profile::BlockKind::loop:
            return "loop";
        case profile::BlockKind::channel:
            return "channel";
        default:
            return "other";
    }
}

std::string_view direction_name(profile::Direction direction) {
    switch (direction) {
        case profile::Direction::read:
            return "read";
        case profile::Direction::write:
            return "write";
        default:
            return "";
    }
}

void HeadWriter::write_block(const KernelSummary& kernel, const BlockSummary& block,
                             profile::BlockColumns& columns) {
    m_json.begin_object();
    m_json.key("name").text(block.name);
    m_json.key("kind").text(kind_name(block.kind));
    m_json.key("rw").text(direction_name(block.direction));
    m_json.key("mem").text(block.memory);
    m_json.key("coalesced").boolean(block.coalesced);
    write_sources(block);
    m_json.key("sums").begin_object();
    for (std::size_t i = 0; i < columns.columns.size(); ++i) {
        if (!columns.columns[i])
            continue;
        const profile::SeriesSums& sums = columns.columns[i]->sums;
        m_json.key(profile::name_of(static_cast<profile::BlockSeries>(i))).begin_array();
        m_json.number(sums.products);
        m_json.number(sums.weights);
        m_json.number(sums.cycles);
        m_json.count(sums.num_left_out);
        m_json.end_array();
    }
    m_json.end_object();
    m_json.key("series").begin_object();
    for (std::size_t i = 0; i < columns.columns.size(); ++i) {
        if (!columns.columns[i])
            continue;
        Column& column = *columns.columns[i];
        const int digits = column.series.digits();
        // Shares are shown in whole ten-thousandths.
        const int shown_digits = i <= static_cast<std::size_t>(profile::BlockSeries::idle) ? 0 : digits;
        m_json.key(profile::name_of(static_cast<profile::BlockSeries>(i)))
            .integer(m_table.add(column, shown_digits));
    }
    m_json.end_object();
    if (const profile::BurstEntries& bursts = columns.bursts; bursts.num > 0) {
        m_json.key("burst").begin_array();
        m_json.count(bursts.num);
        m_json.number(bursts.sum / static_cast<double>(bursts.num));
        m_json.number(bursts.least);
        m_json.number(bursts.greatest);
        m_json.end_array();
    }
    write_facts(kernel, block);
    m_json.end_object();
}

void HeadWriter::write_sources(const BlockSummary& block) {
    m_json.key("src").begin_array();
    for (const profile::CallChain& chain : block.sources) {
        m_json.begin_array();
        for (const profile::SourcePlace& place : chain) {
            m_json.begin_array();
            m_json.text(place.file);
            m_json.integer(place.line);
            m_json.integer(place.column);
            m_json.end_array();
        }
        m_json.end_array();
    }
    m_json.end_array();
}

void HeadWriter::write_facts(const KernelSummary& kernel, const BlockSummary& block) {
    const profile::Facts facts = profile::facts_of(m_summary, kernel, block, profile::built_in_rules());
    m_json.key("facts").begin_object();
    for (const std::string_view name : number_facts) {
        if (const auto place = profile::find_number(name); place && facts.number(*place))
            m_json.key(name).number(facts.number(*place));
    }
    for (const std::string_view name : text_facts) {
        if (const auto text = profile::find_text(name); text && !facts[*text].empty())
            m_json.key(name).text(facts[*text]);
    }
    m_json.end_object();
}

void HeadWriter::write_ports(const KernelSummary& kernel, const KernelColumns& columns) {
    m_json.key("ports").begin_array();
    for (const auto& port : columns.ports) {
        const auto found = std::ranges::find_if(kernel.ports, [&](const profile::PortSummary& other) {
            return other.memory == port->memory && other.interface == port->interface &&
                   other.port == port->port;
        });
        if (found == kernel.ports.end())
            continue;
        m_json.begin_object();
        m_json.key("mem").text(port->memory);
        m_json.key("interface").text(port->interface);
        m_json.key("port").text(port->port);
        m_json.key("dir").text(!found->writes ? "r" : !found->reads ? "w" : "rw");
        m_json.key("mean").number(found->mean);
        m_json.key("max").number(found->max);
        m_json.key("bytes").number(found->bytes);
        m_json.key("read_burst").number(found->read_burst);
        m_json.key("write_burst").number(found->write_burst);
        const std::pair<std::string_view, Column*> series[] = {
            {"bw", &port->bandwidth}, {"rburst", &port->read_burst}, {"wburst", &port->write_burst}};
        for (const auto& [name, column] : series) {
            const int digits = column->series.digits();
            m_json.key(name).integer(add(*column, columns.num_samples, digits));
        }
        m_json.end_object();
    }
    m_json.end_array();
}

void HeadWriter::write_transfers() {
    profile::TransferColumns& transfers = m_profile.columns.transfers();
    m_json.key("transfers").begin_object();
    m_json.key("types").begin_array();
    for (const std::string& type : transfers.types)
        m_json.text(type);
    m_json.end_array();
    m_json.key("n").count(transfers.type.size());
    m_json.key("type").integer(m_table.add(std::move(transfers.type)));
    m_json.key("device").integer(m_table.add(std::move(transfers.device)));
    m_json.key("queue").integer(m_table.add(std::move(transfers.queue)));
    m_json.key("start").integer(m_table.add(std::move(transfers.start), m_offset));
    m_json.key("end").integer(m_table.add(std::move(transfers.end), m_offset));
    m_json.key("totals").begin_array();
    for (const profile::TransferSummary& transfer : m_summary.transfers) {
        m_json.begin_array();
        m_json.text(transfer.type);
        m_json.integer(transfer.queue);
        m_json.count(transfer.num);
        m_json.number(ticks(transfer.total));
        m_json.end_array();
    }
    m_json.end_array();
    m_json.end_object();
}

} // namespace

std::string shown_name(const std::string& input) {
    return input == "-" ? "standard input" : input.substr(input.rfind('/') + 1);
}

void write_head(PageJson& json, ProfileColumns& profile, SeriesTable& table,
                std::span<const std::string> sources) {
    HeadWriter(json, profile, table).write(sources);
}

} // namespace zan::tool
