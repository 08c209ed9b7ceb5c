// One user: its fields, its quotas, its home folder, its Time Machine allowance; getUser and getSystemUser.
#include <unistd.h>

#include <filesystem>

#include "fixture/text_of.h"
#include "users/users.h"

using namespace test;

using test::text_of;

namespace {

const std::string kMask =
    "\xE2\x97\x8F\xE2\x97\x8F\xE2\x97\x8F\xE2\x97\x8F\xE2\x97\x8F\xE2\x97\x8F\xE2\x97\x8F\xE2\x97\x8F";
const std::string kHash = "$1$abcdefgh$0123456789abcdefghijkl";

struct UserDetails : Users {
    UserDetails()
    {
        add_user(100, "anna", "99",
                 "fullname='Anna Smith',email='as@example.com',home='/home/anna',passwd='" + kHash +
                     "',is_locked=1,shell_access=1");
        add_user(101, "bob");
        sql("INSERT INTO share (id,name,zfs_name) VALUES(1,'media','tank/media'),(2,'photos','tank/photos');");
    }

    User *one(const char *name, int32_t with_password = 0)
    {
        AccountQuery query{};
        query.opt = "SINGLE_USER";
        query.name_fix = name;
        list(&query, with_password);
        EXPECT_EQ(elements(users.User).size(), 1u) << name;
        return users.User;
    }

    uint32_t get(int32_t resource_id, int32_t user_id = 0, const char *name = nullptr)
    {
        user = {};
        user.resource_id = resource_id;
        user.UserId = user_id;
        user.UserName = name;
        return qbobj_getUser(qbdb, db, &user, &err);
    }
};

TEST_F(UserDetails, ListGivesEachField)
{
    const User *anna = one("anna");
    EXPECT_EQ(text_of(anna),
              "resource_id=100 UserId=100 UserName=anna GroupName=users HomeDirectory=/home/anna "
              "Email=as@example.com FullName='Anna Smith' Password=●●●●●●●● IsLocked=1 ShellAccess=1");
}

/// Numbers of 0 and 1 that stand side by side are told apart only when they differ.
TEST_F(UserDetails, FlagsAreNotMixedUp)
{
    sql("INSERT INTO `$home_folder` VALUES(100,0,0,'',0)");
    for (const int32_t flag : {0, 1}) {
        const std::string on = std::to_string(flag);
        const std::string off = std::to_string(!flag);
        sql("UPDATE `$user` SET is_locked=" + on + ",shell_access=" + off +
            " WHERE id=100; UPDATE `$home_folder` SET snapshot_protection_enabled=" + on + ",prev_versions=" + off);
        ASSERT_EQ(get(100), 0u) << err.message;
        for (const User *each : {one("anna"), &user}) {
            EXPECT_EQ(each->IsLocked, flag);
            EXPECT_EQ(each->ShellAccess, !flag);
            ASSERT_NE(each->HomeFolderSettings, nullptr);
            EXPECT_EQ(each->HomeFolderSettings->SnapshotProtectionEnabled, flag);
            EXPECT_EQ(each->HomeFolderSettings->PrevVersions, !flag);
        }
    }
}

TEST_F(UserDetails, MissingTextsAreEmpty)
{
    const User *bob = one("bob");
    EXPECT_EQ(text_of(bob),
              "resource_id=101 UserId=101 UserName=bob GroupName=users HomeDirectory='' Email='' FullName='' "
              "Password=''");
}

TEST_F(UserDetails, PasswordIsMaskedUnlessAskedFor)
{
    EXPECT_EQ(one("anna", 0)->Password, kMask);
    EXPECT_EQ(one("anna", 1)->Password, kHash);
    EXPECT_EQ(one("anna", -1)->Password, kHash);
    EXPECT_STREQ(one("bob", 0)->Password, "");
    EXPECT_STREQ(one("bob", 1)->Password, "");
    sql("UPDATE `$user` SET passwd='' WHERE uname='bob'");
    EXPECT_STREQ(one("bob", 0)->Password, "") << "an empty password is none";
    ASSERT_EQ(get(100), 0u);
    EXPECT_EQ(user.Password, kMask);
    ASSERT_EQ(get(101), 0u);
    EXPECT_STREQ(user.Password, "");
}

TEST_F(UserDetails, GroupWithoutARowIsAskedOfTheDirectory)
{
    add_user(-5, "dora", "-7", "rid=500");
    add_user(-6, "dirk", "-8", "rid=501");
    gids["domain users"] = -7;
    AccountQuery query{};
    query.ads = 1;
    EXPECT_THAT(list(&query), ElementsAre("dirk", "dora"));
    EXPECT_STREQ(users.User->GroupName, "") << "the directory does not know it either";
    EXPECT_STREQ(users.User->next->GroupName, "domain users");
    EXPECT_EQ(users.User->next->UserId, -5);
    EXPECT_EQ(users.User->next->IsDomainMember, 1);
    directory_mode();
    ASSERT_EQ(get(0, -5), 0u) << err.message;
    EXPECT_STREQ(user.GroupName, "domain users");
    EXPECT_EQ(user.resource_id, -5);
    EXPECT_EQ(user.IsDomainMember, 1);
}

TEST_F(UserDetails, Quotas)
{
    sql("INSERT INTO user_quota (user_id,share_id,mb_soft,mb_hard) VALUES(100,1,8,10),(100,2,0,5000000000),"
        "(100,3,1,1),(101,1,1,7);"
        "INSERT INTO _user_quota_stat (share_id,user_id,mb_used) VALUES(2,100,4000000001),(1,101,3)");
    const auto check = [](const Quota *head) {
        const auto quotas = elements(const_cast<Quota *>(head));
        ASSERT_EQ(quotas.size(), 2u) << "a quota on no share is not shown";
        EXPECT_EQ(text_of(quotas[0]), "AccountId=100 ShareId=tank/media HardMB=10") << "never measured";
        EXPECT_STREQ(quotas[1]->ShareId, "tank/photos");
        EXPECT_EQ(quotas[1]->HardMB, 5000000000u);
        EXPECT_EQ(quotas[1]->UsedMB, 4000000001u);
    };
    check(one("anna")->UserQuota);
    ASSERT_EQ(get(100), 0u);
    check(user.UserQuota);
}

TEST_F(UserDetails, HomeFolderSettings)
{
    sql("INSERT INTO `$home_folder` VALUES(100,1,5000000000,'.snapshots',1),(101,0,0,NULL,0);"
        "INSERT INTO _hf_zfs_stat VALUES(100,18000000000)");
    const UserHomeFolderSettings *settings = one("anna")->HomeFolderSettings;
    ASSERT_NE(settings, nullptr);
    EXPECT_EQ(text_of(settings),
              "UserId=100 SizeLimit=5000000000 SizeUsed=18000000000 SnapshotProtectionEnabled=1 VisibleSnapshot=1 "
              "VisibleSnapFolder=.snapshots PrevVersions=1");
    for (const char *hidden : {"NULL", "''"}) {
        sql("UPDATE `$home_folder` SET visible_snapdir=" + std::string(hidden) + " WHERE user_id=101");
        settings = one("bob")->HomeFolderSettings;
        ASSERT_NE(settings, nullptr);
        EXPECT_EQ(text_of(settings), "UserId=101 VisibleSnapFolder=''");
    }
    ASSERT_EQ(get(100), 0u);
    ASSERT_NE(user.HomeFolderSettings, nullptr);
    EXPECT_EQ(user.HomeFolderSettings->SizeUsed, 18000000000u);
}

/// The process works in another folder for a while.
struct WorkingDirectory {
    std::string before = std::filesystem::current_path();
    explicit WorkingDirectory(const std::string &path) { std::filesystem::current_path(path); }
    ~WorkingDirectory() { std::filesystem::current_path(before); }
};

TEST_F(UserDetails, TimeMachineAllowanceIsMeasuredOnDisk)
{
    // The folder is named after the volume without a slash before it: it is looked for where the process works.
    const WorkingDirectory here(directory.path);
    make_bundle("tank/.timemachine/anna/laptop.sparsebundle", 8388608, 10);
    sql("INSERT INTO `$timemachine_quota` VALUES(100,1,2000),(101,0,3000)");
    const UserTimeMachineQuota *allowance = one("anna")->TimeMachineQuota;
    ASSERT_NE(allowance, nullptr);
    EXPECT_EQ(text_of(allowance), "UserId=100 Enabled=1 CapacityMB=2000 UsedMB=83");
    allowance = one("bob")->TimeMachineQuota;
    ASSERT_NE(allowance, nullptr);
    EXPECT_EQ(allowance->Enabled, 0);
    EXPECT_EQ(allowance->CapacityMB, 3000);
    EXPECT_EQ(allowance->UsedMB, 0u) << "no backup yet";
    ASSERT_EQ(get(100), 0u);
    ASSERT_NE(user.TimeMachineQuota, nullptr);
    EXPECT_EQ(user.TimeMachineQuota->UsedMB, 83u);

    sql("UPDATE account_default SET home_volume_id='pool2'");
    EXPECT_EQ(one("anna")->TimeMachineQuota->UsedMB, 0u) << "the backup lies on another volume";
    std::filesystem::rename("tank", "pool2");
    EXPECT_EQ(one("anna")->TimeMachineQuota->UsedMB, 83u);
    for (const char *none : {"UPDATE account_default SET home_volume_id=NULL", "DELETE FROM account_default"}) {
        sql(none);
        EXPECT_EQ(one("anna")->TimeMachineQuota->UsedMB, 0u) << none;
    }
}

TEST_F(UserDetails, GetUserReadsOneUser)
{
    ASSERT_EQ(get(100), 0u) << err.message;
    EXPECT_EQ(text_of(user),
              "resource_id=100 UserId=100 UserName=anna GroupName=users HomeDirectory=/home/anna "
              "Email=as@example.com Password=●●●●●●●● IsLocked=1 ShellAccess=1")
        << "one user is read without the full name";
}

TEST_F(UserDetails, GetUserReplacesWhatTheRecordHeld)
{
    sql("INSERT INTO user_quota (user_id,share_id,mb_hard) VALUES(100,1,10);"
        "INSERT INTO `$home_folder` VALUES(100,1,0,'',0); INSERT INTO `$timemachine_quota` VALUES(100,1,1)");
    User next{};
    ASSERT_EQ(get(100), 0u);
    user.next = &next;
    ASSERT_EQ(qbobj_getUser(qbdb, db, &user, &err), 0u);
    EXPECT_EQ(elements(user.UserQuota).size(), 1u) << "read twice, there once";
    EXPECT_EQ(user.next, &next);
    user.resource_id = 101;
    ASSERT_EQ(qbobj_getUser(qbdb, db, &user, &err), 0u);
    EXPECT_EQ(text_of(user),
              "resource_id=101 UserId=101 UserName=bob GroupName=users HomeDirectory='' Email='' Password=''");
}

TEST_F(UserDetails, GetUserRunsItsStatementsInOrderAsTheyStand)
{
    take_statements();
    ASSERT_EQ(get(100), 0u);
    const auto ran = take_statements();
    ASSERT_EQ(ran.size(), 2 + 1 + 1 + 4u);
    EXPECT_EQ(ran[1], "SELECT CASE WHEN S.security='ads' THEN 1 ELSE 0 END FROM service_cifs S LIMIT 1");
    EXPECT_EQ(
        ran[2],
        "SELECT U.id,U.uname,(SELECT G.gname FROM `$group` G WHERE G.id=U.group_id),U.home,U.email,U.passwd,CASE "
        "WHEN U.rid IS NULL THEN 0 ELSE 1 END,U.is_locked,U.group_id,U.shell_access FROM `$user` U WHERE "
        "U.is_privileged<>1 AND U.uname<>'nobody' AND U.uname<>'guest' AND U.group_id<>IFNULL((SELECT id FROM "
        "`$group` G WHERE G.gname='guest'),(SELECT id FROM `$group` G WHERE G.gname='nogroup')) AND U.id=100 ORDER "
        "BY U.uname COLLATE NOCASE");
    EXPECT_EQ(ran[3],
              "SELECT S.zfs_name,Q.mb_hard,QS.mb_used FROM user_quota Q INNER JOIN share S ON S.id=Q.share_id LEFT "
              "JOIN _user_quota_stat QS ON QS.share_id=Q.share_id AND QS.user_id=Q.user_id WHERE Q.user_id=100");
    EXPECT_EQ(ran[4],
              "SELECT H.snapshot_protection_enabled,H.quota,(SELECT S.used FROM `_hf_zfs_stat` S WHERE "
              "S.user_id=H.user_id),H.visible_snapdir,H.prev_versions FROM `$home_folder` H WHERE H.user_id=100");
    EXPECT_EQ(ran[5],
              "SELECT A.home_volume_id || '/.timemachine/' || U.uname FROM account_default A, '$user' U WHERE "
              "U.id=100");
    EXPECT_EQ(ran[6], "SELECT T.enabled,T.capacity_mb FROM '$timemachine_quota' T WHERE T.user_id=100");
}

TEST_F(UserDetails, GetUserFindsByTheseIds)
{
    add_user(-5, "dora", "-7", "rid=500");
    add_user(4005, "dirk", "99", "rid=501");
    uids = {{"dirk", 4005}, {"stranger", 4006}, {"root", 0}};
    struct Case {
        const char *security;
        int no_sync;
        int32_t resource_id;
        int32_t user_id;
        const char *name;
        uint32_t code;
        const char *answer;  // the name, or the message
    };
    const Case cases[] = {
        {"user", 0, 100, 0, nullptr, 0, "anna"},
        {"user", 0, 100, 101, nullptr, 0, "anna"},
        {"user", 0, 0, 101, nullptr, 0, "bob"},
        {"user", 0, -9, 101, nullptr, 0, "bob"},
        {"user", 0, 1, 101, nullptr, 5, "Failed DB Query for user. None of row selected for resource_id=1."},
        {"user", 0, 0, 0, nullptr, 8, "Invalid resouce_id=0."},
        {"user", 0, 0, 0, "dirk", 8, "Invalid resouce_id=0."},
        {"user", 1, 0, 0, "dirk", 8, "Invalid resouce_id=0."},
        {"user", 0, -5, 0, nullptr, 8, "Invalid resouce_id=0."},
        {"user", 0, 0, -5, nullptr, 5, "Invalid resouce_id=-5."},
        {"user", 0, 0, INT32_MIN, nullptr, 5, "Invalid resouce_id=-2147483648."},
        {"user", 0, 4005, 0, nullptr, 0, "dirk"},
        {"ads", 0, 100, 0, nullptr, 0, "anna"},
        {"ads", 0, 0, -5, nullptr, 0, "dora"},
        {"ads", 0, -5, 0, nullptr, 8, "Invalid resouce_id=0."},
        {"ads", 0, 0, 0, "dirk", 8, "Invalid resouce_id=0."},
        {"ads", 1, 0, 0, nullptr, 8, "Invalid resouce_id=0."},
        {"ads", 1, 0, 0, "", 8, "Invalid resouce_id=0."},
        {"ads", 1, 0, 0, "dirk", 0, "dirk"},
        {"ads", 1, 0, 0, "ghost", 832, "Invalid User (resource_id=0, UserName=ghost)."},
        {"ads", 1, -9, 0, "ghost", 832, "Invalid User (resource_id=-9, UserName=ghost)."},
        {"ads", 1, 0, 0, "stranger", 5, "Failed DB Query for user. None of row selected for resource_id=4006."},
        {"ads", 1, 0, 0, "root", 5, "Failed DB Query for user. None of row selected for resource_id=0."},
        {"ads", 1, 0, -5, "dirk", 0, "dora"},
        {"ads", 1, 100, 0, "dirk", 0, "anna"},
        {"user", 0, 555, 0, nullptr, 5, "Failed DB Query for user. None of row selected for resource_id=555."},
    };
    for (const Case &each : cases) {
        SCOPED_TRACE(std::string(each.security) + " " + std::to_string(each.no_sync) + " " +
                     std::to_string(each.resource_id) + " " + std::to_string(each.user_id) + " " + text(each.name));
        sql("UPDATE service_cifs SET security='" + std::string(each.security) +
            "',no_sync_ads=" + std::to_string(each.no_sync));
        if (each.code == 0) {
            EXPECT_EQ(get(each.resource_id, each.user_id, each.name), 0u) << text(err.message);
            EXPECT_STREQ(user.UserName, each.answer);
            continue;
        }
        expect_failure(each.code, each.answer, [&] { return get(each.resource_id, each.user_id, each.name); });
        EXPECT_EQ(user.resource_id, each.resource_id);
        EXPECT_EQ(user.UserId, each.user_id);
        EXPECT_EQ(user.UserName, each.name);
        EXPECT_EQ(user.Password, nullptr);
    }
}

TEST_F(UserDetails, GetUserFindsRemovedUsersButNoSystemAccounts)
{
    add_user(102, "removed", "99", "is_privileged=-1");
    add_user(103, "cloud", "98");
    add_user(104, "system", "99", "is_privileged=1");
    add_user(105, "visitor", "65533");
    add_user(106, "groupless", "NULL");
    sql("UPDATE `$user` SET is_privileged=0,group_id=99 WHERE uname IN ('nobody','guest')");
    EXPECT_EQ(get(102), 0u);
    EXPECT_STREQ(user.UserName, "removed");
    EXPECT_EQ(get(103), 0u);
    EXPECT_STREQ(user.UserName, "cloud");
    for (const int32_t id : {98, 104, 105, 106, 65533, 65534}) EXPECT_EQ(get(id), 5u) << id;
    sql("DELETE FROM `$group` WHERE gname='guest'");
    EXPECT_EQ(get(105), 0u) << "no guest group, so no guest";
    sql("DELETE FROM `$group` WHERE gname='nogroup'");
    EXPECT_EQ(get(100), 5u) << "without either group nobody can be told from a guest";
}

struct SystemUsers : Users {
    SystemUser account{};
    uint32_t get(int32_t resource_id, int32_t user_id = 0)
    {
        account = {};
        account.resource_id = resource_id;
        account.UserId = user_id;
        return qbobj_getSystemUser(qbdb, db, &account, &err);
    }
};

TEST_F(SystemUsers, FindsAnyAccount)
{
    add_user(100, "anna");
    add_user(101, "removed", "99", "is_privileged=-1");
    add_user(-5, "dora", "99", "rid=500");
    uids = {{"dora", 4005}, {"stranger", 4006}, {"below", -77}, {"daemon", 1}};
    struct Case {
        bool directory;
        int32_t resource_id;
        int32_t user_id;
        int32_t id;
        const char *name;
        int32_t posix;
    };
    const Case cases[] = {
        {false, 100, 0, 100, "anna", 100},        {false, 0, 101, 101, "removed", 101},
        {false, 98, 101, 98, "admin", 98},        {false, 65534, 0, 65534, "nobody", 65534},
        {false, 4006, 0, 4006, "stranger", 4006}, {true, 0, -5, -5, "dora", 4005},
        {true, 100, 0, 100, "anna", 100},         {true, 0, -77, -77, "below", -1},
        {false, 1, 100, 1, "daemon", 1},
    };
    for (const Case &each : cases) {
        SCOPED_TRACE(each.name);
        directory_mode(each.directory);
        ASSERT_EQ(get(each.resource_id, each.user_id), 0u) << text(err.message);
        EXPECT_EQ(account.resource_id, each.id);
        EXPECT_EQ(account.UserId, each.id);
        EXPECT_STREQ(account.UserName, each.name);
        EXPECT_EQ(account._PosixId, each.posix);
    }
}

TEST_F(SystemUsers, RunsItsStatementAsItStands)
{
    directory_mode();
    take_statements();
    ASSERT_EQ(get(98), 0u);
    EXPECT_EQ(take_statements()[2],
              "SELECT U.uname FROM `$user` U WHERE U.id=98 OR (1 AND U.id=98 AND U.rid IS NOT NULL)");
}

TEST_F(SystemUsers, Refuses)
{
    expect_failure(8, "Invalid resouce_id=0.", [&] { return get(0); });
    expect_failure(8, "Invalid resouce_id=0.", [&] { return get(-5); });
    expect_failure(5, "Invalid resouce_id=-5.", [&] { return get(0, -5); });
    expect_failure(5, "Failed DB Query for 'SELECT FROM user'. None of row selected for resource_id=4006.",
                   [&] { return get(4006); });
    EXPECT_THAT(logged(2), testing::Contains("None of row selected for resource_id=4006.\n"));
    EXPECT_EQ(account.resource_id, 4006);
    EXPECT_EQ(account.UserId, 0) << "not written";
    fail_statement(1, 1, "injected", "SELECT U.uname");
    expect_failure(5, "Failed DB Query for 'SELECT FROM user'. injected", [&] { return get(98); });
    fail_statement(1, 1, "injected", "service_cifs");
    expect_failure(5, "Failed DB Query 'SELECT service_cifs'. (injected)", [&] { return get(98); });
    EXPECT_EQ(account.UserName, nullptr);
}

using UserDetailsDeathTest = UserDetails;

TEST_F(UserDetailsDeathTest, NeedsARecord)
{
    EXPECT_DEATH(qbobj_getUser(qbdb, db, nullptr, &err), "Assertion `user' failed");
    EXPECT_DEATH(qbobj_getSystemUser(qbdb, db, nullptr, &err), "Assertion `user' failed");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
