// SPDX-License-Identifier: Apache-2.0
// Many runs in one file: an SQLite database of summaries with their labels.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "profile_summary.h"
#include "sqlite_database.h"

namespace zan::profile {

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

// XXH3-128 of the metrics, as 32 digits: the same for one run, whatever its files are called, and whichever
// version of the program has read it.
std::string run_id_of(const ProfileSummary& summary);
// What a summary says of where and with what it ran: package, board, clock, device.
Labels labels_of(const ProfileSummary& summary);
// Nothing if it is YYYY-MM-DD, or that with THH:MM:SS; else why it isn't.
std::optional<std::string> date_fault(const std::string& date);

// An open history. All functions throw HistoryFault; a change is there as a whole or not at all.
class HistoryStore {
  public:
    static constexpr int schema_version = 1;
    static constexpr int application_id = 0x5A50'4849; // in the header of the file: "ZPHI"

    // For OpenMode::create a missing or empty file becomes a history. `wait_milliseconds`: for other writers.
    HistoryStore(const std::string& path, OpenMode mode, int wait_milliseconds = 30'000);

    // Adds the runs, all at once. A run that is there gets the labels that it doesn't have; a label that it
    // has keeps its value unless it is given anew.
    std::vector<Added> add(std::span<const HistoryEntry> entries);
    // The runs that have all of these labels, oldest first.
    std::vector<HistoryRun> list(const Labels& where = {});
    // By "last", "last~3", a label "commit=1f3a" (the newest that has it), or the first digits of an id.
    HistoryRun find(const std::string& name);
    ProfileSummary summary(const HistoryRun& run);
    void remove(const HistoryRun& run);

  private:
    void prepare(OpenMode mode);
    Added add_one(const HistoryEntry& entry);
    HistoryRun newest(std::span<const HistoryRun> runs, std::size_t back, const std::string& name) const;
    [[noreturn]] void explain(const DatabaseError& error) const;
    template <class Work>
    auto guarded(Work work);

    std::string m_path;
    Database m_database;
};

} // namespace zan::profile
