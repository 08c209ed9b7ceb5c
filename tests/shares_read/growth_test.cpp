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
        EXPECT_EQ(qbobj_getShareCollection(qbdb, db, &shares, &err), 0u);
        cost.bytes = pool_bytes - before;
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

}  // namespace
// SPDX-License-Identifier: Apache-2.0
