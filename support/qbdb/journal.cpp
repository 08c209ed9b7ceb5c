// The journal: each committed call that changed something as a row, written by the same transaction.
#include "journal.h"

#include <cstring>
#include <ctime>
#include <initializer_list>

#include "recorder.h"

namespace qdb {
namespace {

constexpr char kTables[] =
    "CREATE TABLE IF NOT EXISTS _journal ("
    " id INTEGER PRIMARY KEY, time INTEGER NOT NULL, operation TEXT NOT NULL, who TEXT NOT NULL,"
    " arguments TEXT NOT NULL, undoes INTEGER NOT NULL, previous INTEGER NOT NULL, mark INTEGER NOT NULL,"
    " changes BLOB NOT NULL);"
    "CREATE TABLE IF NOT EXISTS _journal_state ("
    " enabled INTEGER NOT NULL, last INTEGER NOT NULL, since INTEGER NOT NULL, mark INTEGER NOT NULL,"
    " bytes INTEGER NOT NULL, max_bytes INTEGER NOT NULL, max_seconds INTEGER NOT NULL);";

constexpr int kEntryOverhead = 100;  // what a row takes besides its texts and changes, about

/// Steps a statement that yields no row and makes it ready for its next use.
int run_through(sqlite3_stmt *stmt)
{
    sqlite3_step(stmt);
    const int rc = sqlite3_reset(stmt);
    sqlite3_clear_bindings(stmt);
    return rc & 0xFF;
}

/// Prepares a statement that is kept, once.
int keep(sqlite3 *db, sqlite3_stmt **stmt, const char *sql)
{
    if (*stmt) return SQLITE_OK;
    return sqlite3_prepare_v3(db, sql, -1, SQLITE_PREPARE_PERSISTENT, stmt, nullptr) & 0xFF;
}

/// Whether the database has ever kept a journal. Asked of the schema: naming a table that is not there is a failure.
int look_for_tables(sqlite3 *db, bool *found)
{
    sqlite3_stmt *stmt = nullptr;
    int rc = sqlite3_prepare_v2(db, "SELECT 1 FROM sqlite_schema WHERE type='table' AND name='_journal_state'", -1,
                                &stmt, nullptr);
    if (rc == SQLITE_OK) *found = sqlite3_step(stmt) == SQLITE_ROW;
    const int done = sqlite3_finalize(stmt);
    return (rc == SQLITE_OK ? done : rc) & 0xFF;
}

/// Reads the state by a statement that may be kept. The tables are there.
int read_state(sqlite3 *db, sqlite3_stmt **stmt, qbdb_journal_state *state)
{
    int rc = keep(db, stmt,
                  "SELECT enabled,last,since,mark,bytes,max_bytes,max_seconds,(SELECT MIN(id) FROM _journal) FROM "
                  "_journal_state");
    if (rc != SQLITE_OK) return rc;
    if (sqlite3_step(*stmt) == SQLITE_ROW) {
        state->on = sqlite3_column_int(*stmt, 0);
        state->last = sqlite3_column_int64(*stmt, 1);
        state->since = sqlite3_column_int64(*stmt, 2);
        state->mark = sqlite3_column_int64(*stmt, 3);
        state->bytes = static_cast<uint64_t>(sqlite3_column_int64(*stmt, 4));
        state->max_bytes = static_cast<uint64_t>(sqlite3_column_int64(*stmt, 5));
        state->max_seconds = static_cast<uint64_t>(sqlite3_column_int64(*stmt, 6));
        state->first = sqlite3_column_int64(*stmt, 7);
    }
    return sqlite3_reset(*stmt) & 0xFF;
}

uint64_t size_of(const qbdb_journal_entry &entry)
{
    return strlen(entry.operation) + strlen(entry.who) + strlen(entry.arguments) + static_cast<uint64_t>(entry.size) +
           kEntryOverhead;
}

int insert(Journal *journal, sqlite3 *db, const qbdb_journal_entry &entry)
{
    const int rc = keep(db, &journal->insert, "INSERT INTO _journal VALUES(?,?,?,?,?,?,?,?,?)");
    if (rc != SQLITE_OK) return rc;
    const int64_t numbers[] = {entry.id, entry.time, entry.undoes, entry.previous, entry.mark};
    const int places[] = {1, 2, 6, 7, 8};
    for (int i = 0; i < 5; i++) sqlite3_bind_int64(journal->insert, places[i], numbers[i]);
    sqlite3_bind_text(journal->insert, 3, entry.operation, -1, SQLITE_STATIC);
    sqlite3_bind_text(journal->insert, 4, entry.who, -1, SQLITE_STATIC);
    sqlite3_bind_text(journal->insert, 5, entry.arguments, -1, SQLITE_STATIC);
    sqlite3_bind_blob(journal->insert, 9, entry.changes, entry.size, SQLITE_STATIC);
    return run_through(journal->insert);
}

/// Removes the oldest calls until the journal is within its bounds. The newest one stays. `*bytes` is brought up to
/// date.
int trim(Journal *journal, sqlite3 *db, const qbdb_journal_entry &newest, const qbdb_journal_state &state,
         uint64_t *bytes)
{
    int rc = keep(db, &journal->oldest,
                  "SELECT id,time,octet_length FROM (SELECT id,time,LENGTH(CAST(operation AS BLOB))+LENGTH(CAST(who AS "
                  "BLOB))+LENGTH(CAST(arguments AS BLOB))+LENGTH(changes) AS octet_length FROM _journal ORDER BY id "
                  "LIMIT 1)");
    if (rc == SQLITE_OK) rc = keep(db, &journal->remove, "DELETE FROM _journal WHERE id=?");
    while (rc == SQLITE_OK) {
        if (sqlite3_step(journal->oldest) != SQLITE_ROW) return sqlite3_reset(journal->oldest) & 0xFF;
        const int64_t id = sqlite3_column_int64(journal->oldest, 0);
        const int64_t age = newest.time - sqlite3_column_int64(journal->oldest, 1);
        const auto size = static_cast<uint64_t>(sqlite3_column_int64(journal->oldest, 2)) + kEntryOverhead;
        sqlite3_reset(journal->oldest);
        const bool fits = *bytes <= state.max_bytes && age <= static_cast<int64_t>(state.max_seconds);
        if (fits || id == newest.id) return SQLITE_OK;
        sqlite3_bind_int64(journal->remove, 1, id);
        rc = run_through(journal->remove);
        *bytes -= size < *bytes ? size : *bytes;
    }
    return rc;
}

void add(uint64_t *hash, const void *bytes, size_t size)
{
    for (const auto *at = static_cast<const unsigned char *>(bytes), *end = at + size; at < end; at++)
        *hash = (*hash ^ *at) * 0x100000001B3u;
}

/// A number that no other journal begins with.
int64_t fresh_mark()
{
    const uint64_t high = qbdb_rand();
    return static_cast<int64_t>(high << 32 | qbdb_rand());
}

/// Writes the state of a journal that is switched on. `found` says that the tables were there.
int switch_on(sqlite3 *db, const qbdb_journal_state &old, uint64_t max_bytes, uint64_t max_seconds)
{
    char *sql =
        old.on ? sqlite3_mprintf("UPDATE _journal_state SET max_bytes=%lld,max_seconds=%lld", max_bytes, max_seconds)
               : sqlite3_mprintf(
                     "%s DELETE FROM _journal_state;"
                     "INSERT INTO _journal_state VALUES(1,%lld,%lld,%lld,%lld,%lld,%lld)",
                     kTables, old.last, old.last, fresh_mark(), old.bytes, max_bytes, max_seconds);
    if (!sql) return SQLITE_NOMEM;
    const int rc = sqlite3_exec(db, sql, nullptr, nullptr, nullptr);
    sqlite3_free(sql);
    return rc & 0xFF;
}

/// Runs a change of the journal itself in a transaction of its own.
template <class Change>
int in_transaction(qbdb_t *qbdb, sqlite3 *db, Change change)
{
    qbdb_private *internal = qbdb->internal;
    if (db != internal->db || is_trial(internal)) return SQLITE_MISUSE;
    if (internal->read_only) return SQLITE_READONLY;
    uint32_t rc = qbdb_sql_begin(qbdb, db, 0, __FILE__, __LINE__);
    if (rc == SQLITE_OK) rc = static_cast<uint32_t>(change());
    if (rc == SQLITE_OK) rc = qbdb_sql_commit(qbdb, db, 0, __FILE__, __LINE__);
    else qbdb_sql_rollback(qbdb, db, 0, __FILE__, __LINE__);
    if (internal->recorder) internal->recorder->look = true;
    return static_cast<int>(rc);
}

int replace_text(char **text, const char *with)
{
    char *copy = sqlite3_mprintf("%s", with);
    if (!copy) return SQLITE_NOMEM;
    sqlite3_free(*text);
    *text = copy;
    return SQLITE_OK;
}

const char *or_empty(const char *text)
{
    return text ? text : "";
}

}  // namespace

void Journal::forget_call()
{
    for (char **text : {&operation, &arguments}) {
        sqlite3_free(*text);
        *text = nullptr;
    }
    undoes = 0;
}

void Journal::destroy()
{
    forget_call();
    sqlite3_free(who);
    for (sqlite3_stmt *stmt : {state, insert, advance, oldest, remove}) sqlite3_finalize(stmt);
}

bool belongs_to_journal(const char *table)
{
    return !strcmp(table, "_journal") || !strcmp(table, "_journal_state");
}

/// Whoever commits changes what this number says, but for the own connection, which knows what it does.
int look_for_journal(Recorder *recorder, sqlite3 *db)
{
    int rc = keep(db, &recorder->version, "PRAGMA data_version");
    if (rc != SQLITE_OK) return rc;
    const bool asked = sqlite3_step(recorder->version) == SQLITE_ROW;
    const int64_t version = asked ? sqlite3_column_int64(recorder->version, 0) : 0;
    rc = sqlite3_reset(recorder->version);
    if (rc != SQLITE_OK) return rc & 0xFF;
    if (version == recorder->seen && !recorder->look) return SQLITE_OK;
    bool found = false;
    qbdb_journal_state state{};
    rc = look_for_tables(db, &found);
    if (rc == SQLITE_OK && found) rc = read_state(db, &recorder->calls.state, &state);
    if (rc != SQLITE_OK) return rc;
    recorder->journal = state.on;
    recorder->seen = version;
    recorder->look = false;
    return SQLITE_OK;
}

int64_t mark_after(const qbdb_journal_entry &entry)
{
    uint64_t hash = 0xCBF29CE484222325u;
    for (const int64_t number : {entry.previous, entry.id, entry.time, entry.undoes})
        add(&hash, &number, sizeof number);
    for (const char *text : {entry.operation, entry.who, entry.arguments}) add(&hash, text, strlen(text) + 1);
    add(&hash, entry.changes, static_cast<size_t>(entry.size));
    return static_cast<int64_t>(hash);
}

int store_call(Journal *journal, sqlite3 *db, const qbdb_journal_entry &entry, const qbdb_journal_state &state)
{
    uint64_t bytes = state.bytes + size_of(entry);
    int rc = insert(journal, db, entry);
    if (rc == SQLITE_OK) rc = trim(journal, db, entry, state, &bytes);
    if (rc == SQLITE_OK) rc = keep(db, &journal->advance, "UPDATE _journal_state SET last=?,mark=?,bytes=?");
    if (rc != SQLITE_OK) return rc;
    sqlite3_bind_int64(journal->advance, 1, entry.id);
    sqlite3_bind_int64(journal->advance, 2, entry.mark);
    sqlite3_bind_int64(journal->advance, 3, static_cast<int64_t>(bytes));
    return run_through(journal->advance);
}

int keep_call(Recorder *recorder, sqlite3 *db)
{
    Journal *journal = &recorder->calls;
    qbdb_journal_state state{};
    if (const int rc = read_state(db, &journal->state, &state)) return rc;
    qbdb_journal_entry entry{};
    entry.id = state.last + 1;
    entry.time = static_cast<int64_t>(time(nullptr));
    entry.operation = or_empty(journal->operation);
    entry.who = or_empty(journal->who);
    entry.arguments = journal->arguments ? journal->arguments : "{}";
    entry.undoes = journal->undoes;
    entry.previous = state.mark;
    entry.changes = recorder->pending.bytes;
    entry.size = recorder->pending.size;
    entry.mark = mark_after(entry);
    return store_call(journal, db, entry, state);
}

}  // namespace qdb

using namespace qdb;

int qbdb_journal_on(qbdb_t *qbdb, sqlite3 *db, uint64_t max_bytes, uint64_t max_seconds)
{
    return in_transaction(qbdb, db, [&] {
        qbdb_journal_state old{};
        const int rc = qbdb_journal_get_state(qbdb, db, &old);
        return rc == SQLITE_OK ? switch_on(db, old, max_bytes ? max_bytes : QBDB_JOURNAL_BYTES,
                                           max_seconds ? max_seconds : QBDB_JOURNAL_SECONDS)
                               : rc;
    });
}

int qbdb_journal_off(qbdb_t *qbdb, sqlite3 *db)
{
    return in_transaction(qbdb, db, [&] {
        bool found = false;
        const int rc = look_for_tables(db, &found);
        if (rc != SQLITE_OK || !found) return rc;
        return sqlite3_exec(db, "UPDATE _journal_state SET enabled=0", nullptr, nullptr, nullptr) & 0xFF;
    });
}

int qbdb_journal_get_state(qbdb_t *, sqlite3 *db, qbdb_journal_state *state)
{
    *state = {};
    bool found = false;
    int rc = look_for_tables(db, &found);
    if (rc != SQLITE_OK || !found) return rc;
    sqlite3_stmt *stmt = nullptr;
    rc = read_state(db, &stmt, state);
    sqlite3_finalize(stmt);
    return rc;
}

int qbdb_journal_read(qbdb_t *, sqlite3 *db, int64_t after, uint32_t count, qbdb_journal_reader reader, void *context)
{
    bool found = false;
    int rc = look_for_tables(db, &found);
    if (rc != SQLITE_OK || !found) return rc;
    sqlite3_stmt *stmt = nullptr;
    rc = sqlite3_prepare_v2(db,
                            "SELECT id,time,operation,who,arguments,undoes,previous,mark,changes FROM _journal WHERE "
                            "id>? ORDER BY id LIMIT ?",
                            -1, &stmt, nullptr);
    sqlite3_bind_int64(stmt, 1, after);
    sqlite3_bind_int64(stmt, 2, count ? static_cast<int64_t>(count) : -1);
    int ended = 0;
    while (rc == SQLITE_OK && !ended && sqlite3_step(stmt) == SQLITE_ROW) {
        const auto text = [stmt](int i) { return reinterpret_cast<const char *>(sqlite3_column_text(stmt, i)); };
        qbdb_journal_entry entry{};
        entry.id = sqlite3_column_int64(stmt, 0);
        entry.time = sqlite3_column_int64(stmt, 1);
        entry.operation = or_empty(text(2));
        entry.who = or_empty(text(3));
        entry.arguments = or_empty(text(4));
        entry.undoes = sqlite3_column_int64(stmt, 5);
        entry.previous = sqlite3_column_int64(stmt, 6);
        entry.mark = sqlite3_column_int64(stmt, 7);
        entry.changes = sqlite3_column_blob(stmt, 8);
        entry.size = sqlite3_column_bytes(stmt, 8);
        ended = reader(context, &entry);
    }
    const int done = sqlite3_finalize(stmt);
    return ended ? ended : (rc == SQLITE_OK ? done : rc) & 0xFF;
}

int qbdb_set_caller(qbdb_t *qbdb, const char *who)
{
    Recorder *recorder = recorder_of(qbdb->internal);
    return recorder ? replace_text(&recorder->calls.who, or_empty(who)) : SQLITE_NOMEM;
}

int qbdb_journal_wants(const qbdb_t *qbdb, const sqlite3 *db)
{
    const qbdb_private *internal = qbdb->internal;
    const Recorder *recorder = internal->recorder;
    return db == internal->db && recorder && recorder->session && recorder->journal && !recorder->discard;
}

void qbdb_journal_call(qbdb_t *qbdb, sqlite3 *db, const char *operation, const char *arguments)
{
    if (!qbdb_journal_wants(qbdb, db)) return;
    Recorder *recorder = qbdb->internal->recorder;
    Journal *journal = &recorder->calls;
    const bool told = arguments && replace_text(&journal->operation, operation) == SQLITE_OK &&
                      replace_text(&journal->arguments, arguments) == SQLITE_OK;
    if (!told) recorder->failure = SQLITE_NOMEM;
}
// SPDX-License-Identifier: Apache-2.0
