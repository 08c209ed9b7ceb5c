#include "frame/field_table.h"

namespace qb {

QB_RECORD(Host, QBOBJ_TYPE_ROW_ID, F(resource_id), F(HostId), F(HostName))
QB_RECORD(DfolderAcl, 0, F(Name), F(Address), F(RemoteShare))
QB_RECORD(UserPasswordAcl, 0, F(UserName), F(Password))
QB_RECORD(ZvolShareOption, 0, F(ZfsName), F(SizeKB), F(UsedKB), F(IsSparse))
QB_RECORD(DlnaShareOption, 0, F(NotAvailable), F(Changed), F(DefaultAccess), F(MediaType))
QB_RECORD(DaapShareOption, 0, F(NotAvailable), F(Changed))
QB_RECORD(PosixAcl, 0, F(Type), F(Tag), F(Perm), F(Id), F(Name))
QB_RECORD(UsedBy, 0, F(AppName), F(AppData))
QB_RECORD(Process, 0, F(ProcessId), F(Blocking), F(Timestamp))
QB_RECORD(HostAcl, 0, SUB(Host), F(Access), F(Root))
QB_RECORD(UserAcl, 0, SUB(User), F(Access))
QB_RECORD(GroupAcl, 0, SUB(Group), F(Access))
QB_RECORD(CifsShareOption, 0, F(NotAvailable), F(Changed), F(DefaultAccess), OPT(AllowGuestAccess),
          OPT(ShareDisplayOption), OPT(EnableRecycleBin), OPT(RecycleSizeLimit), OPT(RecycleAgeLimit),
          OPT(NewFileFolderPermAutoset), OPT(AclChangeRestrictionToggle), F(FileCreateGroupRights),
          F(FileCreateEveryoneRights), F(FolderCreateGroupRights), F(FolderCreateEveryoneRights),
          OPT(EnableOplocks), F(EnableDFS), SUB(HostAcl), SUB(UserAcl), SUB(GroupAcl), SUB(DfolderAcl))
QB_RECORD(AfpShareOption, 0, F(NotAvailable), F(Changed), F(DefaultAccess), OPT(AllowGuestAccess),
          OPT(NewFileFolderPermAutoset), F(FileCreateGroupRights), F(FileCreateEveryoneRights),
          F(FolderCreateGroupRights), F(FolderCreateEveryoneRights), SUB(HostAcl), SUB(UserAcl),
          SUB(GroupAcl))
QB_RECORD(FtpShareOption, 0, F(NotAvailable), F(Changed), F(DefaultAccess), OPT(NewFileFolderPermAutoset),
          F(FileCreateGroupRights), F(FileCreateEveryoneRights), F(FolderCreateGroupRights),
          F(FolderCreateEveryoneRights), SUB(HostAcl), SUB(UserAcl), SUB(GroupAcl))
QB_RECORD(NfsShareOption, 0, F(NotAvailable), F(Changed), F(DefaultAccess), F(Sync), SUB(HostAcl))
QB_RECORD(RsyncShareOption, 0, F(NotAvailable), F(Changed), F(DefaultAccess), F(PasswordProtection),
          SUB(HostAcl), SUB(UserPasswordAcl))
QB_RECORD(HttpShareOption, 0, F(NotAvailable), F(Changed), F(DefaultAccess), SUB(HostAcl), SUB(UserAcl),
          SUB(GroupAcl), OPT(EnableWebDav))
QB_RECORD(FileStat, 0, SUB(User), SUB(Group), F(UserAccess), F(GroupAccess), F(EveryoneAccess),
          OPT(NonOwnerDelete), F(AclInherit), LIST(Acls), F(_PosixMode))
QB_RECORD(Share, 0, F(ShareId), F(ZfsName), F(ShareType), F(ShareName), F(VisibleSnapshot),
          F(OldVisibleSnapshot), F(VisibleSnapFolder), F(OldShareName), F(Comment), F(VolumeId), F(Path),
          F(OldPath), OPT(QuotaMB), OPT(ReserveMB), OPT(RefQuotaMB), OPT(RefReserveMB), OPT(Compression),
          OPT(BitRotProtection), OPT(Dedup), WORD(LogBias), WORD(Origin), WORD(Sync), F(AvailableMB),
          F(UsedMB), F(UsedByChildrenMB), F(UsedByDatasetMB), F(UsedByRefReservationMB), F(UsedBySnapshotsMB),
          F(CompressRatio), F(ReferencedMB), F(NrContinuousSnapshots), F(NrManualSnapshots),
          F(FirstSnapshotCreatedOn), F(LastSnapshotCreatedOn), F(MigrateToVolumeId), SUB(Stat), SUB(Zvol),
          SUB(Cifs), SUB(Afp), SUB(Ftp), SUB(Nfs), SUB(Dlna), SUB(Daap), SUB(Rsync), SUB(Http),
          SUB(SnapshotSchedule), SUB(SnapshotClones), SUB(UserQuota), SUB(GroupQuota), SUB(UsedBy),
          F(UpdateTS), F(Busy), F(CloneOf), F(CustomSnapshotManagement), SUB(SnapshotRetentionRules),
          F(CustomSnapshotSchedule), F(NonEmptySnapshots), F(PrevVersions))
QB_RECORD(ShareCollection, 0, LIST(Share))
QB_RECORD(SimpleShare, 0, F(ShareId), F(ShareName), F(CommonProtocolsCSV), SUB(UsedBy))
QB_RECORD(SimpleShareCollection, 0, LIST(SimpleShare))

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
