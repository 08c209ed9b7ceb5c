// What a share costs must not depend on how many there are.
#include "fixture/allocations.h"
#include "shares_read/shares.h"

using namespace test;

namespace {

struct ShareGrowth : Shares {
    struct Cost {
        int64_t steps = 0;  // of SQLite's virtual machine, in tens
        size_t bytes = 0;   // of the pool
        size_t statements = 0;
        int64_t held = 0;  // of SQLite's heap, at most, while the list is read
        int64_t kept = 0;  // of it, afterwards
    };

    ShareGrowth() { add_accounts(); }

    void make(int first, int last)
    {
        sql("BEGIN");
        for (int id = first; id <= last; id++) {
            add_share(id, "share" + std::to_string(id));
            add_everything(id);
        }
        sql("COMMIT");
    }

    Cost list()
    {
        Cost cost;
        shares = {};
        EXPECT_EQ(qbobj_getShareCollection(qbdb, db, &shares, &err), 0u);  // prepares the statements
        sqlite3_progress_handler(
            db, 10,
            [](void *steps) {
                ++*static_cast<int64_t *>(steps);
                return 0;
            },
            &cost.steps);
        shares = {};
        take_statements();
        const size_t before = pool_bytes;
        const int64_t used = sqlite3_memory_used();
        sqlite3_memory_highwater(1);
        EXPECT_EQ(qbobj_getShareCollection(qbdb, db, &shares, &err), 0u);
        cost.bytes = pool_bytes - before;
        cost.held = sqlite3_memory_highwater(0) - used;
        cost.kept = sqlite3_memory_used() - used;
        cost.statements = take_statements().size();
        sqlite3_progress_handler(db, 0, nullptr, nullptr);
        return cost;
    }
};

TEST_F(ShareGrowth, TimesAsManySharesCostTimesAsMuch)
{
    make(1, 20);
    const Cost few = list();
    make(21, 100);
    const Cost many = list();
    EXPECT_EQ((many.statements - 5) / 100, (few.statements - 5) / 20) << "begin, two settings, the list, commit";
    EXPECT_EQ((few.statements - 5) / 20, 33u);
    EXPECT_LT(static_cast<double>(many.steps), 5.25 * static_cast<double>(few.steps));
    EXPECT_LT(static_cast<double>(many.bytes), 5.25 * static_cast<double>(few.bytes));
    printf("a share: %zu statements, %.0f steps of the virtual machine, %.0f bytes of the pool\n",
           (many.statements - 5) / 100, static_cast<double>(many.steps) / 10, static_cast<double>(many.bytes) / 100);
}

/// Read at once, a list takes less of the pool, and the rows that hang on its shares only while it is read.
TEST_F(ShareGrowth, WhatIsReadAtOnceGrowsWithTheSharesAndGoes)
{
    make(1, 100);
    const Cost one_by_one = list();
    qbdb_set_statement_hook(qbdb, nullptr, nullptr);
    const Cost few = list();
    make(101, 500);
    const Cost many = list();
    EXPECT_LE(few.bytes, one_by_one.bytes);
    EXPECT_LT(few.steps, one_by_one.steps);
    EXPECT_LT(static_cast<double>(many.steps), 5.25 * static_cast<double>(few.steps));
    EXPECT_LT(static_cast<double>(many.bytes), 5.25 * static_cast<double>(few.bytes));
    EXPECT_LT(static_cast<double>(many.held), 5.25 * static_cast<double>(few.held));
    EXPECT_LT(many.kept, 64 << 10);
    printf(
        "a share of a list: %.0f bytes held besides, %.0f when read alone; %.0f steps, %.0f; %.0f of the pool, %.0f\n",
        static_cast<double>(many.held) / 500, static_cast<double>(one_by_one.held) / 100,
        static_cast<double>(many.steps) / 50, static_cast<double>(one_by_one.steps) / 10,
        static_cast<double>(many.bytes) / 500, static_cast<double>(one_by_one.bytes) / 100);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
