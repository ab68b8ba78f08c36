// SPDX-License-Identifier: Apache-2.0
#include "csv_writer.h"

#include <utility>

#include "csv_text.h"
#include "export_rows.h"
#include "report_numbers.h"

namespace zan::profile {

namespace {

constexpr std::size_t csv_piece = std::size_t{1} << 18;
// The longest end of a line of samples: two numbers, the value, commas and the line's end.
constexpr std::size_t most_line_end = 3 * max_number_text + 8;

// Nothing where there is no number.
void append_id(std::string& text, const std::optional<std::int64_t>& id) {
    if (id)
        text += std::to_string(*id);
    text += ',';
}

} // namespace

CsvWriter::CsvWriter(Target target, const CsvOptions& options)
    : m_target(std::move(target)), m_options(options) {
    for (std::size_t i = 0; i < num_export_tables; ++i) {
        std::string& text = m_texts[i];
        for (const ExportColumn& column : export_layouts()[i].columns)
            text += (text.empty() ? "" : ",") + column.name;
        text += "\r\n";
    }
}

void CsvWriter::hand_on_when_full(ExportTable table) {
    std::string& text = m_texts[static_cast<std::size_t>(table)];
    if (text.size() < csv_piece)
        return;
    m_target(table, text);
    text.clear();
}

void CsvWriter::row(ExportTable table, std::span<const ExportCell> cells) {
    std::string& text = m_texts[static_cast<std::size_t>(table)];
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (i > 0)
            text += ',';
        if (const auto* integer = std::get_if<std::int64_t>(&cells[i]))
            text += std::to_string(*integer);
        else if (const auto* real = std::get_if<double>(&cells[i]))
            append_csv_number(text, *real);
        else if (const auto* words = std::get_if<std::string>(&cells[i]))
            append_csv_text(text, *words, m_options.raw);
    }
    text += "\r\n";
    hand_on_when_full(table);
}

// All lines of a series begin alike.
void CsvWriter::series(const SampleSeries& series) {
    std::string prefix = std::to_string(m_options.run_id) + ",";
    append_id(prefix, series.invocation);
    append_id(prefix, series.owner);
    prefix += series.metric.name;
    prefix += ",";
    SeriesReader reader(series);
    SeriesChunk chunk;
    while (reader.next(chunk)) {
        add_chunk(m_texts[static_cast<std::size_t>(series.table)], prefix, series, chunk);
        hand_on_when_full(series.table);
    }
    m_odd += reader.odd();
}

void CsvWriter::add_chunk(std::string& text, std::string_view prefix, const SampleSeries& series,
                          const SeriesChunk& chunk) const {
    const std::size_t begin = text.size();
    text.resize(begin + chunk.size * (prefix.size() + most_line_end));
    char* out = text.data() + begin;
    for (std::size_t i = 0; i < chunk.size; ++i) {
        prefix.copy(out, prefix.size());
        out += prefix.size();
        out = write_number(out, static_cast<unsigned long>(series.first + chunk.first + i));
        *out++ = ',';
        if (chunk.timed[i])
            out = write_number(out, chunk.times[i]);
        *out++ = ',';
        if (chunk.known[i])
            out = chunk.are_counts ? write_number(out, chunk.counts[i]) : write_number(out, chunk.rates[i]);
        *out++ = '\r';
        *out++ = '\n';
    }
    text.resize(static_cast<std::size_t>(out - text.data()));
}

void CsvWriter::transfer(std::int64_t id, const TransferNode& node) {
    write_transfer_row(m_options.run_id, id, node, *this);
}

void CsvWriter::finish(const WholeRun& run) {
    write_rows(run, m_options.run_id, m_odd, *this);
    for (std::size_t i = 0; i < num_export_tables; ++i) {
        m_target(static_cast<ExportTable>(i), m_texts[i]);
        m_texts[i].clear();
    }
}

} // namespace zan::profile
