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

/** Quota. */
struct Quota {
    struct Quota *next; /**< Next element of the list, or null. */
    int32_t AccountId; /**< */
    const char *AccountName; /**< */
    const char *ShareId; /**< */
    uint64_t HardMB; /**< */
    uint64_t UsedMB; /**< */
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

/* Operations. */

#ifdef __cplusplus
}
#endif

#endif
