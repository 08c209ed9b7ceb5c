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
    int32_t resource_id; /**< Out: same as `Id`. */
    int32_t Id; /**< Id of the key. Out, but for changing and deleting: in. */
    int32_t UserId; /**< Owner: user 98 or a user with an id above 99; 0 in root's twin of an administrator's key. */
    const char *ServeFor; /**< Use of the key: "rsync" for one that lets only rsync in; other words are the caller's. */
    const char *Type; /**< Kind of key ("ssh-ed25519"), stored as given. */
    const char *Key; /**< Text of the key. */
    const char *Comment; /**< Comment of the key. */
    const char *Fingerprint; /**< Fingerprint, stored as given. */
    const char *Title; /**< Title to show; that of root's twin is "root_" and the key's title. */
};

/** A list of SSH public keys. */
struct SshPublicKeyCollection {
    struct SshPublicKey *SshPublicKey; /**< First key, or null. */
};

/** Quota. */
struct Quota {
    struct Quota *next; /**< Next element of the list, or null. */
    int32_t AccountId; /**< */
    const char *AccountName; /**< */
    const char *ShareId; /**< */
    uint64_t HardMB; /**< */
    uint64_t UsedMB; /**< */
};

/** The administrator's password, password recovery and shell access. */
struct AdminPassword {
    const char *Password; /**< In: new password in clear text; null or empty to keep the old one. Out: null. */
    const char *Question; /**< Question of the password recovery. In: null keeps question, answer and address. */
    const char *Answer; /**< Its answer. In: null keeps question, answer and address. */
    const char *Email; /**< E-mail address of the recovery. In: null keeps question, answer and address. */
    int32_t Enabled; /**< 1 when a lost password can be recovered, else 0. */
    const char *Method; /**< How it is recovered. In: null to keep. */
    int32_t ResetFlag; /**< Not stored. Out: 0. */
    int32_t ShellAccess; /**< 1 when the administrator may log in with a shell, else 0. */
};

/** A new password for a user. */
struct UserPassword {
    struct UserPassword *next; /**< Next element of the list, or null. */
    int32_t UserId; /**< Id of the user. */
    const char *Password; /**< New password in clear text; empty for none, with which nobody can log in by password. */
};

/** A user's change of the own password; all three texts are required. */
struct MyPassword {
    struct MyPassword *next; /**< Next element of the list, or null. */
    const char *UserName; /**< Name of the user, who is a local one. */
    const char *OldPassword; /**< Present password in clear text. */
    const char *NewPassword; /**< New password in clear text. */
};

/** UserHomeFolderSettings. */
struct UserHomeFolderSettings {
    struct UserHomeFolderSettings *next; /**< Next element of the list, or null. */
    int32_t UserId; /**< */
    uint64_t SizeLimit; /**< */
    uint64_t SizeUsed; /**< */
    int32_t SnapshotProtectionEnabled; /**< */
    int32_t VisibleSnapshot; /**< */
    const char *VisibleSnapFolder; /**< */
    int32_t PrevVersions; /**< */
};

/** UserTimeMachineQuota. */
struct UserTimeMachineQuota {
    struct UserTimeMachineQuota *next; /**< Next element of the list, or null. */
    int32_t UserId; /**< */
    int32_t Enabled; /**< */
    int32_t CapacityMB; /**< */
    uint64_t UsedMB; /**< */
};

/** SystemUser. */
struct SystemUser {
    struct SystemUser *next; /**< Next element of the list, or null. */
    int32_t resource_id; /**< */
    int32_t UserId; /**< */
    const char *UserName; /**< */
    int32_t _PosixId; /**< */
};

/** AccountQuery. */
struct AccountQuery {
    int32_t limit; /**< */
    int32_t offset; /**< */
    const char *name_like; /**< */
    const char *opt; /**< */
    int32_t order; /**< */
    int32_t ads; /**< */
    int32_t include_admin; /**< */
    const char *name_fix; /**< */
};

/** SystemGroup. */
struct SystemGroup {
    struct SystemGroup *next; /**< Next element of the list, or null. */
    int32_t resource_id; /**< */
    int32_t GroupId; /**< */
    const char *GroupName; /**< */
    int32_t _PosixId; /**< */
};

/** Defaults for new accounts. */
struct AccountDefault {
    const char *HomeVolumeId; /**< Volume of the home folders: its id; its name is taken, too, and stored so. */
    int32_t DiskQuotaWarn; /**< Soft limit of quotas in per cent of the hard limit, 1 to 99. */
    int32_t GroupId; /**< Out: id of the default group. In: ignored, the name decides. */
    int32_t DisallowPasswordChange; /**< 1 when users may not change their passwords, else 0. */
    uint64_t HomeFolderCapacityLimit; /**< Size limit of a home folder, as new home folders get it; 0 for none. */
    const char *GroupMembership; /**< Name of the default group. */
    int32_t PrivateTimeMachine; /**< 1 when a new user gets a Time Machine allowance, else 0. */
    int32_t PrivateTimeMachineSpace; /**< Its size in units of 1000 MB. */
    int32_t SnapshotProtection; /**< 1 when snapshots protect a new home folder, else 0. */
};

/** Directory settings of the CIFS service. */
struct Security {
    const char *Security; /**< "user" for local accounts only, "ads" for those of a directory. */
    const char *Realm; /**< Realm of the directory: a host name; required with "ads". */
    const char *workGroup; /**< Workgroup or short domain name: 1 to 16 letters, digits, "_", "-", "." and blanks. */
    const char *orgUnit; /**< Organisational unit that the appliance joins. */
    const char *restrictOU; /**< Organisational unit that users and groups are imported from. */
    int32_t noSyncADS; /**< 1 when directory accounts are looked up live instead of imported, else 0. */
    const char *restrictAccountOu; /**< Not stored. Out: null. */
    const char *domainAdministrator; /**< Name of the directory's administrator. */
    const char *passWord; /**< Not stored. Out: null. */
    const char *passWordServer; /**< Login server: a host name, or null or empty for any. */
    int32_t displayTrustedUsers; /**< 1 when users of trusted domains are shown, else 0. */
    const char *domainSid; /**< Out: security identifier of the domain. In: ignored. */
    int32_t domainGroupAdminGID; /**< Out: id of the domain administrators' group, 98 when unknown. In: ignored. */
    int32_t domainAdminUID; /**< Out: id of the domain administrator, 98 when unknown. In: ignored. */
    int32_t joinDomainFailed; /**< 1 when joining the domain failed, else 0. */
    const char *idmapBackend; /**< How directory ids become POSIX ids: "tdb" or "rid". */
};

/** Progress of the import of directory accounts; all fields are out. */
struct SecurityAdsProgress {
    const char *State; /**< "idle", "running", "complete" or "error". */
    int32_t Percent; /**< 0 to 100: users and groups make up half each, also when there are none of a kind. */
    int32_t TotalUser; /**< Number of users to import. */
    int32_t CurrUser; /**< Number of users imported so far. */
    int32_t TotalGroup; /**< Number of groups to import. */
    int32_t CurrGroup; /**< Number of groups imported so far. */
    int32_t StartAt; /**< When it began, in seconds since the epoch. */
    int32_t DoneAt; /**< When it ended, in seconds since the epoch; 0 before. */
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

/** User. */
struct User {
    struct User *next; /**< Next element of the list, or null. */
    int32_t resource_id; /**< */
    int32_t UserId; /**< */
    const char *UserName; /**< */
    const char *OldUserName; /**< */
    const char *GroupName; /**< */
    const char *HomeVolumeId; /**< */
    const char *HomeDirectory; /**< */
    const char *OldHomeDirectory; /**< */
    const char *Email; /**< */
    const char *FullName; /**< */
    const char *Password; /**< */
    const char *SmbHash; /**< */
    const char *SysHash; /**< */
    int32_t IsDomainMember; /**< */
    int32_t no_invitation; /**< */
    int32_t IsLocked; /**< */
    int32_t ShellAccess; /**< */
    const char *P2PUserName; /**< */
    struct Quota *UserQuota; /**< */
    struct UserTimeMachineQuota *TimeMachineQuota; /**< */
    struct UserHomeFolderSettings *HomeFolderSettings; /**< */
};

/** UserCollection. */
struct UserCollection {
    struct User *User; /**< */
    int32_t Entries; /**< */
    int32_t TotalEntries; /**< */
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

/* ---- Passwords, account defaults, directory security ---------------------------------------------- */

/**
 * Reads the administrator's recovery settings and shell access. The password is never returned.
 * @param qbdb  Handle.
 * @param db    Connection.
 * @param admin Out: the settings; not null.
 * @param err   Out: error record, not null.
 * @return 0; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_getAdminPassword(qbdb_t *qbdb, sqlite3 *db, AdminPassword *admin, ErrorInfo *err);

/**
 * Sets the administrator's recovery settings, shell access and, when one is given, password. The
 * system account `root` gets the same password. `Enabled` and `ShellAccess` are always written.
 * @param qbdb  Handle.
 * @param db    Connection.
 * @param admin In: the settings; not null.
 * @param err   Out: error record, not null.
 * @return 0; 5 database failure; 8 a password that cannot be hashed (512 bytes or more).
 */
QBOBJ_API uint32_t qbobj_setAdminPassword(qbdb_t *qbdb, sqlite3 *db, AdminPassword *admin, ErrorInfo *err);

/**
 * Sets a user's password. An id that no user has changes nothing and is no failure. The mask that
 * stands for stored passwords elsewhere is a password like any other here.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param pw   In: the user and the password; not null. A chain is not followed.
 * @param err  Out: error record, not null.
 * @return 0; 5 database failure; 8 no password, or one that cannot be hashed (512 bytes or more).
 */
QBOBJ_API uint32_t qbobj_setUserPassword(qbdb_t *qbdb, sqlite3 *db, UserPassword *pw, ErrorInfo *err);

/**
 * Changes a local user's password after checking the present one. A user without a password, or whose
 * password is locked, cannot do this.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param pw   In: the user, the old and the new password; not null. A chain is not followed.
 * @param err  Out: error record, not null.
 * @return 0; 5 database failure; 8 an empty field, a new password that cannot be hashed (512 bytes or
 *         more), an unknown user, or a wrong old password.
 */
QBOBJ_API uint32_t qbobj_setMyPassword(qbdb_t *qbdb, sqlite3 *db, MyPassword *pw, ErrorInfo *err);

/**
 * Reads the defaults for new accounts.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param def  Out: the defaults; not null.
 * @param err  Out: error record, not null.
 * @return 0; 5 database failure, or there are no defaults in the database.
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
 * @return 0; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_getSecurity(qbdb_t *qbdb, sqlite3 *db, Security *security, ErrorInfo *err);

/**
 * Writes the directory settings. A null text is stored as such. The domain's identifier, the domain
 * administrators' ids and the password are left alone.
 * @param qbdb     Handle.
 * @param db       Connection.
 * @param security In: the settings; not null.
 * @param err      Out: error record, not null.
 * @return 0; 5 database failure, or settings too long to be written at once (some 500 bytes); 8 neither
 *         "user" nor "ads"; 819 bad workgroup; with "ads" 820 bad realm, 833 bad login server.
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
 * @return 0; 5 database failure.
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
 *         such user; 837 the user has this key; 842 there are 256 keys already.
 */
QBOBJ_API uint32_t qbobj_addSshPublicKey(qbdb_t *qbdb, sqlite3 *db, SshPublicKey *key, ErrorInfo *err);

/**
 * Removes an SSH public key and refreshes the owner's login shell. With the administrator as the owner
 * root's twin of the key goes, too; when there is none, nothing is removed.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param key  In: `Id`, and in `UserId` the key's owner; not null. A chain is not followed.
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
 * @param key  In: `Id`, `Title`, `ServeFor`, and in `UserId` the key's owner; not null. A chain is not
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
 * @return 0; 5 database failure; 838 no such key.
 */
QBOBJ_API uint32_t qbobj_getSshPublicKeyById(qbdb_t *qbdb, sqlite3 *db, int32_t id, SshPublicKey *key,
                                             ErrorInfo *err);

/**
 * Reads root's twin of an SSH public key of the administrator: root's key with the same text.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param id   Id of the administrator's key.
 * @param key  Out: root's key; its link is left alone. Not null.
 * @param err  Out: error record, not null.
 * @return 0; 5 database failure; 838 not a key of the administrator, or there is no twin.
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

#ifdef __cplusplus
}
#endif

#endif
