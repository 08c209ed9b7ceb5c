/**
 * @file qbdb.h
 * libqbdb: the appliance's database and support library. It opens the configuration database, runs
 * statements and transactions on it, keeps the log, and answers the look-ups that the object library
 * needs (users, groups, keys, map types, POSIX ids).
 *
 * Conventions:
 * - One handle and its connection belong to one thread at a time.
 * - Statement functions take a format in SQLite's formatting dialect (`%Q %q %d %u %ld %lu %lld %llu
 *   %c %s %%`). A value that stands where SQL allows a value is bound, everything else is formatted
 *   into the text; the prepared statement is kept by the connection and used again.
 * - They return 0 or SQLite's primary result code (19 for a violated constraint), and on failure the
 *   failure text is never null. It lives in the handle's pool.
 * - "The handle's pool" is the request pool when one is open, else the default pool.
 */
#ifndef QBDB_H
#define QBDB_H

#include <apr_hash.h>
#include <apr_pools.h>
#include <sqlite3.h>
#include <stddef.h>
#include <stdint.h>

/** Marks a symbol of the interface: everything else is hidden. */
#define QBDB_API __attribute__((visibility("default")))

#ifdef __cplusplus
extern "C" {
#endif

/** The library's own part of a handle. */
typedef struct qbdb_private qbdb_private;

/** A handle. Callers may set `log_level` at any time and read the pools; the rest is the library's. */
typedef struct qbdb {
    uint32_t log_level;       /**< Log threshold: > 1 errors, > 3 entry and exit traces, > 4 detail; 2
                                   after opening. */
    apr_pool_t *pool;         /**< Default pool, as old as the handle. */
    apr_pool_t *request_pool; /**< Request pool, or null: takes precedence over the default pool. */
    qbdb_private *internal;   /**< Not for callers. */
} qbdb_t;

/** Version of the schema that this library creates and reads. */
#define QBDB_SCHEMA_VERSION 1

/** Milliseconds that a statement waits for another process's lock unless qbdb_set_timeout says otherwise. */
#define QBDB_DEFAULT_TIMEOUT_MS 5000

/** Prepared statements that a connection keeps unless qbdb_set_statement_cache says otherwise: more than all
 * operations together use. One takes some 3 KiB. */
#define QBDB_DEFAULT_STATEMENTS 1024

/** @name How to open */ /** @{ */
#define QBDB_OPEN_EXISTING 0u /**< Read and write a database that exists. */
#define QBDB_OPEN_CREATE 1u   /**< Create a fresh appliance database; the file must not exist or be empty. */
#define QBDB_OPEN_READONLY 2u /**< Read a database that exists. */
/** @} */

/**
 * Opens a database. Nothing is created or changed unless QBDB_OPEN_CREATE is given; a file that is
 * not an appliance database, or one of a newer schema, is refused and left as it is. While a database
 * is open, also for reading, SQLite keeps its -wal and -shm files beside it, with the mode of the database.
 *
 * A file that is created may be read by its owner alone (mode 0600): password hashes are stored in it. An empty
 * file that is there already keeps its mode.
 *
 * With QBDB_OPEN_READONLY a database is read where nothing may be written, too (a backup, a snapshot), as long as no
 * -wal or -journal file lies beside it. It is then read as it stands and must not be changed while it is open.
 * @param path    File name of the database, not null.
 * @param mode    One of the QBDB_OPEN_ values.
 * @param volume  With QBDB_OPEN_CREATE the name of a first volume, or null for none; else ignored.
 * @param qbdb    Out: the handle; null on failure.
 * @param db      Out: the connection, owned by the handle; null on failure.
 * @param text    Out: why it failed, cut to fit; untouched on success; may be null.
 * @param size    Size of `text` in bytes.
 * @return 0, or a SQLite result code (14 cannot open, 26 not an appliance database, 8 the file may not be
 *         written to, 11 damaged, 21 unknown mode, …).
 */
QBDB_API int qbdb_open(const char *path, unsigned mode, const char *volume, qbdb_t **qbdb, sqlite3 **db,
                       char *text, size_t size);

/**
 * Closes the connection and frees the handle with both its pools. An open transaction is rolled back.
 * @param qbdb The handle; null does nothing.
 */
QBDB_API void qbdb_close(qbdb_t *qbdb);

/**
 * Opens the request pool, or empties it when it is open: what a request allocates from now on goes
 * away with the next call of this function or of qbdb_request_end.
 * @param qbdb The handle.
 * @return 0, or 7 when there is no memory for a pool.
 */
QBDB_API int qbdb_request_begin(qbdb_t *qbdb);

/**
 * Closes the request pool and frees what was allocated in it. Harmless when none is open.
 * @param qbdb The handle.
 */
QBDB_API void qbdb_request_end(qbdb_t *qbdb);

/**
 * Sets how long a statement waits for another process's lock.
 * @param qbdb    The handle.
 * @param milliseconds The limit; 0 fails at once.
 */
QBDB_API void qbdb_set_timeout(qbdb_t *qbdb, uint32_t milliseconds);

/**
 * Sets how many prepared statements the connection keeps; the least recently used one goes first.
 * @param qbdb  The handle.
 * @param count The bound; 0 keeps none.
 */
QBDB_API void qbdb_set_statement_cache(qbdb_t *qbdb, uint32_t count);

/** What the statement cache did since the handle was opened. */
typedef struct qbdb_cache_statistics {
    uint64_t hits;      /**< Statements found prepared. */
    uint64_t misses;    /**< Statements that had to be prepared. */
    uint64_t evictions; /**< Statements dropped because the cache was full. */
    uint32_t held;      /**< Statements held now. */
} qbdb_cache_statistics;

/**
 * Reads the statement cache's counters.
 * @param qbdb       The handle.
 * @param statistics Out: the counters.
 */
QBDB_API void qbdb_get_cache_statistics(const qbdb_t *qbdb, qbdb_cache_statistics *statistics);

/* ---- Hooks -------------------------------------------------------------------------------------- */

/**
 * Receives each log line.
 * @param context What was given with the hook.
 * @param file    Source file of the line.
 * @param line    Source line.
 * @param level   Level of the message: 2, 4 or 5.
 * @param flag    1 for a message that is also the error reported to the caller, else 0.
 * @param text    The formatted message.
 */
typedef void (*qbdb_log_hook)(void *context, const char *file, uint32_t line, uint32_t level, uint32_t flag,
                              const char *text);

/**
 * Replaces the log sink.
 * @param qbdb    The handle.
 * @param hook    The sink; null restores the default, which writes to standard error.
 * @param context Passed to the hook.
 */
QBDB_API void qbdb_set_log_hook(qbdb_t *qbdb, qbdb_log_hook hook, void *context);

/**
 * Sees each statement before it runs, BEGIN, COMMIT and ROLLBACK included, and may make it fail. A
 * ROLLBACK cannot be made to fail.
 * @param context What was given with the hook.
 * @param sql     The statement with its values.
 * @param file    Source file of the caller.
 * @param line    Source line of the caller.
 * @param text    Out: failure text for a non-zero answer; copied.
 * @return 0 to run the statement, else the result code to fail it with.
 */
typedef int (*qbdb_statement_hook)(void *context, const char *sql, const char *file, uint32_t line,
                                   const char **text);

/**
 * Installs a statement hook.
 * @param qbdb    The handle.
 * @param hook    The hook; null removes it.
 * @param context Passed to the hook.
 */
QBDB_API void qbdb_set_statement_hook(qbdb_t *qbdb, qbdb_statement_hook hook, void *context);

/**
 * Tells whether somebody looks at each statement. Where nobody does, the object library reads the rows that hang on
 * the records of a list by a few statements for all of them.
 *
 * A support library need not have this call: the object library then takes every statement for watched.
 * @param qbdb The handle.
 * @return 1 when a statement hook is installed, else 0.
 */
QBDB_API int qbdb_statements_watched(const qbdb_t *qbdb);

/**
 * Brings data of the system into the database, inside the open transaction.
 * @param context  What was given with the hook.
 * @param qbdb     The handle.
 * @param db       The connection.
 * @param selector What to import: QBDB_IMPORT_DISKS or QBDB_IMPORT_HOME_FOLDERS.
 * @return 0, or non-zero on failure.
 */
typedef int (*qbdb_import_hook)(void *context, qbdb_t *qbdb, sqlite3 *db, int selector);

#define QBDB_IMPORT_DISKS 14        /**< Refresh `$disk_info` from the hardware. */
#define QBDB_IMPORT_HOME_FOLDERS 15 /**< Refresh `_hf_zfs_stat` from the file system. */

/**
 * Installs the importer. The default asks this machine. QBDB_IMPORT_DISKS reads the block devices that have hardware
 * behind them from /sys/block: a disk that is there is entered or brought up to date in `$disk_info`, one that is gone
 * stays with `present` 0; a chassis, its bays and a health row are made where the database describes none.
 * QBDB_IMPORT_HOME_FOLDERS measures the home folders into `_hf_zfs_stat` (qbdb_import_options). Any other selector,
 * and a database opened for reading, imports nothing and succeeds.
 * @param qbdb    The handle.
 * @param hook    The importer; null restores the default.
 * @param context Passed to the hook.
 */
QBDB_API void qbdb_set_import_hook(qbdb_t *qbdb, qbdb_import_hook hook, void *context);

/** Most entries that are counted in one home folder unless the options say otherwise. */
#define QBDB_IMPORT_HOME_ENTRIES 1000000u
/** Milliseconds that one import of home folders takes at most unless the options say otherwise: the database is
    locked for others meanwhile, and they wait for QBDB_DEFAULT_TIMEOUT_MS. */
#define QBDB_IMPORT_HOME_MS 3000u

/**
 * What the default importers look at, and how long.
 *
 * A home folder that is a btrfs subvolume under quota uses what the file system says. Any other is walked and uses the
 * blocks of what lies in it, as `du -x` counts: links are not followed, other file systems not entered, a file with
 * several names is counted once. A folder that is not there uses nothing. One that cannot be read whole, or within the
 * bounds, keeps its last figure, and the reason is logged; the next import of the handle begins with the folders that
 * the time did not suffice for.
 */
typedef struct qbdb_import_options {
    const char *root;           /**< Directory that stands for "/"; null for "/" itself. Copied. */
    uint32_t home_entries;      /**< Most entries counted in one home folder; 0 for QBDB_IMPORT_HOME_ENTRIES. */
    uint32_t home_milliseconds; /**< Longest time of one import; 0 for QBDB_IMPORT_HOME_MS. */
} qbdb_import_options;

/**
 * Sets the options of the default importers.
 * @param qbdb    The handle.
 * @param options The options, copied; null restores the default.
 * @return 0, or 7 when there is no memory: the options are as they were.
 */
QBDB_API int qbdb_set_import_options(qbdb_t *qbdb, const qbdb_import_options *options);

/**
 * Regenerates a service's settings after its shares changed.
 * @param context  What was given with the hook.
 * @param qbdb     The handle.
 * @param db       The connection.
 * @param protocol Protocol word: "cifs", "ftp", "http".
 * @return 0, or non-zero on failure.
 */
typedef int (*qbdb_service_hook)(void *context, qbdb_t *qbdb, sqlite3 *db, const char *protocol);

/**
 * Installs the service regeneration. The default does nothing and succeeds.
 * @param qbdb    The handle.
 * @param hook    The hook; null restores the default.
 * @param context Passed to the hook.
 */
QBDB_API void qbdb_set_service_hook(qbdb_t *qbdb, qbdb_service_hook hook, void *context);

/**
 * Directory look-ups. Each member may be null: the system's own name service answers then.
 * Names are written into the caller's buffer; ids are returned, negative for "none".
 */
typedef struct qbdb_directory_hooks {
    void *context; /**< Passed to each function. */
    /** POSIX uid of an account name, or a negative number. */
    int32_t (*uid_by_name)(void *context, const char *name);
    /** POSIX gid of a group name, or a negative number. */
    int32_t (*gid_by_name)(void *context, const char *name);
    /** Account name of a POSIX uid: 0 and a text in `name`, or non-zero. */
    int (*name_by_uid)(void *context, int32_t uid, char *name, size_t size);
    /** Group name of a POSIX gid: 0 and a text in `name`, or non-zero. */
    int (*name_by_gid)(void *context, int32_t gid, char *name, size_t size);
} qbdb_directory_hooks;

/**
 * Installs directory look-ups.
 * @param qbdb  The handle.
 * @param hooks The functions, copied; null restores the default.
 */
QBDB_API void qbdb_set_directory_hooks(qbdb_t *qbdb, const qbdb_directory_hooks *hooks);

/* ---- Log ---------------------------------------------------------------------------------------- */

/**
 * Writes one log line. It does not filter: the caller has tested the handle's level.
 * @param qbdb   The handle.
 * @param file   Source file.
 * @param line   Source line.
 * @param level  Level of the message.
 * @param flag   1 for a message that is also the error reported to the caller, else 0.
 * @param format printf format.
 */
QBDB_API void qbdb_log(qbdb_t *qbdb, const char *file, uint32_t line, uint32_t level, uint32_t flag,
                       const char *format, ...) __attribute__((format(printf, 6, 7)));

/* ---- Transactions ------------------------------------------------------------------------------- */

/**
 * Begins a transaction that may write (BEGIN IMMEDIATE; on a read-only connection BEGIN). Each begin is
 * followed by its commit or, when it or anything after it failed, by its rollback: one that is refused
 * because the handle's own transaction is open leaves that one open, and so does its rollback.
 * @param qbdb  The handle.
 * @param db    The connection.
 * @param flags 0.
 * @param file  Caller's source file.
 * @param line  Caller's source line.
 * @return 0, or a result code: 5 locked longer than the timeout, 8 when `db` is null, 1 when a
 *         transaction is open already.
 */
QBDB_API uint32_t qbdb_sql_begin(qbdb_t *qbdb, sqlite3 *db, int flags, const char *file, uint32_t line);

/**
 * Begins a transaction that only reads (BEGIN): it takes no lock for writing, waits for no writer and keeps
 * none waiting, and sees the database as it is at its first statement until it ends. Else as qbdb_sql_begin.
 *
 * A support library need not have this call: the object library then begins its readers by qbdb_sql_begin.
 * @param qbdb  The handle.
 * @param db    The connection.
 * @param flags 0.
 * @param file  Caller's source file.
 * @param line  Caller's source line.
 * @return As qbdb_sql_begin.
 */
QBDB_API uint32_t qbdb_sql_begin_read(qbdb_t *qbdb, sqlite3 *db, int flags, const char *file, uint32_t line);

/**
 * Commits the transaction that qbdb_sql_begin began. When that fails the transaction is rolled back,
 * nothing stays open, and the reason is logged at level 2.
 * @param qbdb  The handle.
 * @param db    The connection.
 * @param flags 0.
 * @param file  Caller's source file.
 * @param line  Caller's source line.
 * @return 0, or a result code.
 */
QBDB_API uint32_t qbdb_sql_commit(qbdb_t *qbdb, sqlite3 *db, int flags, const char *file, uint32_t line);

/**
 * Rolls back the transaction that qbdb_sql_begin began. Does nothing when there is none, and leaves a transaction
 * alone that somebody else began. Needs no memory, unless the transaction changed the temporary schema: on the
 * handle's own connection a rollback that found none is made by the next begin.
 * @param qbdb  The handle.
 * @param db    The connection.
 * @param flags 0.
 * @param file  Caller's source file.
 * @param line  Caller's source line.
 * @return 0, or a result code; 7 when there was no memory.
 */
QBDB_API uint32_t qbdb_sql_rollback(qbdb_t *qbdb, sqlite3 *db, int flags, const char *file, uint32_t line);

/* ---- Statements --------------------------------------------------------------------------------- */

/**
 * Runs one statement that returns no rows.
 * @param qbdb   The handle.
 * @param db     The connection.
 * @param text   Out: failure text; may be null.
 * @param file   Caller's source file.
 * @param line   Caller's source line.
 * @param format Format of the statement.
 * @return 0, or SQLite's primary result code.
 */
QBDB_API int qbdb_sql_exec_mprintf(qbdb_t *qbdb, sqlite3 *db, const char **text, const char *file,
                                   uint32_t line, const char *format, ...);

/**
 * Reads a table as sqlite3_get_table does: `ncolumn` column names, then `nrow` x `ncolumn` values row by
 * row, null for NULL. A column without AS whose text holds a value has no certain name.
 * @param qbdb    The handle.
 * @param db      The connection.
 * @param text    Out: failure text; may be null.
 * @param file    Caller's source file.
 * @param line    Caller's source line.
 * @param result  Out: the table, to be released with sqlite3_free_table; null on failure.
 * @param nrow    Out: number of rows; 0 on failure.
 * @param ncolumn Out: number of columns; 0 without rows and on failure.
 * @param format  Format of the statement.
 * @return 0, or SQLite's primary result code.
 */
QBDB_API int qbdb_sql_get_table_mprintf(qbdb_t *qbdb, sqlite3 *db, const char **text, const char *file,
                                        uint32_t line, char ***result, int *nrow, int *ncolumn,
                                        const char *format, ...);

/**
 * Reads the first column of the first row as text.
 * @param qbdb   The handle.
 * @param db     The connection.
 * @param text   Out: failure text; may be null.
 * @param file   Caller's source file.
 * @param line   Caller's source line.
 * @param value  Out: the text in the handle's pool; null for no row, for NULL and on failure.
 * @param format Format of the statement.
 * @return 0, or SQLite's primary result code.
 */
QBDB_API int qbdb_sql_get_scaler_mprintf(qbdb_t *qbdb, sqlite3 *db, const char **text, const char *file,
                                         uint32_t line, const char **value, const char *format, ...);

/**
 * Reads the first column of the first row as a 32-bit integer; NULL reads as 0, a text
 * as the decimal number that it begins with.
 * @param qbdb     The handle.
 * @param db       The connection.
 * @param text     Out: failure text; may be null.
 * @param file     Caller's source file.
 * @param line     Caller's source line.
 * @param value    Out: the number; left as it was when there is no row.
 * @param notfound Out: 1 when there is no row, else 0; may be null.
 * @param format   Format of the statement.
 * @return 0, or SQLite's primary result code.
 */
QBDB_API int qbdb_sql_get_int32_mprintf(qbdb_t *qbdb, sqlite3 *db, const char **text, const char *file,
                                        uint32_t line, int32_t *value, int *notfound, const char *format, ...);

/**
 * Reads the first column of the first row as an unsigned 64-bit number; NULL reads as 0, a text
 * as the number that it begins with, its base detected (0x1F, 017).
 * @param qbdb     The handle.
 * @param db       The connection.
 * @param text     Out: failure text; may be null.
 * @param file     Caller's source file.
 * @param line     Caller's source line.
 * @param value    Out: the number; left as it was when there is no row.
 * @param notfound Out: 1 when there is no row, else 0; may be null.
 * @param format   Format of the statement.
 * @return 0, or SQLite's primary result code.
 */
QBDB_API int qbdb_sql_get_uint64_mprintf(qbdb_t *qbdb, sqlite3 *db, const char **text, const char *file,
                                         uint32_t line, uint64_t *value, int *notfound, const char *format, ...);

/* ---- Table copies ------------------------------------------------------------------------------- */

/**
 * Copies a table inside the open transaction, so that old and new rows can be compared. A stale copy
 * of that name is dropped first; a rollback removes the copy.
 * @param qbdb  The handle.
 * @param db    The connection.
 * @param flags 0.
 * @param table Name of the table.
 * @param copy  Name of the copy, whole.
 * @return 0, or SQLite's primary result code.
 */
QBDB_API int qbdb_sql_duplicate_table(qbdb_t *qbdb, sqlite3 *db, int flags, const char *table,
                                      const char *copy);

/**
 * Copies each table of a set; each copy is named prefix + table. When one fails, the copies made so
 * far are dropped again.
 * @param qbdb   The handle.
 * @param db     The connection.
 * @param flags  0.
 * @param tables Names, ended by a null pointer.
 * @param prefix Prefix of the copies' names.
 * @return 0, or SQLite's primary result code.
 */
QBDB_API int qbdb_sql_duplicate_tables(qbdb_t *qbdb, sqlite3 *db, int flags, const char *const *tables,
                                       const char *prefix);

/**
 * Tells which tables of a set differ from their copies, by content in both directions, duplicate rows
 * counted.
 * @param qbdb      The handle.
 * @param db        The connection.
 * @param flags     0.
 * @param tables    Names, at most 100, ended by a null pointer.
 * @param prefix    Prefix of the copies' names.
 * @param differing Out: hash in the handle's pool, keyed by the names of the tables that differ; null on
 *                  failure.
 * @return 0, or SQLite's primary result code.
 */
QBDB_API int qbdb_sql_compare_tables(qbdb_t *qbdb, sqlite3 *db, int flags, const char *const *tables,
                                     const char *prefix, apr_hash_t **differing);

/**
 * Tells whether any table of a set differs from its copy.
 * @param qbdb    The handle.
 * @param db      The connection.
 * @param flags   0.
 * @param tables  Names, ended by a null pointer.
 * @param prefix  Prefix of the copies' names.
 * @param changed Out: 1 or 0.
 * @return 0, or SQLite's primary result code.
 */
QBDB_API int qbdb_sql_compare_tables2(qbdb_t *qbdb, sqlite3 *db, int flags, const char *const *tables,
                                      const char *prefix, int32_t *changed);

/**
 * Tells whether the selected rows of a table differ from those of its copy.
 * @param qbdb    The handle.
 * @param db      The connection.
 * @param flags   0.
 * @param table   Name of the table.
 * @param copy    Name of the copy, whole.
 * @param where   Condition that selects the rows ("id=7").
 * @param changed Out: 1 or 0.
 * @return 0, or SQLite's primary result code.
 */
QBDB_API int qbdb_sql_compare_table_row(qbdb_t *qbdb, sqlite3 *db, int flags, const char *table,
                                        const char *copy, const char *where, int32_t *changed);

/**
 * Drops the copies of a set.
 * @param qbdb   The handle.
 * @param db     The connection.
 * @param flags  0.
 * @param tables Names, ended by a null pointer.
 * @param prefix Prefix of the copies' names.
 * @return 0, or SQLite's primary result code (a copy that is missing is a failure).
 */
QBDB_API int qbdb_sql_delete_tables(qbdb_t *qbdb, sqlite3 *db, int flags, const char *const *tables,
                                    const char *prefix);

/* ---- Users, groups, keys, name map -------------------------------------------------------------- */

/**
 * POSIX uid of a user. A local user's id is its uid; a directory user (negative id) is asked of the
 * directory by its stored name.
 * @param qbdb The handle.
 * @param db   The connection.
 * @param id   Database id of the user.
 * @return The uid, or a negative number.
 */
QBDB_API int32_t qbdb_util_get_posix_uid(qbdb_t *qbdb, sqlite3 *db, int32_t id);

/**
 * POSIX gid of a group, as qbdb_util_get_posix_uid.
 * @param qbdb The handle.
 * @param db   The connection.
 * @param id   Database id of the group.
 * @return The gid, or a negative number.
 */
QBDB_API int32_t qbdb_util_get_posix_gid(qbdb_t *qbdb, sqlite3 *db, int32_t id);

/**
 * POSIX uid of an account name, asked of the directory.
 * @param qbdb The handle.
 * @param db   The connection.
 * @param name The name; null finds nothing.
 * @param uid  Out: the uid, -1 when not found; may be null.
 * @return The uid, or a negative number.
 */
QBDB_API int32_t qbdb_util_get_posix_uid_by_name(qbdb_t *qbdb, sqlite3 *db, const char *name, int32_t *uid);

/**
 * POSIX gid of a group name, asked of the directory.
 * @param qbdb The handle.
 * @param db   The connection.
 * @param name The name; null finds nothing.
 * @param gid  Out: the gid, -1 when not found; may be null.
 * @return The gid, or a negative number.
 */
QBDB_API int32_t qbdb_util_get_posix_gid_by_name(qbdb_t *qbdb, sqlite3 *db, const char *name, int32_t *gid);

/**
 * Name of a directory user by its POSIX uid.
 * @param qbdb The handle.
 * @param db   The connection.
 * @param uid  The uid.
 * @param name Out: the name in the handle's pool, null when not found.
 * @return 0, or non-zero when not found.
 */
QBDB_API int qbdb_util_get_domain_uname_by_uid(qbdb_t *qbdb, sqlite3 *db, int32_t uid, const char **name);

/**
 * Name of a directory group by its POSIX gid.
 * @param qbdb The handle.
 * @param db   The connection.
 * @param gid  The gid.
 * @param name Out: the name in the handle's pool, null when not found.
 * @return 0, or non-zero when not found.
 */
QBDB_API int qbdb_util_get_domain_gname_by_gid(qbdb_t *qbdb, sqlite3 *db, int32_t gid, const char **name);

/**
 * Tells whether there is a user of this id. A user who was removed, whose row stays, is none.
 * @param qbdb The handle.
 * @param db   The connection.
 * @param id   Id of the user.
 * @return 1 when it does, 0 when not, -1 when the table cannot be read.
 */
QBDB_API int qbdb_find_user_id(qbdb_t *qbdb, sqlite3 *db, int32_t id);

/**
 * Tells whether an SSH public key exists.
 * @param qbdb The handle.
 * @param db   The connection.
 * @param id   Row id of the key.
 * @return 1 when it does, 0 when not, -1 when the table cannot be read.
 */
QBDB_API int qbdb_find_ssh_public_key_id(qbdb_t *qbdb, sqlite3 *db, int32_t id);

/**
 * Tells whether a user has a key of this text.
 * @param qbdb    The handle.
 * @param db      The connection.
 * @param user_id Id of the user.
 * @param key     Text of the key.
 * @return 1 when it has, 0 when not, -1 when the table cannot be read: who tests for 0 alone then stores no key twice.
 */
QBDB_API int qbdb_find_ssh_public_key_user_id_key(qbdb_t *qbdb, sqlite3 *db, int32_t user_id, const char *key);

/**
 * Number of SSH public keys stored, the administrator's mirrored keys counted too.
 * @param qbdb The handle.
 * @param db   The connection.
 * @return The number; -1 when the table cannot be read.
 */
QBDB_API int32_t qbdb_get_number_of_ssh_public_key(qbdb_t *qbdb, sqlite3 *db);

/**
 * Deletes a user's SSH public keys.
 * @param qbdb    The handle.
 * @param db      The connection.
 * @param user_id Id of the user.
 * @return 0 (also when there was none), non-zero on failure.
 */
QBDB_API int qbdb_delete_ssh_public_key_by_uid(qbdb_t *qbdb, sqlite3 *db, int32_t user_id);

/** Name of the SMB user-name map's table. */
QBDB_API extern const char *const TABLE_SMB_USERNAME_MAP;

/** Type word of a row that gives a user an alias. */
QBDB_API extern const char *const TABLE_SMB_USERNAME_MAP_TYPE_UNAME;

/**
 * Tells whether a word is a type of the SMB user-name map.
 * @param type The word; null is none.
 * @return Non-zero when it is.
 */
QBDB_API int qbdb_valid_smb_username_map_type(const char *type);

/**
 * Reads whether directory users are looked up live instead of being synchronised.
 * @param qbdb The handle.
 * @param db   The connection.
 * @return 1 when `service_cifs.no_sync_ads` is set, 0 when not, -1 when it cannot be read.
 */
QBDB_API int32_t qbdb_get_no_sync_ads(qbdb_t *qbdb, sqlite3 *db);

/* ---- Importers and services --------------------------------------------------------------------- */

/**
 * Refreshes the home folders' space figures through the importer.
 * @param qbdb The handle.
 * @param db   The connection.
 * @return 0, or non-zero on failure.
 */
QBDB_API int qbdb_hf_stats_import(qbdb_t *qbdb, sqlite3 *db);

/**
 * Imports data of the system inside the open transaction.
 * @param qbdb     The handle.
 * @param db       The connection.
 * @param selector What to import.
 * @return 0, or non-zero on failure.
 */
QBDB_API int qbdb_import_nolock(qbdb_t *qbdb, sqlite3 *db, int selector);

/**
 * Regenerates a service's settings after its shares changed.
 * @param qbdb     The handle.
 * @param db       The connection.
 * @param protocol Protocol word.
 * @return 0, or non-zero on failure.
 */
QBDB_API int qbdb_service_update_setting_by_share(qbdb_t *qbdb, sqlite3 *db, const char *protocol);

/* ---- Small helpers ------------------------------------------------------------------------------ */

/**
 * Normalises the path of an SMB source: back slashes become slashes, runs of slashes one slash.
 * @param qbdb The handle.
 * @param path The path; null stays null.
 * @return The normalised path in the handle's pool; null when there is no memory.
 */
QBDB_API const char *qbdb_normalize_smb_path(qbdb_t *qbdb, const char *path);

/**
 * Tells whether the shared Time Machine folder is configured (a home volume is chosen and exists).
 * @param qbdb The handle.
 * @param db   The connection.
 * @return Non-zero when it is.
 */
QBDB_API int qbdb_is_timemachine_path_valid(qbdb_t *qbdb, sqlite3 *db);

/**
 * Converts days of the week from text ("Mon,Wed", case ignored) to bits, Sunday the lowest.
 * @param text The text; null and unknown words give no day.
 * @return The bits, 0 for no day.
 */
QBDB_API int32_t qbdb_dow_to_i(const char *text);

/**
 * Converts days of the week from bits to text; qbdb_dow_to_i converts it back.
 * @param qbdb The handle.
 * @param dow  The bits; bits above the seventh are ignored.
 * @return The text in the handle's pool, "" for no day; null when there is no memory.
 */
QBDB_API const char *qbdb_i_to_dow(qbdb_t *qbdb, int32_t dow);

/**
 * Reads one attribute of a data set of the file system and scans it.
 * @param qbdb    The handle.
 * @param dataset The data set's path: "tank/media" or "/tank/media".
 * @param attr    "usedbydataset", "used", "available" (bytes).
 * @param format  scanf format of one value, such as "%lu".
 * @return 0, or non-zero when the attribute cannot be read: the outputs stay as they were.
 */
QBDB_API int qbdb_fs_get_attr_scanf(qbdb_t *qbdb, const char *dataset, const char *attr, const char *format,
                                    ...) __attribute__((format(scanf, 4, 5)));

/**
 * Splits a comma-separated list; blanks around an item are dropped, and so are empty items.
 * @param qbdb The handle.
 * @param csv  The list; null is empty.
 * @return The items, ended by a null pointer, in the handle's pool; null when there is no memory.
 */
QBDB_API char **qbdb_csv_to_array(qbdb_t *qbdb, const char *csv);

/**
 * A random number from the kernel.
 * @return 32 random bits. Aborts when the kernel has none: a guessable salt is worse.
 */
QBDB_API uint32_t qbdb_rand(void);

/**
 * Finds the folder of a snapshot.
 * @param dir    The share's folder.
 * @param name   The snapshot's name.
 * @param result Out: path of the snapshot's folder, valid until this thread calls again; null when
 *               there is none.
 * @return 0, or non-zero when there is none.
 */
QBDB_API int snapshot_get_path(const char *dir, const char *name, const char **result);

#ifdef __cplusplus
}
#endif

#endif
/* SPDX-License-Identifier: Apache-2.0 */
