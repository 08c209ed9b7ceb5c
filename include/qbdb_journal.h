/**
 * @file qbdb_journal.h
 * What a transaction changed: recorded row by row for whoever asks, made on trial and taken back, kept in a journal.
 * Changes are changesets of SQLite's session extension, which its own functions read as well.
 *
 * - What is recorded are the transactions of qbdb_sql_begin that may write, on the connection that qbdb_open opened.
 * - The key of a row is its table's declared key. A table without one is recorded by its row number, which stands in the
 *   changeset as a first column `_rowid_`.
 * - A changeset holds the values as they are, secrets included.
 */
#ifndef QBDB_JOURNAL_H
#define QBDB_JOURNAL_H

#include "qbdb.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- What changes ------------------------------------------------------------------------------- */

/** Flag of qbdb_changes_begin: nothing is kept, each commit takes everything back instead. */
#define QBDB_CHANGES_DISCARD 1u

/**
 * Records what the handle's transactions change, from now on until qbdb_changes_end. With QBDB_CHANGES_DISCARD each
 * transaction runs for real, and its commit succeeds and leaves the database as it was; no service is regenerated.
 * What a call does outside of the database is not taken back.
 * @param qbdb  The handle.
 * @param flags 0, or QBDB_CHANGES_DISCARD.
 * @return 0; 21 when recording was begun already, a transaction is open, or `flags` is anything else; 7 without memory.
 */
QBDB_API int qbdb_changes_begin(qbdb_t *qbdb, unsigned flags);

/**
 * Ends the recording and hands over what the transactions that were committed (or would have been) changed.
 * @param qbdb    The handle.
 * @param changes Out: a changeset, to be released with sqlite3_free; null when nothing changed.
 * @param size    Out: its size in bytes.
 * @return 0; 21 when no recording was begun; else the code of what kept a change from being recorded (7 without memory,
 *         ...): then `changes` is null, because a list with a gap in it would be worse than none.
 */
QBDB_API int qbdb_changes_end(qbdb_t *qbdb, void **changes, int *size);

/** One row that changed. Everything in it lives as long as the call of the reader. */
typedef struct qbdb_change {
    const char *table;            /**< Name of the table. */
    int operation;                /**< SQLITE_INSERT, SQLITE_UPDATE or SQLITE_DELETE. */
    int count;                    /**< Number of columns. */
    const char *const *columns;   /**< Their names; null for one that the database does not have (any more). */
    const unsigned char *key;     /**< For each column 1 when it belongs to the key, else 0. */
    sqlite3_value *const *before; /**< For each column its value before; null in a new row and for what stayed the same. */
    sqlite3_value *const *after;  /**< For each column its value after; null in a removed row and for what stayed the same. */
} qbdb_change;

/**
 * Receives each changed row.
 * @param context What was given with the reader.
 * @param change  The row.
 * @return 0 to go on, anything else to end the reading.
 */
typedef int (*qbdb_change_reader)(void *context, const qbdb_change *change);

/**
 * Reads a changeset row by row.
 * @param qbdb    The handle.
 * @param db      The connection, of which the names of the columns are asked.
 * @param changes The changeset; may be null when `size` is 0.
 * @param size    Its size in bytes.
 * @param reader  Called for each row.
 * @param context Passed to the reader.
 * @return 0; what the reader ended with; 11 for a damaged changeset; 7 without memory.
 */
QBDB_API int qbdb_changes_read(qbdb_t *qbdb, sqlite3 *db, const void *changes, int size, qbdb_change_reader reader,
                               void *context);

/**
 * Tells whether a column holds a secret (a password, a hash of one, a key): front ends do not show it.
 * @param table  Name of the table.
 * @param column Name of the column.
 * @return 1 for a secret, else 0.
 */
QBDB_API int qbdb_is_secret_column(const char *table, const char *column);

/* ---- The journal -------------------------------------------------------------------------------- */

/** Bytes that a journal may take unless qbdb_journal_on says otherwise. */
#define QBDB_JOURNAL_BYTES (UINT64_C(64) << 20)
/** Seconds that a call is kept unless qbdb_journal_on says otherwise: 90 days. */
#define QBDB_JOURNAL_SECONDS (UINT64_C(90) * 86400)

/**
 * Has a database keep a journal, or changes the bounds of the one that it keeps. From then on each transaction of any
 * handle of this library that changed something is kept as one call, stored by the same commit. The oldest calls go
 * when the journal outgrows its bounds; the newest one stays whatever its size.
 * @param qbdb        The handle; no transaction is open.
 * @param db          The handle's own connection.
 * @param max_bytes   Bytes that all calls may take together; 0 for QBDB_JOURNAL_BYTES.
 * @param max_seconds Seconds that a call is kept; 0 for QBDB_JOURNAL_SECONDS.
 * @return 0, or a SQLite result code: 5 locked longer than the timeout; 7 without memory; 8 for a handle that only reads;
 *         21 for another connection, or while changes are recorded with QBDB_CHANGES_DISCARD; …
 */
QBDB_API int qbdb_journal_on(qbdb_t *qbdb, sqlite3 *db, uint64_t max_bytes, uint64_t max_seconds);

/**
 * Has a database keep no journal any more. What it holds stays; what happens until it is switched on again is missing, so
 * that what was before cannot be undone any more and copies that follow it have to be made anew.
 * @param qbdb The handle; no transaction is open.
 * @param db   The handle's own connection.
 * @return 0 (also when there is none), or a SQLite result code as qbdb_journal_on.
 */
QBDB_API int qbdb_journal_off(qbdb_t *qbdb, sqlite3 *db);

/** How a database's journal stands. */
typedef struct qbdb_journal_state {
    int on;               /**< 1 when it is kept. */
    int64_t first;        /**< Number of the oldest call that it holds; 0 for none. */
    int64_t last;         /**< Number of the last call that was kept; 0 for none so far. */
    int64_t since;        /**< It is whole after this call: before, or right after it, it was switched off. */
    int64_t mark;         /**< What identifies its content up to now: equal in a copy that has followed it so far. */
    uint64_t bytes;       /**< Bytes that its calls take. */
    uint64_t max_bytes;   /**< Bytes that they may take. */
    uint64_t max_seconds; /**< Seconds that a call is kept. */
} qbdb_journal_state;

/**
 * Reads how a database's journal stands.
 * @param qbdb  The handle.
 * @param db    The connection.
 * @param state Out: the state, all 0 for a database that never kept one.
 * @return 0, or a SQLite result code.
 */
QBDB_API int qbdb_journal_get_state(qbdb_t *qbdb, sqlite3 *db, qbdb_journal_state *state);

/** A call in the journal. Its texts and changes live as long as the call of the reader. */
typedef struct qbdb_journal_entry {
    int64_t id;            /**< Its number, one higher than that of the call before. */
    int64_t time;          /**< When it was committed, in seconds since 1970. */
    const char *operation; /**< Name of the operation; "" when its caller did not tell. */
    const char *who;       /**< On whose behalf; "" when unknown. */
    const char *arguments; /**< What it was given, as a JSON object, secrets left out. */
    int64_t undoes;        /**< Number of the call that it undid; 0 for none. */
    int64_t previous;      /**< The journal's mark before it. */
    int64_t mark;          /**< The journal's mark after it. */
    const void *changes;   /**< What it changed: a changeset. Secrets stand in it as they are. */
    int size;              /**< Bytes of `changes`. */
} qbdb_journal_entry;

/**
 * Receives each call of the journal.
 * @param context What was given with the reader.
 * @param entry   The call.
 * @return 0 to go on, anything else to end the reading.
 */
typedef int (*qbdb_journal_reader)(void *context, const qbdb_journal_entry *entry);

/**
 * Reads calls of the journal, the oldest first.
 * @param qbdb    The handle.
 * @param db      The connection.
 * @param after   Number of the call after which to begin; 0 for the oldest.
 * @param count   Most calls to read; 0 for all.
 * @param reader  Called for each.
 * @param context Passed to the reader.
 * @return 0 (also when there is no journal); what the reader ended with; or a SQLite result code.
 */
QBDB_API int qbdb_journal_read(qbdb_t *qbdb, sqlite3 *db, int64_t after, uint32_t count,
                               qbdb_journal_reader reader, void *context);

/**
 * Undoes a call: brings the rows that it changed back to what they were before it. That is possible as long as no later
 * call touched one of them, but for calls that were undone themselves. The undoing is a call of the journal like any
 * other, and can be undone in turn. Only rows of the database are brought back.
 * @param qbdb   The handle; no transaction is open. While changes are recorded with QBDB_CHANGES_DISCARD it is a trial.
 * @param db     The handle's own connection.
 * @param id     Number of the call; 0 for the last one that is not undone.
 * @param undone Out: number of the call that was undone, 0 for none; may be null.
 * @param text   Out: why not, cut to fit: which rows stand in the way; untouched on success; may be null.
 * @param size   Size of `text` in bytes.
 * @return 0; 12 the journal holds no such call, or is switched off; 17 a table that the call changed is another one now;
 *         19 something stands in the way, or it was undone already; 8 for a handle that only reads; 21 for another
 *         connection; or another SQLite result code.
 */
QBDB_API int qbdb_journal_undo(qbdb_t *qbdb, sqlite3 *db, int64_t id, int64_t *undone, char *text, size_t size);

/**
 * Says on whose behalf the handle is used: the journal keeps it with each call.
 * @param qbdb The handle.
 * @param who  A name, copied; null for unknown.
 * @return 0, or 7 without memory: then it is as it was.
 */
QBDB_API int qbdb_set_caller(qbdb_t *qbdb, const char *who);

/**
 * Tells whether the open transaction is to be kept in the journal, so that it is worth telling what it is.
 * @param qbdb The handle.
 * @param db   The connection.
 * @return 1 when it is, else 0.
 */
QBDB_API int qbdb_journal_wants(const qbdb_t *qbdb, const sqlite3 *db);

/**
 * Tells what the open transaction is, for the journal. Told twice, the last one counts.
 * @param qbdb      The handle.
 * @param db        The connection.
 * @param operation Name of the operation, copied.
 * @param arguments What it was given, as a JSON object without secrets, copied. Null means that there was no memory for
 *                  it: then the commit fails.
 */
QBDB_API void qbdb_journal_call(qbdb_t *qbdb, sqlite3 *db, const char *operation, const char *arguments);

#ifdef __cplusplus
}
#endif

#endif
/* SPDX-License-Identifier: Apache-2.0 */
