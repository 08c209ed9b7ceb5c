// Creating shares, and registering the processes and applications that use one.
#include "accounts/directory_mode.h"
#include "accounts/lookup.h"
#include "frame/pool.h"
#include "shares/share_write.h"
#include "shares/shares.h"
#include "validate/validate_db.h"

namespace qb {
namespace {

/// A share on its way into the database.
struct NewShare {
    CallContext *ctx;
    sqlite3 *db;
    const Share *given;
    int32_t ads;
    int32_t id = 0;
};

/// Owner and permissions that a share's folder is to get.
struct Owner {
    int32_t user = 0;
    int32_t group = 0;
    int32_t user_access = 0;
    int32_t group_access = 0;
    int32_t everyone_access = 0;
    int32_t non_owner_delete = 0;
};

template <class T>
T value_or(T value, int32_t is_void, T fallback)
{
    return is_void ? fallback : value;
}

// ---- before anything is written

uint32_t check_name_is_free(CallContext *ctx, sqlite3 *db, const char *name)
{
    int32_t id = 0;
    bool taken = false;
    TRY(find_share(ctx, db, name, &taken, &id));
    return taken ? REPORT(ctx, 800, "Sharename specified is already exist.") : 0;
}

uint32_t check_given_volume(CallContext *ctx, sqlite3 *db, const char *volume)
{
    bool found = false;
    TRY(find_volume(ctx, db, volume, found).or_report(ctx, "Failed DB Query for 'SELECT FROM _volume'. %s"));
    return found ? 0 : REPORT(ctx, 8, "Specified VolumeId (%s) is not valid.", volume);
}

uint32_t check_given(CallContext *ctx, sqlite3 *db, const Share *share, const char **type)
{
    if (qbobj_validate_sharetype(share->ShareType, type) != 0)
        return REPORT(ctx, 8, "Invalid ShareType (%s)", share->ShareType);
    TRY(check_new_share_name(ctx, share->ShareName));
    TRY(check_name_is_free(ctx, db, share->ShareName));
    if (is_set(share->Sync)) TRY(check_sync(ctx, share->Sync));
    return check_given_volume(ctx, db, share->VolumeId);
}

/// The guest, who owns what nobody else does.
uint32_t require_guest(CallContext *ctx, sqlite3 *db, Owner *owner)
{
    if (!find_user_id(ctx, db, 0, nullptr, &owner->user)) return REPORT(ctx, 8, "Cannot get UID for guest");
    if (!find_group_id(ctx, db, nullptr, &owner->group)) return REPORT(ctx, 8, "Cannot get GID for guest");
    return 0;
}

uint32_t choose_owner_ids(CallContext *ctx, const FileStat *stat, Owner *owner)
{
    if (const SystemUser *user = stat->User) {
        owner->user = user->resource_id < 0 ? user->UserId : user->resource_id;
        if (owner->user < 0) return REPORT(ctx, 8, "Invalid Stat->User (resource_id=%d).", user->resource_id);
    }
    if (const SystemGroup *group = stat->Group) {
        owner->group = group->resource_id < 0 ? group->GroupId : group->resource_id;
        if (owner->group < 0) return REPORT(ctx, 8, "Invalid Stat->Group (resource_id=%d).", group->resource_id);
    }
    return 0;
}

FileStat open_to_everybody()
{
    FileStat stat{};
    stat.UserAccess = stat.GroupAccess = stat.EveryoneAccess = kReadWrite;
    stat.NonOwnerDelete = 1;
    return stat;
}

uint32_t choose_owner(CallContext *ctx, sqlite3 *db, const FileStat *given, Owner *owner)
{
    const FileStat fallback = open_to_everybody();
    const FileStat *stat = given ? given : &fallback;
    TRY(require_guest(ctx, db, owner));
    TRY(choose_owner_ids(ctx, stat, owner));
    TRY(choose_folder_bits(ctx, stat->UserAccess, &owner->user_access, "Invalid Stat->UserAccess (%s)."));
    TRY(choose_folder_bits(ctx, stat->GroupAccess, &owner->group_access, "Invalid Stat->GroupAccess (%s)."));
    TRY(choose_folder_bits(ctx, stat->EveryoneAccess, &owner->everyone_access, "Invalid Stat->EveryoneAccess (%s)."));
    owner->non_owner_delete = value_or(stat->NonOwnerDelete, stat->NonOwnerDelete_void, 0);
    return 0;
}

// ---- the share and its data set

/// With a path the data set follows from it, else the volume decides both. A volume without such an id leaves the data
/// set NULL, which the table refuses.
Failure insert_row(const NewShare &share, const char *type, const Owner &owner)
{
    const Share *given = share.given;
    const char *folder = given->VisibleSnapshot ? given->VisibleSnapFolder : nullptr;
    if (is_set(given->Path))
        return execute(share.ctx, share.db,
                       "INSERT INTO share (zfs_name,type,name,comment,visible_snapdir,volume_id,path,user_access,"
                       "group_access,everyone_access,non_owner_delete,user_id,group_id) "
                       "VALUES(%Q,%Q,%Q,%Q,%Q,%Q,%Q,%d,%d,%d,%d,%d,%d)",
                       given->Path + (*given->Path == '/'), type, given->ShareName, given->Comment, folder,
                       given->VolumeId, given->Path, owner.user_access, owner.group_access, owner.everyone_access,
                       owner.non_owner_delete, owner.user, owner.group);
    return execute(share.ctx, share.db,
                   "INSERT INTO share (zfs_name,type,name,comment,visible_snapdir,volume_id,path,user_access,"
                   "group_access,everyone_access,non_owner_delete,user_id,group_id) "
                   "VALUES((SELECT lv_name||'/'||%Q FROM _volume WHERE id=%Q),%Q,%Q,%Q,%Q,%Q,"
                   "(SELECT '/'||lv_name||'/'||%Q FROM _volume WHERE id=%Q),%d,%d,%d,%d,%d,%d)",
                   given->ShareName, given->VolumeId, type, given->ShareName, given->Comment, folder, given->VolumeId,
                   given->ShareName, given->VolumeId, owner.user_access, owner.group_access, owner.everyone_access,
                   owner.non_owner_delete, owner.user, owner.group);
}

uint32_t report_insert(CallContext *ctx, const Failure &bad)
{
    if (bad.rc == kConstraint)
        return REPORT(ctx, 800, "Sharename specified is already exist. Or specified volume is not exist.");
    return bad.or_report(ctx, "Failed DB Query for 'INSERT INTO share'. %s");
}

/// Only the quota that snapshots do not count against has to fit.
uint32_t check_quota(const NewShare &share)
{
    uint64_t free_kb = 0;
    TRY(select_uint64(share.ctx, share.db, free_kb,
                      "SELECT V.blk_free FROM share S LEFT JOIN _volume V ON V.id=%Q LIMIT 1", share.given->VolumeId)
            .or_report(share.ctx, "Failed DB Query for 'SELECT FROM _volume'. %s"));
    const uint64_t quota_mb = value_or<uint64_t>(share.given->RefQuotaMB, share.given->RefQuotaMB_void, 0);
    if (free_kb >> 10 < quota_mb)
        return REPORT(share.ctx, 835, "Invalid quota value. Need to be less than Free Space.");
    return 0;
}

uint32_t insert_attributes(const NewShare &share)
{
    const Share *given = share.given;
    return report_insert(
        share.ctx,
        execute(share.ctx, share.db,
                "INSERT INTO zfs_attr (share_id,mb_quota,mb_reservation,mb_refquota,mb_refreservation,compression,"
                "bit_rot_protection,dedup,logbias,sync) VALUES(%d,%llu,%llu,%llu,%llu,%d,%d,%d,%Q,%Q)",
                share.id, value_or<uint64_t>(given->QuotaMB, given->QuotaMB_void, 0),
                value_or<uint64_t>(given->ReserveMB, given->ReserveMB_void, 0),
                value_or<uint64_t>(given->RefQuotaMB, given->RefQuotaMB_void, 0),
                value_or<uint64_t>(given->RefReserveMB, given->RefReserveMB_void, 0),
                value_or(given->Compression, given->Compression_void, 0),
                value_or(given->BitRotProtection, given->BitRotProtection_void, 0),
                value_or(given->Dedup, given->Dedup_void, 0), given->LogBias,
                is_set(given->Sync) ? given->Sync : nullptr));
}

// ---- protocols

constexpr Complaint kCifsRights[kRights] = {
    "Invalid Cifs->FileCreateGroupRights (%s).",
    "Invalid Cifs->FileCreateEveryoneRights (%s).",
    "Invalid Cifs->FolderCreateGroupRights (%s).",
    "Invalid Cifs->FolderCreateEveryoneRights (%s).",
};

uint32_t insert_cifs(const NewShare &share, const CifsShareOption *cifs)
{
    const char *access = nullptr;
    RightsMasks masks{};
    TRY(choose_access(share.ctx, cifs->DefaultAccess, &access,
                      "Invalid Cifs->DefaultAccess (%s). Valid value is ReadWrite, ReadOnly or DIsabled."));
    TRY(choose_rights(share.ctx, map_access_bits, rights_of(*cifs), kCifsRights, &masks));
    return execute(share.ctx, share.db,
                   "INSERT INTO cifs_share_option (share_id,cifs_access,cifs_guest_access,cifs_hide_share,"
                   "cifs_group_create_mask,cifs_everyone_create_mask,cifs_enable_masks,cifs_group_directory_mask,"
                   "cifs_everyone_directory_mask,cifs_enable_forced_minimum,cifs_recycle,cifs_recycle_mb_limit,"
                   "cifs_recycle_age_limit,oplocks,available,cifs_enabledfs) "
                   "VALUES(%d,%Q,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d,%d)",
                   share.id, access, value_or(cifs->AllowGuestAccess, cifs->AllowGuestAccess_void, share.ads ? 0 : 1),
                   value_or(cifs->ShareDisplayOption, cifs->ShareDisplayOption_void, 0), masks.of[kFileGroup],
                   masks.of[kFileEveryone],
                   value_or(cifs->NewFileFolderPermAutoset, cifs->NewFileFolderPermAutoset_void, 1),
                   masks.of[kFolderGroup], masks.of[kFolderEveryone],
                   value_or(cifs->AclChangeRestrictionToggle, cifs->AclChangeRestrictionToggle_void, 1023),
                   value_or(cifs->EnableRecycleBin, cifs->EnableRecycleBin_void, 1),
                   value_or(cifs->RecycleSizeLimit, cifs->RecycleSizeLimit_void, 25000),
                   value_or(cifs->RecycleAgeLimit, cifs->RecycleAgeLimit_void, 0),
                   value_or(cifs->EnableOplocks, cifs->EnableOplocks_void, 0), !cifs->NotAvailable, cifs->EnableDFS)
        .or_report(share.ctx, "Failed DB Query for cifs share_option. %s");
}

uint32_t write_cifs(const NewShare &share, const CifsShareOption *cifs)
{
    if (!cifs) return 0;
    TRY(insert_cifs(share, cifs));
    TRY(share_write_lists(share.ctx, share.db, share.ads, share.id, "cifs", cifs));
    if (cifs->DfolderAcl) TRY(share_write_dfs_links(share.ctx, share.db, share.id, cifs->DfolderAcl));
    regenerate_shares(share.ctx, share.db, "cifs");
    return 0;
}

// One text serves both rights of a kind.
constexpr Complaint kAfpRights[kRights] = {
    "Invalid Afp->FileCreateGroupRights (%s).",
    "Invalid Afp->FileCreateGroupRights (%s).",
    "Invalid Afp->FolderCreateGroupRights (%s).",
    "Invalid Afp->FolderCreateGroupRights (%s).",
};

/// Without NewFileFolderPermAutoset the rights are stored as NULL and their words are not checked.
uint32_t insert_afp(const NewShare &share, const AfpShareOption *afp)
{
    const char *access = nullptr;
    TRY(choose_access(share.ctx, afp->DefaultAccess, &access, "Invalid Afp->DfefaultAccess (%s)."));
    const int32_t guest = value_or(afp->AllowGuestAccess, afp->AllowGuestAccess_void, share.ads ? 0 : 1);
    if (afp->NewFileFolderPermAutoset_void || !afp->NewFileFolderPermAutoset)
        return execute(share.ctx, share.db,
                       "INSERT INTO afp_share_option (share_id,available,afp_access,afp_guest_access,afp_fperm,"
                       "afp_dperm) VALUES(%d,%d,%Q,%d,NULL,NULL)",
                       share.id, !afp->NotAvailable, access, guest)
            .or_report(share.ctx, "Failed DB Query for afp share_option. %s");
    RightsMasks masks{};
    TRY(choose_rights(share.ctx, map_access_bits, rights_of(*afp), kAfpRights, &masks));
    return execute(share.ctx, share.db,
                   "INSERT INTO afp_share_option (share_id,available,afp_access,afp_guest_access,afp_fperm,afp_dperm) "
                   "VALUES(%d,%d,%Q,%d,%d,%d)",
                   share.id, !afp->NotAvailable, access, guest, masks.files(), masks.folders())
        .or_report(share.ctx, "Failed DB Query for afp share_option. %s");
}

uint32_t write_afp(const NewShare &share, const AfpShareOption *afp)
{
    if (!afp) return 0;
    TRY(insert_afp(share, afp));
    return share_write_lists(share.ctx, share.db, share.ads, share.id, "afp", afp);
}

uint32_t write_nfs(const NewShare &share, const NfsShareOption *nfs)
{
    if (!nfs) return 0;
    const char *access = nullptr;
    TRY(choose_access(share.ctx, nfs->DefaultAccess, &access, "Invalid Nfs->DfefaultAccess (%s)."));
    // A new share always starts with the safe setting, writes acknowledged from the disk, whatever the record says.
    TRY(execute(share.ctx, share.db,
                "INSERT INTO nfs_share_option (share_id,available,nfs_access,nfs_sync) VALUES(%d,%d,%Q,1)", share.id,
                !nfs->NotAvailable, access)
            .or_report(share.ctx, "Failed DB Query for nfs share_option. %s"));
    return share_write_host_acl(share.ctx, share.db, share.id, "nfs", nfs->HostAcl);
}

constexpr Complaint kFtpRights[kRights] = {
    "Invalid Ftp->FileCreateGroupRights (%s).",
    "Invalid Ftp->FileCreateGroupRights (%s).",
    "Invalid Ftp->FolderCreateGroupRights (%s).",
    "Invalid Ftp->FolderCreateGroupRights (%s).",
};

uint32_t write_ftp(const NewShare &share, const FtpShareOption *ftp)
{
    if (!ftp) return 0;
    const char *access = nullptr;
    RightsMasks masks{};
    TRY(choose_access(share.ctx, ftp->DefaultAccess, &access, "Invalid Ftp->DfefaultAccess (%s)."));
    TRY(choose_rights(share.ctx, map_access_removed_bits, rights_of(*ftp), kFtpRights, &masks));
    const bool autoset = !ftp->NewFileFolderPermAutoset_void && ftp->NewFileFolderPermAutoset != 0;
    TRY(execute(share.ctx, share.db,
                "INSERT INTO ftp_share_option (share_id,available,ftp_access,ftp_mask,ftp_create_mask,"
                "ftp_directory_mask) VALUES(%d,%d,%Q,%d,%d,%d)",
                share.id, !ftp->NotAvailable, access, autoset, masks.files(), masks.folders())
            .or_report(share.ctx, "Failed DB Query for ftp share_option. %s"));
    TRY(share_write_lists(share.ctx, share.db, share.ads, share.id, "ftp", ftp));
    regenerate_shares(share.ctx, share.db, "ftp");
    return 0;
}

uint32_t write_http(const NewShare &share, const HttpShareOption *http)
{
    if (!http) return 0;
    const char *access = nullptr;
    TRY(choose_access(share.ctx, http->DefaultAccess, &access, "Invalid Http->DfefaultAccess (%s)."));
    TRY(execute(share.ctx, share.db,
                "INSERT INTO http_share_option (share_id,available,http_access,http_webdav) VALUES(%d,%d,%Q,%d)",
                share.id, !http->NotAvailable, access, value_or(http->EnableWebDav, http->EnableWebDav_void, 0))
            .or_report(share.ctx, "Failed DB Query for http share_option. %s"));
    TRY(share_write_lists(share.ctx, share.db, share.ads, share.id, "http", http));
    regenerate_shares(share.ctx, share.db, "http");
    return 0;
}

uint32_t write_zvol(const NewShare &share, const ZvolShareOption *zvol)
{
    if (!zvol) return 0;
    return execute(share.ctx, share.db, "INSERT INTO zvol_share_option (share_id,kb_size,is_sparse) VALUES(%d,%llu,%d)",
                   share.id, zvol->SizeKB, zvol->IsSparse)
        .or_report(share.ctx, "Failed DB Query for zvol share_option. %s");
}

uint32_t write_protocols(const NewShare &share)
{
    const Share *given = share.given;
    TRY(write_cifs(share, given->Cifs));
    TRY(write_afp(share, given->Afp));
    TRY(write_nfs(share, given->Nfs));
    TRY(write_ftp(share, given->Ftp));
    if (given->Rsync) TRY(share_write_rsync_option(share.ctx, share.db, share.id, given->Rsync));
    if (given->Dlna) TRY(share_write_dlna_option(share.ctx, share.db, share.id, given->Dlna));
    if (given->Daap) TRY(share_write_daap_option(share.ctx, share.db, share.id, given->Daap));
    TRY(write_http(share, given->Http));
    return write_zvol(share, given->Zvol);
}

// ---- snapshots

uint32_t write_schedule(const NewShare &share)
{
    Schedule hourly{};
    hourly.Enabled = 1;
    hourly.Minute = "0";
    hourly.Hour = hourly.DayOfMonth = hourly.DayOfWeek = hourly.Month = "*";
    const Schedule *given = share.given->SnapshotSchedule;
    return share_write_snapshot_schedule(share.ctx, share.db, share.id, given ? given : &hourly);
}

/// Longest schedule text of a snapshot policy, its end included.
constexpr size_t kPolicySize = 256;

/// Writes the snapshot policy, which is repeated in the row of each retention rule.
uint32_t write_policy(const NewShare &share)
{
    const Share *given = share.given;
    SnapshotRetentionRules month{};
    month.Type = 1;
    month.Number = 30;
    month.Lifetime = 30 * 24 * 60 * 60;
    char schedule[kPolicySize];
    memset(schedule, '0', sizeof schedule - 1);
    schedule[sizeof schedule - 1] = '\0';
    if (given->CustomSnapshotSchedule) snprintf(schedule, sizeof schedule, "%s", given->CustomSnapshotSchedule);

    TRY(execute(share.ctx, share.db, "DELETE FROM `snapshot_management` WHERE share_id=%d", share.id)
            .or_report(share.ctx, "Failed DB Query for 'DELETE FROM snapshot_management'. %s\n"));
    const SnapshotRetentionRules *rule = given->SnapshotRetentionRules ? given->SnapshotRetentionRules : &month;
    for (; rule; rule = rule->next)
        TRY(execute(share.ctx, share.db,
                    "INSERT OR REPLACE INTO snapshot_management (share_id,enabled,retention_rule,lifetime,number,"
                    "schedule,nonempty_snapshots,prev_versions) VALUES(%d,%d,%d,%d,%d,%Q,%d,%d)",
                    share.id, given->CustomSnapshotManagement, rule->Type, rule->Lifetime, rule->Number, schedule,
                    given->NonEmptySnapshots, given->PrevVersions)
                .or_report(share.ctx, "Failed INSERT snapshot_management. (%s)\n"));
    return 0;
}

uint32_t create_share(CallContext *ctx, sqlite3 *db, int32_t ads, Share *given)
{
    NewShare share{ctx, db, given, ads};
    const char *type = nullptr;
    Owner owner;
    TRY(check_given(ctx, db, given, &type));
    TRY(choose_owner(ctx, db, given->Stat, &owner));
    TRY(report_insert(ctx, insert_row(share, type, owner)));
    share.id = static_cast<int32_t>(sqlite3_last_insert_rowid(db));
    TRY(check_quota(share));
    TRY(insert_attributes(share));
    TRY(write_protocols(share));
    if (given->UsedBy) TRY(share_write_used_by(ctx, db, share.id, given->UsedBy));
    TRY(write_schedule(share));
    TRY(write_policy(share));
    const char *id = noted(ctx, apr_psprintf(pool_of(ctx->qbdb), "%d", share.id));
    TRY_MEMORY(ctx);
    given->ShareId = id;
    given->key = id;
    return 0;
}

}  // namespace

uint32_t x_qbobj_addShare(CallContext *ctx, sqlite3 *db, Share *share)
{
    if (!share) return 0;
    int32_t ads = 0;
    TRY(read_ads_mode(ctx, db, &ads));
    for (; share; share = share->next) TRY(create_share(ctx, db, ads, share));
    return 0;
}

uint32_t x_qbobj_addShareProcess(CallContext *ctx, sqlite3 *db, const char *zfsName, int32_t pid, int32_t blocking)
{
    return execute(ctx, db,
                   "INSERT OR REPLACE INTO `process_on_share` (share_id,pid,blocking) VALUES((SELECT S.id FROM `share` "
                   "S WHERE S.zfs_name=%Q),%d,%d)",
                   zfsName, pid, blocking)
        .or_report(ctx, "Failed DB Query for 'INSERT process_on_share'. %s");
}

/// The message is that of addShareProcess, as it always was.
uint32_t x_qbobj_addShareUsedBy(CallContext *ctx, sqlite3 *db, const char *zfsName, UsedBy *usedby)
{
    if (!usedby || !usedby->AppName) return REPORT(ctx, 8, "usedby and usedby->AppName cannot be NULL");
    return execute(ctx, db,
                   "INSERT OR REPLACE INTO `$application_on_share` (zfs_name,app_name,app_data) VALUES(%Q,%Q,%Q)",
                   zfsName, usedby->AppName, usedby->AppData)
        .or_report(ctx, "Failed DB Query for 'INSERT process_on_share'. %s");
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
