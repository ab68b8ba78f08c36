// SPDX-License-Identifier: Apache-2.0
// The versions that the tables of a history have had, and how each became the next.
#pragma once

#include <cstdint>
#include <string_view>

#include "sqlite_database.h"

namespace zan::profile {

inline constexpr int history_version = 3;
inline constexpr int history_application = 0x5A50'4849; // in the header of the file: "ZPHI"

// Whether the tables of a history are those of that version, 1 or more. Others, as with triggers, views of
// their names or computed columns, could make any statement run without end. What a user has added beside
// them isn't looked at.
bool has_tables_of(Database& database, std::int64_t version);

// Makes the tables of that version, 0 for none, to those of the newest one; they keep what they hold. To be
// called in a transaction, or for a database that no one else sees; foreign keys must not be checked.
void bring_up_to_date(Database& database, std::int64_t version);

// Keeps the JSON of the summary of a run that has none yet.
void insert_summary(Database& database, std::int64_t run, std::string_view json);

} // namespace zan::profile
