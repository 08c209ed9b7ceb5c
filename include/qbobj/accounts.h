/**
 * @file qbobj/accounts.h
 * Users, groups, passwords, account defaults, directory security, SSH public keys, SMB user-name map.
 */
#ifndef QBOBJ_ACCOUNTS_H
#define QBOBJ_ACCOUNTS_H

#include "qbobj/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** An SSH public key of a user. */
struct SshPublicKey {
    struct SshPublicKey *next; /**< Next element of the list, or null. */
    int32_t resource_id;       /**< Out: same as `Id`. */
    int32_t Id;                /**< Id of the key. Out, but for changing and deleting: in. */
    int32_t UserId; /**< Owner: user 98 or a user with an id above 99; 0 in root's twin of an administrator's key. */
    const char *ServeFor; /**< Use of the key: "rsync" for one that lets only rsync in; other words are the caller's. */
    const char *Type;     /**< Kind of key ("ssh-ed25519"), stored as given. */
    const char *Key;      /**< Text of the key. */
    const char *Comment;  /**< Comment of the key. */
    const char *Fingerprint; /**< Fingerprint, stored as given. */
    const char *Title;       /**< Title to show; that of root's twin is "root_" and the key's title. */
};

/** A list of SSH public keys. */
struct SshPublicKeyCollection {
    struct SshPublicKey *SshPublicKey; /**< First key, or null. */
};

/** What one user or group may use of one share. */
struct Quota {
    struct Quota *next;      /**< Next element of the list, or null. */
    int32_t AccountId;       /**< Id of the user or group. */
    const char *AccountName; /**< Its name; not read from the database. */
    const char *ShareId;     /**< Data set of the share (the share's `zfs_name`). */
    uint64_t HardMB;         /**< Limit in @unit{MB}; one above 2147483647 is stored as that. 0 removes the quota of
                                  an account that is changed. */
    uint64_t UsedMB;         /**< @unit{MB} in use as last measured, 0 when never measured; output only. */
};

/** The administrator's password, password recovery and shell access. */
struct AdminPassword {
    const char *Password; /**< New password in clear text; null or empty to keep the old one; input only. */
    const char *Question; /**< Question of the password recovery. In: null keeps question, answer and address. */
    const char *Answer;   /**< Its answer. In: null keeps question, answer and address. */
    const char *Email;    /**< E-mail address of the recovery. In: null keeps question, answer and address. */
    int32_t Enabled;      /**< 1 when a lost password can be recovered, else 0. */
    const char *Method;   /**< How it is recovered. In: null to keep. */
    int32_t ResetFlag;    /**< Always 0; output only. */
    int32_t ShellAccess;  /**< 1 when the administrator may log in with a shell, else 0. */
};

/** A new password for a user. */
struct UserPassword {
    struct UserPassword *next; /**< Next element of the list, or null. */
    int32_t UserId;            /**< Id of the user. */
    const char *Password;      /**< New password in clear text; "" for none: qbobj_setMyPassword() then fails. */
};

/** A user's change of the own password; all three texts are required. */
struct MyPassword {
    struct MyPassword *next; /**< Next element of the list, or null. */
    const char *UserName;    /**< Name of the user, who is a local one. */
    const char *OldPassword; /**< Present password in clear text. */
    const char *NewPassword; /**< New password in clear text. */
};

/** Settings of a user's home folder. */
struct UserHomeFolderSettings {
    struct UserHomeFolderSettings *next; /**< Next element of the list, or null. */
    int32_t UserId;                      /**< Id of the user. */
    uint64_t SizeLimit;                  /**< Limit in @unit{bytes}; 0 for none. */
    uint64_t SizeUsed;                   /**< @unit{bytes,Bytes} in use as last measured, 0 when never measured; output
                                              only. */
    int32_t SnapshotProtectionEnabled;   /**< 1 when snapshots of the home folder are taken. */
    int32_t VisibleSnapshot;             /**< 1 when the folder of the snapshots is visible. */
    const char *VisibleSnapFolder;       /**< Name of that folder, "" when it is hidden. Input of addUser alone. */
    int32_t PrevVersions;                /**< 1 when snapshots are offered as previous versions. */
};

/** A user's private Time Machine allowance. */
struct UserTimeMachineQuota {
    struct UserTimeMachineQuota *next; /**< Next element of the list, or null. */
    int32_t UserId;                    /**< Id of the user. */
    int32_t Enabled;                   /**< 1 when the user may back up. */
    int32_t CapacityMB;                /**< Allowance in @unit{MB}. */
    uint64_t UsedMB; /**< @unit{MB} that the user's backup takes, measured by each read; output only. */
};

/** Name and POSIX id of any account. */
struct SystemUser {
    struct SystemUser *next; /**< Next element of the list, or null. */
    int32_t resource_id;     /**< Id of the account; below 1: UserId is looked at. */
    int32_t UserId;          /**< Id of the account; equal to resource_id on output. */
    const char *UserName;    /**< Name of the account; shares are given it for one without an id. */
    int32_t _PosixId;        /**< POSIX uid, -1 when the directory does not know it; output only. */
};

/** What to list of users or groups, in which order, which page. */
struct AccountQuery {
    int32_t limit;         /**< Length of the page; 0 for everything. */
    int32_t offset;        /**< Number of accounts to leave out at the beginning; counts with a limit only. */
    const char *name_like; /**< @pattern{SQL LIKE pattern} with the caller's wildcards, at most 256 bytes; null or ""
                                for all. */
    const char *opt;       /**< Option tokens, see qbobj_getUserCollection(); may be null. Not read for groups. */
    int32_t order;         /**< 1 by name, 2 by id, -1 and -2 the same descending; anything else by name. */
    int32_t ads;           /**< Non-zero lists domain accounts, 0 local ones. */
    int32_t include_admin; /**< Not read: the administrator is asked for by an option token. */
    const char *name_fix;  /**< Exact name for the option SINGLE_USER. */
};

/** Name and POSIX id of any group. */
struct SystemGroup {
    struct SystemGroup *next; /**< Next element of the list, or null. */
    int32_t resource_id;      /**< Id of the group; below 1: GroupId is looked at. */
    int32_t GroupId;          /**< Id of the group; equal to resource_id on output. */
    const char *GroupName;    /**< Name of the group; shares are given it for one without an id. */
    int32_t _PosixId;         /**< POSIX gid, -1 when the directory does not know it; output only. */
};

/** Defaults for new accounts. */
struct AccountDefault {
    const char *HomeVolumeId;         /**< Volume of the home folders: its id; its name is taken, too, and stored so. */
    int32_t DiskQuotaWarn;            /**< Soft limit of quotas in @unit{per cent} of the hard limit, @range{1,99}. */
    int32_t GroupId;                  /**< Id of the default group, which its name decides; output only. */
    int32_t DisallowPasswordChange;   /**< 1 when users may not change their passwords, else 0. */
    uint64_t HomeFolderCapacityLimit; /**< Size limit in @unit{bytes}, as new home folders get it; 0 for none. */
    const char *GroupMembership;      /**< Name of the default group. */
    int32_t PrivateTimeMachine;       /**< 1 when a new user gets a Time Machine allowance, else 0. */
    int32_t PrivateTimeMachineSpace;  /**< Its size in units of @unit{1000 MB}. */
    int32_t SnapshotProtection;       /**< 1 when snapshots protect a new home folder, else 0. */
};

/** Directory settings of the CIFS service. */
struct Security {
    const char *Security;   /**< "user" for local accounts only, "ads" for those of a directory. */
    const char *Realm;      /**< Realm of the directory: a host name; required with "ads". */
    const char *workGroup;  /**< Workgroup or short domain name: 1 to 16 letters, digits, "_", "-", "." and blanks. */
    const char *orgUnit;    /**< Organisational unit that the appliance joins. */
    const char *restrictOU; /**< Organisational unit that users and groups are imported from. */
    int32_t noSyncADS;      /**< 1 when directory accounts are looked up live instead of imported, else 0. */
    const char *restrictAccountOu;   /**< Always null: it is not stored; output only. */
    const char *domainAdministrator; /**< Name of the directory's administrator. */
    const char *passWord;            /**< Always null: it is not stored; output only. */
    const char *passWordServer;      /**< Login server: a host name, or null or empty for any. */
    int32_t displayTrustedUsers;     /**< 1 when users of trusted domains are shown, else 0. */
    const char *domainSid;           /**< Security identifier of the domain; output only. */
    int32_t domainGroupAdminGID;     /**< Id of the domain administrators' group, @default{98} when unknown; output
                                          only. */
    int32_t domainAdminUID;          /**< Id of the domain administrator, @default{98} when unknown; output only. */
    int32_t joinDomainFailed;        /**< 1 when joining the domain failed, else 0. */
    const char *idmapBackend;        /**< How directory ids become POSIX ids: "tdb" or "rid". */
};

/** Progress of the import of directory accounts; all fields are output only. */
struct SecurityAdsProgress {
    const char *State;  /**< "idle", "running", "complete" or "error". */
    int32_t Percent;    /**< @range{0,100} @unit{per cent}: users and groups make up half each, also when there are none
                             of a kind. */
    int32_t TotalUser;  /**< Number of users to import. */
    int32_t CurrUser;   /**< Number of users imported so far. */
    int32_t TotalGroup; /**< Number of groups to import. */
    int32_t CurrGroup;  /**< Number of groups imported so far. */
    int32_t StartAt;    /**< When it began, in @unit{seconds since the epoch}. */
    int32_t DoneAt;     /**< When it ended, in @unit{seconds since the epoch}; 0 before. */
};

/** A second name under which SMB clients reach a local account. */
struct SmbUserNameMap {
    struct SmbUserNameMap *next; /**< Next element of the list, or null. */
    int32_t resource_id;         /**< Id of the row; output only. */
    int32_t Id;                  /**< Same as resource_id; output only. */
    const char *UnixUserName;    /**< Name of the local account. */
    const char *SmbUserName;     /**< Name that SMB clients use. */
    const char *Type;            /**< Kind of mapping, #TABLE_SMB_USERNAME_MAP_TYPE_UNAME for an alias. */
};

/** A user. */
struct User {
    struct User *next;            /**< Next element of the list, or null. */
    int32_t resource_id;          /**< Id by which the caller addresses the user; below 1: UserId is looked at. */
    int32_t UserId;               /**< Id of the user; equal to resource_id on output. */
    const char *UserName;         /**< Name of the user. */
    const char *OldUserName;      /**< Name before a change; output only. */
    const char *GroupName;        /**< Name of the primary group. */
    const char *HomeVolumeId;     /**< Volume for the home folder of a new user; input only. */
    const char *HomeDirectory;    /**< Path of the home folder; output only. */
    const char *OldHomeDirectory; /**< Path of the home folder before a change of the name; output only. */
    const char *Email;            /**< E-mail address. */
    const char *FullName;         /**< Full name, told by the user list alone; output only. */
    const char *Password;    /**< In: the password in clear, or #masked_password for the stored one. Out: the mask, ""
                                  when none is stored, or the stored hash where it was asked for. */
    const char *SmbHash;     /**< Password hash of the SMB service; input only. */
    const char *SysHash;     /**< Ready-made system password hash, stored as it is; input only. */
    int32_t IsDomainMember;  /**< 1 for a user of the directory; output only. */
    int32_t no_invitation;   /**< 1 when a cloud user is not to be invited; input only. */
    int32_t IsLocked;        /**< 1 when the account is locked. */
    int32_t ShellAccess;     /**< 1 when the user may log in to a shell. */
    const char *P2PUserName; /**< Alias of the user in the cloud service; input only. */
    struct Quota *UserQuota; /**< Quotas per share. */
    struct UserTimeMachineQuota *TimeMachineQuota;     /**< Time Machine allowance, or null. */
    struct UserHomeFolderSettings *HomeFolderSettings; /**< Settings of the home folder, or null. */
};

/** Users, and how many there are. */
struct UserCollection {
    struct User *User;    /**< First of the list, or null. */
    int32_t Entries;      /**< Number of users that match the whole filter, the page not considered; output only. */
    int32_t TotalEntries; /**< Number of users before the name filter and the options that choose among them; output
                             only. */
};

/** A group. */
struct Group {
    struct Group *next;  /**< Next element of the list, or null. */
    int32_t resource_id; /**< Id by which the caller addresses the group; below 1: GroupId is looked at. Of a new
                              group it is returned. */
    int32_t GroupId; /**< Id of the group; equal to resource_id when read. Of a new group the wished id, or none: see
                          qbobj_addGroup(). */
    const char *GroupName;        /**< Name of the group. */
    const char *OldGroupName;     /**< Neither read nor written. */
    struct User *SecondaryMember; /**< Secondary members. On input each is addressed by resource_id or, when that is
                                       below 1, by UserId. */
    struct Quota *GroupQuota;     /**< Quotas per share; AccountId is the id of the group. */
    int32_t IsDomainMember;       /**< 1 for a group of the directory; output only. */
};

/** Groups, and how many there are. */
struct GroupCollection {
    struct Group *Group;  /**< First of the list, or null. */
    int32_t Entries;      /**< Number of groups that match the whole filter, the page not considered; output only. */
    int32_t TotalEntries; /**< Number of groups before the name filter; output only. */
};

/** The SMB user-name map. */
struct SmbUserNameMapCollection {
    struct SmbUserNameMap *SmbUserNameMap; /**< First row, or null. */
};

/* ---- Users, reading ----------------------------------------------------------------------------- */

/**
 * Lists users: filtered, in order, page by page, each with its quotas, its home-folder settings and its
 * Time Machine allowance. Never listed are privileged accounts, `nobody`, `guest`, members of the guest
 * group (of `nogroup` when there is no guest group) and cloud users (group 98).
 *
 * Option tokens in `query->opt`. The whole text may be one of
 * - `SINGLE_USER`: the user of the name in `name_fix`;
 * - `TM_ON`: users with an enabled Time Machine allowance;
 * - `HF_EXISTS`: users whose home folder exists as a directory. Those without are left out of the list,
 *   but counted, and may leave a page shorter; users with negative ids are neither listed nor counted.
 *
 * or it holds one or more of
 * - `||HF_SNAPSHOT_PROTECTION==1` (`==0`): users with (without) snapshots of their home folder;
 * - `||HF_SNAPSHOT_ACCESS==1` (`==0`): users whose snapshots are visible (hidden). With both, users to
 *   whom either applies;
 * - `&&USER_WITH_ADMIN==1`: the user `admin` too, whatever the other filters say;
 * - `&&USER_WITHOUT_SKYLOFT==1`: no users of group 97.
 *
 * @param qbdb          Handle.
 * @param db            Connection.
 * @param users         In/out: users are appended to its list, the counts are set. A failure while the
 *                      users are read leaves those read so far in the list. Not null.
 * @param query         What to list; null for all users by name, domain users in directory mode and
 *                      local users else.
 * @param with_password Non-zero returns the stored password hashes, 0 the mask.
 * @param err           Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 8 the name pattern is longer than 256 bytes.
 */
QBOBJ_API uint32_t qbobj_getUserCollection(qbdb_t *qbdb, sqlite3 *db, UserCollection *users, AccountQuery *query,
                                           int32_t with_password, ErrorInfo *err);

/**
 * Reads one user with its quotas, home-folder settings and Time Machine allowance. The password is
 * masked; the full name is not read. Removed users and cloud users are found, too; privileged accounts,
 * `nobody`, `guest` and members of the guest group (of `nogroup` when there is no guest group) are not.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param user In: @by{resource_id}, or @by{UserId} when that is below 1 (domain users may have negative ids, in
 *             directory mode only); an id of 0 with a @by{UserName} asks the directory when its users are
 *             not synchronised. Out: the user; not written on failure. Not null.
 * @param err  Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure, no such user, or a negative id outside directory mode;
 *         8 no id; 832 a name that the directory does not know.
 */
QBOBJ_API uint32_t qbobj_getUser(qbdb_t *qbdb, sqlite3 *db, User *user, ErrorInfo *err);

/**
 * Reads the name and the POSIX uid of any account by its id. The directory is asked for an id that is
 * not in the database.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param user In: @by{resource_id}, or @by{UserId} when that is below 1 (negative ids in directory mode only).
 *             Out: the account; not written on failure. Not null.
 * @param err  Out: error record, not null.
 * @return 0; 5 database failure, no such account, or a negative id outside directory mode; 8 no id.
 */
QBOBJ_API uint32_t qbobj_getSystemUser(qbdb_t *qbdb, sqlite3 *db, SystemUser *user, ErrorInfo *err);

/**
 * Lists ids and names of the cloud users (primary group 98), by name without regard to case.
 * @param qbdb  Handle.
 * @param db    Connection.
 * @param users In/out: users are appended to its list; the counts are left alone. Not null.
 * @param err   Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_getCloudUser(qbdb_t *qbdb, sqlite3 *db, UserCollection *users, ErrorInfo *err);

/**
 * Lists ids and names of a group's members, by name without regard to case. With secondary members
 * included, a primary member comes once for each secondary membership that it has in any group, and once
 * when it has none.
 * @param qbdb         Handle.
 * @param db           Connection.
 * @param groupName    Name of the group. Null stands for "admin" when only primary members are asked
 *                     for, and has no members else.
 * @param primary_only Non-zero for primary members only, 0 for secondary members too.
 * @param users        In/out: users are appended to its list; the counts are left alone. Not null.
 * @param err          Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_getUserInGroupName(qbdb_t *qbdb, sqlite3 *db, const char *groupName, int32_t primary_only,
                                            UserCollection *users, ErrorInfo *err);

/**
 * Finds the id of a user: a local user, in directory mode a domain user, and a privileged account in both.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param name Name of the user; null for the local guest.
 * @param id   Out: the id, -1 when there is no such user. Not null.
 * @param err  Out: error record, not null; stays zero.
 * @return 0 found, 0xFFFFFFFF (-1) not found or database failure.
 */
QBOBJ_API uint32_t qbobj_getUID(qbdb_t *qbdb, sqlite3 *db, const char *name, int32_t *id, ErrorInfo *err);

/**
 * Finds the name of a user.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param id   Id of the user.
 * @param name Out: the name; for an id that no user has its decimal text, or "" when it is negative.
 *             "" on failure. Not null.
 * @param err  Out: error record, not null; stays zero.
 * @return 0, 0xFFFFFFFF (-1) database failure.
 */
QBOBJ_API uint32_t qbobj_getUserName(qbdb_t *qbdb, sqlite3 *db, int32_t id, const char **name, ErrorInfo *err);

/**
 * Finds the POSIX uid of a user by name. In directory mode the directory is asked for a name that is not
 * in the database.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param name Name of the user; null for the local guest.
 * @param err  Out: error record, not null; stays zero.
 * @return The uid, 0xFFFFFFFF (-1) when there is none.
 */
QBOBJ_API uint32_t qbobj_getPosixUID(qbdb_t *qbdb, sqlite3 *db, const char *name, ErrorInfo *err);

/**
 * Finds the POSIX uid that goes with an id. An id of 0 or more is its own uid, whether a user has it or
 * not; a negative one is asked of the directory.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param id   Id of the user.
 * @param err  Out: error record, not null; stays zero.
 * @return The uid, 0xFFFFFFFF (-1) when there is none.
 */
QBOBJ_API uint32_t qbobj_getPosixUIDbyUID(qbdb_t *qbdb, sqlite3 *db, int32_t id, ErrorInfo *err);

/**
 * Finds the POSIX uid of a user and the POSIX gid of its primary group.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param name Name of the user; null for the local guest and the guest group (`nogroup` when there is none).
 * @param uid  Out: the uid; not written on failure. Not null.
 * @param gid  Out: the gid; not written on failure. Not null.
 * @param err  Out: error record, not null; stays zero.
 * @return 0, 0xFFFFFFFF (-1) when there is no such user or either has no POSIX id.
 */
QBOBJ_API uint32_t qbobj_getPosixUIDGID(qbdb_t *qbdb, sqlite3 *db, const char *name, int32_t *uid, int32_t *gid,
                                        ErrorInfo *err);

/**
 * Adds up what all home folders use, after the figures were refreshed from the file system.
 * @param qbdb  Handle.
 * @param db    Connection.
 * @param bytes Out: @unit{bytes} in use; not written on failure. Not null.
 * @param err   Out: error record, not null; stays zero.
 * @return 0; 5 the figures could not be refreshed or read.
 */
QBOBJ_API uint32_t qbobj_getUserHomeFolderTotalConsumedInByte(qbdb_t *qbdb, sqlite3 *db, uint64_t *bytes,
                                                              ErrorInfo *err);

/* ---- Groups ------------------------------------------------------------------------------------- */

/**
 * Finds the id of a local or privileged group, in directory mode too.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param name Name of the group; null for the guest group, or `nogroup` when there is none.
 * @param id   Out: the id, -1 when there is no such group. Not null.
 * @param err  Out: error record, not null; stays zero.
 * @return 0 found, 0xFFFFFFFF (-1) not found or database failure.
 */
QBOBJ_API uint32_t qbobj_getGID(qbdb_t *qbdb, sqlite3 *db, const char *name, int32_t *id, ErrorInfo *err);

/**
 * Finds the name of a group.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param id   Id of the group.
 * @param name Out: the name; for an id that no group has its decimal text, or "" when it is negative.
 *             "" on failure. Not null.
 * @param err  Out: error record, not null; stays zero.
 * @return 0, 0xFFFFFFFF (-1) database failure.
 */
QBOBJ_API uint32_t qbobj_getGroupName(qbdb_t *qbdb, sqlite3 *db, int32_t id, const char **name, ErrorInfo *err);

/**
 * Finds the id of a user's primary group.
 * @param qbdb     Handle.
 * @param db       Connection.
 * @param userName Name of the user; null for the guest group, or `nogroup` when there is none.
 * @param id       Out: the id, -1 when there is no such user or it has no primary group; the id of a domain
 *                 group may be negative. Not null.
 * @param err      Out: error record, not null; stays zero.
 * @return 0 found, 0xFFFFFFFF (-1) not found or database failure.
 */
QBOBJ_API uint32_t qbobj_getPrimaryGID(qbdb_t *qbdb, sqlite3 *db, const char *userName, int32_t *id, ErrorInfo *err);

/**
 * Finds the POSIX gid of a group by name. In directory mode the directory is asked for a name that is not
 * that of a local or privileged group.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param name Name of the group; null for the guest group, or `nogroup` when there is none.
 * @param err  Out: error record, not null; stays zero.
 * @return The gid, 0xFFFFFFFF (-1) when there is none.
 */
QBOBJ_API uint32_t qbobj_getPosixGID(qbdb_t *qbdb, sqlite3 *db, const char *name, ErrorInfo *err);

/**
 * Finds the POSIX gid that goes with an id. An id of 0 or more is its own gid, whether a group has it or
 * not; a negative one is asked of the directory.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param id   Id of the group.
 * @param err  Out: error record, not null; stays zero.
 * @return The gid, 0xFFFFFFFF (-1) when there is none.
 */
QBOBJ_API uint32_t qbobj_getPosixGIDbyGID(qbdb_t *qbdb, sqlite3 *db, int32_t id, ErrorInfo *err);

/**
 * Tells whether a user is a member of a group, be it primary or secondary.
 * @param qbdb      Handle.
 * @param db        Connection.
 * @param userName  Name of the user; null is nobody.
 * @param groupName Name of the group; null has no members.
 * @param err       Out: error record, not null; stays zero.
 * @return 0 a member, 1 not a member, 0xFFFFFFFF (-1) database failure.
 */
QBOBJ_API uint32_t qbobj_isMemberOfGroup(qbdb_t *qbdb, sqlite3 *db, const char *userName, const char *groupName,
                                         ErrorInfo *err);

/**
 * Lists groups: filtered, in order, page by page, each with its quotas and its secondary members, those by
 * name without regard to case and with their own quotas; their passwords are masked. Privileged and removed
 * groups, `guest` and `nogroup` are never listed.
 * @param qbdb   Handle.
 * @param db     Connection.
 * @param groups In/out: groups are appended to its list, the counts are set. A failure while the groups
 *               are read leaves those read so far in the list. Not null.
 * @param query  What to list: `limit`, `offset`, `name_like`, `order` and `ads` count. Null for all groups
 *               by name, domain groups in directory mode and local groups else.
 * @param err    Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 8 the name pattern is longer than 256 bytes.
 */
QBOBJ_API uint32_t qbobj_getGroupCollection(qbdb_t *qbdb, sqlite3 *db, GroupCollection *groups, AccountQuery *query,
                                            ErrorInfo *err);

/**
 * Reads one group. Its statement is one that the database refuses, so that the call always fails: read
 * groups through qbobj_getGroupCollection(), and names through qbobj_getSystemGroup().
 * @param qbdb  Handle.
 * @param db    Connection.
 * @param group In: @by{resource_id}, or @by{GroupId} when that is below 1; not written. Not null.
 * @param err   Out: error record, not null.
 * @return 5 always, except 8 no id.
 */
QBOBJ_API uint32_t qbobj_getGroup(qbdb_t *qbdb, sqlite3 *db, Group *group, ErrorInfo *err);

/**
 * Reads the name and the POSIX gid of any group by its id. The directory is asked for an id that is not in
 * the database.
 * @param qbdb  Handle.
 * @param db    Connection.
 * @param group In: @by{resource_id}, or @by{GroupId} when that is below 1 (negative ids in directory mode only).
 *              Out: the group; not written on failure. Not null.
 * @param err   Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure, no such group, or a negative id outside directory mode;
 *         8 no id.
 */
QBOBJ_API uint32_t qbobj_getSystemGroup(qbdb_t *qbdb, sqlite3 *db, SystemGroup *group, ErrorInfo *err);

/**
 * Creates groups with their quotas and secondary members; all of the chain or none.
 * @param qbdb  Handle.
 * @param db    Connection.
 * @param group In/out: chain of groups; null creates none. `GroupName` is required and must not be that of
 *              any group, a removed one included. `GroupId` is the id (@range{GroupId,100,32767});
 *              @below{GroupId,1} the lowest free one is taken. `GroupQuota` and `SecondaryMember` may be null. Each
 *              group created gets its id in `resource_id`, which counts only when the call succeeds.
 * @param err   Out: error record, not null.
 * @return 0; 5 database failure, an unknown share, a member named twice, or no free id; 8 no or a bad name, an id
 *         out of range, or a member without an id; 803 the name is taken; 804 the id is taken; 806 the name is
 *         too long.
 */
QBOBJ_API uint32_t qbobj_addGroup(qbdb_t *qbdb, sqlite3 *db, Group *group, ErrorInfo *err);

/**
 * Removes groups with their quotas and memberships; all of the chain or none. A removed group is no longer
 * listed, but its name and id stay taken. The default group, and a group that is the primary group of a
 * user, cannot go.
 * @param qbdb  Handle.
 * @param db    Connection.
 * @param group Chain of groups, each addressed by @by{resource_id}, or @by{GroupId} when that is below 1; null
 *              removes none.
 * @param err   Out: error record, not null.
 * @return 0; 5 database failure; 6 nothing was removed; 8 no id, or no such group; 822 a user's primary
 *         group; 844 the default group.
 */
QBOBJ_API uint32_t qbobj_deleteGroup(qbdb_t *qbdb, sqlite3 *db, Group *group, ErrorInfo *err);

/**
 * Changes groups; all of the chain or none. The secondary members are replaced as a whole: a record without
 * `SecondaryMember` takes all of them away.
 * @param qbdb  Handle.
 * @param db    Connection.
 * @param group Chain of groups, each addressed by @by{resource_id}, or @by{GroupId} when that is below 1; null
 *              changes none. A `GroupName` that is not empty renames the group; the default group does not
 *              follow a new name. Each quota of `GroupQuota` is set, or removed when its `HardMB` is 0; quotas for
 *              other shares stay. The list of members ends at the first one without a `UserName`.
 * @param err   Out: error record, not null.
 * @return 0; 5 database failure, an unknown share, or a member named twice; 8 no id, no such group, a bad name, or a
 *         member without an id; 803 the name is taken; 806 the name is too long.
 */
QBOBJ_API uint32_t qbobj_modifyGroup(qbdb_t *qbdb, sqlite3 *db, Group *group, ErrorInfo *err);

/* ---- Passwords, account defaults, directory security ---------------------------------------------- */

/**
 * Reads the administrator's recovery settings and shell access. The password is never returned.
 * @param qbdb  Handle.
 * @param db    Connection.
 * @param admin Out: the settings; not null.
 * @param err   Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_getAdminPassword(qbdb_t *qbdb, sqlite3 *db, AdminPassword *admin, ErrorInfo *err);

/**
 * Sets the administrator's recovery settings, shell access and, when one is given, password. The
 * system account `root` gets the same password. `Enabled` and `ShellAccess` are always written.
 * @param qbdb  Handle.
 * @param db    Connection.
 * @param admin In: the settings; not null.
 * @param err   Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 8 a password that cannot be hashed (512 bytes or more).
 */
QBOBJ_API uint32_t qbobj_setAdminPassword(qbdb_t *qbdb, sqlite3 *db, AdminPassword *admin, ErrorInfo *err);

/**
 * Sets a user's password. An id that no user has changes nothing and is no failure. The mask that
 * stands for stored passwords elsewhere is a password like any other here.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param pw   In: the user by @by{UserId}, and the password; not null. A chain is not followed.
 * @param err  Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 8 no password, or one that cannot be hashed (512 bytes or more).
 */
QBOBJ_API uint32_t qbobj_setUserPassword(qbdb_t *qbdb, sqlite3 *db, UserPassword *pw, ErrorInfo *err);

/**
 * Changes a local user's password after checking the present one. A user without a password, or whose
 * password is locked, cannot do this.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param pw   In: the user by @by{UserName}, the old and the new password; not null. A chain is not followed.
 * @param err  Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 8 an empty field, a new password that cannot be hashed (512 bytes
 *         or more), an unknown user, or a wrong old password.
 */
QBOBJ_API uint32_t qbobj_setMyPassword(qbdb_t *qbdb, sqlite3 *db, MyPassword *pw, ErrorInfo *err);

/**
 * Reads the defaults for new accounts.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param def  Out: the defaults; not null.
 * @param err  Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure, or there are no defaults in the database.
 */
QBOBJ_API uint32_t qbobj_getAccountDefault(qbdb_t *qbdb, sqlite3 *db, AccountDefault *def, ErrorInfo *err);

/**
 * Writes the defaults for new accounts, all of them.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param def  In: the defaults; not null.
 * @param err  Out: error record, not null.
 * @return 0; 5 database failure; 8 unknown volume, a warning level outside 1 to 99, or unknown group.
 */
QBOBJ_API uint32_t qbobj_setAccountDefault(qbdb_t *qbdb, sqlite3 *db, AccountDefault *def, ErrorInfo *err);

/**
 * Reads the directory settings. The password of the domain administrator is not stored.
 * @param qbdb     Handle.
 * @param db       Connection.
 * @param security Out: the settings; not null.
 * @param err      Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_getSecurity(qbdb_t *qbdb, sqlite3 *db, Security *security, ErrorInfo *err);

/**
 * Writes the directory settings. A null text is stored as such. The domain's identifier, the domain
 * administrators' ids and the password are left alone.
 * @param qbdb     Handle.
 * @param db       Connection.
 * @param security In: the settings; not null.
 * @param err      Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure, or settings too long to be written at once (some 500 bytes); 8
 *         neither "user" nor "ads"; 819 bad workgroup; with "ads" 820 bad realm, 833 bad login server.
 */
QBOBJ_API uint32_t qbobj_setSecurity(qbdb_t *qbdb, sqlite3 *db, Security *security, ErrorInfo *err);

/**
 * Sets how directory ids become POSIX ids.
 * @param qbdb    Handle.
 * @param db      Connection.
 * @param backend "tdb" or "rid".
 * @param err     Out: error record, not null.
 * @return 0; 5 database failure; 8 null or another word.
 */
QBOBJ_API uint32_t qbobj_setSecurityIdmapBackend(qbdb_t *qbdb, sqlite3 *db, const char *backend, ErrorInfo *err);

/**
 * Reads how far the import of directory accounts is.
 * @param qbdb     Handle.
 * @param db       Connection.
 * @param progress Out: the progress; not null.
 * @param err      Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_getSecurityAdsProgress(qbdb_t *qbdb, sqlite3 *db, SecurityAdsProgress *progress,
                                                ErrorInfo *err);

/* ---- SSH public keys ------------------------------------------------------------------------------ */

/**
 * Adds a user's SSH public key and refreshes the user's login shell. A key of the administrator is
 * also stored as a key of root, titled "root_" and the key's title.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param key  In: the key. Out: `Id` and `resource_id`. Not null; a chain is not followed.
 * @param err  Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 802 a system account other than the administrator; 836 no
 *         such user, or one who was removed; 837 the user has this key; 842 there are 256 keys already.
 */
QBOBJ_API uint32_t qbobj_addSshPublicKey(qbdb_t *qbdb, sqlite3 *db, SshPublicKey *key, ErrorInfo *err);

/**
 * Removes an SSH public key and refreshes the owner's login shell. With the administrator as the owner, in the
 * record or in truth, root's twin of the key goes, too; when there is none, nothing is removed.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param key  In: @by{Id}, and in `UserId` the key's owner; not null. A chain is not followed.
 * @param err  Out: error record, not null.
 * @return 0; 5 database failure, root's twin is missing, or `UserId` is a system account's; 838 no such
 *         key.
 */
QBOBJ_API uint32_t qbobj_deleteSshPublicKey(qbdb_t *qbdb, sqlite3 *db, SshPublicKey *key, ErrorInfo *err);

/**
 * Changes the title and the use of an SSH public key and refreshes the owner's login shell. With the
 * administrator as the owner root's twin of the key changes, too.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param key  In: @by{Id}, `Title`, `ServeFor`, and in `UserId` the key's owner; not null. A chain is not
 *             followed.
 * @param err  Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure, root's twin is missing, or `UserId` is a system account's;
 *         838 no such key.
 */
QBOBJ_API uint32_t qbobj_setSshPublicKeyById(qbdb_t *qbdb, sqlite3 *db, SshPublicKey *key, ErrorInfo *err);

/**
 * Reads an SSH public key.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param id   Id of the key.
 * @param key  Out: the key; its link is left alone. Not null.
 * @param err  Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 838 no such key.
 */
QBOBJ_API uint32_t qbobj_getSshPublicKeyById(qbdb_t *qbdb, sqlite3 *db, int32_t id, SshPublicKey *key, ErrorInfo *err);

/**
 * Reads root's twin of an SSH public key of the administrator: root's key with the same text.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param id   Id of the administrator's key.
 * @param key  Out: root's key; its link is left alone. Not null.
 * @param err  Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 838 not a key of the administrator, or there is no twin.
 */
QBOBJ_API uint32_t qbobj_getSshPublicKeyTiedRootKeyById(qbdb_t *qbdb, sqlite3 *db, int32_t id, SshPublicKey *key,
                                                        ErrorInfo *err);

/**
 * Reads the SSH public keys of all users; root's are left out.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param keys Out: the keys in the order of their ids, appended to a list that is not empty; not null.
 * @param err  Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_getSshPublicKeyCollection(qbdb_t *qbdb, sqlite3 *db, SshPublicKeyCollection *keys,
                                                   ErrorInfo *err);

/* ---- Users, creating ---------------------------------------------------------------------------- */

/**
 * Creates users, each with its quotas, home-folder settings, Time Machine allowance and, for a cloud user,
 * alias; all of the chain or none. One exception: when the allowance of a user cannot be stored, 0 is
 * returned with 5 in `err`; that user and those before it are created, those after it are not.
 *
 * What is read of a record: `UserName` (required); `UserId`, @range{UserId,100,32767}, or
 * @below{UserId,1} for the next free one; `SysHash`, else `Password`, else the user has none; `Email`; `GroupName`,
 * else group 99; `HomeVolumeId`, for a home folder on that volume instead of under /home; `IsLocked`; `ShellAccess`, 1
 * for a shell; `UserQuota`; `HomeFolderSettings` and `TimeMachineQuota`, for which the account defaults stand in;
 * `P2PUserName`, the alias of a user of the group `admin` or `sky-loft` whose name is an e-mail address or 32 bytes
 * long.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param user In and out: chain of users; null creates none. `resource_id`, `UserId` and `HomeDirectory`
 *             are filled in as each user is created, and keep that when a later one fails; a user whose
 *             allowance failed gets no `resource_id`.
 * @param err  Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure, an unknown share of a quota, or no id is free; 8 a missing or bad
 *         name, a password that cannot be hashed (512 bytes or more), a bad e-mail address, an unknown group
 *         or volume, or an id out of range; 801 the name is taken, be it by a removed user; 802 the id is
 *         taken; 806 the name is too long; 809 it is reserved; 834 it is a remote user's; 843 too many Time
 *         Machine users; 845 the name is another user's alias.
 */
QBOBJ_API uint32_t qbobj_addUser(qbdb_t *qbdb, sqlite3 *db, User *user, ErrorInfo *err);

/**
 * Creates the users of a list that qbobj_checkUserList() has accepted, without checking them again; all of
 * the chain or none. They get ids above the highest one of the local users, the home "/home" and no shell.
 * A removed user keeps its id: while one holds the id that comes next, the list is refused with 5, until
 * qbobj_addUser() has created a user above it.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param user In and out: chain of users; null creates none. Read are `UserName`, `GroupName` (else group
 *             99), `Email` and `Password`, which is stored as it is: a hash. `resource_id`, `UserId` and
 *             `HomeDirectory` are filled in as each user is created.
 * @param err  Out: error record, not null.
 * @return 0; 5 database failure, or a name or id that is taken; 8 an unknown group.
 */
QBOBJ_API uint32_t qbobj_addUserList(qbdb_t *qbdb, sqlite3 *db, User *user, ErrorInfo *err);

/**
 * Reads and checks the list of users in the file /tmp/user_list.txt. A line has four fields with tabs
 * between them: user name, group name, e-mail address (may be empty), password (may be empty). The line
 * "User_Name", "Group_Name", "Email_Address", "Password" is a heading. A line "export_list" says that the
 * passwords from there on are stored hashes, "import_list" that they are clear text, as at the beginning.
 * Empty lines do not count. Lines may end with CR and LF; a line of more than 1023 bytes is read in
 * pieces, each as a line of its own.
 * @param qbdb           Handle.
 * @param db             Connection.
 * @param users          Out: the users of the file with name, group, e-mail address and hash, appended; not
 *                       null. Nothing is appended on failure.
 * @param groups         Out: the groups that the file names and nobody knows, appended; not null.
 * @param existingUsers  Users whose names are taken; null for none.
 * @param existingGroups Groups that need not be created; null for none.
 * @param err            Out: error record, not null.
 * @return 0; 1 there is no such file, it is not a list, or it is larger than 64 MiB; 2 no memory; 5 database failure; of the first
 *         bad line: 8 a missing or bad name, a bad e-mail address, or a password that cannot be hashed;
 *         801 the name is taken or stands twice; 806 a name is too long; 809 the user name is reserved.
 */
QBOBJ_API uint32_t qbobj_checkUserList(qbdb_t *qbdb, sqlite3 *db, UserCollection *users, GroupCollection *groups,
                                       UserCollection *existingUsers, GroupCollection *existingGroups, ErrorInfo *err);

/* ---- Users, changing and removing --------------------------------------------------------------- */

/**
 * Changes users; all of the chain or none. What is null in a record stays, and so does an empty name, but `IsLocked` and
 * `ShellAccess` are always written. A record that was read can be written back: a masked `Password` keeps
 * the stored one.
 *
 * `UserName` renames, sets the home path of a local user to /home/ and the name, and takes the user's
 * home-folder snapshots along; moving the folder is the caller's. `SysHash`, else `Password`, sets the
 * password; `Email` the address, empty for none; `GroupName` the primary group. Each quota of `UserQuota`
 * is set, or removed when its `HardMB` is 0. `HomeFolderSettings` are set but for the folder's name, which
 * is only shown or hidden. `TimeMachineQuota` sets the allowance, or removes it when it is not enabled.
 * `P2PUserName` sets the alias of a cloud user; empty, or when the user is none any more, it goes.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param user In and out: chain of users, each addressed by @by{resource_id}, or @by{UserId} when that is
 *             below 1, or in directory mode without synchronisation by @by{UserName}; null changes none.
 *             `OldUserName` and `OldHomeDirectory` receive what a rename replaced, else "".
 * @param err  Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure, an unknown share of a quota, or texts too long to be written
 *         at once (some 500 bytes); 8 no such user or a protected one, a bad name, a password that cannot
 *         be hashed (512 bytes or more), a bad e-mail address, or an unknown group; 801 the name is taken;
 *         806 it is too long; 809 it is reserved; 832 the directory does not know the name; 843 too many
 *         Time Machine users; 845 the name is another user's alias.
 */
QBOBJ_API uint32_t qbobj_modifyUser(qbdb_t *qbdb, sqlite3 *db, User *user, ErrorInfo *err);

/**
 * Sets a user's primary group: both local, or in directory mode both of the directory. An unknown group
 * leaves the user without one; an unknown user changes nothing.
 * @param qbdb      Handle.
 * @param db        Connection.
 * @param userName  Name of the user.
 * @param groupName Name of the group.
 * @param err       Out: error record, not null.
 * @return 0; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_setPrimaryGroupByName(qbdb_t *qbdb, sqlite3 *db, const char *userName, const char *groupName,
                                               ErrorInfo *err);

/**
 * Locks or unlocks the passwords of ordinary local users, cloud users left out. A locked password is kept
 * and matches nothing; locking twice is like locking once.
 * @param qbdb     Handle.
 * @param db       Connection.
 * @param enable   0 locks, anything else unlocks.
 * @param userName Name of the user; null for all.
 * @param err      Out: error record, not null.
 * @return 0; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_disableEnableLocalUserByName(qbdb_t *qbdb, sqlite3 *db, int32_t enable, const char *userName,
                                                      ErrorInfo *err);

/**
 * Sets the folder in which a user sees the snapshots of the home folder.
 * @param qbdb   Handle.
 * @param db     Connection.
 * @param userId Id of the user; one without home-folder settings changes nothing.
 * @param folder Name of the folder; null or empty hides the snapshots (and is stored as it is).
 * @param err    Out: error record, not null.
 * @return 0; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_modifyUserVisibleSnapFolder(qbdb_t *qbdb, sqlite3 *db, int32_t userId, const char *folder,
                                                     ErrorInfo *err);

/**
 * Removes users by id, with their quotas, access rights, settings, allowances, memberships, home-folder
 * snapshots, SSH keys and aliases; all of the chain or none. Name and id stay taken. Removing the home
 * folder is the caller's.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param user In and out: chain of users, each addressed by @by{resource_id}, or @by{UserId} when that is
 *             below 1; null removes none. `UserName` and `HomeDirectory` receive what the user had.
 * @param err  Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 6 nothing was removed; 8 no such user, a protected one, or
 *         its SSH keys cannot be removed.
 */
QBOBJ_API uint32_t qbobj_deleteUser(qbdb_t *qbdb, sqlite3 *db, User *user, ErrorInfo *err);

/**
 * Removes local users by name, as qbobj_deleteUser() does.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param user In and out: chain of users, each addressed by @by{UserName}; null removes none. `HomeDirectory`
 *             receives what the user had.
 * @param err  Out: error record, not null.
 * @return As qbobj_deleteUser().
 */
QBOBJ_API uint32_t qbobj_deleteUserByName(qbdb_t *qbdb, sqlite3 *db, User *user, ErrorInfo *err);

/* ---- SMB user-name map -------------------------------------------------------------------------- */

/**
 * Reads the whole SMB user-name map.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param maps Out: the rows in the order of their ids, appended to a list that is not empty.
 * @param err  Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 8 `maps` is null. Nothing is appended on failure.
 */
QBOBJ_API uint32_t qbobj_getSmbUserNameMapCollection(qbdb_t *qbdb, sqlite3 *db, SmbUserNameMapCollection *maps,
                                                     ErrorInfo *err);

/**
 * Counts the rows that a Unix user name has of one type.
 * @param qbdb         Handle.
 * @param db           Connection.
 * @param unixUserName The name.
 * @param type         The type.
 * @param err          Out: error record, not null; stays empty.
 * @return The count; 0xFFFFFFFF (-1) when the name is null, the type is not valid, or the database fails.
 */
QBOBJ_API uint32_t qbobj_getSmbUserNameMapCount(qbdb_t *qbdb, sqlite3 *db, const char *unixUserName, const char *type,
                                                ErrorInfo *err);

/**
 * Adds a row to the SMB user-name map. The same mapping may be stored twice.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param map  `UnixUserName`, `SmbUserName` and `Type`. A chain is not followed.
 * @param err  Out: error record, not null.
 * @return 0; 5 database failure; 8 `map` is null, or its type is not valid.
 */
QBOBJ_API uint32_t qbobj_addSmbUserNameMap(qbdb_t *qbdb, sqlite3 *db, SmbUserNameMap *map, ErrorInfo *err);

/**
 * Removes a Unix user name from the SMB user-name map, with its rows of every type. A name without rows is
 * no failure.
 * @param qbdb         Handle.
 * @param db           Connection.
 * @param unixUserName The name.
 * @param err          Out: error record, not null.
 * @return 0; 5 database failure; 8 the name is null.
 */
QBOBJ_API uint32_t qbobj_deleteSmbUserNameMap(qbdb_t *qbdb, sqlite3 *db, const char *unixUserName, ErrorInfo *err);

/**
 * Moves all rows of the SMB user-name map from one Unix user name to another. A name without rows is no
 * failure.
 * @param qbdb        Handle.
 * @param db          Connection.
 * @param oldUnixName The name that has the rows.
 * @param newUnixName The name that gets them.
 * @param err         Out: error record, not null.
 * @return 0; 5 database failure; 8 a name is null.
 */
QBOBJ_API uint32_t qbobj_setSmbUserNameMapUnixUserNameForAll(qbdb_t *qbdb, sqlite3 *db, const char *oldUnixName,
                                                             const char *newUnixName, ErrorInfo *err);

/**
 * Changes the SMB name in the rows that a Unix user name has of one type.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param map  @by{UnixUserName} and @by{Type} choose the rows, `SmbUserName` is the new name. A chain is not
 *             followed.
 * @param err  Out: error record, not null.
 * @return 0; 5 database failure; 8 `map` is null, or its type is not valid.
 */
QBOBJ_API uint32_t qbobj_setSmbUserNameMapSmbUserName(qbdb_t *qbdb, sqlite3 *db, SmbUserNameMap *map, ErrorInfo *err);

#ifdef __cplusplus
}
#endif

#endif
/* SPDX-License-Identifier: Apache-2.0 */
