// Recording: a session for each transaction that is to be recorded, begun and ended with it.
#include "recorder.h"

#include <new>
#include <utility>

namespace qdb {
namespace {

/// Asked before the first change of each table: whether the session is to record it. For one without a key it is asked
/// before each change, and the first time there is still the table as it was.
int is_recorded(void *context, const char *table)
{
    auto *recorder = static_cast<Recorder *>(context);
    // A twin of one of SQLite's own tables cannot be made. The counters of AUTOINCREMENT are not turned back anyway.
    const bool own = sqlite3_strnicmp(table, "sqlite_", 7) == 0;
    if (own || belongs_to_journal(table) || recorder->failure != SQLITE_OK || recorder->twins.has(table)) return 0;
    bool keyed = false;
    recorder->failure = look_for_key(recorder->twins.source, table, &keyed);
    if (recorder->failure == SQLITE_OK && !keyed) recorder->failure = recorder->twins.add(table);
    return keyed;
}

/// A session that records nothing and stays as long as the connection. SQLite empties a table without telling any
/// session when the statement was prepared while there was none: with this one there always is one, and what was
/// prepared before is forgotten.
int keep_watch(Recorder *recorder, qbdb_private *internal)
{
    if (recorder->keeper) return SQLITE_OK;
    const int rc = sqlite3session_create(internal->db, "main", &recorder->keeper);
    if (rc != SQLITE_OK) return rc & 0xFF;
    sqlite3session_enable(recorder->keeper, 0);
    empty_cache(internal->cache);
    return SQLITE_OK;
}

int start_session(Recorder *recorder, qbdb_private *internal)
{
    int rc = keep_watch(recorder, internal);
    if (rc == SQLITE_OK) rc = sqlite3session_create(internal->db, "main", &recorder->session);
    if (rc != SQLITE_OK) return rc & 0xFF;
    recorder->failure = SQLITE_OK;
    sqlite3session_table_filter(recorder->session, is_recorded, recorder);
    return sqlite3session_attach(recorder->session, nullptr) & 0xFF;
}

/// What the transaction changed: first in the tables that have a key, then in the others.
int take_changes(Recorder *recorder)
{
    if (recorder->failure != SQLITE_OK) return recorder->failure;
    Changeset *pending = &recorder->pending;
    int rc = sqlite3session_changeset(recorder->session, &pending->size, &pending->bytes) & 0xFF;
    Changeset unkeyed;
    if (rc == SQLITE_OK) rc = recorder->twins.finish(&unkeyed);
    return rc == SQLITE_OK ? pending->append(unkeyed) : rc;
}

}  // namespace

Recorder *recorder_of(qbdb_private *internal)
{
    if (internal->recorder) return internal->recorder;
    void *room = sqlite3_malloc64(sizeof(Recorder));
    if (!room) return nullptr;
    internal->recorder = new (room) Recorder;
    internal->recorder->twins.source = internal->db;
    return internal->recorder;
}

int begin_recording(const Call &call)
{
    qbdb_private *internal = call.qbdb->internal;
    Recorder *recorder = recorder_of(internal);
    if (!recorder) return SQLITE_NOMEM;
    if (const int rc = look_for_journal(recorder, internal->db)) return rc;
    return recorder->armed || recorder->journal ? start_session(recorder, internal) : SQLITE_OK;
}

int finish_recording(const Call &call, bool discard)
{
    Recorder *recorder = call.qbdb->internal->recorder;
    int rc = take_changes(recorder);
    if (rc == SQLITE_OK && discard) rc = recorder->collected.append(recorder->pending);
    const bool kept = !discard && recorder->journal && !recorder->replaying && recorder->pending.size;
    if (rc == SQLITE_OK && kept) rc = keep_call(recorder, call.db);
    if (rc != SQLITE_OK) recorder->lost = rc;
    return rc == SQLITE_OK ? rc : fail(call, rc, "the changes cannot be recorded");
}

void end_recording(qbdb_private *internal, bool kept)
{
    if (!is_recording(internal)) return;
    Recorder *recorder = internal->recorder;
    sqlite3session_delete(recorder->session);
    recorder->session = nullptr;
    recorder->twins.clear();
    if (kept && recorder->armed && recorder->lost == SQLITE_OK)
        recorder->lost = recorder->collected.append(recorder->pending);
    recorder->pending.clear();
    recorder->calls.forget_call();
}

void destroy_recorder(qbdb_private *internal)
{
    Recorder *recorder = internal->recorder;
    if (!recorder) return;
    end_recording(internal, false);
    if (recorder->keeper) sqlite3session_delete(recorder->keeper);
    sqlite3_finalize(recorder->version);
    recorder->calls.destroy();
    recorder->~Recorder();
    sqlite3_free(recorder);
    internal->recorder = nullptr;
}

}  // namespace qdb

using namespace qdb;

int qbdb_changes_begin(qbdb_t *qbdb, unsigned flags)
{
    qbdb_private *internal = qbdb->internal;
    if (internal->begun || flags > QBDB_CHANGES_DISCARD) return SQLITE_MISUSE;
    Recorder *recorder = recorder_of(internal);
    if (!recorder) return SQLITE_NOMEM;
    if (recorder->armed) return SQLITE_MISUSE;
    recorder->armed = true;
    recorder->discard = flags & QBDB_CHANGES_DISCARD;
    recorder->lost = SQLITE_OK;
    return SQLITE_OK;
}

int qbdb_changes_end(qbdb_t *qbdb, void **changes, int *size)
{
    *changes = nullptr;
    *size = 0;
    Recorder *recorder = qbdb->internal->recorder;
    if (!recorder || !recorder->armed) return SQLITE_MISUSE;
    recorder->armed = recorder->discard = false;
    Changeset all;
    all.swap(recorder->collected);
    // A list with a gap in it would be worse than none.
    if (recorder->lost != SQLITE_OK) return recorder->lost;
    *changes = std::exchange(all.bytes, nullptr);
    *size = all.size;
    return SQLITE_OK;
}
// SPDX-License-Identifier: Apache-2.0
