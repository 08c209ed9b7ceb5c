#include "frame/field_table.h"

namespace qb {

QB_RECORD(SnapshotRetentionRules, QBOBJ_TYPE_ROW_ID, F(resource_id), F(Type), F(Number), F(Lifetime))
QB_RECORD(CustomSnapshotManagement, QBOBJ_TYPE_ROW_ID, F(resource_id), F(Enabled),
          SUB(SnapshotRetentionRules), F(CustomSnapshotSchedule), F(NonEmptySnapshots))
QB_RECORD(Timemachine, 0, F(Enabled), F(UserName), F(Password), F(CapacityMB), F(MaxCapacityMB),
          F(HomeEnabled))
QB_RECORD(Coffer, 0, F(Enabled), F(Volume), F(Action), F(UserName), F(UserPassword), F(DefaultJob))
QB_RECORD(CifsOptions, 0, F(UserHomeDirectory), F(UserHomeDirectoryRecycle),
          F(UserHomeDirectoryRecycleMaxDays), F(UserHomeDirectoryRecycleMaxSize))
QB_RECORD(BonjourOptions, 0, F(CifsEnabled), F(AfpEnabled), F(GlassdeckEnabled), F(PrinterEnabled),
          F(QuillboxEnabled), F(TimemachineEnabled))
QB_RECORD(FtpOptions, 0, F(Port), F(AuthMode), F(PassiveRangeMin), F(PassiveRangeMax), F(EnableMasquerade),
          F(MasqueradeAddress), F(AllowUploadResume), F(UserHomeDirectory), F(Ftps), F(ForceFtps),
          F(ServerTransferLog), F(MaxUploadRate), F(MaxDownloadRate))
QB_RECORD(DaapOptions, 0, F(sharename), F(password), F(directory))
QB_RECORD(NfsOptions, 0, F(Changed), F(Threads), F(UserHomeDirectory), F(NfsV4Enable), F(NfsV4Domain))
QB_RECORD(DlnaOptions, 0, F(AutoScan), F(EnableTivoServer), F(EnableTivoArchiver))
QB_RECORD(SnmpOptions, 0, F(AllowHost), F(Community), F(TrapDestination))
QB_RECORD(SshOptions, 0, F(Port), F(PasswordAuthentication))
QB_RECORD(ReplicateOptions, 0, F(Owner), F(PrivData), F(Password))
QB_RECORD(HttpOptions, 0, F(LoginEnabled), F(ShareName), F(HttpAdmin))
QB_RECORD(HttpsOptions, 0, F(Port), F(SslKeyHost))
QB_RECORD(TIVOhostsAcl, 0, F(name), F(status), F(active))
QB_RECORD(TivoMak, 0, F(name), F(status), F(key))
QB_RECORD(HomeFolderOptions, 0, F(UserHomeDirectory), F(NfsUserHomeDirectory), F(FtpUserHomeDirectory),
          F(DlnaUserHomeDirectory), F(AfpUserHomeDirectory), SUB(CustomSnapshotManagement))
QB_RECORD(Protocol, 0, F(ProtocolId), F(ProtocolName), F(Enabled), F(Changed), MAYBE(CifsOptions),
          MAYBE(NfsOptions), MAYBE(FtpOptions), MAYBE(DlnaOptions), MAYBE(BonjourOptions), MAYBE(SnmpOptions),
          MAYBE(SshOptions), MAYBE(ReplicateOptions), MAYBE(HttpOptions), MAYBE(HttpsOptions),
          MAYBE(DaapOptions))
QB_RECORD(ProtocolCollection, 0, LIST(Protocol))
QB_RECORD(TivoOptions, 0, F(DLNAfolderlist), F(TIVOfolder), F(hour), F(minute), F(days), SUB(TIVOhostsAcl))

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
