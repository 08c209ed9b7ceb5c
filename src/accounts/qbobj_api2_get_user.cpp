// Single users, members of groups, and the look-ups of ids and names.
#include "accounts/lookup.h"
#include "accounts/users.h"
#include "accounts/workers.h"
#include "frame/addressed.h"
#include "frame/list.h"

namespace qb {
namespace {

/// Whether a record may address this id. Only the directory has users with negative ids.
uint32_t check_addressed_id(CallContext *ctx, int32_t id, int32_t ads)
{
    if (id == 0) return REPORT(ctx, 8, "Invalid resouce_id=%d.", id);
    if (id < 0 && !ads) return REPORT(ctx, 5, "Invalid resouce_id=%d.", id);
    return 0;
}

/// The id of the user that a record addresses. Users of a directory that is not synchronised are
/// addressed by name.
uint32_t resolve_user(CallContext *ctx, sqlite3 *db, const User *user, int32_t *id)
{
    int32_t ads = 0;
    TRY(read_ads_mode(ctx, db, &ads));
    *id = addressed(user, &User::UserId);
    int32_t live = 0;
    if (*id == 0 && ads && is_set(user->UserName)) TRY(read_no_sync_ads(ctx, db, &live));
    if (!live) return check_addressed_id(ctx, *id, ads);
    *id = qbdb_util_get_posix_uid_by_name(ctx->qbdb, db, user->UserName, nullptr);
    if (*id < 0)
        return REPORT(ctx, 832, "Invalid User (resource_id=%d, UserName=%s).", user->resource_id, user->UserName);
    return 0;
}

/// Appends the users of a result with the columns id and uname, all or none.
uint32_t append_names(CallContext *ctx, const Rows &rows, User **head)
{
    User *read = nullptr;
    List<User> list(&read);
    for (int i = 0; i < rows.count; i++) {
        User *user = list.append(ctx);
        TRY_MEMORY(ctx);
        read_row(ctx, rows, i, both(user->resource_id, user->UserId), empty(user->UserName));
    }
    TRY_MEMORY(ctx);
    List<User>(head).link(read);
    return 0;
}

}  // namespace

uint32_t x_qbobj_getUser(CallContext *ctx, sqlite3 *db, User *user)
{
    QB_ASSERT(user);
    int32_t id = 0;
    TRY(resolve_user(ctx, db, user, &id));
    Rows rows;
    TRY(select(
            ctx, db, rows,
            "SELECT U.id,U.uname,(SELECT G.gname FROM `$group` G WHERE G.id=U.group_id),U.home,U.email,U.passwd,CASE "
            "WHEN U.rid IS NULL THEN 0 ELSE 1 END,U.is_locked,U.group_id,U.shell_access FROM `$user` U WHERE "
            "U.is_privileged<>1 AND U.uname<>'nobody' AND U.uname<>'guest' AND U.group_id<>IFNULL((SELECT id FROM "
            "`$group` G WHERE G.gname='guest'),(SELECT id FROM `$group` G WHERE G.gname='nogroup')) AND U.id=%d ORDER "
            "BY U.uname COLLATE NOCASE",
            id)
            .or_report(ctx, "Failed DB Query for user. %s"));
    if (rows.count == 0) return REPORT(ctx, 5, "Failed DB Query for user. %s", no_row_text(ctx, id));

    User read = *user;
    read.UserQuota = nullptr;  // what the record held of another user does not stay
    UserCells cells;
    int32_t group_id = 0;
    read_user(ctx, rows, 0, &read, &cells, read.IsLocked, group_id, read.ShellAccess);
    read.GroupName = group_name(ctx, db, cells, group_id);
    read.Password = masked(cells.hash);
    TRY_MEMORY(ctx);
    TRY(read_user_details(ctx, db, id, &read));
    *user = read;
    return 0;
}

uint32_t x_qbobj_getSystemUser(CallContext *ctx, sqlite3 *db, SystemUser *user)
{
    QB_ASSERT(user);
    int32_t ads = 0;
    TRY(read_ads_mode(ctx, db, &ads));
    const int32_t id = addressed(user, &SystemUser::UserId);
    TRY(check_addressed_id(ctx, id, ads));
    const char *name = nullptr;
    TRY(select_text(ctx, db, name,
                    "SELECT U.uname FROM `$user` U WHERE U.id=%d OR (%d AND U.id=%d AND U.rid IS NOT NULL)", id, ads,
                    id)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM user'. %s"));
    if (!name && (qbdb_util_get_domain_uname_by_uid(ctx->qbdb, db, id, &name) != 0 || !name)) {
        LOG_FAILURE(ctx, "None of row selected for resource_id=%d.\n", id);
        return REPORT(ctx, 5, "Failed DB Query for 'SELECT FROM user'. %s", no_row_text(ctx, id));
    }
    user->resource_id = id;
    user->UserId = id;
    user->UserName = name;
    user->_PosixId = posix_uid_of(ctx, db, id);
    return 0;
}

uint32_t x_qbobj_getCloudUser(CallContext *ctx, sqlite3 *db, UserCollection *users)
{
    QB_ASSERT(users);
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT U.id,U.uname FROM `$user` U WHERE U.is_privileged<>1 AND U.uname<>'nobody' AND "
               "U.uname<>'guest' AND U.group_id=98 ORDER BY U.uname COLLATE NOCASE")
            .or_report(ctx, "Failed DB Query for user. %s"));
    const uint32_t rc = append_names(ctx, rows, &users->User);
    TRACE(ctx, "%s() rc=%d nrow=%d\n", __func__, static_cast<int>(rc), rows.count);
    return rc;
}

uint32_t x_qbobj_getUserInGroupName(CallContext *ctx, sqlite3 *db, const char *groupName, int32_t primary_only,
                                    UserCollection *users)
{
    QB_ASSERT(users);
    Rows rows;
    const Failure bad =
        primary_only
            ? select(ctx, db, rows,
                     "SELECT U.id,U.uname FROM `$user` U WHERE U.is_privileged<>1 AND U.uname<>'nobody' AND "
                     "U.uname<>'guest' AND U.group_id=(SELECT G.id FROM `$group` G WHERE G.gname=%Q) ORDER BY U.uname "
                     "COLLATE NOCASE",
                     groupName ? groupName : "admin")
            // One row a membership: a primary member comes as often as it has secondary memberships anywhere.
            : select(ctx, db, rows,
                     "SELECT U.id,U.uname FROM `$user` U LEFT JOIN `$group_has_user` GU ON GU.user_id=U.id WHERE "
                     "U.is_privileged<>1 AND U.uname<>'nobody' AND U.uname<>'guest' AND (U.group_id=(SELECT G1.id FROM "
                     "`$group` G1 WHERE G1.gname=%Q)OR GU.group_id=(SELECT G2.id FROM `$group` G2 WHERE G2.gname=%Q)) "
                     "ORDER BY U.uname COLLATE NOCASE",
                     groupName, groupName);
    TRY(bad.or_report(ctx, "Failed DB Query for user. %s"));
    const uint32_t rc = append_names(ctx, rows, &users->User);
    TRACE(ctx, "%s() rc=%d nrow=%d\n", __func__, static_cast<int>(rc), rows.count);
    return rc;
}

int32_t x_qbobj_getUID(CallContext *ctx, sqlite3 *db, const char *name, int32_t *id)
{
    QB_ASSERT(id);
    *id = kNoId;
    int32_t ads = 0;
    if (!find_ads_mode(ctx, db, &ads)) return kNoId;
    return find_user_id(ctx, db, ads, name, id) ? 0 : kNoId;
}

int32_t x_qbobj_getUserName(CallContext *ctx, sqlite3 *db, int32_t id, const char **name)
{
    QB_ASSERT(name);
    const char *found = nullptr;
    *name = "";
    if (select_text(ctx, db, found, "SELECT U.uname FROM `$user` U WHERE U.id=%d", id)
            .logged(ctx, "Failed DB Query for user. %s\n"))
        return kNoId;
    if (!found) found = name_of_unknown_id(ctx, id);
    *name = or_empty(found);
    return found ? 0 : kNoId;
}

int32_t x_qbobj_getPosixUID(CallContext *ctx, sqlite3 *db, const char *name)
{
    int32_t ads = 0;
    if (!find_ads_mode(ctx, db, &ads)) return kNoId;
    int32_t id = kNoId;
    if (find_user_id(ctx, db, ads, name, &id)) return posix_uid_of(ctx, db, id);
    if (!ads) return kNoId;
    const int32_t uid = qbdb_util_get_posix_uid_by_name(ctx->qbdb, db, name, nullptr);
    return uid < 0 ? kNoId : uid;
}

int32_t x_qbobj_getPosixUIDbyUID(CallContext *ctx, sqlite3 *db, int32_t id)
{
    return posix_uid_of(ctx, db, id);
}

int32_t x_qbobj_getPosixUIDGID(CallContext *ctx, sqlite3 *db, const char *name, int32_t *uid, int32_t *gid)
{
    QB_ASSERT(uid);
    QB_ASSERT(gid);
    int32_t ads = 0;
    int32_t user = kNoId;
    int32_t group = kNoId;
    if (!find_ads_mode(ctx, db, &ads) || !find_user_id(ctx, db, ads, name, &user)) return kNoId;
    if (!find_primary_gid(ctx, db, name, &group)) return kNoId;
    user = posix_uid_of(ctx, db, user);
    group = posix_gid_of(ctx, db, group);
    if (user < 0 || group < 0) return kNoId;
    *uid = user;
    *gid = group;
    return 0;
}

uint32_t x_qbobj_getUserHomeFolderTotalConsumedInByte(CallContext *ctx, sqlite3 *db, uint64_t *bytes)
{
    QB_ASSERT(bytes);
    if (qbdb_hf_stats_import(ctx->qbdb, db) != 0) {
        LOG_FAILURE(ctx, "%s: Failed to call qbdb_hf_stats_import()!\n", __func__);
        return 5;
    }
    uint64_t used = 0;
    if (select_uint64(ctx, db, used, "SELECT SUM(used) FROM `_hf_zfs_stat`")) {
        LOG_FAILURE(ctx, "%s: Failed to select sum(used) from `_hf_zfs_stat`!\n", __func__);
        return 5;
    }
    *bytes = used;
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
