/**
 * @file qbobj/shares.h
 * Shares with their per-protocol options, access lists and quotas.
 */
#ifndef QBOBJ_SHARES_H
#define QBOBJ_SHARES_H

#include "qbobj/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Host. */
struct Host {
    struct Host *next; /**< Next element of the list, or null. */
    int32_t resource_id; /**< */
    int32_t HostId; /**< */
    const char *HostName; /**< */
};

/** DfolderAcl. */
struct DfolderAcl {
    struct DfolderAcl *next; /**< Next element of the list, or null. */
    const char *Name; /**< */
    const char *Address; /**< */
    const char *RemoteShare; /**< */
};

/** UserPasswordAcl. */
struct UserPasswordAcl {
    struct UserPasswordAcl *next; /**< Next element of the list, or null. */
    const char *UserName; /**< */
    const char *Password; /**< */
};

/** ZvolShareOption. */
struct ZvolShareOption {
    const char *ZfsName; /**< */
    uint64_t SizeKB; /**< */
    uint64_t UsedKB; /**< */
    int32_t IsSparse; /**< */
};

/** DlnaShareOption. */
struct DlnaShareOption {
    int32_t NotAvailable; /**< */
    int32_t Changed; /**< */
    const char *DefaultAccess; /**< */
    const char *MediaType; /**< */
};

/** DaapShareOption. */
struct DaapShareOption {
    int32_t NotAvailable; /**< */
    int32_t Changed; /**< */
};

/** PosixAcl. */
struct PosixAcl {
    struct PosixAcl *next; /**< Next element of the list, or null. */
    int32_t Type; /**< */
    int32_t Tag; /**< */
    int32_t Perm; /**< */
    int32_t Id; /**< */
    const char *Name; /**< */
};

/** UsedBy. */
struct UsedBy {
    struct UsedBy *next; /**< Next element of the list, or null. */
    const char *AppName; /**< */
    const char *AppData; /**< */
};

/** Process. */
struct Process {
    struct Process *next; /**< Next element of the list, or null. */
    int32_t ProcessId; /**< */
    int32_t Blocking; /**< */
    int32_t Timestamp; /**< */
};

/** HostAcl. */
struct HostAcl {
    struct HostAcl *next; /**< Next element of the list, or null. */
    struct Host *Host; /**< */
    const char *Access; /**< */
    int32_t Root; /**< */
};

/** UserAcl. */
struct UserAcl {
    struct UserAcl *next; /**< Next element of the list, or null. */
    struct SystemUser *User; /**< */
    const char *Access; /**< */
};

/** GroupAcl. */
struct GroupAcl {
    struct GroupAcl *next; /**< Next element of the list, or null. */
    struct SystemGroup *Group; /**< */
    const char *Access; /**< */
};

/** CifsShareOption. */
struct CifsShareOption {
    int32_t NotAvailable; /**< */
    int32_t Changed; /**< */
    const char *DefaultAccess; /**< */
    int32_t AllowGuestAccess_void; /**< Non-zero: AllowGuestAccess has no value. */
    int32_t AllowGuestAccess; /**< */
    int32_t ShareDisplayOption_void; /**< Non-zero: ShareDisplayOption has no value. */
    int32_t ShareDisplayOption; /**< */
    int32_t EnableRecycleBin_void; /**< Non-zero: EnableRecycleBin has no value. */
    int32_t EnableRecycleBin; /**< */
    int32_t RecycleSizeLimit_void; /**< Non-zero: RecycleSizeLimit has no value. */
    int32_t RecycleSizeLimit; /**< */
    int32_t RecycleAgeLimit_void; /**< Non-zero: RecycleAgeLimit has no value. */
    int32_t RecycleAgeLimit; /**< */
    int32_t NewFileFolderPermAutoset_void; /**< Non-zero: NewFileFolderPermAutoset has no value. */
    int32_t NewFileFolderPermAutoset; /**< */
    int32_t AclChangeRestrictionToggle_void; /**< Non-zero: AclChangeRestrictionToggle has no value. */
    int32_t AclChangeRestrictionToggle; /**< */
    const char *FileCreateGroupRights; /**< */
    const char *FileCreateEveryoneRights; /**< */
    const char *FolderCreateGroupRights; /**< */
    const char *FolderCreateEveryoneRights; /**< */
    int32_t EnableOplocks_void; /**< Non-zero: EnableOplocks has no value. */
    int32_t EnableOplocks; /**< */
    int32_t EnableDFS; /**< */
    struct HostAcl *HostAcl; /**< */
    struct UserAcl *UserAcl; /**< */
    struct GroupAcl *GroupAcl; /**< */
    struct DfolderAcl *DfolderAcl; /**< */
};

/** AfpShareOption. */
struct AfpShareOption {
    int32_t NotAvailable; /**< */
    int32_t Changed; /**< */
    const char *DefaultAccess; /**< */
    int32_t AllowGuestAccess_void; /**< Non-zero: AllowGuestAccess has no value. */
    int32_t AllowGuestAccess; /**< */
    int32_t NewFileFolderPermAutoset_void; /**< Non-zero: NewFileFolderPermAutoset has no value. */
    int32_t NewFileFolderPermAutoset; /**< */
    const char *FileCreateGroupRights; /**< */
    const char *FileCreateEveryoneRights; /**< */
    const char *FolderCreateGroupRights; /**< */
    const char *FolderCreateEveryoneRights; /**< */
    struct HostAcl *HostAcl; /**< */
    struct UserAcl *UserAcl; /**< */
    struct GroupAcl *GroupAcl; /**< */
};

/** FtpShareOption. */
struct FtpShareOption {
    int32_t NotAvailable; /**< */
    int32_t Changed; /**< */
    const char *DefaultAccess; /**< */
    int32_t NewFileFolderPermAutoset_void; /**< Non-zero: NewFileFolderPermAutoset has no value. */
    int32_t NewFileFolderPermAutoset; /**< */
    const char *FileCreateGroupRights; /**< */
    const char *FileCreateEveryoneRights; /**< */
    const char *FolderCreateGroupRights; /**< */
    const char *FolderCreateEveryoneRights; /**< */
    struct HostAcl *HostAcl; /**< */
    struct UserAcl *UserAcl; /**< */
    struct GroupAcl *GroupAcl; /**< */
};

/** NfsShareOption. */
struct NfsShareOption {
    int32_t NotAvailable; /**< */
    int32_t Changed; /**< */
    const char *DefaultAccess; /**< */
    int32_t Sync; /**< */
    struct HostAcl *HostAcl; /**< */
};

/** RsyncShareOption. */
struct RsyncShareOption {
    int32_t NotAvailable; /**< */
    int32_t Changed; /**< */
    const char *DefaultAccess; /**< */
    const char *PasswordProtection; /**< */
    struct HostAcl *HostAcl; /**< */
    struct UserPasswordAcl *UserPasswordAcl; /**< */
};

/** HttpShareOption. */
struct HttpShareOption {
    int32_t NotAvailable; /**< */
    int32_t Changed; /**< */
    const char *DefaultAccess; /**< */
    struct HostAcl *HostAcl; /**< */
    struct UserAcl *UserAcl; /**< */
    struct GroupAcl *GroupAcl; /**< */
    int32_t EnableWebDav_void; /**< Non-zero: EnableWebDav has no value. */
    int32_t EnableWebDav; /**< */
};

/** FileStat. */
struct FileStat {
    struct SystemUser *User; /**< */
    struct SystemGroup *Group; /**< */
    const char *UserAccess; /**< */
    const char *GroupAccess; /**< */
    const char *EveryoneAccess; /**< */
    int32_t NonOwnerDelete_void; /**< Non-zero: NonOwnerDelete has no value. */
    int32_t NonOwnerDelete; /**< */
    int32_t AclInherit; /**< */
    struct PosixAcl *Acls; /**< */
    int32_t _PosixMode; /**< */
};

/** Share. */
struct Share {
    struct Share *next; /**< Next element of the list, or null. */
    const char *key; /**< Key word: the text by which the element is addressed. */
    const char *ShareId; /**< */
    const char *ZfsName; /**< */
    const char *ShareType; /**< */
    const char *ShareName; /**< */
    int32_t VisibleSnapshot; /**< */
    int32_t OldVisibleSnapshot; /**< */
    const char *VisibleSnapFolder; /**< */
    const char *OldShareName; /**< */
    const char *Comment; /**< */
    const char *VolumeId; /**< */
    const char *Path; /**< */
    const char *OldPath; /**< */
    QBOBJ_ALIGN8 int32_t QuotaMB_void; /**< Non-zero: QuotaMB has no value. */
    uint64_t QuotaMB; /**< */
    QBOBJ_ALIGN8 int32_t ReserveMB_void; /**< Non-zero: ReserveMB has no value. */
    uint64_t ReserveMB; /**< */
    QBOBJ_ALIGN8 int32_t RefQuotaMB_void; /**< Non-zero: RefQuotaMB has no value. */
    uint64_t RefQuotaMB; /**< */
    QBOBJ_ALIGN8 int32_t RefReserveMB_void; /**< Non-zero: RefReserveMB has no value. */
    uint64_t RefReserveMB; /**< */
    int32_t Compression_void; /**< Non-zero: Compression has no value. */
    int32_t Compression; /**< */
    int32_t BitRotProtection_void; /**< Non-zero: BitRotProtection has no value. */
    int32_t BitRotProtection; /**< */
    int32_t Dedup_void; /**< Non-zero: Dedup has no value. */
    int32_t Dedup; /**< */
    const char *LogBias; /**< */
    const char *Origin; /**< */
    const char *Sync; /**< */
    uint64_t AvailableMB; /**< */
    uint64_t UsedMB; /**< */
    uint64_t UsedByChildrenMB; /**< */
    uint64_t UsedByDatasetMB; /**< */
    uint64_t UsedByRefReservationMB; /**< */
    uint64_t UsedBySnapshotsMB; /**< */
    const char *CompressRatio; /**< */
    uint64_t ReferencedMB; /**< */
    int32_t NrContinuousSnapshots; /**< */
    int32_t NrManualSnapshots; /**< */
    int32_t FirstSnapshotCreatedOn; /**< */
    int32_t LastSnapshotCreatedOn; /**< */
    const char *MigrateToVolumeId; /**< */
    struct FileStat *Stat; /**< */
    struct ZvolShareOption *Zvol; /**< */
    struct CifsShareOption *Cifs; /**< */
    struct AfpShareOption *Afp; /**< */
    struct FtpShareOption *Ftp; /**< */
    struct NfsShareOption *Nfs; /**< */
    struct DlnaShareOption *Dlna; /**< */
    struct DaapShareOption *Daap; /**< */
    struct RsyncShareOption *Rsync; /**< */
    struct HttpShareOption *Http; /**< */
    struct Schedule *SnapshotSchedule; /**< */
    struct SnapshotClone *SnapshotClones; /**< */
    struct Quota *UserQuota; /**< */
    struct Quota *GroupQuota; /**< */
    struct UsedBy *UsedBy; /**< */
    int32_t UpdateTS; /**< */
    int32_t Busy; /**< */
    const char *CloneOf; /**< */
    int32_t CustomSnapshotManagement; /**< */
    struct SnapshotRetentionRules *SnapshotRetentionRules; /**< */
    const char *CustomSnapshotSchedule; /**< */
    int32_t NonEmptySnapshots; /**< */
    int32_t PrevVersions; /**< */
};

/** ShareCollection. */
struct ShareCollection {
    struct Share *Share; /**< */
};

/** SimpleShare. */
struct SimpleShare {
    struct SimpleShare *next; /**< Next element of the list, or null. */
    const char *key; /**< Key word: the text by which the element is addressed. */
    const char *ShareId; /**< */
    const char *ShareName; /**< */
    const char *CommonProtocolsCSV; /**< */
    struct UsedBy *UsedBy; /**< */
};

/** SimpleShareCollection. */
struct SimpleShareCollection {
    struct SimpleShare *SimpleShare; /**< */
};

/* Operations. */

#ifdef __cplusplus
}
#endif

#endif
