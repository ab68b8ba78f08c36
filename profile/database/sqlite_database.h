// SPDX-License-Identifier: Apache-2.0
// SQLite's calls, each checked.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace zan::profile {

// A call that failed: SQLite's number of the error, and its words.
class DatabaseError : public std::runtime_error {
  public:
    DatabaseError(int code, const std::string& text) : std::runtime_error(text), m_code(code) {}
    int code() const { return m_code; }

  private:
    int m_code;
};

enum class OpenMode { read, write, create };

class Database;

// An SQL statement whose values are bound to its parameters. It must not outlive its database.
class Statement {
  public:
    Statement(Database& database, std::string_view sql);

    // Parameters count from 1. A text is not copied: it must live until the statement is run.
    Statement& bind(int parameter, std::int64_t value);
    Statement& bind(int parameter, double value);
    Statement& bind(int parameter, std::string_view text);
    Statement& bind_bytes(int parameter, std::string_view bytes); // as a text
    Statement& bind_null(int parameter);

    // Runs it to its next row; false at the end, after which it can be run again.
    bool step();
    // Runs a statement that has no rows.
    void run();
    // Forgets the rows that are left.
    void reset();

    // Of the current row; columns count from 0.
    bool is_null(int column) const;
    std::int64_t integer(int column) const;
    double real(int column) const;
    std::string text(int column) const; // or bytes

  private:
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const;
    };
    void check(int code) const;
    Database& m_database;
    std::unique_ptr<sqlite3_stmt, Finalize> m_statement;
};

// An open database. All functions throw DatabaseError.
class Database {
  public:
    Database(const std::string& path, OpenMode mode);

    // Statements without parameters, and without rows that matter.
    void execute(const std::string& sql);
    // The first column of the only row of a query, as an integer.
    std::int64_t number(std::string_view sql);
    // Waits that long for locks of others.
    void wait_for_locks(int milliseconds);
    std::int64_t num_changed() const;
    // All of it as a database in memory, which has no file.
    Database copy_in_memory() const;
    // Hands over the bytes of its file, piece by piece. The file must not change meanwhile: call it in a
    // transaction that may write and hasn't yet. No other descriptor of the file is opened, since closing one
    // would end the locks of this process.
    void read_file(const std::function<void(std::string_view)>& take) const;

    sqlite3* get() const { return m_database.get(); }
    [[noreturn]] void fail(int code) const;

  private:
    struct Close {
        void operator()(sqlite3* database) const;
    };
    std::unique_ptr<sqlite3, Close> m_database;
};

} // namespace zan::profile
