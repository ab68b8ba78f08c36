// SPDX-License-Identifier: Apache-2.0
// Histories that several processes use at once, or whose writers are killed.
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <thread>

#include "first_history.h"
#include "history_fixture.h"
#include "history_schema.h"

namespace {

using namespace zan::profile;
using testing::ElementsAre;

using HistoryWriters = HistoryTest;

// A killed writer leaves the old version, whole, or the new one.
TEST_F(HistoryWriters, BringingUpToDateIsWholeOrNotThere) {
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

TEST_F(HistoryWriters, WaitsForAnotherWriterAndNamesIt) {
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
              path + ": process " + std::to_string(writer) + " is using it; wait for it to end");
    EXPECT_EQ(store.list().size(), 1u); // readers need not wait
    ::kill(writer, SIGKILL);
    ::waitpid(writer, nullptr, 0);
    EXPECT_THAT(store.add({&entry, 1}), ElementsAre(Added::is_new));
    ::close(ready[0]);
    ::close(ready[1]);
}

// The system doesn't say which process has a lock where it is this one, or one of another machine.
TEST_F(HistoryWriters, AnUnknownWriterHasNoNumber) {
    add({entry_of(1)});
    HistoryStore store(path, OpenMode::write, {}, 1);
    Database writer(path, OpenMode::write);
    writer.execute("BEGIN IMMEDIATE");
    const HistoryEntry entry = entry_of(2);
    const auto add_entry = [&] { store.add({&entry, 1}); };
    const std::string text = path + ": another process is using it; wait for it to end";
    EXPECT_EQ(history_fault_of(add_entry), text);
    std::filesystem::remove(path);
    EXPECT_EQ(history_fault_of(add_entry), text) << "nor is there a file to ask for";
}

// Both find the old version; the second one waits, and has nothing left to do.
TEST_F(HistoryWriters, OneOfTwoWritersBringsTheHistoryUpToDate) {
    make_first_history(path, {run_of_time(5)});
    Database first(path, OpenMode::write);
    first.execute("BEGIN IMMEDIATE");
    bring_up_to_date(first, 1);
    std::thread first_writer([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        first.execute("COMMIT");
    });
    bool keeps_copy = false;
    HistoryStore second(path, OpenMode::write, [&](const std::string&, const auto&) { keeps_copy = true; });
    first_writer.join();
    EXPECT_FALSE(keeps_copy);
    EXPECT_EQ(second.summary(second.find("last")), run_of_time(5));
}

TEST_F(HistoryWriters, TwoWritersBothSucceed) {
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
TEST_F(HistoryWriters, NothingIsLostByKills) {
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
