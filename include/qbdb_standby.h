/**
 * @file qbdb_standby.h
 * Copies that follow a database by its journal: they hold the same rows, and the same journal up to the call that was
 * applied last.
 */
#ifndef QBDB_STANDBY_H
#define QBDB_STANDBY_H

#include "qbdb_journal.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Copies a database into a new file with SQLite's own backup, while others may go on working. The file appears under its
 * name when it is whole, readable for its owner alone (mode 0600).
 * @param qbdb The handle.
 * @param db   The connection.
 * @param path Name of the copy; there must be no such file.
 * @param text Out: why it failed, cut to fit; untouched on success; may be null.
 * @param size Size of `text` in bytes.
 * @return 0, or a SQLite result code (14 when the file is there or cannot be made, …).
 */
QBDB_API int qbdb_copy_database(qbdb_t *qbdb, sqlite3 *db, const char *path, char *text, size_t size);

/**
 * Makes a call of another database's journal in a copy of it, which then has it in its journal like the original: all in
 * one transaction, so that a call is there whole or not at all. A call that the copy has already is passed over.
 * Everything else that does not continue the copy's journal is refused: a gap, a damaged call, a copy that was changed by
 * somebody else.
 * @param qbdb  Handle of the copy; no transaction is open.
 * @param db    Its own connection.
 * @param entry The call, as qbdb_journal_read hands it out.
 * @param text  Out: why it was refused, cut to fit; untouched on success; may be null.
 * @param size  Size of `text` in bytes.
 * @return 0; 11 the call is damaged; 17 a table that it changed is another one in the copy; 19 it does not fit the copy; 8
 *         for a handle that only reads; 21 for another connection, or while changes are recorded with
 *         QBDB_CHANGES_DISCARD; or another SQLite result code.
 */
QBDB_API int qbdb_journal_apply(qbdb_t *qbdb, sqlite3 *db, const qbdb_journal_entry *entry, char *text, size_t size);

#ifdef __cplusplus
}
#endif

#endif
/* SPDX-License-Identifier: Apache-2.0 */
