// The share loader: one share from a row of the share query, and everything that hangs on it in other tables.
#include "accounts/directory_mode.h"
#include "frame/list.h"
#include "frame/read_row.h"
#include "frame/together.h"
#include "shares/share_details.h"
#include "validate/validate_db.h"

namespace qb {

// The snapshot policy has a row per retention rule: joined, it would repeat the share.
const char *const kShareQuery =
    "SELECT S.id,S.name,S.comment,S.path,S.non_owner_delete,IFNULL((SELECT U.id FROM `$user` U WHERE "
    "U.id=S.user_id),S.user_id),CASE WHEN S.user_access&2 THEN 'ReadWrite' WHEN S.user_access&4 THEN 'ReadOnly' ELSE "
    "'Disabled' END,(SELECT G.id FROM `$group` G WHERE G.id=S.group_id),CASE WHEN S.group_access&2 THEN 'ReadWrite' "
    "WHEN S.group_access&4 THEN 'ReadOnly' ELSE 'Disabled' END,CASE WHEN S.everyone_access&2 THEN 'ReadWrite' WHEN "
    "S.everyone_access&4 THEN 'ReadOnly' ELSE 'Disabled' END,S.volume_id,ZS.available/1048576,ZS.used/1048576,"
    "ZS.usedbychildren/1048576,ZS.usedbydataset/1048576,ZS.usedbyrefreservation/1048576,ZS.usedbysnapshots/1048576,"
    "ZS.compressratio,ZA.mb_quota,ZA.mb_reservation,ZA.mb_refquota,ZA.mb_refreservation,ZA.compression,ZA.dedup,"
    "S.type,S.zfs_name,(SELECT COUNT(*) FROM `$snapshot` N WHERE N.zfs_name=S.zfs_name AND N.type=1),(SELECT COUNT(*) "
    "FROM `$snapshot` N WHERE N.zfs_name=S.zfs_name AND N.type=2),(SELECT MIN(N.created_on) FROM `$snapshot` N WHERE "
    "N.zfs_name=S.zfs_name),(SELECT MAX(N.created_on) FROM `$snapshot` N WHERE N.zfs_name=S.zfs_name),"
    "S.migrate_to_volume_id,ZA.logbias,ZA.origin,S.visible_snapdir,IFNULL(ZA.sync,'standard'),"
    "STRFTIME('%s',S.update_ts),(SELECT IFNULL(MAX(PS.blocking)+1,0) FROM `process_on_share` PS WHERE "
    "PS.share_id=S.id),ZS.referenced/1048576,S.volume_id||'/'||SC.parent_zfs_name||'@'||SC.parent_snapshot_name,"
    "ZA.bit_rot_protection,(SELECT SM.enabled FROM `snapshot_management` SM WHERE SM.share_id=S.id LIMIT 1),(SELECT "
    "SM.schedule FROM `snapshot_management` SM WHERE SM.share_id=S.id LIMIT 1),(SELECT SM.nonempty_snapshots FROM "
    "`snapshot_management` SM WHERE SM.share_id=S.id LIMIT 1),(SELECT SM.prev_versions FROM `snapshot_management` SM "
    "WHERE SM.share_id=S.id LIMIT 1) FROM share S LEFT JOIN cifs_share_option CIFS ON CIFS.share_id=S.id LEFT JOIN "
    "_zfs_stat ZS ON ZS.share_id=S.id LEFT JOIN zfs_attr ZA ON ZA.share_id=S.id LEFT JOIN `$snapshot_clones` SC ON "
    "SC.cloned_zfs_name=S.name";

namespace {

/// Reads the columns of the share query: the share's own fields, the permissions of its folder and its owner as stored.
void read_columns(CallContext *ctx, const Rows &rows, int row, Share *share, FileStat *stat, StoredOwner *owner)
{
    read_row(
        ctx, rows, row, both(share->key, share->ShareId), share->ShareName, share->Comment, share->Path,
        optional(stat->NonOwnerDelete, stat->NonOwnerDelete_void), optional(owner->user, owner->user_void),
        stat->UserAccess, optional(owner->group, owner->group_void), stat->GroupAccess, stat->EveryoneAccess,
        share->VolumeId, share->AvailableMB, share->UsedMB, share->UsedByChildrenMB, share->UsedByDatasetMB,
        share->UsedByRefReservationMB, share->UsedBySnapshotsMB, share->CompressRatio,
        optional(share->QuotaMB, share->QuotaMB_void), optional(share->ReserveMB, share->ReserveMB_void),
        optional(share->RefQuotaMB, share->RefQuotaMB_void), optional(share->RefReserveMB, share->RefReserveMB_void),
        optional(share->Compression, share->Compression_void), optional(share->Dedup, share->Dedup_void),
        share->ShareType, share->ZfsName, share->NrContinuousSnapshots, share->NrManualSnapshots,
        share->FirstSnapshotCreatedOn, share->LastSnapshotCreatedOn, share->MigrateToVolumeId, share->LogBias,
        share->Origin, empty(share->VisibleSnapFolder), share->Sync, share->UpdateTS, share->Busy, share->ReferencedMB,
        share->CloneOf, optional(share->BitRotProtection, share->BitRotProtection_void),
        share->CustomSnapshotManagement, share->CustomSnapshotSchedule, share->NonEmptySnapshots, share->PrevVersions);
    share->VisibleSnapshot = is_set(share->VisibleSnapFolder);
}

uint32_t read_schedule(CallContext *ctx, sqlite3 *db, int32_t share_id, Schedule **schedule)
{
    Schedule read{};
    bool found = false;
    TRY(read_snapshot_schedule(ctx, db, share_id, &found, &read));
    if (!found) return 0;
    *schedule = allocate<Schedule>(ctx);
    TRY_MEMORY(ctx);
    **schedule = read;
    return 0;
}

uint32_t read_retention_rules(CallContext *ctx, sqlite3 *db, int32_t share_id, SnapshotRetentionRules **head)
{
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT SM.retention_rule,SM.lifetime,SM.number FROM `snapshot_management` SM WHERE share_id=%d",
               share_id)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM snapshot_management'. %s"));
    List<SnapshotRetentionRules> list(head);
    for (int i = 0; i < rows.count; i++) {
        SnapshotRetentionRules *rule = list.append(ctx);
        TRY_MEMORY(ctx);
        read_row(ctx, rows, i, rule->Type, rule->Lifetime, rule->Number);
    }
    return 0;
}

uint32_t read_clones(CallContext *ctx, sqlite3 *db, int32_t share_id, SnapshotClone **head)
{
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT id,cloned_zfs_name,parent_snapshot_name,parent_zfs_name FROM `$snapshot_clones` WHERE "
               "parent_zfs_name=(SELECT S.name FROM share S WHERE S.id=%d)",
               share_id)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM $snapshot_clones'. %s"));
    List<SnapshotClone> list(head);
    for (int i = 0; i < rows.count; i++) {
        SnapshotClone *clone = list.append(ctx);
        TRY_MEMORY(ctx);
        read_row(ctx, rows, i, both(clone->resource_id, clone->ID), clone->ClonedShareName, clone->ParentSnapshotName,
                 clone->ParentShareName);
    }
    return 0;
}

uint32_t read_applications(CallContext *ctx, sqlite3 *db, int32_t share_id, UsedBy **head)
{
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT A.app_name,A.app_data FROM `$application_on_share` A WHERE zfs_name=(SELECT S.zfs_name FROM "
               "share S WHERE S.id=%d)",
               share_id)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM $application_on_share'. %s"));
    return append_used_by(ctx, rows, head);
}

uint32_t append_quotas(CallContext *ctx, const Rows &rows, Quota **head)
{
    List<Quota> list(head);
    for (int i = 0; i < rows.count; i++) {
        Quota *quota = list.append(ctx);
        TRY_MEMORY(ctx);
        read_row(ctx, rows, i, quota->AccountId, quota->ShareId, quota->HardMB, quota->UsedMB, quota->AccountName);
    }
    return 0;
}

uint32_t read_quotas(CallContext *ctx, sqlite3 *db, int32_t share_id, Share *share)
{
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT Q.user_id,S.zfs_name,Q.mb_hard,QS.mb_used,A.uname FROM user_quota Q INNER JOIN share S ON "
               "S.id=Q.share_id LEFT JOIN _user_quota_stat QS ON QS.share_id=Q.share_id AND QS.user_id=Q.user_id LEFT "
               "JOIN `$user` A ON A.id=Q.user_id WHERE Q.share_id=%d",
               share_id)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM %s_quota'. %s", "user"));
    TRY(append_quotas(ctx, rows, &share->UserQuota));
    TRY(select(ctx, db, rows,
               "SELECT Q.group_id,S.zfs_name,Q.mb_hard,QS.mb_used,A.gname FROM group_quota Q INNER JOIN share S ON "
               "S.id=Q.share_id LEFT JOIN _group_quota_stat QS ON QS.share_id=Q.share_id AND QS.group_id=Q.group_id "
               "LEFT JOIN `$group` A ON A.id=Q.group_id WHERE Q.share_id=%d",
               share_id)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM %s_quota'. %s", "group"));
    return append_quotas(ctx, rows, &share->GroupQuota);
}

}  // namespace

uint32_t read_share_settings(CallContext *ctx, sqlite3 *db, ShareSettings *settings)
{
    if (select_int32(ctx, db, settings->ftp_anonymous,
                     "SELECT IFNULL(CASE WHEN auth_mode='anonymous' THEN 1 ELSE 0 END, 0) FROM service_ftp LIMIT 1")
            .logged(ctx, "Fail query. %s\n"))
        settings->ftp_anonymous = 0;
    return read_ads_mode(ctx, db, &settings->ads);
}

uint32_t find_share(CallContext *ctx, sqlite3 *db, const char *name, bool *found, int32_t *id)
{
    return find_name(ctx, db, NameCheck::share_name, name, *found, *id)
        .or_report(ctx, "Failed DB Query for 'SELECT share'. %s");
}

uint32_t select_share(CallContext *ctx, sqlite3 *db, int32_t share_id, Rows *rows)
{
    return select(ctx, db, *rows, "%s WHERE S.id=%d ORDER BY S.name COLLATE NOCASE", kShareQuery, share_id)
        .or_report(ctx, "Failed DB Query for 'SELECT FROM share'. %s");
}

uint32_t share_load(CallContext *ctx, sqlite3 *db, const ShareSettings &settings, const Rows &rows, int row,
                    Share *share)
{
    const int32_t id = rows.int32(row, 0);
    share->Stat = allocate<FileStat>(ctx);
    TRY_MEMORY(ctx);
    StoredOwner owner;
    read_columns(ctx, rows, row, share, share->Stat, &owner);
    TRY(read_folder(ctx, db, share->Path, owner, share->Stat));
    TRY(read_schedule(ctx, db, id, &share->SnapshotSchedule));
    TRY(read_retention_rules(ctx, db, id, &share->SnapshotRetentionRules));
    TRY(read_protocols(ctx, db, settings, id, share));
    TRY(read_clones(ctx, db, id, &share->SnapshotClones));
    TRY(read_applications(ctx, db, id, &share->UsedBy));
    TRY(read_quotas(ctx, db, id, share));
    TRY_MEMORY(ctx);
    return 0;
}

uint32_t append_shares(CallContext *ctx, sqlite3 *db, const ShareSettings &settings, const Rows &rows, Share **head)
{
    List<Share> list(head);
    Together together(ctx, db, "share", rows);
    for (int i = 0; i < rows.count; i++) {
        Share *share = list.append(ctx);
        TRY_MEMORY(ctx);
        TRY(share_load(ctx, db, settings, rows, i, share));
    }
    return 0;
}

uint32_t read_snapshot_schedule(CallContext *ctx, sqlite3 *db, int32_t share_id, bool *found, Schedule *schedule)
{
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT SS.enabled,SS.minute,SS.hour,SS.day_of_month,SS.day_of_week,SS.month,SS.last_taken,"
               "SS.purge_manual_snapshot,SS.last_daily_taken,SS.last_weekly_taken FROM snapshot_schedule SS WHERE "
               "share_id=%d",
               share_id)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM snapshot_schedule'. %s"));
    *found = rows.count > 0;
    if (*found)
        read_row(ctx, rows, 0, schedule->Enabled, schedule->Minute, schedule->Hour, schedule->DayOfMonth,
                 schedule->DayOfWeek, schedule->Month, schedule->LastTaken, schedule->PurgeManualSnapshot,
                 schedule->LastDailyTaken, schedule->LastWeeklyTaken);
    return 0;
}

uint32_t read_used_by(CallContext *ctx, sqlite3 *db, const char *zfs_name, UsedBy **head)
{
    Rows rows;
    TRY(select(ctx, db, rows, "SELECT A.app_name,A.app_data FROM `$application_on_share` A WHERE zfs_name=%Q", zfs_name)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM $application_on_share'. %s"));
    return append_used_by(ctx, rows, head);
}

uint32_t append_used_by(CallContext *ctx, const Rows &rows, UsedBy **head)
{
    UsedBy *read = nullptr;
    List<UsedBy> list(&read);
    for (int i = 0; i < rows.count; i++) {
        UsedBy *used_by = list.append(ctx);
        TRY_MEMORY(ctx);
        read_row(ctx, rows, i, used_by->AppName, used_by->AppData);
    }
    TRY_MEMORY(ctx);
    List<UsedBy>(head).link(read);
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
