// Writing options and schedules, and the words that they are given in.
#include "frame/pool.h"
#include "shares/share_write.h"

namespace qb {
namespace {

uint32_t refuse(CallContext *ctx, const Complaint &complaint, const char *word)
{
    return report(ctx, 8, complaint.file, complaint.line, complaint.text, word);
}

}  // namespace

void regenerate_shares(CallContext *ctx, sqlite3 *db, const char *proto)
{
    qbdb_service_update_setting_by_share(ctx->qbdb, db, proto);
}

uint32_t check_new_share_name(CallContext *ctx, const char *name)
{
    switch (const int32_t rc = qbobj_validate_sharename(name, nullptr)) {
        case 0: return 0;
        case 3: return REPORT(ctx, 806, "ShareName is too long (%s)", name);
        case 4:
        case 5: return REPORT(ctx, 808, "ShareName (%s) is reserved", name);
        default: return REPORT(ctx, 8, "Invalid ShareName (%s), rc=%d", name, rc);
    }
}

uint32_t check_sync(CallContext *ctx, const char *sync)
{
    if (check_one_of(sync, Case::exact, {"standard", "always", "disabled"}) == 0) return 0;
    return REPORT(ctx, 8, "Invalid Sync (%s). One of 'standard', 'always', 'disabled'.", sync);
}

uint32_t choose_access(CallContext *ctx, const char *word, const char **stored, Complaint complaint)
{
    return map_read_write_disabled(word, nullptr, stored) == 0 ? 0 : refuse(ctx, complaint, word);
}

uint32_t choose_folder_bits(CallContext *ctx, const char *word, int32_t *bits, Complaint complaint)
{
    return map_access_bits(word, nullptr, true, bits) == 0 ? 0 : refuse(ctx, complaint, word);
}

uint32_t choose_rights(CallContext *ctx, RightsMap map, const RightsWords &words,
                       const Complaint (&complaints)[kRights], RightsMasks *masks)
{
    for (int i = 0; i < kRights; i++)
        if (map(words.of[i], nullptr, i >= kFolderGroup, &masks->of[i]) != 0)
            return refuse(ctx, complaints[i], words.of[i]);
    return 0;
}

uint32_t share_write_rsync_option(CallContext *ctx, sqlite3 *db, int32_t share_id, const RsyncShareOption *rsync)
{
    const char *access = nullptr;
    const char *protection = nullptr;
    TRY(choose_access(ctx, rsync->DefaultAccess, &access, "Invalid Rsync->DefaultAccess (%s)."));
    if (map_enabled_disabled(rsync->PasswordProtection, nullptr, &protection) != 0)
        return REPORT(ctx, 8, "Invalid Rsync->PasswordProtection (%s).", rsync->PasswordProtection);
    TRY(execute(ctx, db,
                "INSERT INTO rsync_share_option (share_id,available,rsync_access,passwordprotection) "
                "VALUES(%d,%d,%Q,%Q)",
                share_id, !rsync->NotAvailable, access, protection)
            .or_report(ctx, "Failed DB Query for rsync share_option. %s"));
    TRY(share_write_rsync_users(ctx, db, share_id, rsync->UserPasswordAcl));
    return share_write_host_acl(ctx, db, share_id, "rsync", rsync->HostAcl);
}

uint32_t share_write_dlna_option(CallContext *ctx, sqlite3 *db, int32_t share_id, const DlnaShareOption *dlna)
{
    const char *access = nullptr;
    int32_t media_type = 0;
    if (map_read_disabled(dlna->DefaultAccess, nullptr, &access) != 0 || strcmp(access, "readonly") != 0)
        return REPORT(ctx, 8, "Invalid Dlna->DefaultAccess (%s).", dlna->DefaultAccess);
    if (parse_media_type(dlna->MediaType, nullptr, &media_type) != 0)
        return REPORT(ctx, 8, "Invalid Dlna->MediaType (%s).", dlna->MediaType);
    return execute(ctx, db,
                   "INSERT INTO dlna_share_option (share_id,available,access,media_type) VALUES(%d,%d,'readonly',%d)",
                   share_id, !dlna->NotAvailable, media_type)
        .or_report(ctx, "Failed DB Query for dlna share_option. %s");
}

uint32_t share_write_daap_option(CallContext *ctx, sqlite3 *db, int32_t share_id, const DaapShareOption *daap)
{
    return execute(ctx, db, "INSERT INTO daap_share_option (share_id,available) VALUES(%d,%d)", share_id,
                   !daap->NotAvailable)
        .or_report(ctx, "Failed DB Query for daap share_option. %s");
}

uint32_t share_write_snapshot_schedule(CallContext *ctx, sqlite3 *db, int32_t share_id, const Schedule *schedule)
{
    return execute(ctx, db,
                   "INSERT OR REPLACE INTO snapshot_schedule (share_id,enabled,minute,hour,day_of_month,day_of_week,"
                   "month,last_taken,purge_manual_snapshot,last_daily_taken,last_weekly_taken) "
                   "VALUES(%d,%d,%Q,%Q,%Q,%Q,%Q,%d,%d,%d,%d)",
                   share_id, schedule->Enabled, schedule->Minute, schedule->Hour, schedule->DayOfMonth,
                   schedule->DayOfWeek, schedule->Month, schedule->LastTaken, schedule->PurgeManualSnapshot,
                   schedule->LastDailyTaken, schedule->LastWeeklyTaken)
        .or_report(ctx, "Failed INSERT snapshot_schedule. (%s)");
}

uint32_t share_write_used_by(CallContext *ctx, sqlite3 *db, int32_t share_id, const UsedBy *head)
{
    TRY(execute(ctx, db,
                "DELETE FROM `$application_on_share` WHERE zfs_name=(SELECT S.zfs_name FROM share S WHERE S.id=%d)",
                share_id)
            .or_report(ctx, "Failed DB Query for 'DELETE $application_on_share'. %s"));
    for (; head; head = head->next)
        TRY(execute(ctx, db,
                    "INSERT OR REPLACE INTO `$application_on_share` (zfs_name,app_name,app_data) VALUES((SELECT "
                    "S.zfs_name FROM share S WHERE S.id=%d),%Q,%Q)",
                    share_id, head->AppName, head->AppData)
                .or_report(ctx, "Failed DB Query for 'INSERT $application_on_share'. %s"));
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
