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

/** A host or network of an access list. */
struct Host {
    struct Host *next;    /**< Next element of the list, or null. */
    int32_t resource_id;  /**< Database key. */
    int32_t HostId;       /**< Database key, as the caller gives it. */
    const char *HostName; /**< Host name, IPv4 address or network ("192.168.1.0/24"). */
};

/** A DFS link in a share: a folder that leads to a share on another server. */
struct DfolderAcl {
    struct DfolderAcl *next; /**< Next element of the list, or null. */
    const char *Name;        /**< Name of the folder. */
    const char *Address;     /**< Address of the server. */
    const char *RemoteShare; /**< Share on that server. */
};

/** A user of an rsync module. */
struct UserPasswordAcl {
    struct UserPasswordAcl *next; /**< Next element of the list, or null. */
    const char *UserName;         /**< Name of the user. */
    const char *Password;         /**< Password in clear. */
};

/** What only a block volume has. */
struct ZvolShareOption {
    const char *ZfsName; /**< Name of the data set. */
    uint64_t SizeKB;     /**< Size in @unit{KiB}. */
    uint64_t UsedKB;     /**< Used space in @unit{KiB}; output only. */
    int32_t IsSparse;    /**< 1 when space is taken only as it is written. */
};

/** A share over DLNA. */
struct DlnaShareOption {
    int32_t NotAvailable;      /**< 1 when the share is not served over this protocol. */
    int32_t Changed;           /**< In, on modify: raised to 1 when the stored rows really changed; never lowered. */
    const char *DefaultAccess; /**< "ReadOnly" or "Disabled". */
    const char *MediaType;     /**< "All", "Music", "Photo" or "Video"; read back as the stored number. */
};

/** A share over DAAP. */
struct DaapShareOption {
    int32_t NotAvailable; /**< 1 when the share is not served over this protocol. */
    int32_t Changed;      /**< In, on modify: raised to 1 when the stored rows really changed; never lowered. */
};

/** One POSIX ACL entry of a share's folder. */
struct PosixAcl {
    struct PosixAcl *next; /**< Next element of the list, or null. */
    int32_t Type;          /**< Access or default list, as libacl numbers them. */
    int32_t Tag;           /**< Tag of the entry, as libacl numbers them. */
    int32_t Perm;          /**< Permission bits: 4 read, 2 write, 1 execute. */
    int32_t Id;            /**< POSIX uid or gid. */
    const char *Name;      /**< Name of the user or group. */
};

/** An application that uses a share. */
struct UsedBy {
    struct UsedBy *next; /**< Next element of the list, or null. */
    const char *AppName; /**< Name of the application. */
    const char *AppData; /**< What the application keeps there. */
};

/** A process that works on a share. */
struct Process {
    struct Process *next; /**< Next element of the list, or null. */
    int32_t ProcessId;    /**< Process id. */
    int32_t Blocking;     /**< How strongly it blocks others; the largest counts. */
    int32_t Timestamp;    /**< When it registered, in @unit{seconds since the epoch}. */
};

/** A host's access to a share. */
struct HostAcl {
    struct HostAcl *next; /**< Next element of the list, or null. */
    struct Host *Host;    /**< The host. */
    const char *Access;   /**< "ReadWrite", "ReadOnly" or "Disabled". */
    int32_t Root;         /**< 1 grants root access (NFS). */
};

/** A user's access to a share. */
struct UserAcl {
    struct UserAcl *next;    /**< Next element of the list, or null. */
    struct SystemUser *User; /**< The user. */
    const char *Access;      /**< "ReadWrite", "ReadOnly" or "Disabled". */
};

/** A group's access to a share. */
struct GroupAcl {
    struct GroupAcl *next;     /**< Next element of the list, or null. */
    struct SystemGroup *Group; /**< The group. */
    const char *Access;        /**< "ReadWrite", "ReadOnly" or "Disabled". */
};

/** A share over SMB. */
struct CifsShareOption {
    int32_t NotAvailable;      /**< 1 when the share is not served over this protocol. */
    int32_t Changed;           /**< In, on modify: raised to 1 when the stored rows really changed; never lowered. */
    const char *DefaultAccess; /**< Access of those whom no list names: "ReadWrite", "ReadOnly" or "Disabled". */
    int32_t AllowGuestAccess_void;           /**< Non-zero: AllowGuestAccess has no value. */
    int32_t AllowGuestAccess;                /**< 1 lets guests in. */
    int32_t ShareDisplayOption_void;         /**< Non-zero: ShareDisplayOption has no value. */
    int32_t ShareDisplayOption;              /**< 1 hides the share from browsing. */
    int32_t EnableRecycleBin_void;           /**< Non-zero: EnableRecycleBin has no value. */
    int32_t EnableRecycleBin;                /**< 1 moves deleted files to a recycle bin. */
    int32_t RecycleSizeLimit_void;           /**< Non-zero: RecycleSizeLimit has no value. */
    int32_t RecycleSizeLimit;                /**< Largest size of the recycle bin in @unit{MB}, 0 for none. */
    int32_t RecycleAgeLimit_void;            /**< Non-zero: RecycleAgeLimit has no value. */
    int32_t RecycleAgeLimit;                 /**< @unit{days,Days} that a deleted file is kept, 0 for ever. */
    int32_t NewFileFolderPermAutoset_void;   /**< Non-zero: NewFileFolderPermAutoset has no value. */
    int32_t NewFileFolderPermAutoset;        /**< 1 sets the rights below on what is newly created. */
    int32_t AclChangeRestrictionToggle_void; /**< Non-zero: AclChangeRestrictionToggle has no value. */
    int32_t AclChangeRestrictionToggle;      /**< Permission bits that an ACL change cannot take away. */
    const char *FileCreateGroupRights;       /**< Group's rights on a new file: an access word. */
    const char *FileCreateEveryoneRights;    /**< Everyone's rights on a new file: an access word. */
    const char *FolderCreateGroupRights;     /**< Group's rights on a new folder: an access word. */
    const char *FolderCreateEveryoneRights;  /**< Everyone's rights on a new folder: an access word. */
    int32_t EnableOplocks_void;              /**< Non-zero: EnableOplocks has no value. */
    int32_t EnableOplocks;                   /**< 1 allows opportunistic locks. */
    int32_t EnableDFS;                       /**< 1 makes the share a DFS root. */
    struct HostAcl *HostAcl;                 /**< Hosts and networks with an access of their own. */
    struct UserAcl *UserAcl;                 /**< Users with an access of their own. */
    struct GroupAcl *GroupAcl;               /**< Groups with an access of their own. */
    struct DfolderAcl *DfolderAcl;           /**< DFS links. */
};

/** A share over AFP. */
struct AfpShareOption {
    int32_t NotAvailable;      /**< 1 when the share is not served over this protocol. */
    int32_t Changed;           /**< In, on modify: raised to 1 when the stored rows really changed; never lowered. */
    const char *DefaultAccess; /**< Access of those whom no list names: "ReadWrite", "ReadOnly" or "Disabled". */
    int32_t AllowGuestAccess_void;          /**< Non-zero: AllowGuestAccess has no value. */
    int32_t AllowGuestAccess;               /**< 1 lets guests in. */
    int32_t NewFileFolderPermAutoset_void;  /**< Non-zero: NewFileFolderPermAutoset has no value. */
    int32_t NewFileFolderPermAutoset;       /**< 1 sets the rights below on what is newly created. */
    const char *FileCreateGroupRights;      /**< Group's rights on a new file: an access word. */
    const char *FileCreateEveryoneRights;   /**< Everyone's rights on a new file: an access word. */
    const char *FolderCreateGroupRights;    /**< Group's rights on a new folder: an access word. */
    const char *FolderCreateEveryoneRights; /**< Everyone's rights on a new folder: an access word. */
    struct HostAcl *HostAcl;                /**< Hosts and networks with an access of their own. */
    struct UserAcl *UserAcl;                /**< Users with an access of their own. */
    struct GroupAcl *GroupAcl;              /**< Groups with an access of their own. */
};

/** A share over FTP. */
struct FtpShareOption {
    int32_t NotAvailable;      /**< 1 when the share is not served over this protocol. */
    int32_t Changed;           /**< In, on modify: raised to 1 when the stored rows really changed; never lowered. */
    const char *DefaultAccess; /**< Access of those whom no list names: "ReadWrite", "ReadOnly" or "Disabled". */
    int32_t NewFileFolderPermAutoset_void;  /**< Non-zero: NewFileFolderPermAutoset has no value. */
    int32_t NewFileFolderPermAutoset;       /**< 1 sets the rights below on what is newly created. */
    const char *FileCreateGroupRights;      /**< Group's rights on a new file: an access word. */
    const char *FileCreateEveryoneRights;   /**< Everyone's rights on a new file: an access word. */
    const char *FolderCreateGroupRights;    /**< Group's rights on a new folder: an access word. */
    const char *FolderCreateEveryoneRights; /**< Everyone's rights on a new folder: an access word. */
    struct HostAcl *HostAcl;                /**< Hosts and networks with an access of their own. */
    struct UserAcl *UserAcl;                /**< Users with an access of their own. */
    struct GroupAcl *GroupAcl;              /**< Groups with an access of their own. */
};

/** A share over NFS. */
struct NfsShareOption {
    int32_t NotAvailable;      /**< 1 when the share is not served over this protocol. */
    int32_t Changed;           /**< In, on modify: raised to 1 when the stored rows really changed; never lowered. */
    const char *DefaultAccess; /**< Access of those whom no list names: "ReadWrite", "ReadOnly" or "Disabled". */
    int32_t Sync;              /**< 1 answers a write only when it is on disk. */
    struct HostAcl *HostAcl;   /**< Hosts and networks with an access of their own. */
};

/** A share as an rsync module. */
struct RsyncShareOption {
    int32_t NotAvailable;      /**< 1 when the share is not served over this protocol. */
    int32_t Changed;           /**< In, on modify: raised to 1 when the stored rows really changed; never lowered. */
    const char *DefaultAccess; /**< Access of those whom no list names: "ReadWrite", "ReadOnly" or "Disabled". */
    const char *PasswordProtection;          /**< "Enabled" or "Disabled". */
    struct HostAcl *HostAcl;                 /**< Hosts and networks with an access of their own. */
    struct UserPasswordAcl *UserPasswordAcl; /**< Users of the module. */
};

/** A share over HTTP and WebDAV. */
struct HttpShareOption {
    int32_t NotAvailable;      /**< 1 when the share is not served over this protocol. */
    int32_t Changed;           /**< In, on modify: raised to 1 when the stored rows really changed; never lowered. */
    const char *DefaultAccess; /**< Access of those whom no list names: "ReadWrite", "ReadOnly" or "Disabled". */
    struct HostAcl *HostAcl;   /**< Hosts and networks with an access of their own. */
    struct UserAcl *UserAcl;   /**< Users with an access of their own. */
    struct GroupAcl *GroupAcl; /**< Groups with an access of their own. */
    int32_t EnableWebDav_void; /**< Non-zero: EnableWebDav has no value. */
    int32_t EnableWebDav;      /**< 1 allows WebDAV. */
};

/** Owner and permissions of a share's folder. */
struct FileStat {
    struct SystemUser *User;     /**< Owner. */
    struct SystemGroup *Group;   /**< Owning group. */
    const char *UserAccess;      /**< The owner's access: an access word. */
    const char *GroupAccess;     /**< The group's access: an access word. */
    const char *EveryoneAccess;  /**< Everybody else's access: an access word. */
    int32_t NonOwnerDelete_void; /**< Non-zero: NonOwnerDelete has no value. */
    int32_t NonOwnerDelete;      /**< 1 lets others than the owner delete files. */
    int32_t AclInherit;          /**< 1 when new entries inherit the folder's ACL. */
    struct PosixAcl *Acls;       /**< POSIX ACL entries, access and default. */
    int32_t _PosixMode;          /**< Mode bits of the folder: derived, not stored; output only. */
};

/** A share: a shared folder, or a block volume. */
struct Share {
    struct Share *next;                     /**< Next element of the list, or null. */
    const char *key;                        /**< Key word: the text by which the element is addressed. */
    const char *ShareId;                    /**< Database id as text. */
    const char *ZfsName;                    /**< Name of the data set: volume, slash, share name. */
    const char *ShareType;                  /**< "share", "zvol" or "replicate". */
    const char *ShareName;                  /**< Name of the share. */
    int32_t VisibleSnapshot;                /**< 1 when snapshots show in a folder of the share. */
    int32_t OldVisibleSnapshot;             /**< Out, on modify: the previous state. */
    const char *VisibleSnapFolder;          /**< Name of the folder in which snapshots show. */
    const char *OldShareName;               /**< Out, on rename: the previous name. */
    const char *Comment;                    /**< Comment. */
    const char *VolumeId;                   /**< Id of the volume. */
    const char *Path;                       /**< Path of the folder. */
    const char *OldPath;                    /**< Out, on rename: the previous path. */
    QBOBJ_ALIGN8 int32_t QuotaMB_void;      /**< Non-zero: QuotaMB has no value. */
    uint64_t QuotaMB;                       /**< Quota in @unit{MB}. */
    QBOBJ_ALIGN8 int32_t ReserveMB_void;    /**< Non-zero: ReserveMB has no value. */
    uint64_t ReserveMB;                     /**< Reservation in @unit{MB}. */
    QBOBJ_ALIGN8 int32_t RefQuotaMB_void;   /**< Non-zero: RefQuotaMB has no value. */
    uint64_t RefQuotaMB;                    /**< Quota without snapshots and clones, in @unit{MB}. */
    QBOBJ_ALIGN8 int32_t RefReserveMB_void; /**< Non-zero: RefReserveMB has no value. */
    uint64_t RefReserveMB;                  /**< Reservation without snapshots and clones, in @unit{MB}. */
    int32_t Compression_void;               /**< Non-zero: Compression has no value. */
    int32_t Compression;                    /**< 1 compresses. */
    int32_t BitRotProtection_void;          /**< Non-zero: BitRotProtection has no value. */
    int32_t BitRotProtection;               /**< 1 guards against bit rot. */
    int32_t Dedup_void;                     /**< Non-zero: Dedup has no value. */
    int32_t Dedup;                          /**< 1 deduplicates. */
    const char *LogBias;                    /**< Bias of the intent log. */
    const char *Origin;                     /**< Snapshot that a clone came from. */
    const char *Sync;                       /**< "standard", "always" or "disabled". */
    uint64_t AvailableMB;                   /**< Free space in @unit{MB}; output only. */
    uint64_t UsedMB;                        /**< Used space in @unit{MB}; output only. */
    uint64_t UsedByChildrenMB;              /**< Space used by children, in @unit{MB}; output only. */
    uint64_t UsedByDatasetMB;               /**< Space used by the data set itself, in @unit{MB}; output only. */
    uint64_t UsedByRefReservationMB;        /**< Space used by the reservation, in @unit{MB}; output only. */
    uint64_t UsedBySnapshotsMB;             /**< Space used by snapshots, in @unit{MB}; output only. */
    const char *CompressRatio;              /**< Compression ratio as the file system words it; output only. */
    uint64_t ReferencedMB;                  /**< Space referenced, in @unit{MB}; output only. */
    int32_t NrContinuousSnapshots;          /**< Number of scheduled snapshots; output only. */
    int32_t NrManualSnapshots;              /**< Number of snapshots taken by hand; output only. */
    int32_t FirstSnapshotCreatedOn;         /**< When the oldest snapshot was taken, in @unit{seconds since the epoch};
                                                 output only. */
    int32_t LastSnapshotCreatedOn;          /**< When the newest snapshot was taken, in @unit{seconds since the epoch};
                                                 output only. */
    const char *MigrateToVolumeId;          /**< Volume to which a migration is pending; output only. */
    struct FileStat *Stat;                  /**< Owner and permissions of the folder. */
    struct ZvolShareOption *Zvol;           /**< Block volume options. */
    struct CifsShareOption *Cifs;           /**< SMB options. */
    struct AfpShareOption *Afp;             /**< AFP options. */
    struct FtpShareOption *Ftp;             /**< FTP options. */
    struct NfsShareOption *Nfs;             /**< NFS options. */
    struct DlnaShareOption *Dlna;           /**< DLNA options. */
    struct DaapShareOption *Daap;           /**< DAAP options. */
    struct RsyncShareOption *Rsync;         /**< rsync options. */
    struct HttpShareOption *Http;           /**< HTTP options. */
    struct Schedule *SnapshotSchedule;      /**< When snapshots are taken. */
    struct SnapshotClone *SnapshotClones;   /**< Clones of the share's snapshots. */
    struct Quota *UserQuota;                /**< Quotas of users. */
    struct Quota *GroupQuota;               /**< Quotas of groups. */
    struct UsedBy *UsedBy;                  /**< Applications that use the share. */
    int32_t UpdateTS;                       /**< When the share was last changed, in @unit{seconds since the epoch};
                                                 output only. */
    int32_t Busy;                           /**< 0, or 1 plus the largest `Blocking` of the processes on the share;
                                                 output only. */
    const char *CloneOf;                    /**< Of a clone: volume, slash, parent share, "@", parent snapshot; output
                                                 only. */
    int32_t CustomSnapshotManagement;       /**< 1 when the share has a snapshot policy of its own. */
    struct SnapshotRetentionRules *SnapshotRetentionRules; /**< How long its snapshots are kept. */
    const char *CustomSnapshotSchedule;                    /**< Schedule of that policy. */
    int32_t NonEmptySnapshots;                             /**< 1 keeps only snapshots that hold changes. */
    int32_t PrevVersions;                                  /**< 1 shows snapshots as previous versions. */
};

/** A list of shares. */
struct ShareCollection {
    struct Share *Share; /**< Head of the list, null when empty. */
};

/** A share in brief. */
struct SimpleShare {
    struct SimpleShare *next;       /**< Next element of the list, or null. */
    const char *key;                /**< Key word: the text by which the element is addressed. */
    const char *ShareId;            /**< Database id as text. */
    const char *ShareName;          /**< Name of the share. */
    const char *CommonProtocolsCSV; /**< Enabled protocols among cifs, afp, ftp and nfs, joined by commas. */
    struct UsedBy *UsedBy;          /**< Applications that use the share. */
};

/** A list of shares in brief. */
struct SimpleShareCollection {
    struct SimpleShare *SimpleShare; /**< Head of the list, null when empty. */
};

/* ---- Reading ------------------------------------------------------------------------------------ */

/**
 * Lists the file shares (type "share") by name without regard to case, each with everything that belongs to it.
 *
 * A share that is read carries, beside its own fields: owner, permissions and POSIX ACL of its folder (when the folder
 * is there, as they are on disk, else the owner and permissions that it was given); the options of each protocol that
 * it has, with their host, user and group lists; block volume options; clones of its snapshots; snapshot schedule and
 * retention rules; quotas of users and groups; and the applications that use it. What it does not have is null, and
 * sizes that are not known are absent. The user and group lists name domain accounts in directory mode and local ones
 * else; those of FTP are left out while the FTP service is anonymous. Passwords of rsync users are in clear.
 *
 * @param qbdb   Handle.
 * @param db     Connection.
 * @param shares In/out: shares are appended to its list. A failure while the shares are read leaves those read so far
 *               in the list. Not null.
 * @param err    Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_getShareCollection(qbdb_t *qbdb, sqlite3 *db, ShareCollection *shares, ErrorInfo *err);

/**
 * Lists file shares and block volumes (types "share" and "zvol") as qbobj_getShareCollection().
 * @param qbdb   Handle.
 * @param db     Connection.
 * @param shares In/out: shares are appended to its list, as there. Not null.
 * @param err    Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_getShareAndZvolCollection(qbdb_t *qbdb, sqlite3 *db, ShareCollection *shares, ErrorInfo *err);

/**
 * Lists all shares, whatever their type, as qbobj_getShareCollection().
 * @param qbdb   Handle.
 * @param db     Connection.
 * @param shares In/out: shares are appended to its list, as there. Not null.
 * @param err    Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_getSubvolumeShareCollection(qbdb_t *qbdb, sqlite3 *db, ShareCollection *shares,
                                                     ErrorInfo *err);

/**
 * Lists the file shares in brief: id, name, the common protocols that serve it, and the applications that use it.
 * A protocol serves a share when the share has it, available and with a default access other than disabled.
 * @param qbdb   Handle.
 * @param db     Connection.
 * @param shares In/out: shares are appended to its list, by name without regard to case. A failure leaves those read
 *               so far in the list. Not null.
 * @param err    Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_getSimpleShareCollection(qbdb_t *qbdb, sqlite3 *db, SimpleShareCollection *shares,
                                                  ErrorInfo *err);

/**
 * Lists the file shares as qbobj_getShareCollection(), but fills only those that a user may see over a protocol.
 * The others stay in the list with nothing but their key and `ShareId`: the caller skips them.
 *
 * Over "cifs" a share is seen by whoever may read it: with an open default access (read or write) every user, and
 * without a user everybody when guests are let in; else whom the user or group list gives read access. Over "http" a
 * share with an open default access and without lists is seen by everybody; with lists by the users on the user list
 * and the secondary members of a group on the group list; with a closed default access, primary members too.
 *
 * @param qbdb         Handle.
 * @param db           Connection.
 * @param userName     Name of the user; null for nobody in particular.
 * @param protocolName "cifs" or "http". With another protocol the call fails at the first share.
 * @param shares       In/out: shares are appended to its list; a failure leaves those read so far. Not null.
 * @param err          Out: error record, not null.
 * @return 0; 2 no memory, another protocol, or an access check that failed; 5 database failure; 8 no such user, or not
 *         the name of a protocol.
 */
QBOBJ_API uint32_t qbobj_getAccessibleShareCollection(qbdb_t *qbdb, sqlite3 *db, const char *userName,
                                                      const char *protocolName, ShareCollection *shares,
                                                      ErrorInfo *err);

/**
 * Reads shares with everything that belongs to them, as qbobj_getShareCollection() describes it.
 * @param qbdb  Handle.
 * @param db    Connection.
 * @param share In/out: a chain of shares, read one after the other. Each is named by its @by{key} or its @by{ShareId}
 *              (a positive number), else by its @by{ShareName}. A failure leaves the record at fault as it was; those
 *              before it are filled. Not null.
 * @param err   Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure, or nothing that names a share; 6 no such share.
 */
QBOBJ_API uint32_t qbobj_getShare(qbdb_t *qbdb, sqlite3 *db, Share *share, ErrorInfo *err);

/**
 * Lists the shares of any type that match all filters given, in no particular order. Without any filter the list is
 * empty.
 * @param qbdb        Handle.
 * @param db          Connection.
 * @param volumeId    Volume, or null.
 * @param namePattern @pattern{SQL LIKE pattern} of the name with the caller's wildcards, or null.
 * @param zfsName     Data set, or null.
 * @param shares      In/out: shares are appended to its list; a failure leaves those read so far. Not null.
 * @param err         Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure, or filters that take more than 511 bytes together.
 */
QBOBJ_API uint32_t qbobj_queryShare(qbdb_t *qbdb, sqlite3 *db, const char *volumeId, const char *namePattern,
                                    const char *zfsName, ShareCollection *shares, ErrorInfo *err);

/**
 * Finds the id of a share by its name, without regard to case.
 * @param qbdb      Handle.
 * @param db        Connection.
 * @param shareName Name of the share; null is no share.
 * @param err       Out: error record, not null; stays zero.
 * @return The id, or 0xFFFFFFFF when there is no such share or the database failed.
 */
QBOBJ_API uint32_t qbobj_getShareId(qbdb_t *qbdb, sqlite3 *db, const char *shareName, ErrorInfo *err);

/**
 * Tells what a user may do in a share over SMB. The answer is never a failure: who or what is not known, and a check
 * that fails, has no access.
 * @param qbdb      Handle.
 * @param db        Connection.
 * @param shareName Name of the share; null is no share.
 * @param userName  Name of the user; null for the guest account.
 * @param access    Out: "ReadWrite", "ReadOnly" or "Disabled" (static text). Not null.
 * @param err       Out: error record, not null; stays zero.
 * @return 0; 2 no memory.
 */
QBOBJ_API uint32_t qbobj_getShareAccess(qbdb_t *qbdb, sqlite3 *db, const char *shareName, const char *userName,
                                        const char **access, ErrorInfo *err);

/**
 * Tells what a user may do over SMB in the share that a path lies in, as qbobj_getShareAccess().
 * @param qbdb     Handle.
 * @param db       Connection.
 * @param path     Absolute path of a share's folder or of something in it; null lies in no share.
 * @param userName Name of the user; null for the guest account.
 * @param access   Out: "ReadWrite", "ReadOnly" or "Disabled" (static text). Not null.
 * @param err      Out: error record, not null; stays zero.
 * @return 0; 2 no memory.
 */
QBOBJ_API uint32_t qbobj_getPathAccess(qbdb_t *qbdb, sqlite3 *db, const char *path, const char *userName,
                                       const char **access, ErrorInfo *err);

/**
 * Lists the applications that use a data set, or any data set of a volume.
 * @param qbdb   Handle.
 * @param db     Connection.
 * @param name   A name with a slash is a data set. One without is a volume; data sets of volumes whose names begin
 *               with it are found, too. Null finds none.
 * @param usedby In/out: the applications are appended to this list. Not null.
 * @param err    Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_getUsedByOn(qbdb_t *qbdb, sqlite3 *db, const char *name, UsedBy **usedby, ErrorInfo *err);

/**
 * Reads a share's snapshot schedule. A share without one leaves the record zero.
 * @param qbdb      Handle.
 * @param db        Connection.
 * @param shareName Name of the share; null is no share.
 * @param schedule  Out: the schedule; not written on failure. Not null.
 * @param err       Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 6 no such share.
 */
QBOBJ_API uint32_t qbobj_getShareSnapshotSchedule(qbdb_t *qbdb, sqlite3 *db, const char *shareName, Schedule *schedule,
                                                  ErrorInfo *err);

/**
 * Lists the processes that hold a share.
 * @param qbdb    Handle.
 * @param db      Connection.
 * @param zfsName Data set of the share; null or one that is not known has none.
 * @param procs   In/out: the processes are appended to this list. Null is refused.
 * @param err     Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 8 `procs` is null.
 */
QBOBJ_API uint32_t qbobj_getShareProcess(qbdb_t *qbdb, sqlite3 *db, const char *zfsName, Process **procs,
                                         ErrorInfo *err);

/* ---- Creating ----------------------------------------------------------------------------------- */

/**
 * Creates shares: all of a chain or none.
 *
 * Stored are the share, the attributes of its data set, each protocol block that is given with its access lists, the
 * applications that use it, its snapshot schedule and its snapshot policy; quotas of users and groups are not. The
 * services whose lists were written (SMB, FTP, HTTP) get their settings made anew.
 *
 * - Without `Stat` everybody may read and write, others than the owner may delete, and the folder belongs to the guest.
 * - Without `Path` the volume decides data set and path; with one the data set is the path without its first slash.
 * - Absent numbers of SMB: guests are let in (in directory mode not), `ShareDisplayOption` is
 *   @default{Cifs.ShareDisplayOption,0}, `EnableRecycleBin` @default{Cifs.EnableRecycleBin,1}, `RecycleSizeLimit`
 *   @default{Cifs.RecycleSizeLimit,25000}, `RecycleAgeLimit` @default{Cifs.RecycleAgeLimit,0},
 *   `NewFileFolderPermAutoset` @default{Cifs.NewFileFolderPermAutoset,1}, `AclChangeRestrictionToggle`
 *   @default{Cifs.AclChangeRestrictionToggle,1023}, `EnableOplocks` @default{Cifs.EnableOplocks,0}. Of AFP and FTP
 *   `NewFileFolderPermAutoset` is @default{Afp.NewFileFolderPermAutoset,0} and
 *   @default{Ftp.NewFileFolderPermAutoset,0}; `EnableWebDav` is @default{Http.EnableWebDav,0}.
 * - Absent numbers of the data set: `QuotaMB` is @default{QuotaMB,0}, `ReserveMB` @default{ReserveMB,0}, `RefQuotaMB`
 *   @default{RefQuotaMB,0}, `RefReserveMB` @default{RefReserveMB,0}, `Compression` @default{Compression,0},
 *   `BitRotProtection` @default{BitRotProtection,0}, `Dedup` @default{Dedup,0}; of the folder `NonOwnerDelete` is
 *   @default{Stat.NonOwnerDelete,0}.
 * - Default access and rights words have no default: a block names them all.
 * - A user or group list leaves out who would get no more than the default access, except users whose primary group is
 *   `sky-loft` or `admin`. Hosts of an SMB list get read and write access whatever they are given; an AFP host list is
 *   checked and not stored. Hosts are known by id, or by a name or network that becomes known with the list.
 * - An rsync user with #masked_password keeps the password that is stored.
 * - Without `SnapshotSchedule` snapshots are taken every hour; without `SnapshotRetentionRules` 30 of them are kept for
 *   thirty days.
 *
 * @param qbdb  Handle.
 * @param db    Connection.
 * @param share In/out: a chain of shares; their `ShareId` and key are written, also of those before one that fails.
 *              Null does nothing.
 * @param err   Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 8 a field or word that is missing or not valid, no such volume, owner,
 *         user, group or host; 800 the name or path is taken, or the volume is known by another id; 806 the name is too
 *         long; 808 it is reserved; 835 a `RefQuotaMB` above the volume's free space.
 */
QBOBJ_API uint32_t qbobj_addShare(qbdb_t *qbdb, sqlite3 *db, Share *share, ErrorInfo *err);

/**
 * Registers a process that holds a share, anew when it does already.
 * @param qbdb     Handle.
 * @param db       Connection.
 * @param zfsName  Data set of the share; null is none.
 * @param pid      Process id.
 * @param blocking How strongly the process blocks changes to the share; 0 not at all.
 * @param err      Out: error record, not null.
 * @return 0; 5 database failure, or no such share.
 */
QBOBJ_API uint32_t qbobj_addShareProcess(qbdb_t *qbdb, sqlite3 *db, const char *zfsName, int32_t pid, int32_t blocking,
                                         ErrorInfo *err);

/**
 * Registers an application that uses a data set, anew when it does already.
 * @param qbdb    Handle.
 * @param db      Connection.
 * @param zfsName Data set; whether there is one is not looked at. Null is refused by the database.
 * @param usedby  The application: `AppName`, and `AppData` or null. Null is refused.
 * @param err     Out: error record, not null.
 * @return 0; 5 database failure; 8 `usedby` or its `AppName` is null.
 */
QBOBJ_API uint32_t qbobj_addShareUsedBy(qbdb_t *qbdb, sqlite3 *db, const char *zfsName, UsedBy *usedby, ErrorInfo *err);

/* ---- Changing ----------------------------------------------------------------------------------- */

/**
 * Changes shares: all of a chain or none. What a record does not give stays: null texts, lists and blocks, and numbers
 * whose indicator is set. A share that was read can be given back as it is.
 *
 * - Another name, be it another letter case only, moves path and data set with it, and snapshots, clones, backup jobs
 *   and applications follow. A share that an application uses keeps its name, and so do those with a reserved name.
 * - A protocol block that is given writes the numbers `NotAvailable`, `EnableDFS` and `Sync` and all of its lists: a
 *   list that is null empties the stored one. It makes an AFP, NFS, FTP or HTTP that the share does not have yet, and
 *   DLNA, DAAP and rsync unless `NotAvailable` is set. Access "Disabled" removes DLNA and rsync. In directory mode, and
 *   of FTP while that is anonymous, reading leaves accounts out, which writing the block then removes.
 * - rsync reads as "ReadWrite" whatever is stored but "readonly"; that is what is then written.
 * - An rsync user with #masked_password keeps the password that is stored; users that the list leaves out go.
 * - `Changed` of a block becomes 1 when rows of its options, hosts, users, groups or links are others than before; the
 *   users of rsync do not count. SMB, FTP and HTTP get their settings made anew whenever their block is given.
 * - `RefQuotaMB` has to be above what is used and find room on the volume, unless the path begins with "/media/"; 0
 *   lifts it.
 * - `Stat` names owner and group by `resource_id` or, when that is 0, by name. The folder itself is not touched: the
 *   answer's `_PosixMode` says what to give it, with the right of others to delete in bit 9.
 * - Of a `SnapshotSchedule` are written: the switch, texts that are not null (the month aside), numbers other than 0.
 * - The snapshot policy is written when there are `SnapshotRetentionRules` or a `CustomSnapshotSchedule`, with its
 *   three numbers. The first rule is written to a share that has one; of a share with several they go by their `Type`.
 * - Quotas are written, not removed; the warning limit follows from the account defaults.
 * - Fields that together take more than 511 bytes in one table are not all written: what does not fit is left out, and
 *   a line of the log says so.
 *
 * @param qbdb  Handle.
 * @param db    Connection.
 * @param share In/out: a chain of shares, each named by its @by{ShareId}; null does nothing. Out, not on failure:
 *              `OldVisibleSnapshot` and `Stat->_PosixMode`; `OldShareName` and `OldPath` of a share that is renamed;
 *              `Path` where it was null; `Changed` of the protocols.
 * @param err   Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure, or a path that is too long; 6 no such share; 8 a word that is not valid,
 *         no such owner, user, group or host; 800 the name is taken; 806 it is too long; 808 it is reserved; 831 the
 *         old or the new one is reserved for the file sync; 835 a `RefQuotaMB` out of bounds; 901 a malformed
 *         `ShareId`; 903 an application uses the share that is to be renamed.
 */
QBOBJ_API uint32_t qbobj_modifyShare(qbdb_t *qbdb, sqlite3 *db, Share *share, ErrorInfo *err);

/**
 * Sets the name of the folder in which a share's snapshots show.
 * @param qbdb    Handle.
 * @param db      Connection.
 * @param zfsName Data set of the share; null or one that is not known changes nothing.
 * @param folder  Name of the folder; null hides the snapshots.
 * @param err     Out: error record, not null.
 * @return 0; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_modifyShareVisibleSnapFolder(qbdb_t *qbdb, sqlite3 *db, const char *zfsName,
                                                      const char *folder, ErrorInfo *err);

/**
 * Registers an application that uses a share, unless it is registered already.
 * @param qbdb    Handle.
 * @param db      Connection.
 * @param shareId Id of the share as text; null is none. With one that no share has nothing is registered.
 * @param usedby  The application: `AppName`, and `AppData` or null. Null is refused.
 * @param err     Out: error record, not null.
 * @return 0; 5 database failure; 8 a malformed id, or `usedby` or its `AppName` is null.
 */
QBOBJ_API uint32_t qbobj_modifyShareUsedBy(qbdb_t *qbdb, sqlite3 *db, const char *shareId, UsedBy *usedby,
                                           ErrorInfo *err);

/**
 * Registers an application that uses a share, and this one only: its other registrations go.
 * @param qbdb    Handle.
 * @param db      Connection.
 * @param zfsName Data set of the share; null is none.
 * @param usedby  The application: `AppName`, and `AppData` or null. Null is refused.
 * @param err     Out: error record, not null.
 * @return 0; 5 database failure, or no such share; 8 `usedby` or its `AppName` is null.
 */
QBOBJ_API uint32_t qbobj_modifyShareUsedByExclusive(qbdb_t *qbdb, sqlite3 *db, const char *zfsName, UsedBy *usedby,
                                                    ErrorInfo *err);

/**
 * Changes a block volume. Its data set stays; its path becomes the data set's.
 * @param qbdb      Handle.
 * @param db        Connection.
 * @param zfsName   Data set; null or one that is not known changes nothing.
 * @param shareName Name, written as it is; null is refused by the database.
 * @param comment   Comment, or null for none.
 * @param sizeKB    Size in @unit{KiB}.
 * @param isSparse  1 when space is taken only as it is written.
 * @param err       Out: error record, not null.
 * @return 0; 5 database failure, or a name that is taken or null.
 */
QBOBJ_API uint32_t qbobj_modifyZvol(qbdb_t *qbdb, sqlite3 *db, const char *zfsName, const char *shareName,
                                    const char *comment, uint64_t sizeKB, int32_t isSparse, ErrorInfo *err);

/**
 * Changes the snapshot schedule of a share; one without a schedule gets the default first: every hour.
 * @param qbdb      Handle.
 * @param db        Connection.
 * @param shareName Name of the share; null is no share.
 * @param schedule  In: the switch, texts or null (the month is not looked at), and numbers or 0, which both keep what
 *                  is stored. Not null.
 * @param err       Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 6 no such share.
 */
QBOBJ_API uint32_t qbobj_modifyShareSnapshotSchedule(qbdb_t *qbdb, sqlite3 *db, const char *shareName,
                                                     Schedule *schedule, ErrorInfo *err);

/* ---- Deleting ----------------------------------------------------------------------------------- */

/**
 * Deletes shares: all of a chain or none. What is deleted are the records; the folders are the caller's business.
 *
 * With a share go its options and access lists, quotas and measurements, snapshot schedule and policy, the catalogue of
 * its snapshots and clones, the applications and processes on it, and the backup jobs that read or write it. The HTTP
 * service that showed it first shows none.
 *
 * A share cannot go while an application uses it, nor while its folder holds another share's. That comparison is one of
 * patterns: `_` and `%` in a path stand for any characters, and letter case does not count. Of a chain each record
 * finds what those before it left, so shares that lie in another one come first.
 *
 * @param qbdb  Handle.
 * @param db    Connection.
 * @param share A chain of shares, each named by its @by{key} or else its @by{ShareId}; of the rest only is looked at
 *              whether there is a `Cifs` block, with which the SMB service gets its settings made anew. Null does
 *              nothing.
 * @param err   Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 6 the share's row was gone when it came to it; 8 an id that is malformed,
 *         or of no share, or of one that holds another; 902 an application uses the share: the message names it.
 */
QBOBJ_API uint32_t qbobj_deleteShare(qbdb_t *qbdb, sqlite3 *db, Share *share, ErrorInfo *err);

/**
 * Deletes the block volume, or whatever share, of a data set with everything that belongs to it, as
 * qbobj_deleteShare(); who uses it and what lies in it is not looked at.
 * @param qbdb    Handle.
 * @param db      Connection.
 * @param zfsName Data set; null is none.
 * @param err     Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 6 no such data set.
 */
QBOBJ_API uint32_t qbobj_deleteZvol(qbdb_t *qbdb, sqlite3 *db, const char *zfsName, ErrorInfo *err);

/**
 * Deletes every share of a volume, as qbobj_deleteZvol().
 * @param qbdb     Handle.
 * @param db       Connection.
 * @param volumeId Id of the volume; null, or one without shares, deletes nothing.
 * @param err      Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 6 a share's row was gone when it came to it.
 */
QBOBJ_API uint32_t qbobj_deleteShareOnVolume(qbdb_t *qbdb, sqlite3 *db, const char *volumeId, ErrorInfo *err);

/**
 * Takes a process off a share that it held. One that did not hold it is none to take off.
 * @param qbdb    Handle.
 * @param db      Connection.
 * @param zfsName Data set of the share; null, or one that is not known, has no processes.
 * @param pid     Process id; 0 for all that hold the share.
 * @param err     Out: error record, not null.
 * @return 0; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_deleteShareProcess(qbdb_t *qbdb, sqlite3 *db, const char *zfsName, int32_t pid,
                                            ErrorInfo *err);

/**
 * Takes an application off a data set that it used. One that did not use it is none to take off.
 * @param qbdb    Handle.
 * @param db      Connection.
 * @param zfsName Data set; null is none.
 * @param usedby  The application: @by{AppName}. Null is refused.
 * @param err     Out: error record, not null.
 * @return 0; 5 database failure; 8 `usedby` or its `AppName` is null.
 */
QBOBJ_API uint32_t qbobj_deleteShareUsedBy(qbdb_t *qbdb, sqlite3 *db, const char *zfsName, UsedBy *usedby,
                                           ErrorInfo *err);

/* ---- Migrating and copying ---------------------------------------------------------------------- */

/**
 * Marks a share that is about to move to another volume. One share of the whole appliance may be marked at a time. The
 * share stays as it is until qbobj_postMigrateShare().
 * @param qbdb         Handle.
 * @param db           Connection.
 * @param zfsName      Data set of the share; null, or one that is not known, marks nothing.
 * @param destVolumeId Id of the volume to move to; whether there is one is not looked at. Null marks nothing.
 * @param err          Out: error record, not null.
 * @return 0; 5 database failure; 8 the data set lies on that volume already; 815 a share is marked.
 */
QBOBJ_API uint32_t qbobj_preMigrateShare(qbdb_t *qbdb, sqlite3 *db, const char *zfsName, const char *destVolumeId,
                                         ErrorInfo *err);

/**
 * Ends the migration of a share: takes the mark off and, after a success, moves the share with the catalogue of its
 * snapshots and the applications on it to the new volume: volume id, path and data set. Whatever knows the share by
 * number or by name (lists, quotas, schedules, clones, backup jobs, DFS links) stays as it is.
 * @param qbdb    Handle.
 * @param db      Connection.
 * @param zfsName Data set of the share before it moved; null, or one that is not known, does nothing.
 * @param success Whether the data was moved; 0 after a failure, which leaves the share where it was.
 * @param newPath Out: the path on the volume that the mark names, in the call's pool, also without success; null
 *                without a mark. Not written on failure. May be null.
 * @param err     Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure, or a success without a mark.
 */
QBOBJ_API uint32_t qbobj_postMigrateShare(qbdb_t *qbdb, sqlite3 *db, const char *zfsName, int32_t success,
                                          const char **newPath, ErrorInfo *err);

/**
 * Copies a share's configuration under a new name on the same volume: type, comment, owner and permissions, the data
 * set's attributes, protocol options with their access lists, quotas, snapshot schedule and policy. Not copied are the
 * visible snapshot folder, DFS links, rsync with its users, applications and measurements; the folder's content is the
 * caller's business.
 * @param qbdb         Handle.
 * @param db           Connection.
 * @param volumeName   Name of the volume that the share lies on: the data set is this, a slash, the share's name. Null is
 *                     none.
 * @param shareName    Name of the share; null is none.
 * @param newShareName Name of the copy; null is refused.
 * @param newShareId   Out: id of the copy; not written on failure. May be null.
 * @param err          Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 8 no such volume or share, or a name that is not valid or reserved; 800
 *         the name is taken.
 */
QBOBJ_API uint32_t qbobj_copyShare(qbdb_t *qbdb, sqlite3 *db, const char *volumeName, const char *shareName,
                                   const char *newShareName, int32_t *newShareId, ErrorInfo *err);

#ifdef __cplusplus
}
#endif

#endif
/* SPDX-License-Identifier: Apache-2.0 */
