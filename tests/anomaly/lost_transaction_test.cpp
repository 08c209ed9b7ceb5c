// SQLite gives a transaction up by itself when memory or the disk fails in the wrong moment.
#include "fixture/fixture.h"

using namespace test;

namespace {

struct LostTransaction : Database {
    void lose()
    {
        ASSERT_EQ(qbdb_sql_begin(qbdb, db, 0, "test", 1), 0u);
        ASSERT_EQ(qbdb_sql_exec_mprintf(qbdb, db, nullptr, "test", 2, "INSERT INTO `$registry` VALUES('a','1')"), 0);
        sql("ROLLBACK");
    }
};

TEST_F(LostTransaction, NothingIsStoredByItself)
{
    const std::string before = content();
    lose();
    const char *why = nullptr;
    EXPECT_EQ(qbdb_sql_exec_mprintf(qbdb, db, &why, "test", 3, "INSERT INTO `$registry` VALUES('b','2')"),
              SQLITE_ABORT);
    EXPECT_STREQ(why, "the transaction has been rolled back");
    EXPECT_NE(qbdb_sql_duplicate_table(qbdb, db, 0, "$registry", "_copy"), 0);
    EXPECT_NE(qbdb_sql_commit(qbdb, db, 0, "test", 4), 0u);
    EXPECT_EQ(content(), before);
}

TEST_F(LostTransaction, NothingIsStoredByItselfOnAConnectionOfTheCallers)
{
    sqlite3 *other = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &other), SQLITE_OK);
    const std::string before = content();
    ASSERT_EQ(qbdb_sql_begin(qbdb, other, 0, "test", 1), 0u);
    ASSERT_EQ(sqlite3_exec(other, "ROLLBACK", nullptr, nullptr, nullptr), SQLITE_OK);
    const char *why = nullptr;
    EXPECT_EQ(qbdb_sql_exec_mprintf(qbdb, other, &why, "test", 2, "INSERT INTO `$registry` VALUES('b','2')"),
              SQLITE_ABORT);
    EXPECT_STREQ(why, "the transaction has been rolled back");
    EXPECT_NE(qbdb_sql_commit(qbdb, other, 0, "test", 3), 0u);
    EXPECT_EQ(content(), before);
    EXPECT_EQ(qbdb_sql_exec_mprintf(qbdb, other, &why, "test", 4, "INSERT INTO `$registry` VALUES('b','2')"), 0);
    EXPECT_EQ(sqlite3_close(other), SQLITE_OK);
}

TEST_F(LostTransaction, TheNextOneWorks)
{
    lose();
    EXPECT_EQ(qbdb_sql_rollback(qbdb, db, 0, "test", 3), 0u);
    EXPECT_EQ(qbdb_sql_begin(qbdb, db, 0, "test", 4), 0u);
    EXPECT_EQ(qbdb_sql_exec_mprintf(qbdb, db, nullptr, "test", 5, "INSERT INTO `$registry` VALUES('b','2')"), 0);
    EXPECT_EQ(qbdb_sql_commit(qbdb, db, 0, "test", 6), 0u);
    EXPECT_EQ(value("SELECT value FROM `$registry` WHERE key='b'"), "2");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
