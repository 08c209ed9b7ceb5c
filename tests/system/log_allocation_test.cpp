// Reading the log with each of its allocations failing once: none is missed.
#include <apr_pools.h>
#include <apr_strings.h>
#include <dlfcn.h>

#include "fixture/fixture.h"

namespace {

int left = 0;  // allocations until the one that fails; 0 lets all succeed

bool fails()
{
    return left > 0 && --left == 0;
}

}  // namespace

// These stand before the pool library's own for the whole program.
extern "C" void *apr_palloc(apr_pool_t *pool, apr_size_t size)
{
    static const auto own = reinterpret_cast<decltype(&apr_palloc)>(dlsym(RTLD_NEXT, "apr_palloc"));
    return fails() ? nullptr : own(pool, size);
}

extern "C" char *apr_pstrdup(apr_pool_t *pool, const char *text)
{
    static const auto own = reinterpret_cast<decltype(&apr_pstrdup)>(dlsym(RTLD_NEXT, "apr_pstrdup"));
    return fails() ? nullptr : own(pool, text);
}

namespace {

using LogAllocations = test::Database;

TEST_F(LogAllocations, EachFailureIsReported)
{
    sql("INSERT INTO `$log` VALUES(1,5,'info','misc','LOGMSG_A','<x/>'),(2,6,'err','disk','LOGMSG_B',NULL)");
    LogEntry before{};
    int n = 1;
    for (bool failed = true; failed; n++) {
        ASSERT_LT(n, 100) << "does not come to an end";
        LogEntry *entries = &before;
        before.next = nullptr;
        int32_t count = -1;
        int32_t total = -1;
        left = n;
        const uint32_t rc = qbobj_getLog(qbdb, db, nullptr, &entries, &count, &total, &err);
        failed = left == 0;
        left = 0;
        if (failed) {
            EXPECT_EQ(rc, 2u) << n;
            EXPECT_STREQ(err.message, "Failed to allocate object.") << n;
            EXPECT_EQ(before.next, nullptr) << n;
            EXPECT_EQ(count, -1) << n;
        } else {
            EXPECT_EQ(rc, 0u);
            EXPECT_EQ(test::elements(before.next).size(), 2u);
        }
    }
    EXPECT_EQ(n, 11);  // two entries and their seven texts, then one call that succeeds
}

TEST_F(LogAllocations, AReportWithoutMemoryKeepsItsFormat)
{
    left = 1;
    EXPECT_EQ(qbobj_addLog(qbdb, db, 5, "bad", nullptr, nullptr, nullptr, &err), 8u);
    EXPECT_EQ(left, 0);
    EXPECT_STREQ(err.message, "Specified Severity (%s) is invalid.");
    EXPECT_EQ(err.code, 8u);
}

}  // namespace
