// The journal of the committed calls: its rows, and what the handle knows of the present call.
#pragma once

#include "handle.h"
#include "qbdb_journal.h"

namespace qdb {

/// What the present transaction is called in the journal, and the statements that keep it.
struct Journal {
    char *who = nullptr;
    char *operation = nullptr;
    char *arguments = nullptr;
    int64_t undoes = 0;
    sqlite3_stmt *state = nullptr;
    sqlite3_stmt *insert = nullptr;
    sqlite3_stmt *advance = nullptr;
    sqlite3_stmt *oldest = nullptr;
    sqlite3_stmt *remove = nullptr;

    void forget_call();
    void destroy();
};

/// Finds out whether the database keeps a journal. 0 or a result code.
int look_for_journal(Recorder *recorder, sqlite3 *db);

/// Keeps the transaction's changes as a call. 0 or a result code.
int keep_call(Recorder *recorder, sqlite3 *db);

/// Whether a table is the journal's own.
bool belongs_to_journal(const char *table);

/// What identifies a journal's content after a call: of what did so before, and of the call.
int64_t mark_after(const qbdb_journal_entry &entry);

/// Stores a call as it is and brings the state up to date. 0 or a result code.
int store_call(Journal *journal, sqlite3 *db, const qbdb_journal_entry &entry, const qbdb_journal_state &state);

}  // namespace qdb
// SPDX-License-Identifier: Apache-2.0
