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

/** BackupJob_SourceOrDestination. */
struct BackupJob_SourceOrDestination {
    const char *Type; /**< */
    const char *ShareNameOrProtocol; /**< */
    const char *Path; /**< */
    const char *Login; /**< */
    const char *Password; /**< */
    int32_t Port; /**< */
    int32_t Ejectable; /**< */
    int32_t Eject; /**< */
};

/** BackupJob_Schedule. */
struct BackupJob_Schedule {
    int32_t Enabled; /**< */
    int32_t Frequency; /**< */
    int32_t Start; /**< */
    int32_t End; /**< */
    const char *DayOfWeek; /**< */
};

/** BackupJob_Option. */
struct BackupJob_Option {
    const char *FullBackupFrequency; /**< */
    int32_t RemovePreviousBackup; /**< */
    int32_t ChownToShareOwner; /**< */
    int32_t RsyncOption; /**< */
    const char *RsyncExclude; /**< */
    int32_t EmailThisToAlertEmail; /**< */
    int32_t MiscOption; /**< */
    const char *WolAddress; /**< */
};

/** BackupJob. */
struct BackupJob {
    struct BackupJob *next; /**< Next element of the list, or null. */
    int32_t resource_id; /**< */
    int32_t JobId; /**< */
    const char *JobName; /**< */
    struct BackupJob_SourceOrDestination *Source; /**< */
    struct BackupJob_SourceOrDestination *Destination; /**< */
    struct BackupJob_Schedule *Schedule; /**< */
    struct BackupJob_Option *Option; /**< */
    int32_t Changed; /**< */
};

/** BackupJobCollection. */
struct BackupJobCollection {
    struct BackupJob *BackupJob; /**< */
};

/** BackupTarget. */
struct BackupTarget {
    struct BackupTarget *next; /**< Next element of the list, or null. */
    const char *Type; /**< */
    const char *UsbSubType; /**< */
    const char *ShareNameOrProtocol; /**< */
    const char *Path; /**< */
    int32_t Id; /**< */
    int32_t Ejectable; /**< */
};

/** BackupTargetCollection. */
struct BackupTargetCollection {
    struct BackupTarget *AvailableSourceTarget; /**< */
    struct BackupTarget *AvailableDestinationTarget; /**< */
};

/** BackupButtonJob. */
struct BackupButtonJob {
    struct BackupButtonJob *next; /**< Next element of the list, or null. */
    int32_t JobId; /**< */
    const char *JobName; /**< */
};

/** BackupButtonJobCollection. */
struct BackupButtonJobCollection {
    struct BackupButtonJobCollection *next; /**< Next element of the list, or null. */
    struct BackupButtonJob *Jobs; /**< */
};

/* Operations. */

#ifdef __cplusplus
}
#endif

#endif
