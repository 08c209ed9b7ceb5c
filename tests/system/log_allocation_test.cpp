// Reading the log with each of its allocations failing once: none is missed.
#include "fixture/allocations.h"

namespace {

using LogAllocations = test::Database;

TEST_F(LogAllocations, EachFailureIsReportedAndNothingWritten)
{
    sql("INSERT INTO `$log` VALUES(1,5,'info','misc','LOGMSG_A','<x/>'),(2,6,'err','disk','LOGMSG_B',NULL)");
    LogEntry before{};
    int calls = 0;
    const auto read = [&] {
        LogEntry *entries = &before;
        before.next = nullptr;
        int32_t count = -1;
        int32_t total = -1;
        const uint32_t rc = qbobj_getLog(qbdb, db, nullptr, &entries, &count, &total, &err);
        EXPECT_EQ(entries, &before);
        EXPECT_EQ(test::elements(before.next).size(), rc ? 0u : 2u);
        EXPECT_EQ(count, rc ? -1 : 2);
        EXPECT_EQ(total, rc ? -1 : 2);
        calls++;
        return rc;
    };
    test::expect_each_allocation_noticed(err, read, 2, "Failed to allocate object.");
    EXPECT_EQ(calls, 10) << "two entries with seven texts, then one call that succeeds";
}

TEST_F(LogAllocations, AReportWithoutMemoryKeepsItsFormat)
{
    test::fail_allocation(1);
    EXPECT_EQ(qbobj_addLog(qbdb, db, 5, "bad", nullptr, nullptr, nullptr, &err), 8u);
    EXPECT_TRUE(test::allocation_failed());
    test::fail_allocation(0);
    EXPECT_STREQ(err.message, "Specified Severity (%s) is invalid.");
    EXPECT_EQ(err.code, 8u);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
