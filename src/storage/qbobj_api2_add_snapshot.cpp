// Snapshots of shares and home folders: adding.
#include "frame/query.h"
#include "storage/snapshots.h"
#include "validate/validate_db.h"

namespace qb {

uint32_t require_share(CallContext *ctx, sqlite3 *db, const char *name, SharePlace &place)
{
    bool found = false;
    // Here and below a look-up that fails is told as one that found nothing.
    if (!find_name(ctx, db, NameCheck::share_name, name, found, place.share_id) && found) return 0;
    return REPORT(ctx, 8, "Specified ShareName(%s) is not exist.", name);
}

uint32_t require_volume(CallContext *ctx, sqlite3 *db, const char *name, SharePlace &place)
{
    bool found = false;
    if (!find_name(ctx, db, NameCheck::volume_name, name, found, place.volume_id) && found) return 0;
    return REPORT(ctx, 8, "Specified VolumeName(%s) is not exist.", name);
}

uint32_t require_share_on_volume(CallContext *ctx, sqlite3 *db, const SharePlace &place, const char *share_name,
                                 const char *volume_name)
{
    int32_t one = 0;
    bool found = false;
    TRY(find_int32(ctx, db, one, found, "SELECT 1 FROM share WHERE id=%d AND volume_id=%Q", place.share_id,
                   place.volume_id)
            .or_report(ctx, "Error in DB query."));
    if (found) return 0;
    return REPORT(ctx, 8, "Specified ShareName(%s) is not on VolumeName(%s).", share_name, volume_name);
}

namespace {

/// The number of the row that was just inserted.
int32_t inserted_id(sqlite3 *db)
{
    return static_cast<int32_t>(sqlite3_last_insert_rowid(db));
}

uint32_t insert_snapshot(CallContext *ctx, sqlite3 *db, Snapshot *snapshot)
{
    SharePlace place;
    TRY(require_share(ctx, db, snapshot->ShareName, place));
    TRY(require_volume(ctx, db, snapshot->VolumeName, place));
    TRY(require_share_on_volume(ctx, db, place, snapshot->ShareName, snapshot->VolumeName));
    const Failure bad =
        execute(ctx, db,
                "INSERT INTO `$snapshot`(zfs_name,name,type,created_on)VALUES((SELECT S.zfs_name FROM share S WHERE "
                "S.id=%d),%Q,%d,%d)",
                place.share_id, snapshot->SnapshotName, snapshot->Type, snapshot->CreatedOn);
    if (bad.rc == kConstraint) return REPORT(ctx, 8, "Probably share_id=%d is invalid or name is NULL", place.share_id);
    TRY(bad.or_report(ctx, "Failed DB Query for 'INSERT INTO $snapshot'. %s"));
    snapshot->resource_id = inserted_id(db);
    return 0;
}

uint32_t insert_snapshot(CallContext *ctx, sqlite3 *db, HfSnapshot *snapshot)
{
    const Failure bad = execute(
        ctx, db, "INSERT INTO `$home_folder_snapshot`(user_name,home_dir,name,type,created_on)VALUES(%Q,%Q,%Q,%d,%d)",
        snapshot->UserName, snapshot->HomeDir, snapshot->SnapshotName, snapshot->Type, snapshot->CreatedOn);
    if (bad.rc == kConstraint) return REPORT(ctx, 8, "Probably some parameter is NULL");
    TRY(bad.or_report(ctx, "Failed DB Query for 'INSERT INTO $home_folder_snapshot'. %s"));
    snapshot->resource_id = inserted_id(db);
    return 0;
}

}  // namespace

uint32_t x_qbobj_addSnapshot(CallContext *ctx, sqlite3 *db, Snapshot *snapshot)
{
    for (; snapshot; snapshot = snapshot->next) TRY(insert_snapshot(ctx, db, snapshot));
    return 0;
}

uint32_t x_qbobj_addHfSnapshot(CallContext *ctx, sqlite3 *db, HfSnapshot *snapshot)
{
    for (; snapshot; snapshot = snapshot->next) TRY(insert_snapshot(ctx, db, snapshot));
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
