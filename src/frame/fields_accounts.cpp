#include "frame/field_table.h"

namespace qb {

QB_RECORD(SshPublicKey, QBOBJ_TYPE_ROW_ID, F(resource_id), F(Id), F(UserId), F(ServeFor), F(Type), F(Key),
          F(Comment), F(Fingerprint), F(Title))
QB_RECORD(SshPublicKeyCollection, 0, HEAD(SshPublicKey))
QB_RECORD(Quota, 0, F(AccountId), F(AccountName), F(ShareId), F(HardMB), F(UsedMB))
QB_RECORD(AdminPassword, 0, F(Password), F(Question), F(Answer), F(Email), F(Enabled), F(Method),
          F(ResetFlag), F(ShellAccess))
QB_RECORD(UserPassword, 0, F(UserId), F(Password))
QB_RECORD(MyPassword, 0, F(UserName), F(OldPassword), F(NewPassword))
QB_RECORD(UserHomeFolderSettings, 0, F(UserId), F(SizeLimit), F(SizeUsed), F(SnapshotProtectionEnabled),
          F(VisibleSnapshot), F(VisibleSnapFolder), F(PrevVersions))
QB_RECORD(UserTimeMachineQuota, 0, F(UserId), F(Enabled), F(CapacityMB), F(UsedMB))
QB_RECORD(SystemUser, QBOBJ_TYPE_ROW_ID, F(resource_id), F(UserId), F(UserName), F(_PosixId))
QB_RECORD(AccountQuery, 0, F(limit), F(offset), F(name_like), F(opt), F(order), F(ads), F(include_admin),
          F(name_fix))
QB_RECORD(SystemGroup, QBOBJ_TYPE_ROW_ID, F(resource_id), F(GroupId), F(GroupName), F(_PosixId))
QB_RECORD(AccountDefault, 0, F(HomeVolumeId), F(DiskQuotaWarn), F(GroupId), F(DisallowPasswordChange),
          F(HomeFolderCapacityLimit), F(GroupMembership), F(PrivateTimeMachine), F(PrivateTimeMachineSpace),
          F(SnapshotProtection))
QB_RECORD(Security, 0, F(Security), F(Realm), F(workGroup), F(orgUnit), F(restrictOU), F(noSyncADS),
          F(restrictAccountOu), F(domainAdministrator), F(passWord), F(passWordServer),
          F(displayTrustedUsers), F(domainSid), F(domainGroupAdminGID), F(domainAdminUID),
          F(joinDomainFailed), F(idmapBackend))
QB_RECORD(SecurityAdsProgress, 0, F(State), F(Percent), F(TotalUser), F(CurrUser), F(TotalGroup),
          F(CurrGroup), F(StartAt), F(DoneAt))
QB_RECORD(SmbUserNameMap, QBOBJ_TYPE_ROW_ID, F(resource_id), F(Id), F(UnixUserName), F(SmbUserName), F(Type))
QB_RECORD(User, QBOBJ_TYPE_ROW_ID, F(resource_id), F(UserId), F(UserName), F(OldUserName), F(GroupName),
          F(HomeVolumeId), F(HomeDirectory), F(OldHomeDirectory), F(Email), F(FullName), F(Password),
          F(SmbHash), F(SysHash), F(IsDomainMember), F(no_invitation), F(IsLocked), F(ShellAccess),
          F(P2PUserName), SUB(UserQuota), SUB(TimeMachineQuota), SUB(HomeFolderSettings))
QB_RECORD(UserCollection, 0, LIST(User), F(Entries), F(TotalEntries))
QB_RECORD(Group, QBOBJ_TYPE_ROW_ID, F(resource_id), F(GroupId), F(GroupName), F(OldGroupName),
          SUB(SecondaryMember), SUB(GroupQuota), F(IsDomainMember))
QB_RECORD(GroupCollection, 0, LIST(Group), F(Entries), F(TotalEntries))
QB_RECORD(SmbUserNameMapCollection, 0, LIST(SmbUserNameMap))

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
