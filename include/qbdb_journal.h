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
 * @return 0; 21 when recording was begun already or a transaction is open; 7 without memory.
 */
QBDB_API int qbdb_changes_begin(qbdb_t *qbdb, unsigned flags);

/**
 * Ends the recording and hands over what the transactions that were committed (or would have been) changed.
 * @param qbdb    The handle.
 * @param changes Out: a changeset, to be released with sqlite3_free; null when nothing changed.
 * @param size    Out: its size in bytes.
 * @return 0; 21 when no recording was begun.
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

#ifdef __cplusplus
}
#endif

#endif
