// SPDX-License-Identifier: Apache-2.0
// An export as an SQLite database.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "export_writer.h"
#include "series_reader.h"
#include "sqlite_database.h"

namespace zan::profile {

// Writes the tables, with indices and views. No journal is written, so a file is whole only after finish().
// All functions throw DatabaseError.
class SqliteWriter final : public ExportWriter, private RowWriter {
  public:
    // `path` is a file that is empty or isn't there.
    SqliteWriter(const std::string& path, std::int64_t run_id);

    void series(const SampleSeries& series) override;
    void transfer(std::int64_t id, const TransferNode& node) override;
    // Checks the file, too.
    void finish(const WholeRun& run) override;

  private:
    void row(ExportTable table, std::span<const ExportCell> cells) override;

    // Statements that insert rows of samples: one row, or many.
    struct SampleInserts {
        SampleInserts(Database& database, ExportTable table);
        Statement one;
        Statement many;
    };

    Database m_database;
    std::int64_t m_run_id;
    SampleInserts m_samples;
    SampleInserts m_port_samples;
    std::array<std::optional<Statement>, num_export_tables> m_inserts;
    OddNumbers m_odd;
};

// The statements that make the tables and views.
std::string export_schema_sql();

} // namespace zan::profile
