// Ids, names, memberships.
#include "groups.h"

using test::kNothing;

namespace {

struct GroupLookup : test::GroupDatabase {
    int32_t id = 77;
    uint32_t gid(const char *name) { return qbobj_getGID(qbdb, db, name, &id, &err); }
    uint32_t primary(const char *name) { return qbobj_getPrimaryGID(qbdb, db, name, &id, &err); }
    uint32_t posix(const char *name) { return qbobj_getPosixGID(qbdb, db, name, &err); }
    uint32_t is_member(const char *user, const char *group)
    {
        return qbobj_isMemberOfGroup(qbdb, db, user, group, &err);
    }

    void expect_nothing(uint32_t rc)
    {
        EXPECT_EQ(rc, kNothing);
        EXPECT_EQ(id, -1);
        EXPECT_EQ(err.code, 0u);
        EXPECT_EQ(err.message, nullptr);
    }

    void expect_id(uint32_t rc, int32_t expected)
    {
        EXPECT_EQ(rc, 0u);
        EXPECT_EQ(id, expected);
        EXPECT_EQ(err.code, 0u);
    }
};

TEST_F(GroupLookup, FindsLocalAndPrivilegedGroups)
{
    expect_id(gid("staff"), 100);
    expect_id(gid("users"), 99);
    expect_id(gid("admin"), 98);
    expect_nothing(gid("Staff"));
    expect_nothing(gid("DOM\\sales"));
    expect_nothing(gid("o'brien"));
    expect_nothing(gid(""));
}

TEST_F(GroupLookup, DirectoryModeDoesNotChangeTheGroupLookup)
{
    switch_to_directory();
    expect_id(gid("staff"), 100);
    expect_nothing(gid("DOM\\sales"));
    sql("UPDATE `$group` SET is_privileged=1 WHERE id=-7");
    expect_id(gid("DOM\\sales"), -7);
}

TEST_F(GroupLookup, RemovedGroupsAreStillFound)
{
    sql("UPDATE `$group` SET is_privileged=-1 WHERE id=100");
    expect_id(gid("staff"), 100);
}

TEST_F(GroupLookup, NoNameStandsForTheGuestGroupOrElseNogroup)
{
    expect_id(gid(nullptr), 65533);
    expect_id(primary(nullptr), 65533);
    EXPECT_EQ(posix(nullptr), 65533u);
    sql("UPDATE `$group` SET rid=5 WHERE gname='guest'");
    expect_id(gid(nullptr), 65534);
    sql("DELETE FROM `$group` WHERE gname='guest'");
    expect_id(gid(nullptr), 65534);
    expect_id(primary(nullptr), 65534);
    EXPECT_EQ(posix(nullptr), 65534u);
    sql("DELETE FROM `$group` WHERE gname='nogroup'");
    expect_nothing(gid(nullptr));
    expect_nothing(primary(nullptr));
    EXPECT_EQ(posix(nullptr), kNothing);
    switch_to_directory();
    EXPECT_EQ(posix(nullptr), kNothing);
}

TEST_F(GroupLookup, PrimaryGroupOfAUser)
{
    expect_id(primary("anna"), 99);
    expect_id(primary("admin"), 98);
    expect_nothing(primary("nobody-of-that-name"));
    sql("UPDATE `$user` SET group_id=-7 WHERE uname='anna'");
    expect_id(primary("anna"), -7);
    sql("UPDATE `$user` SET group_id=NULL WHERE uname='anna'");
    expect_nothing(primary("anna"));
}

TEST_F(GroupLookup, FailedStatementsFindNothing)
{
    struct Case {
        const char *part;
        std::function<uint32_t()> call;
    };
    const Case cases[] = {
        {"gname='staff'", [&] { return gid("staff"); }},
        {"gname='guest'", [&] { return gid(nullptr); }},
        {"SELECT U.group_id", [&] { return primary("anna"); }},
    };
    for (const Case &one : cases) {
        SCOPED_TRACE(one.part);
        id = 77;
        log.clear();
        fail_statement(1, SQLITE_IOERR, "injected", one.part);
        expect_nothing(one.call());
        EXPECT_EQ(logged(2).size(), 1u);
        EXPECT_TRUE(sqlite3_get_autocommit(db));
    }
    sql("DELETE FROM `$group` WHERE gname='guest'");
    fail_statement(1, SQLITE_IOERR, "injected", "gname='nogroup'");
    expect_nothing(gid(nullptr));
}

TEST_F(GroupLookup, PosixIdOfAName)
{
    EXPECT_EQ(posix("staff"), 100u);
    EXPECT_EQ(posix("DOM\\unsynchronised"), kNothing);  // the directory is asked in directory mode only
    switch_to_directory();
    EXPECT_EQ(posix("staff"), 100u);
    EXPECT_EQ(posix("DOM\\unsynchronised"), 70008u);
    EXPECT_EQ(posix("DOM\\unknown"), kNothing);
    sql("UPDATE `$group` SET is_privileged=1 WHERE id=-7");
    EXPECT_EQ(posix("DOM\\sales"), 70007u);
    EXPECT_EQ(err.code, 0u);
    fail_statement(1, SQLITE_IOERR, "injected", "service_cifs");
    EXPECT_EQ(posix("DOM\\unsynchronised"), kNothing);
    EXPECT_EQ(err.code, 0u);
}

TEST_F(GroupLookup, TheDirectoryMayAnswerWithTheIdZero)
{
    switch_to_directory();
    const qbdb_directory_hooks hooks{nullptr, nullptr, [](void *, const char *) { return 0; }, nullptr, nullptr};
    qbdb_set_directory_hooks(qbdb, &hooks);
    EXPECT_EQ(posix("DOM\\root"), 0u);
}

TEST_F(GroupLookup, PosixIdOfAnId)
{
    EXPECT_EQ(qbobj_getPosixGIDbyGID(qbdb, db, 0, &err), 0u);
    EXPECT_EQ(qbobj_getPosixGIDbyGID(qbdb, db, 31000, &err), 31000u);  // whether there is such a group or not
    EXPECT_EQ(qbobj_getPosixGIDbyGID(qbdb, db, -7, &err), 70007u);
    EXPECT_EQ(qbobj_getPosixGIDbyGID(qbdb, db, -8, &err), kNothing);
    EXPECT_EQ(err.code, 0u);
}

TEST_F(GroupLookup, AnIdIsTracedAsTheValueThatItIs)
{
    qbdb->log_level = 4;
    posix("staff");
    EXPECT_THAT(logged(4),
                testing::ElementsAre(">>>> qbobj_getPosixGID()\n", "<<<< qbobj_getPosixGID() ==> rc=100 (0ms)\n"));
    log.clear();
    posix("nothing");
    EXPECT_THAT(logged(4), testing::Contains("<<<< qbobj_getPosixGID() ==> rc=-1 (0ms)\n"));
}

TEST_F(GroupLookup, GroupName)
{
    struct Case {
        int32_t id;
        const char *name;
    };
    const Case cases[] = {{100, "staff"}, {98, "admin"}, {-7, "DOM\\sales"}, {31000, "31000"}, {0, "0"}, {-8, ""}};
    for (const Case &one : cases) {
        const char *name = nullptr;
        EXPECT_EQ(qbobj_getGroupName(qbdb, db, one.id, &name, &err), 0u);
        EXPECT_STREQ(name, one.name);
        EXPECT_EQ(err.code, 0u);
    }
    const char *name = nullptr;
    fail_statement(1);
    EXPECT_EQ(qbobj_getGroupName(qbdb, db, 100, &name, &err), kNothing);
    EXPECT_STREQ(name, "");
    EXPECT_EQ(err.code, 0u);
}

TEST_F(GroupLookup, Membership)
{
    sql("INSERT INTO `$group_has_user`(user_id,group_id) VALUES(102,100)");
    EXPECT_EQ(is_member("anna", "users"), 0u);  // primary, without a row of its own
    EXPECT_EQ(is_member("anna", "staff"), 1u);
    EXPECT_EQ(err.code, 0u);
    EXPECT_EQ(is_member("Bert", "staff"), 0u);
    EXPECT_EQ(is_member("Bert", "users"), 0u);
    EXPECT_EQ(is_member("bert", "staff"), 1u);
    EXPECT_EQ(is_member("nobody-of-that-name", "staff"), 1u);
    EXPECT_EQ(is_member("anna", "no-such-group"), 1u);
    EXPECT_EQ(is_member(nullptr, "users"), 1u);
    EXPECT_EQ(is_member("anna", nullptr), 1u);
    EXPECT_EQ(is_member("x' OR '1'='1", "users"), 1u);
}

TEST_F(GroupLookup, MembershipThatCannotBeRead)
{
    for (const char *part : {"G.id=U.group_id", "GU.user_id=U.id"}) {
        SCOPED_TRACE(part);
        fail_statement(1, SQLITE_IOERR, "injected", part);
        EXPECT_EQ(is_member("anna", "staff"), kNothing);
        EXPECT_EQ(err.code, 0u);
        EXPECT_TRUE(sqlite3_get_autocommit(db));
    }
}

TEST_F(GroupLookup, TheSecondaryMembershipIsAskedOnlyWhenNeeded)
{
    take_statements();
    is_member("anna", "users");
    EXPECT_EQ(take_statements().size(), 3u);  // with BEGIN and its end
    is_member("anna", "staff");
    EXPECT_EQ(take_statements().size(), 4u);
}

struct SystemGroupLookup : test::GroupDatabase {
    SystemGroup group{};
    uint32_t get() { return qbobj_getSystemGroup(qbdb, db, &group, &err); }
};

TEST_F(SystemGroupLookup, AnyGroupById)
{
    struct Case {
        int32_t id;
        const char *name;
        int32_t posix;
    };
    const Case local[] = {{100, "staff", 100}, {98, "admin", 98}, {65534, "nogroup", 65534}};
    for (const Case &one : local) {
        group = {nullptr, one.id, 0, nullptr, 0};
        ASSERT_EQ(get(), 0u) << err.message;
        EXPECT_STREQ(group.GroupName, one.name);
        EXPECT_EQ(group.resource_id, one.id);
        EXPECT_EQ(group.GroupId, one.id);
        EXPECT_EQ(group._PosixId, one.posix);
    }
}

TEST_F(SystemGroupLookup, TheOwnIdCountsWhenTheAddressIsBelowOne)
{
    group = {nullptr, -1, 100, nullptr, 0};
    ASSERT_EQ(get(), 0u) << err.message;
    EXPECT_STREQ(group.GroupName, "staff");
    EXPECT_EQ(group.resource_id, 100);
    group = {nullptr, 98, 100, nullptr, 0};
    ASSERT_EQ(get(), 0u) << err.message;
    EXPECT_STREQ(group.GroupName, "admin");
    EXPECT_EQ(group.GroupId, 98);
}

TEST_F(SystemGroupLookup, DomainGroupsHaveNegativeIdsInDirectoryModeOnly)
{
    group.GroupId = -7;
    expect_failure(5, "Invalid resouce_id=-7.", [&] { return get(); });
    switch_to_directory();
    ASSERT_EQ(get(), 0u) << err.message;
    EXPECT_STREQ(group.GroupName, "DOM\\sales");
    EXPECT_EQ(group._PosixId, 70007);
}

TEST_F(SystemGroupLookup, TheDirectoryNamesWhatIsNotInTheDatabase)
{
    group.resource_id = 70008;
    ASSERT_EQ(get(), 0u) << err.message;
    EXPECT_STREQ(group.GroupName, "DOM\\unsynchronised");
    EXPECT_EQ(group.GroupId, 70008);
    EXPECT_EQ(group._PosixId, 70008);
}

TEST_F(SystemGroupLookup, Failures)
{
    expect_failure(8, "Invalid resouce_id=0.", [&] { return get(); });
    group = {nullptr, 0, 70009, "kept", 5};
    expect_failure(5, "Failed DB Query for 'SELECT FROM group'. None of row selected for resource_id=70009.",
                   [&] { return get(); });
    EXPECT_THAT(logged(2), testing::Contains("None of row selected for resource_id=70009.\n"));
    EXPECT_STREQ(group.GroupName, "kept");
    EXPECT_EQ(group.resource_id, 0);
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
