// SPDX-License-Identifier: Apache-2.0
#include "plain_summary.h"

#include <initializer_list>
#include <optional>
#include <string_view>

#include "block_facts.h"
#include "printable.h"
#include "summary_fields.h"
#include "summary_rows.h"
#include "value_text.h"

namespace zan::tool {

using namespace profile;

namespace {

std::string plain_number(const Value& value) {
    return value ? exact_text(*value) : "-";
}

// Lines of fields. Tabs in texts are made visible, as all control characters are.
class PlainTable {
  public:
    PlainTable(std::string& text, std::optional<MetricScope> scope, bool time_unit_known)
        : m_text(text), m_scope(scope), m_time_unit_known(time_unit_known) {}

    void heading(std::initializer_list<std::string_view> names) {
        if (!m_text.empty())
            m_text += "\n";
        for (const std::string_view name : names)
            field(std::string(name));
        for (const MetricRow& row : metric_table()) {
            if (row.scope == m_scope)
                field(std::string(row.name) + unit_suffix(row.unit, m_time_unit_known));
        }
        end_line();
    }
    void row(std::initializer_list<std::string> fields, const MetricValues& metrics) {
        for (const std::string& text : fields)
            field(text);
        for (const MetricRow& row : metric_table()) {
            if (row.scope == m_scope)
                field(plain_number(metrics[row.metric]));
        }
        end_line();
    }

  private:
    void field(const std::string& text) {
        m_text += (m_at_start ? "" : "\t") + (text.empty() ? "-" : printable(text));
        m_at_start = false;
    }
    void end_line() {
        m_text += "\n";
        m_at_start = true;
    }
    std::string& m_text;
    std::optional<MetricScope> m_scope; // of the metrics that each row has
    bool m_time_unit_known;
    bool m_at_start = true;
};

std::string device_field(const KernelSummary& kernel) {
    return kernel.device ? std::to_string(*kernel.device) : "";
}

bool is_of_view(const KernelSummary& kernel, const SummaryView& view) {
    return view.kernel.empty() || kernel.name == view.kernel;
}

void add_plain_blocks(const ProfileSummary& summary, const SummaryView& view, PlainTable table) {
    table.heading({"kernel", "device", "block", "kind", "memory", "source", "rule", "sentence"});
    std::size_t num_rows = 0;
    for (const RankedBlock& ranked : sorted_blocks(summary, view.kernel, view.sort)) {
        const KernelSummary& kernel = summary.kernels[ranked.kernel];
        const BlockSummary& block = kernel.blocks[ranked.block];
        if (num_rows++ >= view.top.value_or(num_rows))
            break;
        table.row({kernel_cell(kernel), device_field(kernel), block.name, kind_text(block), block.memory,
                   source_cell(block), block.sentence.rule, block.sentence.text},
                  block.metrics);
    }
}

} // namespace

std::string plain_summary_text(const ProfileSummary& summary, const SummaryView& view) {
    const bool unit_known = summary.nanoseconds.has_value();
    const std::string time_suffix = unit_suffix(MetricUnit::time, unit_known);
    std::string text;
    const auto new_table = [&](MetricScope scope) { return PlainTable(text, scope, unit_known); };

    PlainTable run = new_table(MetricScope::run);
    run.heading({"kernel_answer", "block_answer", "source_answer", "memory_answer"});
    const Answers& answers = summary.answers;
    run.row({answers.kernel, answers.block, answers.source, answers.memory}, summary.metrics);

    PlainTable kernels = new_table(MetricScope::kernel);
    kernels.heading({"kernel", "device", "autorun", "invocations", "culprit", "source"});
    for (const KernelSummary& kernel : summary.kernels) {
        if (is_of_view(kernel, view))
            kernels.row({kernel_cell(kernel), device_field(kernel), kernel.autorun ? "1" : "0",
                         std::to_string(kernel.num_invocations), kernel.culprit, place_cell(kernel.source)},
                        kernel.metrics);
    }
    add_plain_blocks(summary, view, new_table(MetricScope::block));

    PlainTable memories = new_table(MetricScope::memory);
    memories.heading({"memory", "peak_mb_per_s", "lower_bound"});
    for (const MemorySummary& memory : summary.memories)
        memories.row({memory.name, plain_number(memory.peak), memory.lower_bound ? "1" : "0"},
                     memory.metrics);

    // No metric is of transfers and notes.
    PlainTable transfers(text, std::nullopt, unit_known);
    transfers.heading(
        {"transfer", "queue", "transfers", "total" + time_suffix, "median" + time_suffix, "busy_percent"});
    for (const TransferSummary& transfer : summary.transfers)
        transfers.row(
            {transfer.type, std::to_string(transfer.queue), std::to_string(transfer.num),
             plain_number(transfer.total), plain_number(transfer.median), plain_number(transfer.busy)},
            {});
    PlainTable notes(text, std::nullopt, unit_known);
    notes.heading({"note", "text"});
    for (const Note& note : summary.notes)
        notes.row({note.code, note.text}, {});
    return text;
}

} // namespace zan::tool
