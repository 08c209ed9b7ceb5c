// Changing users: whole records, and the narrow changes of one column.
#include <cstring>

#include "accounts/aliases.h"
#include "accounts/directory_mode.h"
#include "accounts/login_shell.h"
#include "accounts/quotas.h"
#include "accounts/time_machine_allowance.h"
#include "accounts/user_changes.h"
#include "accounts/workers.h"
#include "frame/addressed.h"
#include "frame/pool.h"
#include "frame/related.h"
#include "frame/set_list.h"
#include "validate/validate.h"
#include "validate/validate_db.h"

namespace qb {
namespace {

/// How the appliance treats directory users.
struct DirectoryMode {
    int32_t ads = 0;
    int32_t no_sync = 0;
};

/// A change of one user.
struct Change {
    const User *given;
    int32_t ads;
    int32_t id = 0;
    StoredUser stored{};
    const char *stored_group = "";   // name of the primary group
    const char *name = nullptr;      // from now on
    const char *home = nullptr;      // from now on, when the record names the user
    const char *old_name = nullptr;  // only when it changes
    const char *old_home = nullptr;
    SetList<512> set;

    Change(const User *user, int32_t mode) : given(user), ads(mode) {}
};

uint32_t find_user(CallContext *ctx, sqlite3 *db, const DirectoryMode &mode, const User *user, int32_t *id)
{
    *id = addressed(user, &User::UserId);
    const bool live = *id == 0 && mode.ads && mode.no_sync && is_set(user->UserName);
    if (!live) return require_user(ctx, db, *id, "Invalid resource_id (%d).");
    *id = qbdb_util_get_posix_uid_by_name(ctx->qbdb, db, user->UserName, nullptr);
    if (*id < 0)
        return REPORT(ctx, 832, "Invalid User (resource_id=%d, UserName=%s).", user->resource_id, user->UserName);
    return 0;
}

uint32_t read_stored(CallContext *ctx, sqlite3 *db, Change *change)
{
    TRY(read_stored_user(ctx, db, change->id, &change->stored));
    if (change->stored.protected_account) return REPORT(ctx, 8, "Cannot modify user (user_id=%d)", change->id);
    change->name = is_set(change->given->UserName) ? change->given->UserName : or_empty(change->stored.name);
    const char *group = nullptr;
    TRY(select_text(ctx, db, group,
                    "SELECT G.gname FROM `$user` U INNER JOIN `$group` G ON G.id=U.group_id WHERE U.id=%d", change->id)
            .or_report(ctx, "Failed DB Query for user. %s"));
    change->stored_group = or_empty(group);
    return 0;
}

uint32_t check_name_is_free(CallContext *ctx, sqlite3 *db, const Change *change)
{
    bool found = false;
    int32_t owner = 0;
    TRY(find_name(ctx, db, change->ads ? NameCheck::domain_user : NameCheck::local_user, change->name, found, owner)
            .or_report(ctx, "Failed DB Query for user. %s"));
    if (found && owner != change->id)
        return REPORT(ctx, 801, "Cannot rename to user which already exists (%s).", change->name);
    return 0;
}

uint32_t read_previous(CallContext *ctx, sqlite3 *db, Change *change)
{
    Failure bad = select_text(ctx, db, change->old_name, "SELECT U.uname FROM `$user` U WHERE U.id=%d AND U.uname<>%Q",
                              change->id, change->name);
    // A user who keeps the name has no such row: it would be asked for once more.
    if (!bad && (change->old_name || statements_are_watched(ctx)))
        bad = select_text(ctx, db, change->old_home, "SELECT U.home FROM `$user` U WHERE U.id=%d AND U.uname<>%Q",
                          change->id, change->name);
    return bad.or_report(ctx, "Failed DB Query for 'SELECT user'. %s");
}

/// Naming a local user moves its home path to /home/, whatever volume it was created on. A directory user keeps its
/// path.
uint32_t choose_home(CallContext *ctx, sqlite3 *db, Change *change)
{
    if (change->ads)
        return select_text(ctx, db, change->home, "SELECT U.home FROM `$user` U WHERE U.id=%d", change->id)
            .or_report(ctx, "Failed DB Query for 'SELECT home FROM `$users`'. %s");
    return select_text(ctx, db, change->home, "SELECT '/home/'||%Q", change->name)
        .or_report(ctx, "Failed DB Query for 'SELECT account_default'. %s");
}

uint32_t set_name(CallContext *ctx, sqlite3 *db, Change *change)
{
    if (!is_set(change->given->UserName)) return 0;
    TRY(check_given_user_name(ctx, change->ads, change->name, kChangedNameTooLong));
    TRY(check_name_is_free(ctx, db, change));
    change->set.add("uname='%q'", change->name);
    TRY(read_previous(ctx, db, change));
    TRY(choose_home(ctx, db, change));
    change->set.add("home=%Q", change->home);
    return 0;
}

/// The mask stands for the stored password, so that a record can be written back as it was read.
uint32_t set_password(CallContext *ctx, Change *change)
{
    const User *given = change->given;
    const char *hash = given->SysHash;
    if (!is_set(hash)) {
        if (!given->Password || is_password_mask(given->Password)) return 0;
        TRY(hash_given_password(ctx, given->Password, &hash));
    }
    change->set.add("passwd='%q'", hash);
    return 0;
}

uint32_t set_email(CallContext *ctx, Change *change)
{
    const char *email = change->given->Email;
    if (!email) return 0;
    TRY(check_given_email(ctx, email));
    change->set.add("email='%q'", email);
    return 0;
}

uint32_t set_group(CallContext *ctx, sqlite3 *db, Change *change)
{
    const char *name = change->given->GroupName;
    if (!is_set(name)) return 0;
    int32_t id = 0;
    TRY(require_primary_group(ctx, db, change->ads, name, &id));
    change->set.add("group_id=%d", id);
    return 0;
}

uint32_t set_access(CallContext *ctx, sqlite3 *db, Change *change)
{
    const User *given = change->given;
    const char *shell = nullptr;
    TRY(find_login_shell(ctx, db, change->id, given->ShellAccess, shell)
            .or_report(ctx, "Failed DB Query for ssh_public_key. %s"));
    change->set.add("is_locked=%d", given->IsLocked);
    change->set.add("shell='%q'", shell);
    change->set.add("shell_access=%d", given->ShellAccess);
    return 0;
}

uint32_t update_user(CallContext *ctx, sqlite3 *db, const Change *change)
{
    // An assignment that did not fit was left out, and half a change is worse than none.
    if (change->set.dropped) return REPORT(ctx, 5, "Failed DB Query for 'UPDATE user'. %s", "Too long.");
    const Failure bad = execute(ctx, db, "UPDATE `$user` SET %s WHERE id=%d", +change->set.text, change->id);
    if (bad.rc == kConstraint) return bad.or_report(ctx, 801, "Specified uname already exists'. %s");
    return bad.or_report(ctx, "Failed DB Query for 'UPDATE user'. %s");
}

uint32_t write_quota(CallContext *ctx, sqlite3 *db, int32_t user_id, const Quota *quota)
{
    const int32_t limit = limit_of(quota);
    if (limit == 0)
        return execute(ctx, db,
                       "DELETE FROM user_quota WHERE user_id=%d AND share_id=(SELECT S.id FROM share S WHERE "
                       "S.zfs_name=%Q)",
                       user_id, quota->ShareId)
            .or_report(ctx, "Failed DB Query for 'DELETE user_quota. %s");
    return execute(ctx, db,
                   "INSERT OR REPLACE INTO user_quota (user_id,share_id,mb_soft,mb_hard) VALUES(%d,(SELECT "
                   "S.id FROM share S WHERE zfs_name=%Q),%d*(SELECT diskquota_warn FROM account_default LIMIT "
                   "1)/100,%d)",
                   user_id, quota->ShareId, limit, limit)
        .or_report(ctx, "Failed DB Query for 'UPDATE user_quota. %s");
}

uint32_t write_quotas(CallContext *ctx, sqlite3 *db, const Change *change)
{
    for (const Quota *quota = change->given->UserQuota; quota; quota = quota->next)
        TRY(write_quota(ctx, db, change->id, quota));
    return 0;
}

/// The record shows or hides the snapshot folder. Its name stays: another operation changes that.
uint32_t write_home_folder(CallContext *ctx, sqlite3 *db, const Change *change)
{
    const UserHomeFolderSettings *given = change->given->HomeFolderSettings;
    if (!given) return 0;
    const char *folder = nullptr;
    TRY(select_text(ctx, db, folder, "SELECT H.visible_snapdir FROM `$home_folder` H WHERE H.user_id=%d", change->id)
            .or_report(ctx, "Failed DB Query for 'SELECT visible_snapdir'. %s"));
    return execute(ctx, db,
                   "INSERT OR REPLACE INTO `$home_folder` "
                   "(user_id,snapshot_protection_enabled,quota,visible_snapdir,prev_versions) VALUES "
                   "(%d,%d,%lu,%Q,%d)",
                   change->id, given->SnapshotProtectionEnabled, given->SizeLimit,
                   given->VisibleSnapshot ? or_empty(folder) : "", given->PrevVersions)
        .or_report(ctx, "Failed DB Query for 'UPDATE $home_folder'. %s");
}

uint32_t refuse_allowance(CallContext *ctx, sqlite3 *db, const Change *change)
{
    TRY(execute(ctx, db, "DELETE FROM '$timemachine_quota' WHERE user_id=%d", change->id)
            .or_report(ctx, "Failed DB Query for 'DELETE user from $timemachine_quota. %s"));
    return too_many_allowances(ctx, change->name);
}

uint32_t write_allowance(CallContext *ctx, sqlite3 *db, const Change *change)
{
    const UserTimeMachineQuota *given = change->given->TimeMachineQuota;
    if (!given) return 0;
    TRY(execute(ctx, db,
                "INSERT OR REPLACE INTO `$timemachine_quota` (user_id,enabled,capacity_mb) VALUES "
                "(%d,%d,%d)",
                change->id, given->Enabled, given->CapacityMB)
            .or_report(ctx, "Failed DB Query for 'UPDATE $timemachine_quota'. %s"));
    TRY(execute(ctx, db, "DELETE FROM '$timemachine_quota' WHERE enabled=0")
            .or_report(ctx, "Failed DB Query for 'DELETE user from $timemachine_quota. %s"));
    int32_t count = 0;
    TRY(count_allowances(ctx, db, &count));
    if (count > 0) TRY(switch_afp_on(ctx, db));
    return count > kMostTimeMachineUsers ? refuse_allowance(ctx, db, change) : 0;
}

/// Keeps a user's alias in step. It is removed when the user leaves the cloud service or the record clears it, moves
/// with the name, and takes the record's value. A record without an alias keeps the stored one.
uint32_t write_alias(CallContext *ctx, sqlite3 *db, const Change *change)
{
    const User *given = change->given;
    const char *group = is_set(given->GroupName) ? given->GroupName : change->stored_group;
    const bool had = change->stored.name && may_have_alias(change->stored.name, change->stored_group);
    const bool has = may_have_alias(change->name, group);
    const bool keeps = has && (!given->P2PUserName || is_alias(given->P2PUserName));
    if (had && !keeps) TRY(x_qbobj_deleteSmbUserNameMap(ctx, db, change->stored.name));
    else if (had && change->old_name)
        TRY(x_qbobj_setSmbUserNameMapUnixUserNameForAll(ctx, db, change->old_name, change->name));
    if (has && is_alias(given->P2PUserName)) TRY(set_alias(ctx, db, change->name, given->P2PUserName));
    return check_alias_clash(ctx, db, change->name);
}

/// Home-folder snapshots know their user by name.
uint32_t move_snapshots(CallContext *ctx, sqlite3 *db, const Change *change)
{
    if (!is_set(change->old_name) || !is_set(change->old_home)) return 0;
    return execute(ctx, db, "UPDATE `$home_folder_snapshot` SET user_name=%Q,home_dir=%Q WHERE user_name=%Q",
                   change->name, change->home, change->old_name)
        .or_report(ctx, "Failed DB Query for 'UPDATE $home_folder_snapshot'. %s");
}

uint32_t modify_user(CallContext *ctx, sqlite3 *db, const DirectoryMode &mode, User *user)
{
    Change change(user, mode.ads);
    TRY(find_user(ctx, db, mode, user, &change.id));
    TRY(read_stored(ctx, db, &change));
    TRY(set_name(ctx, db, &change));
    TRY(set_password(ctx, &change));
    TRY(set_email(ctx, &change));
    TRY(set_group(ctx, db, &change));
    TRY(set_access(ctx, db, &change));
    TRY(update_user(ctx, db, &change));
    TRY(write_quotas(ctx, db, &change));
    TRY(write_home_folder(ctx, db, &change));
    TRY(write_allowance(ctx, db, &change));
    TRY(write_alias(ctx, db, &change));
    TRY(move_snapshots(ctx, db, &change));
    user->OldUserName = or_empty(change.old_name);
    user->OldHomeDirectory = or_empty(change.old_home);
    return 0;
}

}  // namespace

uint32_t x_qbobj_modifyUser(CallContext *ctx, sqlite3 *db, User *user)
{
    DirectoryMode mode;
    TRY(read_ads_mode(ctx, db, &mode.ads));
    TRY(read_no_sync_ads(ctx, db, &mode.no_sync));
    for (; user; user = user->next) TRY(modify_user(ctx, db, mode, user));
    return 0;
}

uint32_t x_qbobj_setPrimaryGroupByName(CallContext *ctx, sqlite3 *db, const char *userName, const char *groupName)
{
    int32_t ads = 0;
    TRY(read_ads_mode(ctx, db, &ads));
    const char *negation = ads ? "NOT " : "";
    // An unknown group leaves the user without one.
    return execute(ctx, db,
                   "UPDATE `$user` SET group_id=(SELECT G.id FROM `$group` G WHERE G.gname=%Q AND G.rid IS %s "
                   "NULL) WHERE uname=%Q AND rid IS %sNULL",
                   groupName, negation, userName, negation)
        .or_report(ctx, "Failed DB Query for 'UPDATE user'. %s");
}

uint32_t x_qbobj_disableEnableLocalUserByName(CallContext *ctx, sqlite3 *db, int32_t enable, const char *userName)
{
    // "!" before the hash locks it: no password matches, and removing it restores the hash.
    const int32_t all = userName ? 0 : 1;
    const Failure bad =
        enable ? execute(ctx, db,
                         "UPDATE `$user` SET passwd=substr(passwd,2) WHERE (%d OR uname=%Q) AND is_privileged=0 AND "
                         "rid IS NULL AND group_id<>98 AND substr(passwd,1,2)='!$' AND substr(passwd,4,1)='$'",
                         all, userName)
               : execute(ctx, db,
                         "UPDATE `$user` SET passwd='!'||passwd WHERE (%d OR uname=%Q) AND is_privileged=0 AND rid IS "
                         "NULL AND group_id<>98 AND substr(passwd,1,1)='$' AND substr(passwd,3,1)='$'",
                         all, userName);
    return bad.or_report(ctx, "Failed DB Query for 'UPDATE user'. %s");
}

uint32_t x_qbobj_modifyUserVisibleSnapFolder(CallContext *ctx, sqlite3 *db, int32_t userId, const char *folder)
{
    return execute(ctx, db, "UPDATE `$home_folder` SET visible_snapdir=%Q WHERE user_id=%d", folder, userId)
        .or_report(ctx, "Failed DB Query for 'UPDATE `$home_folder`'. %s");
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
