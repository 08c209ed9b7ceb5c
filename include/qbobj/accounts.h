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

/** SshPublicKey. */
struct SshPublicKey {
    struct SshPublicKey *next; /**< Next element of the list, or null. */
    int32_t resource_id; /**< */
    int32_t Id; /**< */
    int32_t UserId; /**< */
    const char *ServeFor; /**< */
    const char *Type; /**< */
    const char *Key; /**< */
    const char *Comment; /**< */
    const char *Fingerprint; /**< */
    const char *Title; /**< */
};

/** SshPublicKeyCollection. */
struct SshPublicKeyCollection {
    struct SshPublicKey *SshPublicKey; /**< */
};

/** What one user or group may use of one share. */
struct Quota {
    struct Quota *next; /**< Next element of the list, or null. */
    int32_t AccountId; /**< Id of the user or group. */
    const char *AccountName; /**< Its name; not read from the database. */
    const char *ShareId; /**< Data set of the share (the share's `zfs_name`). */
    uint64_t HardMB; /**< Limit in megabytes; 0 on input removes the quota. */
    uint64_t UsedMB; /**< Megabytes in use as last measured, 0 when never measured; output only. */
};

/** AdminPassword. */
struct AdminPassword {
    const char *Password; /**< */
    const char *Question; /**< */
    const char *Answer; /**< */
    const char *Email; /**< */
    int32_t Enabled; /**< */
    const char *Method; /**< */
    int32_t ResetFlag; /**< */
    int32_t ShellAccess; /**< */
};

/** UserPassword. */
struct UserPassword {
    struct UserPassword *next; /**< Next element of the list, or null. */
    int32_t UserId; /**< */
    const char *Password; /**< */
};

/** MyPassword. */
struct MyPassword {
    struct MyPassword *next; /**< Next element of the list, or null. */
    const char *UserName; /**< */
    const char *OldPassword; /**< */
    const char *NewPassword; /**< */
};

/** Settings of a user's home folder. */
struct UserHomeFolderSettings {
    struct UserHomeFolderSettings *next; /**< Next element of the list, or null. */
    int32_t UserId; /**< Id of the user. */
    uint64_t SizeLimit; /**< Limit in bytes; 0 for none. */
    uint64_t SizeUsed; /**< Bytes in use as last measured, 0 when never measured; output only. */
    int32_t SnapshotProtectionEnabled; /**< 1 when snapshots of the home folder are taken. */
    int32_t VisibleSnapshot; /**< 1 when the folder of the snapshots is visible. */
    const char *VisibleSnapFolder; /**< Name of that folder, "" when it is hidden; output only. */
    int32_t PrevVersions; /**< 1 when snapshots are offered as previous versions. */
};

/** A user's private Time Machine allowance. */
struct UserTimeMachineQuota {
    struct UserTimeMachineQuota *next; /**< Next element of the list, or null. */
    int32_t UserId; /**< Id of the user. */
    int32_t Enabled; /**< 1 when the user may back up. */
    int32_t CapacityMB; /**< Allowance in megabytes. */
    uint64_t UsedMB; /**< Megabytes that the user's backup takes, measured by each read; output only. */
};

/** Name and POSIX id of any account. */
struct SystemUser {
    struct SystemUser *next; /**< Next element of the list, or null. */
    int32_t resource_id; /**< Id of the account; below 1: UserId is looked at. */
    int32_t UserId; /**< Id of the account; equal to resource_id on output. */
    const char *UserName; /**< Name of the account; output only. */
    int32_t _PosixId; /**< POSIX uid, -1 when the directory does not know it; output only. */
};

/** What to list of users or groups, in which order, which page. */
struct AccountQuery {
    int32_t limit; /**< Length of the page; 0 for everything. */
    int32_t offset; /**< Number of accounts to leave out at the beginning; counts with a limit only. */
    const char *name_like; /**< SQL LIKE pattern with the caller's wildcards, at most 256 bytes; null or "" for all. */
    const char *opt; /**< Option tokens, see qbobj_getUserCollection(); may be null. Not read for groups. */
    int32_t order; /**< 1 by name, 2 by id, -1 and -2 the same descending; anything else by name. */
    int32_t ads; /**< Non-zero lists domain accounts, 0 local ones. */
    int32_t include_admin; /**< Not read: the administrator is asked for by an option token. */
    const char *name_fix; /**< Exact name for the option SINGLE_USER. */
};

/** SystemGroup. */
struct SystemGroup {
    struct SystemGroup *next; /**< Next element of the list, or null. */
    int32_t resource_id; /**< */
    int32_t GroupId; /**< */
    const char *GroupName; /**< */
    int32_t _PosixId; /**< */
};

/** AccountDefault. */
struct AccountDefault {
    const char *HomeVolumeId; /**< */
    int32_t DiskQuotaWarn; /**< */
    int32_t GroupId; /**< */
    int32_t DisallowPasswordChange; /**< */
    uint64_t HomeFolderCapacityLimit; /**< */
    const char *GroupMembership; /**< */
    int32_t PrivateTimeMachine; /**< */
    int32_t PrivateTimeMachineSpace; /**< */
    int32_t SnapshotProtection; /**< */
};

/** Security. */
struct Security {
    const char *Security; /**< */
    const char *Realm; /**< */
    const char *workGroup; /**< */
    const char *orgUnit; /**< */
    const char *restrictOU; /**< */
    int32_t noSyncADS; /**< */
    const char *restrictAccountOu; /**< */
    const char *domainAdministrator; /**< */
    const char *passWord; /**< */
    const char *passWordServer; /**< */
    int32_t displayTrustedUsers; /**< */
    const char *domainSid; /**< */
    int32_t domainGroupAdminGID; /**< */
    int32_t domainAdminUID; /**< */
    int32_t joinDomainFailed; /**< */
    const char *idmapBackend; /**< */
};

/** SecurityAdsProgress. */
struct SecurityAdsProgress {
    const char *State; /**< */
    int32_t Percent; /**< */
    int32_t TotalUser; /**< */
    int32_t CurrUser; /**< */
    int32_t TotalGroup; /**< */
    int32_t CurrGroup; /**< */
    int32_t StartAt; /**< */
    int32_t DoneAt; /**< */
};

/** SmbUserNameMap. */
struct SmbUserNameMap {
    struct SmbUserNameMap *next; /**< Next element of the list, or null. */
    int32_t resource_id; /**< */
    int32_t Id; /**< */
    const char *UnixUserName; /**< */
    const char *SmbUserName; /**< */
    const char *Type; /**< */
};

/** A user. */
struct User {
    struct User *next; /**< Next element of the list, or null. */
    int32_t resource_id; /**< Id by which the caller addresses the user; below 1: UserId is looked at. */
    int32_t UserId; /**< Id of the user; equal to resource_id on output. */
    const char *UserName; /**< Name of the user. */
    const char *OldUserName; /**< Name before a change. */
    const char *GroupName; /**< Name of the primary group. */
    const char *HomeVolumeId; /**< Volume for the home folder of a new user; input only. */
    const char *HomeDirectory; /**< Path of the home folder; output only. */
    const char *OldHomeDirectory; /**< Path of the home folder before a change of the name. */
    const char *Email; /**< E-mail address. */
    const char *FullName; /**< Full name; only the user list reads it. */
    const char *Password; /**< In: the password in clear, or #masked_password for the stored one. Out: the mask, ""
                               when none is stored, or the stored hash where it was asked for. */
    const char *SmbHash; /**< Password hash of the SMB service; input only. */
    const char *SysHash; /**< Ready-made system password hash, stored as it is; input only. */
    int32_t IsDomainMember; /**< 1 for a user of the directory; output only. */
    int32_t no_invitation; /**< 1 when a cloud user is not to be invited; input only. */
    int32_t IsLocked; /**< 1 when the account is locked. */
    int32_t ShellAccess; /**< 1 when the user may log in to a shell. */
    const char *P2PUserName; /**< Alias of the user in the cloud service; input only. */
    struct Quota *UserQuota; /**< Quotas per share. */
    struct UserTimeMachineQuota *TimeMachineQuota; /**< Time Machine allowance, or null. */
    struct UserHomeFolderSettings *HomeFolderSettings; /**< Settings of the home folder, or null. */
};

/** Users, and how many there are. */
struct UserCollection {
    struct User *User; /**< First of the list, or null. */
    int32_t Entries; /**< Number of users that match the whole filter, the page not considered. */
    int32_t TotalEntries; /**< Number of users before the name filter and the options that choose among them. */
};

/** Group. */
struct Group {
    struct Group *next; /**< Next element of the list, or null. */
    int32_t resource_id; /**< */
    int32_t GroupId; /**< */
    const char *GroupName; /**< */
    const char *OldGroupName; /**< */
    struct User *SecondaryMember; /**< */
    struct Quota *GroupQuota; /**< */
    int32_t IsDomainMember; /**< */
};

/** GroupCollection. */
struct GroupCollection {
    struct Group *Group; /**< */
    int32_t Entries; /**< */
    int32_t TotalEntries; /**< */
};

/** SmbUserNameMapCollection. */
struct SmbUserNameMapCollection {
    struct SmbUserNameMap *SmbUserNameMap; /**< */
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
 *   but counted.
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
 * masked; the full name is not read. Removed users are still found.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param user In: `resource_id`, or `UserId` when that is below 1 (domain users may have negative ids, in
 *             directory mode only); an id of 0 with a `UserName` asks the directory when its users are
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
 * @param user In: `resource_id`, or `UserId` when that is below 1 (negative ids in directory mode only).
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
 * included, a primary member comes once for each secondary membership that it has in any group.
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
 * @param name Name of the user; null for the local guest and the guest group.
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
 * @param bytes Out: bytes in use; not written on failure. Not null.
 * @param err   Out: error record, not null; stays zero.
 * @return 0; 5 the figures could not be refreshed or read.
 */
QBOBJ_API uint32_t qbobj_getUserHomeFolderTotalConsumedInByte(qbdb_t *qbdb, sqlite3 *db, uint64_t *bytes,
                                                              ErrorInfo *err);

#ifdef __cplusplus
}
#endif

#endif
