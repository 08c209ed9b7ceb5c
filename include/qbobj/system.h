/**
 * @file qbobj/system.h
 * Network interfaces, the system log, UPS units.
 */
#ifndef QBOBJ_SYSTEM_H
#define QBOBJ_SYSTEM_H

#include "qbobj/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** ResourceId. */
struct ResourceId {
    struct ResourceId *next; /**< Next element of the list, or null. */
    int32_t resource_id; /**< */
};

/** NetworkInterface. */
struct NetworkInterface {
    struct NetworkInterface *next; /**< Next element of the list, or null. */
    const char *key; /**< Key word: the text by which the element is addressed. */
    const char *Name; /**< */
    const char *Mac; /**< */
    const char *Protocol; /**< */
    const char *IP; /**< */
    const char *DNS1; /**< */
    const char *DNS2; /**< */
    const char *Gateway; /**< */
    const char *Subnet; /**< */
};

/** LogEntry. */
struct LogEntry {
    struct LogEntry *next; /**< Next element of the list, or null. */
    int32_t LogId; /**< */
    int32_t TimeStamp; /**< */
    const char *Severity; /**< */
    const char *Category; /**< */
    const char *MessageTag; /**< */
    const char *MessageArgsXml; /**< */
};

/** LogQuery. */
struct LogQuery {
    int32_t limit; /**< */
    int32_t offset; /**< */
    int32_t order; /**< */
    int32_t timestamp_min; /**< */
    int32_t timestamp_max; /**< */
    const char *severity; /**< */
    const char *severity_in; /**< */
    const char *category_in; /**< */
    const char *msg_tag; /**< */
};

/** UpsConfig. */
struct UpsConfig {
    struct UpsConfig *next; /**< Next element of the list, or null. */
    const char *key; /**< Key word: the text by which the element is addressed. */
    const char *Port; /**< */
    const char *Type; /**< */
    int32_t Enabled; /**< */
    const char *Name; /**< */
    const char *Description; /**< */
    const char *UpsModel; /**< */
    const char *UpsMfr; /**< */
    const char *UpsMfrDate; /**< */
    const char *UpsSerial; /**< */
    int32_t ShutdownThreshold; /**< */
    int32_t Share_enabled; /**< */
    const char *List1; /**< */
    const char *SnmpCommunity; /**< */
    const char *SnmpMibs; /**< */
    const char *RemoteUserName; /**< */
    const char *RemotePassword; /**< */
    const char *UpsStatus; /**< */
    const char *UpsAlarm; /**< */
    const char *BatteryCharge; /**< */
    int32_t BatteryRunTime; /**< */
    const char *BatteryVoltage; /**< */
};

/** NetworkInterfaceCollection. */
struct NetworkInterfaceCollection {
    struct NetworkInterface *NetworkInterface; /**< */
};

/** UpsConfigCollection. */
struct UpsConfigCollection {
    struct UpsConfig *UpsConfig; /**< */
};

/* ---- System log --------------------------------------------------------------------------------- */

/**
 * Reads the entries of the system log that match a query.
 * @param qbdb    Handle.
 * @param db      Connection.
 * @param query   Filter, order and page; null for all entries, oldest first.
 * @param entries Out: head of the list; entries are appended to a list that is not empty.
 * @param count   Out: number of entries that match the filter, the page not considered.
 * @param total   Out: number of all entries.
 * @param err     Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure. The outputs are not written on failure.
 */
QBOBJ_API uint32_t qbobj_getLog(qbdb_t *qbdb, sqlite3 *db, LogQuery *query, LogEntry **entries, int32_t *count,
                                int32_t *total, ErrorInfo *err);

/**
 * Deletes log entries. Only the times, the least severity and the categories of the query count; a
 * query that gives none of them empties the log.
 * @param qbdb  Handle.
 * @param db    Connection.
 * @param query The filter; null deletes all entries.
 * @param err   Out: error record, not null.
 * @return 0; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_deleteLog(qbdb_t *qbdb, sqlite3 *db, LogQuery *query, ErrorInfo *err);

/**
 * Cuts the log down to its newest entries. Entries of the same second are kept or go together, so
 * more than `keep` may stay.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param keep Number of entries to keep.
 * @param err  Out: error record, not null.
 * @return 0; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_truncateLog(qbdb_t *qbdb, sqlite3 *db, int32_t keep, ErrorInfo *err);

/**
 * Adds an entry to the system log.
 * @param qbdb     Handle.
 * @param db       Connection.
 * @param time     Seconds since the epoch; below 1: now.
 * @param severity A QBLOG_SEVERITY_ word, case ignored; null for "info".
 * @param category A QBLOG_CATEGORY_ word or "apps", case ignored; null for "misc".
 * @param msgTag   Tag of the message, beginning with "LOGMSG_"; null for "LOGMSG_UNKNOWN".
 * @param argsXml  Arguments of the message as XML text; may be null.
 * @param err      Out: error record, not null.
 * @return 0; 5 database failure; 8 unknown severity or category, or a bad tag.
 */
QBOBJ_API uint32_t qbobj_addLog(qbdb_t *qbdb, sqlite3 *db, int32_t time, const char *severity, const char *category,
                                const char *msgTag, const char *argsXml, ErrorInfo *err);

#ifdef __cplusplus
}
#endif

#endif
