// Begin, commit, rollback. The three statements are prepared when the database is opened, so that a
// rollback needs no memory.
#include "recorder.h"

namespace {

using qdb::Call;

/// Runs one of the three statements: the prepared one on the handle's own connection.
int run(bool own, sqlite3 *db, sqlite3_stmt *stmt, const char *sql)
{
    if (!own) return sqlite3_exec(db, sql, nullptr, nullptr, nullptr) & 0xFF;
    sqlite3_step(stmt);
    return sqlite3_reset(stmt) & 0xFF;
}

/// Where the handle notes that it began a transaction on a connection: its own, or one of the caller's.
sqlite3 *&begun_on(qbdb_private *internal, const sqlite3 *db)
{
    return db == internal->db ? internal->begun : internal->begun_elsewhere;
}

/// A change of the temporary schema makes even the prepared rollback prepare itself again. Without memory for that,
/// what the statements of the cache hold is given up; when that is not enough, the rollback is owed, and the next begin
/// makes it.
int roll_back_without_memory(qbdb_private *internal)
{
    qdb::empty_cache(internal->cache);
    return sqlite3_exec(internal->db, "ROLLBACK", nullptr, nullptr, nullptr) & 0xFF;
}

int roll_back(const Call &call)
{
    qbdb_private *internal = call.qbdb->internal;
    int rc = SQLITE_OK;
    // SQLite itself rolls back after some failures (a full disk, an I/O error).
    if (!sqlite3_get_autocommit(call.db)) rc = run(call.db == internal->db, call.db, internal->rollback, "ROLLBACK");
    if (!sqlite3_get_autocommit(call.db) && call.db == internal->db) rc = roll_back_without_memory(internal);
    if (call.db == internal->db) {
        internal->renew_rollback = true;
        internal->rollback_owed = !sqlite3_get_autocommit(call.db);
    }
    if (sqlite3_get_autocommit(call.db)) begun_on(internal, call.db) = nullptr;
    if (call.db == internal->db) qdb::end_recording(internal, false);
    return rc;
}

/// A rollback that takes back a change of the schema makes all prepared statements prepare themselves again
/// when they next run. The next rollback must not need memory, so it is prepared again before it is needed.
int renew_rollback(qbdb_private *internal)
{
    sqlite3_stmt *stmt = nullptr;
    const int rc = sqlite3_prepare_v3(internal->db, "ROLLBACK", -1, SQLITE_PREPARE_PERSISTENT, &stmt, nullptr);
    if (rc != SQLITE_OK) return rc & 0xFF;
    sqlite3_finalize(internal->rollback);
    internal->rollback = stmt;
    internal->renew_rollback = false;
    return SQLITE_OK;
}

enum class Purpose { reading, writing };

uint32_t begin(qbdb_t *qbdb, sqlite3 *db, Purpose purpose, const char *file, uint32_t line)
{
    qbdb_private *internal = qbdb->internal;
    if (!db) return 8;
    const bool own = db == internal->db;
    sqlite3 *&begun = begun_on(internal, db);
    if (own && internal->rollback_owed) roll_back({qbdb, db, nullptr, file, line});
    if (!sqlite3_get_autocommit(db)) {
        internal->refused = begun == db ? db : nullptr;
        return SQLITE_ERROR;
    }
    internal->refused = nullptr;
    begun = nullptr;
    const bool read_only = own ? internal->read_only : sqlite3_db_readonly(db, "main") == 1;
    const bool reads = read_only || purpose == Purpose::reading;
    // A transaction that starts by reading and then writes fails at once when another process wrote in
    // between, whatever the timeout: so the lock for writing is taken first.
    const char *sql = reads ? "BEGIN" : "BEGIN IMMEDIATE";
    const Call call{qbdb, db, nullptr, file, line};
    if (const int rc = qdb::ask_hook(call, sql)) return static_cast<uint32_t>(rc);
    int rc = own && internal->renew_rollback ? renew_rollback(internal) : SQLITE_OK;
    if (rc == SQLITE_OK) rc = run(own, db, reads ? internal->begin_reading : internal->begin, sql);
    if (rc != SQLITE_OK) return static_cast<uint32_t>(rc);
    begun = db;
    if (reads || !own) return SQLITE_OK;
    rc = qdb::begin_recording(call);
    if (rc != SQLITE_OK) roll_back(call);
    return static_cast<uint32_t>(rc);
}

}  // namespace

uint32_t qbdb_sql_begin(qbdb_t *qbdb, sqlite3 *db, int flags, const char *file, uint32_t line)
{
    (void)flags;
    return begin(qbdb, db, Purpose::writing, file, line);
}

uint32_t qbdb_sql_begin_read(qbdb_t *qbdb, sqlite3 *db, int flags, const char *file, uint32_t line)
{
    (void)flags;
    return begin(qbdb, db, Purpose::reading, file, line);
}

uint32_t qbdb_sql_commit(qbdb_t *qbdb, sqlite3 *db, int flags, const char *file, uint32_t line)
{
    (void)flags;
    qbdb_private *internal = qbdb->internal;
    const bool own = db == internal->db;
    sqlite3 *&begun = begun_on(internal, db);
    if (!db || begun != db) return SQLITE_ERROR;
    internal->refused = nullptr;
    const char *why = nullptr;
    const Call call{qbdb, db, &why, file, line};
    const bool recorded = own && qdb::is_recording(internal);
    const bool discard = qdb::is_trial(internal);
    int rc = recorded ? qdb::finish_recording(call, discard) : SQLITE_OK;
    if (rc == SQLITE_OK && discard) {
        qdb::ask_hook(call, "ROLLBACK");
        return static_cast<uint32_t>(roll_back(call));
    }
    if (rc == SQLITE_OK) rc = qdb::ask_hook(call, "COMMIT");
    if (rc == SQLITE_OK) {
        rc = run(own, db, internal->commit, "COMMIT");
        if (rc == SQLITE_OK) {
            begun = nullptr;
            if (recorded) qdb::end_recording(internal, true);
            return SQLITE_OK;
        }
        why = sqlite3_errmsg(db);
    }
    // Who does not look at the result finds it here.
    if (qbdb->log_level > 1) qbdb_log(qbdb, file, line, 2, 0, "Failed to commit, rolled back. %s\n", why);
    roll_back(call);
    return static_cast<uint32_t>(rc);
}

uint32_t qbdb_sql_rollback(qbdb_t *qbdb, sqlite3 *db, int flags, const char *file, uint32_t line)
{
    (void)flags;
    qbdb_private *internal = qbdb->internal;
    if (!db || begun_on(internal, db) != db) return SQLITE_OK;
    // The rollback that ends a refused begin: the transaction that stood in its way is not its own.
    const bool refused = internal->refused == db;
    internal->refused = nullptr;
    if (refused) return SQLITE_OK;
    const Call call{qbdb, db, nullptr, file, line};
    qdb::ask_hook(call, "ROLLBACK");
    return static_cast<uint32_t>(roll_back(call));
}
// SPDX-License-Identifier: Apache-2.0
