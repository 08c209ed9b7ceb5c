// The group list in both of its ways.
#include "fixture/both_ways.h"
#include "groups/groups.h"

using namespace test;

namespace {

constexpr int kGroups = 30;
constexpr int kUsers = 50;

struct GroupsAtOnce : BothWays<GroupDatabase> {
    GroupCollection groups{};

    /// Names in another order than ids, some equal but for their case; members in an order that is nobody's; users
    /// in several groups, and one who is gone.
    GroupsAtOnce()
    {
        sql("BEGIN");
        for (int i = 0; i < kUsers; i++) {
            const std::string id = std::to_string(200 + i);
            const std::string name = (i % 2 ? "user" : "USER") + std::to_string(i * 7 % 50 / 2);
            sql("INSERT INTO `$user` (id,uname,group_id,email,passwd) VALUES(" + id + ",'" + name + "'," +
                (i % 10 ? "99" : "-7") + ",'" + name + "@example.org','" + (i % 3 ? "$6$x" : "") + "')");
            for (int share = 1; share <= i % 3; share++)
                sql("INSERT INTO user_quota (user_id,share_id,mb_hard) VALUES(" + id + "," + std::to_string(3 - share) +
                    "," + std::to_string(share * 10) + ")");
        }
        for (int i = 0; i < kGroups; i++) {
            const std::string id = std::to_string(110 + i);
            sql("INSERT INTO `$group` (id,gname) VALUES(" + id + ",'group" + std::to_string(i * 7 % kGroups) + "')");
            if (i % 3 == 0)
                sql("INSERT INTO group_quota (group_id,share_id,mb_hard) VALUES(" + id + ",2,7),(" + id + ",1,8)");
            for (int member = 0; member < i % 8; member++)
                sql("INSERT OR IGNORE INTO `$group_has_user` (user_id,group_id) VALUES(" +
                    std::to_string(200 + (i * 13 + member * 17) % kUsers) + "," + id + ")");
        }
        sql("INSERT INTO _user_quota_stat SELECT share_id,user_id,user_id*2 FROM user_quota WHERE user_id%2;"
            "INSERT INTO _group_quota_stat SELECT share_id,group_id,group_id*2 FROM group_quota WHERE group_id%2;"
            "INSERT INTO `$group_has_user` SELECT 203,id FROM `$group` WHERE id%4=0 ON CONFLICT DO NOTHING;"
            "DELETE FROM `$user` WHERE id=203; COMMIT");
    }

    auto call(AccountQuery *query)
    {
        return [this, query] {
            groups = {};
            return qbobj_getGroupCollection(qbdb, db, &groups, query, &err);
        };
    }
    auto dump()
    {
        return [this] { qbobj_api2_utils_dump_object(qbdb, qbobj_find_type("GroupCollection"), &groups, 0, "f", 1); };
    }
    Outcome expect_list_alike(AccountQuery *query = nullptr) { return expect_alike(call(query), dump()); }
    std::vector<std::string> statements(Way way, AccountQuery *query = nullptr)
    {
        return run(way, call(query), dump()).statements;
    }
};

TEST_F(GroupsAtOnce, AreTheSame)
{
    for (const char *change : {"ANALYZE", "UPDATE service_cifs SET security='ads'"}) {
        EXPECT_EQ(expect_list_alike().rc, 0u);
        EXPECT_GE(elements(groups.Group).size(), static_cast<size_t>(kGroups));
        sql(change);
    }
    for (const int32_t order : {1, 2, -1, -2})
        for (const int32_t limit : {0, 3, 12})
            for (const char *pattern : {"", "group1%"}) {
                AccountQuery query{};
                query.order = order;
                query.limit = limit;
                query.offset = limit ? 9 : 0;
                query.name_like = pattern;
                SCOPED_TRACE(std::to_string(order) + " " + std::to_string(limit) + " " + pattern);
                EXPECT_EQ(expect_list_alike(&query).rc, 0u);
            }
}

/// Users have the ids of groups: whatever is asked of either is answered for it.
TEST_F(GroupsAtOnce, MayHaveTheIdsOfTheirMembers)
{
    sql("UPDATE `$group_has_user` SET user_id=user_id-85; UPDATE user_quota SET user_id=user_id-85;"
        "UPDATE `$user` SET id=id-85 WHERE id>=200");
    EXPECT_EQ(expect_list_alike().rc, 0u);
}

TEST_F(GroupsAtOnce, TakeAFewStatements)
{
    EXPECT_GT(statements(Way::one_by_one).size(), kGroups * 2u + 60);
    // BEGIN, mode, two counts, groups, members, whether they are most users; quotas and members of a group and of all,
    // quotas of a member and of all, COMMIT.
    EXPECT_LE(statements(Way::at_once).size(), 16u);
}

TEST_F(GroupsAtOnce, OfAPageDoNotReadWhoIsInTheOthers)
{
    AccountQuery query{};
    query.limit = 9;
    for (const std::string &each : statements(Way::at_once, &query))
        EXPECT_THAT(each, testing::Not(testing::HasSubstr("DISTINCT")));
}

TEST_F(GroupsAtOnce, AreReadAsEachIsRead)
{
    const std::vector<std::string> all = statements(Way::at_once);
    EXPECT_EQ(expect_plans_as_alone(all, "$group"), 2u);
    EXPECT_EQ(expect_plans_as_alone(all, "$user"), 1u);
}

TEST_F(GroupsAtOnce, BreakOffWhereTheyAlwaysDid)
{
    const struct {
        const char *table, *condition, *column, *message;
    } kBroken[] = {
        {"group_quota", "group_id=119", "mb_hard", "Failed DB Query for group_quota. integer overflow"},
        {"_group_quota_stat", "group_id=125", "mb_used", "Failed DB Query for group_quota. integer overflow"},
        {"user_quota", "user_id=205", "mb_hard", "Failed DB Query for user_quota. integer overflow"},
        {"_user_quota_stat", "user_id=205", "mb_used", "Failed DB Query for user_quota. integer overflow"},
        {"$user", "id=221", "email", "Failed DB Query for 'user' and 'group'. integer overflow"},
    };
    for (const auto &[table, condition, column, message] : kBroken) {
        SCOPED_TRACE(table);
        const Outcome broken = expect_alike_broken(table, condition, column, call(nullptr), dump());
        EXPECT_EQ(broken.rc, 5u);
        EXPECT_EQ(broken.message, message);
        EXPECT_GT(elements(groups.Group).size(), 1u);
        EXPECT_LT(elements(groups.Group).size(), static_cast<size_t>(kGroups));
    }
    EXPECT_EQ(expect_list_alike().rc, 0u);
}

TEST_F(GroupsAtOnce, FailAsTheyAlwaysDidWithoutATable)
{
    for (const char *table :
         {"group_quota", "_group_quota_stat", "user_quota", "_user_quota_stat", "share", "$group_has_user", "$user"}) {
        SCOPED_TRACE(table);
        const Outcome missing = expect_alike_without(table, call(nullptr), dump());
        EXPECT_EQ(missing.rc, 5u);
        EXPECT_THAT(missing.message, testing::HasSubstr(table));
    }
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
