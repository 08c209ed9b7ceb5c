// Copies that follow a database: made by SQLite's backup, kept current by the calls of its journal.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "apply.h"
#include "qbdb_standby.h"
#include "recorder.h"

namespace qdb {
namespace {

struct Words {
    char *text;
    size_t size;

    /// Writes why it is refused and returns the code.
    template <class... Args>
    int refuse(int rc, const char *format, Args... args) const
    {
        if (!text || !size) return rc;
        char *made = sqlite3_mprintf(format, args...);
        snprintf(text, size, "%s", made ? made : "out of memory");
        sqlite3_free(made);
        return rc;
    }
    int refuse_code(int rc) const { return refuse(rc, "%s", sqlite3_errstr(rc)); }
};

/// Copies into a file that is there, empty, and ours.
int back_up(sqlite3 *db, const char *path)
{
    sqlite3 *copy = nullptr;
    int rc = sqlite3_open_v2(path, &copy, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    sqlite3_backup *backup = rc == SQLITE_OK ? sqlite3_backup_init(copy, "main", db, "main") : nullptr;
    if (backup) {
        sqlite3_backup_step(backup, -1);
        rc = sqlite3_backup_finish(backup);
    } else if (rc == SQLITE_OK) {
        rc = sqlite3_errcode(copy);
    }
    const int closed = sqlite3_close(copy);
    return (rc == SQLITE_OK ? closed : rc) & 0xFF;
}

/// The mark of a call that the copy has already; `*found` says whether it still does.
int read_mark(sqlite3 *db, int64_t id, int64_t *mark, bool *found)
{
    sqlite3_stmt *stmt = nullptr;
    int rc = sqlite3_prepare_v2(db, "SELECT mark FROM _journal WHERE id=?", -1, &stmt, nullptr);
    sqlite3_bind_int64(stmt, 1, id);
    *found = rc == SQLITE_OK && sqlite3_step(stmt) == SQLITE_ROW;
    if (*found) *mark = sqlite3_column_int64(stmt, 0);
    const int done = sqlite3_finalize(stmt);
    return (rc == SQLITE_OK ? done : rc) & 0xFF;
}

/// A call that the copy is past: either it is the same one, or the copy has one of its own in its place.
int pass_over(sqlite3 *db, const qbdb_journal_entry &entry, const Words &words)
{
    int64_t mark = 0;
    bool found = false;
    if (const int rc = read_mark(db, entry.id, &mark, &found)) return words.refuse_code(rc);
    if (!found || mark == entry.mark) return SQLITE_OK;
    return words.refuse(SQLITE_CONSTRAINT, "the copy was changed by somebody else: it has a call %lld of its own",
                        entry.id);
}

int apply_call(qbdb_t *qbdb, sqlite3 *db, const qbdb_journal_entry &entry, const qbdb_journal_state &state,
               const Words &words)
{
    Changeset changes;  // borrowed for the time of the application
    changes.bytes = const_cast<void *>(entry.changes);
    changes.size = entry.size;
    Obstacles obstacles;
    int rc = apply_changes(qbdb, db, changes, &obstacles);
    changes.bytes = nullptr;
    changes.size = 0;
    if (rc == SQLITE_SCHEMA)
        return words.refuse(rc, "call %lld changed a table that is another one in the copy", entry.id);
    if (rc != SQLITE_OK) return words.refuse_code(rc);
    if (obstacles.count) {
        obstacles.tell("the copy was changed by somebody else", words.text, words.size);
        return SQLITE_CONSTRAINT;
    }
    rc = store_call(&qbdb->internal->recorder->calls, db, entry, state);
    return rc == SQLITE_OK ? rc : words.refuse_code(rc);
}

/// Judges a call inside the transaction, and makes it when it is the next one.
int continue_with(qbdb_t *qbdb, sqlite3 *db, const qbdb_journal_entry &entry, const Words &words)
{
    qbdb_journal_state state;
    if (const int rc = qbdb_journal_get_state(qbdb, db, &state)) return words.refuse_code(rc);
    if (!state.on)
        return words.refuse(SQLITE_CONSTRAINT, "the copy keeps no journal, so it is none of a database that does");
    if (entry.id <= state.last) return pass_over(db, entry, words);
    if (entry.id > state.last + 1)
        return words.refuse(SQLITE_CONSTRAINT, "call %lld cannot follow call %lld: those between are missing", entry.id,
                            state.last);
    if (entry.previous != state.mark)
        return words.refuse(
            SQLITE_CONSTRAINT,
            "call %lld does not continue the copy: it is one of another database, was changed by somebody "
            "else, or the journal was switched off meanwhile; make the copy anew",
            entry.id);
    return apply_call(qbdb, db, entry, state, words);
}

}  // namespace
}  // namespace qdb

using qdb::Words;

int qbdb_copy_database(qbdb_t *, sqlite3 *db, const char *path, char *text, size_t size)
{
    const Words words{text, size};
    struct stat status;
    if (lstat(path, &status) == 0) return words.refuse(SQLITE_CANTOPEN, "%s: is there already", path);
    // A name that begins with "file:" is a file's name, too.
    char *part = sqlite3_mprintf("%s%s.part", *path == '/' ? "" : "./", path);
    if (!part) return words.refuse_code(SQLITE_NOMEM);
    unlink(part);  // of a copy that was interrupted
    const int file = open(part, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    int rc = file >= 0 ? SQLITE_OK : words.refuse(SQLITE_CANTOPEN, "%s: %s", part, strerror(errno));
    if (file >= 0) {
        close(file);
        rc = qdb::back_up(db, part);
        if (rc != SQLITE_OK) words.refuse(rc, "%s: %s", path, sqlite3_errstr(rc));
        // Not over a file that came meanwhile.
        else if (link(part, path) != 0) rc = words.refuse(SQLITE_CANTOPEN, "%s: %s", path, strerror(errno));
        unlink(part);
    }
    sqlite3_free(part);
    return rc;
}

int qbdb_journal_apply(qbdb_t *qbdb, sqlite3 *db, const qbdb_journal_entry *entry, char *text, size_t size)
{
    const Words words{text, size};
    qbdb_private *internal = qbdb->internal;
    if (db != internal->db || qdb::is_trial(internal)) return words.refuse_code(SQLITE_MISUSE);
    if (internal->read_only) return words.refuse_code(SQLITE_READONLY);
    if (qdb::mark_after(*entry) != entry->mark)
        return words.refuse(SQLITE_CORRUPT, "call %lld is damaged; nothing of it was applied", entry->id);
    int rc = static_cast<int>(qbdb_sql_begin(qbdb, db, 0, __FILE__, __LINE__));
    if (rc == SQLITE_OK) {
        internal->recorder->replaying = true;
        rc = qdb::continue_with(qbdb, db, *entry, words);
        if (rc == SQLITE_OK) {
            rc = static_cast<int>(qbdb_sql_commit(qbdb, db, 0, __FILE__, __LINE__));
            if (rc != SQLITE_OK) words.refuse_code(rc);
        } else {
            qbdb_sql_rollback(qbdb, db, 0, __FILE__, __LINE__);
        }
        internal->recorder->replaying = false;
        return rc;
    }
    qbdb_sql_rollback(qbdb, db, 0, __FILE__, __LINE__);
    return words.refuse_code(rc);
}
// SPDX-License-Identifier: Apache-2.0
