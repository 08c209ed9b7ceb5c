// Rows that are read for a whole list and handed out record by record.
#include "frame/related.h"

#include "fixture/fixture.h"
#include "frame/read_row.h"

using namespace qb;
using testing::IsEmpty;

namespace {

struct RelatedRows : test::Database {
    CallContext ctx{qbdb, &err};
    Related related;

    RelatedRows()
    {
        sql("CREATE TABLE t (id, a); INSERT INTO t VALUES(-5,'m'),(2,'b'),(2,'c'),(2,'d'),(7,'x'),(9,'y'),(9,'z')");
    }
    bool read() { return related.read(&ctx, db, "SELECT id,a FROM t ORDER BY id,a"); }
    std::vector<std::string> of(int32_t id)
    {
        std::vector<std::string> all;
        for (const int row : related.of(id)) {
            const char *a = nullptr;
            read_row(&ctx, related.rows, row, a);
            all.push_back(a);
        }
        return all;
    }
};

TEST_F(RelatedRows, AreHandedOutInAnyOrder)
{
    ASSERT_TRUE(read());
    const std::vector<std::pair<int32_t, std::vector<std::string>>> kAll = {
        {INT32_MIN, {}}, {-5, {"m"}},     {0, {}},  {2, {"b", "c", "d"}}, {3, {}}, {7, {"x"}},
        {8, {}},         {9, {"y", "z"}}, {10, {}}, {INT32_MAX, {}}};
    for (const auto &[before, ignored] : kAll)
        for (const auto &[id, expected] : kAll) {
            of(before);
            EXPECT_EQ(of(id), expected) << id << " after " << before;
        }
}

TEST_F(RelatedRows, NoneAtAll)
{
    sql("DELETE FROM t");
    ASSERT_TRUE(read());
    for (const int32_t id : {-1, 0, 1}) EXPECT_TRUE(related.of(id).empty());
}

TEST_F(RelatedRows, AFailureIsNobodysError)
{
    log.clear();
    for (const int rc : {SQLITE_ERROR, SQLITE_NOMEM}) {
        fail_statement(1, rc);
        EXPECT_FALSE(read());
        EXPECT_FALSE(ctx.short_of_memory);
    }
    fail_statement(0);
    EXPECT_EQ(err.code, 0u);
    EXPECT_THAT(log, IsEmpty());
    ctx.short_of_memory = true;
    EXPECT_TRUE(read());
    EXPECT_TRUE(ctx.short_of_memory) << "what came before is still wrong";
}

TEST_F(RelatedRows, PayForIdsThatLieClose)
{
    const auto range = [this](const std::string &ids) {
        Rows rows;
        EXPECT_FALSE(select(&ctx, db, rows, "SELECT value,'x' FROM json_each(%Q)", ids.c_str()));
        return IdRange(rows);
    };
    const IdRange close = range("[5,3,-2,4,11,6,7,8]");
    EXPECT_EQ(close.least, -2);
    EXPECT_EQ(close.most, 11);
    EXPECT_TRUE(close.is_dense());
    EXPECT_FALSE(range("[]").is_dense());
    EXPECT_FALSE(range("[1,2,3]").is_dense()) << "too few";
    EXPECT_TRUE(range("[1,2,3,4,5,6,7,32]").is_dense());
    EXPECT_FALSE(range("[1,2,3,4,5,6,7,33]").is_dense());
    EXPECT_FALSE(range("[-2147483648,2,3,4,5,6,7,2147483647]").is_dense());
}

TEST_F(RelatedRows, PayForRecordsThatAreMostOfThose)
{
    sql("CREATE TABLE r (id INTEGER PRIMARY KEY); INSERT INTO r SELECT value*1000 FROM "
        "json_each('[1,2,3,4,5,6,7,8,9,10,"
        "11,12,13,14,15,16,17,18,19,20]')");
    const auto is_most_of = [this](const std::string &query, const char *table = "r") {
        Rows rows;
        EXPECT_FALSE(select(&ctx, db, rows, "%s", query.c_str()));
        return IdRange(rows).is_most_of(&ctx, db, table);
    };
    EXPECT_TRUE(is_most_of("SELECT id FROM r ORDER BY id DESC"));
    EXPECT_TRUE(is_most_of("SELECT id FROM r WHERE id>10000")) << "what lies beyond them is of no interest";
    EXPECT_TRUE(is_most_of("SELECT id FROM r WHERE id%2000=0"));
    EXPECT_TRUE(is_most_of("SELECT id FROM r WHERE id NOT BETWEEN 6000 AND 15000"));
    EXPECT_FALSE(is_most_of("SELECT id FROM r WHERE id NOT BETWEEN 5000 AND 15000")) << "9 of 20";
    EXPECT_FALSE(is_most_of("SELECT id FROM r LIMIT 7")) << "too few";
    EXPECT_FALSE(is_most_of("SELECT id FROM r WHERE 0"));
    EXPECT_FALSE(is_most_of("SELECT id FROM r", "missing"));
    EXPECT_EQ(err.code, 0u);
    EXPECT_FALSE(ctx.short_of_memory);
}

TEST_F(RelatedRows, StatementsAreWatchedWhileAHookIsThere)
{
    EXPECT_TRUE(statements_are_watched(&ctx));
    qbdb_set_statement_hook(qbdb, nullptr, nullptr);
    EXPECT_FALSE(statements_are_watched(&ctx));
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
