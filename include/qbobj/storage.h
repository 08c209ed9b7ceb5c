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

/** A clone of a snapshot. */
struct SnapshotClone {
    struct SnapshotClone *next;     /**< Next element of the list, or null. */
    int32_t resource_id;            /**< Database key. */
    int32_t ID;                     /**< Database key. */
    const char *ClonedShareName;    /**< Share that is the clone. */
    const char *ParentSnapshotName; /**< Snapshot that it came from. */
    const char *ParentShareName;    /**< Share of that snapshot. */
};

/** A list of clones. */
struct SnapshotCloneCollection {
    struct SnapshotClone *SnapshotClone; /**< Head of the list, null when empty. */
};

/** When snapshots are taken. Note the order of `DayOfWeek` and `Month`. */
struct Schedule {
    int32_t Enabled;             /**< 1 when the schedule runs. */
    const char *Minute;          /**< Minutes in crontab notation. */
    const char *Hour;            /**< Hours in crontab notation. */
    const char *DayOfMonth;      /**< Days of the month in crontab notation. */
    const char *DayOfWeek;       /**< Days of the week in crontab notation. */
    const char *Month;           /**< Months in crontab notation. */
    int32_t LastTaken;           /**< When the last snapshot was taken, in @unit{seconds since the epoch}. */
    int32_t PurgeManualSnapshot; /**< 1 removes snapshots taken by hand, too. */
    int32_t TemporaryDisable;    /**< Never stored; output only. */
    int32_t LastDailyTaken;      /**< When the last daily snapshot was taken, in @unit{seconds since the epoch}. */
    int32_t LastWeeklyTaken;     /**< When the last weekly snapshot was taken, in @unit{seconds since the epoch}. */
};

/** A volume. */
struct Volume {
    struct Volume *next;       /**< Next element of the list, or null. */
    const char *key;           /**< Key word: the text by which the element is addressed. */
    const char *VolumeId;      /**< Id of the volume; also the key word. */
    const char *VolumeName;    /**< Name of the volume. */
    const char *RaidType;      /**< RAID type, @default{"SWELL"} when none is stored. */
    int64_t BlockTotal;        /**< Size in @unit{blocks}. */
    int64_t BlockFree;         /**< Free @unit{blocks}. */
    int32_t BlockSize;         /**< Size of a block in @unit{bytes}. */
    const char *VolumeHealth;  /**< State of the volume. */
    int32_t SentResilverEvent; /**< 1 when the end of a resilver was announced. */
    int32_t SentScanEnd;       /**< 1 when the end of a scan was announced. */
    int32_t BalanceStatus;     /**< State of balancing. */
    int32_t DisktestStatus;    /**< State of the disk test. */
    const char *KeyFile;       /**< File with the volume's key. */
};

/** A disk. */
struct Disk {
    struct Disk *next;                    /**< Next element of the list, or null. */
    int32_t resource_id;                  /**< The id read as a decimal number. */
    const char *DiskId;                   /**< Id of the disk. */
    int32_t Present;                      /**< 1 when it is plugged in. */
    const char *DevName;                  /**< Device name: the same as the id. */
    int32_t Controller;                   /**< Number of the controller. */
    int32_t Channel;                      /**< Channel on the controller. */
    const char *Model;                    /**< Model. */
    const char *Serial;                   /**< Serial number. */
    const char *FirmwareVersion;          /**< Firmware version. */
    int32_t RPM;                          /**< @unit{revolutions per minute,Revolutions per minute}. */
    uint64_t Sectors;                     /**< Number of @unit{sectors}. */
    uint64_t Capacity;                    /**< Size in @unit{bytes}. */
    int32_t Temperature;                  /**< @unit{degrees Celsius,Degrees Celsius}. */
    int32_t ATAError;                     /**< Number of ATA errors. */
    const char *Pool;                     /**< Volume to which the disk belongs. */
    const char *PoolType;                 /**< Its role there. */
    const char *PoolState;                /**< Its state there. */
    QBOBJ_ALIGN8 int32_t PoolHostId_void; /**< Non-zero: PoolHostId has no value. */
    uint64_t PoolHostId;                  /**< Host id stored in the pool. */
    const char *SlotName;                 /**< Slot: column, "x", row. */
    const char *HardwareInterface;        /**< Interface of the disk. */
    int32_t DiskEnclosureId;              /**< Number of the enclosure's controller. */
    const char *DiskState;                /**< State of the disk. */
    int32_t ReplacedWithSpare;            /**< 1 when a spare stands in for it. */
    int32_t IsSignedByVexmoor;            /**< 1 when the vendor signed it. */
};

/** A disk that was plugged in or pulled. */
struct DiskDiff {
    struct DiskDiff *next;                /**< Next element of the list, or null. */
    int32_t AddOrRemove;                  /**< 1 plugged in, -1 pulled. */
    const char *DiskId;                   /**< Id of the disk. */
    int32_t Controller;                   /**< Number of the controller. */
    int32_t Channel;                      /**< Channel on the controller. */
    const char *Model;                    /**< Model. */
    const char *Serial;                   /**< Serial number. */
    const char *FirmwareVersion;          /**< Firmware version. */
    int32_t RPM;                          /**< @unit{revolutions per minute,Revolutions per minute}. */
    uint64_t Sectors;                     /**< Number of @unit{sectors}. */
    uint64_t Capacity;                    /**< Size in @unit{bytes}. */
    const char *DiskEnclosureId;          /**< Enclosure: "controller-" and its number. */
    const char *DiskEnclosureName;        /**< Name of the enclosure. */
    const char *SlotName;                 /**< Slot: column, "x", row. */
    const char *HardwareInterface;        /**< Interface of the disk. */
    const char *Pool;                     /**< Volume to which the disk belongs. */
    const char *PoolType;                 /**< Its role there. */
    const char *PoolState;                /**< Its state there. */
    QBOBJ_ALIGN8 int32_t PoolHostId_void; /**< Non-zero: PoolHostId has no value. */
    uint64_t PoolHostId;                  /**< Host id stored in the pool. */
    int32_t ReplacedWithSpare;            /**< 1 when a spare stands in for it. */
    int32_t IsSignedByVexmoor;            /**< 1 when the vendor signed it. */
};

/** A snapshot of a share. */
struct Snapshot {
    struct Snapshot *next;    /**< Next element of the list, or null. */
    int32_t resource_id;      /**< Database key. */
    const char *ShareName;    /**< Name of the share. */
    const char *VolumeName;   /**< Name of the volume. */
    const char *SnapshotName; /**< Name of the snapshot. */
    int32_t Type;             /**< Kind: 1, 2 or 3. */
    int32_t CreatedOn;        /**< When it was taken, in @unit{seconds since the epoch}. */
    const char *Path;         /**< Folder of the snapshot, empty when there is none. */
};

/** A snapshot of a home folder. */
struct HfSnapshot {
    struct HfSnapshot *next;  /**< Next element of the list, or null. */
    int32_t resource_id;      /**< Database key. */
    const char *UserName;     /**< Name of the user. */
    const char *HomeDir;      /**< Path of the home folder. */
    const char *SnapshotName; /**< Name of the snapshot. */
    int32_t Type;             /**< Kind: 1, 2 or 3. */
    int32_t CreatedOn;        /**< When it was taken, in @unit{seconds since the epoch}. */
    const char *Path;         /**< Folder of the snapshot, empty when there is none. */
};

/** Health of a disk: SMART counters and pool errors. Key word: its enclosure. */
struct DiskHealth {
    struct DiskHealth *next;    /**< Next element of the list, or null. */
    const char *key;            /**< Key word: the text by which the element is addressed. */
    const char *DiskId;         /**< Id of the disk. */
    int32_t Controller;         /**< Number of the controller. */
    int32_t Channel;            /**< Channel on the controller. */
    int32_t ATAErrors;          /**< ATA errors. */
    int32_t ReallocSect;        /**< Reallocated sectors. */
    int32_t ReallocEvent;       /**< Reallocation events. */
    int32_t SpinRetryCnt;       /**< Spin-up retries. */
    int32_t IOEdc;              /**< End-to-end errors. */
    int32_t CmdTimeouts;        /**< Command timeouts. */
    int32_t PendingSect;        /**< Sectors waiting for reallocation. */
    int32_t UncorrectableErr;   /**< Uncorrectable errors. */
    int32_t Temp;               /**< @unit{degrees Celsius,Degrees Celsius}. */
    int32_t StartStopCnt;       /**< Starts and stops. */
    int32_t PowerOnHrs;         /**< @unit{hours,Hours} of operation. */
    int32_t PowerCycleCnt;      /**< Power cycles. */
    int32_t LoadCycleCnt;       /**< Load cycles. */
    const char *ZpoolState;     /**< State in the pool. */
    int32_t ZpoolReadErrorCnt;  /**< Read errors in the pool. */
    int32_t ZpoolWriteErrorCnt; /**< Write errors in the pool. */
    int32_t ZpoolCksumErrorCnt; /**< Checksum errors in the pool. */
};

/** A sensor of an enclosure. */
struct EnclosureHealthItem {
    struct EnclosureHealthItem *next; /**< Next element of the list, or null. */
    const char *Name;                 /**< Kind of sensor. */
    const char *DevId;                /**< Which one of its kind. */
    int32_t Value;                    /**< Latest reading. */
    int32_t ValuePrev1;               /**< The reading before. */
    int32_t ValuePrev2;               /**< The one before that. */
    int32_t ValuePrev3;               /**< The one before that. */
    int32_t Min;                      /**< Lower limit. */
    int32_t Max;                      /**< Upper limit. */
    const char *Label;                /**< What the sensor is called. */
};

/** State of a UPS. Key word: name, "@", host. */
struct UpsHealth {
    struct UpsHealth *next;     /**< Next element of the list, or null. */
    const char *key;            /**< Key word: the text by which the element is addressed. */
    const char *UpsName;        /**< Name of the UPS. */
    const char *ServerHost;     /**< Host of the UPS server. */
    const char *UpsModel;       /**< Model. */
    const char *UpsStatus;      /**< Status words. */
    const char *UpsAlarm;       /**< Alarms. */
    const char *BatteryCharge;  /**< Charge, ready for display. */
    const char *BatteryRunTime; /**< Run time, ready for display. */
    const char *BatteryVoltage; /**< Voltage, ready for display. */
};

/** A group of iSCSI LUNs behind one target. */
struct LunGroup {
    struct LunGroup *next;  /**< Next element of the list, or null. */
    const char *key;        /**< Key word: the same as Name; filled by readers. */
    const char *Name;       /**< Unique name; case counts. */
    const char *Target;     /**< Name of the target that the group is offered as. */
    int32_t AnyInitiator;   /**< 1 lets every initiator connect, whatever the access list says. */
    int32_t ChapAuth;       /**< 1 asks for CHAP. */
    const char *ChapSecret; /**< CHAP secret, stored in clear. When a group is changed, #masked_password keeps it. */
};

/** An iSCSI initiator: a host that may connect to LUN groups. */
struct Initiator {
    struct Initiator *next; /**< Next element of the list, or null. */
    const char *key;        /**< Key word: the same as Name; filled by readers. */
    const char *Name;       /**< Its iSCSI name, "iqn.2026-01.com.example:host"; unique, and case counts. */
    int32_t ChapAuth;       /**< 1 asks for CHAP. */
    const char *ChapSecret; /**< CHAP secret, stored in clear. When it is changed, #masked_password keeps it. */
};

/** An iSCSI LUN. */
struct Lun {
    struct Lun *next;     /**< Next element of the list, or null. */
    const char *key;      /**< Key word: the same as Name; filled by readers. */
    const char *Name;     /**< Unique name; case counts. */
    const char *LunGroup; /**< Name of its group; need not exist yet. */
    int32_t LunN;         /**< Number of the LUN in its group. */
};

/** The five fields of a cron line. */
struct CronSchedule {
    const char *Minute;     /**< Minutes in crontab notation. */
    const char *Hour;       /**< Hours in crontab notation. */
    const char *DayOfMonth; /**< Days of the month in crontab notation. */
    const char *Month;      /**< Months in crontab notation. */
    const char *DayOfWeek;  /**< Days of the week in crontab notation. */
};

/** A subvolume. */
struct Subvolume {
    struct Subvolume *next; /**< Next element of the list, or null. */
    const char *key;        /**< Key word: the text by which the element is addressed. */
    const char *Path;       /**< Its path. */
};

/** A list of volumes. It is a list element itself. */
struct VolumeCollection {
    struct VolumeCollection *next; /**< Next element of the list, or null. */
    const char *SystemRaidMode;    /**< RAID mode of the system, @default{"SWELL"} when none is stored. */
    struct Volume *Volume;         /**< Head of the list, null when empty. */
};

/** An enclosure with its disks. */
struct DiskCollection {
    struct DiskCollection *next;   /**< Next element of the list, or null. */
    const char *key;               /**< Key word: the text by which the element is addressed. */
    int32_t DiskEnclosureId;       /**< Number of its controller. */
    const char *DiskEnclosurePort; /**< Label of the port. */
    const char *SESDevice;         /**< Enclosure services device. */
    const char *EnclosureName;     /**< Name of the enclosure. */
    int32_t EnclosureRows;         /**< Rows of slots. */
    int32_t EnclosureCols;         /**< Columns of slots. */
    int32_t IsSlotHorizontal;      /**< 1 when disks lie. */
    const char *DeadSlots;         /**< Slots that cannot be used; may be null. */
    struct Disk *Disk;             /**< Head of the list of disks. */
};

/** A list of enclosures. */
struct DiskEnclosureCollection {
    struct DiskCollection *DiskCollection; /**< Head of the list, null when empty. */
};

/** A list of snapshots. */
struct SnapshotCollection {
    struct Snapshot *Snapshot; /**< Head of the list, null when empty. */
};

/** A list of home folder snapshots. */
struct HfSnapshotCollection {
    struct HfSnapshot *HfSnapshot; /**< Head of the list, null when empty. */
};

/** A list of disk health records. It is a list element itself. */
struct DiskHealthCollection {
    struct DiskHealthCollection *next; /**< Next element of the list, or null. */
    struct DiskHealth *Health;         /**< Head of the list, null when empty. */
};

/** Health of an enclosure. Key word: "controller-" and its number. */
struct EnclosureHealth {
    struct EnclosureHealth *next;       /**< Next element of the list, or null. */
    const char *key;                    /**< Key word: the text by which the element is addressed. */
    int32_t Controller;                 /**< Number of the controller. */
    const char *PortLabel;              /**< Label of the port. */
    int32_t NrCpu;                      /**< Number of CPU sensors. */
    int32_t NrFan;                      /**< Number of fans. */
    int32_t NrPsu;                      /**< Number of power supplies. */
    int32_t NrVolt;                     /**< Number of voltages. */
    struct EnclosureHealthItem *Health; /**< Sensors. */
};

/** A list of enclosure health records. It is a list element itself. */
struct EnclosureHealthCollection {
    struct EnclosureHealthCollection *next; /**< Next element of the list, or null. */
    struct EnclosureHealth *Health;         /**< Head of the list, null when empty. */
};

/** A list of UPS states. It is a list element itself. */
struct UpsHealthCollection {
    struct UpsHealthCollection *next; /**< Next element of the list, or null. */
    struct UpsHealth *Health;         /**< Head of the list, null when empty. */
};

/** A list of LUN groups. */
struct LunGroupCollection {
    struct LunGroup *LunGroup; /**< Head of the list, null when empty. */
};

/** A list of initiators. */
struct InitiatorCollection {
    struct Initiator *Initiator; /**< Head of the list, null when empty. */
};

/** A job that runs on a volume. */
struct VolumeSchedule {
    struct VolumeSchedule *next;   /**< Next element of the list, or null. */
    const char *key;               /**< Key word: the text by which the element is addressed. */
    const char *VolumeName;        /**< Name of the volume. */
    int32_t JobID;                 /**< Number of the job, chosen by the caller. */
    int32_t Enabled;               /**< 1 when it runs. */
    int32_t Action;                /**< What it does. */
    struct CronSchedule *Interval; /**< When it runs. */
};

/** A list of volume jobs. */
struct VolumeScheduleCollection {
    struct VolumeSchedule *VolumeSchedule; /**< Head of the list, null when empty. */
};

/** A list of subvolumes. */
struct SubvolumeCollection {
    struct Subvolume *Subvolume; /**< Head of the list, null when empty. */
};

/* ---- Volumes ------------------------------------------------------------------------------------ */

/**
 * Lists the volumes by name, case ignored; removable storage ("USB") is not among them.
 * @param qbdb    Handle.
 * @param db      Connection.
 * @param volumes Out: SystemRaidMode, and the volumes, appended to the record's list.
 * @param err     Out: error record, not null.
 * @return 0; 2 no memory, the volumes read so far stay in the list; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_getVolumeCollection(qbdb_t *qbdb, sqlite3 *db, VolumeCollection *volumes, ErrorInfo *err);

/**
 * Refreshes a volume's figures: sizes, health, announcements, key file, balance and disk test. Its name and RAID type
 * stay as they are.
 * @param qbdb   Handle.
 * @param db     Connection.
 * @param volume @by{VolumeId} addresses the volume; all other fields are stored as they are, a null text as NULL. When
 *               no volume has the id nothing happens.
 * @param err    Out: error record, not null. Without a volume it has code 8, and the call returns 0 all the same.
 * @return 0; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_updateVolume(qbdb_t *qbdb, sqlite3 *db, Volume *volume, ErrorInfo *err);

/**
 * Deletes a volume with all its shares, also those that applications use. Every Time Machine allowance goes too. Home
 * folders that lay on it are given to another volume, or to "run" when there is none.
 * @param qbdb     Handle.
 * @param db       Connection.
 * @param volumeId Id of the volume. When no volume has it the allowances go all the same.
 * @param err      Out: error record, not null.
 * @return 0; 3 no volume could be chosen for the home folders, told by the code alone; 5 database failure; 6 a share
 *         was gone before it could be deleted.
 */
QBOBJ_API uint32_t qbobj_deleteVolume(qbdb_t *qbdb, sqlite3 *db, const char *volumeId, ErrorInfo *err);

/* ---- Disks -------------------------------------------------------------------------------------- */

/**
 * Lists the disks of the main chassis: qbobj_getDiskCollectionForController of controller 0.
 * @param qbdb  Handle.
 * @param db    Connection.
 * @param disks Out: as there.
 * @param err   Out: error record, not null.
 * @return As qbobj_getDiskCollectionForController() does.
 */
QBOBJ_API uint32_t qbobj_getDiskCollection(qbdb_t *qbdb, sqlite3 *db, DiskCollection *disks, ErrorInfo *err);

/**
 * Lists the disks of an enclosure by channel. A disk without a bay or without a health report is not listed.
 * ReplacedWithSpare and IsSignedByVexmoor are not told here.
 * @param qbdb       Handle.
 * @param db         Connection.
 * @param disks      Out: the enclosure, its fields left alone when no port leads to it, and its disks, appended to the
 *                   record's list. The key word is "controller-" and the number.
 * @param controller Number of the enclosure's controller, 0 for the main chassis.
 * @param err        Out: error record, not null.
 * @return 0; 2 no memory, the disks read so far stay in the list; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_getDiskCollectionForController(qbdb_t *qbdb, sqlite3 *db, DiskCollection *disks,
                                                        int32_t controller, ErrorInfo *err);

/**
 * Lists all enclosures with their disks.
 * @param qbdb       Handle.
 * @param db         Connection.
 * @param enclosures Out: the enclosures, appended to the record's list, each as
 *                   qbobj_getDiskCollectionForController fills it.
 * @param err        Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure. The enclosures read before a failure stay in the list.
 */
QBOBJ_API uint32_t qbobj_getDiskEnclosureCollection(qbdb_t *qbdb, sqlite3 *db, DiskEnclosureCollection *enclosures,
                                                    ErrorInfo *err);

/**
 * Reads the label of the port that leads to an enclosure.
 * @param qbdb       Handle.
 * @param db         Connection.
 * @param controller Number of the enclosure's controller.
 * @param label      Out: the label in the handle's pool, null when no port leads there; untouched on failure.
 * @param err        Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_getDiskEnclosurePort(qbdb_t *qbdb, sqlite3 *db, int32_t controller, const char **label,
                                              ErrorInfo *err);

/**
 * Reads one disk, also one without a health report. resource_id, DiskState and what its pool says of it are not told
 * here.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param disk In: @by{DevName}. Out: the disk; left alone when not exactly one slot has that name. Not to be null.
 * @param err  Out: error record, not null. Without a DevName it has code 8, and the call returns 0 all the same.
 * @return 0, also when there is no such disk; 2 no memory; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_getDiskByDevname(qbdb_t *qbdb, sqlite3 *db, Disk *disk, ErrorInfo *err);

/**
 * Notes whether a spare stands in for a disk.
 * @param qbdb    Handle.
 * @param db      Connection.
 * @param devname Device name of the disk, not null. When there is no such disk nothing happens.
 * @param flag    1 when a spare stands in for it, else 0.
 * @param err     Out: error record, not null. Without a name it has code 8, and the call returns 0 all the same.
 * @return 0; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_setDiskSpare(qbdb_t *qbdb, sqlite3 *db, const char *devname, int32_t flag, ErrorInfo *err);

/**
 * Takes a new inventory of the disks and tells what changed since the last one: first the disks that were plugged in,
 * then those that were pulled. The inventory is taken by the support library's importer (qbdb_set_import_hook).
 * @param qbdb Handle.
 * @param db   Connection.
 * @param diff Out: the differences, appended to the list at `*diff`. Pool is the volume of the disk that sat in the bay
 *             before, and null when there was none. DiskEnclosureName and SlotName are null when they cannot be read;
 *             the error record then says why, with code 5, and the call returns 0 all the same.
 * @param err  Out: error record, not null. Without `diff` it has code 8, and the call returns 0 all the same.
 * @return 0; 2 no memory; 3 the inventories could not be compared, told by the code alone. What was found before a
 *         failure stays in the list.
 */
QBOBJ_API uint32_t qbobj_getDiskDiff(qbdb_t *qbdb, sqlite3 *db, DiskDiff **diff, ErrorInfo *err);

/**
 * Finds the disk that sat in the bay of a difference.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param diff @by{Controller} and @by{Channel} name the bay. Not to be null.
 * @param disk Out: the first absent disk of the bay that can be read, as qbobj_getDiskByDevname fills it. DevName is
 *             the last one tried; the record is left alone when no disk is absent there. Not to be null.
 * @param err  Out: error record, not null. Without a record it has code 8, after a failed look-up code 5, and the call
 *             returns 0 all the same.
 * @return 0; 2 no memory; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_getDiskByDiskDiff(qbdb_t *qbdb, sqlite3 *db, DiskDiff *diff, Disk *disk, ErrorInfo *err);

/**
 * Removes a disk from the inventory.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param disk @by{DevName} names the disk, not null. When there is no such disk nothing happens.
 * @param err  Out: error record, not null. Without a DevName it has code 8, and the call returns 0 all the same.
 * @return 0; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_deleteDiskByDevname(qbdb_t *qbdb, sqlite3 *db, Disk *disk, ErrorInfo *err);

/* ---- Spares and jobs of volumes ----------------------------------------------------------------- */

/**
 * Lists the disks set aside as spares.
 * @param qbdb   Handle.
 * @param db     Connection.
 * @param spares Out: the disks, appended to the record's list; nothing else of it is filled. Pool is empty: a spare
 *               belongs to no volume. Bay and health are not told here.
 * @param err    Out: error record, not null.
 * @return 0; 2 no memory, the disks read so far stay in the list; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_getVolumeSparesCollection(qbdb_t *qbdb, sqlite3 *db, DiskCollection *spares, ErrorInfo *err);

/**
 * Sets a disk aside as a spare.
 * @param qbdb   Handle.
 * @param db     Connection.
 * @param diskId Id of the disk, which need not be plugged in.
 * @param err    Out: error record, not null.
 * @return 0; 5 database failure, also for a disk that is a spare already.
 */
QBOBJ_API uint32_t qbobj_addVolumeSpare(qbdb_t *qbdb, sqlite3 *db, const char *diskId, ErrorInfo *err);

/**
 * Takes a disk from the spares.
 * @param qbdb   Handle.
 * @param db     Connection.
 * @param diskId Id of the disk. When it is no spare nothing happens.
 * @param err    Out: error record, not null.
 * @return 0; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_deleteVolumeSpare(qbdb_t *qbdb, sqlite3 *db, const char *diskId, ErrorInfo *err);

/**
 * Lists the recurring jobs of volumes.
 * @param qbdb      Handle.
 * @param db        Connection.
 * @param schedules Out: the jobs, appended to the record's list. The key word is the job's number.
 * @param err       Out: error record, not null.
 * @return 0; 2 no memory, the jobs read so far stay in the list; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_getVolumeScheduleCollection(qbdb_t *qbdb, sqlite3 *db, VolumeScheduleCollection *schedules,
                                                     ErrorInfo *err);

/**
 * Adds a job.
 * @param qbdb     Handle.
 * @param db       Connection.
 * @param schedule The job with its Interval, not null. Only the number is checked, and number 0 is always free.
 * @param err      Out: error record, not null.
 * @return 0; 5 database failure, no Interval, or a JobID in use.
 */
QBOBJ_API uint32_t qbobj_addVolumeSchedule(qbdb_t *qbdb, sqlite3 *db, VolumeSchedule *schedule, ErrorInfo *err);

/**
 * Changes when a job runs and what it does. Its volume stays as it is.
 * @param qbdb     Handle.
 * @param db       Connection.
 * @param schedule @by{JobID} names the job; Enabled, Action, Interval (not null) are the new values. Without such a job
 *                 nothing happens.
 * @param err      Out: error record, not null.
 * @return 0; 5 database failure, or no Interval.
 */
QBOBJ_API uint32_t qbobj_updateVolumeSchedule(qbdb_t *qbdb, sqlite3 *db, VolumeSchedule *schedule, ErrorInfo *err);

/**
 * Deletes a job, or all jobs of a volume.
 * @param qbdb     Handle.
 * @param db       Connection.
 * @param schedule @by{JobID} names the job; -1 with a @by{VolumeName} that is not null: all jobs of that volume. The
 *                 name is put into the statement as it is: one with a quote in it must not come from outside.
 * @param err      Out: error record, not null.
 * @return 0, also for a volume without jobs; 5 database failure, or no such job.
 */
QBOBJ_API uint32_t qbobj_deleteVolumeSchedule(qbdb_t *qbdb, sqlite3 *db, VolumeSchedule *schedule, ErrorInfo *err);
/* ---- Snapshots ---------------------------------------------------------------------------------- */

/*
 * The catalogue of snapshots: what was taken, of what and when. Taking a snapshot and destroying it is the
 * caller's work; these operations record, list, count and forget. Snapshots have a type, a number. Only those
 * of type 1, 2 and 3 are ever listed or counted.
 */

/**
 * Lists snapshots of shares, page by page. A snapshot whose share or volume is gone is not listed.
 * @param qbdb       Handle.
 * @param db         Connection.
 * @param snapshots  Out: the snapshots are appended; they live in the handle's pool. After a lack of memory those
 *                   read so far stay in the list.
 * @param shareName  Only snapshots of this share; null for all.
 * @param volumeName Only snapshots on this volume; null for all.
 * @param type       Only this type; any number but 1, 2 and 3 stands for all three.
 * @param from       Only snapshots taken then or later, in @unit{seconds since the epoch}.
 * @param to         Only snapshots taken then or earlier, in @unit{seconds since the epoch}; 0: no bound.
 * @param sortColumn Column of the catalogue to sort by: "id", "zfs_name", "name", "type" or "created_on"; null for
 *                   @default{"created_on"}.
 * @param descending Non-zero: from the highest to the lowest.
 * @param limit      Most snapshots to read; 0 or below: no limit.
 * @param offset     Snapshots to skip first.
 * @param err        Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure, an unknown column to sort by, names too long to search for.
 */
QBOBJ_API uint32_t qbobj_getSnapshotCollection(qbdb_t *qbdb, sqlite3 *db, SnapshotCollection *snapshots,
                                               const char *shareName, const char *volumeName, int32_t type,
                                               int32_t from, int32_t to, const char *sortColumn, int32_t descending,
                                               int32_t limit, int32_t offset, ErrorInfo *err);

/**
 * Counts the snapshots of shares that match a filter.
 * @param qbdb       Handle.
 * @param db         Connection.
 * @param shareName  Only snapshots of this share; null for all. What is counted is what a listing shows.
 * @param volumeName Only snapshots on this volume; null for all.
 * @param type       Only this type; any number but 1, 2 and 3 stands for all three.
 * @param from       Only snapshots taken then or later, in @unit{seconds since the epoch}.
 * @param to         Only snapshots taken then or earlier, in @unit{seconds since the epoch}; 0: no bound.
 * @param count      Out: how many there are. Not written on failure.
 * @param err        Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure, names too long to search for.
 */
QBOBJ_API uint32_t qbobj_getSnapshotCollectionCount(qbdb_t *qbdb, sqlite3 *db, const char *shareName,
                                                    const char *volumeName, int32_t type, int32_t from, int32_t to,
                                                    int32_t *count, ErrorInfo *err);

/**
 * Adds snapshots of shares to the catalogue: the whole chain or, after a failure, none of it.
 * @param qbdb     Handle.
 * @param db       Connection.
 * @param snapshot In, out: the first of a chain, null for none; each names a share and the volume that it lies on,
 *                 and gets its resource_id. Any type is stored. After a failure the records before the failing one
 *                 have a resource_id, too, which means nothing then.
 * @param err      Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 8 an unknown share or volume, a share that is not on the volume, no
 *         name.
 */
QBOBJ_API uint32_t qbobj_addSnapshot(qbdb_t *qbdb, sqlite3 *db, Snapshot *snapshot, ErrorInfo *err);

/**
 * Removes snapshots of a share, or of all shares of a volume, from the catalogue.
 * @param qbdb         Handle.
 * @param db           Connection.
 * @param volumeName   Name of the volume.
 * @param shareName    Name of a share on it; null for every share whose dataset lies below the volume's id. (The id
 *                     is matched without regard to case, "_" and "%" standing for any character and any text.)
 * @param deleteNewer  Which ones: 1 those newer than `time`; 2 those newer than the snapshot named `snapshotName`,
 *                     which stays; 3 those taken in the second `time`; any other number those named `snapshotName`,
 *                     or all when that is null.
 * @param snapshotName Name of a snapshot; may be null but for 2.
 * @param time         @unit{seconds since the epoch,Seconds since the epoch}; counts for 1 and 3.
 * @param err          Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure, no snapshotName with 2, or names too long to be looked for; 6 there was
 *         nothing to remove; 8 an unknown volume or share, or a share that is not on the volume.
 */
QBOBJ_API uint32_t qbobj_deleteSnapshot(qbdb_t *qbdb, sqlite3 *db, const char *volumeName, const char *shareName,
                                        int32_t deleteNewer, const char *snapshotName, int32_t time, ErrorInfo *err);

/**
 * Lists snapshots of home folders, page by page. Those of a user name that no account has any more are not listed.
 * @param qbdb       Handle.
 * @param db         Connection.
 * @param snapshots  Out: as for qbobj_getSnapshotCollection.
 * @param userName   Only snapshots of this user; null for all.
 * @param homeDir    Only snapshots of users whose home folder this is now; null for all.
 * @param type       Only this type; any number but 1, 2 and 3 stands for all three.
 * @param from       Only snapshots taken then or later, in @unit{seconds since the epoch}.
 * @param to         Only snapshots taken then or earlier, in @unit{seconds since the epoch}; 0: no bound.
 * @param sortColumn Column of the catalogue to sort by: "id", "user_name", "home_dir", "name", "type" or
 *                   "created_on"; null for @default{"created_on"}.
 * @param descending Non-zero: from the highest to the lowest.
 * @param limit      Most snapshots to read; 0 or below: no limit.
 * @param offset     Snapshots to skip first.
 * @param err        Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure, an unknown column to sort by, names too long to search for.
 */
QBOBJ_API uint32_t qbobj_getHfSnapshotCollection(qbdb_t *qbdb, sqlite3 *db, HfSnapshotCollection *snapshots,
                                                 const char *userName, const char *homeDir, int32_t type, int32_t from,
                                                 int32_t to, const char *sortColumn, int32_t descending, int32_t limit,
                                                 int32_t offset, ErrorInfo *err);

/**
 * Counts the snapshots of home folders that match a filter.
 * @param qbdb     Handle.
 * @param db       Connection.
 * @param userName Only snapshots of this user; null for all. What is counted is what a listing shows.
 * @param homeDir  Only snapshots of users whose home folder this is now; null for all.
 * @param type     Only this type; any number but 1, 2 and 3 stands for all three.
 * @param from     Only snapshots taken then or later, in @unit{seconds since the epoch}.
 * @param to       Only snapshots taken then or earlier, in @unit{seconds since the epoch}; 0: no bound.
 * @param count    Out: how many there are. Not written on failure.
 * @param err      Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure, names too long to search for.
 */
QBOBJ_API uint32_t qbobj_getHfSnapshotCollectionCount(qbdb_t *qbdb, sqlite3 *db, const char *userName,
                                                      const char *homeDir, int32_t type, int32_t from, int32_t to,
                                                      int32_t *count, ErrorInfo *err);

/**
 * Adds snapshots of home folders to the catalogue: the whole chain or, after a failure, none of it. Neither the user
 * nor the folder is looked up.
 * @param qbdb     Handle.
 * @param db       Connection.
 * @param snapshot In, out: the first of a chain, null for none; as for qbobj_addSnapshot.
 * @param err      Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 8 no user name, home folder or snapshot name.
 */
QBOBJ_API uint32_t qbobj_addHfSnapshot(qbdb_t *qbdb, sqlite3 *db, HfSnapshot *snapshot, ErrorInfo *err);

/**
 * Removes snapshots of a home folder from the catalogue.
 * @param qbdb         Handle.
 * @param db           Connection.
 * @param userName     Not looked at: the folder alone counts. May be null.
 * @param homeDir      Path of the home folder as it was when the snapshots were added.
 * @param deleteNewer  Which ones, as for qbobj_deleteSnapshot.
 * @param snapshotName Name of a snapshot; may be null but for 2.
 * @param time         @unit{seconds since the epoch,Seconds since the epoch}; counts for 1 and 3.
 * @param err          Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure, no snapshotName with 2, or a path too long to be looked for; 6 there
 *         was nothing to remove.
 */
QBOBJ_API uint32_t qbobj_deleteHfSnapshot(qbdb_t *qbdb, sqlite3 *db, const char *userName, const char *homeDir,
                                          int32_t deleteNewer, const char *snapshotName, int32_t time, ErrorInfo *err);

/**
 * Reads when snapshots of all home folders are taken.
 * @param qbdb     Handle.
 * @param db       Connection.
 * @param schedule Out: the schedule; untouched when there is none. TemporaryDisable is 0.
 * @param err      Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_getHfSnapshotSchedule(qbdb_t *qbdb, sqlite3 *db, Schedule *schedule, ErrorInfo *err);

/**
 * Sets when snapshots of all home folders are taken, in place of what was set before.
 * @param qbdb     Handle.
 * @param db       Connection.
 * @param schedule The schedule, every field but TemporaryDisable; nothing is checked.
 * @param err      Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_addHfSnapshotSchedule(qbdb_t *qbdb, sqlite3 *db, Schedule *schedule, ErrorInfo *err);

/**
 * Changes when snapshots of all home folders are taken; a missing schedule is made first, with its defaults.
 * @param qbdb     Handle.
 * @param db       Connection.
 * @param schedule Enabled is always written, a text unless it is null, another number unless it is 0: those cannot be
 *                 set back to 0 here. What does not fit in an assignment list of 511 bytes is left out.
 * @param err      Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_modifyHfSnapshotSchedule(qbdb_t *qbdb, sqlite3 *db, Schedule *schedule, ErrorInfo *err);

/**
 * Lists clones of snapshots.
 * @param qbdb               Handle.
 * @param db                 Connection.
 * @param parentSnapshotName Only clones of a snapshot of this name; null for all.
 * @param parentzfsName      Only clones of this parent, as it was named when the clone was added; null for all.
 * @param clones             Out: the clones are appended. After a lack of memory those read so far stay in the list.
 * @param err                Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure, names too long to search for.
 */
QBOBJ_API uint32_t qbobj_getSnapshotClones(qbdb_t *qbdb, sqlite3 *db, const char *parentSnapshotName,
                                           const char *parentzfsName, SnapshotCloneCollection *clones, ErrorInfo *err);

/**
 * Records a clone of a snapshot. The names are stored as they are given.
 * @param qbdb               Handle.
 * @param db                 Connection.
 * @param clonedzfsName      Name of the clone.
 * @param parentSnapshotName Name of the snapshot.
 * @param parentzfsName      Name of the share that the snapshot is of.
 * @param err                Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_addSnapshotClone(qbdb_t *qbdb, sqlite3 *db, const char *clonedzfsName,
                                          const char *parentSnapshotName, const char *parentzfsName, ErrorInfo *err);

/**
 * Forgets clones: those of a snapshot when both its names are given, else the clone of a name, else all clones of a
 * parent. Forgetting what is not there succeeds.
 * @param qbdb               Handle.
 * @param db                 Connection.
 * @param clonedzfsName      Name of the clone; may be null.
 * @param parentSnapshotName Name of the snapshot; may be null, and counts only together with the parent.
 * @param parentzfsName      Name of the parent; may be null.
 * @param err                Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure, names too long to be looked for, or none of the three choices given.
 */
QBOBJ_API uint32_t qbobj_deleteSnapshotClone(qbdb_t *qbdb, sqlite3 *db, const char *clonedzfsName,
                                             const char *parentSnapshotName, const char *parentzfsName,
                                             ErrorInfo *err);

/* ---- Subvolumes ---------------------------------------------------------------------------------- */

/*
 * What the btrfs tool, found by the PATH of the process, tells of a volume that is mounted at "/" and its name. No
 * shell sees the name. A volume of which the tool tells nothing has no subvolumes: these operations do not fail but for
 * a lack of memory. A path is read up to its first blank.
 */

/**
 * Lists all subvolumes of a volume, snapshots included, and last the volume's root.
 * @param qbdb       Handle.
 * @param db         Connection; not used.
 * @param volumeName Name of the volume.
 * @param subvolumes Out: the subvolumes are appended, each with its path as key word.
 * @param err        Out: error record, not null.
 * @return 0; 2 no memory.
 */
QBOBJ_API uint32_t qbobj_getSubvolumeFullCollection(qbdb_t *qbdb, sqlite3 *db, const char *volumeName,
                                                    SubvolumeCollection *subvolumes, ErrorInfo *err);

/**
 * Lists the snapshots among the subvolumes of a volume: those that cannot be written to.
 * @param qbdb       Handle.
 * @param db         Connection; not used.
 * @param volumeName Name of the volume.
 * @param subvolumes Out: the subvolumes are appended, each with its path as key word.
 * @param err        Out: error record, not null.
 * @return 0; 2 no memory.
 */
QBOBJ_API uint32_t qbobj_getSubvolumeSnapshotCollection(qbdb_t *qbdb, sqlite3 *db, const char *volumeName,
                                                        SubvolumeCollection *subvolumes, ErrorInfo *err);

/**
 * Lists the subvolumes of a volume that are no snapshots, and last the volume's root.
 * @param qbdb       Handle.
 * @param db         Connection; not used.
 * @param volumeName Name of the volume.
 * @param subvolumes Out: the subvolumes are appended, each with its path as key word.
 * @param err        Out: error record, not null.
 * @return 0; 2 no memory.
 */
QBOBJ_API uint32_t qbobj_getSubvolumeDataCollection(qbdb_t *qbdb, sqlite3 *db, const char *volumeName,
                                                    SubvolumeCollection *subvolumes, ErrorInfo *err);

/* ---- Health -------------------------------------------------------------------------------------- */

/*
 * The latest readings of disks, enclosure sensors and UPS units, as monitors elsewhere take and store them. Writers
 * report a failed statement as 8, readers as 5.
 */

/**
 * Lists the health of the disks that the appliance knows.
 * @param qbdb   Handle.
 * @param db     Connection.
 * @param health Out: the disks are appended, with the key word "controller-" and the controller's number; ZpoolState
 *               is "UNKNOWN" while no pool has spoken of the disk. Not written on failure.
 * @param err    Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 6 no disk has a reading.
 */
QBOBJ_API uint32_t qbobj_getDiskHealthCollection(qbdb_t *qbdb, sqlite3 *db, DiskHealthCollection *health,
                                                 ErrorInfo *err);

/**
 * Stores readings of disks in place of earlier ones: the whole chain or, after a failure, none of it.
 * @param qbdb   Handle.
 * @param db     Connection.
 * @param health The first of a chain, null for none. @by{DiskId} names the disk; Controller and Channel are
 *               not looked at.
 * @param err    Out: error record, not null.
 * @return 0; 2 no memory; 8 database failure, or no DiskId.
 */
QBOBJ_API uint32_t qbobj_setDiskHealth(qbdb_t *qbdb, sqlite3 *db, DiskHealth *health, ErrorInfo *err);

/**
 * Lists the enclosures that have a port with their sensors.
 * @param qbdb   Handle.
 * @param db     Connection.
 * @param health Out: the enclosures are appended, with the key word "controller-" and the controller's number. Not
 *               written on failure.
 * @param err    Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 6 there is no enclosure, or one of them has no sensors.
 */
QBOBJ_API uint32_t qbobj_getEnclosureHealthCollection(qbdb_t *qbdb, sqlite3 *db, EnclosureHealthCollection *health,
                                                      ErrorInfo *err);

/**
 * Reads the sensors of one enclosure. The model's specification says which there are: one never measured has an empty
 * name and device and values of 0.
 * @param qbdb   Handle.
 * @param db     Connection.
 * @param health In, out: @by{Controller} tells which; the sensors are appended to Health and the key word is set.
 *               Nothing is written on failure.
 * @param err    Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 6 the enclosure has no sensors.
 */
QBOBJ_API uint32_t qbobj_getEnclosureHealth(qbdb_t *qbdb, sqlite3 *db, EnclosureHealth *health, ErrorInfo *err);

/**
 * Stores a reading of each given sensor of an enclosure: the value becomes the latest, the three before move back. A
 * sensor read for the first time has had this value always.
 * @param qbdb   Handle.
 * @param db     Connection.
 * @param health @by{Controller}, and of each sensor @by{Health.Name}, @by{Health.DevId} and Value; one without Name or
 *               DevId is passed over.
 * @param err    Out: error record, not null.
 * @return 0; 2 no memory; 8 database failure.
 */
QBOBJ_API uint32_t qbobj_setEnclosureHealth(qbdb_t *qbdb, sqlite3 *db, EnclosureHealth *health, ErrorInfo *err);

/**
 * Stores readings to test with.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param path A regular file of at most a mebibyte with a reading on each line, "controller,name,device,value", name
 *             and device of at most 31 bytes, anything after the value ignored; it is read up to the first line of
 *             another form. Null: each sensor never measured gets the middle of its limits instead.
 * @param err  Out: error record, not null.
 * @return 0; 2 no memory; 8 database failure, or the file cannot be read.
 */
QBOBJ_API uint32_t qbobj_setEnclosureHealthForTest(qbdb_t *qbdb, sqlite3 *db, const char *path, ErrorInfo *err);

/**
 * Lists the configured UPS units with their latest readings, ready for display: "?" stands for what is not known,
 * blanks in the status become underscores, charge, run time and voltage end in " %", " min" and " V".
 * @param qbdb   Handle.
 * @param db     Connection.
 * @param health Out: the units are appended, with the key word "name@host". Not written on failure.
 * @param err    Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_getUpsHealthCollection(qbdb_t *qbdb, sqlite3 *db, UpsHealthCollection *health,
                                                ErrorInfo *err);

/**
 * Stores readings of UPS units in place of earlier ones: the whole chain or, after a failure, none of it.
 * @param qbdb   Handle.
 * @param db     Connection.
 * @param health The first of a chain, null for none. @by{UpsName} and @by{ServerHost} name the unit; UpsModel is
 *               not looked at.
 * @param err    Out: error record, not null.
 * @return 0; 2 no memory; 8 database failure, or no UpsName or ServerHost.
 */
QBOBJ_API uint32_t qbobj_setUpsHealth(qbdb_t *qbdb, sqlite3 *db, UpsHealth *health, ErrorInfo *err);

/* ---- iSCSI ----------------------------------------------------------------------------------------- */

/**
 * Lists the LUN groups by name, case ignored.
 * @param qbdb   Handle.
 * @param db     Connection.
 * @param groups Out: the groups, appended to the record's list.
 * @param err    Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure. The list stays as it is on failure.
 */
QBOBJ_API uint32_t qbobj_getLunGroupCollection(qbdb_t *qbdb, sqlite3 *db, LunGroupCollection *groups, ErrorInfo *err);

/**
 * Reads one LUN group.
 * @param qbdb  Handle.
 * @param db    Connection.
 * @param group In: @by{Name}. Out: everything; text without a value is null, the link is left alone.
 * @param err   Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 6 no such group. The record stays as it is on failure.
 */
QBOBJ_API uint32_t qbobj_getLunGroup(qbdb_t *qbdb, sqlite3 *db, LunGroup *group, ErrorInfo *err);

/**
 * Row id of a LUN group. The error record stays empty.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param name Name of the group.
 * @param err  Out: error record, not null.
 * @return The row id; -1 (0xFFFFFFFF) when there is no such group or it cannot be read.
 */
QBOBJ_API uint32_t qbobj_getLunGroupId(qbdb_t *qbdb, sqlite3 *db, const char *name, ErrorInfo *err);

/**
 * Adds a LUN group. Only the first element of a list is added.
 * @param qbdb  Handle.
 * @param db    Connection.
 * @param group The group; null is refused with 8.
 * @param err   Out: error record, not null.
 * @return 0; 5 database failure, no Name, or one that is in use; 8 no group.
 */
QBOBJ_API uint32_t qbobj_addLunGroup(qbdb_t *qbdb, sqlite3 *db, LunGroup *group, ErrorInfo *err);

/**
 * Changes a LUN group: everything but its name is written, null text too. An unknown group is no error.
 * @param qbdb  Handle.
 * @param db    Connection.
 * @param group The group; null is refused with 8. @by{Name} says which one it is.
 * @param err   Out: error record, not null.
 * @return 0; 5 database failure; 8 no group.
 */
QBOBJ_API uint32_t qbobj_modifyLunGroup(qbdb_t *qbdb, sqlite3 *db, LunGroup *group, ErrorInfo *err);

/**
 * Deletes a LUN group. Its LUNs and its access list stay: they come to life again with a group of the same name. An
 * unknown group is no error.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param name Name of the group; null is refused with 8.
 * @param err  Out: error record, not null.
 * @return 0; 5 database failure; 8 no name.
 */
QBOBJ_API uint32_t qbobj_deleteLunGroup(qbdb_t *qbdb, sqlite3 *db, const char *name, ErrorInfo *err);

/**
 * Lists the initiators by name, case ignored.
 * @param qbdb       Handle.
 * @param db         Connection.
 * @param initiators Out: the initiators, appended to the record's list.
 * @param err        Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure. The list stays as it is on failure.
 */
QBOBJ_API uint32_t qbobj_getInitiatorCollection(qbdb_t *qbdb, sqlite3 *db, InitiatorCollection *initiators,
                                                ErrorInfo *err);

/**
 * Reads one initiator.
 * @param qbdb      Handle.
 * @param db        Connection.
 * @param initiator In: @by{Name}. Out: everything; text without a value is null, the link is left alone.
 * @param err       Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 6 no such initiator. The record stays as it is on failure.
 */
QBOBJ_API uint32_t qbobj_getInitiator(qbdb_t *qbdb, sqlite3 *db, Initiator *initiator, ErrorInfo *err);

/**
 * Row id of an initiator whose name would also do for a share. Names in the usual iSCSI form hold dots and colons and
 * have no id. The error record stays empty.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param name Name of the initiator.
 * @param err  Out: error record, not null.
 * @return The row id; -1 (0xFFFFFFFF) when the name will not do for a share, or there is no such initiator, or it
 *         cannot be read.
 */
QBOBJ_API uint32_t qbobj_getInitiatorId(qbdb_t *qbdb, sqlite3 *db, const char *name, ErrorInfo *err);

/**
 * Adds an initiator. Only the first element of a list is added.
 * @param qbdb      Handle.
 * @param db        Connection.
 * @param initiator The initiator; null is refused with 8.
 * @param err       Out: error record, not null.
 * @return 0; 5 database failure, no Name, or one that is in use; 8 no initiator.
 */
QBOBJ_API uint32_t qbobj_addInitiator(qbdb_t *qbdb, sqlite3 *db, Initiator *initiator, ErrorInfo *err);

/**
 * Changes the CHAP settings of an initiator; a null secret is written, too. An unknown initiator is no error.
 * @param qbdb      Handle.
 * @param db        Connection.
 * @param initiator The initiator; null is refused with 8. @by{Name} says which one it is.
 * @param err       Out: error record, not null.
 * @return 0; 5 database failure; 8 no initiator.
 */
QBOBJ_API uint32_t qbobj_modifyInitiator(qbdb_t *qbdb, sqlite3 *db, Initiator *initiator, ErrorInfo *err);

/**
 * Deletes an initiator. The access lists that name it keep the name; qbobj_deleteIniFromLunGroupAccessList takes it
 * out. An unknown initiator is no error.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param name Name of the initiator; null is refused with 8.
 * @param err  Out: error record, not null.
 * @return 0; 5 database failure; 8 no name.
 */
QBOBJ_API uint32_t qbobj_deleteInitiator(qbdb_t *qbdb, sqlite3 *db, const char *name, ErrorInfo *err);

/**
 * Reads one LUN.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param lun  In: @by{Name}. Out: everything; text without a value is null, the link is left alone.
 * @param err  Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 6 no such LUN. The record stays as it is on failure.
 */
QBOBJ_API uint32_t qbobj_getLun(qbdb_t *qbdb, sqlite3 *db, Lun *lun, ErrorInfo *err);

/**
 * Row id of a LUN whose name would also do for a share. The error record stays empty.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param name Name of the LUN.
 * @param err  Out: error record, not null.
 * @return The row id; -1 (0xFFFFFFFF) when the name will not do for a share, or there is no such LUN, or it cannot be
 *         read.
 */
QBOBJ_API uint32_t qbobj_getLunId(qbdb_t *qbdb, sqlite3 *db, const char *name, ErrorInfo *err);

/**
 * Adds a LUN. Only the first element of a list is added.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param lun  The LUN; null is refused with 8. Neither its group nor its number is looked at.
 * @param err  Out: error record, not null.
 * @return 0; 5 database failure, no Name, or one that is in use; 8 no LUN.
 */
QBOBJ_API uint32_t qbobj_addLun(qbdb_t *qbdb, sqlite3 *db, Lun *lun, ErrorInfo *err);

/**
 * Deletes a LUN. An unknown one is no error.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param name Name of the LUN; null is refused with 8.
 * @param err  Out: error record, not null.
 * @return 0; 5 database failure; 8 no name.
 */
QBOBJ_API uint32_t qbobj_deleteLun(qbdb_t *qbdb, sqlite3 *db, const char *name, ErrorInfo *err);

/**
 * Reads which initiators a LUN group admits, each once.
 * @param qbdb       Handle.
 * @param db         Connection.
 * @param lunGroup   Name of the group; null is refused with 8. An unknown group admits none.
 * @param initiators Out: the initiators' names, in no order, appended to the record's list. Nothing else of them is
 *                   filled: they need not be known as initiators.
 * @param err        Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 8 no group. The list stays as it is on failure.
 */
QBOBJ_API uint32_t qbobj_getLunGroupAccessList(qbdb_t *qbdb, sqlite3 *db, const char *lunGroup,
                                               InitiatorCollection *initiators, ErrorInfo *err);

/**
 * Admits an initiator to a LUN group. Neither needs to exist, and admitting it again changes nothing that a reader
 * sees.
 * @param qbdb      Handle.
 * @param db        Connection.
 * @param lunGroup  Name of the group; null is refused with 8.
 * @param initiator Name of the initiator; null is refused with 8.
 * @param err       Out: error record, not null.
 * @return 0; 5 database failure; 8 no group or no initiator.
 */
QBOBJ_API uint32_t qbobj_addLunGroupAccessList(qbdb_t *qbdb, sqlite3 *db, const char *lunGroup, const char *initiator,
                                               ErrorInfo *err);

/**
 * Empties the access list of a LUN group.
 * @param qbdb     Handle.
 * @param db       Connection.
 * @param lunGroup Name of the group; null is refused with 8. An unknown one is no error.
 * @param err      Out: error record, not null.
 * @return 0; 5 database failure; 8 no group.
 */
QBOBJ_API uint32_t qbobj_deleteLunGroupAccessList(qbdb_t *qbdb, sqlite3 *db, const char *lunGroup, ErrorInfo *err);

/**
 * Takes an initiator out of the access lists of all LUN groups.
 * @param qbdb      Handle.
 * @param db        Connection.
 * @param initiator Name of the initiator; null is refused with 8. An unknown one is no error.
 * @param err       Out: error record, not null.
 * @return 0; 5 database failure; 8 no initiator.
 */
QBOBJ_API uint32_t qbobj_deleteIniFromLunGroupAccessList(qbdb_t *qbdb, sqlite3 *db, const char *initiator,
                                                         ErrorInfo *err);

#ifdef __cplusplus
}
#endif

#endif
/* SPDX-License-Identifier: Apache-2.0 */
