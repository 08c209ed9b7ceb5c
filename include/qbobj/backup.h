/**
 * @file qbobj/backup.h
 * Backup jobs, backup targets and button jobs.
 */
#ifndef QBOBJ_BACKUP_H
#define QBOBJ_BACKUP_H

#include "qbobj/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Where a backup job reads or writes. */
struct BackupJob_SourceOrDestination {
    const char *Type;                /**< "share", "home", "volume", "remote", "usb" or "timemachine". */
    const char *ShareNameOrProtocol; /**< Share, user or "*", volume, protocol, or USB port, as the type asks. */
    const char *Path;                /**< Path there. */
    const char *Login;               /**< Account on a remote host. */
    const char *Password;            /**< Its password in clear. */
    int32_t Port;                    /**< TCP port of a remote host. */
    int32_t Ejectable;               /**< Out: 1 when the device can be ejected. */
    int32_t Eject;                   /**< 1 ejects the USB device after the job. */
};

/** When a backup job runs. */
struct BackupJob_Schedule {
    int32_t Enabled;       /**< 1 when it runs. */
    int32_t Frequency;     /**< How often. */
    int32_t Start;         /**< First hour of the day. */
    int32_t End;           /**< Last hour of the day. */
    const char *DayOfWeek; /**< Days of the week as text. */
};

/** How a backup job works. */
struct BackupJob_Option {
    const char *FullBackupFrequency; /**< How often everything is copied. */
    int32_t RemovePreviousBackup;    /**< 1 removes the backup before. */
    int32_t ChownToShareOwner;       /**< 1 gives files to the share's owner. */
    int32_t RsyncOption;             /**< Options of rsync as bits. */
    const char *RsyncExclude;        /**< Patterns that rsync leaves out. */
    int32_t EmailThisToAlertEmail;   /**< 1 mails the result to the alert address. */
    int32_t MiscOption;              /**< Further options as bits. */
    const char *WolAddress;          /**< Address for wake-on-LAN. */
};

/** A backup job. */
struct BackupJob {
    struct BackupJob *next;                            /**< Next element of the list, or null. */
    int32_t resource_id;                               /**< Database key. */
    int32_t JobId;                                     /**< Database key. */
    const char *JobName;                               /**< Name of the job. */
    struct BackupJob_SourceOrDestination *Source;      /**< Where it reads. */
    struct BackupJob_SourceOrDestination *Destination; /**< Where it writes. */
    struct BackupJob_Schedule *Schedule;               /**< When it runs. */
    struct BackupJob_Option *Option;                   /**< How it works. */
    int32_t Changed;                                   /**< Out, on modify: 1 when the stored row really changed. */
};

/** A list of backup jobs. */
struct BackupJobCollection {
    struct BackupJob *BackupJob; /**< Head of the list, null when empty. */
};

/** A possible source or destination. */
struct BackupTarget {
    struct BackupTarget *next;       /**< Next element of the list, or null. */
    const char *Type;                /**< Kind, as in a job. */
    const char *UsbSubType;          /**< Kind of USB device. */
    const char *ShareNameOrProtocol; /**< Name, as in a job. */
    const char *Path;                /**< Path there. */
    int32_t Id;                      /**< Database id. */
    int32_t Ejectable;               /**< 1 when the device can be ejected. */
};

/** Possible sources and destinations. */
struct BackupTargetCollection {
    struct BackupTarget *AvailableSourceTarget;      /**< Head of the list of sources. */
    struct BackupTarget *AvailableDestinationTarget; /**< Head of the list of destinations. */
};

/** A job that the front button starts. */
struct BackupButtonJob {
    struct BackupButtonJob *next; /**< Next element of the list, or null. */
    int32_t JobId;                /**< Id of the job. */
    const char *JobName;          /**< Name of the job. */
};

/** The jobs that the front button starts. It is a list element itself. */
struct BackupButtonJobCollection {
    struct BackupButtonJobCollection *next; /**< Next element of the list, or null. */
    struct BackupButtonJob *Jobs;           /**< Head of the list, null when empty. */
};

#ifdef __cplusplus
}
#endif

#endif
