// SPDX-License-Identifier: Apache-2.0
#include "sqlite_database.h"

#include <sqlite3.h>

#include <algorithm>
#include <vector>

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

Statement& Statement::bind_bytes(int parameter, std::string_view bytes) {
    const char* const address = bytes.empty() ? "" : bytes.data();
    check(sqlite3_bind_blob64(m_statement.get(), parameter, address, bytes.size(), SQLITE_STATIC));
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
    if (!bytes) // of null, or without bytes
        return {};
    return {static_cast<const char*>(bytes), static_cast<std::size_t>(size)};
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

Database Database::copy_in_memory() const {
    Database copy(":memory:", OpenMode::create);
    sqlite3_backup* const backup = sqlite3_backup_init(copy.get(), "main", get(), "main");
    if (!backup)
        copy.fail(sqlite3_errcode(copy.get()));
    const int code = sqlite3_backup_step(backup, -1);
    sqlite3_backup_finish(backup); // which takes a locked file for no fault
    if (code != SQLITE_DONE)
        throw DatabaseError(code, sqlite3_errstr(code));
    return copy;
}

void Database::read_file(const std::function<void(std::string_view)>& take) const {
    constexpr sqlite3_int64 piece = sqlite3_int64{1} << 18;
    sqlite3_file* file = nullptr;
    const auto check = [](int code) {
        if (code != SQLITE_OK)
            throw DatabaseError(code, sqlite3_errstr(code));
    };
    check(sqlite3_file_control(get(), "main", SQLITE_FCNTL_FILE_POINTER, &file));
    sqlite3_int64 size = 0;
    check(file->pMethods->xFileSize(file, &size));
    std::vector<char> bytes(static_cast<std::size_t>(std::min(size, piece)));
    for (sqlite3_int64 at = 0; at < size; at += piece) {
        const sqlite3_int64 length = std::min(size - at, piece);
        check(file->pMethods->xRead(file, bytes.data(), static_cast<int>(length), at));
        take({bytes.data(), static_cast<std::size_t>(length)});
    }
}

} // namespace zan::profile
