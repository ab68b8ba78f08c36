// SPDX-License-Identifier: Apache-2.0
#include "history_store.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <thread>

#include "first_history.h"
#include "second_history.h"
#include "summary_json.h"
#include "temp_dir.h"
#include "two_runs.h"
#include "whole_file.h"

namespace {

using namespace zan::profile;
using testing::ElementsAre;
using testing::HasSubstr;

// A run that took that many nanoseconds.
ProfileSummary run_of_time(double time) {
    ProfileSummary summary;
    summary.input = "r.json";
    summary.board = "vela";
    summary.clock_mhz = 240.5;
    summary.nanoseconds = 1.0;
    summary.kernels = {kernel_of("k", {{Metric::kernel_time, time}})};
    summary.kernels[0].device = 2;
    return summary;
}

HistoryEntry entry_of(double time, const std::string& date = "2026-11-22", Labels labels = {}) {
    return {run_of_time(time), date, std::move(labels)};
}

std::vector<std::string> dates_of(const std::vector<HistoryRun>& runs) {
    std::vector<std::string> dates;
    for (const HistoryRun& run : runs)
        dates.push_back(run.date);
    return dates;
}

template <class Work>
std::string history_fault_of(Work work) {
    try {
        work();
    } catch (const HistoryFault& fault) {
        return fault.what();
    }
    return "no fault";
}

class History : public testing::Test {
  protected:
    std::vector<Added> add(std::vector<HistoryEntry> entries) const {
        return HistoryStore(path, OpenMode::create).add(entries);
    }
    const TempDir dir;
    const std::string path = dir.path("runs.db");
};

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
    for (const char* const name : {"last~3", "last~x", "commit=c", "xyz", ""})
        EXPECT_THAT(history_fault_of([&] { store.find(name); }), HasSubstr("there is no run '")) << name;
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
    for (const char* const bad : {"", "2026-13-01", "2026-11-00", "22.11.2026", "2026-11-22T24:00:00",
                                  "2026-11-22 09:00:00", "2026-11-2x"})
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

// A killed writer leaves the old version, whole, or the new one.
TEST_F(History, BringingUpToDateIsWholeOrNotThere) {
    std::vector<ProfileSummary> runs;
    for (int i = 0; i < 50; ++i)
        runs.push_back(run_of_time(i + 1));
    std::size_t num_cut = 0;
    for (int kill = 0; kill < 40; ++kill) {
        std::filesystem::remove(path);
        make_first_history(path, runs);
        const pid_t writer = ::fork();
        if (writer == 0) {
            HistoryStore(path, OpenMode::write, [](const std::string&, const auto&) {});
            ::_exit(0);
        }
        std::this_thread::sleep_for(std::chrono::microseconds(kill * 300));
        ::kill(writer, SIGKILL);
        int status = 0;
        ::waitpid(writer, &status, 0);
        num_cut += WIFSIGNALED(status) ? 1 : 0;
        ASSERT_EQ(HistoryStore(path, OpenMode::read).list().size(), 50u);
        Database database(path, OpenMode::write);
        if (database.number("PRAGMA user_version") == 3)
            ASSERT_EQ(database.number("SELECT count(*) FROM value JOIN summary USING (run)"), 50);
        else
            ASSERT_EQ(database.number("SELECT count(*) FROM sqlite_schema WHERE name = 'value'"), 0);
    }
    EXPECT_GT(num_cut, 2u);
}

TEST_F(History, WaitsForAnotherWriterAndNamesIt) {
    add({entry_of(1)});
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    const pid_t writer = ::fork();
    if (writer == 0) {
        Database database(path, OpenMode::write);
        database.execute("BEGIN IMMEDIATE");
        [[maybe_unused]] const ssize_t written = ::write(ready[1], "x", 1);
        ::pause();
        ::_exit(0);
    }
    char byte = 0;
    ASSERT_EQ(::read(ready[0], &byte, 1), 1);
    HistoryStore store(path, OpenMode::write, {}, 50);
    const HistoryEntry entry = entry_of(2);
    EXPECT_EQ(history_fault_of([&] {
                  store.add({&entry, 1});
              }),
              path + ": process " + std::to_string(writer) + " is writing to it; wait for it to end");
    EXPECT_EQ(store.list().size(), 1u); // readers need not wait
    ::kill(writer, SIGKILL);
    ::waitpid(writer, nullptr, 0);
    EXPECT_THAT(store.add({&entry, 1}), ElementsAre(Added::is_new));
    ::close(ready[0]);
    ::close(ready[1]);
}

TEST_F(History, TwoWritersBothSucceed) {
    const auto write_runs = [&](int first) {
        for (int i = 0; i < 20; ++i)
            add({entry_of(first + i)});
    };
    const pid_t other = ::fork();
    if (other == 0) {
        write_runs(1000);
        ::_exit(0);
    }
    write_runs(0);
    int status = -1;
    ::waitpid(other, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(HistoryStore(path, OpenMode::read).list().size(), 40u);
}

// A writer that is killed at any point leaves the runs before it, and its own whole or not at all.
TEST_F(History, NothingIsLostByKills) {
    add({entry_of(1e6)});
    std::size_t num_before = 1;
    std::size_t num_cut = 0;
    for (int kill = 0; kill < 200; ++kill) {
        const pid_t writer = ::fork();
        if (writer == 0) {
            for (int i = 0; i < 3; ++i)
                add({entry_of(kill * 10 + i, "2026-11-22", {{"a", "1"}}),
                     entry_of(kill * 10 + i + 5, "2026-11-22", {{"a", "1"}})});
            ::_exit(0);
        }
        std::this_thread::sleep_for(std::chrono::microseconds(kill * 100));
        ::kill(writer, SIGKILL);
        int status = 0;
        ::waitpid(writer, &status, 0);
        num_cut += WIFSIGNALED(status) ? 1 : 0;
        HistoryStore store(path, OpenMode::read);
        const std::size_t num_runs = store.list().size();
        ASSERT_GE(num_runs, num_before);
        ASSERT_EQ(num_runs % 2, 1u) << "half of a change, after kill " << kill;
        ASSERT_EQ(store.list({{"a", "1"}}).size(), num_runs - 1);
        num_before = num_runs;
    }
    EXPECT_GT(num_cut, 20u);
    EXPECT_EQ(Database(path, OpenMode::read)
                  .number("SELECT count(*) FROM pragma_integrity_check "
                          "WHERE integrity_check <> 'ok'"),
              0);
}

} // namespace
