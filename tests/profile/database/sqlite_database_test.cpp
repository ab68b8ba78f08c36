// SPDX-License-Identifier: Apache-2.0
#include "sqlite_database.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "temp_dir.h"
#include "whole_file.h"

namespace {

using namespace zan::profile;

TEST(SqliteDatabase, KeepsWhatIsBound) {
    Database database(":memory:", OpenMode::create);
    database.execute("CREATE TABLE t (a INTEGER, b REAL, c TEXT, d TEXT) STRICT");
    Statement insert(database, "INSERT INTO t VALUES (?, ?, ?, ?)");
    insert.bind(1, std::int64_t{5}).bind(2, 0.1).bind(3, std::string_view("a'b")).bind_null(4).run();
    insert.bind(3, std::string_view()).run(); // the others stay bound
    EXPECT_EQ(database.num_changed(), 1);
    EXPECT_EQ(database.number("SELECT count(*) FROM t"), 2);
    Statement query(database, "SELECT * FROM t");
    ASSERT_TRUE(query.step());
    EXPECT_EQ(query.integer(0), 5);
    EXPECT_EQ(query.real(1), 0.1);
    EXPECT_EQ(query.text(2), "a'b");
    EXPECT_TRUE(query.is_null(3));
    ASSERT_TRUE(query.step());
    EXPECT_EQ(query.text(2), "");
    EXPECT_FALSE(query.is_null(2));
    EXPECT_FALSE(query.step());
}

TEST(SqliteDatabase, BytesWithoutALengthAreNotNull) {
    Database database(":memory:", OpenMode::create);
    database.execute("CREATE TABLE t (a BLOB) STRICT");
    Statement insert(database, "INSERT INTO t VALUES (?)");
    insert.bind_bytes(1, {}).run();
    insert.bind_bytes(1, std::string_view("a\0b", 3)).run();
    Statement query(database, "SELECT a FROM t");
    ASSERT_TRUE(query.step());
    EXPECT_FALSE(query.is_null(0));
    EXPECT_EQ(query.text(0), "");
    ASSERT_TRUE(query.step());
    EXPECT_EQ(query.text(0), std::string("a\0b", 3));
}

TEST(SqliteDatabase, FaultsAreThrownWithReasons) {
    Database database(":memory:", OpenMode::create);
    EXPECT_THROW(database.execute("CREATE"), DatabaseError);
    EXPECT_THROW(Statement(database, "SELECT * FROM nothing"), DatabaseError);
    database.execute("CREATE TABLE t (a INTEGER PRIMARY KEY) STRICT; INSERT INTO t VALUES (1)");
    Statement insert(database, "INSERT INTO t VALUES (1)");
    try {
        insert.run();
        ADD_FAILURE() << "the key is taken";
    } catch (const DatabaseError& error) {
        EXPECT_STREQ(error.what(), "UNIQUE constraint failed: t.a");
    }
}

TEST(SqliteDatabase, AFileThatIsNoDatabaseIsRefused) {
    const TempDir dir;
    write_file(dir.path("x"), std::string(4096, 'x'));
    Database database(dir.path("x"), OpenMode::read);
    EXPECT_THROW(database.number("SELECT count(*) FROM sqlite_schema"), DatabaseError);
    EXPECT_THROW(Database(dir.path("none"), OpenMode::read), DatabaseError);
    EXPECT_THROW(Database(dir.path("none"), OpenMode::write), DatabaseError);
}

TEST(SqliteDatabase, ACopyInMemoryIsOfItsOwn) {
    const TempDir dir;
    Database database(dir.path("x"), OpenMode::create);
    database.execute("CREATE TABLE t (a); INSERT INTO t VALUES (7); PRAGMA user_version = 5");
    const std::string bytes = read_file(dir.path("x"));
    Database copy = database.copy_in_memory();
    EXPECT_EQ(copy.number("SELECT a FROM t"), 7);
    EXPECT_EQ(copy.number("PRAGMA user_version"), 5);
    copy.execute("DELETE FROM t");
    EXPECT_EQ(read_file(dir.path("x")), bytes);
}

TEST(SqliteDatabase, WhatAnotherWritesIsNotCopied) {
    const TempDir dir;
    Database writer(dir.path("x"), OpenMode::create);
    writer.execute("CREATE TABLE t (a); BEGIN EXCLUSIVE");
    const Database reader(dir.path("x"), OpenMode::read);
    try {
        reader.copy_in_memory();
        ADD_FAILURE() << "it is locked";
    } catch (const DatabaseError& error) {
        EXPECT_EQ(error.code(), 5); // SQLITE_BUSY
        EXPECT_STREQ(error.what(), "database is locked");
    }
}

TEST(SqliteDatabase, AFileThatIsCutWhileItIsReadIsAFault) {
    const TempDir dir;
    Database database(dir.path("x"), OpenMode::create);
    database.execute("CREATE TABLE t (a); INSERT INTO t VALUES (zeroblob(1048576))");
    int num_pieces = 0;
    try {
        database.read_file([&](std::string_view) {
            ++num_pieces;
            std::filesystem::resize_file(dir.path("x"), 4096);
        });
        ADD_FAILURE() << "most of it is gone";
    } catch (const DatabaseError& error) {
        EXPECT_STREQ(error.what(), "disk I/O error");
    }
    EXPECT_EQ(num_pieces, 1);
}

// 1 MiB of content makes several pieces.
TEST(SqliteDatabase, ItsFileCanBeReadWhileItIsLocked) {
    const TempDir dir;
    Database database(dir.path("x"), OpenMode::create);
    database.execute("CREATE TABLE t (a); INSERT INTO t VALUES (zeroblob(1048576)); BEGIN IMMEDIATE");
    std::string bytes;
    int num_pieces = 0;
    database.read_file([&](std::string_view piece) {
        bytes += piece;
        ++num_pieces;
    });
    EXPECT_GT(num_pieces, 3);
    EXPECT_EQ(bytes, read_file(dir.path("x")));
    database.execute("COMMIT");
}

} // namespace
