#include "accounts/users.h"

#include "accounts/quotas.h"
#include "accounts/time_machine_allowance.h"
#include "frame/pool.h"

namespace qb {

const char *masked(const char *hash)
{
    return is_set(hash) ? masked_password : "";
}

const char *group_name(CallContext *ctx, sqlite3 *db, const UserCells &cells, int32_t group_id)
{
    if (cells.group) return copy_text(ctx, cells.group);
    const char *name = nullptr;
    return qbdb_util_get_domain_gname_by_gid(ctx->qbdb, db, group_id, &name) ? "" : or_empty(name);
}

namespace {

/// Reads a row of settings, if there is one.
uint32_t take_home_folder_settings(CallContext *ctx, const Rows &rows, RowRange range, int32_t user_id,
                                   UserHomeFolderSettings **settings)
{
    *settings = nullptr;
    if (range.empty()) return 0;
    auto *read = allocate<UserHomeFolderSettings>(ctx);
    TRY_MEMORY(ctx);
    read->UserId = user_id;
    read_row(ctx, rows, range.first, read->SnapshotProtectionEnabled, read->SizeLimit, read->SizeUsed,
             empty(read->VisibleSnapFolder), read->PrevVersions);
    TRY_MEMORY(ctx);
    read->VisibleSnapshot = is_set(read->VisibleSnapFolder);
    *settings = read;
    return 0;
}

}  // namespace

uint32_t read_home_folder_settings(CallContext *ctx, sqlite3 *db, int32_t user_id, UserHomeFolderSettings **settings)
{
    *settings = nullptr;
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT H.snapshot_protection_enabled,H.quota,(SELECT S.used FROM `_hf_zfs_stat` S WHERE "
               "S.user_id=H.user_id),H.visible_snapdir,H.prev_versions FROM `$home_folder` H WHERE "
               "H.user_id=%d",
               user_id)
            .or_report(ctx, "Failed DB Query for $home_folder. %s"));
    return take_home_folder_settings(ctx, rows, all_of(rows), user_id, settings);
}

uint32_t read_user_details(CallContext *ctx, sqlite3 *db, int32_t user_id, User *user)
{
    TRY(read_user_quotas(ctx, db, user_id, &user->UserQuota));
    TRY(read_home_folder_settings(ctx, db, user_id, &user->HomeFolderSettings));
    return read_time_machine_allowance(ctx, db, user_id, &user->TimeMachineQuota);
}

bool UserRelations::read(CallContext *ctx, sqlite3 *db, const IdRange &users)
{
    if (statements_are_watched(ctx) || !(users.is_dense() || users.is_most_of(ctx, db, "$user"))) return false;
    return read_quotas_of_users(ctx, db, users, &quotas) &&
           homes.read(ctx, db,
                      "SELECT H.user_id,H.snapshot_protection_enabled,H.quota,(SELECT S.used FROM `_hf_zfs_stat` S "
                      "WHERE S.user_id=H.user_id),H.visible_snapdir,H.prev_versions FROM `$home_folder` H WHERE "
                      "H.user_id BETWEEN %d AND %d ORDER BY H.user_id",
                      users.least, users.most) &&
           read_allowances_of_users(ctx, db, users, &allowances);
}

uint32_t take_user_details(CallContext *ctx, sqlite3 *db, UserRelations *related, int32_t user_id, User *user)
{
    TRY(append_user_quotas(ctx, &related->quotas, user_id, &user->UserQuota));
    const RowRange home = related->homes.of(user_id);
    TRY(take_home_folder_settings(ctx, related->homes.rows, home, user_id, &user->HomeFolderSettings));
    if (related->allowances.of(user_id).empty()) return 0;
    return read_time_machine_allowance(ctx, db, user_id, &user->TimeMachineQuota);
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
