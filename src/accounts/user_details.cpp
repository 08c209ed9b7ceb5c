// One user: its columns, and what hangs on it in other tables.
#include "accounts/users.h"
#include "frame/pool.h"
#include "qbobj/legacy.h"

namespace qb {
namespace {

const char *domain_group_name(CallContext *ctx, sqlite3 *db, int32_t gid)
{
    const char *name = nullptr;
    const int rc = qbdb_util_get_domain_gname_by_gid(ctx->qbdb, db, gid, &name);
    return rc ? "" : or_empty(name);
}

}  // namespace

const char *masked(const char *hash)
{
    return is_set(hash) ? masked_password : "";
}

uint32_t fill_user(CallContext *ctx, sqlite3 *db, const Rows &rows, int row, const UserColumns &columns,
                   Passwords passwords, User *user)
{
    const auto number = [&](int column, int32_t kept) { return column < 0 ? kept : rows.int32(row, column); };
    user->resource_id = rows.int32(row, 0);
    user->UserId = user->resource_id;
    user->UserName = rows.word(ctx, row, 1);
    if (rows.cell(row, 2)) user->GroupName = rows.word(ctx, row, 2);
    else user->GroupName = columns.group_id < 0 ? "" : domain_group_name(ctx, db, rows.int32(row, columns.group_id));
    user->HomeDirectory = rows.word(ctx, row, 3);
    user->Email = rows.word(ctx, row, 4);
    user->Password = passwords == Passwords::stored ? rows.word(ctx, row, 5) : masked(rows.cell(row, 5));
    user->IsDomainMember = rows.int32(row, 6);
    const bool names_itself = columns.full_name >= 0;
    if (names_itself) user->FullName = rows.word(ctx, row, columns.full_name);
    user->IsLocked = number(columns.is_locked, user->IsLocked);
    user->ShellAccess = number(columns.shell_access, user->ShellAccess);
    if (!user->UserName || !user->GroupName || !user->HomeDirectory || !user->Email || !user->Password ||
        (names_itself && !user->FullName))
        return REPORT(ctx, 2, "Failed to allocate resource.");
    return 0;
}

uint32_t read_home_folder_settings(CallContext *ctx, sqlite3 *db, int32_t user_id, UserHomeFolderSettings **settings)
{
    *settings = nullptr;
    Rows rows;
    if (auto bad = select(ctx, db, rows,
                          "SELECT H.snapshot_protection_enabled,H.quota,(SELECT S.used FROM `_hf_zfs_stat` S WHERE "
                          "S.user_id=H.user_id),H.visible_snapdir,H.prev_versions FROM `$home_folder` H WHERE "
                          "H.user_id=%d",
                          user_id))
        return REPORT(ctx, 5, "Failed DB Query for $home_folder. %s", bad.text);
    if (rows.count == 0) return 0;
    auto *read = allocate<UserHomeFolderSettings>(ctx);
    const char *folder = rows.word(ctx, 0, 3);
    if (!read || !folder) return REPORT(ctx, 2, "Failed to allocate resource.");
    read->UserId = user_id;
    read->SnapshotProtectionEnabled = rows.int32(0, 0);
    read->SizeLimit = rows.uint64(0, 1);
    read->SizeUsed = rows.uint64(0, 2);
    read->VisibleSnapFolder = folder;
    read->VisibleSnapshot = is_set(folder);
    read->PrevVersions = rows.int32(0, 4);
    *settings = read;
    return 0;
}

uint32_t read_time_machine_allowance(CallContext *ctx, sqlite3 *db, int32_t user_id, UserTimeMachineQuota **allowance)
{
    *allowance = nullptr;
    Rows folder;
    if (select(ctx, db, folder,
               "SELECT A.home_volume_id || '/.timemachine/' || U.uname FROM account_default A, '$user' U WHERE U.id=%d",
               user_id))
        return REPORT(ctx, 5, "Failed DB Query for 'SELECT account_default and $user'.");
    Rows rows;
    if (auto bad = select(ctx, db, rows,
                          "SELECT T.enabled,T.capacity_mb FROM '$timemachine_quota' T WHERE T.user_id=%d", user_id))
        return REPORT(ctx, 5, "Failed DB Query for $timemachine_quota. %s", bad.text);
    if (rows.count == 0) return 0;
    auto *read = allocate<UserTimeMachineQuota>(ctx);
    if (!read) return REPORT(ctx, 2, "Failed to allocate resource.");
    read->UserId = user_id;
    read->Enabled = rows.int32(0, 0);
    read->CapacityMB = rows.int32(0, 1);
    // Without a home volume there is no folder, and nothing is used.
    read->UsedMB = get_tm_used_mb(folder.count ? folder.cell(0, 0) : nullptr);
    *allowance = read;
    return 0;
}

uint32_t read_user_details(CallContext *ctx, sqlite3 *db, int32_t user_id, User *user)
{
    TRY(read_user_quotas(ctx, db, user_id, &user->UserQuota));
    TRY(read_home_folder_settings(ctx, db, user_id, &user->HomeFolderSettings));
    return read_time_machine_allowance(ctx, db, user_id, &user->TimeMachineQuota);
}

}  // namespace qb
