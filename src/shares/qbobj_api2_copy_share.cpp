// Copying a share's configuration under a new name.
#include "frame/pool.h"
#include "shares/shares.h"
#include "validate/validate.h"
#include "validate/validate_db.h"

namespace qb {
namespace {

/// What a copy gets of the original, by share_id. The visible snapshot folder, DFS links, rsync with its users,
/// applications and measurements are the original's own.
constexpr const char *kCopied[] = {
    "user_quota",        "group_quota",       "user_acl",          "group_acl",         "host_acl",
    "cifs_share_option", "afp_share_option",  "nfs_share_option",  "http_share_option", "ftp_share_option",
    "dlna_share_option", "daap_share_option", "zvol_share_option", "snapshot_schedule", "snapshot_management",
    "zfs_attr",
};

/// Finds a share by the name of its volume and its own: by its data set.
uint32_t require_source(CallContext *ctx, sqlite3 *db, const char *volume, const char *name, int32_t *id)
{
    bool found = false;
    TRY(find_name(ctx, db, NameCheck::volume_name, volume, found)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM _volume'. %s"));
    if (found && name) {
        const char *zfs_name = noted(ctx, apr_pstrcat(pool_of(ctx->qbdb), volume, "/", name, nullptr));
        TRY_MEMORY(ctx);
        TRY(find_name(ctx, db, NameCheck::share_dataset, zfs_name, found, *id)
                .or_report(ctx, "Failed DB Query for 'SELECT share'. %s"));
    }
    return found && name ? 0 : REPORT(ctx, 8, "VolumeName/ShareName %s/%s is not exists.", volume, name);
}

uint32_t check_new_name(CallContext *ctx, sqlite3 *db, const char *name)
{
    if (qbobj_validate_sharename(name, nullptr) != 0) return REPORT(ctx, 8, "NewShareName %s is not valid.", name);
    bool taken = false;
    int32_t id = 0;
    TRY(find_share(ctx, db, name, &taken, &id));
    return taken ? REPORT(ctx, 800, "Sharename specified is already exist.") : 0;
}

uint32_t insert_copy(CallContext *ctx, sqlite3 *db, const char *volume, const char *name, int32_t source)
{
    return execute(ctx, db,
                   "INSERT INTO share(zfs_name,type,volume_id,usb_storage_id,name,path,comment,user_access,"
                   "group_access,everyone_access,non_owner_delete,user_id,group_id)SELECT %Q||'/'||%Q,type,volume_id,"
                   "usb_storage_id,%Q,'/'||%Q||'/'||%Q,comment,user_access,group_access,everyone_access,"
                   "non_owner_delete,user_id,group_id FROM share WHERE id=%d",
                   volume, name, name, volume, name, source)
        .or_report(ctx, "Error in 'INSERT share'. (%s)");
}

/// By way of a table in between, so that no column has to be named but share_id.
uint32_t copy_rows(CallContext *ctx, sqlite3 *db, const char *table, int32_t source, int32_t copy)
{
    TRY(execute(ctx, db, "CREATE TEMPORARY TABLE `_%s` AS SELECT * FROM `%s` WHERE share_id=%d", table, table, source)
            .or_report(ctx, "Error in 'COPY %s'. (%s)", table));
    TRY(execute(ctx, db, "UPDATE `_%s` SET share_id=%d", table, copy)
            .or_report(ctx, "Error in 'UPDATE _%s'. (%s)", table));
    TRY(execute(ctx, db, "INSERT INTO `%s` SELECT * FROM `_%s`", table, table)
            .or_report(ctx, "Error in 'INSERT %s'. (%s)", table));
    return execute(ctx, db, "DROP TABLE IF EXISTS `_%s`", table).or_report(ctx, "Error in 'DROP _%s'. (%s)", table);
}

}  // namespace

uint32_t x_qbobj_copyShare(CallContext *ctx, sqlite3 *db, const char *volumeName, const char *shareName,
                           const char *newShareName, int32_t *newShareId)
{
    int32_t source = 0;
    TRY(require_source(ctx, db, volumeName, shareName, &source));
    TRY(check_new_name(ctx, db, newShareName));
    TRY(insert_copy(ctx, db, volumeName, newShareName, source));
    const auto copy = static_cast<int32_t>(sqlite3_last_insert_rowid(db));
    for (const char *table : kCopied) TRY(copy_rows(ctx, db, table, source, copy));
    if (newShareId) *newShareId = copy;
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
