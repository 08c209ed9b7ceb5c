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
    const char *ShareNameOrProtocol; /**< Share; user, or "*" for all homes; volume; protocol ("cifs", "rsync");
                                          USB port ("usb_port_1"): as the type asks. */
    const char *Path;                /**< Path there. With "cifs" and "cifs-ab" it is stored with single slashes. */
    const char *Login;               /**< Account on a remote host. */
    const char *Password;            /**< Its password, stored in clear. When a job is changed, #masked_password keeps
                                          the stored one. */
    int32_t Port;                    /**< TCP port of a remote host. */
    int32_t Ejectable;               /**< Out, in the list: 1 for a USB device or a share on removable media. */
    int32_t Eject;                   /**< 1 ejects the USB device after the job. Read in the list only. */
};

/** When a backup job runs. */
struct BackupJob_Schedule {
    int32_t Enabled;       /**< 1 when it runs. Set to 0, here too, for a job that is given no day of the week. */
    int32_t Frequency;     /**< How often. */
    int32_t Start;         /**< First @unit{hour of the day}. */
    int32_t End;           /**< Last @unit{hour of the day}. */
    const char *DayOfWeek; /**< Days of the week, "Mon,Wed"; case is ignored, unknown words are left out. */
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
    int32_t resource_id;                               /**< Database key; addresses the job when it is 1 or more. */
    int32_t JobId;                                     /**< The same; addresses the job when resource_id does not. */
    const char *JobName;                               /**< Unique name of the job. */
    struct BackupJob_SourceOrDestination *Source;      /**< Where it reads. */
    struct BackupJob_SourceOrDestination *Destination; /**< Where it writes. */
    struct BackupJob_Schedule *Schedule;               /**< When it runs. */
    struct BackupJob_Option *Option;                   /**< How it works. */
    int32_t Changed;                                   /**< Out, on modify: 1 when the stored job really changed. */
};

/** A list of backup jobs. */
struct BackupJobCollection {
    struct BackupJob *BackupJob; /**< Head of the list, null when empty. */
};

/** A possible source or destination. */
struct BackupTarget {
    struct BackupTarget *next;       /**< Next element of the list, or null. */
    const char *Type;                /**< Kind, as in a job. */
    const char *UsbSubType;          /**< Name of the USB connector, "BACKUP_FRONT"; "" for other kinds. */
    const char *ShareNameOrProtocol; /**< Name, as in a job. */
    const char *Path;                /**< Path there; "" for a protocol and for a USB port without a device. */
    int32_t Id;                      /**< Id of the share, user, volume row, protocol or USB port; else 0. */
    int32_t Ejectable;               /**< 1 for a USB port or a share on removable media. */
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

/* ---- Jobs ------------------------------------------------------------------------------------------ */

/**
 * Lists all backup jobs.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param jobs Out: the jobs with their four sub-records, in no order, appended to the record's list. Text without a
 *             value is "", a number 0.
 * @param err  Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure. The list stays as it is on failure.
 */
QBOBJ_API uint32_t qbobj_getBackupJobCollection(qbdb_t *qbdb, sqlite3 *db, BackupJobCollection *jobs, ErrorInfo *err);

/**
 * Reads one backup job.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param job  In: @by{resource_id} or @by{JobId}. Out: everything as in the list, but for Eject and Ejectable of both
 *             sides, which stay 0; the sub-records are new, the link is left alone.
 * @param err  Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure, or an id that is not positive; 6 no such job. The record stays as it is on
 *         failure.
 */
QBOBJ_API uint32_t qbobj_getBackupJob(qbdb_t *qbdb, sqlite3 *db, BackupJob *job, ErrorInfo *err);

/**
 * Adds backup jobs: all of a list, or none. Source and Destination need Type and ShareNameOrProtocol; they must not be
 * the same share, home, volume or USB port nor both remote, and all homes ("*") do not go into one. Null text is
 * stored as "".
 * @param qbdb Handle.
 * @param db   Connection.
 * @param job  The list; null adds nothing. In: everything but the ids. Out: resource_id and JobId, and Enabled when it
 *             was changed; the records before a failing one keep what they were given.
 * @param err  Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 8 something is missing, or the sides do not go together; 807 the name
 *         is in use; 841 the source is the Time Machine store, which is not configured.
 */
QBOBJ_API uint32_t qbobj_addBackupJob(qbdb_t *qbdb, sqlite3 *db, BackupJob *job, ErrorInfo *err);

/**
 * Changes backup jobs: all of a list, or none. A job is written whole, under the rules of adding; only a Password that
 * is #masked_password is left as it is. Fields that together take more than some 2,000 bytes are not all written: what
 * does not fit is left out, field by field in the order of the records, and a line of the log says so. An unknown job
 * is no error.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param job  The list; null changes nothing. In: everything, with @by{resource_id} or @by{JobId}. Out: Changed, and
 *             Enabled when it was changed; the records before a failing one keep what they were given.
 * @param err  Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure, an id that is not positive, or a Start after the End; 8, 807, 841 as in adding.
 */
QBOBJ_API uint32_t qbobj_modifyBackupJob(qbdb_t *qbdb, sqlite3 *db, BackupJob *job, ErrorInfo *err);

/**
 * Deletes backup jobs and takes them off the list of the backup button: all of a list, or none.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param job  The list; null deletes nothing. In: @by{resource_id} or @by{JobId}. Out: JobName where it is null; the
 *             records before a failing one keep what they were given.
 * @param err  Out: error record, not null.
 * @return 0; 5 database failure; 6 no such job; 8 an id that is not positive.
 */
QBOBJ_API uint32_t qbobj_deleteBackupJob(qbdb_t *qbdb, sqlite3 *db, BackupJob *job, ErrorInfo *err);

/**
 * Tells whether there is a backup job with an id. The error record stays empty.
 * @param qbdb  Handle.
 * @param db    Connection.
 * @param jobId Id of the job.
 * @param err   Out: error record, not null.
 * @return 1 there is one; 0 there is none, or that cannot be read.
 */
QBOBJ_API uint32_t qbobj_hasBackupJob(qbdb_t *qbdb, sqlite3 *db, int32_t jobId, ErrorInfo *err);

/* ---- Targets --------------------------------------------------------------------------------------- */

/**
 * Lists what a backup job can read and write.
 * @param qbdb    Handle.
 * @param db      Connection.
 * @param targets Out: both lists, appended to those of the record. Sources are the shares, all homes, single homes
 *                (at most 500), volumes, protocols, USB ports and the Time Machine store, in this order; destinations
 *                the shares, single homes, protocols that can be written, and USB ports. In directory mode the homes
 *                are those of directory users.
 * @param err     Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure. The lists stay as they are on failure.
 */
QBOBJ_API uint32_t qbobj_getBackupTargetCollection(qbdb_t *qbdb, sqlite3 *db, BackupTargetCollection *targets,
                                                   ErrorInfo *err);

/**
 * Name of a USB port for backup, "BACKUP_" and the text on the appliance.
 * @param qbdb        Handle.
 * @param db          Connection.
 * @param usbPortName The port as jobs name it, "usb_port_1"; the port's second controller is known, too.
 * @param subType     Out: the name, in the handle's pool; null for an unknown port. Not written on failure.
 * @param err         Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_getBackupUSBSubType(qbdb_t *qbdb, sqlite3 *db, const char *usbPortName, const char **subType,
                                             ErrorInfo *err);

/* ---- The backup button ----------------------------------------------------------------------------- */

/**
 * Lists the jobs that the button on the front starts, in their order.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param jobs Out: the jobs, appended to the record's list.
 * @param err  Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure. The list stays as it is on failure.
 */
QBOBJ_API uint32_t qbobj_getBackupButtonJobCollection(qbdb_t *qbdb, sqlite3 *db, BackupButtonJobCollection *jobs,
                                                      ErrorInfo *err);

/**
 * Sets the jobs that the button on the front starts; the list so far goes away.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param jobs The jobs by JobId, in their order; an empty list leaves the button without work. Ids are stored without
 *             a look at them; those of no job do not show.
 * @param err  Out: error record, not null.
 * @return 0; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_setBackupButtonJobCollection(qbdb_t *qbdb, sqlite3 *db, BackupButtonJobCollection *jobs,
                                                      ErrorInfo *err);

#ifdef __cplusplus
}
#endif

#endif
/* SPDX-License-Identifier: Apache-2.0 */
