// Rows read into fields, failures reported and logged in one expression.
#include "fixture/allocations.h"
#include "fixture/fixture.h"
#include "frame/read_row.h"

using namespace qb;

namespace {

struct ReadRow : test::Database {
    CallContext ctx{qbdb, &err};
    Rows rows;

    ~ReadRow() override { test::fail_allocation(0); }
};

TEST_F(ReadRow, TakesEachColumnAsItsFieldSays)
{
    ASSERT_FALSE(select(&ctx, db, rows, "SELECT 'a',-7,4294967295,-9000000000,'0x1F','b'"));
    const char *text = nullptr;
    int32_t number = 0;
    uint32_t natural = 0;
    int64_t wide = 0;
    uint64_t large = 0;
    read_row(&ctx, rows, 0, text, number, natural, wide, large, skip);
    EXPECT_STREQ(text, "a");
    EXPECT_NE(text, rows.cell(0, 0)) << "a copy";
    EXPECT_EQ(number, -7);
    EXPECT_EQ(natural, UINT32_MAX);
    EXPECT_EQ(wide, -9000000000);
    EXPECT_EQ(large, 31u);
}

TEST_F(ReadRow, NullIsNullOrEmptyOrZeroOrAbsent)
{
    ASSERT_FALSE(select(&ctx, db, rows, "SELECT NULL,NULL,NULL,NULL,NULL,NULL,NULL UNION ALL SELECT '','',0,0,0,'','x'"));
    const char *text = "before", *word = "before", *first = "before", *second = "before";
    int32_t number = 9, given = 9, is_void = 9, wide_void = 9;
    uint64_t wide = 9;
    read_row(&ctx, rows, 0, text, empty(word), number, optional(given, is_void), optional(wide, wide_void), skip,
             both(first, second));
    EXPECT_EQ(text, nullptr);
    EXPECT_STREQ(word, "");
    EXPECT_EQ(number, 0);
    EXPECT_EQ(given, 0);
    EXPECT_EQ(is_void, 1);
    EXPECT_EQ(wide, 0u);
    EXPECT_EQ(wide_void, 1);
    EXPECT_EQ(first, nullptr);
    EXPECT_EQ(second, nullptr);
    read_row(&ctx, rows, 1, text, empty(word), number, optional(given, is_void), optional(wide, wide_void), skip,
             both(first, second));
    EXPECT_STREQ(text, "");
    EXPECT_STREQ(word, "");
    EXPECT_EQ(is_void, 0);
    EXPECT_EQ(wide_void, 0);
    EXPECT_STREQ(first, "x");
    EXPECT_EQ(second, first);
}

TEST_F(ReadRow, ALackOfMemoryIsNoted)
{
    ASSERT_FALSE(select(&ctx, db, rows, "SELECT 1,'a'"));
    int32_t number = 0;
    const char *text = nullptr;
    test::fail_allocation(1);
    read_row(&ctx, rows, 0, number, text);
    EXPECT_EQ(number, 1);
    EXPECT_EQ(text, nullptr);
    EXPECT_TRUE(ctx.short_of_memory);
    const auto worker = [&]() -> uint32_t {
        TRY_MEMORY(&ctx, "Failed to allocate Host.");
        return 0;
    };
    EXPECT_EQ(worker(), 2u);
    EXPECT_STREQ(err.message, "Failed to allocate Host.");
}

using ReadRowDeathTest = ReadRow;

TEST_F(ReadRowDeathTest, AsManyFieldsAsColumns)
{
    ASSERT_FALSE(select(&ctx, db, rows, "SELECT 1,2"));
    int32_t number = 0;
    EXPECT_DEATH(read_row(&ctx, rows, 0, number), "rows.columns");
    EXPECT_DEATH(read_row(&ctx, rows, 0, number, skip, skip), "rows.columns");
}

TEST_F(ReadRow, AFailureIsReportedWhereItsWordsStand)
{
    EXPECT_EQ(execute(&ctx, db, "DELETE FROM share").or_report(&ctx, "unused"), 0u);
    EXPECT_EQ(err.code, 0u);
    EXPECT_TRUE(log.empty());
    const uint32_t line = __LINE__ + 2;
    const uint32_t rc = execute(&ctx, db, "DELETE FROM absent")
                            .or_report(&ctx, "Failed DB Query for '%s' (%d). %s", "absent", 7);
    EXPECT_EQ(rc, 5u);
    EXPECT_EQ(err.code, 5u);
    EXPECT_STREQ(err.file, "read_row_test.cpp");
    EXPECT_EQ(err.line, line);
    EXPECT_STREQ(err.message, "Failed DB Query for 'absent' (7). no such table: absent");
    ASSERT_EQ(log.size(), 1u);
    EXPECT_EQ(log[0].flag, 1u);
    EXPECT_EQ(execute(&ctx, db, "DELETE FROM absent").or_report(&ctx, 2, "Failed in access check."), 2u);
    EXPECT_STREQ(err.message, "Failed in access check.");
}

TEST_F(ReadRow, ALineOfItsOwnIsReportedWithoutTheMarkOfACopy)
{
    EXPECT_EQ(execute(&ctx, db, "DELETE FROM share").or_report_line(&ctx, "unused"), 0u);
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(execute(&ctx, db, "DELETE FROM absent").or_report_line(&ctx, "Failed '%s'. %s", "DELETE"), 5u);
    EXPECT_STREQ(err.message, "Failed 'DELETE'. no such table: absent");
    EXPECT_STREQ(err.file, "read_row_test.cpp");
    ASSERT_EQ(log.size(), 1u);
    EXPECT_EQ(log[0].flag, 0u);
    EXPECT_EQ(log[0].text, "Failed 'DELETE'. no such table: absent\n");
}

TEST_F(ReadRow, ATextThatIsOnlyLookedAtIsNotCopied)
{
    ASSERT_FALSE(select(&ctx, db, rows, "SELECT 'a',NULL"));
    const char *first = nullptr, *second = "before";
    read_row(&ctx, rows, 0, uncopied(first), uncopied(second));
    EXPECT_EQ(first, rows.cell(0, 0));
    EXPECT_EQ(second, nullptr);
}

TEST_F(ReadRow, ASupportCallsFailureIsWhatTheDatabaseSays)
{
    sql("DROP TABLE ssh_public_key");
    ASSERT_LT(qbdb_find_ssh_public_key_id(qbdb, db, 1), 0);
    const Failure bad = failure_on(db);
    EXPECT_EQ(bad.rc, 1);
    EXPECT_STREQ(bad.text, "no such table: ssh_public_key");
    EXPECT_EQ(value("SELECT 1"), "1");
    const Failure untold = failure_on(db);
    EXPECT_EQ(untold.rc, 1);
    EXPECT_STREQ(untold.text, "The look-up failed.");
}

TEST_F(ReadRow, AFailureThatIsNotTheCallersIsLogged)
{
    EXPECT_FALSE(execute(&ctx, db, "DELETE FROM share").logged(&ctx, "unused %s\n"));
    EXPECT_TRUE(log.empty());
    EXPECT_TRUE(execute(&ctx, db, "DELETE FROM absent").logged(&ctx, "Fail query. %s\n"));
    EXPECT_EQ(err.code, 0u);
    ASSERT_EQ(log.size(), 1u);
    EXPECT_EQ(log[0].level, 2u);
    EXPECT_EQ(log[0].flag, 0u);
    EXPECT_EQ(log[0].file, "read_row_test.cpp");
    EXPECT_EQ(log[0].text, "Fail query. no such table: absent\n");
    qbdb->log_level = 1;
    EXPECT_TRUE(execute(&ctx, db, "DELETE FROM absent").logged(&ctx, "Fail query. %s\n"));
    EXPECT_EQ(log.size(), 1u);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
