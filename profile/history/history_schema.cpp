// SPDX-License-Identifier: Apache-2.0
// A new history goes through all steps as well: there is one list, and each step is always in use. A step
// that was handed out is never changed.
#include "history_schema.h"

#include <iterator>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "packed_text.h"
#include "run_id.h"
#include "run_values.h"
#include "summary_json.h"

namespace zan::profile {

namespace {

// The number of the application is history_application.
constexpr const char* runs_and_labels = R"(
CREATE TABLE run (
  number INTEGER PRIMARY KEY, id TEXT NOT NULL UNIQUE, date TEXT NOT NULL, input TEXT NOT NULL,
  summary TEXT NOT NULL
) STRICT;
CREATE INDEX run_of_date ON run (date, number);
CREATE TABLE label (
  run INTEGER NOT NULL REFERENCES run, name TEXT NOT NULL, value TEXT NOT NULL,
  PRIMARY KEY (run, name)
) STRICT, WITHOUT ROWID;
CREATE INDEX label_of_value ON label (name, value, run);
PRAGMA application_id = 1515210825;
PRAGMA user_version = 1;
)";

// A value doesn't reference its run: to remove a run would then read all values.
constexpr const char* values_of_metrics = R"(
CREATE TABLE series (
  number INTEGER PRIMARY KEY, scope TEXT NOT NULL, kernel TEXT NOT NULL, name TEXT NOT NULL,
  metric TEXT NOT NULL,
  UNIQUE (scope, kernel, name, metric)
) STRICT;
CREATE TABLE value (
  series INTEGER NOT NULL, run INTEGER NOT NULL, value REAL NOT NULL,
  PRIMARY KEY (series, run)
) STRICT, WITHOUT ROWID;
PRAGMA user_version = 2;
)";

// A summary is three quarters of a run as text, and a fifth packed. In a table of its own it isn't read with
// the dates and names of runs.
constexpr const char* packed_summaries = R"(
CREATE TABLE summary (
  run INTEGER PRIMARY KEY, length INTEGER NOT NULL, packed BLOB NOT NULL
) STRICT;
PRAGMA user_version = 3;
)";

// What SQLite makes of a definition when a column is dropped may change; so the table is made anew.
constexpr const char* runs_without_summaries = R"(
CREATE TEMP TABLE old_run AS SELECT number, id, date, input FROM run;
DROP TABLE run;
CREATE TABLE run (
  number INTEGER PRIMARY KEY, id TEXT NOT NULL UNIQUE, date TEXT NOT NULL, input TEXT NOT NULL
) STRICT;
INSERT INTO run SELECT number, id, date, input FROM old_run;
CREATE INDEX run_of_date ON run (date, number);
DROP TABLE old_run;
)";

// Version 1 had another canonical form, in which a package with its capture was another run than its report:
// the first of equal runs stays, with the labels of all. The older ones of its labels count.
void set_id(Database& database, std::int64_t run, const std::string& id) {
    Statement find(database, "SELECT number FROM run WHERE id = ? AND number <> ?");
    if (!find.bind(1, std::string_view(id)).bind(2, run).step()) {
        Statement(database, "UPDATE run SET id = ? WHERE number = ?")
            .bind(1, std::string_view(id))
            .bind(2, run)
            .run();
        return;
    }
    const std::int64_t first = find.integer(0);
    find.reset();
    Statement(database,
              "INSERT INTO label SELECT ?, name, value FROM label WHERE run = ? ON CONFLICT DO NOTHING")
        .bind(1, first)
        .bind(2, run)
        .run();
    for (const std::string_view sql : {"DELETE FROM label WHERE run = ?", "DELETE FROM value WHERE run = ?",
                                       "DELETE FROM run WHERE number = ?"})
        Statement(database, sql).bind(1, run).run();
}

std::vector<std::int64_t> runs_of(Database& database) {
    std::vector<std::int64_t> runs;
    Statement numbers(database, "SELECT number FROM run ORDER BY number");
    while (numbers.step())
        runs.push_back(numbers.integer(0));
    return runs;
}

// A summary that can't be read has no values; its run stays as it is, and can be removed.
void add_values(Database& database) {
    RunValues values(database);
    Statement query(database, "SELECT summary FROM run WHERE number = ?");
    for (const std::int64_t run : runs_of(database)) {
        query.bind(1, run).step();
        const auto read = summary_from_json(query.text(0));
        query.reset();
        const auto* const summary = std::get_if<ProfileSummary>(&read);
        if (!summary)
            continue;
        values.add(run, *summary);
        set_id(database, run, run_id_of(*summary));
    }
}

void pack_summaries(Database& database) {
    Statement query(database, "SELECT summary FROM run WHERE number = ?");
    for (const std::int64_t run : runs_of(database)) {
        query.bind(1, run).step();
        insert_summary(database, run, query.text(0));
        query.reset();
    }
}

struct HistoryStep {
    const char* sql; // also sets the version
    void (*fill)(Database& database) = nullptr;
    const char* end = "";
};
// From version 0 to 1, and so on.
constexpr HistoryStep history_steps[] = {{runs_and_labels},
                                         {values_of_metrics, add_values},
                                         {packed_summaries, pack_summaries, runs_without_summaries}};
static_assert(std::size(history_steps) == history_version);
static_assert(history_application == 1515210825);

// All that belongs to the tables of a history, with the statements that made it.
std::string definitions_in(Database& database) {
    Statement query(database,
                    "SELECT type, name, coalesce(sql, '') FROM sqlite_schema WHERE lower(tbl_name) IN "
                    "('run', 'label', 'series', 'value', 'summary') ORDER BY type, name");
    std::string text;
    while (query.step())
        text += query.text(0) + " " + query.text(1) + "\n" + query.text(2) + "\n";
    return text;
}

} // namespace

bool has_tables_of(Database& database, std::int64_t version) {
    Database made(":memory:", OpenMode::create);
    for (std::int64_t step = 0; step < version; ++step) {
        made.execute(history_steps[step].sql);
        made.execute(history_steps[step].end);
    }
    return definitions_in(database) == definitions_in(made);
}

void bring_up_to_date(Database& database, std::int64_t version) {
    for (std::int64_t step = version; step < history_version; ++step) {
        database.execute(history_steps[step].sql);
        if (history_steps[step].fill)
            history_steps[step].fill(database);
        database.execute(history_steps[step].end);
    }
}

void insert_summary(Database& database, std::int64_t run, std::string_view json) {
    const std::string packed = pack_text(json);
    Statement(database, "INSERT INTO summary VALUES (?, ?, ?)")
        .bind(1, run)
        .bind(2, static_cast<std::int64_t>(json.size()))
        .bind_bytes(3, packed)
        .run();
}

} // namespace zan::profile
