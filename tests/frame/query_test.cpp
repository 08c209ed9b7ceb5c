// The query helpers: cells and their conversions, failures, single values, and where a statement says it
// comes from.
#include "frame/query.h"

#include <cstring>

#include "fixture/fixture.h"
#include "frame/pool.h"

using namespace qb;
using testing::ElementsAre;

namespace {

struct Query : test::Database {
    CallContext ctx{qbdb, &err};

    Query() { sql("CREATE TABLE cells (id INTEGER PRIMARY KEY, value)"); }
    void put(const std::string &value) { sql("DELETE FROM cells; INSERT INTO cells VALUES(1," + value + ")"); }
    Failure get(Rows &rows) { return select(&ctx, db, rows, "SELECT value FROM cells ORDER BY id"); }
};

TEST_F(Query, CellsRowsAndColumns)
{
    sql("INSERT INTO cells VALUES(1,'a'),(2,NULL),(3,'')");
    Rows rows;
    ASSERT_FALSE(select(&ctx, db, rows, "SELECT id,value FROM cells ORDER BY id"));
    EXPECT_EQ(rows.count, 3);
    EXPECT_EQ(rows.columns, 2);
    EXPECT_STREQ(rows.cell(0, 0), "1");
    EXPECT_STREQ(rows.cell(0, 1), "a");
    EXPECT_STREQ(rows.cell(1, 0), "2");
    EXPECT_EQ(rows.cell(1, 1), nullptr);
    EXPECT_STREQ(rows.cell(2, 1), "");
}

TEST_F(Query, NoRows)
{
    Rows rows;
    ASSERT_FALSE(get(rows));
    EXPECT_EQ(rows.count, 0);
}

TEST_F(Query, Int32)
{
    const struct {
        const char *stored;
        int32_t read;
    } cases[] = {{"0", 0},      {"7", 7},      {"-7", -7},   {"2147483647", INT32_MAX}, {"-2147483648", INT32_MIN},
                 {"NULL", 0},   {"''", 0},     {"'abc'", 0}, {"'12abc'", 12},           {"'  5'", 5},
                 {"'017'", 17}, {"'0x1F'", 0}, {"2.9", 2},   {"999999999", 999999999},  {"1000000000", 1000000000},
                 {"'00'", 0},   {"'+4'", 4}};
    for (const auto &each : cases) {
        put(each.stored);
        Rows rows;
        ASSERT_FALSE(get(rows));
        EXPECT_EQ(rows.int32(0, 0), each.read) << each.stored;
    }
}

TEST_F(Query, Uint64DetectsTheBase)
{
    const struct {
        const char *stored;
        uint64_t read;
    } cases[] = {{"0", 0},
                 {"12", 12},
                 {"999999999", 999999999},
                 {"1000000000", 1000000000},
                 {"9223372036854775807", INT64_MAX},
                 {"'18446744073709551615'", UINT64_MAX},
                 {"'0x1F'", 31},
                 {"'017'", 15},
                 {"'08'", 0},
                 {"NULL", 0},
                 {"''", 0},
                 {"'none'", 0},
                 {"'12 MB'", 12}};
    for (const auto &each : cases) {
        put(each.stored);
        Rows rows;
        ASSERT_FALSE(get(rows));
        EXPECT_EQ(rows.uint64(0, 0), each.read) << each.stored;
    }
}

TEST_F(Query, TextsAreCopiedIntoThePool)
{
    sql("INSERT INTO cells VALUES(1,'a'),(2,NULL),(3,'')");
    const char *text[3];
    const char *word[3];
    {
        Rows rows;
        ASSERT_FALSE(get(rows));
        for (int i = 0; i < 3; i++) {
            text[i] = rows.text(&ctx, i, 0);
            word[i] = rows.word(&ctx, i, 0);
        }
        EXPECT_FALSE(ctx.short_of_memory);
    }
    EXPECT_STREQ(text[0], "a");
    EXPECT_EQ(text[1], nullptr);
    EXPECT_STREQ(text[2], "");
    EXPECT_STREQ(word[0], "a");
    EXPECT_STREQ(word[1], "");
    EXPECT_STREQ(word[2], "");
}

TEST_F(Query, AFailureHasCodeAndTextAndLeavesNoTable)
{
    Rows rows;
    ASSERT_FALSE(select(&ctx, db, rows, "SELECT 1"));
    const Failure bad = select(&ctx, db, rows, "SELECT absent FROM cells");
    EXPECT_TRUE(bad);
    EXPECT_EQ(bad.rc, 1);
    EXPECT_STREQ(bad.text, "no such column: absent");
    EXPECT_EQ(rows.table, nullptr);
    EXPECT_EQ(rows.count, 0);
    EXPECT_EQ(rows.columns, 0);
}

TEST_F(Query, RowsCanBeUsedAgain)
{
    Rows rows;
    ASSERT_FALSE(select(&ctx, db, rows, "SELECT %d,%d", 1, 2));
    ASSERT_FALSE(select(&ctx, db, rows, "SELECT %Q", "b"));  // a leak of the first would end the test program
    EXPECT_EQ(rows.columns, 1);
    EXPECT_STREQ(rows.cell(0, 0), "b");
}

TEST_F(Query, ArgumentsOfEachKind)
{
    Rows rows;
    const char *none = nullptr;
    ASSERT_FALSE(select(&ctx, db, rows, "SELECT %d,%u,%ld,%lu,%lld,%llu,%Q,%Q,'%q','%s',100%%30", -1, 4000000000u, -5L,
                        5ul, INT64_MIN, UINT64_MAX, "it's", none, "it's", "plain"));
    ASSERT_EQ(rows.columns, 11);
    std::vector<std::string> cells;
    for (int i = 0; i < rows.columns; i++) cells.push_back(rows.cell(0, i) ? rows.cell(0, i) : "NULL");
    EXPECT_THAT(cells, ElementsAre("-1", "4000000000", "-5", "5", "-9223372036854775808", testing::_, "it's", "NULL",
                                   "it's", "plain", "10"));
    EXPECT_EQ(cells[5].substr(0, 8), "1.844674");  // beyond what SQLite has as an integer
}

TEST_F(Query, AViolatedConstraintIsNineteen)
{
    ASSERT_FALSE(execute(&ctx, db, "INSERT INTO cells VALUES(%d,%Q)", 1, "a"));
    const Failure bad = execute(&ctx, db, "INSERT INTO cells VALUES(%d,%Q)", 1, "b");
    EXPECT_EQ(bad.rc, kConstraint);
    EXPECT_STREQ(bad.text, "UNIQUE constraint failed: cells.id");
}

TEST_F(Query, SingleText)
{
    const char *value = "before";
    ASSERT_FALSE(select_text(&ctx, db, value, "SELECT value FROM cells"));
    EXPECT_EQ(value, nullptr) << "no row";
    put("NULL");
    value = "before";
    ASSERT_FALSE(select_text(&ctx, db, value, "SELECT value FROM cells"));
    EXPECT_EQ(value, nullptr) << "NULL";
    put("'x'");
    ASSERT_FALSE(select_text(&ctx, db, value, "SELECT value FROM cells"));
    EXPECT_STREQ(value, "x");
    EXPECT_TRUE(select_text(&ctx, db, value, "SELECT value FROM absent"));
    EXPECT_EQ(value, nullptr);
}

TEST_F(Query, SingleInt32)
{
    int32_t value = 42;
    bool found = true;
    ASSERT_FALSE(select_int32(&ctx, db, value, "SELECT value FROM cells"));
    EXPECT_EQ(value, 42);
    ASSERT_FALSE(find_int32(&ctx, db, value, found, "SELECT value FROM cells"));
    EXPECT_EQ(value, 42);
    EXPECT_FALSE(found);
    put("-9");
    ASSERT_FALSE(find_int32(&ctx, db, value, found, "SELECT value FROM cells"));
    EXPECT_EQ(value, -9);
    EXPECT_TRUE(found);
    put("NULL");
    ASSERT_FALSE(find_int32(&ctx, db, value, found, "SELECT value FROM cells"));
    EXPECT_EQ(value, 0);
    EXPECT_TRUE(found);
    value = 42;
    EXPECT_TRUE(find_int32(&ctx, db, value, found, "SELECT value FROM absent"));
    EXPECT_EQ(value, 42);
    EXPECT_FALSE(found);
    EXPECT_STREQ(select_int32(&ctx, db, value, "SELECT value FROM absent").text, "no such table: absent");
    EXPECT_EQ(value, 42);
}

TEST_F(Query, SingleUint64)
{
    uint64_t value = 42;
    ASSERT_FALSE(select_uint64(&ctx, db, value, "SELECT value FROM cells"));
    EXPECT_EQ(value, 42u);
    put("'18446744073709551615'");
    ASSERT_FALSE(select_uint64(&ctx, db, value, "SELECT value FROM cells"));
    EXPECT_EQ(value, UINT64_MAX);
    EXPECT_TRUE(select_uint64(&ctx, db, value, "SELECT value FROM absent"));
    EXPECT_EQ(value, UINT64_MAX);
}

TEST_F(Query, StatementsSayWhereTheyComeFrom)
{
    struct Place {
        std::vector<std::string> files;
        std::vector<uint32_t> lines;
        static int note(void *self, const char *, const char *file, uint32_t line, const char **)
        {
            static_cast<Place *>(self)->files.push_back(file);
            static_cast<Place *>(self)->lines.push_back(line);
            return 0;
        }
    } place;
    qbdb_set_statement_hook(qbdb, Place::note, &place);
    Rows rows;
    int32_t number = 0;
    const char *text = nullptr;
    const uint32_t line = __LINE__;
    (void)select(&ctx, db, rows, "SELECT 1");
    (void)execute(&ctx, db, "DELETE FROM cells");
    (void)select_int32(&ctx, db, number, "SELECT 1");
    (void)select_text(&ctx, db, text, "SELECT 1");
    EXPECT_THAT(place.lines, ElementsAre(line + 1, line + 2, line + 3, line + 4));
    EXPECT_THAT(place.files, testing::Each("query_test.cpp"));
}

// ---- Reports

TEST_F(Query, ReportFillsTheRecordAndLogsTheSameText)
{
    const uint32_t line = __LINE__ + 1;
    EXPECT_EQ(REPORT(&ctx, 8, "Invalid GroupName (%s)", "x"), 8u);
    EXPECT_EQ(err.code, 8u);
    EXPECT_STREQ(err.file, "query_test.cpp");
    EXPECT_EQ(err.line, line);
    EXPECT_STREQ(err.message, "Invalid GroupName (x)");
    ASSERT_EQ(log.size(), 1u);
    EXPECT_EQ(log[0].file, "query_test.cpp");
    EXPECT_EQ(log[0].line, line);
    EXPECT_EQ(log[0].level, 2u);
    EXPECT_EQ(log[0].flag, 1u);
    EXPECT_EQ(log[0].text, "Invalid GroupName (x)");
}

TEST_F(Query, ALaterReportOverwritesAllFour)
{
    (void)REPORT(&ctx, 8, "first");
    const ErrorInfo first = err;
    (void)REPORT(&ctx, 5, "second: %s", first.message);
    EXPECT_EQ(err.code, 5u);
    EXPECT_GT(err.line, first.line);
    EXPECT_STREQ(err.message, "second: first");
    (void)REPORT(&ctx, 6, "third: %s", err.message);  // its own old text as an argument
    EXPECT_STREQ(err.message, "third: second: first");
    EXPECT_EQ(log.size(), 3u);
}

TEST_F(Query, ReportsFormatWhatTheCompilerAccepts)
{
    const char *volatile none = nullptr;  // known only at run time
    (void)REPORT(&ctx, 8, "%s|%d|%u|%ld|%lu|%lld|%llu|%zu|%c|%5d|%.2s|%x|%%", none, -1, 2u, -3L, 4ul, -5LL, 6ULL,
                 size_t{7}, 'c', 42, "abc", 255u);
    EXPECT_STREQ(err.message, "(null)|-1|2|-3|4|-5|6|7|c|   42|ab|ff|%");
    const std::string text(100000, 'x');
    (void)REPORT(&ctx, 8, "%s.", text.c_str());
    EXPECT_EQ(err.message, text + ".");
    EXPECT_EQ(log.back().text, text + ".");
}

TEST_F(Query, ReportsBelowLevelTwoAreNotLoggedButMade)
{
    qbdb->log_level = 1;
    EXPECT_EQ(REPORT(&ctx, 8, "quiet"), 8u);
    EXPECT_STREQ(err.message, "quiet");
    EXPECT_TRUE(log.empty());
}

int evaluations = 0;

const char *evaluated()
{
    evaluations++;
    return "x";
}

TEST_F(Query, TracesAndFailureLogsByLevel)
{
    for (const uint32_t level : {0, 1, 2, 3, 4, 5}) {
        qbdb->log_level = level;
        log.clear();
        evaluations = 0;
        LOG_FAILURE(&ctx, "OOM in %s\n", evaluated());
        TRACE(&ctx, "%s() rc=%d\n", evaluated(), 0);
        EXPECT_EQ(evaluations, (level > 1) + (level > 4)) << level;
        ASSERT_EQ(log.size(), static_cast<size_t>(evaluations)) << level;
        if (level > 1) {
            EXPECT_EQ(log[0].level, 2u);
            EXPECT_EQ(log[0].flag, 0u);
            EXPECT_EQ(log[0].text, "OOM in x\n");
        }
        if (level > 4) {
            EXPECT_EQ(log[1].level, 5u);
            EXPECT_EQ(log[1].flag, 0u);
            EXPECT_EQ(log[1].text, "x() rc=0\n");
        }
    }
    EXPECT_EQ(err.code, 0u);
}

TEST_F(Query, TryPassesCodesOn)
{
    const auto twice = [](uint32_t first, uint32_t second) -> uint32_t {
        TRY(first);
        TRY(second);
        return 0;
    };
    EXPECT_EQ(twice(0, 0), 0u);
    EXPECT_EQ(twice(3, 4), 3u);
    EXPECT_EQ(twice(0, 4), 4u);
}

// ---- Pools

TEST_F(Query, TheRequestPoolGoesBeforeTheDefaultPool)
{
    EXPECT_EQ(pool_of(qbdb), qbdb->pool);
    ASSERT_EQ(qbdb_request_begin(qbdb), 0);
    EXPECT_EQ(pool_of(qbdb), qbdb->request_pool);
    qbdb_request_end(qbdb);
    EXPECT_EQ(pool_of(qbdb), qbdb->pool);
}

TEST_F(Query, AllocationsAreZeroed)
{
    memset(apr_palloc(qbdb->pool, 4000), 0xA5, 4000);
    ASSERT_EQ(qbdb_request_begin(qbdb), 0);
    memset(apr_palloc(qbdb->request_pool, 4000), 0xA5, 4000);
    ASSERT_EQ(qbdb_request_begin(qbdb), 0);  // empties it: the same memory comes again
    const auto *share = allocate<Share>(&ctx);
    const auto *bytes = reinterpret_cast<const unsigned char *>(share);
    for (size_t i = 0; i < sizeof *share; i++) ASSERT_EQ(bytes[i], 0) << i;
    qbdb_request_end(qbdb);
}

TEST_F(Query, CopiesOfTexts)
{
    const char text[] = "text";
    const char *copy = copy_text(&ctx, text);
    EXPECT_STREQ(copy, "text");
    EXPECT_NE(copy, text);
    EXPECT_EQ(copy_text(&ctx, nullptr), nullptr);
    EXPECT_STREQ(copy_text(&ctx, ""), "");
    EXPECT_FALSE(is_set(nullptr));
    EXPECT_FALSE(is_set(""));
    EXPECT_TRUE(is_set("x"));
    EXPECT_STREQ(or_empty(nullptr), "");
    EXPECT_EQ(or_empty(text), text);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
