// Removing groups.
#include "groups.h"

using test::chain;
using test::group_of;
using test::new_group;
using testing::ElementsAre;

namespace {

struct DeleteGroup : test::GroupDatabase {
    DeleteGroup()
    {
        sql("INSERT INTO `$group`(id,gname) VALUES(101,'artists'),(102,'crew');"
            "INSERT INTO `$group_has_user`(user_id,group_id) VALUES(101,100),(102,100),(101,101),(101,102);"
            "INSERT INTO group_quota(group_id,share_id,mb_soft,mb_hard) "
            "VALUES(100,1,800,10),(101,1,800,10),(102,2,8,1);"
            "INSERT INTO _group_quota_stat(share_id,group_id,mb_used) VALUES(1,100,3),(1,101,4),(2,102,5)");
    }
    uint32_t remove(Group *group) { return qbobj_deleteGroup(qbdb, db, group, &err); }
    void expect_refused(uint32_t code, const std::string &message, Group group)
    {
        expect_failure(code, message, [&] { return remove(&group); });
    }
};

TEST_F(DeleteGroup, NullChainRemovesNothing)
{
    const std::string before = content();
    EXPECT_EQ(remove(nullptr), 0u);
    EXPECT_EQ(content(), before);
}

TEST_F(DeleteGroup, MarksTheGroupAndRemovesWhatHangsOnIt)
{
    sql("INSERT INTO group_acl(share_id,group_id,proto,read,write) VALUES(1,100,'cifs',1,1)");
    Group group = group_of(100);
    take_statements();
    ASSERT_EQ(remove(&group), 0u) << err.message;
    EXPECT_THAT(
        take_statements(),
        ElementsAre(testing::HasSubstr("BEGIN"), "SELECT id FROM `$group` WHERE id=100",
                    "SELECT EXISTS(SELECT * FROM `$user` U WHERE U.group_id=100)",
                    "SELECT gname FROM `$group` WHERE id=100", "SELECT group_membership FROM `account_default`",
                    "DELETE FROM group_quota WHERE group_id=100", "DELETE FROM _group_quota_stat WHERE group_id=100",
                    "DELETE FROM `$group_has_user` WHERE group_id=100",
                    "UPDATE `$group` SET is_privileged=-1 WHERE id=100", "COMMIT"));
    EXPECT_THAT(group_rows(),
                ElementsAre("99|users|0|NULL", "100|staff|-1|NULL", "101|artists|0|NULL", "102|crew|0|NULL"));
    EXPECT_THAT(members(100), ElementsAre());
    EXPECT_THAT(members(101), ElementsAre("101"));
    EXPECT_THAT(rows("SELECT group_id FROM group_quota"), ElementsAre("101", "102"));
    EXPECT_THAT(rows("SELECT group_id FROM _group_quota_stat ORDER BY group_id"), ElementsAre("101", "102"));
    EXPECT_THAT(rows("SELECT group_id FROM group_acl"), ElementsAre("100"));  // access lists are the shares' business

    GroupCollection groups{};
    ASSERT_EQ(qbobj_getGroupCollection(qbdb, db, &groups, nullptr, &err), 0u) << err.message;
    EXPECT_EQ(groups.TotalEntries, 3);
}

TEST_F(DeleteGroup, TheIdStaysTakenToo)
{
    Group group = group_of(0);
    group.GroupId = 101;
    ASSERT_EQ(remove(&group), 0u) << err.message;
    Group next = new_group("next");
    ASSERT_EQ(qbobj_addGroup(qbdb, db, &next, &err), 0u) << err.message;
    EXPECT_EQ(next.resource_id, 103);
}

TEST_F(DeleteGroup, ARemovedGroupCanBeRemovedAgain)
{
    Group group = group_of(100);
    ASSERT_EQ(remove(&group), 0u) << err.message;
    EXPECT_EQ(remove(&group), 0u) << err.message;
}

TEST_F(DeleteGroup, RefusedIds)
{
    Group domain = group_of(0);
    domain.GroupId = -7;
    expect_refused(8, "Invalid resource_id (0)", group_of(0));
    expect_refused(8, "Invalid resource_id (-7)", domain);
    expect_refused(8, "Invalid resource_id (31000). Not exist.", group_of(31000));
    Group first = group_of(1);
    first.GroupId = 100;
    expect_refused(8, "Invalid resource_id (1). Not exist.", first);
}

TEST_F(DeleteGroup, APrimaryGroupCannotGo)
{
    sql("UPDATE `$user` SET group_id=100 WHERE uname='anna'");
    expect_refused(822, "Cannot remove group, has users.", group_of(100));
    expect_refused(822, "Cannot remove group, has users.", group_of(99));  // before the test for the default group
    sql("UPDATE `$user` SET is_privileged=-1 WHERE uname='anna'");
    expect_refused(822, "Cannot remove group, has users.", group_of(100));  // removed users count
}

TEST_F(DeleteGroup, TheDefaultGroupCannotGo)
{
    sql("UPDATE account_default SET group_membership='staff'");
    expect_refused(844, "Cannot remove default group.", group_of(100));
    // It is known by its name alone: renamed, it is a group like any other.
    sql("UPDATE `$group` SET gname='Staff' WHERE id=100");
    Group group = group_of(100);
    EXPECT_EQ(remove(&group), 0u) << err.message;
}

TEST_F(DeleteGroup, WithoutADefaultGroupEveryGroupCanGo)
{
    sql("UPDATE account_default SET group_membership=NULL");
    Group first = group_of(100);
    EXPECT_EQ(remove(&first), 0u) << err.message;
    sql("DELETE FROM account_default");
    Group second = group_of(101);
    EXPECT_EQ(remove(&second), 0u) << err.message;
}

TEST_F(DeleteGroup, NoPrivilegeProtectsAGroup)
{
    sql("UPDATE `$user` SET group_id=99 WHERE group_id=65533");
    Group group = group_of(65533);
    ASSERT_EQ(remove(&group), 0u) << err.message;
    EXPECT_EQ(value("SELECT is_privileged FROM `$group` WHERE gname='guest'"), "-1");
}

TEST_F(DeleteGroup, NothingRemoved)
{
    sql("CREATE TRIGGER keep BEFORE UPDATE ON `$group` BEGIN SELECT RAISE(IGNORE); END");
    expect_refused(6, "None of row is deleted. May be bad resource_id=100'", group_of(100));
}

TEST_F(DeleteGroup, OneFailureUndoesTheWholeChain)
{
    for (int bad = 0; bad < 3; bad++) {
        SCOPED_TRACE(bad);
        Group groups[3] = {group_of(100), group_of(101), group_of(102)};
        groups[bad].resource_id = 99;
        expect_failure(822, "Cannot remove group, has users.", [&] {
            return remove(chain({&groups[0], &groups[1], &groups[2]}));
        });
    }
    Group groups[3] = {group_of(100), group_of(101), group_of(102)};
    ASSERT_EQ(remove(chain({&groups[0], &groups[1], &groups[2]})), 0u) << err.message;
    EXPECT_THAT(rows("SELECT id FROM `$group` WHERE is_privileged=-1 ORDER BY id"), ElementsAre("100", "101", "102"));
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
