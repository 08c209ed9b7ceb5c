// Lists that are read at once while memory runs out. The other tests of failing memory watch the statements, and a
// watched list is read record by record.
#include "anomaly/memory.h"
#include "shares_read/shares.h"

using namespace test;

namespace {

struct ListAllocations : Shares, testing::WithParamInterface<Trouble> {
    UserCollection all_users{};
    GroupCollection groups{};

    /// Ten of each, with rows to be sorted.
    ListAllocations()
    {
        sql("BEGIN");
        add_accounts();
        for (int32_t i = 0; i < 10; i++) {
            const std::string id = std::to_string(200 + i);
            add_user(200 + i, "user" + std::to_string(i * 7 % 10));
            sql("INSERT INTO `$group` (id,gname,is_privileged) VALUES(" + id + ",'group" + id +
                "',0);"
                "INSERT INTO `$group_has_user` (user_id,group_id) SELECT 100," +
                id + " UNION ALL SELECT 101," + id + " UNION ALL SELECT " + id + "," + id +
                "; INSERT INTO `$home_folder` VALUES(" + id + ",1,1,'snap',0)");
            add_share(i + 1, "share" + std::to_string(i), "type='share',user_id=100,group_id=110");
            sql("INSERT INTO cifs_share_option (share_id,cifs_access,available) VALUES(" + std::to_string(i + 1) +
                ",'disabled',1);INSERT INTO user_acl SELECT " + std::to_string(i + 1) +
                ",id,'cifs',1,0 FROM `$user` WHERE id IN (102,101,100);INSERT INTO user_quota "
                "(user_id,share_id,mb_hard) "
                "VALUES(" +
                id + "," + std::to_string(i + 1) + ",7)");
        }
        sql("COMMIT");
        qbdb->log_level = 0;
        qbdb_set_statement_hook(qbdb, nullptr, nullptr);
    }
    ~ListAllocations() override { memory.source = Source::none; }

    uint32_t list(int which)
    {
        shares = {};
        all_users = {};
        groups = {};
        if (which == 0) return qbobj_getShareCollection(qbdb, db, &shares, &err);
        if (which == 1) return qbobj_getGroupCollection(qbdb, db, &groups, nullptr, &err);
        return qbobj_getUserCollection(qbdb, db, &all_users, nullptr, 0, &err);
    }

    std::vector<std::string> dumped()
    {
        qbdb->log_level = 5;
        log.clear();
        qbobj_api2_utils_dump_object(qbdb, qbobj_find_type("ShareCollection"), &shares, 0, "f", 1);
        qbobj_api2_utils_dump_object(qbdb, qbobj_find_type("GroupCollection"), &groups, 0, "f", 1);
        qbobj_api2_utils_dump_object(qbdb, qbobj_find_type("UserCollection"), &all_users, 0, "f", 1);
        qbdb->log_level = 0;
        std::vector<std::string> lines;
        for (const LogLine &line : log) lines.push_back(line.text);
        return lines;
    }

    /// Reads a list while the n-th allocation fails, everything prepared anew.
    uint32_t list_failing(int which, long nth)
    {
        qbdb_request_begin(qbdb);
        qbdb_set_statement_cache(qbdb, 0);
        qbdb_set_statement_cache(qbdb, 256);
        memory = {.source = GetParam().source, .forever = GetParam().forever, .nth = nth, .blocks = memory.blocks};
        memory.watching = true;
        const uint32_t rc = list(which);
        memory.watching = false;
        return rc;
    }

    /// Lets each allocation fail. The number of lists that are whole all the same.
    long fail_each(int which, const std::vector<std::string> &whole)
    {
        long absorbed = 0;
        for (long n = 1;; n++) {
            SCOPED_TRACE("allocation " + std::to_string(n));
            const uint32_t rc = list_failing(which, n);
            if (!memory.refused) break;
            if (rc == 0) {
                absorbed++;
                EXPECT_EQ(dumped(), whole);
            } else {
                EXPECT_TRUE(rc == 2 || rc == 5 || rc == SQLITE_NOMEM) << rc;
            }
        }
        EXPECT_EQ(list_failing(which, 0), 0u);
        EXPECT_EQ(dumped(), whole);
        return absorbed;
    }
};

TEST_P(ListAllocations, GivesTheListOrSaysThatItCannot)
{
    if (GetParam().source == Source::heap && !kHeapIsOurs) GTEST_SKIP() << "the sanitizer owns the heap";
    for (int which = 0; which < 3; which++) {
        SCOPED_TRACE("list " + std::to_string(which));
        ASSERT_EQ(list_failing(which, 0), 0u);
        const std::vector<std::string> whole = dumped();
        ASSERT_GT(whole.size(), 100u);
        const long absorbed = fail_each(which, whole);
        if (GetParam().source != Source::pool && !GetParam().forever) {
            EXPECT_GT(absorbed, 0) << "a statement for all that lacks memory is run for each";
        }
        if (!kHeapIsOurs) continue;
        // Once more, now that all statements of either way have been taken apart: that is kept.
        const long blocks = memory.blocks;
        fail_each(which, whole);
        EXPECT_LE(memory.blocks, blocks) << "something was not given back";
    }
}

INSTANTIATE_TEST_SUITE_P(, ListAllocations,
                         testing::Values(Trouble{Source::pool, false, "lists_pool_once"},
                                         Trouble{Source::sqlite, false, "lists_sqlite_once"},
                                         Trouble{Source::sqlite, true, "lists_sqlite_forever"},
                                         Trouble{Source::heap, false, "lists_heap_once"},
                                         Trouble{Source::heap, true, "lists_heap_forever"}),
                         [](const auto &info) { return info.param.name; });

}  // namespace
// SPDX-License-Identifier: Apache-2.0
