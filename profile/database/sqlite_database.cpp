// SPDX-License-Identifier: Apache-2.0
#include "sqlite_database.h"

#include <sqlite3.h>

namespace zan::profile {

void Statement::Finalize::operator()(sqlite3_stmt* statement) const {
    sqlite3_finalize(statement);
}

Statement::Statement(Database& database, std::string_view sql) : m_database(database) {
    sqlite3_stmt* made = nullptr;
    const int code =
        sqlite3_prepare_v2(database.get(), sql.data(), static_cast<int>(sql.size()), &made, nullptr);
    m_statement.reset(made);
    check(code);
}

void Statement::check(int code) const {
    if (code != SQLITE_OK)
        m_database.fail(code);
}

Statement& Statement::bind(int parameter, std::int64_t value) {
    check(sqlite3_bind_int64(m_statement.get(), parameter, value));
    return *this;
}

Statement& Statement::bind(int parameter, double value) {
    check(sqlite3_bind_double(m_statement.get(), parameter, value));
    return *this;
}

// A text without bytes may have no address, which would be null.
Statement& Statement::bind(int parameter, std::string_view text) {
    const char* const bytes = text.empty() ? "" : text.data();
    check(sqlite3_bind_text64(m_statement.get(), parameter, bytes, text.size(), SQLITE_STATIC, SQLITE_UTF8));
    return *this;
}

Statement& Statement::bind_null(int parameter) {
    check(sqlite3_bind_null(m_statement.get(), parameter));
    return *this;
}

bool Statement::step() {
    const int code = sqlite3_step(m_statement.get());
    if (code == SQLITE_ROW)
        return true;
    const int reset_code = sqlite3_reset(m_statement.get());
    if (code != SQLITE_DONE)
        m_database.fail(reset_code != SQLITE_OK ? reset_code : code);
    return false;
}

void Statement::run() {
    while (step()) {
    }
}

void Statement::reset() {
    sqlite3_reset(m_statement.get());
}

bool Statement::is_null(int column) const {
    return sqlite3_column_type(m_statement.get(), column) == SQLITE_NULL;
}

std::int64_t Statement::integer(int column) const {
    return sqlite3_column_int64(m_statement.get(), column);
}

double Statement::real(int column) const {
    return sqlite3_column_double(m_statement.get(), column);
}

std::string Statement::text(int column) const {
    const void* const bytes = sqlite3_column_blob(m_statement.get(), column);
    const int size = sqlite3_column_bytes(m_statement.get(), column);
    return bytes ? std::string(static_cast<const char*>(bytes), static_cast<std::size_t>(size)) : "";
}

void Database::Close::operator()(sqlite3* database) const {
    sqlite3_close_v2(database);
}

Database::Database(const std::string& path, OpenMode mode) {
    int flags = SQLITE_OPEN_READWRITE | (mode == OpenMode::create ? SQLITE_OPEN_CREATE : 0);
    if (mode == OpenMode::read)
        flags = SQLITE_OPEN_READONLY;
    sqlite3* opened = nullptr;
    const int code = sqlite3_open_v2(path.c_str(), &opened, flags | SQLITE_OPEN_NOMUTEX, nullptr);
    m_database.reset(opened);
    if (code != SQLITE_OK)
        fail(code);
    // What a file says is taken for data, whatever it is.
    sqlite3_db_config(opened, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(opened, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
}

void Database::fail(int code) const {
    const char* const text = m_database ? sqlite3_errmsg(m_database.get()) : sqlite3_errstr(code);
    throw DatabaseError(code, text);
}

void Database::execute(const std::string& sql) {
    const int code = sqlite3_exec(m_database.get(), sql.c_str(), nullptr, nullptr, nullptr);
    if (code != SQLITE_OK)
        fail(code);
}

std::int64_t Database::number(std::string_view sql) {
    Statement query(*this, sql);
    return query.step() ? query.integer(0) : 0;
}

void Database::wait_for_locks(int milliseconds) {
    sqlite3_busy_timeout(m_database.get(), milliseconds);
}

std::int64_t Database::num_changed() const {
    return sqlite3_changes64(m_database.get());
}

} // namespace zan::profile
