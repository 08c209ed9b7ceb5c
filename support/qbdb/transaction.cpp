// Begin, commit, rollback. The three statements are prepared when the database is opened, so that a
// rollback needs no memory.
#include "handle.h"

namespace {

using qdb::Call;

/// Runs one of the three statements: the prepared one on the handle's own connection.
int run(const Call &call, sqlite3_stmt *stmt, const char *sql)
{
    if (call.db != call.qbdb->internal->db) return sqlite3_exec(call.db, sql, nullptr, nullptr, nullptr) & 0xFF;
    sqlite3_step(stmt);
    return sqlite3_reset(stmt) & 0xFF;
}

void roll_back(const Call &call)
{
    qbdb_private *internal = call.qbdb->internal;
    internal->begun = nullptr;
    // SQLite itself rolls back after some failures (a full disk, an I/O error).
    if (!sqlite3_get_autocommit(call.db)) run(call, internal->rollback, "ROLLBACK");
}

}  // namespace

uint32_t qbdb_sql_begin(qbdb_t *qbdb, sqlite3 *db, int flags, const char *file, uint32_t line)
{
    (void)flags;
    qbdb_private *internal = qbdb->internal;
    if (!db) return 8;
    if (!sqlite3_get_autocommit(db)) return SQLITE_ERROR;
    const bool read_only = db == internal->db ? internal->read_only : sqlite3_db_readonly(db, "main") == 1;
    // A transaction that starts by reading and then writes fails at once when another process wrote in
    // between, whatever the timeout: so the lock for writing is taken first.
    const char *sql = read_only ? "BEGIN" : "BEGIN IMMEDIATE";
    const Call call{qbdb, db, nullptr, file, line};
    if (const int rc = qdb::ask_hook(call, sql)) return static_cast<uint32_t>(rc);
    const int rc = run(call, internal->begin, sql);
    if (rc == SQLITE_OK) internal->begun = db;
    return static_cast<uint32_t>(rc);
}

uint32_t qbdb_sql_commit(qbdb_t *qbdb, sqlite3 *db, int flags, const char *file, uint32_t line)
{
    (void)flags;
    qbdb_private *internal = qbdb->internal;
    if (!db || internal->begun != db) return SQLITE_ERROR;
    const Call call{qbdb, db, nullptr, file, line};
    int rc = qdb::ask_hook(call, "COMMIT");
    if (rc == SQLITE_OK) rc = run(call, internal->commit, "COMMIT");
    if (rc == SQLITE_OK)
        internal->begun = nullptr;
    else
        roll_back(call);
    return static_cast<uint32_t>(rc);
}

uint32_t qbdb_sql_rollback(qbdb_t *qbdb, sqlite3 *db, int flags, const char *file, uint32_t line)
{
    (void)flags;
    if (!db || qbdb->internal->begun != db) return SQLITE_OK;
    const Call call{qbdb, db, nullptr, file, line};
    qdb::ask_hook(call, "ROLLBACK");
    roll_back(call);
    return SQLITE_OK;
}
