// SPDX-License-Identifier: Apache-2.0
// Many runs in one file: an SQLite database of summaries with their labels.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "profile_summary.h"
#include "run_id.h"
#include "sqlite_database.h"

namespace zan::profile {

class RunValues;

using Labels = std::map<std::string, std::string>;

// What the database knows of a run beside its summary.
struct HistoryRun {
    std::int64_t number = 0; // of the row, which no one else sees
    std::string id;          // 32 digits
    std::string date;        // "2026-11-22" or "2026-11-22T09:30:00", as it was given
    std::string input;
    Labels labels;
};

// A run to be added.
struct HistoryEntry {
    ProfileSummary summary;
    std::string date;
    Labels labels; // beside those that the summary makes
};

// A metric of a kernel, or of a block of it, over runs.
struct TrendQuery {
    std::string kernel; // "aggregate", "aggregate#1"
    std::string block;  // empty: the kernel's own
    Metric metric = Metric::kernel_time;
    Labels where;                    // only runs with these labels
    std::optional<std::size_t> most; // that many of the newest runs
};

struct TrendPoint {
    HistoryRun run;
    double value = 0;
};

// Runs without the value are left out: not measured, or of a design without the kernel.
struct TrendLine {
    std::vector<TrendPoint> points; // oldest first
    bool time_unit = true;          // times are in nanoseconds, else in units of the reports
    std::string newest_without;     // the id of the newest run, if that one was left out
};

enum class Added { is_new, got_labels, was_there };

// Why a database can't be used, or has no such run, in words. `is_missing` is true for the latter.
class HistoryFault : public std::runtime_error {
  public:
    explicit HistoryFault(const std::string& text, bool is_missing = false)
        : std::runtime_error(text), m_is_missing(is_missing) {}
    bool is_missing() const { return m_is_missing; }

  private:
    bool m_is_missing;
};

// What a summary says of where and with what it ran: package, board, clock, device.
Labels labels_of(const ProfileSummary& summary);
// Nothing if it is YYYY-MM-DD, or that with THH:MM:SS; else why it isn't.
std::optional<std::string> date_fault(const std::string& date);

// Keeps a copy of a file: `write` hands over its bytes, piece by piece. Throws if it can't: the file then
// stays as it is.
using BytesTaker = std::function<void(std::string_view bytes)>;
using CopyKeeper =
    std::function<void(const std::string& name, const std::function<void(const BytesTaker& take)>& write)>;

// An open history. All functions throw HistoryFault; a change is there as a whole or not at all.
class HistoryStore {
  public:
    // For OpenMode::create a missing or empty file becomes a history. A file of an older version of the
    // schema is brought up to date, after `keep_copy` has kept it as "PATH.bak"; in memory for
    // OpenMode::read. `wait_milliseconds`: for other writers.
    HistoryStore(const std::string& path, OpenMode mode, const CopyKeeper& keep_copy = {},
                 int wait_milliseconds = 30'000);

    // Adds the runs, all at once. A run that is there gets the labels that it doesn't have; a label that it
    // has keeps its value unless it is given anew.
    std::vector<Added> add(std::span<const HistoryEntry> entries);
    // The runs that have all of these labels, oldest first.
    std::vector<HistoryRun> list(const Labels& where = {});
    // By "last", "last~3", a label "commit=1f3a" (the newest that has it), or the first digits of an id.
    HistoryRun find(const std::string& name);
    ProfileSummary summary(const HistoryRun& run);
    void remove(const HistoryRun& run);
    TrendLine trend(const TrendQuery& query);
    // Kernels, or, with a kernel, its blocks, that some run had.
    std::vector<std::string> names(const std::string& kernel = {});

  private:
    std::optional<std::int64_t> series_of(const TrendQuery& query, bool time_unit);
    std::int64_t version();
    void prepare(OpenMode mode, const CopyKeeper& keep_copy);
    Added add_one(const HistoryEntry& entry, RunValues& values);
    HistoryRun first_of(Statement& query, const std::string& name);
    HistoryRun find_by_id(const std::string& name);
    [[noreturn]] void explain(const DatabaseError& error) const;
    template <class Work>
    auto guarded(Work work);

    std::string m_path;
    Database m_database;
};

} // namespace zan::profile
