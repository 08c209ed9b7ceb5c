// Creating users: one by one with all checks, or in bulk from a list that has been checked.
#include "accounts/accounts.h"
#include "accounts/aliases.h"
#include "accounts/quotas.h"
#include "accounts/time_machine_allowance.h"
#include "accounts/user_changes.h"
#include "accounts/workers.h"
#include "frame/pool.h"

namespace qb {
namespace {

/// A user on its way into the database.
struct NewUser {
    const User *given;
    const char *name;
    int32_t id = 0;
    int32_t group_id = 0;
    const char *password = nullptr;
    const char *home = nullptr;
};

uint32_t check_new_name(CallContext *ctx, int32_t ads, const char *name)
{
    if (!is_set(name)) return REPORT(ctx, 8, "UserName is required for 'add'");
    return check_given_user_name(ctx, ads, name, kNewNameTooLong);
}

uint32_t choose_password(CallContext *ctx, const User *user, const char **password)
{
    *password = "";
    if (is_set(user->SysHash)) *password = user->SysHash;
    else if (is_set(user->Password)) return hash_given_password(ctx, user->Password, password);
    return 0;
}

uint32_t choose_group(CallContext *ctx, sqlite3 *db, int32_t ads, const User *user, int32_t *id)
{
    *id = kDefaultGroupId;
    return is_set(user->GroupName) ? require_primary_group(ctx, db, ads, user->GroupName, id) : 0;
}

/// The name goes in unescaped: a name that passed the check cannot end the literal.
uint32_t choose_home(CallContext *ctx, sqlite3 *db, const User *user, const char **home)
{
    if (is_set(user->HomeVolumeId)) {
        TRY(select_text(ctx, db, *home, "SELECT '/'||V.lv_name||'/home/%s' FROM _volume V WHERE V.id=%Q",
                        user->UserName, user->HomeVolumeId)
                .or_report(ctx, "Failed 'SELECT _volume'. %s"));
    } else {
        TRY(select_text(ctx, db, *home, "SELECT '/home/%s'", user->UserName)
                .or_report(ctx, "Failed 'SELECT /home/%%s'. %s"));
    }
    if (!is_set(*home)) return REPORT(ctx, 8, "Invalid HomeVolume or default home volume not exists");
    return 0;
}

uint32_t check_name_is_free(CallContext *ctx, sqlite3 *db, const char *name)
{
    int32_t taken = 0;
    TRY(select_int32(ctx, db, taken, "SELECT COUNT(*) FROM `$user` WHERE uname=%Q", name)
            .or_report(ctx, "Failed DB Query for user. %s"));
    if (taken == 0) return 0;
    int32_t remote = 0;
    TRY(select_int32(
            ctx, db, remote,
            "SELECT COUNT(*) FROM `$user` WHERE uname=%Q AND group_id=(SELECT id FROM `$group` WHERE gname=%Q)", name,
            "sky-loft")
            .or_report(ctx, "Failed DB Query for user. %s"));
    if (remote > 0) return REPORT(ctx, 834, "Username (%s) is the same as existing remote username.", name);
    return REPORT(ctx, 801, "User (%s) already exists.", name);
}

/// The first id at or above the cursor that no row holds, a removed or domain user's row included.
Failure find_free_id(CallContext *ctx, sqlite3 *db, int32_t &id)
{
    id = 0;
    Failure bad = select_int32(ctx, db, id, "SELECT next_uid FROM account_default");
    Rows taken;
    if (!bad) bad = select(ctx, db, taken, "SELECT id FROM `$user` WHERE id >= %d ORDER BY id", id);
    for (int i = 0; !bad && i < taken.count && id <= kHighestId && taken.int32(i, 0) == id; i++) id++;
    return bad;
}

uint32_t allocate_id(CallContext *ctx, sqlite3 *db, int32_t *id)
{
    int32_t free_id = 0;
    Failure bad = find_free_id(ctx, db, free_id);
    if (!bad && (free_id < kLowestId || free_id > kHighestId)) bad = {SQLITE_ERROR, "Every id is taken."};
    if (!bad) bad = execute(ctx, db, "UPDATE account_default SET next_uid=%d", free_id + 1);
    TRY(bad.or_report(ctx, "Could not get next available uid. %s"));
    *id = free_id;
    return 0;
}

uint32_t check_id_is_free(CallContext *ctx, sqlite3 *db, int32_t id)
{
    if (id < kLowestId || id > kHighestId)
        return REPORT(ctx, 8, "UserId=%d is out of valid range (%d-%d).", id, kLowestId, kHighestId);
    int32_t taken = 0;
    TRY(select_int32(ctx, db, taken, "SELECT COUNT(*) FROM `$user` WHERE id=%d", id)
            .or_report(ctx, "Failed DB Query for user. %s"));
    if (taken > 0) return REPORT(ctx, 802, "UserId (%d) already exists.", id);
    return 0;
}

uint32_t choose_id(CallContext *ctx, sqlite3 *db, const User *user, int32_t *id)
{
    if (user->UserId < 1) return allocate_id(ctx, db, id);
    *id = user->UserId;
    return check_id_is_free(ctx, db, *id);
}

uint32_t insert_user(CallContext *ctx, sqlite3 *db, const NewUser *user)
{
    // A new user has no keys, so the shell depends on the access alone.
    const User *given = user->given;
    return execute(ctx, db,
                   "INSERT INTO `$user` "
                   "(id,uname,passwd,email,home,group_id,shell,is_privileged,last_changed,is_locked,"
                   "shell_access) VALUES(%d,%Q,%Q,%Q,%Q,%d,%Q,0,"
                   "STRFTIME('%%s',DATETIME('NOW'))/60/60/24,%d,%d)",
                   user->id, user->name, user->password, given->Email, user->home, user->group_id,
                   given->ShellAccess == 1 ? "/bin/bash" : "/bin/false", given->IsLocked, given->ShellAccess)
        .or_report(ctx, "Failed DB Query for 'INSERT user'. %s");
}

/// The soft limit of a new user is stored undivided, in hundredths of a megabyte; a change divides it.
uint32_t insert_quotas(CallContext *ctx, sqlite3 *db, const NewUser *user)
{
    for (const Quota *quota = user->given->UserQuota; quota; quota = quota->next) {
        const int32_t limit = limit_of(quota);
        TRY(execute(ctx, db,
                    "INSERT INTO user_quota (user_id,share_id,mb_soft,mb_hard) VALUES(%d,(SELECT S.id FROM "
                    "share S WHERE zfs_name=%Q),%d*(SELECT diskquota_warn FROM account_default LIMIT 1),%d)",
                    user->id, quota->ShareId, limit, limit)
                .or_report(ctx, "Failed DB Query for 'INSERT user_quota'. %s"));
    }
    return 0;
}

uint32_t insert_home_folder(CallContext *ctx, sqlite3 *db, const NewUser *user)
{
    if (const UserHomeFolderSettings *given = user->given->HomeFolderSettings)
        return execute(ctx, db,
                       "INSERT INTO `$home_folder` "
                       "(user_id,snapshot_protection_enabled,quota,visible_snapdir,prev_versions) VALUES "
                       "(%d,%d,%lu,%Q,%d)",
                       user->id, given->SnapshotProtectionEnabled, given->SizeLimit,
                       given->VisibleSnapshot ? given->VisibleSnapFolder : "", given->PrevVersions)
            .or_report(ctx, "Failed DB Query for 'INSERT $home_folder'. %s");
    return execute(ctx, db,
                   "INSERT INTO `$home_folder` "
                   "(user_id,snapshot_protection_enabled,quota,visible_snapdir,prev_versions) VALUES "
                   "(%d,(SELECT snapshot_protection FROM account_default LIMIT 1),(SELECT "
                   "home_folder_capacity_limit FROM account_default LIMIT 1),%Q,0)",
                   user->id, "")
        .or_report(ctx, "Failed DB Query for 'INSERT $home_folder' using account_default. %s");
}

uint32_t read_home(CallContext *ctx, sqlite3 *db, int32_t id, const char **home)
{
    return select_text(ctx, db, *home, "SELECT home FROM `$user` WHERE id=%d", id)
        .or_report(ctx, "Failed DB Query for (SELECT user). %s");
}

uint32_t give_alias(CallContext *ctx, sqlite3 *db, const NewUser *user)
{
    const User *given = user->given;
    if (may_have_alias(user->name, given->GroupName) && is_alias(given->P2PUserName))
        TRY(add_alias(ctx, db, user->name, given->P2PUserName));
    return check_alias_clash(ctx, db, user->name);
}

/// Whether the defaults give every new user an allowance.
uint32_t read_default_allowance(CallContext *ctx, sqlite3 *db, bool *given)
{
    int32_t private_time_machine = 0;
    TRY(select_int32(ctx, db, private_time_machine, "SELECT private_time_machine FROM account_default LIMIT 1")
            .or_report(ctx, "Failed DB Query for account_default. %s"));
    *given = private_time_machine == 1;
    return 0;
}

/// Inserts an allowance. A failure is reported, but the user stays even then, for lack of memory, too.
uint32_t insert_allowance(CallContext *call, sqlite3 *db, int32_t id, const UserTimeMachineQuota *own)
{
    CallContext apart = *call;
    CallContext *ctx = &apart;
    if (own)
        return execute(ctx, db, "INSERT INTO '$timemachine_quota' (user_id,enabled,capacity_mb) VALUES (%d,%d,%d)", id,
                       own->Enabled, own->CapacityMB)
            .or_report(ctx, "Failed DB Query for 'INSERT $timemachine_quota'. %s");
    return execute(ctx, db,
                   "INSERT INTO '$timemachine_quota' (user_id,enabled,capacity_mb) VALUES (%d,(SELECT "
                   "private_time_machine FROM account_default LIMIT 1), (SELECT private_time_machine_space "
                   "FROM account_default LIMIT 1)*1000)",
                   id)
        .or_report(ctx, "Failed DB Query for 'INSERT $timemachine_quota' using account_default. %s");
}

/// The call succeeds even if the insert fails: the user is created without the allowance, the error record says so,
/// and `ended` that the rest of the chain is not created.
uint32_t give_allowance(CallContext *ctx, sqlite3 *db, const NewUser *user, bool *ended)
{
    const UserTimeMachineQuota *own = user->given->TimeMachineQuota;
    if (own && !own->Enabled) own = nullptr;
    bool by_default = false;
    if (!own) TRY(read_default_allowance(ctx, db, &by_default));
    if (!own && !by_default) return 0;
    int32_t count = 0;
    TRY(count_allowances(ctx, db, &count));
    if (count >= kMostTimeMachineUsers) return too_many_allowances(ctx, user->name);
    *ended = insert_allowance(ctx, db, user->id, own) != 0;
    return *ended ? 0 : switch_afp_on(ctx, db);
}

uint32_t add_user(CallContext *ctx, sqlite3 *db, int32_t ads, User *given, bool *ended)
{
    NewUser user{.given = given, .name = given->UserName};
    TRY(check_new_name(ctx, ads, user.name));
    TRY(choose_password(ctx, given, &user.password));
    TRY(check_given_email(ctx, given->Email));
    TRY(choose_group(ctx, db, ads, given, &user.group_id));
    TRY(choose_home(ctx, db, given, &user.home));
    TRY(check_name_is_free(ctx, db, user.name));
    TRY(choose_id(ctx, db, given, &user.id));
    TRY(insert_user(ctx, db, &user));
    TRY(insert_quotas(ctx, db, &user));
    TRY(insert_home_folder(ctx, db, &user));
    TRY(read_home(ctx, db, user.id, &user.home));
    TRY(give_alias(ctx, db, &user));
    TRY(give_allowance(ctx, db, &user, ended));
    given->UserId = user.id;
    given->HomeDirectory = user.home;
    if (!*ended) given->resource_id = user.id;
    return 0;
}

/// One above the highest ordinary local id. The cursor of single creation stays where it is.
uint32_t next_list_id(CallContext *ctx, sqlite3 *db, int32_t *id)
{
    return select_int32(ctx, db, *id,
                        "SELECT IFNULL(MAX(U.id)+1,100) FROM `$user` U WHERE U.is_privileged=0 AND U.rid IS "
                        "NULL AND U.id<32767")
        .or_report(ctx, "Failed DB Query for user. %s");
}

uint32_t insert_list_user(CallContext *ctx, sqlite3 *db, const NewUser *user)
{
    // Not days, as for a single user: 24 stands twice here. The values stored for listed users count that way.
    return execute(ctx, db,
                   "INSERT INTO `$user` (id,uname,passwd,email,home,group_id,shell,is_privileged,last_changed) "
                   "VALUES(%d,%Q,%Q,%Q,%Q,%d,'/bin/false',0,STRFTIME('%%s',DATETIME('NOW'))/60/24/24)",
                   user->id, user->name, user->password, user->given->Email, user->home, user->group_id)
        .or_report(ctx, "Failed DB Query for 'INSERT user'. %s");
}

uint32_t add_list_user(CallContext *ctx, sqlite3 *db, int32_t ads, User *given)
{
    NewUser user{.given = given, .name = given->UserName, .password = given->Password, .home = "/home"};
    TRY(choose_group(ctx, db, ads, given, &user.group_id));
    TRY(next_list_id(ctx, db, &user.id));
    TRY(insert_list_user(ctx, db, &user));
    TRY(read_home(ctx, db, user.id, &user.home));
    given->UserId = user.id;
    given->HomeDirectory = user.home;
    given->resource_id = user.id;
    return 0;
}

}  // namespace

uint32_t x_qbobj_addUser(CallContext *ctx, sqlite3 *db, User *user)
{
    int32_t ads = 0;
    TRY(read_ads_mode(ctx, db, &ads));
    bool ended = false;
    for (; user && !ended; user = user->next) TRY(add_user(ctx, db, ads, user, &ended));
    return 0;
}

uint32_t x_qbobj_addUserList(CallContext *ctx, sqlite3 *db, User *user)
{
    int32_t ads = 0;
    TRY(read_ads_mode(ctx, db, &ads));
    for (; user; user = user->next) TRY(add_list_user(ctx, db, ads, user));
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
