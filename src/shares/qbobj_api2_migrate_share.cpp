// A share's way to another volume: the mark before its data is moved, and the move of its records after.
#include <cstring>

#include "shares/shares.h"

namespace qb {
namespace {

/// One migration in the whole appliance: two would compete for the same disks.
uint32_t check_none_migrates(CallContext *ctx, sqlite3 *db)
{
    int32_t pending = 0;
    TRY(select_int32(ctx, db, pending, "SELECT COUNT(*) FROM share S WHERE S.migrate_to_volume_id IS NOT NULL")
            .or_report(ctx, "Error in 'SELECT share'."));
    return pending ? REPORT(ctx, 815, "Only one migration at a time") : 0;
}

bool lies_on(const char *zfs_name, const char *volume_id)
{
    if (!zfs_name || !volume_id) return false;
    const size_t length = strlen(volume_id);
    return strncmp(zfs_name, volume_id, length) == 0 && zfs_name[length] == '/';
}

/// Where the share goes, read while the mark is there.
uint32_t read_new_path(CallContext *ctx, sqlite3 *db, const char *zfs_name, const char **path)
{
    return select_text(ctx, db, *path, "SELECT '/'||migrate_to_volume_id||'/'||name FROM share S WHERE zfs_name=%Q",
                       zfs_name)
        .or_report(ctx, "Error in 'SELECT share'.");
}

/// Snapshots and applications know the share by its data set and move first: the new one follows from the mark.
uint32_t move_share(CallContext *ctx, sqlite3 *db, const char *zfs_name)
{
    TRY(execute(ctx, db,
                "UPDATE `$snapshot` SET zfs_name=(SELECT migrate_to_volume_id||'/'||name FROM share WHERE zfs_name=%Q) "
                "WHERE zfs_name=%Q",
                zfs_name, zfs_name)
            .or_report(ctx, "Error in 'UPDATE `$snapshot`'."));
    TRY(execute(ctx, db,
                "UPDATE `$application_on_share` SET zfs_name=(SELECT migrate_to_volume_id||'/'||name FROM share WHERE "
                "zfs_name=%Q) WHERE zfs_name=%Q",
                zfs_name, zfs_name)
            .or_report(ctx, "Error in 'UPDATE `$application_on_share`'."));
    return execute(ctx, db,
                   "UPDATE share SET volume_id=migrate_to_volume_id,path=(SELECT '/'||V.lv_name||'/'||name FROM "
                   "_volume V WHERE V.id=migrate_to_volume_id),zfs_name=migrate_to_volume_id||'/'||name,"
                   "migrate_to_volume_id=NULL WHERE zfs_name=%Q",
                   zfs_name)
        .or_report(ctx, "Error in 'UPDATE share'.");
}

uint32_t clear_mark(CallContext *ctx, sqlite3 *db, const char *zfs_name)
{
    return execute(ctx, db, "UPDATE share SET migrate_to_volume_id=NULL WHERE zfs_name=%Q", zfs_name)
        .or_report(ctx, "Error in 'UPDATE share'.");
}

}  // namespace

uint32_t x_qbobj_preMigrateShare(CallContext *ctx, sqlite3 *db, const char *zfsName, const char *destVolumeId)
{
    TRY(check_none_migrates(ctx, db));
    if (lies_on(zfsName, destVolumeId)) return REPORT(ctx, 8, "Destination VolumeId is the same as source");
    return execute(ctx, db, "UPDATE share SET migrate_to_volume_id=%Q WHERE zfs_name=%Q", destVolumeId, zfsName)
        .or_report(ctx, "Error in 'UPDATE share'.");
}

uint32_t x_qbobj_postMigrateShare(CallContext *ctx, sqlite3 *db, const char *zfsName, int32_t success,
                                  const char **newPath)
{
    const char *path = nullptr;
    if (newPath) TRY(read_new_path(ctx, db, zfsName, &path));
    TRY(success ? move_share(ctx, db, zfsName) : clear_mark(ctx, db, zfsName));
    TRY_MEMORY(ctx);
    if (newPath) *newPath = path;
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
