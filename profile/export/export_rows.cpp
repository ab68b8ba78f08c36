// SPDX-License-Identifier: Apache-2.0
#include "export_rows.h"

#include <charconv>
#include <map>
#include <utility>

#include "block_facts.h"
#include "contract.h"
#include "diagnosis.h"
#include "source_place.h"
#include "utf8_text.h"

namespace zan::profile {

namespace {

// The cells of a row, in the order of its columns.
class RowCells {
  public:
    explicit RowCells(std::int64_t run_id) { integer(run_id); }

    RowCells& integer(std::int64_t value) {
        m_cells.emplace_back(value);
        return *this;
    }
    RowCells& count(std::uint64_t value) { return integer(static_cast<std::int64_t>(value)); }
    RowCells& known(bool is_known, std::int64_t value) {
        if (is_known)
            m_cells.emplace_back(value);
        else
            m_cells.emplace_back();
        return *this;
    }
    // An empty text is null: the report doesn't have it.
    RowCells& text(std::string_view value) {
        if (value.empty())
            m_cells.emplace_back();
        else
            m_cells.emplace_back(valid_utf8_text(value));
        return *this;
    }
    RowCells& real(const Value& value) {
        if (value)
            m_cells.emplace_back(*value);
        else
            m_cells.emplace_back();
        return *this;
    }
    RowCells& metrics(MetricScope scope, const MetricValues& values, bool time_unit_known) {
        for (const MetricRow& row : metric_table()) {
            if (row.scope != scope)
                continue;
            const Value& value = values[row.metric];
            if (row.unit != MetricUnit::time)
                real(value);
            else
                real(time_unit_known ? value : Value()).real(time_unit_known ? Value() : value);
        }
        return *this;
    }
    const std::vector<ExportCell>& cells() const { return m_cells; }

  private:
    std::vector<ExportCell> m_cells;
};

// The numbers of memories, by their names.
using MemoryIds = std::map<std::string, std::int64_t>;

struct RowMaker {
    const WholeRun& run;
    std::int64_t run_id;
    RowWriter& writer;
    bool knows_unit = run.summary.nanoseconds.has_value();
    MemoryIds memories = {};
    // For each kernel of the summary its place in the totals: autorun kernels come last there.
    std::vector<std::size_t> places = {};

    void write(ExportTable table, const RowCells& row) const { writer.row(table, row.cells()); }
    void find_places();
    void find_memories();
    void write_run(const OddNumbers& odd) const;
    void write_kernels() const;
    void write_invocations() const;
    void write_blocks() const;
    void write_memories() const;
    void write_ports() const;
    std::int64_t memory_id(const std::string& name) const {
        const auto found = memories.find(name);
        return found == memories.end() ? 0 : found->second;
    }
};

void RowMaker::find_places() {
    const auto& kernels = run.totals.kernels();
    for (const bool autorun : {false, true}) {
        for (std::size_t place = 0; place < kernels.size(); ++place) {
            if (kernels[place].autorun == autorun)
                places.push_back(place);
        }
    }
    ZAN_CONTRACT(places.size() == run.summary.kernels.size(), "a summary has the kernels of its totals");
}

void RowMaker::find_memories() {
    const auto add = [&](const std::string& name) {
        if (!name.empty())
            memories.emplace(name, static_cast<std::int64_t>(memories.size()) + 1);
    };
    for (const MemorySummary& memory : run.summary.memories)
        add(memory.name);
    for (const KernelSummary& kernel : run.summary.kernels) {
        for (const BlockSummary& block : kernel.blocks)
            add(block.memory);
        for (const PortSummary& port : kernel.ports)
            add(port.memory);
    }
}

void RowMaker::write_run(const OddNumbers& odd) const {
    const ProfileSummary& summary = run.summary;
    std::int64_t start = 0;
    const char* const end = summary.start.data() + summary.start.size();
    const bool has_start = std::from_chars(summary.start.data(), end, start).ec == std::errc();
    RowCells row(run_id);
    row.integer(export_schema_version).text(summary.input).text(summary.program_version);
    row.text(summary.zanx_version).text(summary.board).real(summary.clock_mhz).real(summary.nanoseconds);
    row.known(has_start, start).integer(odd.num_nan).integer(odd.num_inf);
    write(ExportTable::run, row.metrics(MetricScope::run, summary.metrics, knows_unit));
}

void RowMaker::write_kernels() const {
    for (std::size_t i = 0; i < places.size(); ++i) {
        const KernelSummary& kernel = run.summary.kernels[i];
        RowCells row(run_id);
        row.count(places[i] + 1).text(kernel.name).integer(kernel.compute_unit);
        row.known(kernel.device.has_value(), kernel.device.value_or(0)).text(kernel.source.file);
        row.known(kernel.source.line > 0, kernel.source.line).integer(kernel.autorun ? 1 : 0);
        row.count(kernel.num_invocations).count(kernel.num_samples).text(kernel.culprit);
        write(ExportTable::kernel, row.metrics(MetricScope::kernel, kernel.metrics, knows_unit));
    }
}

void RowMaker::write_invocations() const {
    for (std::size_t place = 0; place < run.ids.kernels.size(); ++place) {
        const auto& spans = run.totals.kernels()[place].invocations.spans();
        const auto& invocations = run.ids.kernels[place].invocations;
        for (std::size_t i = 0; i < invocations.size(); ++i) {
            RowCells row(run_id);
            row.integer(invocations[i].id).count(place + 1).integer(spans[i].begin).integer(spans[i].end);
            write(ExportTable::invocation, row.count(invocations[i].num_samples));
        }
    }
}

// In the order of the summary, which the column `place` keeps.
void RowMaker::write_blocks() const {
    std::int64_t rank = 0;
    for (const RankedBlock& ranked : ranking(run.summary)) {
        const std::size_t place = places[ranked.kernel];
        const BlockSummary& block = run.summary.kernels[ranked.kernel].blocks[ranked.block];
        const bool has_source = !block.sources.empty() && !block.sources.front().empty();
        const SourcePlace source = has_source ? block.sources.front().front() : SourcePlace();
        const std::int64_t memory = memory_id(block.memory);
        RowCells row(run_id);
        row.integer(run.ids.kernels[place].blocks[ranked.block]).count(place + 1).integer(++rank);
        row.text(block.name).text(kind_text(block)).known(memory > 0, memory);
        row.text(source.file).known(source.line > 0, source.line).text(call_chain_text(block.sources));
        row.text(block.sentence.rule).text(block.sentence.text);
        write(ExportTable::block, row.metrics(MetricScope::block, block.metrics, knows_unit));
    }
}

void RowMaker::write_memories() const {
    for (const MemorySummary& memory : run.summary.memories) {
        RowCells row(run_id);
        row.integer(memory_id(memory.name)).text(memory.name).real(memory.peak).real(memory.max_burst);
        row.integer(memory.lower_bound ? 1 : 0);
        write(ExportTable::memory, row.metrics(MetricScope::memory, memory.metrics, knows_unit));
    }
    for (const auto& [name, id] : memories) {
        if (id <= static_cast<std::int64_t>(run.summary.memories.size()))
            continue;
        RowCells row(run_id);
        row.integer(id).text(name).real({}).real({}).integer(1);
        write(ExportTable::memory, row.metrics(MetricScope::memory, {}, knows_unit));
    }
}

void RowMaker::write_ports() const {
    for (std::size_t place = 0; place < run.ids.kernels.size(); ++place) {
        const auto& ports = run.totals.kernels()[place].ports;
        for (std::size_t i = 0; i < ports.size(); ++i) {
            const std::int64_t memory = memory_id(ports[i].memory);
            RowCells row(run_id);
            row.integer(run.ids.kernels[place].ports[i]).count(place + 1).known(memory > 0, memory);
            row.text(ports[i].interface).text(ports[i].port);
            write(ExportTable::port, row.integer(ports[i].reads ? 1 : 0).integer(ports[i].writes ? 1 : 0));
        }
    }
}

} // namespace

std::string call_chain_text(const std::vector<CallChain>& chains) {
    std::string text;
    for (const CallChain& chain : chains) {
        text += text.empty() ? "" : "; ";
        for (std::size_t i = 0; i < chain.size(); ++i)
            text += (i == 0 ? "" : " < ") + source_place_text(chain[i]);
    }
    return text;
}

void write_rows(const WholeRun& run, std::int64_t run_id, const OddNumbers& odd, RowWriter& writer) {
    RowMaker maker{run, run_id, writer};
    maker.find_places();
    maker.find_memories();
    maker.write_run(odd);
    maker.write_kernels();
    maker.write_invocations();
    maker.write_blocks();
    maker.write_memories();
    maker.write_ports();
}

void write_transfer_row(std::int64_t run_id, std::int64_t id, const TransferNode& node, RowWriter& writer) {
    RowCells row(run_id);
    row.integer(id).text(node.type).integer(node.device).integer(node.queue);
    writer.row(ExportTable::transfer, row.integer(node.start).integer(node.end).cells());
}

} // namespace zan::profile
