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

/** The database key of a row, where nothing else of it matters. */
struct ResourceId {
    struct ResourceId *next; /**< Next element of the list, or null. */
    int32_t resource_id;     /**< Database key, @range{1,2147483647}. */
};

/** The configuration of a network interface; bringing it into force is another program's business. */
struct NetworkInterface {
    struct NetworkInterface *next; /**< Next element of the list, or null. */
    const char *key;      /**< Key word: the same as Name; filled by readers, not looked at by others. */
    const char *Name;     /**< Unique name, "eth0": 1 to 16 letters, digits, "_", "-", "." and blanks, the first
                               a letter or digit; case counts. */
    const char *Mac;      /**< Hardware address, six hexadecimal groups of one or two digits joined by ":". */
    const char *Protocol; /**< How the interface gets its address ("dhcp", "static", …); stored as given. */
    const char *IP;       /**< IPv4 address in dotted form, or "". */
    const char *DNS1;     /**< First name server, IPv4 address in dotted form, or "". */
    const char *DNS2;     /**< Second name server, IPv4 address in dotted form, or "". */
    const char *Gateway;  /**< Router, IPv4 address in dotted form, or "". */
    const char *Subnet;   /**< Network mask; stored as given when the interface is added, never changed. */
};

/** One entry of the system log. */
struct LogEntry {
    struct LogEntry *next;      /**< Next element of the list, or null. */
    int32_t LogId;              /**< Number of the entry; later entries have higher ones. */
    int32_t TimeStamp;          /**< When it happened, in @unit{seconds since the epoch}. */
    const char *Severity;       /**< A QBLOG_SEVERITY_ word. */
    const char *Category;       /**< A QBLOG_CATEGORY_ word, or "apps". */
    const char *MessageTag;     /**< Name of the message's translatable text, "LOGMSG_...". */
    const char *MessageArgsXml; /**< The message's arguments as XML text, or null. */
};

/** Which entries of the system log to read or delete. All zero: all entries, oldest first. */
struct LogQuery {
    int32_t limit;           /**< Most entries to read; 0 or below: no limit. */
    int32_t offset;          /**< Entries to skip first; counts only together with a limit. */
    int32_t order;           /**< Non-zero: newest first, that is by falling number. */
    int32_t timestamp_min;   /**< Only entries after it, in @unit{seconds since the epoch}; 0: no bound. */
    int32_t timestamp_max;   /**< Only entries before it, in @unit{seconds since the epoch}; 0: no bound. */
    const char *severity;    /**< Least severity: "info", "notice", "warn...", "err...", "crit...", "alert" or
                                  "emerg", case ignored; any other word and null select all. */
    const char *severity_in; /**< Severities as a list of words in single quotes with commas between ("'err','crit'"),
                                  at most 241 bytes; null or empty for any. Not for deleting. */
    const char *category_in; /**< Categories, as the severities, but also for deleting. */
    const char *msg_tag;     /**< Exact message tag, at most 245 bytes, an apostrophe counting twice; null or empty for
                                  any. Not for deleting. */
};

/** An uninterruptible power supply: its configuration, what it told of itself, its last reading. */
struct UpsConfig {
    struct UpsConfig *next; /**< Next element of the list, or null. */
    const char *key;        /**< Key word, the resource id "name@host": addresses the unit when it is changed;
                                 filled by readers and by adding. */
    const char *Port;       /**< "auto" for a local unit, else the IPv4 address of the unit or its server. */
    const char *Type;       /**< "local" (attached here), "remote" (another server's) or "snmp". */
    int32_t Enabled;        /**< 1 when the unit is watched; at most 6 are. */
    const char *Name;       /**< 1 to 15 letters and digits, the first a letter. */
    const char *Description; /**< Free text. */
    const char *UpsModel;    /**< Model, learnt from the device. */
    const char *UpsMfr;      /**< Manufacturer, learnt from the device. */
    const char *UpsMfrDate;  /**< Date of manufacture, learnt from the device. */
    const char *UpsSerial;   /**< Serial number, learnt from the device. */
    int32_t ShutdownThreshold;  /**< Battery charge in @unit{per cent} at which the appliance shuts down. */
    int32_t Share_enabled;      /**< Local units: 1 when the appliance lets other machines watch the unit. */
    const char *List1;          /**< Local units: address on which the appliance listens for them. */
    const char *SnmpCommunity;  /**< SNMP units: community. */
    const char *SnmpMibs;       /**< SNMP units: name of the MIB, "auto" or a driver's. */
    const char *RemoteUserName; /**< Remote units: user at the other server. */
    const char *RemotePassword; /**< Remote units: that user's password, stored in clear. */
    const char *UpsStatus;      /**< Out: last reading, words joined by "_"; "?" when there is none. */
    const char *UpsAlarm;       /**< Out: last alarm; "?" when there is none. */
    const char *BatteryCharge;  /**< Charge in @unit{per cent}, as text. */
    int32_t BatteryRunTime;     /**< @unit{seconds,Seconds} that the battery lasts. */
    const char *BatteryVoltage; /**< @unit{volts,Volts}, as text. */
};

/** List of network interfaces. */
struct NetworkInterfaceCollection {
    struct NetworkInterface *NetworkInterface; /**< First interface, or null. */
};

/** List of uninterruptible power supplies. */
struct UpsConfigCollection {
    struct UpsConfig *UpsConfig; /**< First unit, or null. */
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
 * @return 0; 2 no memory; 5 database failure, or a condition of the query is too long; 8 `severity_in` or `category_in`
 *         is not a list of quoted words. The outputs are not written on failure.
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
 * @return 0; 2 no memory; 5 database failure, or a condition of the query is too long; 8 `category_in` is not a list of
 *         quoted words.
 */
QBOBJ_API uint32_t qbobj_deleteLog(qbdb_t *qbdb, sqlite3 *db, LogQuery *query, ErrorInfo *err);

/**
 * Cuts the log down to its newest entries: removes what is older than the entry that follows the
 * `keep` newest. That entry stays, and so does everything of its second. A log of `keep` entries or
 * fewer stays whole; with 0 or below the newest second stays.
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
 * @param time     @unit{seconds since the epoch,Seconds since the epoch}; below 1: now.
 * @param severity A QBLOG_SEVERITY_ word, case ignored; null for @default{"info"}.
 * @param category A QBLOG_CATEGORY_ word or "apps", case ignored; null for @default{"misc"}.
 * @param msgTag   Tag of the message, beginning with "LOGMSG_"; null for @default{"LOGMSG_UNKNOWN"}.
 * @param argsXml  Arguments of the message as XML text; may be null.
 * @param err      Out: error record, not null.
 * @return 0; 5 database failure; 8 unknown severity or category, or a bad tag.
 */
QBOBJ_API uint32_t qbobj_addLog(qbdb_t *qbdb, sqlite3 *db, int32_t time, const char *severity, const char *category,
                                const char *msgTag, const char *argsXml, ErrorInfo *err);

/* ---- Network interfaces -------------------------------------------------------------------------- */

/**
 * Lists the network interfaces by name, case ignored.
 * @param qbdb       Handle.
 * @param db         Connection.
 * @param interfaces Out: the interfaces, appended to the record's list.
 * @param err        Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure. The list stays as it is on failure.
 */
QBOBJ_API uint32_t qbobj_getNetworkInterfaceCollection(qbdb_t *qbdb, sqlite3 *db,
                                                       NetworkInterfaceCollection *interfaces, ErrorInfo *err);

/**
 * Reads one network interface.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param nif  In: @by{Name}. Out: everything; fields without a value are null, the link is left alone.
 * @param err  Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 6 no such interface; 8 no Name. The record stays as it is
 *         on failure.
 */
QBOBJ_API uint32_t qbobj_getNetworkInterface(qbdb_t *qbdb, sqlite3 *db, NetworkInterface *nif, ErrorInfo *err);

/**
 * Adds a network interface.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param nif  The interface. Name and Mac are required; IP, DNS1, DNS2 and Gateway may be null or empty.
 *             Protocol and Subnet are stored unchecked. Only the first element of a list is added.
 * @param err  Out: error record, not null.
 * @return 0; 5 database failure; 8 a bad field, or a Name already in use.
 */
QBOBJ_API uint32_t qbobj_addNetworkInterface(qbdb_t *qbdb, sqlite3 *db, NetworkInterface *nif, ErrorInfo *err);

/**
 * Deletes a network interface.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param name Its name; null is refused with 8.
 * @param err  Out: error record, not null.
 * @return 0; 5 database failure; 6 no such interface; 8 no name.
 */
QBOBJ_API uint32_t qbobj_deleteNetworkInterface(qbdb_t *qbdb, sqlite3 *db, const char *name, ErrorInfo *err);

/**
 * Changes a network interface: those of Mac, Protocol, IP, DNS1, DNS2 and Gateway that are not null. The
 * subnet cannot be changed: delete the interface and add it again. An address cannot be emptied either.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param nif  @by{Name} addresses the interface; the other fields are the new values. When no interface has
 *             the Name nothing happens.
 * @param err  Out: error record, not null.
 * @return 0, also when nothing was given or found; 2 no memory; 5 database failure, or values of more than
 *         some 450 bytes together; 8 no Name, or a bad field.
 */
QBOBJ_API uint32_t qbobj_modifyNetworkInterface(qbdb_t *qbdb, sqlite3 *db, NetworkInterface *nif, ErrorInfo *err);

/* ---- Uninterruptible power supplies ---------------------------------------------------------------- */

/**
 * Lists the power supply units with their last status.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param ups  Out: the units, appended to the record's list. Text without a value is null, but UpsStatus and UpsAlarm
 *             are "?" for a unit that was never read. BatteryCharge, BatteryRunTime and BatteryVoltage are not
 *             filled; qbobj_getUpsHealthCollection has them.
 * @param err  Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure. The list stays as it is on failure.
 */
QBOBJ_API uint32_t qbobj_getUpsConfigCollection(qbdb_t *qbdb, sqlite3 *db, UpsConfigCollection *ups, ErrorInfo *err);

/**
 * Reads one power supply unit.
 * @param qbdb       Handle.
 * @param db         Connection.
 * @param resourceId Its resource id, "name@host".
 * @param ups        Out: the unit, as in the list; the link is left alone. An unknown resource id is no error and
 *                   leaves the record as it is: give a cleared one and look at its key word.
 * @param err        Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure. The record stays as it is on failure.
 */
QBOBJ_API uint32_t qbobj_getUpsConfigByNameAtHost(qbdb_t *qbdb, sqlite3 *db, const char *resourceId, UpsConfig *ups,
                                                  ErrorInfo *err);

/**
 * Adds a power supply unit. No unit is added, not even one that is switched off, while six are switched on.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param ups  In: Name, Type, Enabled, Description and ShutdownThreshold; of a local unit also Share_enabled and
 *             List1, of an SNMP unit its address as Port, SnmpCommunity (a name like the unit's) and SnmpMibs, of a
 *             remote unit the server's address as Port, RemoteUserName and RemotePassword. Out: the key word.
 * @param err  Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 8 a bad field; 806 Name too long; 825 a bad character in Name;
 *         826 six units are switched on already.
 */
QBOBJ_API uint32_t qbobj_addUpsConfig(qbdb_t *qbdb, sqlite3 *db, UpsConfig *ups, ErrorInfo *err);

/**
 * Deletes a power supply unit. Deleting a local one also stops sharing it with other machines.
 * @param qbdb       Handle.
 * @param db         Connection.
 * @param resourceId Its resource id: the name, an at sign, the host. Null is refused with 8.
 * @param err        Out: error record, not null.
 * @return 0; 5 database failure; 8 no resource id, or no such unit.
 */
QBOBJ_API uint32_t qbobj_deleteUpsConfig(qbdb_t *qbdb, sqlite3 *db, const char *resourceId, ErrorInfo *err);

/**
 * Changes the configuration of the power supply. It is made for an appliance with one unit: the key word says which
 * unit, and thereby the type, is meant, but the values are written to every unit, the name included.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param ups  The key word, @by{key}; Type, the stored one or null; Name, which is checked as for a new unit; and all
 *             fields of that type as in adding, those that are null emptied. The address of a unit stays. An SNMP unit
 *             is switched on whatever Enabled says. A remote unit cannot be changed: after its fields have been checked
 *             the call always fails with 5; delete the unit and add it again.
 * @param err  Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 8 no such unit, or a bad field; 806 Name too long; 825 a bad character
 *         in Name.
 */
QBOBJ_API uint32_t qbobj_setUpsConfig(qbdb_t *qbdb, sqlite3 *db, UpsConfig *ups, ErrorInfo *err);

/**
 * Stores what a power supply unit tells of itself.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param ups  The key word, @by{key}; UpsModel, UpsMfr, UpsMfrDate and UpsSerial, those that are null emptied;
 *             ShutdownThreshold, which is not written for a remote unit.
 * @param err  Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 8 no key word, or no such unit.
 */
QBOBJ_API uint32_t qbobj_setUpsInfo(qbdb_t *qbdb, sqlite3 *db, UpsConfig *ups, ErrorInfo *err);

#ifdef __cplusplus
}
#endif

#endif
/* SPDX-License-Identifier: Apache-2.0 */
