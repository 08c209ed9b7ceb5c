// Changing groups.
#include "groups.h"

using test::chain;
using test::group_of;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

namespace {

const std::string kName32(32, 'g');
const std::string kName33(33, 'g');

struct ModifyGroup : test::GroupDatabase {
    ModifyGroup()
    {
        sql("INSERT INTO `$group_has_user`(user_id,group_id) VALUES(101,100),(101,99);"
            "INSERT INTO group_quota(group_id,share_id,mb_soft,mb_hard) VALUES(100,1,800,10),(99,1,800,10)");
    }
    uint32_t modify(Group *group) { return qbobj_modifyGroup(qbdb, db, group, &err); }
    void expect_refused(uint32_t code, const std::string &message, Group group)
    {
        expect_failure(code, message, [&] { return modify(&group); });
    }
};

TEST_F(ModifyGroup, NullChainChangesNothing)
{
    const std::string before = content();
    EXPECT_EQ(modify(nullptr), 0u);
    EXPECT_EQ(content(), before);
}

TEST_F(ModifyGroup, RenamesAndClearsTheMembers)
{
    Group group = group_of(100, "crew");
    group.OldGroupName = "ignored";
    ASSERT_EQ(modify(&group), 0u) << err.message;
    EXPECT_THAT(group_rows(), ElementsAre("99|users|0|NULL", "100|crew|0|NULL"));
    EXPECT_THAT(members(100), ElementsAre());
    EXPECT_THAT(members(99), ElementsAre("101"));
    EXPECT_THAT(quotas(100), ElementsAre("1|800|10"));
    EXPECT_STREQ(group.OldGroupName, "ignored");
}

TEST_F(ModifyGroup, TheOwnIdCountsWhenTheAddressIsBelowOne)
{
    Group group = group_of(-1, "crew");
    group.GroupId = 100;
    ASSERT_EQ(modify(&group), 0u) << err.message;
    EXPECT_EQ(value("SELECT gname FROM `$group` WHERE id=100"), "crew");
}

TEST_F(ModifyGroup, TheOwnNameRunsNoUpdate)
{
    Group group = group_of(100, "staff");
    take_statements();
    ASSERT_EQ(modify(&group), 0u) << err.message;
    EXPECT_THAT(take_statements(), Not(Contains(HasSubstr("UPDATE"))));
    EXPECT_THAT(members(100), ElementsAre());
}

TEST_F(ModifyGroup, WithoutANameNothingIsRenamed)
{
    for (const char *none : {static_cast<const char *>(nullptr), ""}) {
        Group group = group_of(100, none);
        take_statements();
        ASSERT_EQ(modify(&group), 0u) << err.message;
        EXPECT_THAT(take_statements(), ElementsAre(HasSubstr("BEGIN"), "SELECT id FROM `$group` WHERE id=100",
                                                   "DELETE FROM `$group_has_user` WHERE group_id=100", "COMMIT"));
        EXPECT_EQ(value("SELECT gname FROM `$group` WHERE id=100"), "staff");
    }
}

TEST_F(ModifyGroup, ACaseChangeIsARename)
{
    Group group = group_of(100, "Staff");
    ASSERT_EQ(modify(&group), 0u) << err.message;
    EXPECT_EQ(value("SELECT gname FROM `$group` WHERE id=100"), "Staff");
}

TEST_F(ModifyGroup, LongestName)
{
    Group group = group_of(100, kName32.c_str());
    ASSERT_EQ(modify(&group), 0u) << err.message;
    EXPECT_EQ(value("SELECT gname FROM `$group` WHERE id=100"), kName32);
}

TEST_F(ModifyGroup, FixedAndRemovedGroupsCanBeChanged)
{
    sql("UPDATE `$group` SET is_privileged=-1 WHERE id=100");
    Group removed = group_of(100, "gone"), admin = group_of(98, "wheel");
    ASSERT_EQ(modify(chain({&removed, &admin})), 0u) << err.message;
    EXPECT_THAT(rows("SELECT id,gname,is_privileged FROM `$group` WHERE id IN(98,100) ORDER BY id"),
                ElementsAre("98|wheel|1", "100|gone|-1"));
}

TEST_F(ModifyGroup, TheDefaultGroupDoesNotFollowARename)
{
    Group group = group_of(99, "people");
    ASSERT_EQ(modify(&group), 0u) << err.message;
    EXPECT_EQ(value("SELECT group_membership FROM account_default"), "users");
}

TEST_F(ModifyGroup, RefusedIds)
{
    Group domain = group_of(0, "x");
    domain.GroupId = -7;
    expect_refused(8, "Invalid resource_id (0).", group_of(0, "x"));
    expect_refused(8, "Invalid resource_id (-7).", domain);
    expect_refused(8, "Invalid resource_id (31000). Not exist.", group_of(31000, "x"));
    expect_refused(8, "Invalid resource_id (31000). Not exist.", group_of(31000, "-a"));  // the id before the name
    Group first = group_of(1, "x");
    first.GroupId = 100;
    expect_refused(8, "Invalid resource_id (1). Not exist.", first);
}

TEST_F(ModifyGroup, StatementsInOrder)
{
    Quota media = test::quota_of("tank/media", 0), music = test::quota_of("tank/music", 7);
    User bert = test::member_of(102, "Bert"), anna = test::member_of(101, "anna");
    Group group = group_of(100, "crew");
    group.GroupQuota = chain({&music, &media});
    group.SecondaryMember = chain({&bert, &anna});
    take_statements();
    ASSERT_EQ(modify(&group), 0u) << err.message;
    EXPECT_THAT(
        take_statements(),
        ElementsAre(
            HasSubstr("BEGIN"), "SELECT id FROM `$group` WHERE id=100",
            "SELECT id FROM `$group` WHERE gname='crew' AND rid IS NULL",
            "SELECT G.gname FROM `$group` G WHERE G.id=100 AND G.gname<>'crew'",
            "UPDATE `$group` SET gname='crew' WHERE id=100",
            "INSERT OR REPLACE INTO group_quota (group_id,share_id,mb_soft,mb_hard) VALUES(100,(SELECT S.id FROM share "
            "S WHERE zfs_name='tank/music'),(7*(SELECT diskquota_warn FROM account_default LIMIT 1)),7)",
            "DELETE FROM group_quota WHERE group_id=100 AND share_id=(SELECT S.id FROM share S WHERE "
            "S.zfs_name='tank/media')",
            "DELETE FROM `$group_has_user` WHERE group_id=100",
            "INSERT INTO `$group_has_user` (user_id,group_id) VALUES(102,100)",
            "INSERT INTO `$group_has_user` (user_id,group_id) VALUES(101,100)", "COMMIT"));
}

TEST_F(ModifyGroup, RefusedNames)
{
    sql("INSERT INTO `$group`(id,gname,is_privileged) VALUES(101,'removed',-1);"
        "INSERT INTO `$group`(id,gname,rid) VALUES(500,'sales',12)");
    expect_refused(806, "GroupName is too long (" + kName33 + ")", group_of(100, kName33.c_str()));
    for (const std::string name : {"-a", "a b", "a'b", "a',is_privileged='1"})
        expect_refused(8, "Invalid GroupName (" + name + ")", group_of(100, name.c_str()));
    expect_refused(803, "Cannot rename to group which already exists (users).", group_of(100, "users"));
    expect_refused(803, "Cannot rename to group which already exists (removed).", group_of(100, "removed"));
    // The name of a domain group is left to the table's own rule.
    expect_refused(803, "Specified group name already exists", group_of(100, "sales"));
}

TEST_F(ModifyGroup, SetsQuotasWithUndividedSoftLimits)
{
    sql("UPDATE account_default SET diskquota_warn=75");
    Quota media = test::quota_of("tank/media", 1000), music = test::quota_of("tank/music", 1ull << 40);
    Group group = group_of(100);
    group.GroupQuota = chain({&media, &music});
    ASSERT_EQ(modify(&group), 0u) << err.message;
    EXPECT_THAT(quotas(100), ElementsAre("1|75000|1000", "2|161061273525|2147483647"));
    EXPECT_THAT(quotas(99), ElementsAre("1|800|10"));
}

TEST_F(ModifyGroup, NoLimitRemovesTheQuotaOfThatShare)
{
    sql("INSERT INTO group_quota(group_id,share_id,mb_soft,mb_hard) VALUES(100,2,1600,20)");
    Quota media = test::quota_of("tank/media", 0), unknown = test::quota_of("tank/unknown", 0);
    Group group = group_of(100);
    group.GroupQuota = chain({&media, &unknown});
    ASSERT_EQ(modify(&group), 0u) << err.message;
    EXPECT_THAT(quotas(100), ElementsAre("2|1600|20"));
    EXPECT_THAT(quotas(99), ElementsAre("1|800|10"));
}

TEST_F(ModifyGroup, AQuotaNeedsAKnownShare)
{
    Quota quota = test::quota_of("tank/unknown", 10);
    Group group = group_of(100);
    group.GroupQuota = &quota;
    expect_refused(5, "Failed DB Query for 'UPDATE user_quota. NOT NULL constraint failed: group_quota.share_id",
                   group);
}

TEST_F(ModifyGroup, ReplacesTheMembers)
{
    sql("INSERT INTO `$user`(id,uname,group_id) VALUES(103,'carl',99)");
    User bert = test::member_of(102, "any name will do"), carl = test::member_of(0, "carl");
    carl.UserId = 103;
    Group group = group_of(100);
    group.SecondaryMember = chain({&bert, &carl});
    ASSERT_EQ(modify(&group), 0u) << err.message;
    EXPECT_THAT(members(100), ElementsAre("102", "103"));
    ASSERT_EQ(modify(&group), 0u) << err.message;  // the same members again
    EXPECT_THAT(members(100), ElementsAre("102", "103"));
}

TEST_F(ModifyGroup, TheMembersEndAtTheFirstWithoutAName)
{
    for (const char *nameless : {static_cast<const char *>(nullptr), ""}) {
        User bert = test::member_of(102, "Bert"), none = test::member_of(0, nameless),
             anna = test::member_of(101, "anna");
        Group group = group_of(100);
        group.SecondaryMember = chain({&bert, &none, &anna});
        ASSERT_EQ(modify(&group), 0u) << err.message;  // nor is the id of what is not looked at
        EXPECT_THAT(members(100), ElementsAre("102"));
        group.SecondaryMember = &none;
        none.next = &bert;
        ASSERT_EQ(modify(&group), 0u) << err.message;
        EXPECT_THAT(members(100), ElementsAre());
    }
}

TEST_F(ModifyGroup, RefusedMembers)
{
    User bert = test::member_of(102, "Bert"), nobody = test::member_of(0, "nobody"),
         again = test::member_of(102, "Bert");
    Group group = group_of(100, "crew");
    group.SecondaryMember = chain({&bert, &nobody});
    expect_refused(8, "Invalid resource_id (0) in SecondaryMember.", group);
    group.SecondaryMember = chain({&bert, &again});
    expect_refused(5,
                   "Failed DB Query for 'INSERT group_has_user. UNIQUE constraint failed: $group_has_user.user_id, "
                   "$group_has_user.group_id",
                   group);
}

TEST_F(ModifyGroup, OneFailureUndoesTheWholeChain)
{
    sql("INSERT INTO `$group`(id,gname) VALUES(101,'b'),(102,'c')");
    for (int bad = 0; bad < 3; bad++) {
        SCOPED_TRACE(bad);
        Quota quotas[3];
        User users[3];
        Group groups[3] = {group_of(100, "x"), group_of(101, "y"), group_of(102, "z")};
        for (int i = 0; i < 3; i++) {
            quotas[i] = test::quota_of("tank/music", i == 0 ? 0 : 10);
            users[i] = test::member_of(i == bad ? 0 : 102, "Bert");
            groups[i].GroupQuota = &quotas[i];
            groups[i].SecondaryMember = &users[i];
        }
        expect_failure(8, "Invalid resource_id (0) in SecondaryMember.", [&] {
            return modify(chain({&groups[0], &groups[1], &groups[2]}));
        });
    }
}

TEST_F(ModifyGroup, AListedGroupCanBeWrittenBack)
{
    GroupCollection groups{};
    ASSERT_EQ(qbobj_getGroupCollection(qbdb, db, &groups, nullptr, &err), 0u) << err.message;
    ASSERT_EQ(test::elements(groups.Group).size(), 2u);
    ASSERT_EQ(modify(groups.Group), 0u) << err.message;
    EXPECT_THAT(group_rows(), ElementsAre("99|users|0|NULL", "100|staff|0|NULL"));
    for (int32_t id : {99, 100}) {
        EXPECT_THAT(members(id), ElementsAre("101"));
        EXPECT_THAT(quotas(id), ElementsAre("1|800|10"));
    }
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
