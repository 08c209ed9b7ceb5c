// Deleting shares, and taking processes and applications off them.
#include "shares/share_purge.h"
#include "shares/share_write.h"
#include "shares/shares.h"
#include "validate/validate.h"
#include "validate/validate_db.h"

namespace qb {
namespace {

/// The row of the share that is to go: its data set, by which applications know it.
uint32_t read_data_set(CallContext *ctx, sqlite3 *db, int32_t share_id, const char **zfs_name)
{
    return select_text(ctx, db, *zfs_name, "SELECT S.zfs_name FROM share S WHERE S.id=%d", share_id)
        .or_report(ctx, "Failed DB Query for share. %s");
}

uint32_t check_is_unused(CallContext *ctx, sqlite3 *db, int32_t share_id)
{
    const char *zfs_name = nullptr;
    const char *application = nullptr;
    bool used = false;
    TRY(read_data_set(ctx, db, share_id, &zfs_name));
    TRY(find_name(ctx, db, NameCheck::share_application, zfs_name, used, application)
            .or_report(ctx, "Failed DB Query for share. %s"));
    return used ? REPORT(ctx, 902, "(%s).", application) : 0;
}

/// A folder that holds another share's cannot go: its removal would take the other along.
uint32_t check_holds_no_share(CallContext *ctx, sqlite3 *db, int32_t share_id)
{
    Rows rows;
    TRY(select(ctx, db, rows, "SELECT 1 FROM share S WHERE S.path LIKE (SELECT path FROM share WHERE id=%d)||'/%%'",
               share_id)
            .or_report(ctx, "Failed DB Query for share. %s"));
    return rows.count ? REPORT(ctx, 8, "Cannot delete share (share_id=%d).", share_id) : 0;
}

uint32_t require_share(CallContext *ctx, sqlite3 *db, int32_t share_id)
{
    Rows rows;
    TRY(select(ctx, db, rows, "SELECT path FROM share S WHERE id=%d", share_id)
            .or_report(ctx, "Failed DB Query for share. %s"));
    return rows.count ? 0 : REPORT(ctx, 8, "Share (share_id=%d) not exist.", share_id);
}

uint32_t delete_share(CallContext *ctx, sqlite3 *db, const Share *share)
{
    int32_t id = 0;
    if (parse_resource_id(share->key, &id) != 0 && parse_resource_id(share->ShareId, &id) != 0)
        return REPORT(ctx, 8, "Invalid resource_id (%s).", share->ShareId ? share->ShareId : share->key);
    TRY(check_is_unused(ctx, db, id));
    TRY(check_holds_no_share(ctx, db, id));
    TRY(require_share(ctx, db, id));
    TRY(share_purge(ctx, db, id));
    if (share->Cifs) regenerate_shares(ctx, db, "cifs");
    return 0;
}

}  // namespace

uint32_t x_qbobj_deleteShare(CallContext *ctx, sqlite3 *db, Share *share)
{
    for (; share; share = share->next) TRY(delete_share(ctx, db, share));
    return 0;
}

/// A data set without a share leaves number 0, which no share has, and that ends as any number without a share does.
uint32_t x_qbobj_deleteZvol(CallContext *ctx, sqlite3 *db, const char *zfsName)
{
    int32_t id = 0;
    TRY(select_int32(ctx, db, id, "SELECT S.id FROM share S WHERE S.zfs_name=%Q", zfsName)
            .or_report(ctx, "Error in 'SELECT FROM share'."));
    return share_purge(ctx, db, id);
}

uint32_t x_qbobj_deleteShareOnVolume(CallContext *ctx, sqlite3 *db, const char *volumeId)
{
    return share_purge_volume(ctx, db, volumeId);
}

uint32_t x_qbobj_deleteShareProcess(CallContext *ctx, sqlite3 *db, const char *zfsName, int32_t pid)
{
    if (pid == 0)
        return execute(ctx, db,
                       "DELETE FROM `process_on_share` WHERE share_id=(SELECT S.id FROM `share` S WHERE S.zfs_name=%Q)",
                       zfsName)
            .or_report(ctx, "Failed DB Query for 'DELETE process_on_share'. %s");
    return execute(ctx, db,
                   "DELETE FROM `process_on_share` WHERE share_id=(SELECT S.id FROM `share` S WHERE S.zfs_name=%Q) AND "
                   "pid=%d",
                   zfsName, pid)
        .or_report(ctx, "Failed DB Query for 'DELETE process_on_share'. %s");
}

uint32_t x_qbobj_deleteShareUsedBy(CallContext *ctx, sqlite3 *db, const char *zfsName, UsedBy *usedby)
{
    if (!usedby || !usedby->AppName) return REPORT(ctx, 8, "usedby and usedby->AppName cannot be NULL");
    return execute(ctx, db, "DELETE FROM `$application_on_share` WHERE zfs_name=%Q AND app_name=%Q", zfsName,
                   usedby->AppName)
        .or_report(ctx, "Failed DB Query for 'DELETE application_on_share'. %s");
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
