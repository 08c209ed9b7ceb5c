// The user list in both of its ways.
#include <set>

#include "fixture/allocations.h"
#include "fixture/both_ways.h"
#include "users/users.h"

using namespace test;

namespace {

constexpr int kUsers = 60;
constexpr int32_t kFirst = 100;

struct ListAtOnce : BothWays<Users> {
    ListAtOnce()
    {
        for (int i = 0; i < kUsers; i++) {
            const std::string id = std::to_string(kFirst + i);
            // Names in another order than ids; some gaps, and some whose primary group only the directory knows.
            add_user(kFirst + i, (i % 3 ? "user" : "an") + std::to_string(i * 7 % 100), i % 10 ? "99" : "-7",
                     "home='/home/" + id + "',passwd='$1$x',fullname='Number " + id + "'");
            if (i % 4 != 1) sql("INSERT INTO `$home_folder` VALUES(" + id + ",1," + id + ",'snap',0)");
            if (i % 4 == 2) sql("INSERT INTO `$home_folder` VALUES(" + std::to_string(9000 + i) + ",1,1,'',0)");
            if (i % 5 == 0) sql("INSERT INTO `_hf_zfs_stat` VALUES(" + id + ",18446744073709551615)");
            if (i % 7 == 3) sql("INSERT INTO `$timemachine_quota` VALUES(" + id + ",1,500)");
            for (int share = 1; share <= i % 4; share++)
                sql("INSERT INTO user_quota (user_id,share_id,mb_hard) VALUES(" + id + "," + std::to_string(5 - share) +
                    "," + std::to_string(share * 10) + ")");
        }
        // Share 4 is gone; the use of share 2 was never measured.
        sql("INSERT INTO share (id,name,zfs_name) VALUES(1,'a','tank/a'),(2,'b','tank/b'),(3,'c','tank/c');"
            "INSERT INTO _user_quota_stat SELECT 3,user_id,user_id*2 FROM user_quota WHERE share_id=3;"
            "DELETE FROM `$user` WHERE id IN (117,118,119)");
        gids["EXAMPLE\\staff"] = -7;
    }

    auto call(AccountQuery *query, int32_t with_password = 0)
    {
        return [this, query, with_password] {
            users = {};
            return qbobj_getUserCollection(qbdb, db, &users, query, with_password, &err);
        };
    }
    auto dump()
    {
        return [this] { qbobj_api2_utils_dump_object(qbdb, qbobj_find_type("UserCollection"), &users, 0, "f", 1); };
    }
    size_t count(Way way) { return run(way, call(nullptr), dump()).statements.size(); }
    Outcome expect_list_alike(AccountQuery *query, int32_t with_password = 0)
    {
        return expect_alike(call(query, with_password), dump());
    }
};

TEST_F(ListAtOnce, IsTheSame)
{
    const Outcome all = expect_list_alike(nullptr);
    EXPECT_EQ(all.rc, 0u);
    EXPECT_EQ(elements(users.User).size(), static_cast<size_t>(kUsers - 3));
    for (const int32_t order : {1, 2, -1, -2})
        for (const int32_t limit : {0, 3, 30})
            for (const char *pattern : {"", "an%"}) {
                AccountQuery query{};
                query.order = order;
                query.limit = limit;
                query.offset = limit ? 11 : 0;
                query.name_like = pattern;
                SCOPED_TRACE(std::to_string(order) + " " + std::to_string(limit) + " " + pattern);
                expect_list_alike(&query, order == 2);
            }
    for (const char *opt : {"TM_ON", "HF_EXISTS", "||HF_SNAPSHOT_PROTECTION==0", "&&USER_WITH_ADMIN==1"}) {
        AccountQuery query{};
        query.opt = opt;
        SCOPED_TRACE(opt);
        expect_list_alike(&query);
    }
}

TEST_F(ListAtOnce, TakesAFewStatements)
{
    EXPECT_GT(count(Way::one_by_one), (kUsers - 3) * 4u);
    // BEGIN, mode, guests' group, count, users, quotas, homes, a folder, allowances, two for each allowance, COMMIT.
    const int allowances = std::stoi(value("SELECT COUNT(*) FROM `$timemachine_quota` JOIN `$user` U ON U.id=user_id"));
    EXPECT_EQ(count(Way::at_once), 10u + 2 * static_cast<size_t>(allowances));
}

TEST_F(ListAtOnce, UsersWithoutOthersBetweenThemAreReadAtOnceHoweverFarApart)
{
    for (const char *table :
         {"`$user` SET id=id*1000 WHERE id", "`$home_folder` SET user_id=user_id*1000 WHERE user_id",
          "user_quota SET user_id=user_id*1000 WHERE user_id"})
        sql(std::string("UPDATE ") + table + " BETWEEN 100 AND 199");
    const Outcome apart = expect_list_alike(nullptr);
    EXPECT_LT(apart.statements.size(), 40u);
    EXPECT_NE(users.User->HomeFolderSettings, nullptr);
    EXPECT_EQ(elements(users.User).size(), static_cast<size_t>(kUsers - 3));
}

TEST_F(ListAtOnce, FewUsersAmongManyAreReadOneByOne)
{
    sql("UPDATE `$user` SET id=id*1000 WHERE id BETWEEN 100 AND 199;"
        "INSERT INTO `$user` (id,uname,is_privileged) SELECT id+1,'x'||id,1 FROM `$user` WHERE id>=100000;"
        "INSERT INTO `$user` (id,uname,is_privileged) SELECT id+2,'y'||id,1 FROM `$user` WHERE id>=100000");
    const Outcome few = expect_list_alike(nullptr);
    EXPECT_GT(few.statements.size(), (kUsers - 3) * 4u);
}

TEST_F(ListAtOnce, BreaksOffWhereItAlwaysDid)
{
    const struct {
        const char *table, *key, *column, *message;
    } kBroken[] = {
        {"user_quota", "user_id", "mb_hard", "Failed DB Query for user_quota. integer overflow"},
        {"_user_quota_stat", "user_id", "mb_used", "Failed DB Query for user_quota. integer overflow"},
        {"$home_folder", "user_id", "quota", "Failed DB Query for $home_folder. integer overflow"},
        {"_hf_zfs_stat", "user_id", "used", "Failed DB Query for $home_folder. integer overflow"},
        {"$timemachine_quota", "user_id", "capacity_mb", "Failed DB Query for $timemachine_quota. integer overflow"},
    };
    AccountQuery by_id{};
    by_id.order = 2;
    for (const auto &[table, key, column, message] : kBroken) {
        std::set<size_t> lengths;
        for (const int32_t user : {kFirst + 3, kFirst + 10, kFirst + 45, kFirst + 59}) {
            // A row for whom there is none otherwise.
            const std::string id = std::to_string(user);
            sql("INSERT OR IGNORE INTO `$home_folder` VALUES(" + id + ",1,1,'',0);"
                "INSERT OR IGNORE INTO `_hf_zfs_stat` VALUES(" + id + ",1);"
                "INSERT OR IGNORE INTO `$timemachine_quota` VALUES(" + id + ",1,1);"
                "INSERT OR IGNORE INTO user_quota VALUES(" + id + ",3,1,1);"
                "INSERT OR IGNORE INTO _user_quota_stat VALUES(3," + id + ",1)");
            SCOPED_TRACE(std::string(table) + " of " + id);
            const Outcome broken =
                expect_alike_broken(table, std::string(key) + "=" + id, column, call(&by_id), dump());
            EXPECT_EQ(broken.rc, 5u);
            EXPECT_EQ(broken.message, message);
            lengths.insert(elements(users.User).size());
        }
        EXPECT_EQ(lengths.size(), 4u) << "each breaks off at its own user";
    }
    EXPECT_EQ(expect_list_alike(&by_id).rc, 0u);
}

TEST_F(ListAtOnce, FailsAsItAlwaysDidWithoutATable)
{
    const struct {
        const char *table, *message;
    } kMissing[] = {
        {"user_quota", "Failed DB Query for user_quota. no such table: user_quota"},
        {"share", "Failed DB Query for user_quota. no such table: share"},
        {"$home_folder", "Failed DB Query for $home_folder. no such table: $home_folder"},
        {"account_default", "Failed DB Query for 'SELECT account_default and $user'."},
        {"$timemachine_quota", "Failed DB Query for $timemachine_quota. no such table: $timemachine_quota"},
    };
    for (const auto &[table, message] : kMissing) {
        SCOPED_TRACE(table);
        const Outcome missing = expect_alike_without(table, call(nullptr), dump());
        EXPECT_EQ(missing.rc, 5u);
        EXPECT_EQ(missing.message, message);
        EXPECT_EQ(elements(users.User).size(), 1u);
    }
}

TEST_F(ListAtOnce, ALackOfMemoryIsNoticed)
{
    sql("DELETE FROM `$user` WHERE id>110; UPDATE `$user` SET group_id=99 WHERE group_id=-7");
    qbdb->log_level = 0;
    qbdb_set_statement_hook(qbdb, nullptr, nullptr);
    expect_each_allocation_noticed(
        err,
        [this] {
            qbdb_request_begin(qbdb);
            users = {};
            return qbobj_getUserCollection(qbdb, db, &users, nullptr, 0, &err);
        },
        2, "Failed to allocate resource.");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
