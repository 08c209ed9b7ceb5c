#include "frame/field_table.h"

namespace qb {

QB_RECORD(BackupJob_SourceOrDestination, 0, F(Type), F(ShareNameOrProtocol), F(Path), F(Login), F(Password),
          F(Port), F(Ejectable), F(Eject))
QB_RECORD(BackupJob_Schedule, 0, F(Enabled), F(Frequency), F(Start), F(End), F(DayOfWeek))
QB_RECORD(BackupJob_Option, 0, F(FullBackupFrequency), F(RemovePreviousBackup), F(ChownToShareOwner),
          F(RsyncOption), F(RsyncExclude), F(EmailThisToAlertEmail), F(MiscOption), F(WolAddress))
QB_RECORD(BackupJob, QBOBJ_TYPE_ROW_ID, F(resource_id), F(JobId), F(JobName), SUB(Source), SUB(Destination),
          SUB(Schedule), SUB(Option), F(Changed))
QB_RECORD(BackupJobCollection, 0, LIST(BackupJob))
QB_RECORD(BackupTarget, 0, F(Type), F(UsbSubType), F(ShareNameOrProtocol), F(Path), F(Id), F(Ejectable))
QB_RECORD(BackupTargetCollection, 0, LIST(AvailableSourceTarget), LIST(AvailableDestinationTarget))
QB_RECORD(BackupButtonJob, 0, F(JobId), F(JobName))
QB_RECORD(BackupButtonJobCollection, 0, LIST(Jobs))

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
