// SPDX-License-Identifier: Apache-2.0
#include "history_store.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "first_history.h"
#include "history_fixture.h"
#include "second_history.h"
#include "summary_json.h"
#include "whole_file.h"

namespace {

using namespace zan::profile;
using testing::ElementsAre;
using testing::HasSubstr;

std::vector<std::string> dates_of(const std::vector<HistoryRun>& runs) {
    std::vector<std::string> dates;
    for (const HistoryRun& run : runs)
        dates.push_back(run.date);
    return dates;
}

using History = HistoryTest;

TEST_F(History, KeepsSummariesAndLabels) {
    EXPECT_THAT(add({entry_of(5, "2026-11-20", {{"commit", "1f3a"}})}), ElementsAre(Added::is_new));
    HistoryStore store(path, OpenMode::read);
    const auto runs = store.list();
    ASSERT_EQ(runs.size(), 1u);
    EXPECT_EQ(runs[0].id, run_id_of(run_of_time(5)));
    EXPECT_EQ(runs[0].labels,
              (Labels{{"board", "vela"}, {"clock", "240.5"}, {"commit", "1f3a"}, {"device", "2"}}));
    EXPECT_EQ(store.summary(runs[0]), run_of_time(5));
}

TEST_F(History, ARunOfSeveralDevicesIsLabelledWithAll) {
    ProfileSummary summary = run_of_time(5);
    for (const int device : {0, 2, 0}) {
        summary.kernels.push_back(summary.kernels[0]);
        summary.kernels.back().device = device;
    }
    EXPECT_EQ(labels_of(summary).at("device"), "2,0");
    summary.kernels[1].device.reset(); // a kernel without a device adds nothing
    EXPECT_EQ(labels_of(summary).at("device"), "2,0");
    summary = run_of_time(5);
    summary.kernels[0].device.reset();
    summary.clock_mhz.reset();
    EXPECT_EQ(labels_of(summary), (Labels{{"board", "vela"}}));
}

TEST_F(History, ARunIsAddedOnce) {
    add({entry_of(5)});
    EXPECT_THAT(add({entry_of(5)}), ElementsAre(Added::was_there));
    EXPECT_THAT(add({entry_of(5, "2026-11-23", {{"a", "1"}})}), ElementsAre(Added::got_labels));
    EXPECT_THAT(add({entry_of(5, "2026-11-23", {{"a", "1"}})}), ElementsAre(Added::was_there));
    EXPECT_THAT(add({entry_of(5, "2026-11-23", {{"a", "2"}})}), ElementsAre(Added::got_labels));
    HistoryStore store(path, OpenMode::read);
    EXPECT_THAT(dates_of(store.list()), ElementsAre("2026-11-22"));
    EXPECT_EQ(store.find("a=2").date, "2026-11-22");
}

TEST_F(History, RunsAreFoundByNameAndInTheOrderOfTheirDates) {
    add({entry_of(1, "2026-11-22", {{"commit", "b"}}), entry_of(2, "2026-11-20", {{"commit", "a"}}),
         entry_of(3, "2026-11-22T09:00:00", {{"commit", "b"}})});
    HistoryStore store(path, OpenMode::read);
    EXPECT_THAT(dates_of(store.list()), ElementsAre("2026-11-20", "2026-11-22", "2026-11-22T09:00:00"));
    EXPECT_THAT(dates_of(store.list({{"commit", "b"}, {"board", "vela"}})),
                ElementsAre("2026-11-22", "2026-11-22T09:00:00"));
    EXPECT_TRUE(store.list({{"commit", "c"}}).empty());
    EXPECT_EQ(store.find("last").date, "2026-11-22T09:00:00");
    EXPECT_EQ(store.find("last~2").date, "2026-11-20");
    EXPECT_EQ(store.find("commit=b").date, "2026-11-22T09:00:00");
    EXPECT_EQ(store.find(run_id_of(run_of_time(2)).substr(0, 8)).date, "2026-11-20");
    for (const char* const name : {"last~3", "last~x", "last~1x", "commit=c", "xyz", ""})
        EXPECT_THAT(history_fault_of([&] { store.find(name); }), HasSubstr("there is no run '")) << name;
}

TEST_F(History, ANameThatSeveralIdsBeginWithIsNoRun) {
    add({entry_of(1, "2026-11-20"), entry_of(2, "2026-11-21"), entry_of(3, "2026-11-22")});
    Database(path, OpenMode::write)
        .execute(
            "UPDATE run SET id = CASE date WHEN '2026-11-20' THEN 'a1' WHEN '2026-11-21' THEN 'a2' "
            "ELSE 'b' END");
    HistoryStore store(path, OpenMode::read);
    EXPECT_EQ(history_fault_of([&] { store.find("a"); }), path + ": 2 runs begin with 'a'");
    EXPECT_EQ(store.find("a2").date, "2026-11-21");
    EXPECT_EQ(store.find("b").date, "2026-11-22");
}

TEST_F(History, ARemovedRunIsGone) {
    add({entry_of(1), entry_of(2)});
    HistoryStore store(path, OpenMode::write);
    const HistoryRun run = store.find("last");
    store.remove(run);
    EXPECT_EQ(store.list().size(), 1u);
    EXPECT_EQ(Database(path, OpenMode::read).number("SELECT count(*) FROM value"), 1);
    EXPECT_THAT(history_fault_of([&] { store.summary(run); }), HasSubstr("removed meanwhile"));
    EXPECT_THAT(add({entry_of(2)}), ElementsAre(Added::is_new));
}

std::vector<double> values_of_line(const TrendLine& line) {
    std::vector<double> values;
    for (const TrendPoint& point : line.points)
        values.push_back(point.value);
    return values;
}

TEST_F(History, ATrendHasTheValuesInTheOrderOfTheirDates) {
    add({entry_of(3, "2026-11-22"), entry_of(1, "2026-11-20", {{"commit", "b"}}), entry_of(2, "2026-11-21")});
    HistoryStore store(path, OpenMode::read);
    TrendQuery query{"k", "", Metric::kernel_time, {}, {}};
    EXPECT_THAT(values_of_line(store.trend(query)), ElementsAre(1, 2, 3));
    query.most = 2;
    EXPECT_THAT(values_of_line(store.trend(query)), ElementsAre(2, 3));
    query.where = {{"commit", "b"}, {"board", "vela"}};
    const TrendLine line = store.trend(query);
    ASSERT_EQ(line.points.size(), 1u);
    EXPECT_EQ(line.points[0].run.labels.at("commit"), "b");
    EXPECT_TRUE(line.time_unit);
    query.kernel = "other";
    EXPECT_TRUE(store.trend(query).points.empty());
    EXPECT_THAT(store.names(), ElementsAre("k"));
    EXPECT_TRUE(store.names("k").empty());
}

TEST_F(History, ATrendIsOfOneBlockAndSaysIfTheNewestRunHasNone) {
    HistoryEntry with_block = entry_of(1, "2026-11-20");
    with_block.summary.kernels[0].blocks = {block_of("b", {{Metric::stall, 28}})};
    add({with_block, entry_of(2, "2026-11-21")});
    HistoryStore store(path, OpenMode::read);
    const TrendLine line = store.trend({"k", "b", Metric::stall, {}, {}});
    EXPECT_THAT(values_of_line(line), ElementsAre(28));
    EXPECT_EQ(line.newest_without, run_id_of(run_of_time(2)));
    EXPECT_EQ(store.trend({"k", "", Metric::kernel_time, {}, {}}).newest_without, "");
    add({entry_of(3, "2026-11-22")}); // which is the newest of the two without the block
    EXPECT_EQ(store.trend({"k", "b", Metric::stall, {}, {}}).newest_without, run_id_of(run_of_time(3)));
    EXPECT_THAT(store.names("k"), ElementsAre("b"));
}

// Times without a unit aren't joined with nanoseconds.
TEST_F(History, ATrendHasTimesOfOneUnit) {
    HistoryEntry ticks = entry_of(7, "2026-11-20");
    ticks.summary.nanoseconds.reset();
    add({ticks});
    const TrendQuery query{"k", "", Metric::kernel_time, {}, {}};
    EXPECT_THAT(values_of_line(HistoryStore(path, OpenMode::read).trend(query)), ElementsAre(7));
    EXPECT_FALSE(HistoryStore(path, OpenMode::read).trend(query).time_unit);
    add({entry_of(5, "2026-11-21")});
    EXPECT_THAT(values_of_line(HistoryStore(path, OpenMode::read).trend(query)), ElementsAre(5));
}

TEST_F(History, ATrendOfAnOlderSchemaIsTheSame) {
    make_first_history(path, {run_of_time(5), run_of_time(6)});
    EXPECT_THAT(
        values_of_line(HistoryStore(path, OpenMode::read).trend({"k", "", Metric::kernel_time, {}, {}})),
        ElementsAre(5, 6));
}

TEST_F(History, DatesAreChecked) {
    for (const char* const good : {"2026-11-22", "2026-11-22T23:59:59"})
        EXPECT_EQ(date_fault(good), std::nullopt) << good;
    for (const char* const bad :
         {"", "2026-00-01", "2026-13-01", "2026-11-00", "2026-11-32", "22.11.2026", "2026-11-22T24:00:00",
          "2026-11-22T23:60:00", "2026-11-22T23:59:60", "2026-11-22 09:00:00", "2026-11-2x"})
        EXPECT_NE(date_fault(bad), std::nullopt) << bad;
}

TEST_F(History, OtherFilesStayAsTheyAre) {
    const std::string text(5000, 'x');
    write_file(path, text);
    EXPECT_EQ(history_fault_of([&] { add({entry_of(1)}); }), path + ": it is no history");
    EXPECT_EQ(read_file(path), text);
    const std::string other = dir.path("other.db");
    Database(other, OpenMode::create).execute("CREATE TABLE t (a)");
    const std::string bytes = read_file(other);
    EXPECT_EQ(history_fault_of([&] { HistoryStore(other, OpenMode::create); }),
              other + ": it is no history, but a database of another program");
    EXPECT_EQ(read_file(other), bytes);
    EXPECT_THAT(history_fault_of([&] { HistoryStore(dir.path("none"), OpenMode::read); }),
                HasSubstr("unable to open"));
    write_file(dir.path("empty"), "");
    EXPECT_THAT(history_fault_of([&] { HistoryStore(dir.path("empty"), OpenMode::read); }),
                HasSubstr("it is empty"));
}

TEST_F(History, ANewerSchemaIsRefused) {
    add({entry_of(1)});
    Database(path, OpenMode::write).execute("PRAGMA user_version = 4");
    const std::string bytes = read_file(path);
    EXPECT_THAT(history_fault_of([&] { add({entry_of(2)}); }), HasSubstr("it has version 4 of the schema"));
    EXPECT_EQ(read_file(path), bytes);
}

TEST_F(History, AVersionBelowTheFirstIsRefused) {
    add({entry_of(1)});
    Database(path, OpenMode::write).execute("PRAGMA user_version = -1");
    EXPECT_EQ(history_fault_of([&] { HistoryStore(path, OpenMode::read); }),
              path + ": it is damaged: it has version -1 of the schema");
}

// Each statement that reads this view would run without end.
TEST_F(History, OtherTablesAreRefused) {
    add({entry_of(1)});
    Database(path, OpenMode::write)
        .execute(
            "DROP TABLE label; CREATE VIEW label AS WITH RECURSIVE n AS (SELECT 1 AS run UNION ALL "
            "SELECT run + 1 FROM n) SELECT run, 'a' AS name, 'b' AS value FROM n");
    const std::string bytes = read_file(path);
    for (const OpenMode mode : {OpenMode::read, OpenMode::create})
        EXPECT_EQ(history_fault_of([&] { HistoryStore(path, mode); }),
                  path + ": it is damaged: its tables aren't those of a history");
    EXPECT_EQ(read_file(path), bytes);
}

TEST_F(History, AnOlderSchemaIsReadWithoutAChange) {
    make_first_history(path, {run_of_time(5), run_of_time(6)});
    const std::string bytes = read_file(path);
    HistoryStore store(path, OpenMode::read);
    EXPECT_THAT(dates_of(store.list({{"commit", "1f3a"}})), ElementsAre("2026-11-20", "2026-11-21"));
    EXPECT_EQ(store.summary(store.find("last")), run_of_time(6));
    EXPECT_EQ(read_file(path), bytes);
    EXPECT_FALSE(std::filesystem::exists(path + "-journal"));
}

TEST_F(History, SummariesOfTheSecondVersionAreReadAndKept) {
    make_second_history(path, {run_of_time(5), run_of_time(6)});
    const std::string bytes = read_file(path);
    EXPECT_EQ(HistoryStore(path, OpenMode::read).summary(HistoryStore(path, OpenMode::read).find("last")),
              run_of_time(6));
    EXPECT_EQ(read_file(path), bytes);
    HistoryStore store(path, OpenMode::write, [](const std::string&, const auto&) {});
    EXPECT_EQ(store.summary(store.find("last~1")), run_of_time(5));
    EXPECT_EQ(store.list({{"commit", "1f3a"}}).size(), 2u);
    const HistoryEntry entry = entry_of(6);
    EXPECT_THAT(store.add({&entry, 1}), ElementsAre(Added::was_there));
}

TEST_F(History, ASummaryThatCantBeUnpackedIsDamaged) {
    add({entry_of(1)});
    Database(path, OpenMode::write).execute("UPDATE summary SET length = length + 1");
    HistoryStore store(path, OpenMode::read);
    const HistoryRun run = store.find("last");
    EXPECT_EQ(history_fault_of([&] { store.summary(run); }),
              path + ": the summary of " + run.id + " is damaged: it can't be unpacked");
}

// A text of one byte is stored as it is.
TEST_F(History, ASummaryThatIsNoJsonIsDamaged) {
    add({entry_of(1)});
    Database(path, OpenMode::write).execute("UPDATE summary SET length = 1, packed = CAST('{' AS BLOB)");
    HistoryStore store(path, OpenMode::read);
    const HistoryRun run = store.find("last");
    const auto read = summary_from_json("{");
    const std::string text = history_fault_of([&] { store.summary(run); });
    EXPECT_EQ(text,
              path + ": the summary of " + run.id + " is damaged: " + describe(std::get<SummaryFault>(read)));
    EXPECT_THAT(text, testing::Not(testing::EndsWith("damaged: ")));
}

TEST_F(History, WritingBringsAnOlderSchemaUpToDateAfterACopy) {
    make_first_history(path, {run_of_time(5), run_of_time(6)});
    const std::string bytes = read_file(path);
    std::string name;
    std::string copy;
    const auto keep = [&](const std::string& as, const auto& write) {
        name = as;
        write([&](std::string_view piece) { copy += piece; });
    };
    const HistoryEntry entry = entry_of(7, "2026-11-22");
    HistoryStore(path, OpenMode::create, keep).add({&entry, 1});
    EXPECT_EQ(name, path + ".bak");
    EXPECT_EQ(copy, bytes);
    Database database(path, OpenMode::read);
    EXPECT_EQ(database.number("PRAGMA user_version"), 3);
    // Old runs have their values as the new one does.
    EXPECT_EQ(database.number("SELECT count(*) FROM value JOIN series ON series = series.number "
                              "WHERE kernel = 'k' AND metric = 'kernel_time_ns' AND value IN (5, 6, 7)"),
              3);
    copy.clear();
    HistoryStore(path, OpenMode::write, keep);
    EXPECT_EQ(copy, "") << "it is up to date";
}

TEST_F(History, WithoutACopyAnOlderSchemaStaysAsItIs) {
    make_first_history(path, {run_of_time(5)});
    const std::string bytes = read_file(path);
    const auto fail = [](const std::string&, const auto& write) {
        write([](std::string_view) { throw std::runtime_error("the disk is full"); });
    };
    EXPECT_THROW(HistoryStore(path, OpenMode::write, fail), std::runtime_error);
    EXPECT_THAT(history_fault_of([&] { HistoryStore(path, OpenMode::write); }),
                HasSubstr("it has version 1"));
    EXPECT_EQ(read_file(path), bytes);
    EXPECT_EQ(HistoryStore(path, OpenMode::read).list().size(), 1u);
}

} // namespace
