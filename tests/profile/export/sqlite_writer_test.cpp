// SPDX-License-Identifier: Apache-2.0
#include "sqlite_writer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "made_export.h"

namespace {

using namespace zan::profile;

TEST(SqliteWriter, WritesNullForWhatIsNotKnown) {
    const TempDir dir;
    {
        SqliteWriter writer(dir.path("r.db"), 4);
        export_text(odd_report, writer);
    }
    Database database(dir.path("r.db"), OpenMode::read);
    EXPECT_EQ(database.number("SELECT count(*) FROM sample WHERE run_id = 4 AND invocation_id = 1"), 6);
    EXPECT_EQ(database.number("SELECT count(*) FROM sample WHERE value IS NULL"), 2);
    EXPECT_EQ(database.number("SELECT count(*) FROM sample WHERE block_id IS NULL AND metric = 'cycles'"), 2);
    Statement bandwidth(database, "SELECT value, t FROM sample WHERE metric = 'bandwidth' AND i = 0");
    ASSERT_TRUE(bandwidth.step());
    EXPECT_EQ(bandwidth.real(0), 0.1);
    EXPECT_EQ(bandwidth.integer(1), 110);
    Statement kernel(database, "SELECT kernel, kernel_time_ns FROM kernel_times");
    ASSERT_TRUE(kernel.step());
    EXPECT_EQ(kernel.text(0), "=cmd(\"x\")");
    EXPECT_EQ(kernel.real(1), 30.0);
}

// 70 samples are two statements of 32 rows and six of one row.
TEST(SqliteWriter, KeepsTheOrderOfLongSeries) {
    const TempDir dir;
    {
        SqliteWriter writer(dir.path("r.db"), 1);
        export_text(odd_report_of_samples(70), writer);
    }
    Database database(dir.path("r.db"), OpenMode::read);
    EXPECT_EQ(database.number("SELECT count(*) FROM sample WHERE metric = 'cycles' AND value = i + 1 AND "
                              "t = 110 + 10 * i"),
              70);
    EXPECT_EQ(database.number("SELECT count(*) FROM sample WHERE metric = 'stall' AND value IS NULL"), 69);
}

// The samples of a kernel without a start belong to no invocation.
TEST(SqliteWriter, SamplesWithoutAnInvocationHaveNull) {
    const TempDir dir;
    {
        SqliteWriter writer(dir.path("r.db"), 1);
        export_text(odd_report_without("\"start_time\": \"100\", "), writer);
    }
    Database database(dir.path("r.db"), OpenMode::read);
    EXPECT_EQ(database.number("SELECT count(*) FROM sample WHERE invocation_id IS NULL"), 6);
    EXPECT_EQ(database.number("SELECT count(*) FROM sample"), 6);
    EXPECT_EQ(database.number("SELECT count(*) FROM invocation"), 0);
}

TEST(SqliteWriter, AllTablesAreStrict) {
    const TempDir dir;
    SqliteWriter writer(dir.path("r.db"), 1);
    export_text(odd_report, writer);
    Database memory(":memory:", OpenMode::create);
    memory.execute(export_schema_sql());
    EXPECT_EQ(memory.number("SELECT count(*) FROM pragma_table_list WHERE type = 'table' AND strict = 1"),
              static_cast<std::int64_t>(num_export_tables));
    EXPECT_THROW(memory.execute("INSERT INTO sample VALUES ('x', 1, 1, 'stall', 0, 0, 0)"), DatabaseError);
}

// Writes into a file whose pages change before the database is finished, as on a bad disk.
class DamagedExport final : public ExportWriter {
  public:
    explicit DamagedExport(const std::string& path) : m_path(path), m_writer(path, 1) {}
    void series(const SampleSeries& series) override { m_writer.series(series); }
    void transfer(std::int64_t id, const TransferNode& node) override { m_writer.transfer(id, node); }
    void finish(const WholeRun& run) override {
        constexpr std::streamoff page = 16384;
        std::fstream file(m_path, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(100 * page).write(std::string(page, '#').data(), page);
        file.close();
        m_writer.finish(run);
    }

  private:
    const std::string m_path;
    SqliteWriter m_writer;
};

// Three series of 150,000 samples are more than the 8 MiB that are kept in memory.
TEST(SqliteWriter, ADamagedDatabaseIsAFault) {
    const TempDir dir;
    DamagedExport writer(dir.path("r.db"));
    try {
        export_text(odd_report_of_samples(150'000), writer);
        ADD_FAILURE() << "a page is no page";
    } catch (const DatabaseError& error) {
        EXPECT_EQ(error.code(), 11); // SQLITE_CORRUPT
        EXPECT_THAT(error.what(), testing::HasSubstr("the database is damaged: "));
    }
}

TEST(SqliteWriter, AFolderIsNoDatabase) {
    const TempDir dir;
    EXPECT_THROW(SqliteWriter(dir.path(), 1), DatabaseError);
}

} // namespace
