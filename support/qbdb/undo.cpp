// Undoing a call of the journal: its changes inverted, when nothing that came later stands on the same rows.
#include <cstdio>
#include <cstring>

#include "apply.h"
#include "recorder.h"

namespace qdb {
namespace {

/// A call that is to be undone, and what is known of those after it.
struct Undoing {
    qbdb_t *qbdb;
    sqlite3 *db;
    sqlite3 *notes = nullptr;  // a private database in memory
    sqlite3_stmt *is_touched = nullptr;
    int64_t id;
    char *words;
    size_t size;
    Changeset changes;
    Obstacles obstacles;
    bool told = false;  // why it is refused
    int64_t later = 0;  // the call whose rows are compared

    Undoing(qbdb_t *handle, sqlite3 *connection, int64_t number, char *text, size_t bytes)
        : qbdb(handle), db(connection), id(number), words(text), size(bytes)
    {
    }
    Undoing(const Undoing &) = delete;
    Undoing &operator=(const Undoing &) = delete;
    ~Undoing()
    {
        sqlite3_finalize(is_touched);
        sqlite3_close(notes);
    }

    void tell(const char *text);
    int refuse(int rc, const char *format, int64_t number = 0, int64_t other = 0);
    int refuse_rows(const char *who);
    int open_notes();
    int note_undone(const qbdb_journal_state &state);
    int choose();
    int check_number(const qbdb_journal_state &state);
    int load();
    int compare_later_calls();
    int look_for_later_calls();
    int apply();
    int run();
    int64_t number(const char *sql, int64_t argument, int *rc);
};

void Undoing::tell(const char *text)
{
    told = true;
    if (words && size) snprintf(words, size, "%s", text);
}

int Undoing::refuse(int rc, const char *format, int64_t first, int64_t other)
{
    char *text = sqlite3_mprintf(format, first, other);
    tell(text ? text : "");
    sqlite3_free(text);
    return rc;
}

/// Names the rows that stand in the way.
int Undoing::refuse_rows(const char *who)
{
    char beginning[128];
    snprintf(beginning, sizeof beginning, "call %lld cannot be undone: %s changed", static_cast<long long>(id), who);
    obstacles.tell(beginning, words, size);
    told = true;
    return SQLITE_CONSTRAINT;
}

int Undoing::open_notes()
{
    int rc = open_in_memory(&notes);
    if (rc == SQLITE_OK)
        rc = sqlite3_exec(notes,
                          "BEGIN; CREATE TABLE undone (id INTEGER PRIMARY KEY, by INTEGER UNIQUE);"
                          "CREATE TABLE touched (row TEXT PRIMARY KEY) WITHOUT ROWID",
                          nullptr, nullptr, nullptr);
    return rc & 0xFF;
}

/// A number out of the notes; 0 without a row.
int64_t Undoing::number(const char *sql, int64_t argument, int *rc)
{
    sqlite3_stmt *stmt = nullptr;
    int64_t found = 0;
    *rc = sqlite3_prepare_v2(notes, sql, -1, &stmt, nullptr);
    sqlite3_bind_int64(stmt, 1, argument);
    if (*rc == SQLITE_OK && sqlite3_step(stmt) == SQLITE_ROW) found = sqlite3_column_int64(stmt, 0);
    const int done = sqlite3_finalize(stmt);
    *rc = (*rc == SQLITE_OK ? done : *rc) & 0xFF;
    return found;
}

/// Notes which calls are undone, and by which: the newest first, as an undoing that was undone itself undoes nothing.
int Undoing::note_undone(const qbdb_journal_state &state)
{
    sqlite3_stmt *undoings = nullptr;
    sqlite3_stmt *note = nullptr;
    int rc = sqlite3_prepare_v2(db, "SELECT id,undoes FROM _journal WHERE undoes AND id>? ORDER BY id DESC", -1,
                                &undoings, nullptr);
    if (rc == SQLITE_OK)
        rc = sqlite3_prepare_v2(notes, "INSERT INTO undone SELECT ?1,?2 WHERE ?2 NOT IN (SELECT id FROM undone)", -1,
                                &note, nullptr);
    sqlite3_bind_int64(undoings, 1, id ? id : state.since);
    while (rc == SQLITE_OK && sqlite3_step(undoings) == SQLITE_ROW) {
        sqlite3_bind_int64(note, 1, sqlite3_column_int64(undoings, 1));
        sqlite3_bind_int64(note, 2, sqlite3_column_int64(undoings, 0));
        sqlite3_step(note);
        rc = sqlite3_reset(note);
    }
    const int done = sqlite3_finalize(undoings);
    sqlite3_finalize(note);
    return (rc == SQLITE_OK ? done : rc) & 0xFF;
}

/// The last call that is neither undone nor an undoing.
int Undoing::choose()
{
    sqlite3_stmt *stmt = nullptr;
    int rc = sqlite3_prepare_v2(db, "SELECT id FROM _journal ORDER BY id DESC", -1, &stmt, nullptr);
    while (rc == SQLITE_OK && !id && sqlite3_step(stmt) == SQLITE_ROW) {
        const int64_t candidate = sqlite3_column_int64(stmt, 0);
        if (!number("SELECT id FROM undone WHERE ?1 IN (id,by)", candidate, &rc)) id = candidate;
    }
    sqlite3_finalize(stmt);
    if (rc != SQLITE_OK) return rc & 0xFF;
    return id ? SQLITE_OK : refuse(SQLITE_NOTFOUND, "there is no call to be undone");
}

int Undoing::check_number(const qbdb_journal_state &state)
{
    if (id < state.first || id > state.last || !state.first)
        return refuse(SQLITE_NOTFOUND, "the journal holds no call %lld", id);
    if (id <= state.since)
        return refuse(SQLITE_CONSTRAINT,
                      "the journal was switched off after call %lld: what happened since is not known", state.since);
    int rc = SQLITE_OK;
    const int64_t by = number("SELECT by FROM undone WHERE id=?", id, &rc);
    return by ? refuse(SQLITE_CONSTRAINT, "call %lld was undone by call %lld", id, by) : rc;
}

/// The name of a row, to be released with sqlite3_free; null without memory.
char *name_of(const qbdb_change &change)
{
    sqlite3_str *text = sqlite3_str_new(nullptr);
    append_row(text, change);
    return sqlite3_str_finish(text);
}

/// Notes a row of the call that is to be undone.
int note_row(void *context, const qbdb_change *change)
{
    auto *undoing = static_cast<Undoing *>(context);
    char *row = name_of(*change);
    if (!row) return SQLITE_NOMEM;
    sqlite3_stmt *stmt = nullptr;
    int rc = sqlite3_prepare_v2(undoing->notes, "INSERT OR IGNORE INTO touched VALUES(?)", -1, &stmt, nullptr);
    sqlite3_bind_text(stmt, 1, row, -1, SQLITE_STATIC);
    if (rc == SQLITE_OK) sqlite3_step(stmt);
    rc = sqlite3_finalize(stmt);
    sqlite3_free(row);
    return rc & 0xFF;
}

/// Compares a row of a later call.
int compare_row(void *context, const qbdb_change *change)
{
    auto *undoing = static_cast<Undoing *>(context);
    char *row = name_of(*change);
    if (!row) return SQLITE_NOMEM;
    sqlite3_bind_text(undoing->is_touched, 1, row, -1, SQLITE_STATIC);
    if (sqlite3_step(undoing->is_touched) == SQLITE_ROW) undoing->obstacles.note(*change, undoing->later);
    const int rc = sqlite3_reset(undoing->is_touched);
    sqlite3_free(row);
    return rc & 0xFF;
}

int load_entry(void *context, const qbdb_journal_entry *entry)
{
    auto *undoing = static_cast<Undoing *>(context);
    Changeset inverse;
    const int rc = sqlite3changeset_invert(entry->size, entry->changes, &inverse.size, &inverse.bytes);
    if (rc == SQLITE_OK) undoing->changes.swap(inverse);
    return rc & 0xFF;
}

int compare_entry(void *context, const qbdb_journal_entry *entry)
{
    auto *undoing = static_cast<Undoing *>(context);
    undoing->later = entry->id;
    return qbdb_changes_read(undoing->qbdb, undoing->db, entry->changes, entry->size, compare_row, undoing);
}

int Undoing::load()
{
    const int rc = qbdb_journal_read(qbdb, db, id - 1, 1, load_entry, this);
    return rc == SQLITE_OK ? qbdb_changes_read(qbdb, db, changes.bytes, changes.size, note_row, this) : rc;
}

/// Reads the calls after it that are in force: neither undone nor an undoing.
int Undoing::compare_later_calls()
{
    sqlite3_stmt *later_ones = nullptr;
    sqlite3_stmt *cancelled = nullptr;
    int rc = sqlite3_prepare_v2(db, "SELECT id FROM _journal WHERE id>? ORDER BY id", -1, &later_ones, nullptr);
    if (rc == SQLITE_OK)
        rc = sqlite3_prepare_v2(notes, "SELECT 1 FROM undone WHERE id=?1 UNION ALL SELECT 1 FROM undone WHERE by=?1",
                                -1, &cancelled, nullptr);
    sqlite3_bind_int64(later_ones, 1, id);
    while (rc == SQLITE_OK && sqlite3_step(later_ones) == SQLITE_ROW) {
        const int64_t call = sqlite3_column_int64(later_ones, 0);
        sqlite3_bind_int64(cancelled, 1, call);
        const bool in_force = sqlite3_step(cancelled) != SQLITE_ROW;
        rc = sqlite3_reset(cancelled);
        if (rc == SQLITE_OK && in_force) rc = qbdb_journal_read(qbdb, db, call - 1, 1, compare_entry, this);
    }
    const int done = sqlite3_finalize(later_ones);
    sqlite3_finalize(cancelled);
    return (rc == SQLITE_OK ? done : rc) & 0xFF;
}

int Undoing::look_for_later_calls()
{
    int rc = sqlite3_prepare_v2(notes, "SELECT 1 FROM touched WHERE row=?", -1, &is_touched, nullptr) & 0xFF;
    if (rc == SQLITE_OK) rc = compare_later_calls();
    return rc != SQLITE_OK || !obstacles.count ? rc : refuse_rows("later calls");
}

int Undoing::apply()
{
    const int rc = apply_changes(qbdb, db, changes, &obstacles);
    if (rc == SQLITE_SCHEMA) return refuse(rc, "a table that call %lld changed is another one now", id);
    return rc != SQLITE_OK || !obstacles.count ? rc : refuse_rows("somebody who is not in the journal");
}

int Undoing::run()
{
    qbdb_journal_state state;
    int rc = qbdb_journal_get_state(qbdb, db, &state);
    if (rc == SQLITE_OK && !state.on) rc = refuse(SQLITE_NOTFOUND, "the journal is switched off");
    if (rc == SQLITE_OK) rc = open_notes();
    if (rc == SQLITE_OK) rc = note_undone(state);
    if (rc == SQLITE_OK && !id) rc = choose();
    if (rc == SQLITE_OK) rc = check_number(state);
    if (rc == SQLITE_OK) rc = load();
    if (rc == SQLITE_OK) rc = look_for_later_calls();
    if (rc == SQLITE_OK) rc = apply();
    return rc;
}

}  // namespace
}  // namespace qdb

int qbdb_journal_undo(qbdb_t *qbdb, sqlite3 *db, int64_t id, int64_t *undone, char *text, size_t size)
{
    if (undone) *undone = 0;
    qbdb_private *internal = qbdb->internal;
    if (db != internal->db) return SQLITE_MISUSE;
    if (internal->read_only) return SQLITE_READONLY;
    uint32_t rc = qbdb_sql_begin(qbdb, db, 0, __FILE__, __LINE__);
    if (rc) {
        qbdb_sql_rollback(qbdb, db, 0, __FILE__, __LINE__);
        return static_cast<int>(rc);
    }
    qdb::Undoing undoing(qbdb, db, id, text, size);
    rc = static_cast<uint32_t>(undoing.run());
    if (rc == SQLITE_OK) {
        char arguments[48];
        snprintf(arguments, sizeof arguments, "{\"call\":%lld}", static_cast<long long>(undoing.id));
        qbdb_journal_call(qbdb, db, "undo", arguments);
        internal->recorder->calls.undoes = undoing.id;
        rc = qbdb_sql_commit(qbdb, db, 0, __FILE__, __LINE__);
    } else {
        qbdb_sql_rollback(qbdb, db, 0, __FILE__, __LINE__);
    }
    if (rc != SQLITE_OK && !undoing.told) undoing.tell(sqlite3_errstr(static_cast<int>(rc)));
    if (rc == SQLITE_OK && undone) *undone = undoing.id;
    return static_cast<int>(rc);
}
// SPDX-License-Identifier: Apache-2.0
