// SPDX-License-Identifier: Apache-2.0
// An export as CSV files.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "export_writer.h"
#include "series_reader.h"

namespace zan::profile {

struct CsvOptions {
    std::int64_t run_id = 1;
    bool raw = false; // texts that look like formulas stay as they are
};

// Writes each table as a file of its own, with a line of names first. Lines end in CR LF.
class CsvWriter final : public ExportWriter, private RowWriter {
  public:
    // Takes pieces of the table's file, in their order. What it throws ends the export.
    using Target = std::function<void(ExportTable table, std::string_view bytes)>;

    CsvWriter(Target target, const CsvOptions& options);

    void series(const SampleSeries& series) override;
    void transfer(std::int64_t id, const TransferNode& node) override;
    void finish(const WholeRun& run) override;

  private:
    void row(ExportTable table, std::span<const ExportCell> cells) override;
    void hand_on_when_full(ExportTable table);
    void add_chunk(std::string& text, std::string_view prefix, const SampleSeries& series,
                   const SeriesChunk& chunk) const;

    Target m_target;
    CsvOptions m_options;
    std::array<std::string, num_export_tables> m_texts; // what isn't handed on yet
    OddNumbers m_odd;
};

} // namespace zan::profile
