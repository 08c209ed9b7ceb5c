/**
 * @file qbobj/storage.h
 * Volumes, disks, enclosures, snapshots, clones, subvolumes, health, iSCSI, volume schedules.
 */
#ifndef QBOBJ_STORAGE_H
#define QBOBJ_STORAGE_H

#include "qbobj/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** SnapshotClone. */
struct SnapshotClone {
    struct SnapshotClone *next; /**< Next element of the list, or null. */
    int32_t resource_id; /**< */
    int32_t ID; /**< */
    const char *ClonedShareName; /**< */
    const char *ParentSnapshotName; /**< */
    const char *ParentShareName; /**< */
};

/** SnapshotCloneCollection. */
struct SnapshotCloneCollection {
    struct SnapshotClone *SnapshotClone; /**< */
};

/** Schedule. */
struct Schedule {
    int32_t Enabled; /**< */
    const char *Minute; /**< */
    const char *Hour; /**< */
    const char *DayOfMonth; /**< */
    const char *DayOfWeek; /**< */
    const char *Month; /**< */
    int32_t LastTaken; /**< */
    int32_t PurgeManualSnapshot; /**< */
    int32_t TemporaryDisable; /**< */
    int32_t LastDailyTaken; /**< */
    int32_t LastWeeklyTaken; /**< */
};

/** Volume. */
struct Volume {
    struct Volume *next; /**< Next element of the list, or null. */
    const char *key; /**< Key word: the text by which the element is addressed. */
    const char *VolumeId; /**< */
    const char *VolumeName; /**< */
    const char *RaidType; /**< */
    int64_t BlockTotal; /**< */
    int64_t BlockFree; /**< */
    int32_t BlockSize; /**< */
    const char *VolumeHealth; /**< */
    int32_t SentResilverEvent; /**< */
    int32_t SentScanEnd; /**< */
    int32_t BalanceStatus; /**< */
    int32_t DisktestStatus; /**< */
    const char *KeyFile; /**< */
};

/** Disk. */
struct Disk {
    struct Disk *next; /**< Next element of the list, or null. */
    int32_t resource_id; /**< */
    const char *DiskId; /**< */
    int32_t Present; /**< */
    const char *DevName; /**< */
    int32_t Controller; /**< */
    int32_t Channel; /**< */
    const char *Model; /**< */
    const char *Serial; /**< */
    const char *FirmwareVersion; /**< */
    int32_t RPM; /**< */
    uint64_t Sectors; /**< */
    uint64_t Capacity; /**< */
    int32_t Temperature; /**< */
    int32_t ATAError; /**< */
    const char *Pool; /**< */
    const char *PoolType; /**< */
    const char *PoolState; /**< */
    QBOBJ_ALIGN8 int32_t PoolHostId_void; /**< Non-zero: PoolHostId has no value. */
    uint64_t PoolHostId; /**< */
    const char *SlotName; /**< */
    const char *HardwareInterface; /**< */
    int32_t DiskEnclosureId; /**< */
    const char *DiskState; /**< */
    int32_t ReplacedWithSpare; /**< */
    int32_t IsSignedByVexmoor; /**< */
};

/** DiskDiff. */
struct DiskDiff {
    struct DiskDiff *next; /**< Next element of the list, or null. */
    int32_t AddOrRemove; /**< */
    const char *DiskId; /**< */
    int32_t Controller; /**< */
    int32_t Channel; /**< */
    const char *Model; /**< */
    const char *Serial; /**< */
    const char *FirmwareVersion; /**< */
    int32_t RPM; /**< */
    uint64_t Sectors; /**< */
    uint64_t Capacity; /**< */
    const char *DiskEnclosureId; /**< */
    const char *DiskEnclosureName; /**< */
    const char *SlotName; /**< */
    const char *HardwareInterface; /**< */
    const char *Pool; /**< */
    const char *PoolType; /**< */
    const char *PoolState; /**< */
    QBOBJ_ALIGN8 int32_t PoolHostId_void; /**< Non-zero: PoolHostId has no value. */
    uint64_t PoolHostId; /**< */
    int32_t ReplacedWithSpare; /**< */
    int32_t IsSignedByVexmoor; /**< */
};

/** Snapshot. */
struct Snapshot {
    struct Snapshot *next; /**< Next element of the list, or null. */
    int32_t resource_id; /**< */
    const char *ShareName; /**< */
    const char *VolumeName; /**< */
    const char *SnapshotName; /**< */
    int32_t Type; /**< */
    int32_t CreatedOn; /**< */
    const char *Path; /**< */
};

/** HfSnapshot. */
struct HfSnapshot {
    struct HfSnapshot *next; /**< Next element of the list, or null. */
    int32_t resource_id; /**< */
    const char *UserName; /**< */
    const char *HomeDir; /**< */
    const char *SnapshotName; /**< */
    int32_t Type; /**< */
    int32_t CreatedOn; /**< */
    const char *Path; /**< */
};

/** DiskHealth. */
struct DiskHealth {
    struct DiskHealth *next; /**< Next element of the list, or null. */
    const char *key; /**< Key word: the text by which the element is addressed. */
    const char *DiskId; /**< */
    int32_t Controller; /**< */
    int32_t Channel; /**< */
    int32_t ATAErrors; /**< */
    int32_t ReallocSect; /**< */
    int32_t ReallocEvent; /**< */
    int32_t SpinRetryCnt; /**< */
    int32_t IOEdc; /**< */
    int32_t CmdTimeouts; /**< */
    int32_t PendingSect; /**< */
    int32_t UncorrectableErr; /**< */
    int32_t Temp; /**< */
    int32_t StartStopCnt; /**< */
    int32_t PowerOnHrs; /**< */
    int32_t PowerCycleCnt; /**< */
    int32_t LoadCycleCnt; /**< */
    const char *ZpoolState; /**< */
    int32_t ZpoolReadErrorCnt; /**< */
    int32_t ZpoolWriteErrorCnt; /**< */
    int32_t ZpoolCksumErrorCnt; /**< */
};

/** EnclosureHealthItem. */
struct EnclosureHealthItem {
    struct EnclosureHealthItem *next; /**< Next element of the list, or null. */
    const char *Name; /**< */
    const char *DevId; /**< */
    int32_t Value; /**< */
    int32_t ValuePrev1; /**< */
    int32_t ValuePrev2; /**< */
    int32_t ValuePrev3; /**< */
    int32_t Min; /**< */
    int32_t Max; /**< */
    const char *Label; /**< */
};

/** UpsHealth. */
struct UpsHealth {
    struct UpsHealth *next; /**< Next element of the list, or null. */
    const char *key; /**< Key word: the text by which the element is addressed. */
    const char *UpsName; /**< */
    const char *ServerHost; /**< */
    const char *UpsModel; /**< */
    const char *UpsStatus; /**< */
    const char *UpsAlarm; /**< */
    const char *BatteryCharge; /**< */
    const char *BatteryRunTime; /**< */
    const char *BatteryVoltage; /**< */
};

/** LunGroup. */
struct LunGroup {
    struct LunGroup *next; /**< Next element of the list, or null. */
    const char *key; /**< Key word: the text by which the element is addressed. */
    const char *Name; /**< */
    const char *Target; /**< */
    int32_t AnyInitiator; /**< */
    int32_t ChapAuth; /**< */
    const char *ChapSecret; /**< */
};

/** Initiator. */
struct Initiator {
    struct Initiator *next; /**< Next element of the list, or null. */
    const char *key; /**< Key word: the text by which the element is addressed. */
    const char *Name; /**< */
    int32_t ChapAuth; /**< */
    const char *ChapSecret; /**< */
};

/** Lun. */
struct Lun {
    struct Lun *next; /**< Next element of the list, or null. */
    const char *key; /**< Key word: the text by which the element is addressed. */
    const char *Name; /**< */
    const char *LunGroup; /**< */
    int32_t LunN; /**< */
};

/** CronSchedule. */
struct CronSchedule {
    const char *Minute; /**< */
    const char *Hour; /**< */
    const char *DayOfMonth; /**< */
    const char *Month; /**< */
    const char *DayOfWeek; /**< */
};

/** Subvolume. */
struct Subvolume {
    struct Subvolume *next; /**< Next element of the list, or null. */
    const char *key; /**< Key word: the text by which the element is addressed. */
    const char *Path; /**< */
};

/** VolumeCollection. */
struct VolumeCollection {
    struct VolumeCollection *next; /**< Next element of the list, or null. */
    const char *SystemRaidMode; /**< */
    struct Volume *Volume; /**< */
};

/** DiskCollection. */
struct DiskCollection {
    struct DiskCollection *next; /**< Next element of the list, or null. */
    const char *key; /**< Key word: the text by which the element is addressed. */
    int32_t DiskEnclosureId; /**< */
    const char *DiskEnclosurePort; /**< */
    const char *SESDevice; /**< */
    const char *EnclosureName; /**< */
    int32_t EnclosureRows; /**< */
    int32_t EnclosureCols; /**< */
    int32_t IsSlotHorizontal; /**< */
    const char *DeadSlots; /**< */
    struct Disk *Disk; /**< */
};

/** DiskEnclosureCollection. */
struct DiskEnclosureCollection {
    struct DiskCollection *DiskCollection; /**< */
};

/** SnapshotCollection. */
struct SnapshotCollection {
    struct Snapshot *Snapshot; /**< */
};

/** HfSnapshotCollection. */
struct HfSnapshotCollection {
    struct HfSnapshot *HfSnapshot; /**< */
};

/** DiskHealthCollection. */
struct DiskHealthCollection {
    struct DiskHealthCollection *next; /**< Next element of the list, or null. */
    struct DiskHealth *Health; /**< */
};

/** EnclosureHealth. */
struct EnclosureHealth {
    struct EnclosureHealth *next; /**< Next element of the list, or null. */
    const char *key; /**< Key word: the text by which the element is addressed. */
    int32_t Controller; /**< */
    const char *PortLabel; /**< */
    int32_t NrCpu; /**< */
    int32_t NrFan; /**< */
    int32_t NrPsu; /**< */
    int32_t NrVolt; /**< */
    struct EnclosureHealthItem *Health; /**< */
};

/** EnclosureHealthCollection. */
struct EnclosureHealthCollection {
    struct EnclosureHealthCollection *next; /**< Next element of the list, or null. */
    struct EnclosureHealth *Health; /**< */
};

/** UpsHealthCollection. */
struct UpsHealthCollection {
    struct UpsHealthCollection *next; /**< Next element of the list, or null. */
    struct UpsHealth *Health; /**< */
};

/** LunGroupCollection. */
struct LunGroupCollection {
    struct LunGroup *LunGroup; /**< */
};

/** InitiatorCollection. */
struct InitiatorCollection {
    struct Initiator *Initiator; /**< */
};

/** VolumeSchedule. */
struct VolumeSchedule {
    struct VolumeSchedule *next; /**< Next element of the list, or null. */
    const char *key; /**< Key word: the text by which the element is addressed. */
    const char *VolumeName; /**< */
    int32_t JobID; /**< */
    int32_t Enabled; /**< */
    int32_t Action; /**< */
    struct CronSchedule *Interval; /**< */
};

/** VolumeScheduleCollection. */
struct VolumeScheduleCollection {
    struct VolumeSchedule *VolumeSchedule; /**< */
};

/** SubvolumeCollection. */
struct SubvolumeCollection {
    struct Subvolume *Subvolume; /**< */
};

/* Operations. */

#ifdef __cplusplus
}
#endif

#endif
