// Members of groups, cloud users, and the look-ups of ids and names.
#include "users/users.h"

using namespace test;

namespace {

constexpr uint32_t kNothing = 0xFFFFFFFF;

struct Members : Users {
    Members()
    {
        sql("INSERT INTO `$group` (id,gname) VALUES(100,'staff'),(101,'chess')");
        add_user(100, "anna", "100");
        add_user(101, "Bob");
        add_user(102, "carl", "98");
        add_user(103, "Dora", "98", "rid=500");
        add_user(104, "removed", "100", "is_privileged=-1");
        add_user(105, "system", "100", "is_privileged=1");
        sql("UPDATE `$user` SET is_privileged=0,group_id=100 WHERE uname IN ('nobody','guest')");
    }

    uint32_t members(const char *group, int32_t primary_only)
    {
        users = {};
        return qbobj_getUserInGroupName(qbdb, db, group, primary_only, &users, &err);
    }
};

TEST_F(Members, CloudUsersAreTheOrdinaryUsersOfTheAdministratorsGroup)
{
    users.Entries = users.TotalEntries = -1;
    take_statements();
    ASSERT_EQ(qbobj_getCloudUser(qbdb, db, &users, &err), 0u);
    EXPECT_EQ(
        take_statements()[1],
        "SELECT U.id,U.uname FROM `$user` U WHERE U.is_privileged<>1 AND U.uname<>'nobody' AND U.uname<>'guest' AND "
        "U.group_id=98 ORDER BY U.uname COLLATE NOCASE");
    EXPECT_THAT(names(), ElementsAre("carl", "Dora"));
    EXPECT_EQ(users.User->resource_id, 102);
    EXPECT_EQ(users.User->UserId, 102);
    EXPECT_EQ(users.User->Password, nullptr) << "only ids and names are read";
    EXPECT_EQ(users.Entries, -1) << "the counts are left alone";
    EXPECT_EQ(users.TotalEntries, -1);
    fail_statement(1);
    expect_failure(5, "Failed DB Query for user. injected", [&] { return qbobj_getCloudUser(qbdb, db, &users, &err); });
    EXPECT_THAT(names(), ElementsAre("carl", "Dora")) << "nothing was added";
}

TEST_F(Members, CloudUsersIncludeRemovedOnes)
{
    sql("UPDATE `$user` SET is_privileged=-1 WHERE uname='carl'");
    ASSERT_EQ(qbobj_getCloudUser(qbdb, db, &users, &err), 0u);
    EXPECT_THAT(names(), ElementsAre("carl", "Dora"));
}

TEST_F(Members, PrimaryMembers)
{
    sql("INSERT INTO `$group_has_user` (user_id,group_id) VALUES(101,100)");
    take_statements();
    ASSERT_EQ(members("staff", 1), 0u);
    EXPECT_EQ(
        take_statements()[1],
        "SELECT U.id,U.uname FROM `$user` U WHERE U.is_privileged<>1 AND U.uname<>'nobody' AND U.uname<>'guest' AND "
        "U.group_id=(SELECT G.id FROM `$group` G WHERE G.gname='staff') ORDER BY U.uname COLLATE NOCASE");
    EXPECT_THAT(names(), ElementsAre("anna", "removed"));
    ASSERT_EQ(members(nullptr, -1), 0u);
    EXPECT_THAT(names(), ElementsAre("carl", "Dora")) << "no name stands for admin";
    ASSERT_EQ(members("nowhere", 1), 0u);
    EXPECT_THAT(names(), IsEmpty());
    ASSERT_EQ(members("it's", 1), 0u);
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(Members, SecondaryMembersToo)
{
    sql("INSERT INTO `$group_has_user` (user_id,group_id) VALUES(101,100),(105,100)");
    take_statements();
    ASSERT_EQ(members("staff", 0), 0u);
    EXPECT_EQ(
        take_statements()[1],
        "SELECT U.id,U.uname FROM `$user` U LEFT JOIN `$group_has_user` GU ON GU.user_id=U.id WHERE "
        "U.is_privileged<>1 AND U.uname<>'nobody' AND U.uname<>'guest' AND (U.group_id=(SELECT G1.id FROM `$group` "
        "G1 WHERE G1.gname='staff')OR GU.group_id=(SELECT G2.id FROM `$group` G2 WHERE G2.gname='staff')) ORDER BY "
        "U.uname COLLATE NOCASE");
    EXPECT_THAT(names(), ElementsAre("anna", "Bob", "removed"));
    ASSERT_EQ(members(nullptr, 0), 0u);
    EXPECT_THAT(names(), IsEmpty()) << "here no name is no group";
}

TEST_F(Members, APrimaryMemberComesOnceForEachSecondaryMembership)
{
    sql("INSERT INTO `$group_has_user` (user_id,group_id) VALUES(100,100)");
    ASSERT_EQ(members("staff", 0), 0u);
    EXPECT_THAT(names(), ElementsAre("anna", "removed"));
    sql("INSERT INTO `$group_has_user` (user_id,group_id) VALUES(100,101)");
    ASSERT_EQ(members("staff", 0), 0u);
    EXPECT_THAT(names(), ElementsAre("anna", "anna", "removed"));
    ASSERT_EQ(members("chess", 0), 0u);
    EXPECT_THAT(names(), ElementsAre("anna"));
}

TEST_F(Members, TraceTheNumberOfRows)
{
    qbdb->log_level = 5;
    ASSERT_EQ(qbobj_getCloudUser(qbdb, db, &users, &err), 0u);
    EXPECT_THAT(logged(5), testing::Contains("x_qbobj_getCloudUser() rc=0 nrow=2\n"));
    ASSERT_EQ(members("staff", 1), 0u);
    EXPECT_THAT(logged(5), testing::Contains("x_qbobj_getUserInGroupName() rc=0 nrow=2\n"));
}

TEST_F(Members, AreAppendedToAListThatIsNotEmpty)
{
    User first{};
    first.UserName = "first";
    users.User = &first;
    ASSERT_EQ(qbobj_getCloudUser(qbdb, db, &users, &err), 0u);
    ASSERT_EQ(qbobj_getUserInGroupName(qbdb, db, "staff", 1, &users, &err), 0u);
    EXPECT_THAT(names(), ElementsAre("first", "carl", "Dora", "anna", "removed"));
}

struct Lookups : Users {
    Lookups()
    {
        add_user(100, "anna");
        add_user(101, "removed", "99", "is_privileged=-1");
        add_user(102, "groupless", "NULL");
        sql("INSERT INTO `$group` (id,gname,rid) VALUES(-7,'domain users',513),(-8,'lost',514)");
        add_user(-5, "dora", "-7", "rid=500");
        add_user(-6, "ghost", "-7", "rid=501");
        add_user(-9, "lone", "-8", "rid=502");
        add_user(-1, "one", "-7", "rid=503");
        uids = {{"dora", 4005}, {"stranger", 4006}, {"lone", 4009}, {"one", 4001}};
        gids = {{"domain users", 4107}};
    }

    void expect_quiet() const
    {
        EXPECT_EQ(err.code, 0u);
        EXPECT_EQ(err.message, nullptr);
    }
};

TEST_F(Lookups, UserIdByName)
{
    struct Case {
        bool directory;
        const char *name;
        uint32_t rc;
        int32_t id;
    };
    const Case cases[] = {
        {false, "anna", 0, 100},
        {false, "removed", 0, 101},
        {false, "admin", 0, 98},
        {false, "root", 0, 0},
        {false, nullptr, 0, 65533},
        {false, "dora", kNothing, -1},
        {false, "nobody here", kNothing, -1},
        {false, "", kNothing, -1},
        {false, "ANNA", kNothing, -1},
        {false, "anna' OR '1", kNothing, -1},
        {true, "dora", 0, -5},
        {true, "one", 0, -1},
        {true, "anna", kNothing, -1},
        {true, "removed", kNothing, -1},
        {true, "admin", 0, 98},
        {true, nullptr, 0, 65533},
        {true, "stranger", kNothing, -1},
    };
    for (const Case &each : cases) {
        directory_mode(each.directory);
        int32_t id = 12345;
        EXPECT_EQ(qbobj_getUID(qbdb, db, each.name, &id, &err), each.rc) << text(each.name);
        EXPECT_EQ(id, each.id) << text(each.name);
        expect_quiet();
    }
    sql("DELETE FROM `$user` WHERE uname='guest'");
    int32_t id = 12345;
    EXPECT_EQ(qbobj_getUID(qbdb, db, nullptr, &id, &err), kNothing);
    EXPECT_EQ(id, -1);
}

TEST_F(Lookups, UserIdByNameRunsItsStatementAsItStands)
{
    struct Case {
        bool directory;
        const char *name;
        const char *statement;
    };
    for (const Case &each :
         {Case{false, "anna",
               "SELECT U.id FROM `$user` U WHERE U.uname='anna' AND (U.rid IS NULL OR U.is_privileged=1)"},
          Case{true, "anna",
               "SELECT U.id FROM `$user` U WHERE U.uname='anna' AND (U.rid IS NOT NULL OR U.is_privileged=1)"},
          Case{true, nullptr, "SELECT U.id FROM `$user` U WHERE U.uname='guest' AND U.rid IS NULL"}}) {
        directory_mode(each.directory);
        take_statements();
        int32_t id = 0;
        qbobj_getUID(qbdb, db, each.name, &id, &err);
        EXPECT_THAT(take_statements(), testing::Contains(each.statement));
    }
}

TEST_F(Lookups, AFailedLookUpIsLoggedAsNobodysError)
{
    sql("DROP TABLE service_cifs");
    int32_t id = 0;
    log.clear();
    EXPECT_EQ(qbobj_getUID(qbdb, db, "anna", &id, &err), kNothing);
    EXPECT_EQ(err.code, 0u);
    EXPECT_THAT(logged(2), ElementsAre("Failed DB Query 'SELECT service_cifs'. (no such table: service_cifs)\n"));
    EXPECT_EQ(log[0].flag, 0u);
}

TEST_F(Lookups, AFailedStatementFindsNothing)
{
    for (const char *part : {"service_cifs", "SELECT U.id"}) {
        int32_t id = 12345;
        log.clear();
        fail_statement(1, 1, "injected", part);
        EXPECT_EQ(qbobj_getUID(qbdb, db, "anna", &id, &err), kNothing);
        EXPECT_EQ(id, -1);
        expect_quiet();
        EXPECT_THAT(logged(2), testing::Contains(HasSubstr("injected")));
        fail_statement(1, 1, "injected", part);
        EXPECT_EQ(qbobj_getPosixUID(qbdb, db, "anna", &err), kNothing);
        expect_quiet();
    }
    for (const char *part : {"service_cifs", "SELECT U.id", "SELECT U.group_id"}) {
        int32_t uid = 12345;
        int32_t gid = 12345;
        fail_statement(1, 1, "injected", part);
        EXPECT_EQ(qbobj_getPosixUIDGID(qbdb, db, "anna", &uid, &gid, &err), kNothing) << part;
        expect_quiet();
        EXPECT_EQ(uid, 12345) << "not written";
        EXPECT_EQ(gid, 12345) << "not written";
    }
    for (const char *part : {"gname='guest'", "gname='nogroup'"}) {
        int32_t uid = 12345;
        int32_t gid = 12345;
        if (std::string(part) == "gname='nogroup'") sql("DELETE FROM `$group` WHERE gname='guest'");
        fail_statement(1, 1, "injected", part);
        EXPECT_EQ(qbobj_getPosixUIDGID(qbdb, db, nullptr, &uid, &gid, &err), kNothing) << part;
        EXPECT_EQ(gid, 12345);
    }
}

TEST_F(Lookups, PosixUidByName)
{
    struct Case {
        bool directory;
        const char *name;
        uint32_t uid;
    };
    const Case cases[] = {
        {false, "anna", 100},      {false, "root", 0},      {false, nullptr, 65533}, {false, "stranger", kNothing},
        {false, "dora", kNothing}, {true, "dora", 4005},    {true, "one", 4001},     {true, "stranger", 4006},
        {true, "ghost", kNothing}, {true, "nobody", 65534}, {true, nullptr, 65533},  {true, "unknown", kNothing},
        {true, "anna", kNothing},
    };
    for (const Case &each : cases) {
        directory_mode(each.directory);
        EXPECT_EQ(qbobj_getPosixUID(qbdb, db, each.name, &err), each.uid) << each.directory << text(each.name);
        expect_quiet();
    }
    sql("DELETE FROM `$user` WHERE uname='guest'");
    EXPECT_EQ(qbobj_getPosixUID(qbdb, db, nullptr, &err), kNothing) << "the directory is not asked for no name";
}

TEST_F(Lookups, PosixUidByNameAsksTheDirectoryWhenTheDatabaseDoesNotAnswer)
{
    directory_mode();
    fail_statement(1, 1, "injected", "SELECT U.id");
    EXPECT_EQ(qbobj_getPosixUID(qbdb, db, "dora", &err), 4005u);
    expect_quiet();
}

TEST_F(Lookups, PosixUidById)
{
    struct Case {
        int32_t id;
        uint32_t uid;
    };
    for (const Case &each : {Case{0, 0}, Case{8, 8}, Case{77777, 77777}, Case{INT32_MAX, INT32_MAX}, Case{-5, 4005},
                             Case{-1, 4001}, Case{-6, kNothing}, Case{-1000, kNothing}, Case{INT32_MIN, kNothing}}) {
        EXPECT_EQ(qbobj_getPosixUIDbyUID(qbdb, db, each.id, &err), each.uid) << each.id;
        expect_quiet();
    }
}

TEST_F(Lookups, PosixUidAndGid)
{
    struct Case {
        bool directory;
        const char *name;
        uint32_t rc;
        int32_t uid;
        int32_t gid;
    };
    const Case cases[] = {
        {false, "anna", 0, 100, 99},         {false, "root", 0, 0, 98},
        {false, nullptr, 0, 65533, 65533},   {false, "unknown", kNothing, 7, 7},
        {false, "stranger", kNothing, 7, 7}, {false, "groupless", kNothing, 7, 7},  // not group 0, which is root's
        {false, "dora", kNothing, 7, 7},     {true, "dora", 0, 4005, 4107},
        {true, "ghost", kNothing, 7, 7},  // no uid
        {true, "lone", kNothing, 7, 7},   // no gid
        {true, "admin", 0, 98, 98},          {true, nullptr, 0, 65533, 65533},
    };
    for (const Case &each : cases) {
        directory_mode(each.directory);
        int32_t uid = 7;
        int32_t gid = 7;
        EXPECT_EQ(qbobj_getPosixUIDGID(qbdb, db, each.name, &uid, &gid, &err), each.rc) << text(each.name);
        EXPECT_EQ(uid, each.uid) << text(each.name);
        EXPECT_EQ(gid, each.gid) << text(each.name);
        expect_quiet();
    }
}

TEST_F(Lookups, NoNameFallsBackToNogroup)
{
    sql("DELETE FROM `$group` WHERE gname='guest'");
    int32_t uid = 7;
    int32_t gid = 7;
    EXPECT_EQ(qbobj_getPosixUIDGID(qbdb, db, nullptr, &uid, &gid, &err), 0u);
    EXPECT_EQ(uid, 65533);
    EXPECT_EQ(gid, 65534);
    sql("UPDATE `$group` SET rid=1 WHERE gname='nogroup'");
    EXPECT_EQ(qbobj_getPosixUIDGID(qbdb, db, nullptr, &uid, &gid, &err), kNothing);
}

TEST_F(Lookups, UserName)
{
    struct Case {
        int32_t id;
        const char *name;
    };
    for (const Case &each : {Case{100, "anna"}, Case{101, "removed"}, Case{-5, "dora"}, Case{0, "root"},
                             Case{555, "555"}, Case{INT32_MAX, "2147483647"}, Case{-555, ""}}) {
        const char *name = nullptr;
        EXPECT_EQ(qbobj_getUserName(qbdb, db, each.id, &name, &err), 0u);
        EXPECT_STREQ(name, each.name);
        expect_quiet();
    }
    const char *name = nullptr;
    fail_statement(1);
    EXPECT_EQ(qbobj_getUserName(qbdb, db, 100, &name, &err), kNothing);
    EXPECT_STREQ(name, "");
    expect_quiet();
}

TEST_F(Lookups, HomeFoldersTogether)
{
    uint64_t bytes = 12345;
    ASSERT_EQ(qbobj_getUserHomeFolderTotalConsumedInByte(qbdb, db, &bytes, &err), 0u);
    EXPECT_EQ(bytes, 0u) << "nothing measured";
    sql("INSERT INTO _hf_zfs_stat VALUES(100,5000000000),(101,NULL)");
    const auto measure = [](void *, qbdb_t *, sqlite3 *connection, int selector) {
        EXPECT_EQ(selector, QBDB_IMPORT_HOME_FOLDERS);
        return sqlite3_exec(connection, "INSERT OR REPLACE INTO _hf_zfs_stat VALUES(102,7)", nullptr, nullptr, nullptr);
    };
    qbdb_set_import_hook(qbdb, measure, nullptr);
    ASSERT_EQ(qbobj_getUserHomeFolderTotalConsumedInByte(qbdb, db, &bytes, &err), 0u);
    EXPECT_EQ(bytes, 5000000007u) << "what the import brought counts";
    EXPECT_EQ(value("SELECT used FROM _hf_zfs_stat WHERE user_id=102"), "7") << "and stays";
}

TEST_F(Lookups, HomeFoldersThatCannotBeMeasured)
{
    uint64_t bytes = 12345;
    qbdb_set_import_hook(
        qbdb, [](void *, qbdb_t *, sqlite3 *, int) { return 1; }, nullptr);
    EXPECT_EQ(qbobj_getUserHomeFolderTotalConsumedInByte(qbdb, db, &bytes, &err), 5u);
    EXPECT_THAT(logged(2), testing::Contains("x_qbobj_getUserHomeFolderTotalConsumedInByte: Failed to call "
                                             "qbdb_hf_stats_import()!\n"));
    expect_quiet();
    qbdb_set_import_hook(qbdb, nullptr, nullptr);
    fail_statement(1, 1, "injected", "SELECT SUM(used) FROM `_hf_zfs_stat`");
    EXPECT_EQ(qbobj_getUserHomeFolderTotalConsumedInByte(qbdb, db, &bytes, &err), 5u);
    EXPECT_THAT(logged(2), testing::Contains("x_qbobj_getUserHomeFolderTotalConsumedInByte: Failed to select sum(used) "
                                             "from `_hf_zfs_stat`!\n"));
    expect_quiet();
    EXPECT_EQ(bytes, 12345u) << "not written";
}

using LookupsDeathTest = Lookups;

TEST_F(LookupsDeathTest, NeedSomewhereToPutTheAnswer)
{
    int32_t id = 0;
    EXPECT_DEATH(qbobj_getUID(qbdb, db, "anna", nullptr, &err), "Assertion `id' failed");
    EXPECT_DEATH(qbobj_getUserName(qbdb, db, 100, nullptr, &err), "Assertion `name' failed");
    EXPECT_DEATH(qbobj_getPosixUIDGID(qbdb, db, "anna", nullptr, &id, &err), "Assertion `uid' failed");
    EXPECT_DEATH(qbobj_getPosixUIDGID(qbdb, db, "anna", &id, nullptr, &err), "Assertion `gid' failed");
    EXPECT_DEATH(qbobj_getUserHomeFolderTotalConsumedInByte(qbdb, db, nullptr, &err), "Assertion `bytes' failed");
    EXPECT_DEATH(qbobj_getCloudUser(qbdb, db, nullptr, &err), "Assertion `users' failed");
    EXPECT_DEATH(qbobj_getUserInGroupName(qbdb, db, "staff", 0, nullptr, &err), "Assertion `users' failed");
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
