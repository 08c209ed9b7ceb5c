#include "shares/share_purge.h"

#include "backup/backup.h"

namespace qb {
namespace {

/// A statement that removes what one table holds for a share.
struct Removal {
    Sql<int32_t> sql;
    const char *table;
};

uint32_t remove(CallContext *ctx, sqlite3 *db, const Removal &removal, int32_t share_id)
{
    return execute(ctx, db, removal.sql, share_id).or_report(ctx, "Failed DB Query for 'DELETE %s'. %s", removal.table);
}

/// Reads what the share is called, where it lies and whether its snapshots are shown. A share without a row is found
/// out when it is removed.
uint32_t read_share(CallContext *ctx, sqlite3 *db, int32_t share_id)
{
    const char *name = nullptr;
    const char *path = nullptr;
    int32_t shows_snapshots = 0;
    TRY(select_text(ctx, db, name, "SELECT S.name FROM share S WHERE S.id=%d", share_id)
            .or_report(ctx, "Failed DB Query for share. %s"));
    TRY(select_text(ctx, db, path, "SELECT S.path FROM share S WHERE S.id=%d", share_id)
            .or_report(ctx, "Failed DB Query for share. %s"));
    TRY(select_int32(ctx, db, shows_snapshots,
                     "SELECT CASE WHEN S.visible_snapdir IS NULL THEN 0 ELSE 1 END FROM share S WHERE S.id=%d",
                     share_id)
            .or_report(ctx, "Failed DB Query for share. %s"));
    return 0;
}

uint32_t remove_protocol(CallContext *ctx, sqlite3 *db, const char *protocol, int32_t share_id)
{
    TRY(execute(ctx, db, "DELETE FROM user_acl WHERE share_id=%d AND proto=%Q", share_id, protocol)
            .or_report(ctx, "Failed DB Query for 'DELETE user_acl'. %s"));
    TRY(execute(ctx, db, "DELETE FROM group_acl WHERE share_id=%d AND proto=%Q", share_id, protocol)
            .or_report(ctx, "Failed DB Query for 'DELETE group_acl'. %s"));
    TRY(execute(ctx, db, "DELETE FROM host_acl WHERE share_id=%d AND proto=%Q", share_id, protocol)
            .or_report(ctx, "Failed DB Query for 'DELETE host_acl'. %s"));
    TRY(execute(ctx, db, "DELETE FROM `%s_share_option` WHERE share_id=%d", protocol, share_id)
            .or_report(ctx, "Failed DB Query for 'DELETE %s_share_option'. %s", protocol));
    return execute(ctx, db, "DELETE FROM cifs_dfs_option WHERE share_id=%d", share_id)
        .or_report(ctx, "Failed DB Query for 'DELETE cifs_dfs_option'. %s");
}

constexpr Removal kMediaAndRsync[] = {
    {"DELETE FROM rsync_user_password_acl WHERE share_id=%d", "rsync_user_password_acl"},
    {"DELETE FROM host_acl WHERE share_id=%d AND proto='rsync'", "host_acl"},
    {"DELETE FROM rsync_share_option WHERE share_id=%d", "rsync_share_option"},
    {"DELETE FROM dlna_share_option WHERE share_id=%d", "dlna_share_option"},
    {"DELETE FROM daap_share_option WHERE share_id=%d", "daap_share_option"},
};

/// NFS stands twice; the second deletion finds nothing.
uint32_t remove_protocols(CallContext *ctx, sqlite3 *db, int32_t share_id)
{
    for (const char *protocol : {"cifs", "afp", "nfs", "nfs", "ftp"}) TRY(remove_protocol(ctx, db, protocol, share_id));
    for (const Removal &removal : kMediaAndRsync) TRY(remove(ctx, db, removal, share_id));
    for (const char *protocol : {"http", "zvol"}) TRY(remove_protocol(ctx, db, protocol, share_id));
    return 0;
}

constexpr Removal kSnapshots[] = {
    {"DELETE FROM snapshot_schedule WHERE share_id=%d", "snapshot_schedule"},
    {"DELETE FROM snapshot_management WHERE share_id=%d", "snapshot_management"},
    {"DELETE FROM `$snapshot` WHERE zfs_name=(SELECT S.zfs_name FROM share S WHERE S.id=%d)", "$snapshot"},
};

constexpr Removal kOthers[] = {
    {"DELETE FROM `$application_on_share` WHERE zfs_name=(SELECT S.zfs_name FROM share S WHERE S.id=%d)",
     "$application_on_share"},
    {"DELETE FROM user_quota WHERE share_id=%d", "user_quota"},
    {"DELETE FROM group_quota WHERE share_id=%d", "group_quota"},
    {"DELETE FROM _user_quota_stat WHERE share_id=%d", "_user_quota_stat"},
    {"DELETE FROM _group_quota_stat WHERE share_id=%d", "_group_quota_stat"},
    {"DELETE FROM zfs_attr WHERE share_id=%d", "zfs_attr"},
    {"DELETE FROM _zfs_stat WHERE share_id=%d", "_zfs_stat"},
};

/// Snapshots, clones, quotas and statistics. The HTTP service forgets its first share when this is it.
uint32_t remove_belongings(CallContext *ctx, sqlite3 *db, int32_t share_id)
{
    TRY(execute(ctx, db,
                "UPDATE service_http SET share_name='' WHERE share_name=(select S.name from share S WHERE S.id=%d)",
                share_id)
            .or_report(ctx, "Failed DB Query for 'UPDATE service_http'. %s"));
    for (const Removal &removal : kSnapshots) TRY(remove(ctx, db, removal, share_id));
    TRY(execute(ctx, db,
                "DELETE FROM `$snapshot_clones` WHERE cloned_zfs_name=(SELECT S.name FROM share S WHERE S.id=%d) OR "
                "parent_zfs_name=(SELECT S1.name FROM share S1 WHERE S1.id=%d)",
                share_id, share_id)
            .or_report(ctx, "Failed DB Query for 'DELETE $snapshot_clones'. %s"));
    for (const Removal &removal : kOthers) TRY(remove(ctx, db, removal, share_id));
    return 0;
}

/// Share numbers are reused: a process that held this share must not hold the next one of that number.
constexpr Removal kProcesses = {"DELETE FROM process_on_share WHERE share_id=%d", "process_on_share"};

}  // namespace

uint32_t share_purge(CallContext *ctx, sqlite3 *db, int32_t share_id)
{
    TRY(read_share(ctx, db, share_id));
    TRY(remove_protocols(ctx, db, share_id));
    TRY(remove_belongings(ctx, db, share_id));
    TRY(delete_backup_jobs_of_share(ctx, db, share_id));
    TRY(remove(ctx, db, kProcesses, share_id));
    TRY(execute(ctx, db, "DELETE FROM share WHERE id=%d", share_id).or_report(ctx, "Failed DB Query for share. %s"));
    if (sqlite3_changes(db) == 0) return REPORT(ctx, 6, "None of row is deleted. May be bad resource_id=%d'", share_id);
    return 0;
}

uint32_t share_purge_volume(CallContext *ctx, sqlite3 *db, const char *volume_id)
{
    Rows rows;
    TRY(select(ctx, db, rows, "SELECT S.id FROM share S WHERE S.volume_id=%Q", volume_id)
            .or_report(ctx, "Error in 'SELECT FROM share'."));
    for (int i = 0; i < rows.count; i++) TRY(share_purge(ctx, db, rows.int32(i, 0)));
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
