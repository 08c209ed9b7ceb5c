// Creating groups.
#include "groups.h"

using test::chain;
using test::new_group;
using testing::ElementsAre;

namespace {

const std::string kName32(32, 'g');
const std::string kName33(33, 'g');

struct AddGroup : test::GroupDatabase {
    uint32_t add(Group *group) { return qbobj_addGroup(qbdb, db, group, &err); }
    void expect_refused(uint32_t code, const std::string &message, Group group)
    {
        expect_failure(code, message, [&] { return add(&group); });
    }
};

TEST_F(AddGroup, StoresTheGroup)
{
    Group group = new_group("artists", 200);
    group.resource_id = 7;
    ASSERT_EQ(add(&group), 0u) << err.message;
    EXPECT_THAT(group_rows(), ElementsAre("99|users|0|NULL", "100|staff|0|NULL", "200|artists|0|NULL"));
    EXPECT_EQ(group.resource_id, 200);
    EXPECT_THAT(members(200), ElementsAre());
    EXPECT_THAT(quotas(200), ElementsAre());
}

TEST_F(AddGroup, NullChainAddsNothing)
{
    const std::string before = content();
    EXPECT_EQ(add(nullptr), 0u);
    EXPECT_EQ(content(), before);
}

TEST_F(AddGroup, AcceptedNames)
{
    for (const char *name : {kName32.c_str(), "12", "&co", "_a", "a.b-c@d&e_f", "Müller", "sky-loft2", "root"}) {
        SCOPED_TRACE(name);
        Group group = new_group(name);
        EXPECT_EQ(add(&group), 0u) << err.message;
        EXPECT_EQ(value("SELECT gname FROM `$group` WHERE id=" + std::to_string(group.resource_id)), name);
    }
}

TEST_F(AddGroup, RefusedNames)
{
    expect_refused(8, "GroupName is required for 'add'", new_group(nullptr));
    expect_refused(8, "GroupName is required for 'add'", new_group(""));
    expect_refused(806, "GroupName is too long (" + kName33 + ")", new_group(kName33.c_str()));
    for (const std::string name : {"-a", ".a", " a", "a b", "a'b", "a/b", "$a"})
        expect_refused(8, "Invalid GroupName (" + name + ")", new_group(name.c_str()));
    expect_refused(803, "Group (staff) already exists.", new_group("staff"));
    expect_refused(803, "Group (guest) already exists.", new_group("guest", 300));
    expect_refused(803, "Group (staff) already exists.", new_group("staff", 99));  // the name before the id
    Group capital = new_group("Staff");
    EXPECT_EQ(add(&capital), 0u) << err.message;
}

TEST_F(AddGroup, TheNameOfARemovedGroupStaysTaken)
{
    Group staff = test::group_of(100);
    ASSERT_EQ(qbobj_deleteGroup(qbdb, db, &staff, &err), 0u) << err.message;
    expect_refused(803, "Group (staff) already exists.", new_group("staff"));
}

TEST_F(AddGroup, TheLowestIdFirst)
{
    sql("DELETE FROM `$group` WHERE id=100; INSERT INTO `$group`(id,gname) VALUES(101,'one')");
    Group first = new_group("first");
    ASSERT_EQ(add(&first), 0u) << err.message;
    EXPECT_EQ(first.resource_id, 100);
    EXPECT_EQ(first.GroupId, 0);
    Group second = new_group("second", -3);
    ASSERT_EQ(add(&second), 0u) << err.message;
    EXPECT_EQ(second.resource_id, 102);
}

TEST_F(AddGroup, TheFirstFreeSuccessor)
{
    sql("INSERT INTO `$group`(id,gname,is_privileged) "
        "VALUES(101,'a',0),(102,'b',-1),(103,'c',1),(104,'d',0),(105,'e',0)");
    Group group = new_group("f");
    take_statements();
    ASSERT_EQ(add(&group), 0u) << err.message;
    EXPECT_EQ(group.resource_id, 106);
    EXPECT_THAT(
        take_statements(),
        ElementsAre(testing::HasSubstr("BEGIN"), "SELECT COUNT(*) FROM `$group` WHERE gname='f'",
                    "SELECT 100 WHERE NOT EXISTS (SELECT * FROM `$group` WHERE id=100)",
                    "SELECT G1.id+1 FROM `$group` G1 WHERE G1.id>=100-1 AND G1.id<32767 AND NOT EXISTS (SELECT * FROM "
                    "`$group` G2 WHERE G2.id=G1.id+1) LIMIT 1",
                    "INSERT INTO `$group` (id,gname,is_privileged) VALUES(106,'f',0)", "COMMIT"));
}

TEST_F(AddGroup, AChainGetsOneIdAfterTheOther)
{
    Group a = new_group("a"), b = new_group("b", 102), c = new_group("c"), d = new_group("d");
    ASSERT_EQ(add(chain({&a, &b, &c, &d})), 0u) << err.message;
    EXPECT_EQ(a.resource_id, 101);
    EXPECT_EQ(b.resource_id, 102);
    EXPECT_EQ(c.resource_id, 103);
    EXPECT_EQ(d.resource_id, 104);
}

TEST_F(AddGroup, StatementsInOrder)
{
    Quota media = test::quota_of("tank/media", 10), music = test::quota_of("tank/music", 20);
    User anna = test::member_of(101), bert = test::member_of(102);
    Group group = new_group("artists", 200);
    group.GroupQuota = chain({&media, &music});
    group.SecondaryMember = chain({&bert, &anna});
    take_statements();
    ASSERT_EQ(add(&group), 0u) << err.message;
    const auto quota = [](const std::string &share, const std::string &limit) {
        return "INSERT INTO group_quota (group_id,share_id,mb_soft,mb_hard) VALUES(200,(SELECT S.id FROM share S WHERE "
               "zfs_name='" +
               share + "')," + limit + "*(SELECT diskquota_warn FROM account_default LIMIT 1)," + limit + ")";
    };
    EXPECT_THAT(
        take_statements(),
        ElementsAre(testing::HasSubstr("BEGIN"), "SELECT COUNT(*) FROM `$group` WHERE gname='artists'",
                    "SELECT COUNT(*) FROM `$group` WHERE id=200",
                    "INSERT INTO `$group` (id,gname,is_privileged) VALUES(200,'artists',0)", quota("tank/media", "10"),
                    quota("tank/music", "20"), "INSERT INTO `$group_has_user` (user_id,group_id) VALUES(102,200)",
                    "INSERT INTO `$group_has_user` (user_id,group_id) VALUES(101,200)", "COMMIT"));
}

struct FullAddGroup : AddGroup {
    FullAddGroup()
    {
        sql("WITH RECURSIVE n(i) AS (SELECT 101 UNION ALL SELECT i+1 FROM n WHERE i<32767) "
            "INSERT INTO `$group`(id,gname) SELECT i,'g'||i FROM n");
    }
};

TEST_F(FullAddGroup, NoMoreIds)
{
    expect_refused(5, "No more gid available", new_group("late"));
    sql("DELETE FROM `$group` WHERE id=32767");
    Group group = new_group("late");
    ASSERT_EQ(add(&group), 0u) << err.message;
    EXPECT_EQ(group.resource_id, 32767);
}

TEST_F(AddGroup, GivenIds)
{
    expect_refused(8, "GroupId=1 is out of valid range (100-32767).", new_group("a", 1));
    expect_refused(8, "GroupId=99 is out of valid range (100-32767).", new_group("a", 99));
    expect_refused(8, "GroupId=32768 is out of valid range (100-32767).", new_group("a", 32768));
    expect_refused(804, "GroupId (100) already exists.", new_group("a", 100));
    sql("UPDATE `$group` SET is_privileged=-1 WHERE id=100");
    expect_refused(804, "GroupId (100) already exists.", new_group("a", 100));
    sql("DELETE FROM `$group` WHERE id=100");
    Group lowest = new_group("lowest", 100), highest = new_group("highest", 32767);
    ASSERT_EQ(add(chain({&lowest, &highest})), 0u) << err.message;
    EXPECT_EQ(lowest.resource_id, 100);
    EXPECT_EQ(highest.resource_id, 32767);
}

TEST_F(AddGroup, QuotasWithUndividedSoftLimits)
{
    sql("UPDATE account_default SET diskquota_warn=75");
    Quota media = test::quota_of("tank/media", 1000), music = test::quota_of("tank/music", 0);
    Group group = new_group("artists", 200);
    group.GroupQuota = chain({&media, &music});
    ASSERT_EQ(add(&group), 0u) << err.message;
    EXPECT_THAT(quotas(200), ElementsAre("1|75000|1000", "2|0|0"));
}

TEST_F(AddGroup, ALimitThatDoesNotFitIsTheHighestThatFits)
{
    Quota media = test::quota_of("tank/media", 2147483647), music = test::quota_of("tank/music", 1ull << 32);
    Group group = new_group("artists", 200);
    group.GroupQuota = chain({&media, &music});
    ASSERT_EQ(add(&group), 0u) << err.message;
    EXPECT_THAT(quotas(200), ElementsAre("1|171798691760|2147483647", "2|171798691760|2147483647"));
}

TEST_F(AddGroup, AQuotaNeedsAKnownShare)
{
    for (const char *share : {"tank/unknown", static_cast<const char *>(nullptr)}) {
        Quota quota = test::quota_of(share, 10);
        Group group = new_group("artists", 200);
        group.GroupQuota = &quota;
        expect_refused(5, "Failed DB Query for 'INSERT group_quota'. NOT NULL constraint failed: group_quota.share_id",
                       group);
    }
}

TEST_F(AddGroup, SecondaryMembers)
{
    User anna = test::member_of(101), bert{};  // names do not matter here
    bert.UserId = 102;
    anna.UserId = 999;  // the address comes first
    Group group = new_group("artists", 200);
    group.SecondaryMember = chain({&anna, &bert});
    ASSERT_EQ(add(&group), 0u) << err.message;
    EXPECT_THAT(members(200), ElementsAre("101", "102"));
}

TEST_F(AddGroup, RefusedMembers)
{
    User nobody = test::member_of(0), domain{}, anna = test::member_of(101), again = test::member_of(101);
    domain.UserId = -5;
    Group group = new_group("artists", 200);
    group.SecondaryMember = chain({&anna, &nobody});
    expect_refused(8, "Invalid resource_id (0) in SecondaryMember.", group);
    group.SecondaryMember = &domain;
    expect_refused(8, "Invalid resource_id (-5) in SecondaryMember.", group);
    User first{};
    first.resource_id = 1;  // the lowest id that is one
    first.UserId = 101;
    Group other = new_group("others", 201);
    other.SecondaryMember = &first;
    ASSERT_EQ(add(&other), 0u) << err.message;
    EXPECT_THAT(members(201), ElementsAre("1"));
    group.SecondaryMember = chain({&anna, &again});
    expect_refused(5,
                   "Failed DB Query for 'INSERT group_has_user. UNIQUE constraint failed: $group_has_user.user_id, "
                   "$group_has_user.group_id",
                   group);
}

TEST_F(AddGroup, OneFailureUndoesTheWholeChain)
{
    for (int bad = 0; bad < 3; bad++) {
        SCOPED_TRACE(bad);
        Quota quotas[3];
        User users[3];
        Group groups[3] = {new_group("a"), new_group("b"), new_group("c")};
        for (int i = 0; i < 3; i++) {
            quotas[i] = test::quota_of("tank/media", 10);
            users[i] = test::member_of(i == bad ? 0 : 101);
            groups[i].GroupQuota = &quotas[i];
            groups[i].SecondaryMember = &users[i];
        }
        Group *all = chain({&groups[0], &groups[1], &groups[2]});
        expect_failure(8, "Invalid resource_id (0) in SecondaryMember.", [&] { return add(all); });
        EXPECT_EQ(groups[bad].resource_id, 0);
        users[bad].resource_id = 102;
        EXPECT_EQ(add(all), 0u) << err.message;  // nothing of the failed call is in the way
        sql("DELETE FROM `$group` WHERE id>100 AND id<32768; DELETE FROM group_quota; DELETE FROM `$group_has_user`");
    }
}

TEST_F(AddGroup, TheSameNameTwiceInAChain)
{
    Group a = new_group("a"), again = new_group("a");
    expect_failure(803, "Group (a) already exists.", [&] { return add(chain({&a, &again})); });
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
