// SPDX-License-Identifier: Apache-2.0
#include "sqlite_writer.h"

#include "export_rows.h"

namespace zan::profile {

namespace {

// The file is made anew, and has its name only when it is whole: nothing has to be rolled back. A journal in
// memory is the least that a database takes whose schema is protected; it has the pages from before the
// transaction, and there are none.
constexpr const char* settings =
    "PRAGMA page_size = 16384; PRAGMA journal_mode = MEMORY; PRAGMA synchronous = OFF; "
    "PRAGMA locking_mode = EXCLUSIVE; PRAGMA cache_size = -8192;";

constexpr const char* views = R"(
CREATE VIEW worst_blocks AS
  SELECT b.run_id, b.place, k.name AS kernel, k.compute_unit, k.device, b.name AS block, b.kind,
         m.name AS memory, b.file, b.line, b.lost_ns, b.lost_ticks, b.stall_percent, b.valid_percent,
         b.idle_percent, b.bandwidth_mb_per_s, b.efficiency_percent, b.rule, b.sentence
  FROM block b
  JOIN kernel k ON k.run_id = b.run_id AND k.kernel_id = b.kernel_id
  LEFT JOIN memory m ON m.run_id = b.run_id AND m.memory_id = b.memory_id
  ORDER BY b.run_id, b.place;
CREATE VIEW kernel_times AS
  SELECT run_id, name AS kernel, compute_unit, device, autorun, invocations, kernel_time_ns,
         kernel_time_ticks, kernel_p95_ns, kernel_p95_ticks, kernel_total_ns, kernel_total_ticks,
         busy_percent, alone_percent, waiting_percent, file, line
  FROM kernel
  ORDER BY run_id, autorun, coalesce(kernel_total_ns, kernel_total_ticks) DESC, kernel_id;
CREATE VIEW memory_use AS
  SELECT run_id, name AS memory, memory_mean_mb_per_s, memory_max_mb_per_s, peak_mb_per_s,
         memory_mean_mb_per_s / peak_mb_per_s * 100 AS mean_percent,
         memory_max_mb_per_s / peak_mb_per_s * 100 AS max_percent, memory_full_percent, lower_bound
  FROM memory
  ORDER BY run_id, memory_id;
)";

constexpr const char* type_names[] = {"INTEGER", "REAL", "TEXT"};

// Rows in a statement: to run one takes about as long as to insert two rows.
constexpr std::size_t rows_at_once = 32;
constexpr std::size_t common_cells = 4;
constexpr std::size_t cells_of_row = 3;

// Parameters 1 to 4 are common to all rows; each row has three more.
// SQL without values: the names are those of our tables.
std::string insert_samples_sql(ExportTable table, std::size_t num_rows) {
    std::string sql = "INSERT INTO " + layout_of(table).name + " VALUES ";
    for (std::size_t row = 0; row < num_rows; ++row) {
        sql += row == 0 ? "(?1, ?2, ?3, ?4" : ", (?1, ?2, ?3, ?4";
        for (std::size_t cell = 1; cell <= cells_of_row; ++cell)
            sql += ", ?" + std::to_string(common_cells + row * cells_of_row + cell);
        sql += ")";
    }
    return sql;
}

void bind_sample(Statement& insert, std::size_t row, const SampleSeries& series, const SeriesChunk& chunk,
                 std::size_t i) {
    const int number = static_cast<int>(common_cells + row * cells_of_row) + 1;
    const int time = number + 1;
    const int value = number + 2;
    insert.bind(number, static_cast<std::int64_t>(series.first + chunk.first + i));
    chunk.timed[i] ? insert.bind(time, static_cast<std::int64_t>(chunk.times[i])) : insert.bind_null(time);
    chunk.known[i] ? insert.bind(value, chunk.value(i)) : insert.bind_null(value);
}

// SQL without values: as above.
std::string insert_sql(const TableLayout& layout) {
    std::string sql = "INSERT INTO " + layout.name + " VALUES (";
    for (std::size_t i = 0; i < layout.columns.size(); ++i)
        sql += i == 0 ? "?" : ", ?";
    return sql + ")";
}

// With its tables, in a transaction.
Database new_database(const std::string& path) {
    Database database(path, OpenMode::create);
    database.execute(settings);
    database.execute("BEGIN");
    database.execute(export_schema_sql());
    return database;
}

} // namespace

std::string export_schema_sql() {
    std::string sql;
    // SQL without values: the names are those of our tables.
    for (const TableLayout& layout : export_layouts()) {
        sql += "CREATE TABLE " + layout.name + " (";
        for (const ExportColumn& column : layout.columns)
            sql += (sql.back() == '(' ? "" : ", ") + column.name + " " +
                   type_names[static_cast<std::size_t>(column.type)];
        sql += ") STRICT;\n";
    }
    return sql + views;
}

SqliteWriter::SampleInserts::SampleInserts(Database& database, ExportTable table)
    : one(database, insert_samples_sql(table, 1)), many(database, insert_samples_sql(table, rows_at_once)) {
}

SqliteWriter::SqliteWriter(const std::string& path, std::int64_t run_id)
    : m_database(new_database(path)),
      m_run_id(run_id),
      m_samples(m_database, ExportTable::sample),
      m_port_samples(m_database, ExportTable::port_sample) {
    for (std::size_t i = 0; i < num_export_tables; ++i)
        m_inserts[i].emplace(m_database, insert_sql(export_layouts()[i]));
}

void SqliteWriter::row(ExportTable table, std::span<const ExportCell> cells) {
    Statement& insert = *m_inserts[static_cast<std::size_t>(table)];
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const int parameter = static_cast<int>(i) + 1;
        if (const auto* integer = std::get_if<std::int64_t>(&cells[i]))
            insert.bind(parameter, *integer);
        else if (const auto* real = std::get_if<double>(&cells[i]))
            insert.bind(parameter, *real);
        else if (const auto* text = std::get_if<std::string>(&cells[i]))
            insert.bind(parameter, std::string_view(*text));
        else
            insert.bind_null(parameter);
    }
    insert.run();
}

// What all rows of a series have in common is bound once.
void SqliteWriter::series(const SampleSeries& series) {
    SampleInserts& inserts = series.table == ExportTable::sample ? m_samples : m_port_samples;
    for (Statement* const insert : {&inserts.one, &inserts.many}) {
        insert->bind(1, m_run_id).bind(4, series.metric.name);
        series.invocation ? insert->bind(2, *series.invocation) : insert->bind_null(2);
        series.owner ? insert->bind(3, *series.owner) : insert->bind_null(3);
    }
    SeriesReader reader(series);
    SeriesChunk chunk;
    while (reader.next(chunk)) {
        std::size_t i = 0;
        for (; i + rows_at_once <= chunk.size; i += rows_at_once) {
            for (std::size_t row = 0; row < rows_at_once; ++row)
                bind_sample(inserts.many, row, series, chunk, i + row);
            inserts.many.run();
        }
        for (; i < chunk.size; ++i) {
            bind_sample(inserts.one, 0, series, chunk, i);
            inserts.one.run();
        }
    }
    m_odd += reader.odd();
}

void SqliteWriter::transfer(std::int64_t id, const TransferNode& node) {
    write_transfer_row(m_run_id, id, node, *this);
}

void SqliteWriter::finish(const WholeRun& run) {
    write_rows(run, m_run_id, m_odd, *this);
    m_database.execute("COMMIT");
    Statement check(m_database, "PRAGMA integrity_check(1)");
    constexpr int corrupt = 11; // SQLITE_CORRUPT
    if (!check.step() || check.text(0) != "ok")
        throw DatabaseError(corrupt, "the database is damaged: " + check.text(0));
}

} // namespace zan::profile
