// The user list with the guests' group found beforehand, and as its statements look for it themselves.
#include <climits>

#include "fixture/both_ways.h"
#include "users/users.h"

using namespace test;

namespace {

constexpr int kUsers = 12;

struct UserPage : BothWays<Users> {
    AccountQuery query{};

    UserPage()
    {
        for (int i = 0; i < kUsers; i++) add_user(100 + i, "user" + std::to_string(i * 5 % kUsers));
    }

    auto call(AccountQuery *which)
    {
        return [this, which] {
            users = {};
            return qbobj_getUserCollection(qbdb, db, &users, which, 0, &err);
        };
    }
    auto dump()
    {
        return [this] { qbobj_api2_utils_dump_object(qbdb, qbobj_find_type("UserCollection"), &users, 0, "f", 1); };
    }
    Outcome expect_list_alike(AccountQuery *which) { return expect_alike(call(which), dump()); }
    /// How many statements took the group's id.
    static int with_id(const Outcome &outcome)
    {
        int count = 0;
        for (const std::string &statement : outcome.statements)
            if (statement.find("U.group_id=?1") != std::string::npos ||
                statement.find("U.group_id<>?1") != std::string::npos)
                count++;
        return count;
    }
    void add_users(int count)
    {
        sql("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<" + std::to_string(count) +
            ") INSERT INTO `$user` (id,uname,group_id,is_privileged) SELECT 1000+i,printf('x%05d',i),99,0 FROM n");
    }
};

TEST_F(UserPage, IsTheSameWhateverTheGroups)
{
    const struct {
        const char *name, *change;
        bool known;
        int32_t total;
    } kAccounts[] = {
        {"as they were", "SELECT 1", true, kUsers},
        {"guests", "UPDATE `$user` SET group_id=65533 WHERE id IN (101,105,111)", true, kUsers - 3},
        {"users of no group, beside guests", "UPDATE `$user` SET group_id=65534 WHERE id=104", true, kUsers - 3},
        {"no group of guests", "DELETE FROM `$group` WHERE gname='guest'", true, kUsers - 1},
        {"neither", "DELETE FROM `$group` WHERE gname='nogroup'", false, 0},
        {"another number", "INSERT INTO `$group` (id,gname) VALUES(99,'guest') ON CONFLICT DO UPDATE SET gname='guest'",
         true, 4},
        {"beyond 32 bits",
         "UPDATE `$group` SET id=5000000099 WHERE gname='guest'; UPDATE `$user` SET group_id=5000000099 WHERE id=107",
         true, kUsers - 1},
        {"below 0", "UPDATE `$group` SET id=-7 WHERE gname='guest'; UPDATE `$user` SET group_id=-7 WHERE id=108", true,
         kUsers - 1},
        {"a group that no list shows",
         "DELETE FROM `$group` WHERE id=98; UPDATE `$group` SET id=98 WHERE gname='guest'", true, kUsers},
        {"users without a group", "UPDATE `$user` SET group_id=NULL WHERE id IN (100,102)", true, kUsers - 2},
        {"a group that is no number", "UPDATE `$user` SET group_id='98x' WHERE id=103", true, kUsers - 2},
        {"domain users", "UPDATE `$user` SET rid=5 WHERE id=106", true, kUsers - 3},
        {"system users", "UPDATE `$user` SET is_privileged=1 WHERE id=108", true, kUsers - 4},
        {"removed users", "UPDATE `$user` SET is_privileged=-1 WHERE id=109", true, kUsers - 5},
        {"nobody and guest", "UPDATE `$user` SET group_id=99 WHERE uname IN ('nobody','guest')", true, kUsers - 5},
        {"no users", "DELETE FROM `$user`", true, 0},
    };
    for (const auto &[name, change, known, total] : kAccounts) {
        SCOPED_TRACE(name);
        sql(change);
        EXPECT_EQ(with_id(expect_list_alike(nullptr)), known ? 2 : 0);
        EXPECT_EQ(users.TotalEntries, total);
        EXPECT_EQ(elements(users.User).size(), static_cast<size_t>(total));
        for (const int32_t order : {1, 2, -1, -2})
            for (const int32_t limit : {0, 1, 5, 100, -1})
                for (const int32_t offset : {0, 1, 7, 11, 12, 500, INT32_MAX, -3}) {
                    SCOPED_TRACE(std::to_string(order) + " " + std::to_string(offset) + "," + std::to_string(limit));
                    query = {};
                    query.order = order;
                    query.limit = limit;
                    query.offset = offset;
                    EXPECT_EQ(with_id(expect_list_alike(&query)), known ? 2 : 0);
                }
    }
}

TEST_F(UserPage, ListsWithClausesHaveTheirOwnStatements)
{
    add_user(200, "domain", "-7", "rid=5");
    gids["EXAMPLE\\staff"] = -7;
    const struct {
        const char *name, *pattern, *opt;
        int32_t ads;
    } kLists[] = {
        {"names", "user1%", nullptr, 0},
        {"domain users", nullptr, nullptr, 1},
        {"one user", nullptr, "SINGLE_USER", 0},
        {"home folders", nullptr, "HF_EXISTS", 0},
        {"snapshots", nullptr, "||HF_SNAPSHOT_ACCESS", 0},
        {"the administrator", nullptr, "&&USER_WITH_ADMIN==1", 0},
        {"without the cloud service", nullptr, "&&USER_WITHOUT_SKYLOFT==1", 0},
    };
    for (const auto &[name, pattern, opt, ads] : kLists) {
        SCOPED_TRACE(name);
        query = {};
        query.name_like = pattern;
        query.opt = opt;
        query.name_fix = "user3";
        query.ads = ads;
        EXPECT_EQ(with_id(expect_list_alike(&query)), 0);
    }
    directory_mode();
    EXPECT_EQ(with_id(expect_list_alike(nullptr)), 0);
}

TEST_F(UserPage, IsReadAsEverWhenTheGroupsIdCannotBeUsed)
{
    query.limit = 3;
    query.offset = 5;
    EXPECT_EQ(expect_alike_without_each(call(&query), dump()), 3) << "the id, the count, the page";
    EXPECT_EQ(elements(users.User).size(), 3u);
    EXPECT_EQ(users.TotalEntries, kUsers);
}

TEST_F(UserPage, FailsAsItAlwaysDid)
{
    for (const char *table : {"$user", "$group"}) {
        SCOPED_TRACE(table);
        sql("PRAGMA legacy_alter_table=ON");
        sql(std::string("ALTER TABLE `") + table + "` RENAME TO elsewhere");
        const Outcome missing = expect_list_alike(nullptr);
        EXPECT_EQ(missing.rc, 5u);
        EXPECT_EQ(missing.message, std::string("Failed DB Query for user. no such table: ") + table);
        sql(std::string("ALTER TABLE elsewhere RENAME TO `") + table + "`");
    }
    break_where("$user", "id=105", "email");
    const Outcome broken_row = expect_list_alike(nullptr);
    EXPECT_EQ(broken_row.message, "Failed DB Query for user. integer overflow");
    EXPECT_EQ(users.User, nullptr);
}

TEST_F(UserPage, CostsLittleForThoseWhoAreCountedAndSkipped)
{
    constexpr int kMore = 2000;
    query.limit = 1;
    const long few = run(Way::at_once, call(&query), dump()).steps;
    const long few_plain = run(Way::one_by_one, call(&query), dump()).steps;
    add_users(kMore);
    const long many = expect_list_alike(&query).steps;
    const long many_plain = run(Way::one_by_one, call(&query), dump()).steps;
    EXPECT_LE(many - few, 2L * kMore + 50) << "counting looks at more than the index";
    EXPECT_GT(many_plain - few_plain, 10L * kMore) << "the steps are not counted";

    query.offset = kMore;
    const Outcome far = expect_list_alike(&query);
    EXPECT_LE(far.steps - many, 5L * kMore + 50) << "skipping looks for the group again";
    query.offset = kMore / 2;
    EXPECT_EQ(expect_list_alike(&query).statements, far.statements) << "each page has statements of its own";
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
