#include "frame/field_table.h"

namespace qb {

QB_RECORD(SnapshotClone, QBOBJ_TYPE_ROW_ID, F(resource_id), F(ID), F(ClonedShareName), F(ParentSnapshotName),
          F(ParentShareName))
QB_RECORD(SnapshotCloneCollection, 0, HEAD(SnapshotClone))
QB_RECORD(Schedule, 0, F(Enabled), F(Minute), F(Hour), F(DayOfMonth), F(DayOfWeek), F(Month), F(LastTaken),
          F(PurgeManualSnapshot), F(TemporaryDisable), F(LastDailyTaken), F(LastWeeklyTaken))
QB_RECORD(Volume, 0, F(VolumeId), F(VolumeName), F(RaidType), F(BlockTotal), F(BlockFree), F(BlockSize),
          F(VolumeHealth), F(SentResilverEvent), F(SentScanEnd), F(BalanceStatus), F(DisktestStatus),
          F(KeyFile))
QB_RECORD(Disk, QBOBJ_TYPE_ROW_ID, F(resource_id), F(DiskId), F(Present), F(DevName), F(Controller),
          F(Channel), F(Model), F(Serial), F(FirmwareVersion), F(RPM), F(Sectors), F(Capacity),
          F(Temperature), F(ATAError), F(Pool), F(PoolType), F(PoolState), OPT(PoolHostId), F(SlotName),
          F(HardwareInterface), F(DiskEnclosureId), F(DiskState), F(ReplacedWithSpare), F(IsSignedByVexmoor))
QB_RECORD(DiskDiff, 0, F(AddOrRemove), F(DiskId), F(Controller), F(Channel), F(Model), F(Serial),
          F(FirmwareVersion), F(RPM), F(Sectors), F(Capacity), F(DiskEnclosureId), F(DiskEnclosureName),
          F(SlotName), F(HardwareInterface), F(Pool), F(PoolType), F(PoolState), OPT(PoolHostId),
          F(ReplacedWithSpare), F(IsSignedByVexmoor))
QB_RECORD(Snapshot, QBOBJ_TYPE_ROW_ID, F(resource_id), F(ShareName), F(VolumeName), F(SnapshotName), F(Type),
          F(CreatedOn), F(Path))
QB_RECORD(HfSnapshot, QBOBJ_TYPE_ROW_ID, F(resource_id), F(UserName), F(HomeDir), F(SnapshotName), F(Type),
          F(CreatedOn), F(Path))
QB_RECORD(DiskHealth, 0, F(DiskId), F(Controller), F(Channel), F(ATAErrors), F(ReallocSect), F(ReallocEvent),
          F(SpinRetryCnt), F(IOEdc), F(CmdTimeouts), F(PendingSect), F(UncorrectableErr), F(Temp),
          F(StartStopCnt), F(PowerOnHrs), F(PowerCycleCnt), F(LoadCycleCnt), F(ZpoolState),
          F(ZpoolReadErrorCnt), F(ZpoolWriteErrorCnt), F(ZpoolCksumErrorCnt))
QB_RECORD(EnclosureHealthItem, 0, F(Name), F(DevId), F(Value), F(ValuePrev1), F(ValuePrev2), F(ValuePrev3),
          F(Min), F(Max), F(Label))
QB_RECORD(UpsHealth, 0, F(UpsName), F(ServerHost), F(UpsModel), F(UpsStatus), F(UpsAlarm), F(BatteryCharge),
          F(BatteryRunTime), F(BatteryVoltage))
QB_RECORD(LunGroup, 0, F(Name), F(Target), F(AnyInitiator), F(ChapAuth), F(ChapSecret))
QB_RECORD(Initiator, 0, F(Name), F(ChapAuth), F(ChapSecret))
QB_RECORD(Lun, 0, F(Name), F(LunGroup), F(LunN))
QB_RECORD(CronSchedule, 0, F(Minute), F(Hour), F(DayOfMonth), F(Month), F(DayOfWeek))
QB_RECORD(Subvolume, 0, F(Path))
QB_RECORD(VolumeCollection, 0, F(SystemRaidMode), HEAD(Volume))
QB_RECORD(DiskCollection, 0, F(DiskEnclosureId), F(DiskEnclosurePort), F(SESDevice), F(EnclosureName),
          F(EnclosureRows), F(EnclosureCols), F(IsSlotHorizontal), F(DeadSlots), HEAD(Disk))
QB_RECORD(DiskEnclosureCollection, 0, HEAD(DiskCollection))
QB_RECORD(SnapshotCollection, 0, LIST(Snapshot))
QB_RECORD(HfSnapshotCollection, 0, LIST(HfSnapshot))
QB_RECORD(DiskHealthCollection, 0, LIST(Health))
QB_RECORD(EnclosureHealth, 0, F(Controller), F(PortLabel), F(NrCpu), F(NrFan), F(NrPsu), F(NrVolt),
          SUB(Health))
QB_RECORD(EnclosureHealthCollection, 0, LIST(Health))
QB_RECORD(UpsHealthCollection, 0, LIST(Health))
QB_RECORD(LunGroupCollection, 0, LIST(LunGroup))
QB_RECORD(InitiatorCollection, 0, LIST(Initiator))
QB_RECORD(VolumeSchedule, 0, F(VolumeName), F(JobID), F(Enabled), F(Action), SUB(Interval))
QB_RECORD(VolumeScheduleCollection, 0, LIST(VolumeSchedule))
QB_RECORD(SubvolumeCollection, 0, LIST(Subvolume))

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
