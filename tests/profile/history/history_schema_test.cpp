// SPDX-License-Identifier: Apache-2.0
#include "history_schema.h"

#include <gtest/gtest.h>

#include "first_history.h"
#include "run_id.h"
#include "second_history.h"
#include "temp_dir.h"
#include "two_runs.h"

namespace {

using namespace zan::profile;

std::string tables_of(Database& database) {
    Statement query(database, "SELECT name, sql FROM sqlite_schema WHERE sql IS NOT NULL ORDER BY name");
    std::string text;
    while (query.step())
        text += query.text(0) + ":" + query.text(1) + "\n";
    return text;
}

// An upgraded history has the tables of a new one.
TEST(HistorySchema, ANewHistoryIsAnUpgradedOne) {
    Database made(":memory:", OpenMode::create);
    bring_up_to_date(made, 0);
    const TempDir dir;
    const std::vector<ProfileSummary> runs = {run_of({kernel_of("k", {{Metric::kernel_time, 7}})})};
    make_first_history(dir.path("1.db"), runs);
    make_second_history(dir.path("2.db"), runs);
    for (const int version : {1, 2}) {
        Database older(dir.path(std::to_string(version) + ".db"), OpenMode::write);
        EXPECT_TRUE(has_tables_of(older, version));
        bring_up_to_date(older, version);
        EXPECT_EQ(tables_of(older), tables_of(made));
        EXPECT_EQ(older.number("PRAGMA user_version"), history_version);
        EXPECT_EQ(older.number("PRAGMA application_id"), history_application);
        EXPECT_EQ(older.number("SELECT count(*) FROM pragma_foreign_key_check"), 0);
        EXPECT_EQ(older.number("SELECT count(*) FROM pragma_integrity_check WHERE integrity_check <> 'ok'"),
                  0);
        bring_up_to_date(older, history_version);
        EXPECT_EQ(tables_of(older), tables_of(made));
    }
}

TEST(HistorySchema, ASummaryThatCantBeReadHasNoValues) {
    const TempDir dir;
    const ProfileSummary run = run_of({kernel_of("k", {{Metric::kernel_time, 7}})});
    const ProfileSummary other = run_of({kernel_of("k", {{Metric::kernel_time, 8}})});
    make_first_history(dir.path("h.db"), {other, run});
    Database database(dir.path("h.db"), OpenMode::write);
    database.execute("UPDATE run SET summary = '{' WHERE number = 1");
    bring_up_to_date(database, 1);
    EXPECT_EQ(database.number("SELECT count(*) FROM run"), 2);
    EXPECT_EQ(database.number("SELECT count(*) FROM value"), 1);
    EXPECT_EQ(database.number("SELECT run FROM value"), 2);
    EXPECT_EQ(database.number("SELECT length FROM summary WHERE packed = CAST('{' AS BLOB) AND run = 1"), 1);
}

// To the first version a package with its capture was another run than its report.
TEST(HistorySchema, RunsThatAreTheSameBecomeOne) {
    const TempDir dir;
    ProfileSummary report = run_of({kernel_of("k", {{Metric::kernel_time, 7}})});
    ProfileSummary package = report;
    package.kernels[0].num_units = 1;
    const ProfileSummary other = run_of({kernel_of("k", {{Metric::kernel_time, 8}})});
    make_first_history(dir.path("h.db"), {report, other, package});
    Database database(dir.path("h.db"), OpenMode::write);
    ASSERT_EQ(database.number("SELECT count(*) FROM run"), 3);
    database.execute("INSERT INTO label VALUES (1, 'a', '1'), (1, 'b', '1'), (3, 'b', '2'), (3, 'c', '3')");
    bring_up_to_date(database, 1);
    EXPECT_EQ(database.number("SELECT count(*) FROM run"), 2);
    EXPECT_EQ(database.number("SELECT count(*) FROM value"), 2);
    Statement query(database,
                    "SELECT group_concat(name || '=' || value, ' ') FROM "
                    "(SELECT * FROM label WHERE run = 1 ORDER BY name)");
    ASSERT_TRUE(query.step());
    EXPECT_EQ(query.text(0), "a=1 b=1 c=3 commit=1f3a");
    Statement id(database, "SELECT id FROM run WHERE number = 1");
    ASSERT_TRUE(id.step());
    EXPECT_EQ(id.text(0), run_id_of(package));
    EXPECT_EQ(database.number("SELECT count(*) FROM label WHERE run = 3"), 0);
}

TEST(HistorySchema, TablesAreThoseOfTheirVersion) {
    const auto has_tables_after = [](const char* change, std::int64_t version = history_version) {
        Database database(":memory:", OpenMode::create);
        bring_up_to_date(database, 0);
        database.execute(change);
        return has_tables_of(database, version);
    };
    EXPECT_TRUE(has_tables_after(""));
    EXPECT_FALSE(has_tables_after("", 1));
    EXPECT_FALSE(has_tables_after("", 2));
    // What users add doesn't matter.
    EXPECT_TRUE(has_tables_after("CREATE VIEW mine AS SELECT * FROM run; CREATE TABLE t (run); ANALYZE"));
    for (
        const char* const change :
        {"CREATE TRIGGER t AFTER INSERT ON run BEGIN DELETE FROM label; END", "DROP INDEX run_of_date",
         "ALTER TABLE run ADD COLUMN more TEXT AS (hex(id))", "CREATE INDEX slow ON value (hex(value))",
         "ALTER TABLE series RENAME TO other; CREATE VIEW series AS SELECT * FROM other",
         "DROP TABLE value; CREATE VIEW VALUE AS WITH RECURSIVE n AS (SELECT 1 AS run UNION ALL SELECT run + 1 "
         "FROM n) SELECT 1 AS series, run, 0.5 AS value FROM n"})
        EXPECT_FALSE(has_tables_after(change)) << change;
}

} // namespace
