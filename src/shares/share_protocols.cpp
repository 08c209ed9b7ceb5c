// The options of a share's protocols, read. A protocol without a row is one that the share does not have.
#include "frame/list.h"
#include "frame/read_row.h"
#include "shares/share_details.h"
#include "shares/words.h"

namespace qb {
namespace {

/// What all readers of a protocol need.
struct Reading {
    CallContext *ctx;
    sqlite3 *db;
    const ShareSettings &settings;
    int32_t share_id;
};

/// Makes the block when there is a row for it.
template <class Block>
uint32_t make_block(CallContext *ctx, const Rows &rows, Block **block)
{
    if (rows.count == 0) return 0;
    *block = allocate<Block>(ctx);
    TRY_MEMORY(ctx);
    return 0;
}

/// Reads the three lists that most protocols have.
template <class Block>
uint32_t read_lists(const Reading &reading, const char *proto, Block *block)
{
    const auto &[ctx, db, settings, id] = reading;
    TRY(read_host_acl(ctx, db, id, proto, &block->HostAcl));
    TRY(read_user_acl(ctx, db, settings.ads, id, proto, &block->UserAcl));
    return read_group_acl(ctx, db, settings.ads, id, proto, &block->GroupAcl);
}

uint32_t read_dfs_links(const Reading &reading, DfolderAcl **head)
{
    Rows rows;
    TRY(select(reading.ctx, reading.db, rows,
               "SELECT D.folder,D.address,D.remote_share FROM cifs_dfs_option D WHERE  D.share_id=%d", reading.share_id)
            .or_report(reading.ctx, "Failed DB Query for 'SELECT FROM cifs_dfs_option'. %s"));
    List<DfolderAcl> list(head);
    for (int i = 0; i < rows.count; i++) {
        DfolderAcl *link = list.append(reading.ctx);
        TRY_MEMORY(reading.ctx);
        read_row(reading.ctx, rows, i, link->Name, link->Address, link->RemoteShare);
    }
    return 0;
}

uint32_t read_cifs(const Reading &reading, CifsShareOption **cifs)
{
    const auto &[ctx, db, settings, id] = reading;
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT CASE WHEN CIFS.cifs_access='writeable' THEN 'ReadWrite' WHEN CIFS.cifs_access='readonly' THEN "
               "'ReadOnly' ELSE 'Disabled' END,CIFS.cifs_guest_access,CIFS.cifs_hide_share,CIFS.cifs_recycle,"
               "CIFS.cifs_recycle_age_limit,CIFS.cifs_recycle_mb_limit,CIFS.cifs_enable_masks,"
               "CIFS.cifs_enable_forced_minimum,CIFS.cifs_group_create_mask,CIFS.cifs_everyone_create_mask,"
               "CIFS.cifs_group_directory_mask,CIFS.cifs_everyone_directory_mask,CIFS.oplocks,CIFS.available,"
               "CIFS.cifs_enabledfs FROM cifs_share_option CIFS WHERE CIFS.share_id=%d",
               id)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM cifs_share_option'. %s"));
    TRY(make_block(ctx, rows, cifs));
    if (!*cifs) return 0;
    CifsShareOption *read = *cifs;
    int32_t masks[4];
    int32_t available = 0;
    read_row(ctx, rows, 0, read->DefaultAccess, optional(read->AllowGuestAccess, read->AllowGuestAccess_void),
             optional(read->ShareDisplayOption, read->ShareDisplayOption_void),
             optional(read->EnableRecycleBin, read->EnableRecycleBin_void),
             optional(read->RecycleAgeLimit, read->RecycleAgeLimit_void),
             optional(read->RecycleSizeLimit, read->RecycleSizeLimit_void),
             optional(read->NewFileFolderPermAutoset, read->NewFileFolderPermAutoset_void),
             optional(read->AclChangeRestrictionToggle, read->AclChangeRestrictionToggle_void), masks[0], masks[1],
             masks[2], masks[3], optional(read->EnableOplocks, read->EnableOplocks_void), available, read->EnableDFS);
    read->NotAvailable = !available;
    read->FileCreateGroupRights = word_of_bits(masks[0]);
    read->FileCreateEveryoneRights = word_of_bits(masks[1]);
    read->FolderCreateGroupRights = word_of_bits(masks[2]);
    read->FolderCreateEveryoneRights = word_of_bits(masks[3]);
    TRY(read_lists(reading, "cifs", read));
    return read_dfs_links(reading, &read->DfolderAcl);
}

uint32_t read_afp(const Reading &reading, AfpShareOption **afp)
{
    const auto &[ctx, db, settings, id] = reading;
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT CASE WHEN AFP.afp_access='writeable' THEN 'ReadWrite' WHEN AFP.afp_access='readonly' THEN "
               "'ReadOnly' ELSE 'Disabled' END,AFP.afp_guest_access,AFP.afp_fperm,AFP.afp_dperm,AFP.available FROM "
               "afp_share_option AFP WHERE AFP.share_id=%d",
               id)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM afp_share_option'. %s"));
    TRY(make_block(ctx, rows, afp));
    if (!*afp) return 0;
    AfpShareOption *read = *afp;
    int32_t file = 0;
    int32_t folder = 0;
    int32_t file_void = 0;
    int32_t folder_void = 0;
    int32_t available = 0;
    read_row(ctx, rows, 0, read->DefaultAccess, optional(read->AllowGuestAccess, read->AllowGuestAccess_void),
             optional(file, file_void), optional(folder, folder_void), available);
    read->NotAvailable = !available;
    read->NewFileFolderPermAutoset = !file_void && !folder_void;
    read->FileCreateGroupRights = word_of_bits(group_of(file));
    read->FileCreateEveryoneRights = word_of_bits(everyone_of(file));
    read->FolderCreateGroupRights = word_of_bits(group_of(folder));
    read->FolderCreateEveryoneRights = word_of_bits(everyone_of(folder));
    return read_lists(reading, "afp", read);
}

uint32_t read_nfs(const Reading &reading, NfsShareOption **nfs)
{
    const auto &[ctx, db, settings, id] = reading;
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT CASE WHEN NFS.nfs_access='writeable' THEN 'ReadWrite' WHEN NFS.nfs_access='readonly' THEN "
               "'ReadOnly' ELSE 'Disabled' END,NFS.available,NFS.nfs_sync FROM nfs_share_option NFS WHERE "
               "NFS.share_id=%d",
               id)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM nfs_share_option'. %s"));
    TRY(make_block(ctx, rows, nfs));
    if (!*nfs) return 0;
    int32_t available = 0;
    read_row(ctx, rows, 0, (*nfs)->DefaultAccess, available, (*nfs)->Sync);
    (*nfs)->NotAvailable = !available;
    return read_host_acl(ctx, db, id, "nfs", &(*nfs)->HostAcl);
}

uint32_t read_ftp(const Reading &reading, FtpShareOption **ftp)
{
    const auto &[ctx, db, settings, id] = reading;
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT CASE WHEN FTP.ftp_access='writeable' THEN 'ReadWrite' WHEN FTP.ftp_access='readonly' THEN "
               "'ReadOnly' ELSE 'Disabled' END,FTP.ftp_mask,FTP.ftp_create_mask,FTP.ftp_directory_mask,FTP.available "
               "FROM ftp_share_option FTP WHERE FTP.share_id=%d",
               id)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM ftp_share_option'. %s"));
    TRY(make_block(ctx, rows, ftp));
    if (!*ftp) return 0;
    FtpShareOption *read = *ftp;
    int32_t file = 0;
    int32_t folder = 0;
    int32_t available = 0;
    read_row(ctx, rows, 0, read->DefaultAccess,
             optional(read->NewFileFolderPermAutoset, read->NewFileFolderPermAutoset_void), file, folder, available);
    read->NotAvailable = !available;
    read->FileCreateGroupRights = word_of_removed_bits(group_of(file));
    read->FileCreateEveryoneRights = word_of_removed_bits(everyone_of(file));
    read->FolderCreateGroupRights = word_of_removed_bits(group_of(folder));
    read->FolderCreateEveryoneRights = word_of_removed_bits(everyone_of(folder));
    if (!settings.ftp_anonymous) return read_lists(reading, "ftp", read);
    return read_host_acl(ctx, db, id, "ftp", &read->HostAcl);
}

uint32_t read_dlna(const Reading &reading, DlnaShareOption **dlna)
{
    const auto &[ctx, db, settings, id] = reading;
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT CASE WHEN DLNA.access='readonly' THEN 'ReadOnly' ELSE 'Disabled' END,DLNA.media_type,"
               "DLNA.available FROM dlna_share_option DLNA WHERE DLNA.share_id=%d AND DLNA.access='readonly'",
               id)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM dlna_share_option'. %s"));
    TRY(make_block(ctx, rows, dlna));
    if (!*dlna) return 0;
    int32_t available = 0;
    read_row(ctx, rows, 0, (*dlna)->DefaultAccess, (*dlna)->MediaType, available);
    (*dlna)->NotAvailable = !available;
    return 0;
}

uint32_t read_daap(const Reading &reading, DaapShareOption **daap)
{
    const auto &[ctx, db, settings, id] = reading;
    Rows rows;
    TRY(select(ctx, db, rows, "SELECT DAAP.available FROM daap_share_option DAAP WHERE DAAP.share_id=%d", id)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM daap_share_option'. %s"));
    TRY(make_block(ctx, rows, daap));
    if (*daap) (*daap)->NotAvailable = !rows.int32(0, 0);
    return 0;
}

uint32_t read_rsync_users(const Reading &reading, UserPasswordAcl **head)
{
    Rows rows;
    TRY(select(reading.ctx, reading.db, rows,
               "SELECT UP.user,UP.password FROM rsync_user_password_acl UP WHERE UP.share_id=%d", reading.share_id)
            .or_report(reading.ctx, "Failed DB Query for 'SELECT FROM rsync_user_password_acl'. %s"));
    List<UserPasswordAcl> list(head);
    for (int i = 0; i < rows.count; i++) {
        UserPasswordAcl *user = list.append(reading.ctx);
        TRY_MEMORY(reading.ctx);
        read_row(reading.ctx, rows, i, user->UserName, user->Password);
    }
    return 0;
}

uint32_t read_rsync(const Reading &reading, RsyncShareOption **rsync)
{
    const auto &[ctx, db, settings, id] = reading;
    Rows rows;
    // Whatever is not read-only may be written: rsync knows no third word.
    TRY(select(ctx, db, rows,
               "SELECT CASE WHEN RSYNC.rsync_access='readonly' THEN 'ReadOnly' ELSE 'ReadWrite' END,CASE WHEN "
               "RSYNC.passwordprotection='enabled' THEN 'Enabled' ELSE 'Disabled' END,RSYNC.available FROM "
               "rsync_share_option RSYNC WHERE RSYNC.share_id=%d",
               id)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM rsync_share_option'. %s"));
    TRY(make_block(ctx, rows, rsync));
    if (!*rsync) return 0;
    int32_t available = 0;
    read_row(ctx, rows, 0, (*rsync)->DefaultAccess, (*rsync)->PasswordProtection, available);
    (*rsync)->NotAvailable = !available;
    TRY(read_rsync_users(reading, &(*rsync)->UserPasswordAcl));
    return read_host_acl(ctx, db, id, "rsync", &(*rsync)->HostAcl);
}

uint32_t read_http(const Reading &reading, HttpShareOption **http)
{
    const auto &[ctx, db, settings, id] = reading;
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT CASE WHEN HTTP.http_access='writeable' THEN 'ReadWrite' WHEN HTTP.http_access='readonly' THEN "
               "'ReadOnly' ELSE 'Disabled' END,HTTP.available,HTTP.http_webdav FROM http_share_option HTTP WHERE "
               "HTTP.share_id=%d",
               id)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM http_share_option'. %s"));
    TRY(make_block(ctx, rows, http));
    if (!*http) return 0;
    int32_t available = 0;
    read_row(ctx, rows, 0, (*http)->DefaultAccess, available,
             optional((*http)->EnableWebDav, (*http)->EnableWebDav_void));
    (*http)->NotAvailable = !available;
    return read_lists(reading, "http", *http);
}

uint32_t read_zvol(const Reading &reading, ZvolShareOption **zvol)
{
    const auto &[ctx, db, settings, id] = reading;
    Rows rows;
    TRY(select(ctx, db, rows,
               "SELECT ZVOL.kb_size,ZVOL.is_sparse,V.lv_name||'/'||S.name FROM zvol_share_option ZVOL INNER JOIN share "
               "S ON S.id=ZVOL.share_id INNER JOIN _volume V ON V.id=S.volume_id WHERE share_id=%d",
               id)
            .or_report(ctx, "Failed DB Query for 'SELECT FROM zvol_share_option'. %s"));
    TRY(make_block(ctx, rows, zvol));
    if (!*zvol) return 0;
    read_row(ctx, rows, 0, (*zvol)->SizeKB, (*zvol)->IsSparse, (*zvol)->ZfsName);
    unsigned long bytes = 0;  // stays when the file system does not tell
    qbdb_fs_get_attr_scanf(ctx->qbdb, (*zvol)->ZfsName, "usedbydataset", "%lu", &bytes);
    (*zvol)->UsedKB = bytes >> 10;
    return 0;
}

}  // namespace

uint32_t read_protocols(CallContext *ctx, sqlite3 *db, const ShareSettings &settings, int32_t share_id, Share *share)
{
    const Reading reading{ctx, db, settings, share_id};
    TRY(read_cifs(reading, &share->Cifs));
    TRY(read_afp(reading, &share->Afp));
    TRY(read_nfs(reading, &share->Nfs));
    TRY(read_ftp(reading, &share->Ftp));
    TRY(read_dlna(reading, &share->Dlna));
    TRY(read_daap(reading, &share->Daap));
    TRY(read_rsync(reading, &share->Rsync));
    TRY(read_http(reading, &share->Http));
    return read_zvol(reading, &share->Zvol);
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
