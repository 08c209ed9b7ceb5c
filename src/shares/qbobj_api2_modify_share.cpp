// Changing shares, and single aspects of them.
#include "accounts/quotas.h"
#include "frame/list.h"
#include "frame/pool.h"
#include "shares/share_change.h"

namespace qb {
namespace {

uint32_t update_row(const ShareChange &change, const ShareSet &set)
{
    TRY_MEMORY(change.ctx);
    log_dropped(change, set);
    if (set.empty()) return 0;
    const Failure bad = execute(change.ctx, change.db, "UPDATE share SET %s WHERE id=%d", +set.text, change.id);
    if (bad.rc == kConstraint) return REPORT(change.ctx, 800, "Sharename specified is already exist.");
    return bad.or_report(change.ctx, "Failed DB Query for 'UPDATE share'. %s");
}

uint32_t change_row(const ShareChange &change)
{
    ShareSet set;
    TRY(choose_share_name(change, &set));
    TRY(choose_share_folder(change, &set));
    TRY(change_share_attributes(change));
    TRY(update_row(change, set));
    return carry_share_name(change);
}

uint32_t change_zvol(const ShareChange &change)
{
    const ZvolShareOption *zvol = change.given->Zvol;
    if (!zvol) return 0;
    return execute(change.ctx, change.db,
                   "INSERT OR REPLACE INTO zvol_share_option (share_id,kb_size,is_sparse) VALUES(%d,%llu,%d)",
                   change.id, zvol->SizeKB, zvol->IsSparse)
        .or_report(change.ctx, "Failed DB Query for zvol share_option. %s");
}

uint32_t change_snapshots(const ShareChange &change)
{
    const Schedule *schedule = change.given->SnapshotSchedule;
    if (schedule) TRY(change_snapshot_schedule(change.ctx, change.db, change.id, *schedule));
    return change_snapshot_policy(change);
}

/// Quotas of other accounts stay.
uint32_t write_quotas(const ShareChange &change, const char *kind, const Quota *quota)
{
    for (; quota; quota = quota->next)
        TRY(execute(change.ctx, change.db,
                    "INSERT OR REPLACE INTO %s_quota (%s_id,share_id,mb_soft,mb_hard) VALUES(%d,%d,%d*(SELECT "
                    "diskquota_warn FROM account_default LIMIT 1)/100,%d)",
                    kind, kind, quota->AccountId, change.id, limit_of(quota), limit_of(quota))
                .or_report(change.ctx, "Failed DB Query for 'INSERT %s_quota'. %s", kind));
    return 0;
}

/// Reads what the caller needs to bring the folder into line.
uint32_t read_answer(const ShareChange &change)
{
    const auto &[ctx, db, settings, given, answer, id, stored] = change;
    TRY(select_int32(ctx, db, answer->mode,
                     "SELECT (S.non_owner_delete << 9)|(S.user_access << 6)|(S.group_access << 3)|(S.everyone_access "
                     "<< 0) FROM share S WHERE S.id=%d",
                     id)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM share'. %s"));
    if (given->Path) return 0;
    return select_text(ctx, db, answer->path, "SELECT S.path FROM share S WHERE S.id=%d", id)
        .or_report(ctx, "Failed DB Query for 'SELECT FROM share'. %s");
}

uint32_t change_share(ShareChange *change)
{
    const Share *given = change->given;
    if (parse_resource_id(given->ShareId, &change->id) != 0)
        return REPORT(change->ctx, 901, "Invalid resource_id (%s).", given->ShareId);
    TRY(require_share_by_id(change->ctx, change->db, change->settings, change->id, &change->stored));
    TRY(change_row(*change));
    TRY(change_share_protocols(*change));
    TRY(change_zvol(*change));
    if (given->UsedBy) TRY(share_write_used_by(change->ctx, change->db, change->id, given->UsedBy));
    TRY(change_snapshots(*change));
    TRY(write_quotas(*change, "user", given->UserQuota));
    TRY(write_quotas(*change, "group", given->GroupQuota));
    return read_answer(*change);
}

void write_answer(const ShareAnswer &answer)
{
    Share *share = answer.share;
    if (answer.old_name) {
        share->OldShareName = answer.old_name;
        share->OldPath = answer.old_path;
    }
    share->OldVisibleSnapshot = answer.old_visible;
    if (!share->Path) share->Path = answer.path;
    if (share->Stat) share->Stat->_PosixMode = answer.mode;
    for (int i = 0; i < answer.protocols; i++) *answer.changed[i] = 1;
}

uint32_t check_application(CallContext *ctx, const UsedBy *usedby)
{
    if (usedby && usedby->AppName) return 0;
    return REPORT(ctx, 8, "usedby and usedby->AppName cannot be NULL");
}

}  // namespace

uint32_t x_qbobj_modifyShare(CallContext *ctx, sqlite3 *db, Share *share)
{
    if (!share) return 0;
    ShareSettings settings;
    TRY(read_share_settings(ctx, db, &settings));
    ShareAnswer *answers = nullptr;
    List<ShareAnswer> list(&answers);
    for (; share; share = share->next) {
        ShareAnswer *answer = list.append(ctx);
        TRY_MEMORY(ctx);
        answer->share = share;
        ShareChange change{ctx, db, settings, share, answer};
        TRY(change_share(&change));
    }
    TRY_MEMORY(ctx);
    for (; answers; answers = answers->next) write_answer(*answers);
    return 0;
}

uint32_t x_qbobj_modifyShareVisibleSnapFolder(CallContext *ctx, sqlite3 *db, const char *zfsName, const char *folder)
{
    return execute(ctx, db, "UPDATE share SET visible_snapdir=%Q WHERE zfs_name=%Q", folder, zfsName)
        .or_report(ctx, "Failed DB Query for 'UPDATE share'. %s");
}

uint32_t x_qbobj_modifyZvol(CallContext *ctx, sqlite3 *db, const char *zfsName, const char *shareName,
                            const char *comment, uint64_t sizeKB, int32_t isSparse)
{
    TRY(execute(ctx, db,
                "UPDATE zvol_share_option SET kb_size=%llu,is_sparse=%d WHERE share_id=(SELECT id FROM share S WHERE "
                "S.zfs_name=%Q)",
                sizeKB, isSparse, zfsName)
            .or_report(ctx, "Failed DB Query for 'UPDATE zfs_share_option'. %s"));
    return execute(ctx, db, "UPDATE share SET name=%Q,comment=%Q,path='/'||%Q WHERE zfs_name=%Q", shareName, comment,
                   zfsName, zfsName)
        .or_report(ctx, "Failed DB Query for 'UPDATE share'. %s");
}

uint32_t x_qbobj_modifyShareSnapshotSchedule(CallContext *ctx, sqlite3 *db, const char *shareName, Schedule *schedule)
{
    QB_ASSERT(schedule);
    int32_t id = 0;
    bool found = false;
    TRY(find_share(ctx, db, shareName, &found, &id));
    if (!found) return REPORT(ctx, 6, "Share name (%s) may be invalid.", shareName);
    return change_snapshot_schedule(ctx, db, id, *schedule);
}

/// An unknown share is no error: there is no data set to name in the row, which is then ignored.
uint32_t x_qbobj_modifyShareUsedBy(CallContext *ctx, sqlite3 *db, const char *shareId, UsedBy *usedby)
{
    int32_t id = 0;
    if (parse_resource_id(shareId, &id) != 0) return REPORT(ctx, 8, "ShareId=%s is not a valid ShareId", shareId);
    TRY(check_application(ctx, usedby));
    return execute(ctx, db,
                   "INSERT OR IGNORE INTO `$application_on_share` (zfs_name,app_name,app_data) VALUES((SELECT "
                   "S.zfs_name FROM share S WHERE S.id=%d),%Q,%Q)",
                   id, usedby->AppName, usedby->AppData)
        .or_report(ctx, "Failed DB Query for 'INSERT $application_on_share'. %s");
}

uint32_t x_qbobj_modifyShareUsedByExclusive(CallContext *ctx, sqlite3 *db, const char *zfsName, UsedBy *usedby)
{
    TRY(check_application(ctx, usedby));
    TRY(execute(ctx, db, "DELETE FROM `$application_on_share` WHERE app_name=%Q", usedby->AppName)
            .or_report(ctx, "Failed DB Query for 'DELETE $application_on_share'. %s"));
    return execute(ctx, db,
                   "INSERT OR REPLACE INTO `$application_on_share` (zfs_name,app_name,app_data) VALUES((SELECT "
                   "S.zfs_name FROM share S WHERE S.zfs_name=%Q),%Q,%Q)",
                   zfsName, usedby->AppName, usedby->AppData)
        .or_report(ctx, "Failed DB Query for 'INSERT $application_on_share'. %s");
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
