// Look-ups: users, groups, keys, the name map, a few settings; the name service and its hooks.
#include <grp.h>
#include <pwd.h>

#include <cstring>

#include "directory.h"
#include "fixture/fixture.h"

using testing::ElementsAre;

namespace {

struct Lookups : test::Database {
    Lookups()
    {
        sql("INSERT INTO `$user`(id,uname,rid) VALUES(-5,'daemon',7),(-6,'no.such.account',8),(-7,'',9);"
            "INSERT INTO `$group`(id,gname,rid) VALUES(-5,'daemon',7),(-6,'no.such.group',8)");
    }
    int32_t uid(int32_t id) { return qbdb_util_get_posix_uid(qbdb, db, id); }
    int32_t gid(int32_t id) { return qbdb_util_get_posix_gid(qbdb, db, id); }
    std::string user(int32_t id) { return name(qbdb_util_get_domain_uname_by_uid, id); }
    std::string group(int32_t id) { return name(qbdb_util_get_domain_gname_by_gid, id); }

    std::string name(int (*get)(qbdb_t *, sqlite3 *, int32_t, const char **), int32_t id)
    {
        const char *found = reinterpret_cast<const char *>(1);
        const int rc = get(qbdb, db, id, &found);
        EXPECT_EQ(rc == 0, found != nullptr);
        return found ? found : "(none)";
    }
};

TEST_F(Lookups, ALocalIdIsItsPosixId)
{
    for (const int32_t id : {0, 1, 98, 4711, INT32_MAX}) {
        EXPECT_EQ(uid(id), id);
        EXPECT_EQ(gid(id), id);
    }
    EXPECT_THAT(take_statements(), testing::IsEmpty());
}

TEST_F(Lookups, ADirectoryIdIsAskedByName)
{
    EXPECT_EQ(uid(-5), 1);
    EXPECT_EQ(gid(-5), 1);
    EXPECT_THAT(take_statements(),
                ElementsAre("SELECT uname FROM `$user` WHERE id=-5", "SELECT gname FROM `$group` WHERE id=-5"));
    for (const int32_t id : {-1, -6, -7, INT32_MIN}) {
        EXPECT_LT(uid(id), 0) << id;
        EXPECT_LT(gid(id), 0) << id;
    }
    fail_statement(1, 10);
    EXPECT_LT(uid(-5), 0);
    fail_statement(1, 10);
    EXPECT_LT(gid(-5), 0);
}

TEST_F(Lookups, TheNameServiceKnowsRoot)
{
    int32_t out = 77;
    EXPECT_EQ(qbdb_util_get_posix_uid_by_name(qbdb, db, "root", &out), 0);
    EXPECT_EQ(out, 0);
    out = 77;
    EXPECT_EQ(qbdb_util_get_posix_gid_by_name(qbdb, db, "root", &out), 0);
    EXPECT_EQ(out, 0);
    EXPECT_EQ(qbdb_util_get_posix_uid_by_name(qbdb, db, "daemon", nullptr), 1);
    EXPECT_EQ(qbdb_util_get_posix_gid_by_name(qbdb, db, "daemon", nullptr), 1);
    EXPECT_EQ(user(0), "root");
    EXPECT_EQ(group(0), "root");
    EXPECT_EQ(user(1), "daemon");
}

TEST_F(Lookups, TheNameServiceDoesNotKnowOthers)
{
    for (const char *name : {static_cast<const char *>(nullptr), "", "no.such.account", "root\n"}) {
        int32_t out = 77;
        EXPECT_LT(qbdb_util_get_posix_uid_by_name(qbdb, db, name, &out), 0);
        EXPECT_EQ(out, -1);
        out = 77;
        EXPECT_LT(qbdb_util_get_posix_gid_by_name(qbdb, db, name, &out), 0);
        EXPECT_EQ(out, -1);
    }
    for (const int32_t id : {-1, -5, 1234567}) {
        EXPECT_EQ(user(id), "(none)");
        EXPECT_EQ(group(id), "(none)");
    }
}

const qbdb_directory_hooks kHooks = {
    reinterpret_cast<void *>(7),
    [](void *context, const char *name) -> int32_t { return context && !strcmp(name, "anna") ? 5001 : -22; },
    [](void *context, const char *name) -> int32_t { return context && !strcmp(name, "staff") ? 6001 : -22; },
    [](void *context, int32_t uid, char *name, size_t size) -> int {
        if (uid == 1) memset(name, 'x', size);  // without an end
        if (uid == 2) return 0;                 // says found, gives nothing
        if (uid == -9) snprintf(name, size, "negative");
        if (uid == 5001) snprintf(name, size, "anna%d", context != nullptr);
        return uid == 5001 || uid == 1 || uid == -9 ? 0 : 3;
    },
    [](void *, int32_t gid, char *name, size_t size) -> int {
        snprintf(name, size, "staff");
        return gid == 6001 ? 0 : -3;
    },
};

TEST_F(Lookups, HooksTakeTheNameServicesPlace)
{
    sql("UPDATE `$user` SET uname='anna' WHERE id=-5; UPDATE `$group` SET gname='staff' WHERE id=-5");
    qbdb_set_directory_hooks(qbdb, &kHooks);
    EXPECT_EQ(uid(-5), 5001);
    EXPECT_EQ(gid(-5), 6001);
    int32_t out = 77;
    EXPECT_EQ(qbdb_util_get_posix_uid_by_name(qbdb, db, "root", &out), -22);
    EXPECT_EQ(out, -1);
    EXPECT_EQ(qbdb_util_get_posix_gid_by_name(qbdb, db, "staff", &out), 6001);
    EXPECT_EQ(out, 6001);
    EXPECT_EQ(user(5001), "anna1");
    EXPECT_EQ(user(0), "(none)");
    EXPECT_EQ(user(1), std::string(1023, 'x'));
    EXPECT_EQ(user(2), "(none)");
    EXPECT_EQ(user(-9), "negative") << "what a negative id means is the hook's business";
    EXPECT_EQ(group(6001), "staff");
    EXPECT_EQ(group(0), "(none)");
    // One of them alone: the others are the name service's again.
    qbdb_directory_hooks one{};
    one.uid_by_name = kHooks.uid_by_name;
    one.context = kHooks.context;
    qbdb_set_directory_hooks(qbdb, &one);
    EXPECT_EQ(qbdb_util_get_posix_uid_by_name(qbdb, db, "anna", nullptr), 5001);
    EXPECT_EQ(qbdb_util_get_posix_gid_by_name(qbdb, db, "root", nullptr), 0);
    EXPECT_EQ(user(0), "root");
    qbdb_set_directory_hooks(qbdb, nullptr);
    EXPECT_EQ(qbdb_util_get_posix_uid_by_name(qbdb, db, "root", nullptr), 0);
}

// ---- The buffer of a name service's entry

size_t needed;
int calls;
int interruptions;

int get_fake(const char *, passwd *entry, char *buffer, size_t size, passwd **found)
{
    calls++;
    *found = nullptr;
    if (interruptions > 0) {
        interruptions--;
        return EINTR;
    }
    if (size < needed) return ERANGE;
    memset(buffer, 'n', size);
    buffer[size - 1] = '\0';
    entry->pw_name = buffer;
    entry->pw_uid = 42;
    *found = entry;
    return 0;
}

TEST(NameService, TheBufferGrows)
{
    for (const size_t size : {size_t{1}, size_t{1024}, size_t{1025}, size_t{100000}, qdb::kLargestEntrySize}) {
        needed = size;
        uid_t uid = 0;
        EXPECT_TRUE(qdb::ask_name_service(get_fake, "x", [&uid](const passwd &entry) { uid = entry.pw_uid; }));
        EXPECT_EQ(uid, 42u);
    }
    needed = qdb::kLargestEntrySize + 1;
    calls = 0;
    EXPECT_FALSE(qdb::ask_name_service(get_fake, "x", [](const passwd &) { FAIL(); }));
    EXPECT_EQ(calls, 15) << "1 KiB to 16 MiB";
}

TEST(NameService, IsAskedAgainWhenInterrupted)
{
    needed = 1;
    calls = 0;
    interruptions = 3;
    EXPECT_TRUE(qdb::ask_name_service(get_fake, "x", [](const passwd &) {}));
    EXPECT_EQ(calls, 4);
}

TEST(NameService, AFailureIsNoEntry)
{
    const auto broken = [](const char *, passwd *, char *, size_t, passwd **found) -> int {
        *found = nullptr;
        return EIO;
    };
    EXPECT_FALSE(qdb::ask_name_service(+broken, "x", [](const passwd &) { FAIL(); }));
}

// ---- Users, keys, the map, settings

TEST_F(Lookups, Users)
{
    EXPECT_TRUE(qbdb_find_user_id(qbdb, db, 0));
    EXPECT_TRUE(qbdb_find_user_id(qbdb, db, -5));
    EXPECT_FALSE(qbdb_find_user_id(qbdb, db, 4711));
    sql("INSERT INTO `$user` (id,uname,is_privileged) VALUES (300,'removed',-1),(301,'unmarked',NULL)");
    EXPECT_FALSE(qbdb_find_user_id(qbdb, db, 300));
    EXPECT_TRUE(qbdb_find_user_id(qbdb, db, 301));
    fail_statement(1, 10);
    EXPECT_EQ(qbdb_find_user_id(qbdb, db, 0), -1) << "neither found nor missing";
}

TEST_F(Lookups, Keys)
{
    EXPECT_EQ(qbdb_get_number_of_ssh_public_key(qbdb, db), 0);
    sql("INSERT INTO ssh_public_key(id,user_id,key) VALUES(1,98,'AAA'),(2,0,'AAA'),(3,98,'it''s'),(4,7,NULL)");
    EXPECT_EQ(qbdb_get_number_of_ssh_public_key(qbdb, db), 4);
    EXPECT_TRUE(qbdb_find_ssh_public_key_id(qbdb, db, 3));
    EXPECT_FALSE(qbdb_find_ssh_public_key_id(qbdb, db, 5));
    EXPECT_TRUE(qbdb_find_ssh_public_key_user_id_key(qbdb, db, 98, "it's"));
    EXPECT_TRUE(qbdb_find_ssh_public_key_user_id_key(qbdb, db, 0, "AAA"));
    EXPECT_FALSE(qbdb_find_ssh_public_key_user_id_key(qbdb, db, 0, "aaa"));
    EXPECT_FALSE(qbdb_find_ssh_public_key_user_id_key(qbdb, db, 7, "AAA"));
    EXPECT_FALSE(qbdb_find_ssh_public_key_user_id_key(qbdb, db, 7, nullptr));
    EXPECT_EQ(qbdb_delete_ssh_public_key_by_uid(qbdb, db, 98), 0);
    EXPECT_THAT(rows("SELECT id FROM ssh_public_key"), ElementsAre("2", "4"));
    EXPECT_EQ(qbdb_delete_ssh_public_key_by_uid(qbdb, db, 98), 0);
    sql("DROP TABLE ssh_public_key");
    EXPECT_EQ(qbdb_get_number_of_ssh_public_key(qbdb, db), -1);
    EXPECT_EQ(qbdb_find_ssh_public_key_id(qbdb, db, 2), -1);
    EXPECT_EQ(qbdb_find_ssh_public_key_user_id_key(qbdb, db, 0, "AAA"), -1);
    EXPECT_NE(qbdb_delete_ssh_public_key_by_uid(qbdb, db, 98), 0);
}

TEST_F(Lookups, NameMap)
{
    EXPECT_STREQ(TABLE_SMB_USERNAME_MAP, "smb_username_map");
    EXPECT_EQ(value(std::string("SELECT COUNT(*) FROM ") + TABLE_SMB_USERNAME_MAP), "0");
    EXPECT_TRUE(qbdb_valid_smb_username_map_type(TABLE_SMB_USERNAME_MAP_TYPE_UNAME));
    for (const char *type : {static_cast<const char *>(nullptr), "", "UNAME", "uname ", "group"})
        EXPECT_FALSE(qbdb_valid_smb_username_map_type(type));
}

TEST_F(Lookups, NoSyncAds)
{
    EXPECT_EQ(qbdb_get_no_sync_ads(qbdb, db), 0);
    sql("UPDATE service_cifs SET no_sync_ads=1");
    EXPECT_EQ(qbdb_get_no_sync_ads(qbdb, db), 1);
    sql("UPDATE service_cifs SET no_sync_ads=NULL");
    EXPECT_EQ(qbdb_get_no_sync_ads(qbdb, db), 0);
    sql("UPDATE service_cifs SET no_sync_ads=-1");
    EXPECT_EQ(qbdb_get_no_sync_ads(qbdb, db), 1);
    fail_statement(1, 10);
    EXPECT_EQ(qbdb_get_no_sync_ads(qbdb, db), -1);
    sql("DELETE FROM service_cifs");
    EXPECT_EQ(qbdb_get_no_sync_ads(qbdb, db), 0);
}

TEST_F(Lookups, TimeMachine)
{
    EXPECT_TRUE(qbdb_is_timemachine_path_valid(qbdb, db));
    sql("UPDATE account_default SET home_volume_id='run'");
    EXPECT_FALSE(qbdb_is_timemachine_path_valid(qbdb, db)) << "no such volume";
    sql("UPDATE account_default SET home_volume_id=NULL");
    EXPECT_FALSE(qbdb_is_timemachine_path_valid(qbdb, db));
    sql("UPDATE account_default SET home_volume_id='tank'");
    EXPECT_TRUE(qbdb_is_timemachine_path_valid(qbdb, db));
    fail_statement(1, 10);
    EXPECT_FALSE(qbdb_is_timemachine_path_valid(qbdb, db));
}

}  // namespace
// SPDX-License-Identifier: Apache-2.0
