// Table copies: made, compared, dropped.
#include "fixture/fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace {

struct Copies : test::Database {
    Copies()
    {
        sql("CREATE TABLE t (id INTEGER PRIMARY KEY, name TEXT COLLATE NOCASE, x);"
            "INSERT INTO t VALUES(1,'Anna',NULL),(2,'it''s',x'0102'),(3,NULL,1.5);"
            "CREATE TABLE `$dollar` (a, b); INSERT INTO `$dollar` VALUES(1,1),(1,1),(2,NULL)");
        EXPECT_EQ(qbdb_sql_begin(qbdb, db, 0, "f", 1), 0u);
        take_statements();
    }
    ~Copies() override { qbdb_sql_rollback(qbdb, db, 0, "f", 1); }

    int copy(const char *table, const char *name) { return qbdb_sql_duplicate_table(qbdb, db, 0, table, name); }
    int copy_all(const char *prefix) { return qbdb_sql_duplicate_tables(qbdb, db, 0, kSet, prefix); }
    int32_t changed(const char *prefix)
    {
        int32_t answer = -1;
        EXPECT_EQ(qbdb_sql_compare_tables2(qbdb, db, 0, kSet, prefix, &answer), 0);
        return answer;
    }
    int32_t row_changed(const char *where)
    {
        int32_t answer = -1;
        EXPECT_EQ(qbdb_sql_compare_table_row(qbdb, db, 0, "t", "_old_t", where, &answer), 0) << sqlite3_errmsg(db);
        return answer;
    }
    std::vector<std::string> differing(const char *prefix)
    {
        apr_hash_t *hash = nullptr;
        EXPECT_EQ(qbdb_sql_compare_tables(qbdb, db, 0, kSet, prefix, &hash), 0);
        std::vector<std::string> names;
        for (apr_hash_index_t *at = hash ? apr_hash_first(qbdb->pool, hash) : nullptr; at; at = apr_hash_next(at))
            names.emplace_back(static_cast<const char *>(apr_hash_this_key(at)));
        return names;
    }
    std::vector<std::string> copies() const
    {
        return rows("SELECT name FROM sqlite_schema WHERE name LIKE '|_old|_%' ESCAPE '|' ORDER BY name");
    }

    static constexpr const char *kSet[] = {"t", "$dollar", nullptr};
};

TEST_F(Copies, HoldTheRowsAndAreReadUnquoted)
{
    ASSERT_EQ(copy_all("_old_"), 0);
    EXPECT_EQ(rows("SELECT * FROM _old_$dollar"), rows("SELECT * FROM `$dollar`"));
    EXPECT_EQ(rows("SELECT id,typeof(id),name,x,typeof(x) FROM _old_t"),
              rows("SELECT id,typeof(id),name,x,typeof(x) FROM t"));
    EXPECT_THAT(copies(), ElementsAre("_old_$dollar", "_old_t"));
}

TEST_F(Copies, AreTakenBackByARollback)
{
    ASSERT_EQ(copy_all("_old_"), 0);
    ASSERT_EQ(qbdb_sql_rollback(qbdb, db, 0, "f", 1), 0u);
    EXPECT_THAT(copies(), IsEmpty());
}

TEST_F(Copies, ReplaceStaleOnes)
{
    sql("CREATE TABLE _old_t (other)");
    ASSERT_EQ(copy("t", "_old_t"), 0);
    sql("DELETE FROM t");
    ASSERT_EQ(copy("t", "_old_t"), 0);
    EXPECT_EQ(value("SELECT COUNT(*) FROM _old_t"), "0");
}

TEST_F(Copies, MayHaveAnyName)
{
    const char *const names[] = {"a\"b", "it's", "`x`", "[y]", "a b;--", "%Q%d", "SELECT", "\xC3\xA4"};
    for (const char *name : names) {
        SCOPED_TRACE(name);
        const char *const set[] = {name, nullptr};
        char *create = sqlite3_mprintf("CREATE TABLE \"%w\" (\"%w\", \"x\"\"y\"); INSERT INTO \"%w\" VALUES(1,2)", name,
                                       name, name);
        sql(create);
        sqlite3_free(create);
        const std::string copied = std::string("old ") + name;
        EXPECT_EQ(qbdb_sql_duplicate_tables(qbdb, db, 0, set, "old "), 0) << sqlite3_errmsg(db);
        int32_t answer = -1;
        EXPECT_EQ(qbdb_sql_compare_tables2(qbdb, db, 0, set, "old ", &answer), 0) << sqlite3_errmsg(db);
        EXPECT_EQ(answer, 0);
        char *insert = sqlite3_mprintf("INSERT INTO \"%w\" VALUES(3,4)", name);
        sql(insert);
        sqlite3_free(insert);
        EXPECT_EQ(qbdb_sql_compare_table_row(qbdb, db, 0, name, copied.c_str(), "1", &answer), 0);
        EXPECT_EQ(answer, 1);
        EXPECT_EQ(qbdb_sql_delete_tables(qbdb, db, 0, set, "old "), 0);
    }
}

TEST_F(Copies, AreEqualAtFirst)
{
    ASSERT_EQ(copy_all("_old_"), 0);
    EXPECT_EQ(changed("_old_"), 0);
    EXPECT_THAT(differing("_old_"), IsEmpty());
}

struct ChangeCase {
    const char *change;
    std::vector<std::string> differing;
};

TEST_F(Copies, DifferByContent)
{
    const ChangeCase cases[] = {
        {"INSERT INTO t(name) VALUES('new')", {"t"}},
        {"DELETE FROM t WHERE id=1", {"t"}},
        {"UPDATE t SET name='Bert' WHERE id=1", {"t"}},
        {"UPDATE t SET name='anna' WHERE id=1", {"t"}},
        {"UPDATE t SET name=NULL WHERE id=1", {"t"}},
        {"UPDATE t SET name='' WHERE id=3", {"t"}},
        {"UPDATE t SET x='1.5' WHERE id=3", {"t"}},
        {"UPDATE t SET x='0102' WHERE id=2", {"t"}},
        {"UPDATE t SET name='Anna' WHERE id=1", {}},
        {"UPDATE t SET id=9 WHERE id=1; UPDATE t SET id=1 WHERE id=9", {}},
        {"DELETE FROM t; INSERT INTO t SELECT * FROM _old_t ORDER BY id DESC", {}},
        {"INSERT INTO `$dollar` VALUES(1,1)", {"$dollar"}},
        {"DELETE FROM `$dollar` WHERE rowid=2", {"$dollar"}},
        {"UPDATE `$dollar` SET a=2,b=NULL WHERE rowid=2", {"$dollar"}},
        {"DELETE FROM `$dollar` WHERE rowid=1; INSERT INTO `$dollar` VALUES(1,1)", {}},
        {"INSERT INTO _old_t(name) VALUES('only in the copy')", {"t"}},
        {"DELETE FROM t; DELETE FROM `$dollar`", {"t", "$dollar"}},
        {"DELETE FROM t; DELETE FROM _old_t", {}},
    };
    ASSERT_EQ(copy_all("_old_"), 0);
    for (const ChangeCase &each : cases) {
        SCOPED_TRACE(each.change);
        sql("SAVEPOINT before");
        sql(each.change);
        EXPECT_EQ(changed("_old_"), each.differing.empty() ? 0 : 1);
        EXPECT_THAT(differing("_old_"), testing::UnorderedElementsAreArray(each.differing));
        sql("ROLLBACK TO before; RELEASE before");
    }
}

TEST_F(Copies, DifferInTheSelectedRows)
{
    ASSERT_EQ(copy("t", "_old_t"), 0);
    sql("UPDATE t SET x=5 WHERE id=2; DELETE FROM t WHERE id=3; INSERT INTO t(id) VALUES(4)");
    EXPECT_EQ(row_changed("id=1"), 0);
    EXPECT_EQ(row_changed("id=2"), 1);
    EXPECT_EQ(row_changed("id=3"), 1);
    EXPECT_EQ(row_changed("id=4"), 1);
    EXPECT_EQ(row_changed("id=5"), 0);
    EXPECT_EQ(row_changed("id=1 OR id=2"), 1);
    EXPECT_EQ(row_changed("T.id=1 -- the first"), 0);
}

TEST_F(Copies, AreDropped)
{
    ASSERT_EQ(copy_all("_old_"), 0);
    ASSERT_EQ(qbdb_sql_delete_tables(qbdb, db, 0, kSet, "_old_"), 0);
    EXPECT_THAT(copies(), IsEmpty());
    EXPECT_EQ(qbdb_sql_delete_tables(qbdb, db, 0, kSet, "_old_"), 1) << "a missing copy is a failure";
}

TEST_F(Copies, OfNothingAreNothing)
{
    const char *const none[] = {nullptr};
    int32_t answer = -1;
    apr_hash_t *hash = nullptr;
    EXPECT_EQ(qbdb_sql_duplicate_tables(qbdb, db, 0, none, "_old_"), 0);
    EXPECT_EQ(qbdb_sql_compare_tables2(qbdb, db, 0, none, "_old_", &answer), 0);
    EXPECT_EQ(answer, 0);
    EXPECT_EQ(qbdb_sql_compare_tables(qbdb, db, 0, none, "_old_", &hash), 0);
    ASSERT_NE(hash, nullptr);
    EXPECT_EQ(apr_hash_count(hash), 0u);
    EXPECT_EQ(qbdb_sql_delete_tables(qbdb, db, 0, none, "_old_"), 0);
}

TEST_F(Copies, NeverTakeTheirTablesPlace)
{
    EXPECT_EQ(copy("t", "T"), 21);
    EXPECT_EQ(copy_all(""), 21);
    EXPECT_EQ(qbdb_sql_delete_tables(qbdb, db, 0, kSet, ""), 21);
    EXPECT_EQ(value("SELECT COUNT(*) FROM t"), "3");
}

TEST_F(Copies, ThatFailLeaveNone)
{
    const char *const set[] = {"t", "$dollar", "missing", nullptr};
    EXPECT_EQ(qbdb_sql_duplicate_tables(qbdb, db, 0, set, "_old_"), 1);
    EXPECT_THAT(copies(), IsEmpty());
    for (int n = 1; n <= 4; n++) {
        fail_statement(n, 13, "full");
        EXPECT_EQ(copy_all("_old_"), 13) << n;
        EXPECT_THAT(copies(), IsEmpty()) << n;
    }
    fail_statement(1, 13, "full", "DROP");
    EXPECT_EQ(copy("t", "_old_t"), 13);
    fail_statement(0);
    EXPECT_EQ(copy_all("_old_"), 0);
}

TEST_F(Copies, ComparingFailsWithACode)
{
    int32_t answer = 7;
    apr_hash_t *hash = reinterpret_cast<apr_hash_t *>(1);
    EXPECT_EQ(qbdb_sql_compare_tables2(qbdb, db, 0, kSet, "_old_", &answer), 1) << "no copy";
    EXPECT_EQ(qbdb_sql_compare_tables(qbdb, db, 0, kSet, "_old_", &hash), 1);
    EXPECT_EQ(hash, nullptr);
    ASSERT_EQ(copy_all("_old_"), 0);
    EXPECT_EQ(qbdb_sql_compare_table_row(qbdb, db, 0, "t", "_old_t", "nonsense=1", &answer), 1);
    EXPECT_EQ(qbdb_sql_compare_table_row(qbdb, db, 0, "t", "_old_t", "1) OR (", &answer), 1);
    EXPECT_EQ(qbdb_sql_compare_table_row(qbdb, db, 0, "missing", "_old_t", "1", &answer), 1);
    EXPECT_EQ(qbdb_sql_compare_table_row(qbdb, nullptr, 0, "t", "_old_t", "1", &answer), 21);
    fail_statement(1, 10);
    EXPECT_EQ(qbdb_sql_compare_tables2(qbdb, db, 0, kSet, "_old_", &answer), 10);
    fail_statement(2, 10);
    EXPECT_EQ(qbdb_sql_compare_tables(qbdb, db, 0, kSet, "_old_", &hash), 10);
    EXPECT_EQ(hash, nullptr);
    fail_statement(2, 10);
    EXPECT_EQ(qbdb_sql_delete_tables(qbdb, db, 0, kSet, "_old_"), 10);
    fail_statement(0);
    // A column that one of the two does not have is no text of the column's name.
    sql("CREATE TABLE _old_t AS SELECT id, name FROM t");
    EXPECT_EQ(qbdb_sql_compare_table_row(qbdb, db, 0, "t", "_old_t", "1", &answer), 1);
    sql("CREATE TABLE wrong AS SELECT abs(-9223372036854775807-1) AS a WHERE 0; CREATE TABLE _old_wrong AS SELECT * "
        "FROM wrong;"
        "INSERT INTO wrong VALUES(1)");
    EXPECT_EQ(qbdb_sql_compare_table_row(qbdb, db, 0, "wrong", "_old_wrong", "abs(-9223372036854775807-1)", &answer),
              1);
    EXPECT_EQ(answer, 7) << "no answer is written";
    EXPECT_EQ(copy("t", "_old_t"), 0);
    EXPECT_EQ(qbdb_sql_duplicate_table(qbdb, nullptr, 0, "t", "_old_t"), 21);
}

TEST_F(Copies, AreKeptByACommit)
{
    ASSERT_EQ(copy("t", "_old_t"), 0);
    ASSERT_EQ(qbdb_sql_commit(qbdb, db, 0, "f", 1), 0u);
    EXPECT_THAT(copies(), ElementsAre("_old_t"));
    ASSERT_EQ(qbdb_sql_begin(qbdb, db, 0, "f", 1), 0u);
    ASSERT_EQ(copy("t", "_old_t"), 0) << "and are stale then";
}

TEST_F(Copies, TheHookSeesTheirStatements)
{
    ASSERT_EQ(copy("$dollar", "_old_$dollar"), 0);
    EXPECT_THAT(take_statements(), ElementsAre("DROP TABLE IF EXISTS \"_old_$dollar\"",
                                               "CREATE TABLE \"_old_$dollar\" AS SELECT * FROM \"$dollar\""));
    int32_t answer = 0;
    ASSERT_EQ(qbdb_sql_compare_table_row(qbdb, db, 0, "$dollar", "_old_$dollar", "a=1", &answer), 0);
    EXPECT_THAT(take_statements(), ElementsAre(testing::HasSubstr("WHERE (a=1\n)")));
    const char *const set[] = {"$dollar", nullptr};
    ASSERT_EQ(qbdb_sql_delete_tables(qbdb, db, 0, set, "_old_"), 0);
    EXPECT_THAT(take_statements(), ElementsAre("DROP TABLE \"_old_$dollar\""));
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
