// What a call notes of a lack of memory, and what becomes of its reports then.
#include "frame/report_line.h"
#include "fixture/allocations.h"
#include "frame/list.h"
#include "frame/query.h"
#include "frame/report_line.h"
#include "frame/set_list.h"

using namespace qb;

namespace {

struct LackOfMemory : test::Database {
    CallContext ctx{qbdb, &err};

    ~LackOfMemory() override { test::fail_allocation(0); }
};

TEST_F(LackOfMemory, IsNotedForARecordAndAText)
{
    EXPECT_NE(allocate<Host>(&ctx), nullptr);
    EXPECT_STREQ(copy_text(&ctx, "a"), "a");
    EXPECT_EQ(copy_text(&ctx, nullptr), nullptr);
    EXPECT_FALSE(ctx.short_of_memory);
    test::fail_allocation(1);
    EXPECT_EQ(copy_text(&ctx, "a"), nullptr);
    EXPECT_TRUE(ctx.short_of_memory);
    EXPECT_STREQ(copy_text(&ctx, "a"), "a");
    EXPECT_TRUE(ctx.short_of_memory) << "what came before is still wrong";
    ctx.short_of_memory = false;
    test::fail_allocation(1);
    EXPECT_EQ(allocate<Host>(&ctx), nullptr);
    EXPECT_TRUE(ctx.short_of_memory);
}

TEST_F(LackOfMemory, IsNotedForACell)
{
    Rows rows;
    ASSERT_FALSE(select(&ctx, db, rows, "SELECT 'a',NULL,''"));
    test::fail_allocation(1);
    EXPECT_STREQ(rows.word(&ctx, 0, 1), "");
    EXPECT_STREQ(rows.word(&ctx, 0, 2), "");
    EXPECT_EQ(rows.text(&ctx, 0, 1), nullptr);
    EXPECT_FALSE(ctx.short_of_memory) << "none of them needs memory";
    EXPECT_EQ(rows.word(&ctx, 0, 0), nullptr);
    EXPECT_TRUE(ctx.short_of_memory);
}

TEST_F(LackOfMemory, IsNotedForAStatementButNoOtherFailureIs)
{
    for (const int rc : {SQLITE_ERROR, SQLITE_CONSTRAINT, SQLITE_NOMEM}) {
        const bool lack = rc == SQLITE_NOMEM;
        int32_t number = 0;
        uint64_t large = 0;
        bool found = false;
        const char *text = nullptr;
        Rows rows;
        const std::function<Failure()> calls[] = {
            [&] { return select(&ctx, db, rows, "SELECT 1"); },
            [&] { return execute(&ctx, db, "DELETE FROM share"); },
            [&] { return select_text(&ctx, db, text, "SELECT 1"); },
            [&] { return select_int32(&ctx, db, number, "SELECT 1"); },
            [&] { return find_int32(&ctx, db, number, found, "SELECT 1"); },
            [&] { return select_uint64(&ctx, db, large, "SELECT 1"); },
        };
        for (const auto &call : calls) {
            ctx.short_of_memory = false;
            fail_statement(1, rc);
            EXPECT_TRUE(call());
            EXPECT_EQ(ctx.short_of_memory, lack) << rc;
        }
    }
}

TEST_F(LackOfMemory, TurnsAClaimIntoItself)
{
    const struct {
        bool lack;
        uint32_t code;
        uint32_t expected;
        const char *message;
    } cases[] = {
        {false, 8, 8, "name is bad"},
        {true, 8, 2, "Failed to allocate resource."},
        {true, 6, 2, "Failed to allocate resource."},
        {true, 801, 2, "Failed to allocate resource."},
        {true, 2, 2, "name is bad"},
        {true, 5, 5, "name is bad"},
    };
    for (const auto &each : cases) {
        ctx.short_of_memory = each.lack;
        err = {};
        EXPECT_EQ(REPORT(&ctx, each.code, "%s is bad", "name"), each.expected);
        EXPECT_EQ(err.code, each.expected);
        EXPECT_STREQ(err.message, each.message);
        err = {};
        EXPECT_EQ(REPORT_LINE(&ctx, each.code, "%s is bad", "name"), each.expected);
        EXPECT_EQ(err.code, each.expected);
        EXPECT_STREQ(err.message, each.message);
    }
}

TEST_F(LackOfMemory, EndsAWorkerThatAsks)
{
    const auto worker = [this]() -> uint32_t {
        TRY_MEMORY(&ctx);
        return 0;
    };
    EXPECT_EQ(worker(), 0u);
    ctx.short_of_memory = true;
    EXPECT_EQ(worker(), 2u);
    EXPECT_STREQ(err.message, "Failed to allocate resource.");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
