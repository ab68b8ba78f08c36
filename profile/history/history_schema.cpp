// SPDX-License-Identifier: Apache-2.0
// A new history goes through all steps as well: there is one list, and each step is always in use. A step
// that was handed out is never changed.
#include "history_schema.h"

#include <iterator>
#include <variant>

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

// A summary that can't be read has no values; its run stays, and can be removed.
void add_values(Database& database) {
    RunValues values(database);
    Statement query(database, "SELECT number, summary FROM run");
    while (query.step()) {
        const auto read = summary_from_json(query.text(1));
        if (const auto* const summary = std::get_if<ProfileSummary>(&read))
            values.add(query.integer(0), *summary);
    }
}

struct HistoryStep {
    const char* sql; // also sets the version
    void (*fill)(Database& database);
};
// From version 0 to 1, and so on.
constexpr HistoryStep history_steps[] = {{runs_and_labels, nullptr}, {values_of_metrics, add_values}};
static_assert(std::size(history_steps) == history_version);
static_assert(history_application == 1515210825);

} // namespace

void bring_up_to_date(Database& database, std::int64_t version) {
    for (std::int64_t step = version; step < history_version; ++step) {
        database.execute(history_steps[step].sql);
        if (history_steps[step].fill)
            history_steps[step].fill(database);
    }
}

} // namespace zan::profile
