// SPDX-License-Identifier: Apache-2.0
// A history as the first version of the schema had it. This is a copy of what was: it never changes.
#pragma once

#include <xxhash.h>

#include <cstdio>
#include <string>
#include <vector>

#include "history_store.h"
#include "summary_json.h"

namespace zan::profile {

// The id that the first version had.
inline std::string first_id_of(ProfileSummary summary) {
    summary.input.clear();
    summary.program_version.clear();
    const std::string text = summary_to_json(summary);
    const XXH128_hash_t hash = XXH3_128bits(text.data(), text.size());
    char digits[33];
    std::snprintf(digits, sizeof digits, "%016llx%016llx", static_cast<unsigned long long>(hash.high64),
                  static_cast<unsigned long long>(hash.low64));
    return digits;
}

// The dates of the runs are 2026-11-20, 2026-11-21 and so on; all have the label commit=1f3a.
inline void make_first_history(const std::string& path, const std::vector<ProfileSummary>& runs) {
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
PRAGMA application_id = 1515210825;
PRAGMA user_version = 1;
)");
    Statement insert(database, "INSERT INTO run VALUES (?, ?, date('2026-11-19', ? || ' days'), ?, ?)");
    std::int64_t number = 0;
    for (const ProfileSummary& run : runs) {
        const std::string id = first_id_of(run);
        const std::string json = summary_to_json(run);
        ++number;
        insert.bind(1, number).bind(2, std::string_view(id)).bind(3, number);
        insert.bind(4, std::string_view(run.input)).bind(5, std::string_view(json)).run();
    }
    database.execute("INSERT INTO label SELECT number, 'commit', '1f3a' FROM run; COMMIT");
}

} // namespace zan::profile
