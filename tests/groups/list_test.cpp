// The group list, and the single group that cannot be read.
#include "fixture/text_of.h"
#include "groups.h"

using test::elements;
using test::text_of;
using testing::ElementsAre;

namespace {

struct GroupList : test::GroupDatabase {
    GroupCollection groups{};
    AccountQuery query{};

    uint32_t list() { return qbobj_getGroupCollection(qbdb, db, &groups, &query, &err); }
    uint32_t list_without_query() { return qbobj_getGroupCollection(qbdb, db, &groups, nullptr, &err); }

    std::vector<std::string> names() const
    {
        std::vector<std::string> all;
        for (const Group *group : elements(groups.Group)) all.push_back(group->GroupName);
        return all;
    }

    /// Names that a fresh collection gets for the query.
    std::vector<std::string> listed()
    {
        groups = {};
        EXPECT_EQ(list(), 0u) << err.message;
        return names();
    }
};

TEST_F(GroupList, LocalGroupsByName)
{
    sql("INSERT INTO `$group`(id,gname) VALUES(101,'artists')");
    ASSERT_EQ(list_without_query(), 0u) << err.message;
    EXPECT_THAT(names(), ElementsAre("artists", "staff", "users"));
    EXPECT_EQ(groups.Entries, 3);
    EXPECT_EQ(groups.TotalEntries, 3);
    const Group *first = groups.Group;
    EXPECT_EQ(text_of(first), "resource_id=101 GroupId=101 GroupName=artists");
}

TEST_F(GroupList, WithoutAQueryDirectoryModeListsDomainGroups)
{
    switch_to_directory();
    ASSERT_EQ(list_without_query(), 0u) << err.message;
    EXPECT_THAT(names(), ElementsAre("DOM\\sales"));
    EXPECT_EQ(groups.Group->GroupId, -7);
    EXPECT_EQ(groups.Group->resource_id, -7);
    EXPECT_EQ(groups.Group->IsDomainMember, 1);
    EXPECT_EQ(groups.TotalEntries, 1);
}

TEST_F(GroupList, AQuerySaysItselfWhichKindItLists)
{
    switch_to_directory();
    EXPECT_THAT(listed(), ElementsAre("staff", "users"));
    query.ads = 2;
    EXPECT_THAT(listed(), ElementsAre("DOM\\sales"));
}

TEST_F(GroupList, NeverListed)
{
    // Neither by their state nor, when they are ordinary groups, by their names.
    sql("UPDATE `$group` SET is_privileged=-1 WHERE gname='staff';"
        "UPDATE `$group` SET is_privileged=0 WHERE gname IN('guest','nogroup')");
    EXPECT_THAT(listed(), ElementsAre("users"));
    EXPECT_EQ(groups.TotalEntries, 1);
}

TEST_F(GroupList, Orders)
{
    sql("INSERT INTO `$group`(id,gname) VALUES(101,'artists')");
    struct Case {
        int32_t order;
        std::vector<std::string> names;
    };
    const Case cases[] = {
        {1, {"artists", "staff", "users"}},  {2, {"users", "staff", "artists"}}, {-1, {"users", "staff", "artists"}},
        {-2, {"artists", "staff", "users"}}, {0, {"artists", "staff", "users"}}, {17, {"artists", "staff", "users"}},
    };
    for (const Case &one : cases) {
        SCOPED_TRACE(one.order);
        query.order = one.order;
        EXPECT_EQ(listed(), one.names);
    }
}

TEST_F(GroupList, Pages)
{
    sql("INSERT INTO `$group`(id,gname) VALUES(101,'artists'),(102,'zebras')");
    query.limit = 2;
    EXPECT_THAT(listed(), ElementsAre("artists", "staff"));
    EXPECT_EQ(groups.Entries, 4);
    EXPECT_EQ(groups.TotalEntries, 4);
    query.offset = 3;
    EXPECT_THAT(listed(), ElementsAre("zebras"));
    query.offset = 9;
    EXPECT_THAT(listed(), ElementsAre());
    EXPECT_EQ(groups.Entries, 4);
    query.limit = 0;  // an offset counts with a limit only
    EXPECT_EQ(listed().size(), 4u);
    query.limit = -2147483647 - 1;  // the longest page clause
    query.offset = -2147483647 - 1;
    EXPECT_EQ(listed().size(), 4u);
}

TEST_F(GroupList, NamePattern)
{
    query.name_like = "%ST%";
    EXPECT_THAT(listed(), ElementsAre("staff"));
    EXPECT_EQ(groups.Entries, 1);
    EXPECT_EQ(groups.TotalEntries, 2);
    query.name_like = "taf";
    EXPECT_THAT(listed(), ElementsAre());
    query.name_like = "%' OR 1=1 --";
    EXPECT_THAT(listed(), ElementsAre());
    query.name_like = "";
    EXPECT_THAT(listed(), ElementsAre("staff", "users"));
}

TEST_F(GroupList, LongestPattern)
{
    const std::string longest(256, '%');
    query.name_like = longest.c_str();
    EXPECT_THAT(listed(), ElementsAre("staff", "users"));
    const std::string doubled(256, '\'');  // each byte takes two in the statement
    query.name_like = doubled.c_str();
    EXPECT_THAT(listed(), ElementsAre());
    const std::string longer(257, '%');
    query.name_like = longer.c_str();
    expect_failure(8, "Query string is too long.", [&] { return list(); });
}

TEST_F(GroupList, FieldsThatOnlyUserListsReadDoNothing)
{
    query.opt = "SINGLE_USER";
    query.name_fix = "nobody";
    query.include_admin = 1;
    EXPECT_THAT(listed(), ElementsAre("staff", "users"));
}

TEST_F(GroupList, QuotasOfAGroup)
{
    sql("INSERT INTO group_quota(group_id,share_id,mb_soft,mb_hard) VALUES(100,1,80000,1000),(100,2,0,5000000000),"
        "(99,1,1,1),(100,77,8,9);"
        "INSERT INTO _group_quota_stat(share_id,group_id,mb_used) VALUES(1,100,250),(1,99,3)");
    query.name_like = "staff";
    ASSERT_EQ(list(), 0u) << err.message;
    const auto quotas = elements(groups.Group->GroupQuota);
    ASSERT_EQ(quotas.size(), 2u);  // none of a share that is gone
    EXPECT_EQ(text_of(quotas[0]), "AccountId=100 ShareId=tank/media HardMB=1000 UsedMB=250");
    EXPECT_STREQ(quotas[1]->ShareId, "tank/music");
    EXPECT_EQ(quotas[1]->HardMB, 5000000000u);
    EXPECT_EQ(quotas[1]->UsedMB, 0u);
}

TEST_F(GroupList, SecondaryMembersByNameWithoutRegardToCase)
{
    // The primary group of a member is not asked of the directory, which would know any.
    const qbdb_directory_hooks hooks{nullptr, nullptr, nullptr, nullptr, [](void *, int32_t, char *name, size_t size) {
                                         snprintf(name, size, "any");
                                         return 0;
                                     }};
    qbdb_set_directory_hooks(qbdb, &hooks);
    sql("INSERT INTO `$user`(id,uname,passwd,group_id,rid,is_locked,shell_access) VALUES(103,'abel','x',4711,9,1,1);"
        "INSERT INTO `$group_has_user`(user_id,group_id) VALUES(103,100),(102,100),(101,100),(555,100),(101,99);"
        "INSERT INTO user_quota(user_id,share_id,mb_soft,mb_hard) VALUES(101,2,0,30);"
        "INSERT INTO _user_quota_stat(share_id,user_id,mb_used) VALUES(2,101,4)");
    query.name_like = "staff";
    ASSERT_EQ(list(), 0u) << err.message;
    const auto members = elements(groups.Group->SecondaryMember);
    ASSERT_EQ(members.size(), 3u);  // none of a user that is gone
    const User &abel = *members[0];
    EXPECT_EQ(text_of(abel),
              "resource_id=103 UserId=103 UserName=abel GroupName='' HomeDirectory='' Email='' Password=●●●●●●●● "
              "IsDomainMember=1");
    const User &anna = *members[1];
    EXPECT_EQ(text_of(anna),
              "resource_id=101 UserId=101 UserName=anna GroupName=users HomeDirectory=/home/anna "
              "Email=anna@example.org Password=●●●●●●●● UserQuota=[{AccountId=101 ShareId=tank/music HardMB=30 "
              "UsedMB=4}]");
    ASSERT_EQ(elements(anna.UserQuota).size(), 1u);
    EXPECT_EQ(text_of(anna.UserQuota), "AccountId=101 ShareId=tank/music HardMB=30 UsedMB=4");
    const User &bert = *members[2];
    EXPECT_STREQ(bert.UserName, "Bert");
    EXPECT_STREQ(bert.Email, "");
    EXPECT_EQ(bert.UserQuota, nullptr);
    for (const User *member : members) {  // what the members' statement does not read
        EXPECT_EQ(member->FullName, nullptr);
        EXPECT_EQ(member->IsLocked, 0);
        EXPECT_EQ(member->ShellAccess, 0);
        EXPECT_EQ(member->TimeMachineQuota, nullptr);
        EXPECT_EQ(member->HomeFolderSettings, nullptr);
    }
}

TEST_F(GroupList, PasswordsOfMembersAreMasked)
{
    sql("INSERT INTO `$user`(id,uname,passwd,group_id) VALUES(103,'carl',NULL,99);"
        "INSERT INTO `$group_has_user`(user_id,group_id) VALUES(101,100),(102,100),(103,100)");
    query.name_like = "staff";
    ASSERT_EQ(list(), 0u) << err.message;
    const auto members = elements(groups.Group->SecondaryMember);
    ASSERT_EQ(members.size(), 3u);
    EXPECT_STREQ(members[0]->Password, masked_password);
    EXPECT_STREQ(members[1]->Password, "");
    EXPECT_STREQ(members[2]->Password, "");
}

TEST_F(GroupList, AppendsToAListThatIsNotEmpty)
{
    Group mine = test::new_group("mine");
    groups.Group = &mine;
    ASSERT_EQ(list(), 0u) << err.message;
    EXPECT_THAT(names(), ElementsAre("mine", "staff", "users"));
}

TEST_F(GroupList, StatementsInOrderAndTwoForEachGroup)
{
    sql("INSERT INTO `$group_has_user`(user_id,group_id) VALUES(101,100)");
    query = {.limit = 5,
             .offset = 1,
             .name_like = "%",
             .opt = nullptr,
             .order = -2,
             .ads = 0,
             .include_admin = 0,
             .name_fix = nullptr};
    take_statements();
    ASSERT_EQ(list(), 0u) << err.message;
    ASSERT_THAT(names(), ElementsAre("users"));
    const auto statements = take_statements();
    ASSERT_EQ(statements.size(), 7u);
    EXPECT_EQ(statements[1],
              "SELECT COUNT(*)  FROM `$group` G WHERE G.is_privileged=0 AND G.rid IS NULL AND G.gname<>'nogroup' AND "
              "G.gname<>'guest'");
    EXPECT_EQ(statements[2],
              "SELECT COUNT(*)  FROM `$group` G WHERE G.is_privileged=0 AND G.rid IS NULL AND G.gname<>'nogroup' AND "
              "G.gname<>'guest' AND G.gname LIKE '%'");
    EXPECT_EQ(statements[3],
              "SELECT G.id,G.gname,CASE WHEN G.rid IS NULL THEN 0 ELSE 1 END FROM `$group` G WHERE G.is_privileged=0 "
              "AND G.rid IS NULL AND G.gname<>'nogroup' AND G.gname<>'guest' AND G.gname LIKE '%' ORDER BY G.id DESC "
              "LIMIT 1,5");
    EXPECT_EQ(statements[4],
              "SELECT S.zfs_name,Q.mb_hard,QS.mb_used FROM group_quota Q INNER JOIN share S ON S.id=Q.share_id LEFT "
              "JOIN _group_quota_stat QS ON QS.share_id=Q.share_id AND QS.group_id=Q.group_id WHERE Q.group_id=99");
    EXPECT_EQ(statements[5],
              "SELECT U.id,U.uname,(SELECT G.gname FROM `$group` G WHERE G.id=U.group_id),U.home,U.email,U.passwd,CASE "
              "WHEN U.rid IS NULL THEN 0 ELSE 1 END FROM `$group_has_user` GU INNER JOIN `$user` U ON U.id=GU.user_id "
              "WHERE GU.group_id=99 ORDER BY U.uname COLLATE NOCASE");

    query = {};
    std::string values;
    for (int id = 1000; id < 1100; id++)
        values += (values.empty() ? "(" : ",(") + std::to_string(id) + ",'g" + std::to_string(id) + "')";
    sql("INSERT INTO `$group`(id,gname) VALUES" + values);
    take_statements();
    EXPECT_EQ(listed().size(), 102u);
    // The frame's two, the three of the list, two a group and one for the one member.
    EXPECT_EQ(take_statements().size(), 2u + 3u + 2u * 102u + 1u);
}

TEST_F(GroupList, TracesTheNumberOfRows)
{
    qbdb->log_level = 5;
    ASSERT_EQ(list(), 0u) << err.message;
    EXPECT_THAT(logged(5), testing::Contains("x_qbobj_getGroupCollection() rc=0 nrow=2\n"));
}

TEST_F(GroupList, AFailureInTheMiddleLeavesWhatWasRead)
{
    sql("INSERT INTO `$group_has_user`(user_id,group_id) VALUES(101,99)");
    const test::BadStatement statements[] = {
        {"Q.group_id=99", "Failed DB Query for group_quota. injected"},
        {"GU.group_id=99", "Failed DB Query for 'user' and 'group'. injected"},
        {"Q.user_id=101", "Failed DB Query for user_quota. injected"},
    };
    for (const test::BadStatement &bad : statements) {
        groups = {};
        expect_statement_failures({bad}, [&] { return list(); });
        EXPECT_THAT(names(), ElementsAre("staff", "users"));
        EXPECT_EQ(groups.Entries, 2);
    }
}

using GroupListDeathTest = GroupList;

TEST_F(GroupListDeathTest, ACollectionIsRequired)
{
    EXPECT_DEATH(qbobj_getGroupCollection(qbdb, db, nullptr, &query, &err), "groups");
    EXPECT_DEATH(qbobj_getGroup(qbdb, db, nullptr, &err), "group");
    EXPECT_DEATH(qbobj_getSystemGroup(qbdb, db, nullptr, &err), "group");
    EXPECT_DEATH(qbobj_getGID(qbdb, db, "staff", nullptr, &err), "Assertion.*id");
    EXPECT_DEATH(qbobj_getPrimaryGID(qbdb, db, "anna", nullptr, &err), "Assertion.*id");
    EXPECT_DEATH(qbobj_getGroupName(qbdb, db, 100, nullptr, &err), "Assertion.*name");
}

struct SingleGroup : test::GroupDatabase {
    Group group{};
    uint32_t get() { return qbobj_getGroup(qbdb, db, &group, &err); }
};

TEST_F(SingleGroup, TheDatabaseRefusesTheStatement)
{
    group = test::group_of(100, "kept");
    take_statements();
    expect_failure(5, "Failed DB Query for 'group'. no such column: U.rid", [&] { return get(); });
    EXPECT_THAT(take_statements(),
                testing::Contains("SELECT G.id,G.gname,CASE WHEN U.rid IS NULL THEN 0 ELSE 1 END FROM `$group` G WHERE "
                                  "G.is_privileged=0 AND G.gname<>'nogroup' AND G.gname<>'guest' AND G.id=100 ORDER BY "
                                  "G.gname COLLATE NOCASE"));
    EXPECT_STREQ(group.GroupName, "kept");
    EXPECT_EQ(group.GroupId, 0);
    group = {};
    group.GroupId = 31000;  // no such group makes no difference
    expect_failure(5, "Failed DB Query for 'group'. no such column: U.rid", [&] { return get(); });
}

TEST_F(SingleGroup, AnIdIsRequired)
{
    expect_failure(8, "Invalid resouce_id=0.", [&] { return get(); });
    group.GroupId = -7;
    expect_failure(8, "Invalid resouce_id=-7.", [&] { return get(); });
    group.resource_id = 1;  // the lowest id that is one: the statement runs, and is refused
    expect_failure(5, "Failed DB Query for 'group'. no such column: U.rid", [&] { return get(); });
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
