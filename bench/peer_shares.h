// What the peers do to read shares: the statements of the library in their order, and the same records.
#pragma once

#include <acl/libacl.h>
#include <sys/acl.h>
#include <sys/stat.h>

#include "engines.h"

namespace bench {

inline constexpr char kShareList[] =
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
    "STRFTIME('%%s',S.update_ts),(SELECT IFNULL(MAX(PS.blocking)+1,0) FROM `process_on_share` PS WHERE "
    "PS.share_id=S.id),ZS.referenced/1048576,S.volume_id||'/'||SC.parent_zfs_name||'@'||SC.parent_snapshot_name,"
    "ZA.bit_rot_protection,(SELECT SM.enabled FROM `snapshot_management` SM WHERE SM.share_id=S.id LIMIT 1),(SELECT "
    "SM.schedule FROM `snapshot_management` SM WHERE SM.share_id=S.id LIMIT 1),(SELECT SM.nonempty_snapshots FROM "
    "`snapshot_management` SM WHERE SM.share_id=S.id LIMIT 1),(SELECT SM.prev_versions FROM `snapshot_management` SM "
    "WHERE SM.share_id=S.id LIMIT 1) FROM share S LEFT JOIN cifs_share_option CIFS ON CIFS.share_id=S.id LEFT JOIN "
    "_zfs_stat ZS ON ZS.share_id=S.id LEFT JOIN zfs_attr ZA ON ZA.share_id=S.id LEFT JOIN `$snapshot_clones` SC ON "
    "SC.cloned_zfs_name=S.name WHERE S.type='share' ORDER BY S.name COLLATE NOCASE";

/// Reads shares. An Engine (engines.h) says how a statement is run.
template <class Engine>
struct ShareReader {
    Engine &engine;
    qbdb_t *qbdb;

    template <class T>
    T *make()
    {
        return static_cast<T *>(apr_pcalloc(engine.pool, sizeof(T)));
    }
    template <class T>
    T *add(T ***tail)
    {
        T *element = make<T>();
        **tail = element;
        *tail = &element->next;
        return element;
    }
    static const char *word(int32_t bits) { return bits & 2 ? "ReadWrite" : bits & 4 ? "ReadOnly" : "Disabled"; }
    static const char *removed(int32_t bits) { return !(bits & 2) ? "ReadWrite" : bits & 4 ? "Disabled" : "ReadOnly"; }
    template <class Row, class Number>
    static void optional(const Row &row, int column, Number &value, int32_t &is_void)
    {
        is_void = !row.has(column);
        value = static_cast<Number>(row.uint64(column));
    }

    const char *user_name(int32_t id)
    {
        const char *name = nullptr;
        engine.each(
            "SELECT U.uname FROM `$user` U WHERE U.id=%d", [&](const auto &row) { name = row.text(0); }, id);
        return name;
    }
    const char *group_name(int32_t id)
    {
        const char *name = nullptr;
        engine.each(
            "SELECT G.gname FROM `$group` G WHERE G.id=%d", [&](const auto &row) { name = row.text(0); }, id);
        return name;
    }

    void acl(const char *path, acl_type_t type, PosixAcl ***tail)
    {
        const acl_t list = acl_get_file(path, type);
        acl_entry_t entry = nullptr;
        for (int got = acl_get_entry(list, ACL_FIRST_ENTRY, &entry); got == 1;
             got = acl_get_entry(list, ACL_NEXT_ENTRY, &entry)) {
            acl_permset_t permissions = nullptr;
            PosixAcl *read = add(tail);
            read->Type = static_cast<int32_t>(type);
            acl_get_tag_type(entry, &read->Tag);
            acl_get_permset(entry, &permissions);
            for (const acl_perm_t bit : {ACL_READ, ACL_WRITE, ACL_EXECUTE})
                if (acl_get_perm(permissions, bit)) read->Perm |= static_cast<int32_t>(bit);
        }
        acl_free(list);
    }

    void folder(const char *path, FileStat *stat)
    {
        struct stat on_disk {};
        if (::stat(path, &on_disk) != 0) return;
        stat->UserAccess = word(static_cast<int32_t>(on_disk.st_mode) >> 6 & 7);
        stat->GroupAccess = word(static_cast<int32_t>(on_disk.st_mode) >> 3 & 7);
        stat->EveryoneAccess = word(static_cast<int32_t>(on_disk.st_mode) & 7);
        stat->_PosixMode = static_cast<int32_t>(on_disk.st_mode) & 07777;
        stat->User = make<SystemUser>();
        stat->User->resource_id = stat->User->UserId = stat->User->_PosixId = static_cast<int32_t>(on_disk.st_uid);
        stat->User->UserName = user_name(stat->User->UserId);
        stat->Group = make<SystemGroup>();
        stat->Group->resource_id = stat->Group->GroupId = stat->Group->_PosixId = static_cast<int32_t>(on_disk.st_gid);
        stat->Group->GroupName = group_name(stat->Group->GroupId);
        PosixAcl **tail = &stat->Acls;
        acl(path, ACL_TYPE_ACCESS, &tail);
        acl(path, ACL_TYPE_DEFAULT, &tail);
    }

    void hosts(int32_t id, const char *proto, HostAcl **tail)
    {
        engine.each(
            "SELECT H.id,H.name,CASE WHEN HA.write THEN 'ReadWrite' WHEN HA.read THEN 'ReadOnly' ELSE 'Disabled' "
            "END,HA.root FROM host H INNER JOIN host_acl HA ON HA.host_id=H.id AND HA.share_id=%d AND HA.proto=%Q",
            [&](const auto &row) {
                HostAcl *read = add(&tail);
                read->Host = make<Host>();
                read->Host->resource_id = read->Host->HostId = row.int32(0);
                read->Host->HostName = row.text(1);
                read->Access = row.text(2);
                read->Root = row.int32(3);
            },
            id, proto);
    }
    void users(int32_t id, const char *proto, UserAcl **tail)
    {
        engine.each(
            "SELECT U.id,U.uname,CASE WHEN UA.write THEN 'ReadWrite' WHEN UA.read THEN 'ReadOnly' ELSE 'Disabled' END "
            "FROM `$user` U INNER JOIN user_acl UA ON UA.user_id=U.id AND UA.share_id=%d AND UA.proto=%Q WHERE U.rid "
            "IS NULL ORDER BY U.uname COLLATE NOCASE",
            [&](const auto &row) {
                UserAcl *read = add(&tail);
                read->User = make<SystemUser>();
                read->User->resource_id = read->User->UserId = read->User->_PosixId = row.int32(0);
                read->User->UserName = row.text(1);
                read->Access = row.text(2);
            },
            id, proto);
    }
    void groups(int32_t id, const char *proto, GroupAcl **tail)
    {
        engine.each(
            "SELECT G.id,G.gname,CASE WHEN GA.write THEN 'ReadWrite' WHEN GA.read THEN 'ReadOnly' ELSE 'Disabled' END "
            "FROM `$group` G INNER JOIN group_acl GA ON GA.group_id=G.id AND GA.share_id=%d AND GA.proto=%Q WHERE "
            "G.rid IS NULL ORDER BY G.gname COLLATE NOCASE",
            [&](const auto &row) {
                GroupAcl *read = add(&tail);
                read->Group = make<SystemGroup>();
                read->Group->resource_id = read->Group->GroupId = read->Group->_PosixId = row.int32(0);
                read->Group->GroupName = row.text(1);
                read->Access = row.text(2);
            },
            id, proto);
    }
    template <class Block>
    void lists(int32_t id, const char *proto, Block *block)
    {
        hosts(id, proto, &block->HostAcl);
        users(id, proto, &block->UserAcl);
        groups(id, proto, &block->GroupAcl);
    }

    void cifs(int32_t id, Share *share)
    {
        engine.each(
            "SELECT CASE WHEN CIFS.cifs_access='writeable' THEN 'ReadWrite' WHEN CIFS.cifs_access='readonly' THEN "
            "'ReadOnly' ELSE 'Disabled' END,CIFS.cifs_guest_access,CIFS.cifs_hide_share,CIFS.cifs_recycle,"
            "CIFS.cifs_recycle_age_limit,CIFS.cifs_recycle_mb_limit,CIFS.cifs_enable_masks,"
            "CIFS.cifs_enable_forced_minimum,CIFS.cifs_group_create_mask,CIFS.cifs_everyone_create_mask,"
            "CIFS.cifs_group_directory_mask,CIFS.cifs_everyone_directory_mask,CIFS.oplocks,CIFS.available,"
            "CIFS.cifs_enabledfs FROM cifs_share_option CIFS WHERE CIFS.share_id=%d",
            [&](const auto &row) {
                auto *read = share->Cifs = make<CifsShareOption>();
                read->DefaultAccess = row.text(0);
                optional(row, 1, read->AllowGuestAccess, read->AllowGuestAccess_void);
                optional(row, 2, read->ShareDisplayOption, read->ShareDisplayOption_void);
                optional(row, 3, read->EnableRecycleBin, read->EnableRecycleBin_void);
                optional(row, 4, read->RecycleAgeLimit, read->RecycleAgeLimit_void);
                optional(row, 5, read->RecycleSizeLimit, read->RecycleSizeLimit_void);
                optional(row, 6, read->NewFileFolderPermAutoset, read->NewFileFolderPermAutoset_void);
                optional(row, 7, read->AclChangeRestrictionToggle, read->AclChangeRestrictionToggle_void);
                read->FileCreateGroupRights = word(row.int32(8));
                read->FileCreateEveryoneRights = word(row.int32(9));
                read->FolderCreateGroupRights = word(row.int32(10));
                read->FolderCreateEveryoneRights = word(row.int32(11));
                optional(row, 12, read->EnableOplocks, read->EnableOplocks_void);
                read->NotAvailable = !row.int32(13);
                read->EnableDFS = row.int32(14);
            },
            id);
        if (!share->Cifs) return;
        lists(id, "cifs", share->Cifs);
        DfolderAcl **tail = &share->Cifs->DfolderAcl;
        engine.each(
            "SELECT D.folder,D.address,D.remote_share FROM cifs_dfs_option D WHERE  D.share_id=%d",
            [&](const auto &row) {
                DfolderAcl *read = add(&tail);
                read->Name = row.text(0);
                read->Address = row.text(1);
                read->RemoteShare = row.text(2);
            },
            id);
    }
    template <class Block, class Word>
    static void rights(Block *block, int32_t file, int32_t folder, Word as_word)
    {
        block->FileCreateGroupRights = as_word(file >> 3 & 7);
        block->FileCreateEveryoneRights = as_word(file & 7);
        block->FolderCreateGroupRights = as_word(folder >> 3 & 7);
        block->FolderCreateEveryoneRights = as_word(folder & 7);
    }
    void afp(int32_t id, Share *share)
    {
        engine.each(
            "SELECT CASE WHEN AFP.afp_access='writeable' THEN 'ReadWrite' WHEN AFP.afp_access='readonly' THEN "
            "'ReadOnly' ELSE 'Disabled' END,AFP.afp_guest_access,AFP.afp_fperm,AFP.afp_dperm,AFP.available FROM "
            "afp_share_option AFP WHERE AFP.share_id=%d",
            [&](const auto &row) {
                auto *read = share->Afp = make<AfpShareOption>();
                read->DefaultAccess = row.text(0);
                optional(row, 1, read->AllowGuestAccess, read->AllowGuestAccess_void);
                rights(read, row.int32(2), row.int32(3), word);
                read->NewFileFolderPermAutoset = row.has(2) && row.has(3);
                read->NotAvailable = !row.int32(4);
            },
            id);
        if (share->Afp) lists(id, "afp", share->Afp);
    }
    void nfs(int32_t id, Share *share)
    {
        engine.each(
            "SELECT CASE WHEN NFS.nfs_access='writeable' THEN 'ReadWrite' WHEN NFS.nfs_access='readonly' THEN "
            "'ReadOnly' ELSE 'Disabled' END,NFS.available,NFS.nfs_sync FROM nfs_share_option NFS WHERE NFS.share_id=%d",
            [&](const auto &row) {
                share->Nfs = make<NfsShareOption>();
                share->Nfs->DefaultAccess = row.text(0);
                share->Nfs->NotAvailable = !row.int32(1);
                share->Nfs->Sync = row.int32(2);
            },
            id);
        if (share->Nfs) hosts(id, "nfs", &share->Nfs->HostAcl);
    }
    void ftp(int32_t id, Share *share)
    {
        engine.each(
            "SELECT CASE WHEN FTP.ftp_access='writeable' THEN 'ReadWrite' WHEN FTP.ftp_access='readonly' THEN "
            "'ReadOnly' ELSE 'Disabled' END,FTP.ftp_mask,FTP.ftp_create_mask,FTP.ftp_directory_mask,FTP.available FROM "
            "ftp_share_option FTP WHERE FTP.share_id=%d",
            [&](const auto &row) {
                auto *read = share->Ftp = make<FtpShareOption>();
                read->DefaultAccess = row.text(0);
                optional(row, 1, read->NewFileFolderPermAutoset, read->NewFileFolderPermAutoset_void);
                rights(read, row.int32(2), row.int32(3), removed);
                read->NotAvailable = !row.int32(4);
            },
            id);
        if (share->Ftp) lists(id, "ftp", share->Ftp);
    }
    void media(int32_t id, Share *share)
    {
        engine.each(
            "SELECT CASE WHEN DLNA.access='readonly' THEN 'ReadOnly' ELSE 'Disabled' END,DLNA.media_type,"
            "DLNA.available FROM dlna_share_option DLNA WHERE DLNA.share_id=%d AND DLNA.access='readonly'",
            [&](const auto &row) {
                share->Dlna = make<DlnaShareOption>();
                share->Dlna->DefaultAccess = row.text(0);
                share->Dlna->MediaType = row.text(1);
                share->Dlna->NotAvailable = !row.int32(2);
            },
            id);
        engine.each(
            "SELECT DAAP.available FROM daap_share_option DAAP WHERE DAAP.share_id=%d",
            [&](const auto &row) {
                share->Daap = make<DaapShareOption>();
                share->Daap->NotAvailable = !row.int32(0);
            },
            id);
    }
    void rsync(int32_t id, Share *share)
    {
        engine.each(
            "SELECT CASE WHEN RSYNC.rsync_access='readonly' THEN 'ReadOnly' ELSE 'ReadWrite' END,CASE WHEN "
            "RSYNC.passwordprotection='enabled' THEN 'Enabled' ELSE 'Disabled' END,RSYNC.available FROM "
            "rsync_share_option RSYNC WHERE RSYNC.share_id=%d",
            [&](const auto &row) {
                share->Rsync = make<RsyncShareOption>();
                share->Rsync->DefaultAccess = row.text(0);
                share->Rsync->PasswordProtection = row.text(1);
                share->Rsync->NotAvailable = !row.int32(2);
            },
            id);
        if (!share->Rsync) return;
        UserPasswordAcl **tail = &share->Rsync->UserPasswordAcl;
        engine.each(
            "SELECT UP.user,UP.password FROM rsync_user_password_acl UP WHERE UP.share_id=%d",
            [&](const auto &row) {
                UserPasswordAcl *read = add(&tail);
                read->UserName = row.text(0);
                read->Password = row.text(1);
            },
            id);
        hosts(id, "rsync", &share->Rsync->HostAcl);
    }
    void http(int32_t id, Share *share)
    {
        engine.each(
            "SELECT CASE WHEN HTTP.http_access='writeable' THEN 'ReadWrite' WHEN HTTP.http_access='readonly' THEN "
            "'ReadOnly' ELSE 'Disabled' END,HTTP.available,HTTP.http_webdav FROM http_share_option HTTP WHERE "
            "HTTP.share_id=%d",
            [&](const auto &row) {
                share->Http = make<HttpShareOption>();
                share->Http->DefaultAccess = row.text(0);
                share->Http->NotAvailable = !row.int32(1);
                optional(row, 2, share->Http->EnableWebDav, share->Http->EnableWebDav_void);
            },
            id);
        if (share->Http) lists(id, "http", share->Http);
    }
    void zvol(int32_t id, Share *share)
    {
        engine.each(
            "SELECT ZVOL.kb_size,ZVOL.is_sparse,V.lv_name||'/'||S.name FROM zvol_share_option ZVOL INNER JOIN share S "
            "ON S.id=ZVOL.share_id INNER JOIN _volume V ON V.id=S.volume_id WHERE share_id=%d",
            [&](const auto &row) {
                share->Zvol = make<ZvolShareOption>();
                share->Zvol->SizeKB = row.uint64(0);
                share->Zvol->IsSparse = row.int32(1);
                share->Zvol->ZfsName = row.text(2);
            },
            id);
        unsigned long bytes = 0;
        if (share->Zvol && qbdb_fs_get_attr_scanf(qbdb, share->Zvol->ZfsName, "usedbydataset", "%lu", &bytes) == 0)
            share->Zvol->UsedKB = bytes >> 10;
    }

    void snapshots(int32_t id, Share *share)
    {
        engine.each(
            "SELECT SS.enabled,SS.minute,SS.hour,SS.day_of_month,SS.day_of_week,SS.month,SS.last_taken,"
            "SS.purge_manual_snapshot,SS.last_daily_taken,SS.last_weekly_taken FROM snapshot_schedule SS WHERE "
            "share_id=%d",
            [&](const auto &row) {
                auto *read = share->SnapshotSchedule = make<Schedule>();
                read->Enabled = row.int32(0);
                read->Minute = row.text(1);
                read->Hour = row.text(2);
                read->DayOfMonth = row.text(3);
                read->DayOfWeek = row.text(4);
                read->Month = row.text(5);
                read->LastTaken = row.int32(6);
                read->PurgeManualSnapshot = row.int32(7);
                read->LastDailyTaken = row.int32(8);
                read->LastWeeklyTaken = row.int32(9);
            },
            id);
        SnapshotRetentionRules **tail = &share->SnapshotRetentionRules;
        engine.each(
            "SELECT SM.retention_rule,SM.lifetime,SM.number FROM `snapshot_management` SM WHERE share_id=%d",
            [&](const auto &row) {
                SnapshotRetentionRules *read = add(&tail);
                read->Type = row.int32(0);
                read->Lifetime = row.int32(1);
                read->Number = row.int32(2);
            },
            id);
    }
    void quotas(const char *sql, int32_t id, Quota **tail)
    {
        engine.each(
            sql,
            [&](const auto &row) {
                Quota *read = add(&tail);
                read->AccountId = row.int32(0);
                read->ShareId = row.text(1);
                read->HardMB = row.uint64(2);
                read->UsedMB = row.uint64(3);
                read->AccountName = row.text(4);
            },
            id);
    }
    void dependents(int32_t id, Share *share)
    {
        SnapshotClone **clones = &share->SnapshotClones;
        engine.each(
            "SELECT id,cloned_zfs_name,parent_snapshot_name,parent_zfs_name FROM `$snapshot_clones` WHERE "
            "parent_zfs_name=(SELECT S.name FROM share S WHERE S.id=%d)",
            [&](const auto &row) {
                SnapshotClone *read = add(&clones);
                read->resource_id = read->ID = row.int32(0);
                read->ClonedShareName = row.text(1);
                read->ParentSnapshotName = row.text(2);
                read->ParentShareName = row.text(3);
            },
            id);
        UsedBy **used_by = &share->UsedBy;
        engine.each(
            "SELECT A.app_name,A.app_data FROM `$application_on_share` A WHERE zfs_name=(SELECT S.zfs_name FROM share "
            "S WHERE S.id=%d)",
            [&](const auto &row) {
                UsedBy *read = add(&used_by);
                read->AppName = row.text(0);
                read->AppData = row.text(1);
            },
            id);
        static constexpr char kUserQuotas[] =
            "SELECT Q.user_id,S.zfs_name,Q.mb_hard,QS.mb_used,A.uname FROM user_quota Q INNER JOIN share S ON "
            "S.id=Q.share_id LEFT JOIN _user_quota_stat QS ON QS.share_id=Q.share_id AND QS.user_id=Q.user_id LEFT "
            "JOIN `$user` A ON A.id=Q.user_id WHERE Q.share_id=%d";
        static constexpr char kGroupQuotas[] =
            "SELECT Q.group_id,S.zfs_name,Q.mb_hard,QS.mb_used,A.gname FROM group_quota Q INNER JOIN share S ON "
            "S.id=Q.share_id LEFT JOIN _group_quota_stat QS ON QS.share_id=Q.share_id AND QS.group_id=Q.group_id LEFT "
            "JOIN `$group` A ON A.id=Q.group_id WHERE Q.share_id=%d";
        quotas(kUserQuotas, id, &share->UserQuota);
        quotas(kGroupQuotas, id, &share->GroupQuota);
    }

    template <class Row>
    void columns(const Row &row, Share *share)
    {
        FileStat *stat = share->Stat = make<FileStat>();
        share->key = share->ShareId = row.text(0);
        share->ShareName = row.text(1);
        share->Comment = row.text(2);
        share->Path = row.text(3);
        optional(row, 4, stat->NonOwnerDelete, stat->NonOwnerDelete_void);
        stat->UserAccess = row.text(6);
        stat->GroupAccess = row.text(8);
        stat->EveryoneAccess = row.text(9);
        share->VolumeId = row.text(10);
        share->AvailableMB = row.uint64(11);
        share->UsedMB = row.uint64(12);
        share->UsedByChildrenMB = row.uint64(13);
        share->UsedByDatasetMB = row.uint64(14);
        share->UsedByRefReservationMB = row.uint64(15);
        share->UsedBySnapshotsMB = row.uint64(16);
        share->CompressRatio = row.text(17);
        optional(row, 18, share->QuotaMB, share->QuotaMB_void);
        optional(row, 19, share->ReserveMB, share->ReserveMB_void);
        optional(row, 20, share->RefQuotaMB, share->RefQuotaMB_void);
        optional(row, 21, share->RefReserveMB, share->RefReserveMB_void);
        optional(row, 22, share->Compression, share->Compression_void);
        optional(row, 23, share->Dedup, share->Dedup_void);
        share->ShareType = row.text(24);
        share->ZfsName = row.text(25);
        share->NrContinuousSnapshots = row.int32(26);
        share->NrManualSnapshots = row.int32(27);
        share->FirstSnapshotCreatedOn = row.int32(28);
        share->LastSnapshotCreatedOn = row.int32(29);
        share->MigrateToVolumeId = row.text(30);
        share->LogBias = row.text(31);
        share->Origin = row.text(32);
        share->VisibleSnapFolder = row.word(33);
        share->VisibleSnapshot = row.has(33);
        share->Sync = row.text(34);
        share->UpdateTS = row.int32(35);
        share->Busy = row.int32(36);
        share->ReferencedMB = row.uint64(37);
        share->CloneOf = row.text(38);
        optional(row, 39, share->BitRotProtection, share->BitRotProtection_void);
        share->CustomSnapshotManagement = row.int32(40);
        share->CustomSnapshotSchedule = row.text(41);
        share->NonEmptySnapshots = row.int32(42);
        share->PrevVersions = row.int32(43);
    }

    template <class Row>
    void load(const Row &row, Share *share)
    {
        const int32_t id = row.int32(0);
        columns(row, share);
        folder(share->Path, share->Stat);
        snapshots(id, share);
        cifs(id, share);
        afp(id, share);
        nfs(id, share);
        ftp(id, share);
        media(id, share);
        rsync(id, share);
        http(id, share);
        zvol(id, share);
        dependents(id, share);
    }

    void list()
    {
        const auto nothing = [](const auto &) {};
        engine.begin_reading();
        engine.each("SELECT IFNULL(CASE WHEN auth_mode='anonymous' THEN 1 ELSE 0 END, 0) FROM service_ftp LIMIT 1",
                    nothing);
        engine.each("SELECT CASE WHEN S.security='ads' THEN 1 ELSE 0 END FROM service_cifs S LIMIT 1", nothing);
        ShareCollection shares{};
        Share **tail = &shares.Share;
        engine.each(kShareList, [&](const auto &row) { load(row, add(&tail)); });
        engine.commit();
    }
};

}  // namespace bench
// SPDX-License-Identifier: Apache-2.0
