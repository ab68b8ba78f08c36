// SPDX-License-Identifier: Apache-2.0
// A history as the second version of the schema had it. This is a copy of what was: it never changes.
#pragma once

#include <string>
#include <vector>

#include "history_store.h"
#include "run_id.h"
#include "run_values.h"
#include "summary_json.h"

namespace zan::profile {

// The dates of the runs are 2026-11-20, 2026-11-21 and so on; all have the label commit=1f3a.
inline void make_second_history(const std::string& path, const std::vector<ProfileSummary>& runs) {
    Database database(path, OpenMode::create);
    database.execute(R"(BEGIN;
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
CREATE TABLE series (
  number INTEGER PRIMARY KEY, scope TEXT NOT NULL, kernel TEXT NOT NULL, name TEXT NOT NULL,
  metric TEXT NOT NULL,
  UNIQUE (scope, kernel, name, metric)
) STRICT;
CREATE TABLE value (
  series INTEGER NOT NULL, run INTEGER NOT NULL, value REAL NOT NULL,
  PRIMARY KEY (series, run)
) STRICT, WITHOUT ROWID;
PRAGMA application_id = 1515210825;
PRAGMA user_version = 2;
)");
    Statement insert(database, "INSERT INTO run VALUES (?, ?, date('2026-11-19', ? || ' days'), ?, ?)");
    RunValues values(database);
    std::int64_t number = 0;
    for (const ProfileSummary& run : runs) {
        const std::string id = run_id_of(run);
        const std::string json = summary_to_json(run);
        ++number;
        insert.bind(1, number).bind(2, std::string_view(id)).bind(3, number);
        insert.bind(4, std::string_view(run.input)).bind(5, std::string_view(json)).run();
        values.add(number, run);
    }
    database.execute("INSERT INTO label SELECT number, 'commit', '1f3a' FROM run; COMMIT");
}

} // namespace zan::profile
