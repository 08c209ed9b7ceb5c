// Readers that ask for one record at a time, answered for a whole list.
#include "frame/together.h"

#include "fixture/fixture.h"
#include "frame/read_row.h"

using namespace qb;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct TogetherRead : test::Database {
    CallContext ctx{qbdb, &err};
    Rows list;
    int ran = 0;

    TogetherRead()
    {
        sql("CREATE TABLE r (id INTEGER PRIMARY KEY); INSERT INTO r VALUES(11),(12),(13),(14),(15),(16),(17),(18),(19);"
            "CREATE TABLE t (id, a, word); CREATE INDEX t_id ON t (id); INSERT INTO t "
            "VALUES(18,'z','w'),(11,'b','w'),(99,'q','w'),(12,'m','w'),"
            "(11,'a','w'),(15,NULL,'w'),(11,'c','v'),('12','text','w'),(13.5,'real','w')");
        watch(false);
        read_list("SELECT id FROM r WHERE id<>15 ORDER BY -id");
        sqlite3_trace_v2(
            db, SQLITE_TRACE_STMT,
            [](unsigned, void *count, void *, void *) { return ++*static_cast<int *>(count), 0; }, &ran);
    }

    void watch(bool on)
    {
        const qbdb_statement_hook hook = [](void *, const char *, const char *, uint32_t, const char **) { return 0; };
        qbdb_set_statement_hook(qbdb, on ? hook : nullptr, nullptr);
    }
    void read_list(const char *query)
    {
        list.release();
        EXPECT_EQ(sqlite3_get_table(db, query, &list.table, &list.count, &list.columns, nullptr), SQLITE_OK);
    }
    /// The rows that a reader gets for a record.
    std::vector<std::string> of(int32_t id, const char *word = "w")
    {
        Rows rows;
        EXPECT_FALSE(select(&ctx, db, rows, "SELECT a FROM t WHERE id=%d AND word=%Q", id, word));
        return texts(rows);
    }
    std::vector<std::string> texts(const Rows &rows)
    {
        std::vector<std::string> all;
        for (int i = 0; i < rows.count; i++) {
            const char *a = nullptr;
            read_row(&ctx, rows, i, a);
            all.emplace_back(a ? a : "NULL");
        }
        return all;
    }
    /// How many statements it takes to ask for the records of the list and some more.
    int statements()
    {
        ran = 0;
        for (int32_t id = 10; id <= 20; id++) of(id);
        return ran;
    }
};

TEST_F(TogetherRead, GivesWhatTheRecordHasAlone)
{
    std::vector<std::vector<std::string>> alone;
    const int32_t kIds[] = {18, 11, 12, 13, 11, 99, 15, -1, 19, 12, INT32_MIN, INT32_MAX};
    for (const int32_t id : kIds)
        for (const char *word : {"w", "v", "none", static_cast<const char *>(nullptr)}) alone.push_back(of(id, word));
    Together together(&ctx, db, "r", list);
    size_t i = 0;
    for (const int32_t id : kIds)
        for (const char *word : {"w", "v", "none", static_cast<const char *>(nullptr)})
            EXPECT_EQ(of(id, word), alone[i++]) << id;
    EXPECT_THAT(of(11), ElementsAre("b", "a"));
    EXPECT_THAT(of(12), ElementsAre("m"));
    EXPECT_THAT(of(13), IsEmpty());
}

TEST_F(TogetherRead, AsksOnceForTheListAndOnceForEachOther)
{
    EXPECT_EQ(statements(), 11);
    Together together(&ctx, db, "r", list);
    EXPECT_EQ(statements(), 5) << "the first record, all, and 10, 15 and 20, which are not in the list";
    EXPECT_EQ(statements(), 3);
}

TEST_F(TogetherRead, EndsWithTheList)
{
    {
        Together together(&ctx, db, "r", list);
        {
            Rows none;
            Together inner(&ctx, db, "r", none);
            EXPECT_EQ(statements(), 5) << "the outer list's records are still read together";
        }
        EXPECT_EQ(statements(), 3);
    }
    EXPECT_EQ(statements(), 11);
    EXPECT_EQ(ctx.together, nullptr);
}

/// The groups of a list and their members, each with ids of its own.
TEST_F(TogetherRead, AListWithinAListAnswersForBoth)
{
    sql("CREATE TABLE s (id INTEGER PRIMARY KEY); INSERT INTO s SELECT id+5 FROM r; INSERT INTO s VALUES(99)");
    std::vector<std::vector<std::string>> alone;
    for (int32_t id = 10; id <= 100; id++) alone.push_back(of(id));
    Together outer(&ctx, db, "r", list);
    read_list("SELECT id FROM s");
    Together inner(&ctx, db, "s", list);
    for (int i = 0; i < 2; i++)
        for (int32_t id = 10; id <= 100; id++) EXPECT_EQ(of(id), alone[static_cast<size_t>(id) - 10]) << id;
    EXPECT_EQ(statements(), 2) << "10 and 15, which are in neither list";
}

TEST_F(TogetherRead, SortsTextsAsTheStatementWould)
{
    sql("DELETE FROM t; INSERT INTO t SELECT 11+N.value%7,W.value,'w'||N.value FROM "
        "json_each('[1,2,3,4,5,6,7,8,9,10,11,"
        "12,13,14,15,16,17,18]') "
        "N,json_each('[\"b\",\"B\",null,\"\",\"a\",\"Ab\",\"\\u00e4\",\"AA\",\"[\",\"z\",\"_\",\"A\","
        "\"10\",\"9\",null,\"ab\"]') W ORDER BY N.value*7919%18,W.value");
    const auto sorted = [this](int32_t id) {
        Rows rows;
        EXPECT_FALSE(select(&ctx, db, rows, "SELECT word,a FROM t WHERE id=%d ORDER BY a COLLATE NOCASE", id));
        std::vector<std::string> all;
        for (int i = 0; i < rows.count; i++) {
            const char *word = nullptr;
            const char *a = nullptr;
            read_row(&ctx, rows, i, word, a);
            all.push_back(std::string(word) + (a ? a : "NULL"));
        }
        return all;
    };
    std::vector<std::vector<std::string>> alone;
    for (int32_t id = 10; id <= 20; id++) alone.push_back(sorted(id));
    EXPECT_EQ(alone[1].size(), 32u);
    Together together(&ctx, db, "r", list);
    for (int i = 0; i < 2; i++) {
        ran = 0;
        for (int32_t id = 10; id <= 20; id++) EXPECT_EQ(sorted(id), alone[static_cast<size_t>(id) - 10]) << id;
    }
    EXPECT_EQ(ran, 3);
}

TEST_F(TogetherRead, RowsMayBeUsedAgain)
{
    Together together(&ctx, db, "r", list);
    Rows rows;
    for (int i = 0; i < 3; i++) {
        for (const int32_t id : {11, 12})
            ASSERT_FALSE(select(&ctx, db, rows, "SELECT a FROM t WHERE id=%d ORDER BY a", id));
        EXPECT_THAT(texts(rows), ElementsAre("m"));
        ASSERT_FALSE(select(&ctx, db, rows, "SELECT COUNT(*) FROM t WHERE id=%d", 11));
        EXPECT_THAT(texts(rows), ElementsAre("3"));
    }
}

TEST_F(TogetherRead, DoesNothingForFewRecordsOrFarOnesOrWhileStatementsAreWatched)
{
    read_list("SELECT id FROM r LIMIT 7");
    {
        Together together(&ctx, db, "r", list);
        EXPECT_EQ(statements(), 11);
    }
    sql("INSERT INTO r SELECT value FROM json_each('[21,22,23,24,25,26,27,28,29,30]'); INSERT INTO r VALUES(31)");
    read_list("SELECT id FROM r WHERE id<18 OR id>30");
    {
        Together together(&ctx, db, "r", list);
        EXPECT_EQ(statements(), 11) << "8 of 20";
    }
    sql("DELETE FROM r WHERE id>25");
    read_list("SELECT id FROM r");
    watch(true);
    Together together(&ctx, db, "r", list);
    EXPECT_EQ(statements(), 11);
}

TEST_F(TogetherRead, IsOverOnceSomethingIsWritten)
{
    Together together(&ctx, db, "r", list);
    EXPECT_EQ(statements(), 5);
    sql("INSERT INTO t VALUES(11,'new','w')");
    EXPECT_THAT(of(11), ElementsAre("b", "a", "new"));
    EXPECT_EQ(statements(), 11);
}

TEST_F(TogetherRead, AnotherConnectionIsAnotherMatter)
{
    Together together(&ctx, db, "r", list);
    EXPECT_EQ(statements(), 5);
    sqlite3 *other = nullptr;
    ASSERT_EQ(sqlite3_open(":memory:", &other), SQLITE_OK);
    sqlite3_exec(other, "CREATE TABLE t (id, a, word); INSERT INTO t VALUES(11,'other','w')", nullptr, nullptr,
                 nullptr);
    {
        Rows rows;
        ASSERT_FALSE(select(&ctx, other, rows, "SELECT a FROM t WHERE id=%d AND word=%Q", 11, "w"));
        EXPECT_THAT(texts(rows), ElementsAre("other"));
    }
    sqlite3_close(other);
}

TEST_F(TogetherRead, AFailureIsNobodysError)
{
    // One record's row cannot be had: all others can.
    sql("ALTER TABLE t RENAME TO broken; CREATE VIEW t AS SELECT id,CASE WHEN id=18 THEN abs(-9223372036854775807-1) "
        "ELSE a END AS a,word FROM broken");
    Together together(&ctx, db, "r", list);
    log.clear();
    for (int i = 0; i < 2; i++) {
        EXPECT_THAT(of(11), ElementsAre("b", "a"));
        EXPECT_THAT(of(12), ElementsAre("m"));
        Rows rows;
        const Failure bad = select(&ctx, db, rows, "SELECT a FROM t WHERE id=%d AND word=%Q", 18, "w");
        EXPECT_EQ(bad.rc, SQLITE_ERROR);
        EXPECT_STREQ(bad.text, "integer overflow");
    }
    EXPECT_EQ(err.code, 0u);
    EXPECT_THAT(log, IsEmpty());
    EXPECT_FALSE(ctx.short_of_memory);
}

TEST_F(TogetherRead, WordsThatDifferAreNotReadForAll)
{
    sql("UPDATE t SET word=CAST(id AS TEXT)");
    Together together(&ctx, db, "r", list);
    ran = 0;
    for (int i = 0; i < 300; i++) of(11 + i % 9, std::to_string(i).c_str());
    EXPECT_EQ(ran, 300);
    EXPECT_THAT(of(11, "11"), ElementsAre("b", "a", "c"));
}

TEST_F(TogetherRead, ATextIsRecalledForTheSameId)
{
    const auto text_of = [this](int32_t id) {
        const char *text = nullptr;
        EXPECT_FALSE(select_text(&ctx, db, text, "SELECT a FROM t WHERE id=%d", id));
        return std::string(text ? text : "NULL");
    };
    Together together(&ctx, db, "r", list);
    ran = 0;
    for (int i = 0; i < 3; i++) EXPECT_EQ(text_of(99), "q");
    EXPECT_EQ(ran, 1);
    for (int i = 0; i < 3; i++) EXPECT_EQ(text_of(15), "NULL");
    EXPECT_EQ(text_of(99), "q");
    EXPECT_EQ(ran, 3);
    sql("UPDATE t SET a='p' WHERE id=99");
    EXPECT_EQ(text_of(99), "p");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
