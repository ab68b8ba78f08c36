// SPDX-License-Identifier: Apache-2.0
// What must hold: nothing is changed outside of a transaction, and a file that isn't a history of a known
// version is never written to. The journal is the usual one: a write-ahead log doesn't work in folders that
// several machines share.
#include "history_store.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <utility>

#include "history_schema.h"
#include "packed_text.h"
#include "run_values.h"
#include "summary_fields.h"
#include "summary_json.h"
#include "value_text.h"

namespace zan::profile {

namespace {

// Results of SQLite, whose header only the database's own source includes.
constexpr int result_busy = 5;
constexpr int result_no_database = 26;

// The process that has the file locked; 0 if it isn't known, as on other machines.
pid_t lock_holder(const std::string& path) {
    constexpr off_t lock_bytes = 0x4000'0000;
    constexpr off_t num_lock_bytes = 512;
    const int fd = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    if (fd < 0)
        return 0;
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = lock_bytes;
    lock.l_len = num_lock_bytes;
    const bool asked = ::fcntl(fd, F_GETLK, &lock) == 0;
    ::close(fd);
    return asked && lock.l_type != F_UNLCK ? lock.l_pid : 0;
}

// Rolled back unless it is committed.
class Transaction {
  public:
    explicit Transaction(Database& database) : m_database(database) { database.execute("BEGIN IMMEDIATE"); }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    ~Transaction() {
        try {
            if (!m_is_done)
                m_database.execute("ROLLBACK");
        } catch (const DatabaseError&) { // SQLite has rolled it back
        }
    }
    void commit() {
        m_database.execute("COMMIT");
        m_is_done = true;
    }

  private:
    Database& m_database;
    bool m_is_done = false;
};

bool has_digits(const std::string& text, std::string_view pattern) {
    return text.size() == pattern.size() &&
           std::equal(text.begin(), text.end(), pattern.begin(),
                      [](char c, char p) { return p == '0' ? c >= '0' && c <= '9' : c == p; });
}

constexpr const char* labels_sql = "SELECT name, value FROM label WHERE run = ? ORDER BY name";

// `query` is of labels_sql.
Labels labels_of_run(Statement& query, std::int64_t run) {
    Labels labels;
    query.bind(1, run);
    while (query.step())
        labels[query.text(0)] = query.text(1);
    return labels;
}

// The first columns of `query` are number, id, date and input.
HistoryRun run_of_row(const Statement& query, Statement& labels) {
    HistoryRun run;
    run.number = query.integer(0);
    run.id = query.text(1);
    run.date = query.text(2);
    run.input = query.text(3);
    run.labels = labels_of_run(labels, run.number);
    return run;
}

bool has_labels(const HistoryRun& run, const Labels& where) {
    return std::all_of(where.begin(), where.end(), [&](const auto& label) {
        const auto found = run.labels.find(label.first);
        return found != run.labels.end() && found->second == label.second;
    });
}

} // namespace

Labels labels_of(const ProfileSummary& summary) {
    std::string devices;
    for (const KernelSummary& kernel : summary.kernels) {
        if (!kernel.device)
            continue;
        const std::string device = std::to_string(*kernel.device);
        if (("," + devices + ",").find("," + device + ",") == std::string::npos)
            devices += (devices.empty() ? "" : ",") + device;
    }
    const std::pair<const char*, std::string> values[] = {
        {"package", summary.zanx_version},
        {"board", summary.board},
        {"clock", summary.clock_mhz ? trimmed_text(*summary.clock_mhz, 3) : ""},
        {"device", devices}};
    Labels labels;
    for (const auto& [name, value] : values) {
        if (!value.empty())
            labels[name] = value;
    }
    return labels;
}

std::optional<std::string> date_fault(const std::string& date) {
    const bool has_time = has_digits(date, "0000-00-00T00:00:00");
    if (!has_time && !has_digits(date, "0000-00-00"))
        return "a date is YYYY-MM-DD, or YYYY-MM-DDTHH:MM:SS";
    const auto number = [&](std::size_t at) { return std::stoi(date.substr(at, 2)); };
    const bool good_day = number(5) >= 1 && number(5) <= 12 && number(8) >= 1 && number(8) <= 31;
    if (!good_day || (has_time && (number(11) > 23 || number(14) > 59 || number(17) > 59)))
        return "there is no such date";
    return std::nullopt;
}

template <class Work>
auto HistoryStore::guarded(Work work) {
    try {
        return work();
    } catch (const DatabaseError& error) {
        explain(error);
    }
}

HistoryStore::HistoryStore(const std::string& path, OpenMode mode, const CopyKeeper& keep_copy,
                           int wait_milliseconds)
    : m_path(path), m_database([&] {
          try {
              // Readers, too, roll back what a killed writer has left. To SQLite ":memory:" is no file.
              return Database(path.starts_with(":") ? "./" + path : path,
                              mode == OpenMode::create ? OpenMode::create : OpenMode::write);
          } catch (const DatabaseError& error) {
              throw HistoryFault(path + ": " + error.what());
          }
      }()) {
    guarded([&] {
        m_database.wait_for_locks(wait_milliseconds);
        m_database.execute("PRAGMA synchronous = FULL; PRAGMA foreign_keys = OFF");
        prepare(mode, keep_copy);
        m_database.execute("PRAGMA foreign_keys = ON");
    });
}

void HistoryStore::explain(const DatabaseError& error) const {
    std::string text = error.what();
    if ((error.code() & 0xff) == result_busy) {
        const pid_t holder = lock_holder(m_path);
        text = "another process";
        if (holder > 0)
            text = "process " + std::to_string(holder);
        text += " is using it; wait for it to end";
    } else if ((error.code() & 0xff) == result_no_database) {
        text = "it is no history";
    }
    throw HistoryFault(m_path + ": " + text);
}

// 0 for an empty file.
std::int64_t HistoryStore::version() {
    const std::int64_t application = m_database.number("PRAGMA application_id");
    if (application == 0 && m_database.number("SELECT count(*) FROM sqlite_schema") == 0)
        return 0;
    if (application != history_application)
        throw HistoryFault(m_path + ": it is no history, but a database of another program");
    const std::int64_t found = m_database.number("PRAGMA user_version");
    if (found < 1)
        throw HistoryFault(m_path + ": it is damaged: it has version " + std::to_string(found) +
                           " of the schema");
    if (found > history_version)
        throw HistoryFault(m_path + ": it has version " + std::to_string(found) +
                           " of the schema, and this program knows " + std::to_string(history_version) +
                           "; use a newer program");
    if (!has_tables_of(m_database, found))
        throw HistoryFault(m_path + ": it is damaged: its tables aren't those of a history");
    return found;
}

// Reads before it writes: a file of others stays as it is. Readers of an older version make a newer one of it
// in memory.
void HistoryStore::prepare(OpenMode mode, const CopyKeeper& keep_copy) {
    const std::int64_t found = version();
    if (found == history_version)
        return;
    if (found == 0 && mode != OpenMode::create)
        throw HistoryFault(m_path + ": it is no history: it is empty");
    if (mode == OpenMode::read) {
        m_database = m_database.copy_in_memory();
        bring_up_to_date(m_database, found);
        return;
    }
    Transaction transaction(m_database);
    const std::int64_t now = version();
    if (now == history_version) // another writer was faster
        return;
    if (now != 0 && !keep_copy)
        throw HistoryFault(m_path + ": it has version " + std::to_string(now) + " of the schema");
    if (now != 0)
        keep_copy(m_path + ".bak", [&](const BytesTaker& take) { m_database.read_file(take); });
    bring_up_to_date(m_database, now);
    transaction.commit();
}

std::vector<Added> HistoryStore::add(std::span<const HistoryEntry> entries) {
    return guarded([&] {
        std::vector<Added> added;
        Transaction transaction(m_database);
        RunValues values(m_database);
        for (const HistoryEntry& entry : entries)
            added.push_back(add_one(entry, values));
        transaction.commit();
        return added;
    });
}

Added HistoryStore::add_one(const HistoryEntry& entry, RunValues& values) {
    const std::string id = run_id_of(entry.summary);
    Statement insert(m_database,
                     "INSERT INTO run (id, date, input) VALUES (?, ?, ?) ON CONFLICT (id) DO NOTHING");
    insert.bind(1, std::string_view(id)).bind(2, std::string_view(entry.date));
    insert.bind(3, std::string_view(entry.summary.input)).run();
    const bool is_new = m_database.num_changed() == 1;
    Statement number(m_database, "SELECT number FROM run WHERE id = ?");
    number.bind(1, std::string_view(id)).step();
    const std::int64_t run = number.integer(0);
    if (is_new) {
        insert_summary(m_database, run, summary_to_json(entry.summary));
        values.add(run, entry.summary);
    }
    Labels labels = is_new ? labels_of(entry.summary) : Labels();
    for (const auto& [name, value] : entry.labels)
        labels[name] = value;
    Statement label(m_database,
                    "INSERT INTO label VALUES (?, ?, ?) ON CONFLICT (run, name) DO UPDATE SET "
                    "value = excluded.value WHERE value <> excluded.value");
    bool has_changed = false;
    for (const auto& [name, value] : labels) {
        const std::int64_t before = m_database.number("SELECT total_changes()");
        label.bind(1, run).bind(2, std::string_view(name)).bind(3, std::string_view(value)).run();
        has_changed |= m_database.number("SELECT total_changes()") != before;
    }
    if (is_new)
        return Added::is_new;
    return has_changed ? Added::got_labels : Added::was_there;
}

std::vector<HistoryRun> HistoryStore::list(const Labels& where) {
    return guarded([&] {
        std::vector<HistoryRun> runs;
        Statement labels(m_database, labels_sql);
        Statement query(m_database, "SELECT number, id, date, input FROM run ORDER BY date, number");
        while (query.step()) {
            HistoryRun run = run_of_row(query, labels);
            if (has_labels(run, where))
                runs.push_back(std::move(run));
        }
        return runs;
    });
}

// One run is looked for without a look at the others: a history may have very many.
HistoryRun HistoryStore::first_of(Statement& query, const std::string& name) {
    if (!query.step())
        throw HistoryFault(m_path + ": there is no run '" + name + "'", true);
    Statement labels(m_database, labels_sql);
    return run_of_row(query, labels);
}

HistoryRun HistoryStore::find(const std::string& name) {
    return guarded([&] {
        constexpr std::string_view last = "last~";
        std::int64_t back = name == "last" ? 0 : -1;
        if (name.starts_with(last)) {
            const char* const end = name.data() + name.size();
            const auto read = std::from_chars(name.data() + last.size(), end, back);
            back = read.ec == std::errc() && read.ptr == end ? back : -1;
        }
        if (back >= 0) {
            Statement query(m_database,
                            "SELECT number, id, date, input FROM run "
                            "ORDER BY date DESC, number DESC LIMIT 1 OFFSET ?");
            return first_of(query.bind(1, back), name);
        }
        const std::size_t equals = name.find('=');
        if (equals != std::string::npos) {
            Statement query(m_database,
                            "SELECT r.number, r.id, r.date, r.input FROM label l "
                            "JOIN run r ON r.number = l.run WHERE l.name = ? AND l.value = ? "
                            "ORDER BY r.date DESC, r.number DESC");
            query.bind(1, std::string_view(name).substr(0, equals));
            return first_of(query.bind(2, std::string_view(name).substr(equals + 1)), name);
        }
        return find_by_id(name);
    });
}

// Digits are hexadecimal: all ids that begin with the name stand before the name with a 'g'.
HistoryRun HistoryStore::find_by_id(const std::string& name) {
    Statement count(m_database, "SELECT count(*) FROM run WHERE id >= ?1 AND id < ?1 || 'g'");
    count.bind(1, std::string_view(name)).step();
    if (!name.empty() && count.integer(0) > 1)
        throw HistoryFault(
            m_path + ": " + std::to_string(count.integer(0)) + " runs begin with '" + name + "'", true);
    Statement query(m_database,
                    "SELECT number, id, date, input FROM run "
                    "WHERE ?1 <> '' AND id >= ?1 AND id < ?1 || 'g'");
    return first_of(query.bind(1, std::string_view(name)), name);
}

ProfileSummary HistoryStore::summary(const HistoryRun& run) {
    return guarded([&] {
        Statement query(m_database, "SELECT packed, length FROM summary WHERE run = ?");
        if (!query.bind(1, run.number).step())
            throw HistoryFault(m_path + ": the run was removed meanwhile", true);
        auto json = unpack_text(query.text(0), query.integer(1));
        if (!json)
            throw HistoryFault(m_path + ": the summary of " + run.id + " is damaged: it can't be unpacked");
        auto read = summary_from_json(std::move(*json));
        if (const auto* const fault = std::get_if<SummaryFault>(&read))
            throw HistoryFault(m_path + ": the summary of " + run.id + " is damaged: " + describe(*fault));
        return std::get<ProfileSummary>(std::move(read));
    });
}

void HistoryStore::remove(const HistoryRun& run) {
    guarded([&] {
        Transaction transaction(m_database);
        Statement(m_database, "DELETE FROM label WHERE run = ?").bind(1, run.number).run();
        Statement(m_database, "DELETE FROM summary WHERE run = ?").bind(1, run.number).run();
        // Series by series, as their keys begin with it.
        Statement(m_database, "DELETE FROM value WHERE run = ? AND series IN (SELECT number FROM series)")
            .bind(1, run.number)
            .run();
        Statement(m_database, "DELETE FROM run WHERE number = ?").bind(1, run.number).run();
        transaction.commit();
    });
}

std::optional<std::int64_t> HistoryStore::series_of(const TrendQuery& query, bool time_unit) {
    Statement find(m_database,
                   "SELECT number FROM series WHERE scope = ? AND kernel = ? AND name = ? AND metric = ?");
    const MetricRow& row = row_of(query.metric);
    const std::string metric = std::string(row.name) + unit_suffix(row.unit, time_unit);
    find.bind(1, name_of_scope(row.scope)).bind(2, std::string_view(query.kernel));
    find.bind(3, std::string_view(query.block)).bind(4, std::string_view(metric));
    return find.step() ? std::optional(find.integer(0)) : std::nullopt;
}

// Newest first, so that only as many runs are read as are asked for.
TrendLine HistoryStore::trend(const TrendQuery& query) {
    return guarded([&] {
        TrendLine line;
        auto series = series_of(query, true);
        if (!series && row_of(query.metric).unit == MetricUnit::time) {
            series = series_of(query, false);
            line.time_unit = false;
        }
        if (!series)
            return line;
        Statement labels(m_database, labels_sql);
        Statement runs(
            m_database,
            "SELECT r.number, r.id, r.date, r.input, v.value FROM run r "
            "LEFT JOIN value v ON v.series = ? AND v.run = r.number ORDER BY r.date DESC, r.number DESC");
        runs.bind(1, *series);
        while (line.points.size() < query.most.value_or(line.points.size() + 1) && runs.step()) {
            HistoryRun run = run_of_row(runs, labels);
            if (!has_labels(run, query.where))
                continue;
            if (!runs.is_null(4))
                line.points.push_back({std::move(run), runs.real(4)});
            else if (line.points.empty() && line.newest_without.empty())
                line.newest_without = run.id;
        }
        std::reverse(line.points.begin(), line.points.end());
        return line;
    });
}

std::vector<std::string> HistoryStore::names(const std::string& kernel) {
    return guarded([&] {
        Statement query(m_database,
                        kernel.empty()
                            ? "SELECT DISTINCT kernel FROM series WHERE scope = 'kernel'"
                            : "SELECT DISTINCT name FROM series WHERE scope = 'block' AND kernel = ?");
        if (!kernel.empty())
            query.bind(1, std::string_view(kernel));
        std::vector<std::string> names;
        while (query.step())
            names.push_back(query.text(0));
        return names;
    });
}

} // namespace zan::profile
