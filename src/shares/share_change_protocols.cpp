// Over which protocols a share is served, and to whom, changed. Each block that is given is written with its lists
// whole, and its rows are compared with what they were.
#include "frame/pool.h"
#include "shares/share_change.h"
#include "shares/share_rows.h"

namespace qb {
namespace {

constexpr ProtocolTables kCifs = {"cifs", true, true, true};
constexpr ProtocolTables kAfp = {"afp", true, true};
constexpr ProtocolTables kNfs = {"nfs", true};
constexpr ProtocolTables kFtp = {"ftp", true, true};
constexpr ProtocolTables kDlna = {"dlna"};
constexpr ProtocolTables kDaap = {"daap"};
constexpr ProtocolTables kRsync = {"rsync", true};
constexpr ProtocolTables kHttp = {"http", true, true};

/// Writes a block that is given, and notes whether its rows differ.
template <class Block>
uint32_t change_block(const ShareChange &change, const ProtocolTables &tables, Block *block,
                      uint32_t (*write)(const ShareChange &, const Block &))
{
    if (!block) return 0;
    ProtocolRows before;
    ProtocolRows after;
    TRY(before.read(change.ctx, change.db, change.id, tables));
    TRY(write(change, *block));
    TRY(after.read(change.ctx, change.db, change.id, tables));
    if (!(after == before)) change.answer->changed[change.answer->protocols++] = &block->Changed;
    return 0;
}

uint32_t update_options(const ShareChange &change, const ShareSet &set, Sql<const char *, int32_t> sql,
                        FailureText<> words)
{
    TRY_MEMORY(change.ctx);
    log_dropped(change, set);
    if (set.empty()) return 0;
    return execute(change.ctx, change.db, sql, +set.text, change.id).or_report(change.ctx, words);
}

template <class Block>
uint32_t write_lists(const ShareChange &change, const char *proto, const Block &block)
{
    return share_write_lists(change.ctx, change.db, change.settings.ads, change.id, proto, &block);
}

// ---- what goes into the SET lists

/// Who is not on a list gets the default access.
uint32_t assign_access(const ShareChange &change, const char *word, ShareSet *set, Sql<const char *> assignment,
                       Complaint complaint)
{
    if (!word) return 0;
    const char *access = nullptr;
    TRY(choose_access(change.ctx, word, &access, complaint));
    set->add(assignment, access);
    return 0;
}

void assign_number(int32_t is_void, int32_t value, ShareSet *set, Sql<int32_t> assignment)
{
    if (!is_void) set->add(assignment, value);
}

template <class Block>
void assign_available(const Block &block, ShareSet *set)
{
    set->add("available=%d", !block.NotAvailable);
}

/// The words that are given; for the others those that are stored or, without a stored block, a fallback.
template <class Block>
RightsWords rights_to_be(const Block &given, const Block *stored, const char *fallback)
{
    RightsWords words = rights_of(given);
    const RightsWords kept = stored ? rights_of(*stored) : RightsWords{{fallback, fallback, fallback, fallback}};
    for (int i = 0; i < kRights; i++)
        if (!words.of[i]) words.of[i] = kept.of[i];
    return words;
}

// ---- SMB

constexpr Complaint kCifsRights[kRights] = {
    "Invalid Cifs->FileCreateGroupRights (%s).",
    "Invalid Cifs->FileCreateEveryoneRights (%s).",
    "Invalid Cifs->FolderCreateGroupRights (%s).",
    "Invalid Cifs->FolderCreateEveryoneRights (%s).",
};
constexpr Sql<int32_t> kCifsMasks[kRights] = {
    "cifs_group_create_mask=%d",
    "cifs_everyone_create_mask=%d",
    "cifs_group_directory_mask=%d",
    "cifs_everyone_directory_mask=%d",
};

uint32_t assign_cifs_masks(const ShareChange &change, const CifsShareOption &cifs, ShareSet *set)
{
    RightsMasks masks{};
    TRY(choose_rights(change.ctx, map_access_bits, rights_to_be(cifs, change.stored.Cifs, kDisabled), kCifsRights,
                      &masks));
    const RightsWords given = rights_of(cifs);
    for (int i = 0; i < kRights; i++)
        if (given.of[i]) set->add(kCifsMasks[i], masks.of[i]);
    return 0;
}

uint32_t write_cifs_options(const ShareChange &change, const CifsShareOption &cifs)
{
    ShareSet set;
    TRY(assign_access(change, cifs.DefaultAccess, &set, "cifs_access=%Q", "Invalid Cifs->DefaultAccess (%s)."));
    assign_number(cifs.AllowGuestAccess_void, cifs.AllowGuestAccess, &set, "cifs_guest_access=%d");
    assign_number(cifs.ShareDisplayOption_void, cifs.ShareDisplayOption, &set, "cifs_hide_share=%d");
    assign_number(cifs.EnableRecycleBin_void, cifs.EnableRecycleBin, &set, "cifs_recycle=%d");
    assign_number(cifs.RecycleSizeLimit_void, cifs.RecycleSizeLimit, &set, "cifs_recycle_mb_limit=%d");
    assign_number(cifs.RecycleAgeLimit_void, cifs.RecycleAgeLimit, &set, "cifs_recycle_age_limit=%d");
    assign_number(cifs.NewFileFolderPermAutoset_void, cifs.NewFileFolderPermAutoset, &set, "cifs_enable_masks=%d");
    assign_number(cifs.AclChangeRestrictionToggle_void, cifs.AclChangeRestrictionToggle, &set,
                  "cifs_enable_forced_minimum=%d");
    TRY(assign_cifs_masks(change, cifs, &set));
    assign_number(cifs.EnableOplocks_void, cifs.EnableOplocks, &set, "oplocks=%d");
    set.add("cifs_enabledfs=%d", cifs.EnableDFS != 0);
    assign_available(cifs, &set);
    return update_options(change, set, "UPDATE cifs_share_option SET %s WHERE share_id=%d",
                          "Failed DB Query for 'UPDATE cifs_share_option'. %s");
}

uint32_t write_cifs(const ShareChange &change, const CifsShareOption &cifs)
{
    TRY(write_cifs_options(change, cifs));
    TRY(write_lists(change, "cifs", cifs));
    TRY(share_write_dfs_links(change.ctx, change.db, change.id, cifs.DfolderAcl));
    regenerate_shares(change.ctx, change.db, "cifs");
    return 0;
}

// ---- AFP

constexpr Complaint kAfpRights[kRights] = {
    "Invalid Afp->FileCreateGroupRights (%s).",
    "Invalid Afp->FileCreateEveryoneRights (%s).",
    "Invalid Afp->FolderCreateGroupRights (%s).",
    "Invalid Afp->FolderCreateEveryoneRights (%s).",
};

/// Rights that are not set on new files are stored as NULL.
uint32_t assign_afp_masks(const ShareChange &change, const AfpShareOption &afp, ShareSet *set)
{
    if (afp.NewFileFolderPermAutoset_void) return 0;
    if (!afp.NewFileFolderPermAutoset) {
        set->add("afp_fperm=NULL,afp_dperm=%s", "NULL");
        return 0;
    }
    RightsMasks masks{};
    TRY(choose_rights(change.ctx, map_access_bits, rights_to_be(afp, change.stored.Afp, kDisabled), kAfpRights,
                      &masks));
    set->add("afp_fperm=%d", masks.files());
    set->add("afp_dperm=%d", masks.folders());
    return 0;
}

uint32_t write_afp(const ShareChange &change, const AfpShareOption &afp)
{
    TRY(execute(change.ctx, change.db,
                "INSERT OR IGNORE INTO afp_share_option (share_id,afp_access,afp_guest_access) "
                "VALUES(%d,'writeable',1)",
                change.id)
            .or_report(change.ctx, "Failed DB Query for 'INSERT afp_share_option'. %s"));
    ShareSet set;
    TRY(assign_access(change, afp.DefaultAccess, &set, "afp_access=%Q", "Invalid Afp->DefaultAccess (%s)."));
    assign_number(afp.AllowGuestAccess_void, afp.AllowGuestAccess, &set, "afp_guest_access=%d");
    TRY(assign_afp_masks(change, afp, &set));
    assign_available(afp, &set);
    TRY(update_options(change, set, "UPDATE afp_share_option SET %s WHERE share_id=%d",
                       "Failed DB Query for 'UPDATE afp_share_option'. %s"));
    return write_lists(change, "afp", afp);
}

// ---- NFS

uint32_t write_nfs(const ShareChange &change, const NfsShareOption &nfs)
{
    TRY(execute(change.ctx, change.db,
                "INSERT OR IGNORE INTO nfs_share_option (share_id,nfs_access) VALUES(%d,'writeable')", change.id)
            .or_report(change.ctx, "Failed DB Query for 'INSERT nfs_share_option'. %s"));
    ShareSet set;
    TRY(assign_access(change, nfs.DefaultAccess, &set, "nfs_access=%Q", "Invalid Nfs->DefaultAccess (%s)."));
    assign_available(nfs, &set);
    set.add("nfs_sync=%d", nfs.Sync);
    TRY(update_options(change, set, "UPDATE nfs_share_option SET %s WHERE share_id=%d",
                       "Failed DB Query for 'UPDATE nfs_share_option'. %s"));
    return share_write_host_acl(change.ctx, change.db, change.id, "nfs", nfs.HostAcl);
}

// ---- FTP

constexpr Complaint kFtpRights[kRights] = {
    "Invalid Ftp->FileCreateGroupRights (%s).",
    "Invalid Ftp->FileCreateEveryoneRights (%s).",
    "Invalid Ftp->FolderCreateGroupRights (%s).",
    "Invalid Ftp->FolderCreateEveryoneRights (%s).",
};

/// A column holds the rights of the group and of everyone: one word that is given writes both.
uint32_t assign_ftp_masks(const ShareChange &change, const FtpShareOption &ftp, ShareSet *set)
{
    RightsMasks masks{};
    TRY(choose_rights(change.ctx, map_access_removed_bits, rights_to_be(ftp, change.stored.Ftp, kReadWrite), kFtpRights,
                      &masks));
    const RightsWords given = rights_of(ftp);
    if (given.of[kFileGroup] || given.of[kFileEveryone]) set->add("ftp_create_mask=%d", masks.files());
    if (given.of[kFolderGroup] || given.of[kFolderEveryone]) set->add("ftp_directory_mask=%d", masks.folders());
    return 0;
}

uint32_t write_ftp(const ShareChange &change, const FtpShareOption &ftp)
{
    TRY(execute(change.ctx, change.db, "INSERT OR IGNORE INTO ftp_share_option VALUES(%d,0,'writeable',0,0,0)",
                change.id)
            .or_report(change.ctx, "Failed DB Query for 'INSERT ftp_share_option'. %s"));
    ShareSet set;
    TRY(assign_access(change, ftp.DefaultAccess, &set, "ftp_access=%Q", "Invalid Ftp->DefaultAccess (%s)."));
    assign_number(ftp.NewFileFolderPermAutoset_void, ftp.NewFileFolderPermAutoset != 0, &set, "ftp_mask=%d");
    TRY(assign_ftp_masks(change, ftp, &set));
    assign_available(ftp, &set);
    TRY(update_options(change, set, "UPDATE ftp_share_option SET %s WHERE share_id=%d",
                       "Failed DB Query for 'UPDATE ftp_share_option'. %s"));
    TRY(write_lists(change, "ftp", ftp));
    regenerate_shares(change.ctx, change.db, "ftp");
    return 0;
}

// ---- DLNA, DAAP and rsync, which a share has or has not

uint32_t change_dlna_row(const ShareChange &change, const DlnaShareOption &dlna)
{
    const char *access = nullptr;
    if (dlna.DefaultAccess && map_read_disabled(dlna.DefaultAccess, nullptr, &access) != 0)
        return REPORT(change.ctx, 8, "Invalid Dlna->DefaultAccess (%s).", dlna.DefaultAccess);
    if (access && strcmp(access, "disabled") == 0)
        return execute(change.ctx, change.db, "DELETE FROM dlna_share_option WHERE share_id=%d", change.id)
            .or_report(change.ctx, "Failed DB Query for 'DELETE dlna_share_option'. %s");
    int32_t media_type = 0;
    if (parse_media_type(dlna.MediaType, "All", &media_type) != 0)
        return REPORT(change.ctx, 8, "Invalid Dlna->MediaType (%s).", dlna.MediaType);
    ShareSet set;
    set.add("media_type=%d", media_type);
    assign_available(dlna, &set);
    return update_options(change, set, "UPDATE dlna_share_option SET %s WHERE share_id=%d",
                          "Failed DB Query for 'UPDATE dlna_share_option'. %s");
}

uint32_t write_dlna(const ShareChange &change, const DlnaShareOption &dlna)
{
    int32_t one = 0;
    bool has = false;
    TRY(find_int32(change.ctx, change.db, one, has, "SELECT 1 FROM dlna_share_option WHERE share_id=%d", change.id)
            .or_report(change.ctx, "Failed DB Query for 'SELECT FROM dlna_share_option'. %s"));
    if (has) return change_dlna_row(change, dlna);
    return dlna.NotAvailable ? 0 : share_write_dlna_option(change.ctx, change.db, change.id, &dlna);
}

uint32_t write_daap(const ShareChange &change, const DaapShareOption &daap)
{
    int32_t one = 0;
    bool has = false;
    TRY(find_int32(change.ctx, change.db, one, has, "SELECT 1 FROM daap_share_option WHERE share_id=%d", change.id)
            .or_report(change.ctx, "Failed DB Query for 'SELECT FROM daap_share_option'. %s"));
    if (!has) return daap.NotAvailable ? 0 : share_write_daap_option(change.ctx, change.db, change.id, &daap);
    ShareSet set;
    assign_available(daap, &set);
    return update_options(change, set, "UPDATE daap_share_option SET %s WHERE share_id=%d",
                          "Failed DB Query for 'UPDATE daap_share_option'. %s");
}

uint32_t remove_rsync(const ShareChange &change)
{
    const auto &[ctx, db, settings, given, answer, id, stored] = change;
    TRY(execute(ctx, db, "DELETE FROM rsync_share_option WHERE share_id=%d", id)
            .or_report(ctx, "Failed DB Query for 'DELETE rsync_share_option'. %s"));
    TRY(execute(ctx, db, "DELETE FROM rsync_user_password_acl WHERE share_id=%d", id)
            .or_report(ctx, "Failed DB Query for 'DELETE rsync_user_password_acl'. %s"));
    return execute(ctx, db, "DELETE FROM host_acl WHERE share_id=%d AND proto='rsync'", id)
        .or_report(ctx, "Failed DB Query for 'DELETE host_acl'. %s");
}

uint32_t change_rsync_rows(const ShareChange &change, const RsyncShareOption &rsync)
{
    CallContext *ctx = change.ctx;
    ShareSet set;
    TRY(assign_access(change, rsync.DefaultAccess, &set, "rsync_access=%Q", "Invalid Rsync->DefaultAccess (%s)."));
    const char *protection = nullptr;
    if (rsync.PasswordProtection && map_enabled_disabled(rsync.PasswordProtection, nullptr, &protection) != 0)
        return REPORT(ctx, 8, "Invalid Rsync->PasswordProtection (%s).", rsync.PasswordProtection);
    if (rsync.DefaultAccess && strcmp(rsync.DefaultAccess, kDisabled) == 0) return remove_rsync(change);
    if (protection) set.add("passwordprotection=%Q", protection);
    assign_available(rsync, &set);
    TRY(update_options(change, set, "UPDATE rsync_share_option SET %s WHERE share_id=%d",
                       "Failed DB Query for 'UPDATE rsync_share_option'. %s"));
    TRY(share_write_rsync_users(ctx, change.db, change.id, rsync.UserPasswordAcl));
    return share_write_host_acl(ctx, change.db, change.id, "rsync", rsync.HostAcl);
}

uint32_t write_rsync(const ShareChange &change, const RsyncShareOption &rsync)
{
    int32_t one = 0;
    bool has = false;
    TRY(find_int32(change.ctx, change.db, one, has, "SELECT 1 FROM rsync_share_option WHERE share_id=%d", change.id)
            .or_report(change.ctx, "Failed DB Query for 'SELECT FROM rsync_share_option'. %s"));
    if (has) return change_rsync_rows(change, rsync);
    return rsync.NotAvailable ? 0 : share_write_rsync_option(change.ctx, change.db, change.id, &rsync);
}

// ---- HTTP

/// A share that is not served any more is not the one that the service shows first.
uint32_t leave_http_service(const ShareChange &change, const HttpShareOption &http)
{
    const bool closed = http.DefaultAccess && strcmp(http.DefaultAccess, kDisabled) == 0;
    if (http.NotAvailable != 1 && !closed) return 0;
    return execute(change.ctx, change.db,
                   "UPDATE service_http SET share_name='' WHERE share_name=(select S.name from share S WHERE S.id=%d)",
                   change.id)
        .or_report(change.ctx, "Failed DB Query for 'UPDATE service_http'. %s");
}

uint32_t write_http(const ShareChange &change, const HttpShareOption &http)
{
    TRY(execute(change.ctx, change.db,
                "INSERT OR IGNORE INTO http_share_option (share_id,http_access) VALUES(%d,'writeable')", change.id)
            .or_report(change.ctx, "Failed DB Query for 'INSERT http_share_option'. %s"));
    ShareSet set;
    TRY(assign_access(change, http.DefaultAccess, &set, "http_access=%Q", "Invalid Http->DefaultAccess (%s)."));
    assign_number(http.EnableWebDav_void, http.EnableWebDav, &set, "http_webdav=%d");
    assign_available(http, &set);
    TRY(update_options(change, set, "UPDATE http_share_option SET %s WHERE share_id=%d",
                       "Failed DB Query for 'UPDATE http_share_option'. %s"));
    TRY(leave_http_service(change, http));
    TRY(write_lists(change, "http", http));
    regenerate_shares(change.ctx, change.db, "http");
    return 0;
}

}  // namespace

uint32_t change_share_protocols(const ShareChange &change)
{
    const Share *given = change.given;
    TRY(change_block(change, kCifs, given->Cifs, write_cifs));
    TRY(change_block(change, kAfp, given->Afp, write_afp));
    TRY(change_block(change, kNfs, given->Nfs, write_nfs));
    TRY(change_block(change, kFtp, given->Ftp, write_ftp));
    TRY(change_block(change, kDlna, given->Dlna, write_dlna));
    TRY(change_block(change, kDaap, given->Daap, write_daap));
    TRY(change_block(change, kRsync, given->Rsync, write_rsync));
    return change_block(change, kHttp, given->Http, write_http);
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
